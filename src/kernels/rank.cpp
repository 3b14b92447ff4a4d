// Rank-1 and rank-2 updates: general, and Hermitian (for real data symmetric) in full and
// packed storage.
#include "kernels/columns.hpp"
#include "kernels/level2.hpp"

namespace qnum::kern {
namespace {

// The stored off-diagonal part of column j (rows i0 .. i0+len-1 at p) and its diagonal d.
template <class T>
struct WCol {
    T* p;
    idx i0, len;
    T* d;
};

template <class T>
auto full_column(bool upper, int n, T* a, int lda) {
    return [=](idx j) {
        T* col = a + j * lda;
        return upper ? WCol<T>{col, 0, j, col + j} : WCol<T>{col + j + 1, j + 1, n - 1 - j, col + j};
    };
}

template <class T>
auto packed_column(bool upper, int n, T* ap) {
    return [=](idx j) {
        if (upper) {
            T* col = ap + j * (j + 1) / 2;
            return WCol<T>{col, 0, j, col + j};
        }
        T* col = ap + j * (2 * static_cast<idx>(n) - j + 1) / 2;
        return WCol<T>{col + 1, j + 1, n - 1 - j, col};
    };
}

// Column j of the stored triangle gets x(i) alpha conj(x(j)) (rank 1), or x(i) alpha conj(y(j))
// + y(i) conj(alpha x(j)) (rank 2); the diagonal keeps only its real part, so it stays real
// whatever rounding does to the product.
template <class T, class Column>
void hermitian_rank1(int n, Real<T> alpha, const T* x, int incx, Column column) {
    if (n == 0 || alpha == 0) return;
    const T* xp = x + first(n, incx);
    for (idx j = 0; j < n; ++j) {
        const WCol<T> col = column(j);
        const T t = conj(xp[j * incx]) * alpha;
        axpy_to_col(col.len, t, xp + col.i0 * incx, incx, col.p);
        *col.d = real_part(*col.d) + real_part(mul(xp[j * incx], t));
    }
}

template <class T, class Column>
void hermitian_rank2(int n, T alpha, const T* x, int incx, const T* y, int incy, Column column) {
    if (n == 0 || alpha == T(0)) return;
    const T* xp = x + first(n, incx);
    const T* yp = y + first(n, incy);
    for (idx j = 0; j < n; ++j) {
        const WCol<T> col = column(j);
        const T t1 = mul(alpha, conj(yp[j * incy]));
        const T t2 = conj(mul(alpha, xp[j * incx]));
        axpy_to_col(col.len, t1, xp + col.i0 * incx, incx, col.p);
        axpy_to_col(col.len, t2, yp + col.i0 * incy, incy, col.p);
        *col.d = real_part(*col.d) + real_part(mul(xp[j * incx], t1) + mul(yp[j * incy], t2));
    }
}

template <class T>
void general_rank1(int m, int n, T alpha, const T* x, int incx, const T* y, int incy, T* a, int lda, bool c) {
    if (m == 0 || n == 0 || alpha == T(0)) return;
    const T* xp = x + first(m, incx);
    const T* yp = y + first(n, incy);
    for (idx j = 0; j < n; ++j) axpy_to_col(m, mul(alpha, conj_if(c, yp[j * incy])), xp, incx, a + j * lda);
}

}  // namespace

template <class T>
void ger(int m, int n, T alpha, const T* x, int incx, const T* y, int incy, T* a, int lda) {
    general_rank1(m, n, alpha, x, incx, y, incy, a, lda, false);
}

template <class T>
void gerc(int m, int n, T alpha, const T* x, int incx, const T* y, int incy, T* a, int lda) {
    general_rank1(m, n, alpha, x, incx, y, incy, a, lda, true);
}

template <class T>
void her(char uplo, int n, Real<T> alpha, const T* x, int incx, T* a, int lda) {
    hermitian_rank1<T>(n, alpha, x, incx, full_column(uplo == 'U', n, a, lda));
}

template <class T>
void hpr(char uplo, int n, Real<T> alpha, const T* x, int incx, T* ap) {
    hermitian_rank1<T>(n, alpha, x, incx, packed_column(uplo == 'U', n, ap));
}

template <class T>
void her2(char uplo, int n, T alpha, const T* x, int incx, const T* y, int incy, T* a, int lda) {
    hermitian_rank2<T>(n, alpha, x, incx, y, incy, full_column(uplo == 'U', n, a, lda));
}

template <class T>
void hpr2(char uplo, int n, T alpha, const T* x, int incx, const T* y, int incy, T* ap) {
    hermitian_rank2<T>(n, alpha, x, incx, y, incy, packed_column(uplo == 'U', n, ap));
}

#define QNUM_KERN_RANK(T)                                                       \
    template void ger<T>(int, int, T, const T*, int, const T*, int, T*, int);   \
    template void gerc<T>(int, int, T, const T*, int, const T*, int, T*, int);  \
    template void her<T>(char, int, Real<T>, const T*, int, T*, int);           \
    template void hpr<T>(char, int, Real<T>, const T*, int, T*);                \
    template void her2<T>(char, int, T, const T*, int, const T*, int, T*, int); \
    template void hpr2<T>(char, int, T, const T*, int, const T*, int, T*);
QNUM_KERN_RANK(float)
QNUM_KERN_RANK(double)
QNUM_KERN_RANK(std::complex<float>)
QNUM_KERN_RANK(std::complex<double>)
#undef QNUM_KERN_RANK

}  // namespace qnum::kern
