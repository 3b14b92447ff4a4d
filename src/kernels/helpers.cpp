// The library's own vector and matrix helpers.
#include "kernels/helpers.hpp"

#include <cstdlib>
#include <cstring>

#include "kernels/level1.hpp"
#include "kernels/scalar.hpp"

namespace qnum::kern {

// The positions 1, 1+inc, ... up to n*inc, as a counted loop from 1 to n*inc in steps of inc
// would visit them: its trip count ((n+1)*inc - 1)/inc is n for every positive inc.
template <class T>
void fill(int n, T a, T* x, int inc) {
    if (n < 1 || inc == 0) return;
    if (inc == 1 || inc == -1) {
        for (int i = 0; i < n; ++i) x[i] = a;
        return;
    }
    const idx step = inc < 0 ? -static_cast<idx>(inc) : inc;  // INT_MIN has no int negation
    for (idx i = 0, p = 0; i < n; ++i, p += step) x[p] = a;
}

template <class T>
void add(int n, T a, T* x, int inc) {
    if (n < 1) return;
    const idx step = inc < 0 ? -static_cast<idx>(inc) : inc;  // INT_MIN has no int negation
    for (idx i = 0, p = 0; i < n; ++i, p += step) x[p] += a;
}

template <class T>
T sum(int n, const T* x, int inc) {
    T s{};
    idx p = first(n, inc);
    for (int i = 0; i < n; ++i, p += inc) s += x[p];
    return s;
}

namespace {
// The first extreme wins: a candidate is replaced only on a strict improvement.
template <class T, class Better>
int index_of_extreme(int n, const T* x, int inc, Better better) {
    if (n < 1) return 0;
    idx p = first(n, inc);
    int best = 1;
    T v = x[p];
    p += inc;
    for (int i = 2; i <= n; ++i, p += inc) {
        if (better(x[p], v)) {
            v = x[p];
            best = i;
        }
    }
    return best;
}
}  // namespace

template <class T>
int imax(int n, const T* x, int inc) {
    return index_of_extreme(n, x, inc, [](T a, T b) { return a > b; });
}

template <class T>
int imin(int n, const T* x, int inc) {
    return index_of_extreme(n, x, inc, [](T a, T b) { return a < b; });
}

template <class T>
T xyz(int n, const T* x, int incx, const T* y, int incy, const T* z, int incz) {
    T s = 0;
    idx ix = first(n, incx), iy = first(n, incy), iz = first(n, incz);
    for (int i = 0; i < n; ++i, ix += incx, iy += incy, iz += incz) s += x[ix] * y[iy] * z[iz];
    return s;
}

template <class T>
void svcal(int n, T a, const T* x, int incx, T* y, int incy) {
    if (n < 1) return;
    idx ix = first(n, incx), iy = first(n, incy);
    for (int i = 0; i < n; ++i, ix += incx, iy += incy) y[iy] = mul(a, x[ix]);
}

template <class T>
void copy_matrix(int n, const T* a, int lda, T* b, int ldb) {
    if (n < 1) return;
    if (lda == n && ldb == n) {
        std::memmove(static_cast<void*>(b), static_cast<const void*>(a), sizeof(T) * n * n);
    } else if (lda < ldb) {
        for (idx j = n - 1; j >= 0; --j) copy(n, a + j * lda, -1, b + j * ldb, -1);
    } else {
        for (idx j = 0; j < n; ++j) copy(n, a + j * lda, 1, b + j * ldb, 1);
    }
}

// Row r of column j in band storage with nu super-diagonals holds element (j - nu + r, j).
// Going backwards through b, every element is read from a before the part of b that could
// share its storage is written: b's position of an element never lies before a's.
template <class T>
void copy_band(int n, const T* a, int lda, int nla, int nua, T* b, int ldb, int nlb, int nub) {
    const idx shift = nub - nua;  // row of a's top diagonal within b
    const idx rows_a = nla + nua + 1, rows_b = nlb + nub + 1;
    for (idx j = n - 1; j >= 0; --j) {
        const T* aj = a + j * lda;
        T* bj = b + j * ldb;
        for (idx r = rows_b - 1; r >= shift + rows_a; --r) bj[r] = T(0);
        for (idx r = rows_a - 1; r >= 0; --r) bj[shift + r] = aj[r];
        for (idx r = shift - 1; r >= 0; --r) bj[r] = T(0);
    }
}

#define QNUM_KERN_HELPERS(T)                                   \
    template void fill<T>(int, T, T*, int);                    \
    template void add<T>(int, T, T*, int);                     \
    template T sum<T>(int, const T*, int);                     \
    template void svcal<T>(int, T, const T*, int, T*, int);    \
    template void copy_matrix<T>(int, const T*, int, T*, int); \
    template void copy_band<T>(int, const T*, int, int, int, T*, int, int, int);
QNUM_KERN_HELPERS(float)
QNUM_KERN_HELPERS(double)
QNUM_KERN_HELPERS(std::complex<float>)
QNUM_KERN_HELPERS(std::complex<double>)
#undef QNUM_KERN_HELPERS
template void fill<int>(int, int, int*, int);
template int imax<float>(int, const float*, int);
template int imax<double>(int, const double*, int);
template int imin<float>(int, const float*, int);
template int imin<double>(int, const double*, int);
template float xyz<float>(int, const float*, int, const float*, int, const float*, int);
template double xyz<double>(int, const double*, int, const double*, int, const double*, int);

}  // namespace qnum::kern
