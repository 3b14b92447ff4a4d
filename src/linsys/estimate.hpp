// Pieces of the L1 condition estimator shared by the LU and Cholesky solvers.
//
// The estimate of ||A^-1||_1 solves A^H y = e with the entries of e (each of magnitude 1)
// chosen step by step to make the solution grow, then A z = y; ||z|| / ||y|| is a lower
// bound of ||A^-1|| that is rarely far below it (Cline, Moler, Stewart and Wilkinson, "An
// estimate for the condition number of a matrix", SIAM J. Numer. Anal. 16, 1979). The
// working vector is rescaled whenever an entry would outgrow the diagonal it is divided by,
// so that no step overflows. Magnitudes are |Re| + |Im|.
#pragma once

#include <cmath>

#include "kernels/level1.hpp"
#include "linsys/common.hpp"

namespace qnum::linsys::estimate {

// a with the magnitude of a and the direction of b (b nonzero).
template <class T>
inline T with_sign_of(T a, T b) {
    if constexpr (is_complex_v<T>) {
        return abs1(a) * (b / abs1(b));
    } else {
        return std::copysign(std::abs(a), b);
    }
}

// z := z / sum |z(i)|; returns the factor used.
template <class T>
inline Real<T> normalize(int n, T* z) {
    const Real<T> s = Real<T>(1) / kern::asum(n, z, 1);
    kern::rscal(n, s, z, 1);
    return s;
}

// Solves U^H w = e for the upper triangular U given by u(i, j) (i <= j), choosing the entries
// of e to make w large; z receives w, normalized.
template <class T, class U>
void grow_solve(int n, const U& u, T* z) {
    using R = Real<T>;
    T ek(1);
    for (int i = 0; i < n; ++i) z[i] = T(0);
    for (int k = 0; k < n; ++k) {
        if (abs1(z[k]) != R(0)) ek = with_sign_of(ek, -z[k]);
        const T ukk = u(k, k);
        const R dkk = abs1(ukk);
        if (abs1(ek - z[k]) > dkk) {
            const R s = dkk / abs1(ek - z[k]);
            kern::rscal(n, s, z, 1);
            ek *= s;
        }
        T wk = ek - z[k];
        T wkm = -ek - z[k];
        R s = abs1(wk);
        R sm = abs1(wkm);
        if (dkk != R(0)) {
            wk /= conj_if(ukk);
            wkm /= conj_if(ukk);
        } else {
            wk = T(1);
            wkm = T(1);
        }
        for (int j = k + 1; j < n; ++j) {
            const T ukj = conj_if(u(k, j));
            sm += abs1(z[j] + wkm * ukj);
            z[j] += wk * ukj;
            s += abs1(z[j]);
        }
        if (s < sm) {
            const T t = wkm - wk;
            wk = wkm;
            for (int j = k + 1; j < n; ++j) z[j] += t * conj_if(u(k, j));
        }
        z[k] = wk;
    }
    normalize(n, z);
}

// z := U^-1 z, rescaling so that no entry outgrows its diagonal; ynorm takes the rescalings.
template <class T, class U>
void upper_solve(int n, const U& u, T* z, Real<T>& ynorm) {
    using R = Real<T>;
    for (int k = n - 1; k >= 0; --k) {
        const T ukk = u(k, k);
        if (abs1(z[k]) > abs1(ukk)) {
            const R s = abs1(ukk) / abs1(z[k]);
            kern::rscal(n, s, z, 1);
            ynorm *= s;
        }
        if (abs1(ukk) != R(0)) {
            z[k] /= ukk;
        } else {
            z[k] = T(1);
        }
        const T t = -z[k];
        for (int i = 0; i < k; ++i) z[i] += t * u(i, k);
    }
    ynorm *= normalize(n, z);
}

// z := U^-H z with the same rescaling.
template <class T, class U>
void upper_trans_solve(int n, const U& u, T* z, Real<T>& ynorm) {
    using R = Real<T>;
    for (int k = 0; k < n; ++k) {
        T t = z[k];
        for (int i = 0; i < k; ++i) t -= conj_if(u(i, k)) * z[i];
        z[k] = t;
        const T ukk = u(k, k);
        if (abs1(z[k]) > abs1(ukk)) {
            const R s = abs1(ukk) / abs1(z[k]);
            kern::rscal(n, s, z, 1);
            ynorm *= s;
        }
        if (abs1(ukk) != R(0)) {
            z[k] /= conj_if(ukk);
        } else {
            z[k] = T(1);
        }
    }
    ynorm *= normalize(n, z);
}

}  // namespace qnum::linsys::estimate
