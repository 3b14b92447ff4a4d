// Blocked LU factorization with scaled partial pivoting, its solves, the condition estimate
// and the inverse, on the Level 1 to 3 kernels.
#include "linsys/lu.hpp"

#include <algorithm>
#include <complex>
#include <utility>

#include "kernels/gemm_engine.hpp"
#include "kernels/level1.hpp"
#include "kernels/level2.hpp"
#include "kernels/level3.hpp"
#include "linsys/common.hpp"
#include "linsys/estimate.hpp"

namespace qnum::linsys {

using frame::Int;
using frame::Type;

template <> const char* const LuNames<float>::factor = "qnum_l2trg";
template <> const char* const LuNames<float>::condition = "L2CRG ";
template <> const char* const LuNames<float>::solve = "qnum_lfsrg";
template <> const char* const LuNames<float>::inverse = "L2NRG ";
template <> const char* const LuNames<double>::factor = "qnum_dl2trg";
template <> const char* const LuNames<double>::condition = "L2CRG ";
template <> const char* const LuNames<double>::solve = "qnum_lfsrg";
template <> const char* const LuNames<double>::inverse = "L2NRG ";
template <> const char* const LuNames<std::complex<float>>::factor = "l_l2tcg";
template <> const char* const LuNames<std::complex<float>>::condition = "l_l2ccg";
template <> const char* const LuNames<std::complex<float>>::solve = "l_lfscg";
template <> const char* const LuNames<std::complex<float>>::inverse = "l_l2ncg";
template <> const char* const LuNames<std::complex<double>>::factor = "l_l2tcg";
template <> const char* const LuNames<std::complex<double>>::condition = "l_l2ccg";
template <> const char* const LuNames<std::complex<double>>::solve = "l_lfscg";
template <> const char* const LuNames<std::complex<double>>::inverse = "l_l2ncg";

namespace {

// Columns per block: the pivot search and the rank-1 updates stay inside a block; everything
// right of it is brought up to date by one triangular solve and one product per block.
constexpr int block = 32;

// The safe minimum: the smallest positive number whose reciprocal does not overflow.
template <class T>
Real<T> safe_min() {
    Real<T> small = Prec<T>::tiny();
    if (small * Prec<T>::huge() < Real<T>(1)) small = Real<T>(1) / Prec<T>::huge();
    return small;
}

// Applies the row interchanges of steps k0..k1-1 to columns j0..j1-1.
template <class T>
void swap_rows(T* f, int ld, const int* ipvt, int k0, int k1, int j0, int j1) {
    for (int j = j0; j < j1; ++j) {
        T* col = f + at(0, j, ld);
        for (int k = k0; k < k1; ++k) {
            const int p = ipvt[k] - 1;
            if (p != k) std::swap(col[k], col[p]);
        }
    }
}

// Reverses the sign of the strictly lower jb by jb triangle at f.
template <class T>
void negate_lower(T* f, int ld, int jb) {
    for (int j = 0; j < jb; ++j) {
        for (int i = j + 1; i < jb; ++i) f[at(i, j, ld)] = -f[at(i, j, ld)];
    }
}

}  // namespace

template <class T>
Real<T> nr1rr(int nra, int nca, const T* a, int lda) {
    frame::Level level("NR1RR ");
    if (nra > lda) {
        frame::raise(Type::Terminal, err::norm_rows_above_lda, Int{nra}, Int{lda});
        return Real<T>(0);
    }
    if (nra < 1) {
        frame::raise(Type::Terminal, err::norm_rows, Int{nra});
        return Real<T>(0);
    }
    if (nca < 1) {
        frame::raise(Type::Terminal, err::norm_columns, Int{nca});
        return Real<T>(0);
    }
    Real<T> norm(0);
    for (int j = 0; j < nca; ++j) norm = std::max(norm, kern::asum(nra, a + at(0, j, lda), 1));
    return norm;
}

template <class T>
void l2trg(int n, const T* a, int lda, T* fac, int ldfac, int* ipvt, Real<T>* scale) {
    using R = Real<T>;
    frame::Level level(LuNames<T>::factor);
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
    // The products below need their workspace; a failure here leaves everything untouched.
    if (!kern::gemm_impl::reserve<T>()) return;
    if (fac != a) {
        for (int j = 0; j < n; ++j) kern::copy(n, a + at(0, j, lda), 1, fac + at(0, j, ldfac), 1);
    }
    const R small = safe_min<T>();

    // Each row is measured against its own largest entry, so that a row multiplied by a
    // large factor does not win the pivot search by its scale alone.
    for (int i = 0; i < n; ++i) scale[i] = R(0);
    for (int j = 0; j < n; ++j) {
        const T* col = fac + at(0, j, ldfac);
        for (int i = 0; i < n; ++i) {
            const R v = abs1(col[i]);
            if (v > scale[i]) scale[i] = v;
        }
    }
    for (int i = 0; i < n; ++i) scale[i] = scale[i] >= small ? R(1) / scale[i] : R(1);

    bool singular = false;
    for (int j0 = 0; j0 < n; j0 += block) {
        const int jb = std::min(block, n - j0);
        const int j1 = j0 + jb;
        for (int k = j0; k < j1; ++k) {
            T* col = fac + at(0, k, ldfac);
            int p = k;
            R best(0);
            for (int i = k; i < n; ++i) {
                const R v = abs1(col[i]) * scale[i];
                if (v > best) {
                    best = v;
                    p = i;
                }
            }
            if (!(abs1(col[p]) > small)) {
                // Nothing usable to divide by: the column stays as it is and the
                // factorization goes on, so that the caller still gets all of it.
                ipvt[k] = k + 1;
                singular = true;
                continue;
            }
            ipvt[k] = p + 1;
            if (p != k) {
                std::swap(scale[k], scale[p]);
                kern::swap(jb, fac + at(k, j0, ldfac), ldfac, fac + at(p, j0, ldfac), ldfac);
            }
            kern::scal(n - k - 1, T(-1) / col[k], col + k + 1, 1);
            kern::ger(n - k - 1, j1 - k - 1, T(1), col + k + 1, 1, fac + at(k, k + 1, ldfac), ldfac,
                      fac + at(k + 1, k + 1, ldfac), ldfac);
        }
        if (j1 < n) {
            swap_rows(fac, ldfac, ipvt, j0, j1, j1, n);
            // U12 = L11^-1 A12 with L11 the unit lower triangle of the true multipliers.
            T* l11 = fac + at(j0, j0, ldfac);
            negate_lower(l11, ldfac, jb);
            kern::trsm('L', 'L', 'N', 'U', jb, n - j1, T(1), l11, ldfac, fac + at(j0, j1, ldfac), ldfac);
            negate_lower(l11, ldfac, jb);
            // A22 -= L21 U12; the stored multipliers are -L21.
            kern::gemm('N', 'N', n - j1, n - j1, jb, T(1), fac + at(j1, j0, ldfac), ldfac,
                       fac + at(j0, j1, ldfac), ldfac, T(1), fac + at(j1, j1, ldfac), ldfac);
        }
        // The pivot search swapped whole block rows; earlier multiplier columns of the block
        // get their entries back where they were when they were eliminated.
        for (int k = j1 - 1; k > j0; --k) {
            const int p = ipvt[k] - 1;
            if (p != k) kern::swap(k - j0, fac + at(k, j0, ldfac), ldfac, fac + at(p, j0, ldfac), ldfac);
        }
    }
    ipvt[n - 1] = n;
    if (singular) frame::raise(Type::Fatal, err::singular_matrix);
}

template <class T>
void l2crg(int n, const T* a, int lda, T* fac, int ldfac, int* ipvt, Real<T>* rcond, T* work,
           Real<T>* scale) {
    using R = Real<T>;
    frame::Level level(LuNames<T>::condition);
    *rcond = R(0);
    const R anorm = nr1rr(n, n, a, lda);
    if (frame::failed_below()) return;
    l2trg(n, a, lda, fac, ldfac, ipvt, scale);
    if (frame::failed_below()) return;

    T* z = work;
    auto u = [&](int i, int j) { return fac[at(i, j, ldfac)]; };
    estimate::grow_solve(n, u, z);
    // L^H y = w
    for (int k = n - 1; k >= 0; --k) {
        if (k < n - 1) z[k] += kern::dotc(n - k - 1, fac + at(k + 1, k, ldfac), 1, z + k + 1, 1);
        if (abs1(z[k]) > R(1)) kern::rscal(n, R(1) / abs1(z[k]), z, 1);
        const int p = ipvt[k] - 1;
        std::swap(z[p], z[k]);
    }
    estimate::normalize(n, z);
    R ynorm(1);
    // L v = y
    for (int k = 0; k < n; ++k) {
        const int p = ipvt[k] - 1;
        std::swap(z[p], z[k]);
        if (k < n - 1) kern::axpy(n - k - 1, z[k], fac + at(k + 1, k, ldfac), 1, z + k + 1, 1);
        if (abs1(z[k]) > R(1)) {
            const R s = R(1) / abs1(z[k]);
            kern::rscal(n, s, z, 1);
            ynorm *= s;
        }
    }
    ynorm *= estimate::normalize(n, z);
    // U z = v
    estimate::upper_solve(n, u, z, ynorm);
    *rcond = anorm != R(0) ? ynorm / anorm : R(0);
    if (!(*rcond > Prec<T>::eps())) frame::raise(Type::Warning, err::ill_conditioned, frame::Real{*rcond});
}

template <class T>
void lfsrg(int n, const T* fac, int ldfac, const int* ipvt, const T* b, int ipath, T* x) {
    frame::Level level(LuNames<T>::solve);
    if (n < 1) {
        frame::raise(Type::Terminal, err::order_not_positive, Int{n});
        return;
    }
    if (ldfac < n) {
        frame::raise(Type::Terminal, err::ldfac_below_n, Int{n}, Int{ldfac});
        return;
    }
    if (ipath != 1 && ipath != 2) {
        if constexpr (is_complex_v<T>) {
            frame::raise(Type::Terminal, err::complex_bad_solve_path, Int{ipath});
        } else {
            frame::raise(Type::Terminal, err::bad_solve_path, Int{1}, Int{2}, Int{ipath});
        }
        return;
    }
    // A factorization from the caller may carry anything: a pivot entry outside k..n would
    // send the interchanges outside the vector.
    for (int k = 0; k < n; ++k) {
        if (ipvt[k] < k + 1 || ipvt[k] > n) {
            frame::raise(Type::Terminal, err::bad_pivot_entry, Int{k + 1}, Int{ipvt[k]}, Int{n});
            return;
        }
    }
    if (x != b) kern::copy(n, b, 1, x, 1);
    auto zero_pivot = [&](int i) {
        if (fac[at(i, i, ldfac)] != T(0)) return false;
        frame::raise(Type::Fatal, err::singular_matrix);
        return true;
    };
    if (ipath == 1) {
        for (int k = 0; k < n - 1; ++k) {
            const int p = ipvt[k] - 1;
            if (p != k) std::swap(x[k], x[p]);
            kern::axpy(n - k - 1, x[k], fac + at(k + 1, k, ldfac), 1, x + k + 1, 1);
        }
        for (int i = n - 1; i >= 0; --i) {
            if (zero_pivot(i)) return;
        }
        kern::trsv('U', 'N', 'N', n, fac, ldfac, x, 1);
        return;
    }
    for (int i = 0; i < n; ++i) {
        if (zero_pivot(i)) return;
    }
    // The complex transposed system is the conjugate transposed one.
    kern::trsv('U', is_complex_v<T> ? 'C' : 'T', 'N', n, fac, ldfac, x, 1);
    for (int k = n - 2; k >= 0; --k) {
        x[k] += kern::dotc(n - k - 1, fac + at(k + 1, k, ldfac), 1, x + k + 1, 1);
        const int p = ipvt[k] - 1;
        if (p != k) std::swap(x[k], x[p]);
    }
}

template <class T>
void linrt(int n, const T* a, int lda, T* ainv, int ldainv) {
    frame::Level level("LINRT ");
    if (n < 1) {
        frame::raise(Type::Terminal, err::order_not_positive, Int{n});
        return;
    }
    if (lda < n) {
        frame::raise(Type::Terminal, err::lda_below_n, Int{n}, Int{lda});
        return;
    }
    if (ldainv < n) {
        frame::raise(Type::Terminal, err::ldinv_below_n, Int{n}, Int{ldainv});
        return;
    }
    for (int i = 0; i < n; ++i) {
        if (a[at(i, i, lda)] == T(0)) {
            frame::raise(Type::Fatal, err::singular_matrix);
            return;
        }
    }
    if (!kern::gemm_impl::reserve<T>()) return;
    if (ainv != a) {
        for (int j = 0; j < n; ++j) kern::copy(j + 1, a + at(0, j, lda), 1, ainv + at(0, j, ldainv), 1);
    }
    T* x = ainv;
    const int ld = ldainv;
    // Block column by block column: the rows above a diagonal block take the inverse of the
    // triangle left of them and the (not yet inverted) diagonal block; then that block is
    // inverted by columns.
    for (int j0 = 0; j0 < n; j0 += block) {
        const int jb = std::min(block, n - j0);
        T* top = x + at(0, j0, ld);
        kern::trmm('L', 'U', 'N', 'N', j0, jb, T(1), x, ld, top, ld);
        kern::trsm('R', 'U', 'N', 'N', j0, jb, T(-1), x + at(j0, j0, ld), ld, top, ld);
        for (int j = j0; j < j0 + jb; ++j) {
            T& d = x[at(j, j, ld)];
            d = T(1) / d;
            T* colj = x + at(j0, j, ld);
            kern::trmv('U', 'N', 'N', j - j0, x + at(j0, j0, ld), ld, colj, 1);
            kern::scal(j - j0, -d, colj, 1);
        }
    }
}

template <class T>
void lu_inverse(int n, const T* fac, int ldfac, int* ipvt, bool factor_first, T* inv, int ldinv,
                Real<T>* rcond, T* work, Real<T>* scale) {
    frame::Level level(LuNames<T>::inverse);
    T* x = inv;
    const int ld = ldinv;
    if (factor_first) {
        l2crg(n, x, ld, x, ld, ipvt, rcond, work, scale);
        if (frame::failed_below()) return;
    } else if (fac != x) {
        for (int j = 0; j < n; ++j) kern::copy(n, fac + at(0, j, ldfac), 1, x + at(0, j, ld), 1);
    }
    Owned<T> w;
    if (!w.allocate(static_cast<long long>(n) * block, n)) return;
    // The multipliers take the interchanges of the later steps, so that P A = L U holds
    // with one permutation P applied last.
    for (int c = 0; c + 1 < n; ++c) {
        T* col = x + at(0, c, ld);
        for (int k = c + 1; k < n - 1; ++k) {
            const int p = ipvt[k] - 1;
            if (p != k) std::swap(col[k], col[p]);
        }
    }
    linrt(n, x, ld, x, ld);
    if (frame::failed_below()) return;
    // X L = U^-1 solved for X from the right, a block of columns at a time: the block takes
    // the columns right of it through one product, then its own triangle of L.
    T* wp = w.get();
    for (int j0 = ((n - 1) / block) * block; j0 >= 0; j0 -= block) {
        const int jb = std::min(block, n - j0);
        const int j1 = j0 + jb;
        for (int j = j0; j < j1; ++j) {
            T* col = x + at(0, j, ld);
            T* wc = wp + at(0, j - j0, n);
            for (int i = j + 1; i < n; ++i) {
                wc[i] = col[i];
                col[i] = T(0);
            }
        }
        if (j1 < n) {
            kern::gemm('N', 'N', n, jb, n - j1, T(1), x + at(0, j1, ld), ld, wp + j1, n, T(1), x + at(0, j0, ld),
                       ld);
        }
        negate_lower(wp + j0, n, jb);
        kern::trsm('R', 'L', 'N', 'U', n, jb, T(1), wp + j0, n, x + at(0, j0, ld), ld);
    }
    for (int k = n - 2; k >= 0; --k) {
        const int p = ipvt[k] - 1;
        if (p != k) kern::swap(n, x + at(0, k, ld), 1, x + at(0, p, ld), 1);
    }
}

#define QNUM_LINSYS_LU(T)                                                                     \
    template Real<T> nr1rr<T>(int, int, const T*, int);                                      \
    template void l2trg<T>(int, const T*, int, T*, int, int*, Real<T>*);                     \
    template void l2crg<T>(int, const T*, int, T*, int, int*, Real<T>*, T*, Real<T>*);       \
    template void lfsrg<T>(int, const T*, int, const int*, const T*, int, T*);               \
    template void linrt<T>(int, const T*, int, T*, int);                                     \
    template void lu_inverse<T>(int, const T*, int, int*, bool, T*, int, Real<T>*, T*, Real<T>*);
QNUM_LINSYS_LU(float)
QNUM_LINSYS_LU(double)
QNUM_LINSYS_LU(std::complex<float>)
QNUM_LINSYS_LU(std::complex<double>)
#undef QNUM_LINSYS_LU

}  // namespace qnum::linsys
