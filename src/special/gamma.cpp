// Gamma function, its logarithm, the log-gamma correction, log(1 + t), beta and log-beta.
#include <algorithm>
#include <cmath>

#include "frame/frame.hpp"
#include "frame/registry.hpp"
#include "special/special.hpp"
#include "special/tables.hpp"

namespace qnum::special {
namespace {

template <class T> constexpr auto gamcs = convert<T>(table::gamcs);
template <class T> constexpr auto algmcs = convert<T>(table::algmcs);
template <class T> constexpr auto alnrcs = convert<T>(table::alnrcs);

constexpr long double pi = 3.141592653589793238462643383279502884L;
constexpr long double lnsqrt2pi = 0.9189385332046727417803297364056176398L;   // log(sqrt(2 pi))
constexpr long double lnsqrtpi2 = 0.2257913526447274323630976149474826617L;   // log(sqrt(pi/2))

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

// sin(pi y) for y >= 0, reduced exactly to |r| <= 1/2 first, so that it is exactly zero at the
// integers and keeps its relative accuracy next to them.
template <class W>
W sin_pi(W y) {
    W r = std::fmod(y, W(2));
    if (r > 1) r -= 2;
    if (r > W(0.5)) r = 1 - r;
    if (r < W(-0.5)) r = -1 - r;
    return std::sin(W(pi) * r);
}

// WARNING 9020 when x lies so near a negative integer that half the digits of the result are lost.
template <class T, class W>
void warn_near_negative_integer(W x, W scale) {
    if (std::fabs((x - std::trunc(x - W(0.5))) * scale / x) < constants<T>().dxrel)
        frame::raise(frame::Type::Warning, err::near_negative_integer, frame::Real{double(x)});
}

template <class T>
Wide<T> gamma_body(Wide<T> x) {
    using W = Wide<T>;
    frame::Level level("l_gamma");
    // The kept terms depend only on the table and the precision: found once, not on every call.
    static const int ngam = inits(gamcs<T>.data(), 42, T(0.1) * Mach<T>::small_spacing(), inits_name<T>());
    const GammaConstants<T>& k = constants<T>();
    const Limits<T>& lim = limits<T>();
    const W y = std::fabs(x);
    if (y <= 10) {
        // gamma(x) = gamma(1 + f) times or divided by the factors between, 0 <= f < 1.
        int n = static_cast<int>(x);
        if (x < 0) --n;
        const W f = x - n;
        --n;
        W g = W(0.9375) + csevl<W>(2 * f - 1, gamcs<W>.data(), ngam, csevl_name<T>());
        if (n == 0) return g;
        if (n > 0) {
            for (int i = 1; i <= n; ++i) g *= f + i;
            return g;
        }
        n = -n;
        if (x == 0) {
            frame::raise(frame::Type::Terminal, err::gamma_at_zero);
            return Mach<T>::nan();
        }
        // Scaled by 1e20 on both sides, as the float routine always compared them.
        if (f * W(1e20) < W(k.xsml) * W(1e20)) {
            frame::raise(frame::Type::Fatal, err::gamma_near_zero, frame::Real{double(x)});
            return Mach<T>::nan();
        }
        if (x < 0 && x + (n - 2) == 0) {
            frame::raise(frame::Type::Terminal, err::gamma_negative_integer, frame::Real{double(x)});
            return Mach<T>::nan();
        }
        if (x < W(-0.5)) warn_near_negative_integer<T>(x, W(1));
        // x + (i - 1): next to zero, adding i first would round x away.
        for (int i = 1; i <= n; ++i) g /= x + (i - 1);
        return g;
    }
    if (x > lim.xmax) {
        frame::raise(frame::Type::Fatal, err::gamma_overflow, frame::Real{double(x)}, frame::Real{double(lim.xmax)});
        return Mach<T>::nan();
    }
    if (x < lim.xmin) {
        frame::raise(frame::Type::Alert, err::gamma_underflow, frame::Real{double(x)}, frame::Real{double(lim.xmin)});
        return 0;
    }
    const W g = std::exp((y - W(0.5)) * std::log(y) - y + W(lnsqrt2pi) + r9lgmc<T>(y, corr_name<T>()));
    if (x > 0) return g;
    warn_near_negative_integer<T>(x, W(1));
    const W s = sin_pi(y);
    if (s == 0) {
        frame::raise(frame::Type::Fatal, err::gamma_sine_zero, frame::Real{double(x)});
        return Mach<T>::nan();
    }
    return -W(pi) / (y * s * g);
}

// The public gamma, log-gamma and log-beta as other routines of this family call them: under
// the public name, in the wide precision.
template <class T>
Wide<T> gamma_call(Wide<T> x) {
    frame::Level call(public_name<T>("qnum_f_gamma", "qnum_d_gamma"));
    return gamma_body<T>(x);
}

template <class T>
Wide<T> log_gamma_body(Wide<T> x) {
    using W = Wide<T>;
    frame::Level level("l_log_gamma");
    const GammaConstants<T>& k = constants<T>();
    const W y = std::fabs(x);
    if (y <= 10) return std::log(std::fabs(gamma_call<T>(x)));
    if (y > k.lgmax) {
        frame::raise(frame::Type::Fatal, err::log_gamma_overflow, frame::Real{double(x)}, frame::Real{double(k.lgmax)});
        return Mach<T>::nan();
    }
    if (x > 0) return (x - W(0.5)) * std::log(x) - x + W(lnsqrt2pi) + r9lgmc<T>(y, corr_name<T>());
    const W s = std::fabs(sin_pi(y));
    if (s == 0) {
        frame::raise(frame::Type::Fatal, err::gamma_negative_integer, frame::Real{double(x)});
        return Mach<T>::nan();
    }
    const W r = W(lnsqrtpi2) + (x - W(0.5)) * std::log(y) - x - std::log(s) - r9lgmc<T>(y, corr_name<T>());
    warn_near_negative_integer<T>(x, r);
    return r;
}

template <class T>
Wide<T> log_gamma_call(Wide<T> x) {
    frame::Level call(public_name<T>("qnum_f_log_gamma", "qnum_d_log_gamma"));
    return log_gamma_body<T>(x);
}

// A correction term that underflowed must not surface from log_beta.
void clear_correction_note() {
    if (qnum_n1rty(1) == 1) qnum_e1mes(0, 0, "");
}

template <class T>
Wide<T> log_beta_body(Wide<T> a, Wide<T> b) {
    using W = Wide<T>;
    frame::Level level("l_log_beta");
    if (!(a > 0) || !(b > 0)) {
        frame::raise(frame::Type::Terminal, err::log_beta_nonpositive);
        return Mach<T>::nan();
    }
    const W p = std::min(a, b), q = std::max(a, b);
    if (q < 10) return std::log(gamma_call<T>(p) * gamma_call<T>(q) / gamma_call<T>(p + q));
    const W t = -p / (p + q);
    if (p < 10) {
        const W corr = r9lgmc<T>(q, corr_name<T>()) - r9lgmc<T>(p + q, corr_name<T>());
        clear_correction_note();
        return log_gamma_call<T>(p) + corr + p - p * std::log(p + q) + (q - W(0.5)) * alnrel<T>(t);
    }
    const W corr = r9lgmc<T>(p, corr_name<T>()) + r9lgmc<T>(q, corr_name<T>()) - r9lgmc<T>(p + q, corr_name<T>());
    clear_correction_note();
    return -W(0.5) * std::log(q) + W(lnsqrt2pi) + corr + (p - W(0.5)) * std::log(p / (p + q)) + q * alnrel<T>(t);
}

template <class T>
Wide<T> beta_body(Wide<T> a, Wide<T> b) {
    using W = Wide<T>;
    frame::Level level("l_beta");
    if (!(a > 0) || !(b > 0)) {
        frame::raise(frame::Type::Terminal, err::beta_nonpositive, frame::Real{double(a)}, frame::Real{double(b)});
        return Mach<T>::nan();
    }
    if (a + b < limits<T>().xmax) return gamma_call<T>(a) * gamma_call<T>(b) / gamma_call<T>(a + b);
    W lb;
    {
        frame::Level call(public_name<T>("qnum_f_log_beta", "qnum_d_log_beta"));
        lb = log_beta_body<T>(a, b);
    }
    if (lb > std::log(W(Mach<T>::tiny()))) return std::exp(lb);
    frame::raise(frame::Type::Alert, err::beta_underflow, frame::Real{double(a)}, frame::Real{double(b)});
    return 0;
}

}  // namespace

// The correction log gamma(x) - [(x - 1/2) log x - x + log sqrt(2 pi)] for x >= 10. Its terms
// are kept for the accuracy of the precision itself, not a tenth of it: the correction is at
// most 1/120 of the result.
template <class T>
Wide<T> r9lgmc(Wide<T> x, const char* name) {
    using W = Wide<T>;
    static const int nalgm = inits(algmcs<T>.data(), 15, Mach<T>::small_spacing(), inits_name<T>());
    const GammaConstants<T>& k = constants<T>();
    if (x < 10) {
        raise_at(name, frame::Type::Fatal, err::correction_small_argument, frame::Real{double(x)},
                        frame::Real{10.0});
        return Mach<T>::nan();
    }
    if (x >= k.corr_xmax) {
        raise_at(name, frame::Type::Alert, err::result_underflows, frame::Real{double(x)},
                        frame::Real{double(k.corr_xmax)});
        return 0;
    }
    if (x < k.corr_xbig) {
        const W t = 10 / x;
        return csevl<W>(2 * t * t - 1, algmcs<W>.data(), nalgm, csevl_name<T>()) / x;
    }
    return 1 / (12 * x);
}

template <class T>
Wide<T> alnrel(Wide<T> t) {
    using W = Wide<T>;
    static const int n = inits(alnrcs<T>.data(), 43, T(0.1) * Mach<T>::small_spacing(), inits_name<T>());
    if (std::fabs(t) <= W(0.375)) return t * (1 - t * csevl<W>(t / W(0.375), alnrcs<W>.data(), n, csevl_name<T>()));
    return std::log(1 + t);
}

template <class T> T gamma(T x) { return static_cast<T>(gamma_body<T>(x)); }
template <class T> Wide<T> gamma_wide(Wide<T> x) { return gamma_call<T>(x); }
template <class T> T log_gamma(T x) { return static_cast<T>(log_gamma_body<T>(x)); }
template <class T> Wide<T> log_gamma_wide(Wide<T> x) { return log_gamma_call<T>(x); }
template <class T> T beta(T a, T b) { return static_cast<T>(beta_body<T>(a, b)); }
template <class T> T log_beta(T a, T b) { return static_cast<T>(log_beta_body<T>(a, b)); }
template <class T> Wide<T> log_beta_wide(Wide<T> a, Wide<T> b) {
    frame::Level call(public_name<T>("qnum_f_log_beta", "qnum_d_log_beta"));
    return log_beta_body<T>(a, b);
}

#define QNUM_SPECIAL_GAMMA(T)                                   \
    template Wide<T> r9lgmc<T>(Wide<T>, const char*);           \
    template Wide<T> alnrel<T>(Wide<T>);                        \
    template T gamma<T>(T);                                     \
    template Wide<T> gamma_wide<T>(Wide<T>);                    \
    template T log_gamma<T>(T);                                 \
    template Wide<T> log_gamma_wide<T>(Wide<T>);                \
    template T beta<T>(T, T);                                   \
    template T log_beta<T>(T, T);                               \
    template Wide<T> log_beta_wide<T>(Wide<T>, Wide<T>);
QNUM_SPECIAL_GAMMA(float)
QNUM_SPECIAL_GAMMA(double)
#undef QNUM_SPECIAL_GAMMA

}  // namespace qnum::special
