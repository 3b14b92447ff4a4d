// Internal interface of the special functions: Chebyshev machinery, error, gamma and beta families.
#pragma once

#include <array>
#include <complex>
#include <cstddef>
#include <type_traits>

#include "frame/frame.hpp"
#include "qnummath.h"
#include "special/dd.hpp"

namespace qnum::special {

// Working precision: float routines carry their intermediates in double; the error, gamma and
// beta families in double carry theirs in double with the decisive steps in double-double (Val),
// the incomplete functions and erfe in long double (Wide). Either way the result is rounded
// essentially once, at the end. Branch points, limits and term counts (found on the table
// rounded to T) stay those of the routine's own precision T.
template <class T>
using Wide = std::conditional_t<std::is_same_v<T, float>, double, long double>;
template <class T>
using Val = std::conditional_t<std::is_same_v<T, float>, double, DD>;

// Machine constants of precision T.
template <class T>
struct Mach {
    static T mach(int i) {
        if constexpr (std::is_same_v<T, float>) return qnum_amach(i);
        else return qnum_dmach(i);
    }
    static T tiny() { return mach(1); }
    static T huge() { return mach(2); }
    static T small_spacing() { return mach(3); }
    static T large_spacing() { return mach(4); }
    static T nan() { return mach(6); }
};

// A coefficient table converted once, at compile time, to the routine's precision.
template <class T, std::size_t N>
constexpr std::array<T, N> convert(const long double (&a)[N]) {
    std::array<T, N> r{};
    for (std::size_t i = 0; i < N; ++i) r[i] = static_cast<T>(a[i]);
    return r;
}

// The low parts a - double(a) of a table, for the double-double steps of a series.
template <std::size_t N>
constexpr std::array<double, N> low_parts(const long double (&a)[N]) {
    std::array<double, N> r{};
    for (std::size_t i = 0; i < N; ++i) r[i] = static_cast<double>(a[i] - static_cast<double>(a[i]));
    return r;
}

// Raises under a level of its own named `name`, or at the current level when `name` is null.
template <class... Slots>
void raise_at(const char* name, frame::Type type, int code, Slots... slots) {
    if (name != nullptr) frame::raise_in(name, type, code, slots...);
    else frame::raise(type, code, slots...);
}

// ---- Chebyshev machinery (chebyshev.cpp) ----
// Number of terms of cs[0..n-1] to keep for accuracy eta, decided in float. `name` is the level
// the errors are raised under (null: the current level).
template <class C>
int inits(const C* cs, int n, float eta, const char* name);
// The n-term series at x by Clenshaw's recurrence, first coefficient halved.
template <class W, class C>
W csevl(W x, const C* cs, int n, const char* name);
// The argument checks of csevl: false (after TERMINAL 9001 or 9002) when the series cannot be
// summed; WARNING 9003 for x outside [-1.1, 1.1].
template <class W>
bool csevl_checks(W x, int n, const char* name);
// The n-term series of a table at t in the working precision V: csevl in double or long double
// on the table in that precision, or the double-double series (the double table `hi`, its first
// two coefficients completed by `lo`; F: the fused multiply-add form).
template <class T, class V, std::size_t N, bool F = false>
V cheb(V t, const long double (&wide)[N], const std::array<double, N>& hi, const std::array<double, N>& lo, int n,
       const char* name) {
    if constexpr (std::is_same_v<V, DD>) {
        // The checks are out of line; the common case passes them without a call.
        if ((n < 1 || n > 1000 || !(t.hi >= -1.1 && t.hi <= 1.1)) && !csevl_checks(t.hi, n, name))
            return Mach<double>::nan();
        if constexpr (F) return dd::series_fma(t, hi.data(), lo.data(), n);
        else return series(t, hi.data(), lo.data(), n);
    } else if constexpr (std::is_same_v<V, double>) {
        return csevl<double>(t, hi.data(), n, name);
    } else {
        return csevl<long double>(t, wide, n, name);
    }
}
template <class C>
constexpr const char* inits_name() { return std::is_same_v<C, float> ? "qnum_inits" : "qnum_initds"; }
template <class C>
constexpr const char* csevl_name() { return std::is_same_v<C, float> ? "qnum_csevl" : "qnum_dcsevl"; }
template <class C>
constexpr const char* corr_name() { return std::is_same_v<C, float> ? "qnum_r9lgmc" : "qnum_d9lgmc"; }

// ---- error functions (erf.cpp) ----
template <class T> T erf(T x);
template <class T> T erfc(T x);
template <class T> T erf_inverse(T x);
template <class T> T erfc_inverse(T x);
template <class T> std::complex<T> erfe(std::complex<T> z);

// ---- gamma and beta (gamma.cpp) ----
// The log-gamma correction for x >= 10; errors under the level `name` (null: the current one).
template <class T, class V> V r9lgmc(V x, const char* name);
template <class T> T gamma(T x);
template <class T> T log_gamma(T x);
template <class T> Wide<T> log_gamma_wide(Wide<T> x);
template <class T> T beta(T a, T b);
template <class T> T log_beta(T a, T b);
template <class T> Wide<T> log_beta_wide(Wide<T> a, Wide<T> b);
// log(1 + t), accurate for small t (t > -1).
template <class T, class V> V alnrel(V t);

// ---- incomplete functions (incomplete.cpp) ----
template <class T> T gamma_incomplete(T a, T x);
template <class T> T beta_incomplete(T x, T a, T b);

}  // namespace qnum::special
