// Blocked Cholesky factorization (a panel of columns by matrix-vector products, the rest of
// the matrix by one Hermitian rank-k update per panel), its condition estimate, solves and
// inverse.
#include "linsys/cholesky.hpp"

#include <algorithm>
#include <cmath>
#include <complex>

#include "kernels/gemm_engine.hpp"
#include "kernels/level1.hpp"
#include "kernels/level2.hpp"
#include "kernels/level3.hpp"
#include "linsys/common.hpp"
#include "linsys/estimate.hpp"

namespace qnum::linsys {

using frame::Int;
using frame::Type;

namespace {
constexpr int block = 32;
}  // namespace

template <class T>
void chol_factor(int n, const T* a, int lda, T* fac, int ldfac) {
    using R = Real<T>;
    frame::Level level("l_chol_factor");
    if (n < 1) {
        frame::raise(Type::Terminal, err::order_not_positive, Int{n});
        return;
    }
    if (lda < n) {
        frame::raise(Type::Terminal, err::lda_below_n, Int{n}, Int{lda});
        return;
    }
    if (ldfac < n) {
        frame::raise(Type::Terminal, err::ldfac_below_n, Int{n}, Int{ldfac});
        return;
    }
    if (!kern::gemm_impl::reserve<T>()) return;
    if (fac != a) {
        for (int j = 0; j < n; ++j) kern::copy(n - j, a + at(j, j, lda), 1, fac + at(j, j, ldfac), 1);
    }
    T row[block];
    for (int j0 = 0; j0 < n; j0 += block) {
        const int jb = std::min(block, n - j0);
        const int j1 = j0 + jb;
        for (int j = j0; j < j1; ++j) {
            // Row j of L left of the diagonal, inside the panel (the columns before the panel
            // have already been subtracted from the rest of the matrix).
            R d = std::real(fac[at(j, j, ldfac)]);
            for (int k = j0; k < j; ++k) {
                const T v = fac[at(j, k, ldfac)];
                d -= std::real(v * conj_if(v));
                row[k - j0] = conj_if(v);
            }
            if (!(d > R(0))) {
                frame::raise(Type::Fatal, err::not_positive_definite, Int{j + 1});
                return;
            }
            d = std::sqrt(d);
            fac[at(j, j, ldfac)] = T(d);
            T* below = fac + at(j + 1, j, ldfac);
            kern::gemv('N', n - j - 1, j - j0, T(-1), fac + at(j + 1, j0, ldfac), ldfac, row, 1, T(1), below, 1);
            kern::rscal(n - j - 1, R(1) / d, below, 1);
        }
        if (j1 < n) {
            kern::herk('L', 'N', n - j1, jb, R(-1), fac + at(j1, j0, ldfac), ldfac, R(1), fac + at(j1, j1, ldfac),
                       ldfac);
        }
    }
}

template <class T>
void chol_condition(int n, const T* a, int lda, T* fac, int ldfac, Real<T>* rcond, T* work) {
    using R = Real<T>;
    frame::Level level("l_chol_condition");
    *rcond = R(0);
    // Column sums of |M| from the lower triangle alone; work holds them as reals first.
    R anorm(0);
    if (n >= 1 && lda >= n) {
        T* sums = work;
        for (int j = 0; j < n; ++j) sums[j] = T(0);
        for (int j = 0; j < n; ++j) {
            const T* col = a + at(0, j, lda);
            R cj = std::real(sums[j]) + abs1(col[j]);
            for (int i = j + 1; i < n; ++i) {
                const R v = abs1(col[i]);
                cj += v;
                sums[i] += T(v);
            }
            anorm = std::max(anorm, cj);
        }
    }
    chol_factor(n, a, lda, fac, ldfac);
    if (frame::failed_below()) return;
    // R = L^H is the upper triangular factor the estimator walks.
    auto r = [&](int i, int j) { return conj_if(fac[at(j, i, ldfac)]); };
    T* z = work;
    estimate::grow_solve(n, r, z);
    R ynorm(1);
    estimate::upper_solve(n, r, z, ynorm);
    ynorm = R(1);
    estimate::upper_trans_solve(n, r, z, ynorm);
    estimate::upper_solve(n, r, z, ynorm);
    *rcond = anorm != R(0) ? ynorm / anorm : R(0);
    if (!(*rcond > Prec<T>::eps())) frame::raise(Type::Warning, err::ill_conditioned, frame::Real{*rcond});
}

template <class T>
void chol_solve(int n, const T* fac, int ldfac, const T* b, T* x) {
    frame::Level level("l_chol_solve");
    if (x != b) kern::copy(n, b, 1, x, 1);
    kern::trsv('L', 'N', 'N', n, fac, ldfac, x, 1);
    kern::trsv('L', 'C', 'N', n, fac, ldfac, x, 1);
}

template <class T>
void chol_inverse(int n, const T* fac, int ldfac, T* inv, int ldinv) {
    frame::Level level("l_chol_inverse");
    Owned<T> w;
    if (!w.allocate(static_cast<long long>(n) * n, n) || !kern::gemm_impl::reserve<T>()) return;
    // W = L^-1, then M^-1 = W^H W.
    T* x = w.get();
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < n; ++i) x[at(i, j, n)] = T(i == j ? 1 : 0);
    }
    kern::trsm('L', 'L', 'N', 'N', n, n, T(1), fac, ldfac, x, n);
    for (int j = 0; j < n; ++j) kern::copy(n, x + at(0, j, n), 1, inv + at(0, j, ldinv), 1);
    kern::trmm('L', 'L', 'C', 'N', n, n, T(1), x, n, inv, ldinv);
}

#define QNUM_LINSYS_CHOL(T)                                                        \
    template void chol_factor<T>(int, const T*, int, T*, int);                    \
    template void chol_condition<T>(int, const T*, int, T*, int, Real<T>*, T*);   \
    template void chol_solve<T>(int, const T*, int, const T*, T*);                \
    template void chol_inverse<T>(int, const T*, int, T*, int);
QNUM_LINSYS_CHOL(float)
QNUM_LINSYS_CHOL(double)
QNUM_LINSYS_CHOL(std::complex<float>)
QNUM_LINSYS_CHOL(std::complex<double>)
#undef QNUM_LINSYS_CHOL

}  // namespace qnum::linsys
