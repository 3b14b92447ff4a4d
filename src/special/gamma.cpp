// Gamma function, its logarithm, the log-gamma correction, log(1 + t), beta and log-beta.
#include <algorithm>
#include <cmath>

#include "frame/cpu.hpp"
#include "frame/frame.hpp"
#include "frame/registry.hpp"
#include "special/functions.hpp"
#include "special/tables.hpp"

namespace qnum::special {
namespace {

template <class T> constexpr auto gamcs = convert<T>(table::gamcs);
template <class T> constexpr auto algmcs = convert<T>(table::algmcs);
template <class T> constexpr auto alnrcs = convert<T>(table::alnrcs);
constexpr auto gamcs_lo = low_parts(table::gamcs);
constexpr auto alnrcs_lo = low_parts(table::alnrcs);

constexpr long double pi = 3.141592653589793238462643383279502884L;
constexpr long double lnsqrt2pi = 0.9189385332046727417803297364056176398L;   // log(sqrt(2 pi))
constexpr long double lnsqrtpi2 = 0.2257913526447274323630976149474826617L;   // log(sqrt(pi/2))

// A constant in the working precision of T.
template <class V>
V val(long double v) {
    if constexpr (std::is_same_v<V, DD>) {
        const double h = static_cast<double>(v);
        return DD(h, static_cast<double>(v - h));
    } else {
        return static_cast<V>(v);
    }
}

template <class T>
constexpr const char* public_name(const char* f, const char* d) { return std::is_same_v<T, float> ? f : d; }

// Constants of precision T that depend only on the machine constants.
template <class T>
struct GammaConstants {
    T dxrel, xsml, lgmax, corr_xbig, corr_xmax;
    GammaConstants() {
        const T tiny = Mach<T>::tiny(), huge = Mach<T>::huge();
        dxrel = std::sqrt(Mach<T>::large_spacing());
        xsml = std::exp(std::max(std::log(tiny), -std::log(huge)) + T(0.01));
        lgmax = huge / std::log(huge);
        corr_xbig = 1 / std::sqrt(Mach<T>::small_spacing());
        // 1/(12x) stays representable and nonzero up to the smaller of huge/12 and 1/(12 tiny).
        corr_xmax = std::exp(std::min(std::log(huge / 12), -std::log(12 * tiny)));
    }
};
template <class T>
const GammaConstants<T>& constants() {
    static const GammaConstants<T> k;
    return k;
}

// ---- the overflow and underflow limits of gamma, found once per process ----
template <class T>
struct Limits {
    T xmin, xmax;
};
Limits<float> float_limits;
Limits<double> double_limits;
registry::OnceFlag float_once{0}, double_once{0};

// log gamma(x) for x >= 10 from Stirling's series through the 1/x^5 term, error below 1e-9/x^7.
long double stirling(long double x) {
    const long double r = 1 / (x * x);
    return (x - 0.5L) * std::log(x) - x + lnsqrt2pi + (1 - r * (1 - r * 3 / 7) / 30) / (12 * x);
}

// The root of stirling(x) = target by Newton's method (stirling' ~ log x - 1/(2x)); the
// function is convex, so the iterates settle on the root from above after the first step.
long double stirling_root(long double target) {
    long double x = target / std::log(target) + 10;
    for (int i = 0; i < 60; ++i) {
        const long double dx = (stirling(x) - target) / (std::log(x) - 1 / (2 * x));
        x -= dx;
        if (std::fabs(dx) < 1e-15L * x) break;
    }
    return x;
}

// xmax: the largest x with gamma(x) <= huge. xmin: below it |gamma(x)|, which near -y is at
// least pi/gamma(y + 1), falls under the smallest normalised number.
template <class T>
void find_limits(Limits<T>& out) {
    const long double huge = Mach<T>::huge(), tiny = Mach<T>::tiny();
    T xmax = static_cast<T>(stirling_root(std::log(huge)));
    while (stirling(xmax) > std::log(huge)) xmax = std::nextafter(xmax, T(0));
    const long double y = stirling_root(std::log(pi) - std::log(tiny)) - 1;
    T xmin = static_cast<T>(-y);
    if (xmin < -y) xmin = std::nextafter(xmin, T(0));
    out = Limits<T>{xmin, xmax};
}
void find_float_limits() { find_limits(float_limits); }
void find_double_limits() { find_limits(double_limits); }

template <class T>
const Limits<T>& limits() {
    if constexpr (std::is_same_v<T, float>) {
        registry::once(float_once, find_float_limits);
        return float_limits;
    } else {
        registry::once(double_once, find_double_limits);
        return double_limits;
    }
}

// sin(pi y) for y >= 0 (a double: only the caller's own arguments are negative), reduced
// exactly to |r| <= 1/2 first, so that it is exactly zero at the integers and keeps its
// relative accuracy next to them. For double, pi r is formed in double-double.
template <class V>
V sin_pi(double y) {
    double r = std::fmod(y, 2.0);
    if (r > 1) r -= 2;
    if (r > 0.5) r = 1 - r;
    if (r < -0.5) r = -1 - r;
    if constexpr (!std::is_same_v<V, DD>) {
        return std::sin(V(pi) * r);
    } else {
        const DD a = val<V>(pi) * r;
        return dd::quick_two_sum(std::sin(a.hi), std::cos(a.hi) * a.lo);
    }
}

// log x: for the double routines to about 2^-62 relative, or (fast) with an absolute error
// below 2^-54 where the result is large enough for that.
template <class V>
V log_of(V x, bool fast) {
    if constexpr (!std::is_same_v<V, DD>) {
        (void)fast;
        return std::log(x);
    } else {
        if (!fast) return log(x);
        return log_fast(x.hi) + x.lo / x.hi;
    }
}

// A running product: for double-double, its low parts renormalised only once, at the end.
template <class V, bool F = false>
V product(V a, V b) {
    if constexpr (std::is_same_v<V, DD>) return dd::lazy_product<F>(a, b);
    else return a * b;
}
template <class V>
V normal(V a) {
    if constexpr (std::is_same_v<V, DD>) return dd::quick_two_sum(a.hi, a.lo);
    else return a;
}

// WARNING 9020 when x lies so near a negative integer that half the digits of the result are lost.
template <class T>
void warn_near_negative_integer(double x, double scale) {
    if (std::fabs((x - std::trunc(x - 0.5)) * scale / x) < constants<T>().dxrel)
        frame::raise(frame::Type::Warning, err::near_negative_integer, frame::Real{x});
}

// The kept terms of GAMCS depend only on the table and the precision: found once, not on
// every call.
template <class T>
int gamma_terms() {
    static const int ngam = inits(gamcs<T>.data(), 42, T(0.1) * Mach<T>::small_spacing(), inits_name<T>());
    return ngam;
}

// gamma(x) for |x| <= 10: gamma(1 + f) times or divided by the factors between, 0 <= f < 1.
// Raises only for x at or next to zero and for x < -0.5.
template <class T, class V, bool F = false>
V gamma_small(V x) {
    int n = static_cast<int>(double(x));
    if (x < 0) --n;
    const V f = x - n;
    --n;
    V g = 0.9375 + cheb<T, V, 42, F>(2 * f - 1, table::gamcs, gamcs<double>, gamcs_lo, gamma_terms<T>(),
                                     csevl_name<T>());
    if (n == 0) return g;
    if (n > 0) {
        for (int i = 1; i <= n; ++i) g = product<V, F>(g, f + i);
        return normal(g);
    }
    n = -n;
    if (x == 0) {
        frame::raise(frame::Type::Terminal, err::gamma_at_zero);
        return Mach<T>::nan();
    }
    // Scaled by 1e20 on both sides, as the float routine always compared them.
    if (f * 1e20 < double(constants<T>().xsml) * 1e20) {
        frame::raise(frame::Type::Fatal, err::gamma_near_zero, frame::Real{double(x)});
        return Mach<T>::nan();
    }
    if (x < 0 && x + (n - 2) == 0) {
        frame::raise(frame::Type::Terminal, err::gamma_negative_integer, frame::Real{double(x)});
        return Mach<T>::nan();
    }
    if (x < -0.5) warn_near_negative_integer<T>(double(x), 1);
    // Divided by x (x + 1) ... (x + n - 1), formed first: next to zero, adding i before x
    // would round x away.
    V d = x;
    for (int i = 2; i <= n; ++i) d = product<V, F>(d, x + (i - 1));
    if constexpr (std::is_same_v<V, DD>) return dd::div<F>(g, normal(d));
    else return g / normal(d);
}

template <class T, class V>
V gamma_body(V x) {
    frame::Level level("l_gamma");
    gamma_terms<T>();
    const Limits<T>& lim = limits<T>();
    const V y = fabs(x);
    if (y <= 10) return gamma_small<T, V>(x);
    if (x > lim.xmax) {
        frame::raise(frame::Type::Fatal, err::gamma_overflow, frame::Real{double(x)}, frame::Real{double(lim.xmax)});
        return Mach<T>::nan();
    }
    if (x < lim.xmin) {
        frame::raise(frame::Type::Alert, err::gamma_underflow, frame::Real{double(x)}, frame::Real{double(lim.xmin)});
        return 0;
    }
    // The exponent reaches 700: each unit of its last place is a unit of the result's, so it is
    // formed in the working precision whole.
    const V g = exp((y - 0.5) * log_of<V>(y, false) - y + val<V>(lnsqrt2pi) + r9lgmc<T, V>(y, corr_name<T>()));
    if (x > 0) return g;
    warn_near_negative_integer<T>(double(x), 1);
    const V s = sin_pi<V>(double(y));
    if (s == 0) {
        frame::raise(frame::Type::Fatal, err::gamma_sine_zero, frame::Real{double(x)});
        return Mach<T>::nan();
    }
    return -val<V>(pi) / (y * s * g);
}

// The public gamma, log-gamma and log-beta as other routines of this family call them: under
// the public name, in the working precision.
template <class T, class V>
V gamma_call(V x) {
    frame::Level call(public_name<T>("qnum_f_gamma", "qnum_d_gamma"));
    return gamma_body<T, V>(x);
}

// log|g| for g = gamma(x), |x| <= 10.
template <class V>
V log_of_gamma(V g, V x, bool fast_log) {
    if constexpr (std::is_same_v<V, DD>) {
        // The rounded logarithm of g.hi is within a unit of the result's last place; the low
        // part moves it by g.lo/g.hi. Where a last-place accuracy of log(g) is asked for
        // (the incomplete functions), the working precision is long double.
        // gamma overflows only where |x| < 1/huge (negative x; the positive ones fail first),
        // and there log|gamma(x)| = -log|x| to the last bit.
        if (std::isinf(g.hi)) return -log(fabs(x));
        if (fast_log) return std::log(g.hi) + g.lo / g.hi;
    }
    return log(g);
}

// log gamma(x) = (x - 1/2) log x - x + log sqrt(2 pi) + the correction, x > 10.
template <class T, class V, bool F = false>
V log_gamma_large(V x, bool fast_log) {
    if constexpr (std::is_same_v<V, DD>) {
        constexpr DD c{0.91893853320467278, -3.8782941580672414e-17};  // log(sqrt(2 pi))
        // The high parts summed exactly, their errors and the low parts gathered apart, and
        // the whole renormalised once: four terms cost one renormalisation, not three.
        const DD p = dd::mul<F>(x - 0.5, log_of<V>(x, fast_log));
        const DD corr = r9lgmc<T, V>(x, corr_name<T>());
        const DD s1 = dd::two_sum(p.hi, -x.hi);
        const DD s2 = dd::two_sum(s1.hi, c.hi);
        const DD s3 = dd::two_sum(s2.hi, corr.hi);
        return dd::quick_two_sum(s3.hi, ((p.lo - x.lo) + (s1.lo + s2.lo)) + ((s3.lo + c.lo) + corr.lo));
    } else {
        return (x - 0.5) * log_of<V>(x, fast_log) - x + val<V>(lnsqrt2pi) + r9lgmc<T, V>(x, corr_name<T>());
    }
}

template <class T, class V>
V log_gamma_body(V x, bool fast_log) {
    frame::Level level("l_log_gamma");
    const GammaConstants<T>& k = constants<T>();
    const V y = fabs(x);
    if (y <= 10) return log_of_gamma(fabs(gamma_call<T, V>(x)), x, fast_log);
    if (y > k.lgmax) {
        frame::raise(frame::Type::Fatal, err::log_gamma_overflow, frame::Real{double(x)}, frame::Real{double(k.lgmax)});
        return Mach<T>::nan();
    }
    if (x > 0) return log_gamma_large<T, V>(x, fast_log);
    const V s = fabs(sin_pi<V>(double(y)));
    if (s == 0) {
        frame::raise(frame::Type::Fatal, err::gamma_negative_integer, frame::Real{double(x)});
        return Mach<T>::nan();
    }
    const V r = val<V>(lnsqrtpi2) + (x - 0.5) * log_of<V>(y, fast_log) - x - log(s) - r9lgmc<T, V>(y, corr_name<T>());
    warn_near_negative_integer<T>(double(x), double(r));
    return r;
}

template <class T, class V>
V log_gamma_call(V x, bool fast_log = false) {
    frame::Level call(public_name<T>("qnum_f_log_gamma", "qnum_d_log_gamma"));
    return log_gamma_body<T, V>(x, fast_log);
}

// A correction term that underflowed must not surface from log_beta.
void clear_correction_note() {
    if (qnum_n1rty(1) == 1) qnum_e1mes(0, 0, "");
}

template <class T, class V>
V log_beta_body(V a, V b) {
    frame::Level level("l_log_beta");
    if (!(a > 0) || !(b > 0)) {
        frame::raise(frame::Type::Terminal, err::log_beta_nonpositive);
        return Mach<T>::nan();
    }
    const V p = std::min(a, b), q = std::max(a, b);
    if (q < 10) return log(gamma_call<T, V>(q) / gamma_call<T, V>(p + q) * gamma_call<T, V>(p));
    const V t = -p / (p + q);
    if (p < 10) {
        const V corr = r9lgmc<T, V>(q, corr_name<T>()) - r9lgmc<T, V>(p + q, corr_name<T>());
        clear_correction_note();
        return log_gamma_call<T, V>(p) + corr + p - p * log_of<V>(p + q, false) + (q - 0.5) * alnrel<T, V>(t);
    }
    const V corr = r9lgmc<T, V>(p, corr_name<T>()) + r9lgmc<T, V>(q, corr_name<T>()) -
                        r9lgmc<T, V>(p + q, corr_name<T>());
    clear_correction_note();
    return -0.5 * log_of<V>(q, false) + val<V>(lnsqrt2pi) + corr + (p - 0.5) * log_of<V>(p / (p + q), false) +
           q * alnrel<T, V>(t);
}

template <class T, class V>
V beta_body(V a, V b) {
    frame::Level level("l_beta");
    if (!(a > 0) || !(b > 0)) {
        frame::raise(frame::Type::Terminal, err::beta_nonpositive, frame::Real{double(a)}, frame::Real{double(b)});
        return Mach<T>::nan();
    }
    // a + b exactly (double-double for double): gamma magnifies a rounded sum up to 300 times.
    // The larger gamma is divided first, so that no partial result overflows.
    if (a + b < limits<T>().xmax) {
        const V p = std::min(a, b), q = std::max(a, b);
        return gamma_call<T, V>(q) / gamma_call<T, V>(a + b) * gamma_call<T, V>(p);
    }
    V lb;
    {
        frame::Level call(public_name<T>("qnum_f_log_beta", "qnum_d_log_beta"));
        lb = log_beta_body<T, V>(a, b);
    }
    if (lb > std::log(double(Mach<T>::tiny()))) return exp(lb);
    frame::raise(frame::Type::Alert, err::beta_underflow, frame::Real{double(a)}, frame::Real{double(b)});
    return 0;
}

}  // namespace

// The correction log gamma(x) - [(x - 1/2) log x - x + log sqrt(2 pi)] for x >= 10. Its terms
// are kept for the accuracy of the precision itself, not a tenth of it: the correction is at
// most 1/120 of the result, so double suffices for both precisions.
template <class T, class V>
V r9lgmc(V x_in, const char* name) {
    // Beside double-double, double suffices: the correction is at most 1/120 of the result.
    using C = std::conditional_t<std::is_same_v<V, DD>, double, V>;
    const C x = static_cast<C>(x_in);
    static const int nalgm = inits(algmcs<T>.data(), 15, Mach<T>::small_spacing(), inits_name<T>());
    const GammaConstants<T>& k = constants<T>();
    if (x < 10) {
        raise_at(name, frame::Type::Fatal, err::correction_small_argument, frame::Real{double(x)}, frame::Real{10.0});
        return Mach<T>::nan();
    }
    if (x >= k.corr_xmax) {
        raise_at(name, frame::Type::Alert, err::result_underflows, frame::Real{double(x)},
                 frame::Real{double(k.corr_xmax)});
        return 0;
    }
    if (x < k.corr_xbig) {
        const C t = 10 / x;
        return csevl<C>(2 * t * t - 1, algmcs<C>.data(), nalgm, csevl_name<T>()) / x;
    }
    return 1 / (12 * x);
}

template <class T, class V>
V alnrel(V t) {
    static const int n = inits(alnrcs<T>.data(), 43, T(0.1) * Mach<T>::small_spacing(), inits_name<T>());
    if (fabs(t) <= 0.375) return t * (1 - t * cheb<T>(t / 0.375, table::alnrcs, alnrcs<double>, alnrcs_lo, n, csevl_name<T>()));
    return log(1 + t);
}

template <class T> T gamma(T x) { return static_cast<T>(gamma_body<T, Val<T>>(x)); }
// log gamma(x) for 1e-30 <= x <= xmax of log_gamma, where it raises nothing (gamma's errors
// near zero lie far below): no levels, since they would end cleanly.
template <class T, bool F = false>
Val<T> log_gamma_positive(Val<T> x) {
    gamma_terms<T>();
    if (x <= 10) return log_of_gamma<Val<T>>(gamma_small<T, Val<T>, F>(x), x, true);
    return log_gamma_large<T, Val<T>, F>(x, true);
}

// The same on processors with fused multiply-add: every step inlined into this function, so
// that it is compiled for the instruction.
__attribute__((target("fma"), flatten)) DD log_gamma_positive_fma(double x) {
    return log_gamma_positive<double, true>(x);
}

template <class T> T log_gamma(T x) {
    if (x >= T(1e-30) && x <= constants<T>().lgmax) {
        if constexpr (std::is_same_v<T, double>)
            if (cpu::active() != cpu::Path::Portable) return double(log_gamma_positive_fma(x));
        return static_cast<T>(log_gamma_positive<T>(x));
    }
    return static_cast<T>(log_gamma_body<T, Val<T>>(x, true));
}
template <class T> Wide<T> log_gamma_wide(Wide<T> x) { return log_gamma_call<T, Wide<T>>(x); }
template <class T> T beta(T a, T b) { return static_cast<T>(beta_body<T, Val<T>>(a, b)); }
template <class T> T log_beta(T a, T b) { return static_cast<T>(log_beta_body<T, Val<T>>(a, b)); }
template <class T> Wide<T> log_beta_wide(Wide<T> a, Wide<T> b) {
    frame::Level call(public_name<T>("qnum_f_log_beta", "qnum_d_log_beta"));
    return log_beta_body<T, Wide<T>>(a, b);
}

#define QNUM_SPECIAL_GAMMA(T)                                   \
    template Wide<T> alnrel<T, Wide<T>>(Wide<T>);               \
    template T gamma<T>(T);                                     \
    template T log_gamma<T>(T);                                 \
    template Wide<T> log_gamma_wide<T>(Wide<T>);                \
    template T beta<T>(T, T);                                   \
    template T log_beta<T>(T, T);                               \
    template Wide<T> log_beta_wide<T>(Wide<T>, Wide<T>);
QNUM_SPECIAL_GAMMA(float)
QNUM_SPECIAL_GAMMA(double)
#undef QNUM_SPECIAL_GAMMA
template double r9lgmc<float, double>(double, const char*);
template long double r9lgmc<double, long double>(long double, const char*);

}  // namespace qnum::special
