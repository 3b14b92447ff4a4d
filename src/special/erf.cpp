// Error function, complementary error function and their inverses, from Chebyshev series.
#include <cmath>
#include <cstdlib>

#include "frame/cpu.hpp"
#include "frame/frame.hpp"
#include "frame/registry.hpp"
#include "special/functions.hpp"
#include "special/tables.hpp"

namespace qnum::special {
namespace {

template <class T> constexpr auto erfcs = convert<T>(table::erfcs);
template <class T> constexpr auto erc2cs = convert<T>(table::erc2cs);
template <class T> constexpr auto erfccs = convert<T>(table::erfccs);
template <class T> constexpr auto erfinv1 = convert<T>(table::erfinv1);
template <class T> constexpr auto erfinv2 = convert<T>(table::erfinv2);
constexpr auto erfcs_lo = low_parts(table::erfcs);
constexpr auto erc2cs_lo = low_parts(table::erc2cs);
constexpr auto erfccs_lo = low_parts(table::erfccs);

constexpr long double sqrtpi = 1.772453850905516027298167483341145182798L;

// ---- per-thread term counts: [0] ERFCS for erf, [1] ERFCS for erfc, [2] ERFCCS, [3] ERC2CS ----
registry::OnceFlag keys_once{0};
int count_keys[2] = {0, 0};  // float, double; 0: the key could not be created
// The calling thread's blocks, as the registry holds them, for a lookup without a call.
__thread int* thread_counts[2] __attribute__((tls_model("initial-exec"))) = {nullptr, nullptr};

void free_block(void* p) {
    for (int*& cached : thread_counts)
        if (cached == p) cached = nullptr;
    std::free(p);
}
void create_keys() {
    for (int& key : count_keys)
        if (registry::key_create(&key, free_block) != registry::ok) key = 0;
}

template <class T>
constexpr int precision_index() { return std::is_same_v<T, float> ? 0 : 1; }

// The calling thread's block, created zero-filled on first use; null (after TERMINAL 200) when
// it cannot be had.
template <class T>
int* counts() {
    if (int* p = thread_counts[precision_index<T>()]) return p;
    registry::once(keys_once, create_keys);
    const int key = count_keys[precision_index<T>()];
    int* p = key != 0 ? static_cast<int*>(registry::get_value(key)) : nullptr;
    if (p == nullptr) {
        if (key != 0) p = static_cast<int*>(std::calloc(4, sizeof(int)));
        // A failure to list the block for shutdown can still leave it stored for this thread;
        // then it is the thread's and is freed at its exit.
        if (p != nullptr && registry::set_value(key, p) != registry::ok && registry::get_value(key) != p) {
            std::free(p);
            p = nullptr;
        }
    }
    if (p == nullptr) frame::raise(frame::Type::Terminal, err::out_of_memory);
    thread_counts[precision_index<T>()] = p;
    return p;
}

// Branch points of erf and erfc in precision T. They depend only on the machine constants, so
// they are found once rather than on every call.
template <class T>
struct ErfLimits {
    T xbig, sqeps, xsml, xmax;
    ErfLimits() {
        const T eps = Mach<T>::small_spacing();
        const T sqrtpi_t = static_cast<T>(sqrtpi);
        xbig = std::sqrt(-std::log(sqrtpi_t * eps));
        sqeps = std::sqrt(2 * eps);
        xsml = -xbig;
        const T txmax = std::sqrt(-std::log(sqrtpi_t * Mach<T>::tiny()));
        xmax = txmax - T(0.5) * std::log(txmax) / txmax - T(0.01);
    }
};
template <class T>
const ErfLimits<T>& erf_limits() {
    static const ErfLimits<T> limits;
    return limits;
}

// 2/sqrt(pi) in the working precision.
template <class T>
Val<T> two_over_sqrtpi() {
    if constexpr (std::is_same_v<T, float>) return 2 / double(sqrtpi);
    else return DD(1.1283791670955126, 1.533545961316588e-17);
}

template <class T>
T eta() { return T(0.1) * Mach<T>::small_spacing(); }

// erfc(y) exp(y^2) y - 0.5 for y > 1 from the two tail series (y^2 <= 4 or beyond), s = y^2.
template <class T, bool F = false>
Val<T> tail(Val<T> s, const int* c) {
    if constexpr (std::is_same_v<T, float>) {
        if (s <= 4) return csevl<double>((8 / s - 5) / 3, erc2cs<double>.data(), c[3], csevl_name<T>());
        return csevl<double>(8 / s - 1, erfccs<double>.data(), c[2], csevl_name<T>());
    } else {
        // t rounded, and the rest of 8/s (its division remainder and s.lo) carried as t.lo.
        const double u = 8 / s.hi;
        const DD us = dd::two_prod_t<F>(u, s.hi);
        // (Multiplications by u/8 and 1/3 in place of divisions: only the high parts need to be
        // the rounded quotients, and the low parts carry the exact remainders.)
        const double ulo = (((8 - us.hi) - us.lo) - u * s.lo) * (u * 0.125);
        if (s.hi <= 4) {
            const DD v = dd::two_sum(u, -5);
            const double th = v.hi * (1.0 / 3);
            const DD t3 = dd::two_prod_t<F>(th, 3);
            const DD t(th, (((v.hi - t3.hi) - t3.lo) + (v.lo + ulo)) * (1.0 / 3));
            return cheb<T, DD, 49, F>(t, table::erc2cs, erc2cs<double>, erc2cs_lo, c[3], csevl_name<T>());
        }
        const DD v = dd::two_sum(u, -1);
        return cheb<T, DD, 59, F>(DD(v.hi, v.lo + ulo), table::erfccs, erfccs<double>, erfccs_lo, c[2],
                                  csevl_name<T>());
    }
}

// a/y given 1/y: for double-double the quotient a.hi (1/y) and the exact remainder of it.
template <bool F>
double over(double a, double y, double) { return a / y; }
template <bool F>
DD over(DD a, double y, double inv_y) {
    const double q = a.hi * inv_y;
    const DD qy = dd::two_prod_t<F>(q, y);
    return dd::quick_two_sum(q, (((a.hi - qy.hi) - qy.lo) + a.lo) * inv_y);
}

// y^2: exact in double-double, and in double for the float routines.
template <bool F>
double square(double y, double) { return y * y; }
template <bool F>
DD square(double y, DD) { return dd::two_prod_t<F>(y, y); }
template <class T, bool F = false>
Val<T> square(double y) { return square<F>(y, Val<T>()); }

// 1 - erfc(x) = erf(x) for sqeps < |x| <= 1: x (1 + series), summed as x + x series.
template <class T, bool F = false>
Val<T> erf_series(double x, int count) {
    if constexpr (std::is_same_v<T, float>) {
        return x + x * csevl<double>(2 * x * x - 1, erfcs<double>.data(), count, csevl_name<T>());
    } else {
        // 2 s.hi - 1 is exact where it matters (s >= 1/4); its rounding below goes with t.lo.
        const DD s = dd::two_prod_t<F>(x, x);
        const DD t = dd::two_sum(2 * s.hi, -1);
        const DD c = cheb<T, DD, 21, F>(DD(t.hi, t.lo + 2 * s.lo), table::erfcs, erfcs<double>, erfcs_lo, count,
                                        csevl_name<T>());
        const DD p = dd::two_prod_t<F>(x, c.hi);
        const DD r = dd::two_sum(x, p.hi);
        return dd::quick_two_sum(r.hi, r.lo + (p.lo + x * c.lo));
    }
}

template <class T>
void fill_erfc_counts(int* c) {
    if (c[1] != 0) return;
    c[1] = inits(erfcs<T>.data(), 21, eta<T>(), inits_name<T>());
    c[2] = inits(erfccs<T>.data(), 59, eta<T>(), inits_name<T>());
    c[3] = inits(erc2cs<T>.data(), 49, eta<T>(), inits_name<T>());
}

// erfc(x) for x <= xmax once the term counts are known: nothing here can raise.
template <class T, bool F = false>
Val<T> erfc_value(double x, const int* c, const ErfLimits<T>& k) {
    if (x <= k.xsml) return 2;
    const double y = std::fabs(x);
    if (y <= 1) {
        if (y < k.sqeps) return 1 - 2 * x / double(sqrtpi);
        return 1 - erf_series<T, F>(x, c[1]);
    }
    // exp(-y^2) of the exact square: the rounding of y^2 would be magnified by up to 2 y^2.
    const double inv_y = 1 / y;  // ahead of the series, which has time to spare for it
    const Val<T> s = square<T, F>(y);
    const Val<T> f = over<F>(0.5 + tail<T, F>(s, c), y, inv_y);
    if constexpr (std::is_same_v<T, double>) {
        // Near underflow the low parts of the product would fall below the smallest spacing:
        // it is formed 2^200 higher and scaled back once rounded.
        if (s > 650) return double(dd::mul<F>(exp(200 * ln2_dd - s), f)) * 6.223015277861142e-61;
        const DD r = dd::mul<F>(exp(-s), f);
        return x < 0 ? 2 - r : r;
    }
    const Val<T> r = exp(-s) * f;
    return x < 0 ? 2 - r : r;
}

// The double routines' values on processors with fused multiply-add: every step inlined into
// these functions, so that it is compiled for the instruction.
__attribute__((target("fma"), flatten)) DD erfc_fma(double x, const int* c, const ErfLimits<double>& k) {
    return erfc_value<double, true>(x, c, k);
}

bool fused() { return cpu::active() != cpu::Path::Portable; }

template <class T>
Val<T> erfc_any(double x, const int* c, const ErfLimits<T>& k) {
    if constexpr (std::is_same_v<T, double>)
        if (fused()) return erfc_fma(x, c, k);
    return erfc_value<T>(x, c, k);
}

template <class T>
Val<T> erfc_body(double x) {
    frame::Level level("l_erfc");
    int* c = counts<T>();
    if (c == nullptr) return Mach<T>::nan();
    fill_erfc_counts<T>(c);
    const ErfLimits<T>& k = erf_limits<T>();
    if (x > k.xmax) {
        frame::raise(frame::Type::Alert, err::result_underflows, frame::Real{x}, frame::Real{double(k.xmax)});
        return 0;
    }
    return erfc_any<T>(x, c, k);
}

// exp(y^2) erfc(y) for y >= 0.8, the scaled function of the Newton step below.
template <class T>
double erfc_scaled(double y, const int* c) {
    if (y > 1) return double((0.5 + tail<T>(square<T>(y), c)) / y);
    return double(exp(square<T>(y)) * (1 - erf_series<T>(y, c[1])));
}

template <class T>
int inverse_count(int which) {
    static const int n1 = inits(erfinv1<T>.data(), 44, eta<T>(), inits_name<T>());
    static const int n2 = inits(erfinv2<T>.data(), 59, eta<T>(), inits_name<T>());
    return which == 1 ? n1 : n2;
}

// x (1 + series) of the two inverse tables: t = 32 x^2/9 - 1 (first), (512 x^2 - 369)/81 (second),
// in double for both precisions: the series is at most half of the result, so its rounding
// moves the result by a fraction of a unit. t is rounded once, from the exact square where
// 512 x^2 - 369 cancels: the series moves by at most a sixth of an error in t.
template <class T>
double inverse_series(double x, int which) {
    const DD s = dd::two_prod(x, x);
    const double t = which == 1 ? s.hi * (32.0 / 9) - 1 : ((512 * s.hi - 369) + 512 * s.lo) / 81;
    const double c = which == 1 ? csevl<double>(t, erfinv1<double>.data(), inverse_count<T>(1), csevl_name<T>())
                                : csevl<double>(t, erfinv2<double>.data(), inverse_count<T>(2), csevl_name<T>());
    return x + x * c;
}

// t exp(r^2) of the Newton step, with exp taken 2^600 lower where t is so small that exp(r^2)
// alone would overflow.
template <class T>
double t_times_exp_square(double t, double r) {
    const Val<T> s = square<T>(r);
    if (t > 1e-200) return t * double(exp(s));
    return (t * 0x1p600) * double(exp(s - 600 * ln2_dd));
}

// The root r of erfc(r) = x for 0 < x < 2 and |1 - x| >= 0.75, by Newton's method on
// exp(r^2) erfc(r), from the leading term of the asymptotic expansion
// erfc(r) ~ exp(-r^2)/(r sqrt(pi)) (Abramowitz and Stegun 7.1.23) solved for r.
template <class T>
double erfc_inverse_tail(double x) {
    using W = double;
    const W y = 1 - x;
    int* c = counts<T>();
    if (c == nullptr) return Mach<T>::nan();
    fill_erfc_counts<T>(c);
    const W t = y > 0 ? x : 2 - x;
    const W l = -std::log(t);
    W r = std::sqrt(l - W(0.5) * std::log(W(3.14159265358979323846264338327950288L) * l));
    const W tol = 10 * W(Mach<T>::large_spacing());
    for (int step = 0; step < 100; ++step) {
        const W delta = (erfc_scaled<T>(r, c) - t_times_exp_square<T>(t, r)) * W(0.886226925452758013649083741671L);
        r += delta;
        if (std::fabs(delta) < r * tol) return std::copysign(r, y);
    }
    frame::raise(frame::Type::Fatal, err::erfc_inverse_no_convergence);
    return std::copysign(r, y);
}

// Where one unit of the argument's spacing moves the result by more than the square root of
// the precision: near 1 (erf_inverse) and near 2 (erfc_inverse). With r^2 ~ -log(d) at a
// distance d from the end, that happens when d log(1/d) falls below sqrt(eps)/4 (resp. /2).
template <class T>
T near_end_bound(T end, T divisor) {
    const T sq = std::sqrt(Mach<T>::large_spacing());
    return end - sq / (divisor * -std::log(sq));
}

// erf(x) once the term counts it needs are known: nothing here can raise.
template <class T, bool F = false>
T erf_value(T x, const int* c, const ErfLimits<T>& k) {
    const double y = std::fabs(double(x));
    if (y > 1) {
        if (y > k.xbig) return std::copysign(T(1), x);
        return static_cast<T>(std::copysign(std::fabs(double(1 - erfc_value<T, F>(y, c, k))), double(x)));
    }
    if (y > k.sqeps) return static_cast<T>(erf_series<T, F>(x, c[0]));
    // 2x/sqrt(pi) with the cubic term of its series, which still shows in the last bit here.
    // (Where the result is subnormal its low part is lost, and the one rounding of x times the
    // rounded constant is the closer; the sign of a zero stays that of x.)
    const double w = x;
    if (std::fabs(w) < 1e-290) return static_cast<T>(w * double(Val<T>(two_over_sqrtpi<T>())));
    const Val<T> lead = Val<T>(w) * Val<T>(two_over_sqrtpi<T>());
    return static_cast<T>(lead - double(lead) * (w * w / 3));
}

__attribute__((target("fma"), flatten)) double erf_fma(double x, const int* c, const ErfLimits<double>& k) {
    return erf_value<double, true>(x, c, k);
}

template <class T>
T erf_any(T x, const int* c, const ErfLimits<T>& k) {
    if constexpr (std::is_same_v<T, double>)
        if (fused()) return erf_fma(x, c, k);
    return erf_value<T>(x, c, k);
}

}  // namespace

// The workers take a short way, without levels of their own, once the thread's term counts
// are known and the argument is one that cannot raise an error; a level that ends cleanly
// leaves no trace, so the two ways cannot be told apart.
template <class T>
T erfc(T x) {
    const int* c = thread_counts[precision_index<T>()];
    const ErfLimits<T>& k = erf_limits<T>();
    if (c != nullptr && c[1] != 0 && !(x > k.xmax)) return static_cast<T>(erfc_any<T>(x, c, k));
    return static_cast<T>(erfc_body<T>(x));
}

template <class T>
T erf(T x) {
    const ErfLimits<T>& k = erf_limits<T>();
    const double y = std::fabs(double(x));
    // erfc is needed for 1 < |x| <= xbig.
    const bool tail = y > 1 && y <= k.xbig;
    const int* ready = thread_counts[precision_index<T>()];
    if (ready != nullptr && ready[0] != 0 && (!tail || ready[1] != 0)) return erf_any<T>(x, ready, k);
    frame::Level level("l_erf");
    int* c = counts<T>();
    if (c == nullptr) return Mach<T>::nan();
    if (c[0] == 0) c[0] = inits(erfcs<T>.data(), 21, eta<T>(), inits_name<T>());
    if (tail) {
        frame::Level call(std::is_same_v<T, float> ? "qnum_f_erfc" : "qnum_d_erfc");
        frame::Level inner("l_erfc");
        fill_erfc_counts<T>(c);
    }
    return erf_any<T>(x, c, k);
}

template <class T>
T erfc_inverse(T x) {
    frame::Level level("l_erfc_inverse");
    if (!(x > 0 && x < 2)) {
        frame::raise(frame::Type::Fatal, err::argument_outside_interval, frame::Str{"x"}, frame::Real{0.0},
                     frame::Real{2.0}, frame::Real{double(x)});
        return Mach<T>::nan();
    }
    const T bound = near_end_bound<T>(2, 2);
    if (x > bound)
        frame::raise(frame::Type::Warning, err::erfc_inverse_near_two, frame::Real{double(x)},
                     frame::Real{double(bound)});
    const DD y = dd::two_sum(1, -double(x));  // 1 - x exactly
    if (std::fabs(y.hi) < 0.75) {
        double r = inverse_series<T>(y.hi, 1);
        // The part of 1 - x below the last place of y.hi moves the root by y.lo sqrt(pi)/2 exp(r^2).
        if (y.lo != 0) r += y.lo * 0.886226925452758 * std::exp(r * r);
        return static_cast<T>(r);
    }
    return static_cast<T>(erfc_inverse_tail<T>(x));
}

template <class T>
T erf_inverse(T x) {
    frame::Level level("l_erf_inverse");
    const double ax = std::fabs(double(x));
    if (!(ax < 1)) {
        frame::raise(frame::Type::Fatal, err::argument_outside_interval, frame::Str{"x"}, frame::Real{-1.0},
                     frame::Real{1.0}, frame::Real{double(x)});
        return Mach<T>::nan();
    }
    if (ax <= 0.75) {
        // Below sqrt(eps) the series is taken at s = 0.
        if (ax <= std::sqrt(double(Mach<T>::small_spacing())))
            return static_cast<T>(double(x) + double(x) * csevl<double>(-1.0, erfinv1<double>.data(),
                                                                        inverse_count<T>(1), csevl_name<T>()));
        return static_cast<T>(inverse_series<T>(x, 1));
    }
    if (ax <= 0.9375) return static_cast<T>(inverse_series<T>(x, 2));
    double r;
    {
        frame::Level call("l_erfc_inverse");
        r = erfc_inverse_tail<T>(1 - ax);
    }
    const T bound = near_end_bound<T>(1, 4);
    if (ax > bound)
        frame::raise(frame::Type::Warning, err::erf_inverse_near_one, frame::Real{double(x)},
                     frame::Real{double(bound)});
    return static_cast<T>(std::copysign(std::fabs(r), double(x)));
}

template float erf<float>(float);
template double erf<double>(double);
template float erfc<float>(float);
template double erfc<double>(double);
template float erf_inverse<float>(float);
template double erf_inverse<double>(double);
template float erfc_inverse<float>(float);
template double erfc_inverse<double>(double);

}  // namespace qnum::special
