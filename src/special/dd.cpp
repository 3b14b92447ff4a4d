// Double-double exponential, logarithm and Chebyshev series of the double routines.
#include "special/dd.hpp"

#include <cmath>
#include <cstdint>
#include <cstring>

#include "special/tables.hpp"

namespace qnum::special {
namespace {

// 2^(j/64) as hi + lo, converted at compile time from the 50-digit table.
struct Exp2Table {
    double hi[64], lo[64];
    constexpr Exp2Table() : hi(), lo() {
        for (int j = 0; j < 64; ++j) {
            hi[j] = static_cast<double>(table::exp2_64[j]);
            lo[j] = static_cast<double>(table::exp2_64[j] - static_cast<long double>(hi[j]));
        }
    }
};
constexpr Exp2Table exp2_table;

// 2^m for -1022 <= m <= 1023.
double pow2(int m) {
    const std::uint64_t bits = static_cast<std::uint64_t>(m + 1023) << 52;
    double r;
    std::memcpy(&r, &bits, sizeof r);
    return r;
}

// ln 2/64 in two parts, the first with 34 significant bits, so that k times it is exact for
// |k| < 2^19; and ln 2 likewise with 42 bits (exact times any exponent of a double).
constexpr double ln2_64_hi = 0.010830424695996044;
constexpr double ln2_64_lo = 2.5310172166650877e-13;
constexpr double inv_ln2_64 = 92.33248261689366;
constexpr double ln2_hi = 0.6931471805598903;
constexpr double ln2_lo = 5.497923018708371e-14;

}  // namespace

DD exp(DD a) {
    if (!(a.hi < 709.8)) return {a.hi == a.hi ? HUGE_VAL : a.hi, 0};
    if (a.hi < -745.2) return {0, 0};
    // Nearest integer by the addition of 1.5 2^52, which leaves no fraction bits.
    constexpr double round_shift = 6755399441055744.0;
    const double k = (a.hi * inv_ln2_64 + round_shift) - round_shift;
    const int ki = static_cast<int>(k);
    // a - k ln2/64: the first difference is exact (k c1 exact and close to a.hi).
    const double r = ((a.hi - k * ln2_64_hi) - k * ln2_64_lo) + a.lo;
    // exp(r) - 1 through r^6/720 (|r| <= 0.0055 leaves a remainder below 2^-64), in pairs of
    // terms so that the powers of r are formed side by side.
    const double r2 = r * r;
    const double p = r + r2 * ((0.5 + r * (1.0 / 6)) + r2 * ((1.0 / 24 + r * (1.0 / 120)) + r2 * (1.0 / 720)));
    const int j = ki & 63, m = (ki - j) / 64;
    const double th = exp2_table.hi[j], tl = exp2_table.lo[j];
    DD e = dd::quick_two_sum(th, th * p + tl * (1 + p));
    if (m >= -1022 && m <= 1023) {
        const double sc = pow2(m);
        return {e.hi * sc, e.lo * sc};
    }
    // Scaled in two steps at the ends of the range.
    const int half = m > 0 ? 600 : -600;
    const double s1 = pow2(m - half), s2 = pow2(half);
    return {e.hi * s1 * s2, e.lo * s1 * s2};
}

DD log(DD a) {
    const double h = a.hi;
    if (!(h > 0) || !std::isfinite(h)) return {std::log(h), 0};
    // h = m 2^e with m in [0.5, 1): log h = e log 2 + log m, so that exp(-log m) cannot overflow.
    int e;
    const double m = std::frexp(h, &e);
    const double l0 = std::log(m);
    const DD x = exp(DD(-l0));
    // log m = l0 + log(m exp(-l0)), and m exp(-l0) = 1 + c with c of the order of 2^-53.
    const DD p = dd::two_prod(m, x.hi);
    const double c = ((p.hi - 1) + p.lo) + m * x.lo;
    const DD lm = dd::quick_two_sum(l0, c);
    const DD ek = DD(e * ln2_hi) + e * ln2_lo;
    return ek + lm + a.lo / h;
}

DD log_fast(double a) {
    int e;
    double m;
    std::uint64_t bits;
    std::memcpy(&bits, &a, sizeof bits);
    const int field = static_cast<int>(bits >> 52 & 0x7ff);
    if (field == 0 || field == 0x7ff) {
        m = std::frexp(a, &e);  // [0.5, 1)
    } else {  // a normal number: the mantissa and exponent read off its bits
        e = field - 1022;
        bits = (bits & 0x800fffffffffffffULL) | 0x3fe0000000000000ULL;
        std::memcpy(&m, &bits, sizeof m);
    }
    if (m < 0.75) {
        m *= 2;
        --e;
    }
    const double l = std::log1p(m - 1);  // m - 1 is exact
    return dd::two_sum(e * ln2_hi, e * ln2_lo + l);
}

DD series(DD t, const double* hi, const double* lo, int n) {
    const double u1 = 2 * t.hi;
    double b1 = 0, b2 = 0;  // b_{k+1}, b_{k+2}
    int k = n;
    // b_k = c_k + 2t b_{k+1} - b_{k+2} in double down to b_3; single steps until the rest comes
    // in fours.
    while (k > 2 && (k - 2) % 4 != 0) {
        const double b0 = (hi[k - 1] - b2) + u1 * b1;
        b2 = b1;
        b1 = b0;
        --k;
    }
    // Four steps at a time: b_{k-j} = sum_i U_{j-i}(t) c_{k-i} + U_{j+1} b_{k+1} - U_j b_{k+2},
    // U the Chebyshev polynomials of the second kind; the coefficient sums do not wait for b.
    const double u2 = u1 * u1 - 1, u3 = u1 * u2 - u1, u4 = u1 * u3 - u2;
    for (; k > 2; k -= 4) {
        const double c0 = hi[k - 1], c1 = hi[k - 2], c2 = hi[k - 3], c3 = hi[k - 4];
        const double next2 = (c2 + u1 * c1 + u2 * c0) + (u3 * b1 - u2 * b2);
        const double next1 = (c3 + u1 * c2 + u2 * c1 + u3 * c0) + (u4 * b1 - u3 * b2);
        b2 = next2;
        b1 = next1;
    }
    if (n == 1) return DD(0.5 * hi[0], 0.5 * lo[0]);
    // b1 = b_3, b2 = b_4. The last two steps, which carry the two largest coefficients, keep
    // their rounding errors: b_2 = c_2 + 2t b_3 - b_4, result c_1/2 + t b_2 - b_3, renormalised once.
    const DD b_2 = dd::two_sum(hi[1], u1 * b1 - b2);
    const DD p = dd::two_prod(t.hi, b_2.hi);
    const DD s1 = dd::two_sum(0.5 * hi[0], p.hi);
    const DD s2 = dd::two_sum(s1.hi, -b1);
    const double rest = ((s1.lo + s2.lo) + (p.lo + 0.5 * lo[0])) + (t.hi * (b_2.lo + lo[1]) + t.lo * b_2.hi);
    return dd::quick_two_sum(s2.hi, rest);
}

}  // namespace qnum::special
