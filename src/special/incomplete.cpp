// Incomplete gamma integral and regularised incomplete beta function.
#include <cmath>

#include "frame/frame.hpp"
#include "special/functions.hpp"

namespace qnum::special {
namespace {

constexpr int max_terms = 10000;

// Tricomi's gstar(a, x) = x^-a P(a, x) as exp(e) m, so that the caller can fold the exponent e
// into its own factor exp(log_gamma(a) + a log x) before anything overflows.
//   x <= a + 1: gstar = exp(-x)/gamma(a + 1) sum_n x^n/((a+1)...(a+n)), the series of
//               Abramowitz and Stegun 6.5.29; exp(e) carries exp(-x - log_gamma(a) - log a).
//   x >  a + 1: P = 1 - Q, Q from Legendre's continued fraction for gamma(a, x) (A&S 6.5.31),
//               summed by the modified Lentz method; exp(e) carries x^-a.
// Returns false (after FATAL 9039) when neither converges in max_terms terms.
template <class W>
bool gstar(W a, W x, W lga, W eps, W& e, W& m) {
    if (x <= a + 1) {
        W term = 1, sum = 1;
        for (int n = 1; n <= max_terms; ++n) {
            term *= x / (a + n);
            sum += term;
            if (term < sum * eps) {
                e = -x - lga - std::log(a);
                m = sum;
                return true;
            }
        }
    } else {
        const W tiny = W(1e-300L);
        W b = x + 1 - a, c = 1 / tiny, d = 1 / b, h = d;
        for (int i = 1; i <= max_terms; ++i) {
            const W an = -i * (i - a);
            b += 2;
            d = an * d + b;
            if (std::fabs(d) < tiny) d = tiny;
            c = b + an / c;
            if (std::fabs(c) < tiny) c = tiny;
            d = 1 / d;
            const W del = d * c;
            h *= del;
            if (std::fabs(del - 1) < eps) {
                const W q = std::exp(-x + a * std::log(x) - lga) * h;
                e = -a * std::log(x);
                m = 1 - q;
                return true;
            }
        }
    }
    frame::raise(frame::Type::Fatal, err::incomplete_no_convergence, frame::Int{max_terms});
    return false;
}

// The continued fraction of I_x(a, b) (Abramowitz and Stegun 26.5.8; DLMF 8.17.22) by the
// modified Lentz method; it converges quickly for x < (a + 1)/(a + b + 2).
template <class W>
bool beta_fraction(W x, W a, W b, W eps, W& h) {
    const W tiny = W(1e-300L);
    W c = 1, d = 1 - (a + b) * x / (a + 1);
    if (std::fabs(d) < tiny) d = tiny;
    d = 1 / d;
    h = d;
    for (int m = 1; m <= max_terms; ++m) {
        const int m2 = 2 * m;
        W aa = m * (b - m) * x / ((a + m2 - 1) * (a + m2));
        d = 1 + aa * d;
        if (std::fabs(d) < tiny) d = tiny;
        c = 1 + aa / c;
        if (std::fabs(c) < tiny) c = tiny;
        d = 1 / d;
        h *= d * c;
        aa = -(a + m) * (a + b + m) * x / ((a + m2) * (a + m2 + 1));
        d = 1 + aa * d;
        if (std::fabs(d) < tiny) d = tiny;
        c = 1 + aa / c;
        if (std::fabs(c) < tiny) c = tiny;
        d = 1 / d;
        const W del = d * c;
        h *= del;
        if (std::fabs(del - 1) < eps) return true;
    }
    frame::raise(frame::Type::Fatal, err::incomplete_no_convergence, frame::Int{max_terms});
    return false;
}

}  // namespace

// The integral of t^(a-1) exp(-t) from 0 to x, as exp(log_gamma(a) + a log x) gstar(a, x).
template <class T>
T gamma_incomplete(T a, T x) {
    using W = Wide<T>;
    frame::Level level("l_gamma_incomplete");
    if (!(a > 0)) frame::raise(frame::Type::Terminal, err::gamma_incomplete_bad_a, frame::Real{double(a)});
    if (!(x >= 0)) frame::raise(frame::Type::Terminal, err::gamma_incomplete_bad_x, frame::Real{double(x)});
    if (frame::pending()) return Mach<T>::nan();
    if (x == 0) return 0;
    const W wa = a, wx = x;
    const W lga = log_gamma_wide<T>(wa);
    if (frame::failed_below()) return Mach<T>::nan();
    W e = 0, m = 0;
    if (!gstar<W>(wa, wx, lga, std::numeric_limits<W>::epsilon(), e, m)) return Mach<T>::nan();
    // The exponents are added before exp is taken: each alone may overflow when the result does not.
    const W r = std::exp(lga + wa * std::log(wx) + e) * m;
    if (!(r <= Mach<T>::huge())) {
        frame::raise(frame::Type::Fatal, err::gamma_incomplete_overflow, frame::Real{double(a)}, frame::Real{double(x)});
        return Mach<T>::nan();
    }
    return static_cast<T>(r);
}

// I_x(a, b) = x^a (1 - x)^b / (a B(a, b)) times the continued fraction, on the side of the mean
// where it converges; I_x(a, b) = 1 - I_(1-x)(b, a) on the other (x = 0 and x = 1 come out
// exactly: x^a or (1 - x)^b is then zero). That subtraction magnifies
// the error of the smaller part, so both precisions sum it with the double routines' series in
// long double.
template <class T>
T beta_incomplete(T x, T a, T b) {
    using W = Wide<double>;
    frame::Level level("l_beta_incomplete");
    if (!(x >= 0 && x <= 1))
        frame::raise(frame::Type::Fatal, err::argument_outside_interval, frame::Str{"x"}, frame::Real{0.0},
                     frame::Real{1.0}, frame::Real{double(x)});
    if (!(a > 0) || !(b > 0))
        frame::raise(frame::Type::Terminal, err::beta_nonpositive, frame::Real{double(a)}, frame::Real{double(b)});
    if (frame::pending()) return Mach<T>::nan();
    W wx = x, wa = a, wb = b;
    const bool swap = wx > (wa + 1) / (wa + wb + 2);
    if (swap) {
        wx = 1 - wx;
        std::swap(wa, wb);
    }
    const W lb = log_beta_wide<double>(wa, wb);
    if (frame::failed_below()) return Mach<T>::nan();
    W h = 0;
    if (!beta_fraction<W>(wx, wa, wb, std::numeric_limits<W>::epsilon(), h)) return Mach<T>::nan();
    const W r = std::exp(wa * std::log(wx) + wb * alnrel<double, W>(-wx) - lb) / wa * h;
    return static_cast<T>(swap ? 1 - r : r);
}

template float gamma_incomplete<float>(float, float);
template double gamma_incomplete<double>(double, double);
template float beta_incomplete<float>(float, float, float);
template double beta_incomplete<double>(double, double, double);

}  // namespace qnum::special
