// General and general band matrix-vector products.
#include "kernels/columns.hpp"
#include "kernels/level2.hpp"

namespace qnum::kern {

// Column-oriented: the no-transpose product adds alpha x(j) times column j to y, the transposed
// one forms y(j) += alpha (column j . x); either way A is read down its columns with unit
// stride. With unit stride on the long side the whole product goes to the tuned table, which
// streams A once.
template <class T>
void gemv(char trans, int m, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y,
          int incy) {
    if (m == 0 || n == 0 || (alpha == T(0) && beta == T(1))) return;
    const bool notrans = trans == 'N';
    const int lenx = notrans ? n : m, leny = notrans ? m : n;
    scale_y(leny, beta, y, incy);
    if (alpha == T(0)) return;
    const T* xp = x + first(lenx, incx);
    T* yp = y + first(leny, incy);
    const bool c = trans == 'C';
    if constexpr (is_complex_v<T>) {
        if (auto* t = tuned::complex_ops<Real<T>>()) {
            if (notrans && incy == 1) return t->gemv_n(m, n, reals(&alpha), reals(a), lda, reals(xp), incx, reals(y));
            if (!notrans && incx == 1) return t->gemv_t(m, n, reals(&alpha), reals(a), lda, reals(x), reals(yp), incy, c);
        }
    } else {
        if (auto* t = tuned::ops<T>()) {
            if (notrans && incy == 1) return t->gemv_n(m, n, alpha, a, lda, xp, incx, y);
            if (!notrans && incx == 1) return t->gemv_t(m, n, alpha, a, lda, x, yp, incy);
        }
    }
    if (notrans) {
        for (idx j = 0; j < n; ++j) col_axpy(m, mul(alpha, xp[j * incx]), a + j * lda, yp, incy);
    } else {
        for (idx j = 0; j < n; ++j) yp[j * incy] += mul(alpha, col_dot(m, a + j * lda, xp, incx, c));
    }
}

// Column j of the band holds rows max(0, j-ku) .. min(m-1, j+kl); row i of the matrix sits at
// row ku + i - j of the band array.
template <class T>
void gbmv(char trans, int m, int n, int kl, int ku, T alpha, const T* a, int lda, const T* x, int incx,
          T beta, T* y, int incy) {
    if (m == 0 || n == 0 || (alpha == T(0) && beta == T(1))) return;
    const bool notrans = trans == 'N';
    const int lenx = notrans ? n : m, leny = notrans ? m : n;
    scale_y(leny, beta, y, incy);
    if (alpha == T(0)) return;
    const T* xp = x + first(lenx, incx);
    T* yp = y + first(leny, incy);
    const bool c = trans == 'C';
    for (idx j = 0; j < n; ++j) {
        const idx i0 = j - ku > 0 ? j - ku : 0;
        const idx i1 = j + kl < m - 1 ? j + kl : m - 1;
        const T* col = a + j * lda + (ku + i0 - j);
        if (notrans) {
            col_axpy(i1 - i0 + 1, mul(alpha, xp[j * incx]), col, yp + i0 * incy, incy);
        } else {
            yp[j * incy] += mul(alpha, col_dot(i1 - i0 + 1, col, xp + i0 * incx, incx, c));
        }
    }
}

#define QNUM_KERN_GEMV(T)                                                               \
    template void gemv<T>(char, int, int, T, const T*, int, const T*, int, T, T*, int); \
    template void gbmv<T>(char, int, int, int, int, T, const T*, int, const T*, int, T, T*, int);
QNUM_KERN_GEMV(float)
QNUM_KERN_GEMV(double)
QNUM_KERN_GEMV(std::complex<float>)
QNUM_KERN_GEMV(std::complex<double>)
#undef QNUM_KERN_GEMV

}  // namespace qnum::kern
