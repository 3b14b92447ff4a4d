// Hermitian (for real data symmetric) matrix-vector products: full, band and packed storage.
#include "kernels/columns.hpp"
#include "kernels/level2.hpp"

namespace qnum::kern {
namespace {

// The stored off-diagonal part of column j: rows i0 .. i0+len-1 at p[0 .. len-1], and the
// diagonal element d.
template <class T>
struct Seg {
    const T* p;
    idx i0, len;
    T d;
};

// Unit strides on a tuned path: a group of neighbouring columns (the table's width) takes one
// pass over the rows they all share, and each column's rows outside that range a pass of its own.
template <class T, class Column>
void hermitian_groups(int n, T alpha, const T* x, T* y, Column column, const tuned::ComplexOps<Real<T>>& ops) {
    constexpr int most = 4;
    const int width = ops.cols < most ? ops.cols : most;
    // t * col over rows [from, to) of s into y, and the dot of those rows with x into *dot.
    auto piece = [&](const Seg<T>& s, idx from, idx to, const T& t, T& dot) {
        if (to <= from) return;
        Real<T> out[2];
        ops.axpy_dotc(to - from, reals(&t), reals(s.p + (from - s.i0)), reals(x + from), reals(y + from), out);
        dot += T(out[0], out[1]);
    };
    for (idx j = 0; j < n;) {
        const int g = n - j >= width ? width : 1;
        Seg<T> s[most];
        T t[most], dot[most] = {};
        idx from = 0, to = n;
        for (int q = 0; q < g; ++q) {
            s[q] = column(j + q);
            t[q] = mul(alpha, x[j + q]);
            if (s[q].i0 > from) from = s[q].i0;
            if (s[q].i0 + s[q].len < to) to = s[q].i0 + s[q].len;
        }
        if (g == 1 || to <= from) {
            for (int q = 0; q < g; ++q) piece(s[q], s[q].i0, s[q].i0 + s[q].len, t[q], dot[q]);
        } else {
            const Real<T>* c[most];
            for (int q = 0; q < g; ++q) c[q] = reals(s[q].p + (from - s[q].i0));
            Real<T> out[2 * most];
            ops.axpy_dotc_cols(to - from, reals(t), c, reals(x + from), reals(y + from), out);
            for (int q = 0; q < g; ++q) {
                dot[q] = T(out[2 * q], out[2 * q + 1]);
                piece(s[q], s[q].i0, from, t[q], dot[q]);
                piece(s[q], to, s[q].i0 + s[q].len, t[q], dot[q]);
            }
        }
        for (int q = 0; q < g; ++q) y[j + q] += mul(t[q], real_part(s[q].d)) + mul(alpha, dot[q]);
        j += g;
    }
}

// One pass over the stored triangle, column by column: each stored a(i,j) off the diagonal
// contributes a(i,j) x(j) to y(i) and conj(a(i,j)) x(i) to y(j), so A is read once. The
// layouts differ only in where column j lives (`column`).
template <class T, class Column>
void hermitian_product(int n, T alpha, const T* x, int incx, T beta, T* y, int incy, Column column) {
    if (n == 0 || (alpha == T(0) && beta == T(1))) return;
    scale_y(n, beta, y, incy);
    if (alpha == T(0)) return;
    const T* xp = x + first(n, incx);
    T* yp = y + first(n, incy);
    // Complex columns with unit strides go to the tuned table, a few at a time.
    if constexpr (is_complex_v<T>) {
        if (incx == 1 && incy == 1) {
            if (const auto* fused = tuned::complex_ops<Real<T>>()) {
                hermitian_groups(n, alpha, xp, yp, column, *fused);
                return;
            }
        }
    }
    for (idx j = 0; j < n; ++j) {
        const Seg<T> s = column(j);
        const T t1 = mul(alpha, xp[j * incx]);
        col_axpy(s.len, t1, s.p, yp + s.i0 * incy, incy);
        const T t2 = col_dot(s.len, s.p, xp + s.i0 * incx, incx, true);
        yp[j * incy] += mul(t1, real_part(s.d)) + mul(alpha, t2);
    }
}

}  // namespace

template <class T>
void hemv(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy) {
    const bool upper = uplo == 'U';
    hermitian_product(n, alpha, x, incx, beta, y, incy, [=](idx j) {
        const T* col = a + j * lda;
        return upper ? Seg<T>{col, 0, j, col[j]} : Seg<T>{col + j + 1, j + 1, n - 1 - j, col[j]};
    });
}

// Band storage: column j's diagonal sits in row k (upper) or row 0 (lower) of the band array.
template <class T>
void hbmv(char uplo, int n, int k, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y,
          int incy) {
    const bool upper = uplo == 'U';
    hermitian_product(n, alpha, x, incx, beta, y, incy, [=](idx j) {
        const T* col = a + j * lda;
        if (upper) {
            const idx i0 = j - k > 0 ? j - k : 0;
            return Seg<T>{col + (k + i0 - j), i0, j - i0, col[k]};
        }
        const idx i1 = j + k < n - 1 ? j + k : n - 1;
        return Seg<T>{col + 1, j + 1, i1 - j, col[0]};
    });
}

// Packed storage: column j starts at j(j+1)/2 (upper) or j(2n-j+1)/2 (lower).
template <class T>
void hpmv(char uplo, int n, T alpha, const T* ap, const T* x, int incx, T beta, T* y, int incy) {
    const bool upper = uplo == 'U';
    hermitian_product(n, alpha, x, incx, beta, y, incy, [=](idx j) {
        if (upper) {
            const T* col = ap + j * (j + 1) / 2;
            return Seg<T>{col, 0, j, col[j]};
        }
        const T* col = ap + j * (2 * static_cast<idx>(n) - j + 1) / 2;
        return Seg<T>{col + 1, j + 1, n - 1 - j, col[0]};
    });
}

#define QNUM_KERN_SYMV(T)                                                               \
    template void hemv<T>(char, int, T, const T*, int, const T*, int, T, T*, int);      \
    template void hbmv<T>(char, int, int, T, const T*, int, const T*, int, T, T*, int); \
    template void hpmv<T>(char, int, T, const T*, const T*, int, T, T*, int);
QNUM_KERN_SYMV(float)
QNUM_KERN_SYMV(double)
QNUM_KERN_SYMV(std::complex<float>)
QNUM_KERN_SYMV(std::complex<double>)
#undef QNUM_KERN_SYMV

}  // namespace qnum::kern
