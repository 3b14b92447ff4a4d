// Small helpers shared by the Level 3 kernels: scaling by beta, conjugation, sub-blocks.
#pragma once

#include <complex>
#include <cstddef>

#include "frame/prec.hpp"
#include "kernels/level3.hpp"

namespace qnum::kern {

using Index = std::ptrdiff_t;

// conj(x) for complex T, x for real T.
template <class T>
inline T conjugate(T x) {
    if constexpr (is_complex_v<T>)  // only complex numbers have a conjugate
        return std::conj(x);
    else
        return x;
}

// C (m by n) = beta C; beta = 0 assigns zeros, so a NaN in C does not survive; beta = 1 leaves
// C untouched.
template <class T>
void scale(int m, int n, T beta, T* c, int ldc) {
    if (beta == T(1)) return;
    for (Index j = 0; j < n; ++j) {
        T* cj = c + j * static_cast<Index>(ldc);
        if (beta == T(0))
            for (Index i = 0; i < m; ++i) cj[i] = T(0);
        else
            for (Index i = 0; i < m; ++i) cj[i] *= beta;
    }
}

// The block of op(A) that starts at row r, column c (A stored column-major with lda).
template <class T>
inline const T* op_block(const T* a, int lda, char ta, Index r, Index c) {
    return ta == 'N' ? a + r + c * lda : a + c + r * lda;
}

}  // namespace qnum::kern
