// Double-double values for the double routines: an unevaluated sum hi + lo of two doubles, with
// |lo| at most about half a unit in the last place of hi. The double routines carry the few
// intermediates that decide their last bit in this form (a product of factors, an exponent
// that exp magnifies, the last steps of a series) and everything else in plain double, so that
// the result is rounded essentially once, at the end.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>

namespace qnum::special {

struct DD {
    double hi = 0, lo = 0;
    DD() = default;
    constexpr DD(double h) : hi(h) {}
    constexpr DD(double h, double l) : hi(h), lo(l) {}
    explicit operator double() const { return hi + lo; }
};

namespace dd {

// a + b exactly as s + e.
inline DD two_sum(double a, double b) {
    const double s = a + b, bb = s - a;
    return {s, (a - (s - bb)) + (b - bb)};
}

// a + b exactly as s + e when |a| >= |b| (or a = 0).
inline DD quick_two_sum(double a, double b) {
    const double s = a + b;
    return {s, b - (s - a)};
}

// a = hi + lo with hi holding the upper 26 bits (Dekker's split); huge values are scaled so
// that the splitting constant cannot overflow.
inline void split(double a, double& hi, double& lo) {
    constexpr double splitter = 134217729.0;  // 2^27 + 1
    if (std::fabs(a) > 6.69692879491417e+299) {  // 2^996
        const double s = a * 3.7252902984619140625e-09;  // 2^-28
        const double c = splitter * s;
        hi = (c - (c - s)) * 268435456.0;
        lo = a - hi;
        return;
    }
    const double c = splitter * a;
    hi = c - (c - a);
    lo = a - hi;
}

// a b exactly as p + e, barring underflow of e: e by one fused multiply-add where the
// processor has it (F; only inside functions compiled for it), else by Dekker's splitting.
// Both give the exact error, so the two ways agree to the bit.
template <bool F>
__attribute__((always_inline)) inline DD two_prod_t(double a, double b) {
    const double p = a * b;
    if (!std::isfinite(p)) return {p, 0};
    if constexpr (F) {
        return {p, __builtin_fma(a, b, -p)};
    } else {
        double ah, al, bh, bl;
        split(a, ah, al);
        split(b, bh, bl);
        return {p, ((ah * bh - p) + ah * bl + al * bh) + al * bl};
    }
}
inline DD two_prod(double a, double b) { return two_prod_t<false>(a, b); }

}  // namespace dd

inline DD operator-(DD a) { return {-a.hi, -a.lo}; }

inline DD operator+(DD a, DD b) {
    const DD s = dd::two_sum(a.hi, b.hi);
    return dd::quick_two_sum(s.hi, s.lo + (a.lo + b.lo));
}
inline DD operator+(DD a, double b) {
    const DD s = dd::two_sum(a.hi, b);
    return dd::quick_two_sum(s.hi, s.lo + a.lo);
}
inline DD operator+(double a, DD b) { return b + a; }
inline DD operator-(DD a, DD b) { return a + (-b); }
inline DD operator-(DD a, double b) { return a + (-b); }

namespace dd {
template <bool F>
__attribute__((always_inline)) inline DD mul(DD a, DD b) {
    const DD p = two_prod_t<F>(a.hi, b.hi);
    if (!std::isfinite(p.hi)) return p;
    return quick_two_sum(p.hi, p.lo + (a.hi * b.lo + a.lo * b.hi));
}
}  // namespace dd
inline DD operator*(DD a, DD b) { return dd::mul<false>(a, b); }
inline DD operator*(DD a, double b) {
    const DD p = dd::two_prod(a.hi, b);
    if (!std::isfinite(p.hi)) return p;
    return dd::quick_two_sum(p.hi, p.lo + a.lo * b);
}
inline DD operator*(double a, DD b) { return b * a; }
namespace dd {
// a b with the low parts summed but not renormalised: in a running product the next factor
// then waits only for the multiplication of the high parts.
template <bool F = false>
inline DD lazy_product(DD a, DD b) {
    const DD p = two_prod_t<F>(a.hi, b.hi);
    return {p.hi, p.lo + (a.hi * b.lo + a.lo * b.hi)};
}
}  // namespace dd

// a/b: the rounded quotient q and the exact remainder a - q b (a.hi - q b.hi to the last bit),
// divided once more.
namespace dd {
template <bool F>
__attribute__((always_inline)) inline DD div(DD a, DD b) {
    const double q = a.hi / b.hi;
    if (!std::isfinite(q) || q == 0) return {q, 0};
    const DD p = two_prod_t<F>(q, b.hi);
    return quick_two_sum(q, ((((a.hi - p.hi) - p.lo) + a.lo) - q * b.lo) / b.hi);
}
}  // namespace dd
inline DD operator/(DD a, DD b) { return dd::div<false>(a, b); }

// Comparisons (a double on either side converts exactly); false when either side is NaN.
inline bool operator<(DD a, DD b) { return a.hi < b.hi || (a.hi == b.hi && a.lo < b.lo); }
inline bool operator>(DD a, DD b) { return b < a; }
inline bool operator<=(DD a, DD b) { return a.hi < b.hi || (a.hi == b.hi && a.lo <= b.lo); }
inline bool operator==(DD a, DD b) { return a.hi == b.hi && a.lo == b.lo; }

// log 2 in double-double.
inline constexpr DD ln2_dd{0.6931471805599453, 2.3190468138462996e-17};

inline DD fabs(DD a) { return a.hi < 0 || (a.hi == 0 && a.lo < 0) ? -a : a; }

inline double fabs(double a) { return std::fabs(a); }
inline long double fabs(long double a) { return std::fabs(a); }
inline long double exp(long double a) { return std::exp(a); }
inline long double log(long double a) { return std::log(a); }
inline double exp(double a) { return std::exp(a); }
inline double log(double a) { return std::log(a); }
// exp(a) to about 2^-60 relative, by a = k ln2/64 + r, |r| <= ln2/128, and 2^(j/64) from a table.
DD exp(DD a);
// log(a), a > 0, with an error below 2^-60 max(1, |log a|): the rounded logarithm corrected by
// one Newton step.
DD log(DD a);
// log(a) for a double a > 0 with an error below 2^-54 max(1, |log a|): k log 2 in double-double plus
// log1p of a mantissa in [0.75, 1.5). Cheaper than log(DD) where that suffices.
DD log_fast(double a);

// A Chebyshev series c1/2 + sum_{k>=2} c_k T_{k-1}(t) (the first n of the coefficients `hi`,
// whose first two carry the low parts lo[0], lo[1]) by Clenshaw's recurrence in double, four
// steps at a time, with its last two steps in double-double. t.lo moves the result by its
// derivative, which the last b_2 approximates. n >= 1.
DD series(DD t, const double* hi, const double* lo, int n);

namespace dd {
// The same series for processors with fused multiply-add (only inside functions compiled for
// it): Clenshaw's recurrence eight steps at a time, each block's coefficient sums formed apart
// from the chain through b, which then costs two fused operations per block; the last two
// steps as in series(). Reads hi up to hi[n - 1] only.
__attribute__((always_inline)) inline DD series_fma(DD t, const double* hi, const double* lo, int n) {
    if (n == 1) return DD(0.5 * hi[0], 0.5 * lo[0]);
    const double u1 = 2 * t.hi;
    // U_0 .. U_8 at t, the Chebyshev polynomials of the second kind.
    // By U_{m+n} = U_m U_n - U_{m-1} U_{n-1}, four operations deep rather than seven.
    double u[9];
    u[0] = 1;
    u[1] = u1;
    u[2] = __builtin_fma(u1, u1, -1);
    u[3] = u1 * (u[2] - 1);
    u[4] = __builtin_fma(u[2], u[2], -(u1 * u1));
    u[5] = u[2] * (u[3] - u1);
    u[6] = __builtin_fma(u[3], u[3], -(u[2] * u[2]));
    u[7] = u[3] * (u[4] - u[2]);
    u[8] = __builtin_fma(u[4], u[4], -(u[3] * u[3]));
    double b1 = 0, b2 = 0;  // b_{k+1}, b_{k+2}
    // Whole blocks of eight from k = 2 + 8 ceil((n - 2)/8) down, the coefficients past c_n taken
    // as zero (read in bounds and masked, so that no branch depends on n):
    // b_{k-j} = sum_i U_{j-i} c_{k-i} + U_{j+1} b_{k+1} - U_j b_{k+2}, j = 6, 7.
    for (int k = 2 + (n + 5) / 8 * 8; k > 2; k -= 8) {
        double c[8];
        for (int i = 0; i < 8; ++i) c[i] = hi[(k - i <= n ? k - i : n) - 1] * (k - i <= n ? 1.0 : 0.0);
        // Two partial sums each, to halve the chains.
        const double s1 = __builtin_fma(u[7], c[0], __builtin_fma(u[5], c[2], __builtin_fma(u[3], c[4], u[1] * c[6]))) +
                          __builtin_fma(u[6], c[1], __builtin_fma(u[4], c[3], __builtin_fma(u[2], c[5], c[7])));
        const double s2 = __builtin_fma(u[6], c[0], __builtin_fma(u[4], c[2], __builtin_fma(u[2], c[4], c[6]))) +
                          __builtin_fma(u[5], c[1], __builtin_fma(u[3], c[3], u[1] * c[5]));
        const double next2 = __builtin_fma(u[7], b1, __builtin_fma(-u[6], b2, s2));
        b1 = __builtin_fma(u[8], b1, __builtin_fma(-u[7], b2, s1));
        b2 = next2;
    }
    // b1 = b_3, b2 = b_4; the last two steps keep their rounding errors.
    const DD b_2 = two_sum(hi[1], __builtin_fma(u1, b1, -b2));
    const DD p = two_prod_t<true>(t.hi, b_2.hi);
    const DD s1 = two_sum(0.5 * hi[0], p.hi);
    const DD s2 = two_sum(s1.hi, -b1);
    const double rest = ((s1.lo + s2.lo) + (p.lo + 0.5 * lo[0])) + (t.hi * (b_2.lo + lo[1]) + t.lo * b_2.hi);
    return quick_two_sum(s2.hi, rest);
}
}  // namespace dd

}  // namespace qnum::special
