// The special functions of one precision under one name, for tests typed over the precision.
#pragma once

#include <complex>
#include <type_traits>

#include "qnummath.h"

namespace qnum::test {

template <class T>
struct Api {
    static constexpr bool f = std::is_same_v<T, float>;
    static T erf(T x) { return f ? T(qnum_f_erf(float(x))) : T(qnum_d_erf(x)); }
    static T erfc(T x) { return f ? T(qnum_f_erfc(float(x))) : T(qnum_d_erfc(x)); }
    static T erf_inverse(T x) { return f ? T(qnum_f_erf_inverse(float(x))) : T(qnum_d_erf_inverse(x)); }
    static T erfc_inverse(T x) { return f ? T(qnum_f_erfc_inverse(float(x))) : T(qnum_d_erfc_inverse(x)); }
    static T gamma(T x) { return f ? T(qnum_f_gamma(float(x))) : T(qnum_d_gamma(x)); }
    static T log_gamma(T x) { return f ? T(qnum_f_log_gamma(float(x))) : T(qnum_d_log_gamma(x)); }
    static T beta(T a, T b) { return f ? T(qnum_f_beta(float(a), float(b))) : T(qnum_d_beta(a, b)); }
    static T log_beta(T a, T b) { return f ? T(qnum_f_log_beta(float(a), float(b))) : T(qnum_d_log_beta(a, b)); }
    static T gamma_incomplete(T a, T x) {
        return f ? T(qnum_f_gamma_incomplete(float(a), float(x))) : T(qnum_d_gamma_incomplete(a, x));
    }
    static T beta_incomplete(T x, T a, T b) {
        return f ? T(qnum_f_beta_incomplete(float(x), float(a), float(b))) : T(qnum_d_beta_incomplete(x, a, b));
    }
    static std::complex<T> erfe(T x, T y) {
        if constexpr (f) {
            const qnum_f_complex w = qnum_c_erfe({x, y});
            return {w.re, w.im};
        } else {
            const qnum_d_complex w = qnum_z_erfe({x, y});
            return {w.re, w.im};
        }
    }
};

}  // namespace qnum::test
