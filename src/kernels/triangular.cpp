// Triangular matrix-vector products and solves: full, band and packed storage.
#include "kernels/columns.hpp"
#include "kernels/level2.hpp"

namespace qnum::kern {
namespace {

// The stored off-diagonal part of column j: rows i0 .. i0+len-1 at p[0 .. len-1] (above the
// diagonal for an upper triangle, below it for a lower one), and the diagonal at *d.
template <class T>
struct Col {
    const T* p;
    idx i0, len;
    const T* d;
};

// Product (solve = false) or solve, written once for the three layouts, which differ only in
// where column j lives (`column`). Every step works on one column: the no-transpose forms
// update x with a multiple of the column, the transposed forms take a dot product with it.
// The order of the columns is the one in which each x(j) is still unchanged (product) or
// already final (solve) when column j needs it.
template <class T, class Column>
void triangular(bool upper, char trans, bool unit, bool solve, int n, T* x, int incx, Column column) {
    if (n <= 0) return;
    T* xp = x + first(n, incx);
    const bool c = trans == 'C';
    // Columns ascend when an upper product or a lower solve (no transpose), or a lower product
    // or an upper solve (transposed), walks the triangle; they descend otherwise.
    const bool ascending = (trans == 'N') == (upper != solve);
    for (idx s = 0; s < n; ++s) {
        const idx j = ascending ? s : n - 1 - s;
        const Col<T> col = column(j);
        T& xj = xp[j * incx];
        T* seg = xp + col.i0 * incx;
        if (trans == 'N') {
            if (solve) {
                if (!unit) xj = div(xj, *col.d);
                col_axpy(col.len, -xj, col.p, seg, incx);
            } else {
                const T t = xj;
                col_axpy(col.len, t, col.p, seg, incx);
                if (!unit) xj = mul(xj, *col.d);
            }
        } else {
            const T d = conj_if(c, unit ? T(1) : *col.d);
            if (solve) {
                T t = xj - col_dot(col.len, col.p, seg, incx, c);
                xj = unit ? t : div(t, d);
            } else {
                T t = unit ? xj : mul(xj, d);
                xj = t + col_dot(col.len, col.p, seg, incx, c);
            }
        }
    }
}

template <class T>
auto full_column(bool upper, int n, const T* a, int lda) {
    return [=](idx j) {
        const T* col = a + j * lda;
        return upper ? Col<T>{col, 0, j, col + j} : Col<T>{col + j + 1, j + 1, n - 1 - j, col + j};
    };
}

// Band storage: the diagonal of column j sits in row k (upper) or row 0 (lower).
template <class T>
auto band_column(bool upper, int n, int k, const T* a, int lda) {
    return [=](idx j) {
        const T* col = a + j * lda;
        if (upper) {
            const idx i0 = j - k > 0 ? j - k : 0;
            return Col<T>{col + (k + i0 - j), i0, j - i0, col + k};
        }
        const idx i1 = j + k < n - 1 ? j + k : n - 1;
        return Col<T>{col + 1, j + 1, i1 - j, col};
    };
}

// Packed storage: column j starts at j(j+1)/2 (upper) or j(2n-j+1)/2 (lower).
template <class T>
auto packed_column(bool upper, int n, const T* ap) {
    return [=](idx j) {
        if (upper) {
            const T* col = ap + j * (j + 1) / 2;
            return Col<T>{col, 0, j, col + j};
        }
        const T* col = ap + j * (2 * static_cast<idx>(n) - j + 1) / 2;
        return Col<T>{col + 1, j + 1, n - 1 - j, col};
    };
}

}  // namespace

template <class T>
void trmv(char uplo, char trans, char diag, int n, const T* a, int lda, T* x, int incx) {
    const bool upper = uplo == 'U';
    triangular(upper, trans, diag == 'U', false, n, x, incx, full_column(upper, n, a, lda));
}

template <class T>
void tbmv(char uplo, char trans, char diag, int n, int k, const T* a, int lda, T* x, int incx) {
    const bool upper = uplo == 'U';
    triangular(upper, trans, diag == 'U', false, n, x, incx, band_column(upper, n, k, a, lda));
}

template <class T>
void tpmv(char uplo, char trans, char diag, int n, const T* ap, T* x, int incx) {
    const bool upper = uplo == 'U';
    triangular(upper, trans, diag == 'U', false, n, x, incx, packed_column(upper, n, ap));
}

template <class T>
void trsv(char uplo, char trans, char diag, int n, const T* a, int lda, T* x, int incx) {
    const bool upper = uplo == 'U';
    triangular(upper, trans, diag == 'U', true, n, x, incx, full_column(upper, n, a, lda));
}

template <class T>
void tbsv(char uplo, char trans, char diag, int n, int k, const T* a, int lda, T* x, int incx) {
    const bool upper = uplo == 'U';
    triangular(upper, trans, diag == 'U', true, n, x, incx, band_column(upper, n, k, a, lda));
}

template <class T>
void tpsv(char uplo, char trans, char diag, int n, const T* ap, T* x, int incx) {
    const bool upper = uplo == 'U';
    triangular(upper, trans, diag == 'U', true, n, x, incx, packed_column(upper, n, ap));
}

#define QNUM_KERN_TRIANGULAR(T)                                                \
    template void trmv<T>(char, char, char, int, const T*, int, T*, int);      \
    template void tbmv<T>(char, char, char, int, int, const T*, int, T*, int); \
    template void tpmv<T>(char, char, char, int, const T*, T*, int);           \
    template void trsv<T>(char, char, char, int, const T*, int, T*, int);      \
    template void tbsv<T>(char, char, char, int, int, const T*, int, T*, int); \
    template void tpsv<T>(char, char, char, int, const T*, T*, int);
QNUM_KERN_TRIANGULAR(float)
QNUM_KERN_TRIANGULAR(double)
QNUM_KERN_TRIANGULAR(std::complex<float>)
QNUM_KERN_TRIANGULAR(std::complex<double>)
#undef QNUM_KERN_TRIANGULAR

}  // namespace qnum::kern
