// Layout changes between the caller's row-major arrays and the column-major working ones.
#include "linsys/common.hpp"

#include <algorithm>
#include <cstring>

#include "linsys/m1ran.hpp"

namespace qnum::linsys {

template <class T>
void rows_to_columns(int n, int cd, T* a) {
    m1ran(n, cd, a, a);
}

template <class T>
void columns_to_rows(int n, int cd, T* a) {
    m1ran(cd, n, a, a);
}

template <class T>
void hand_back_rows(int n, int cd, T* a) {
    m1ran(n, n, a, a);
    if (cd == n) return;
    const std::size_t sn = static_cast<std::size_t>(n), sc = static_cast<std::size_t>(cd);
    // Rows move to larger offsets, so the last one goes first.
    for (std::size_t i = sn; i-- > 0;) {
        std::memmove(static_cast<void*>(a + i * sc), a + i * sn, sn * sizeof(T));
        std::fill(a + i * sc + sn, a + (i + 1) * sc, T(0));
    }
}

template <class T>
void copy_transposed(int n, const T* a, int lda, T* f) {
    constexpr int tile = 32;
    for (int i0 = 0; i0 < n; i0 += tile) {
        const int i1 = std::min(n, i0 + tile);
        for (int j0 = 0; j0 < n; j0 += tile) {
            const int j1 = std::min(n, j0 + tile);
            for (int i = i0; i < i1; ++i) {
                const T* row = a + static_cast<std::size_t>(i) * static_cast<std::size_t>(lda);
                for (int j = j0; j < j1; ++j) f[at(i, j, n)] = row[j];
            }
        }
    }
}

#define QNUM_LINSYS_LAYOUT(T)                              \
    template void rows_to_columns<T>(int, int, T*);        \
    template void columns_to_rows<T>(int, int, T*);        \
    template void hand_back_rows<T>(int, int, T*);         \
    template void copy_transposed<T>(int, const T*, int, T*);
QNUM_LINSYS_LAYOUT(float)
QNUM_LINSYS_LAYOUT(double)
QNUM_LINSYS_LAYOUT(std::complex<float>)
QNUM_LINSYS_LAYOUT(std::complex<double>)
#undef QNUM_LINSYS_LAYOUT

}  // namespace qnum::linsys
