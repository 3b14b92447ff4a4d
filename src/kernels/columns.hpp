// Column operations shared by the matrix-vector kernels: every Level 2 loop reads or updates
// one contiguous stretch of a matrix column against a strided stretch of a vector.
#pragma once

#include "kernels/helpers.hpp"
#include "kernels/level1.hpp"
#include "kernels/scalar.hpp"
#include "kernels/tuned.hpp"

namespace qnum::kern {

// v(i) += a * conj_if(c, col[i]) for i < len, v(i) = v[i * inc].
template <class T>
inline void col_axpy(idx len, T a, const T* col, T* v, idx inc, bool c = false) {
    if (len <= 0) return;
    if (inc == 1) return axpy_unit<T>(len, a, col, v, c);
    for (idx i = 0; i < len; ++i) v[i * inc] += mul(a, conj_if(c, col[i]));
}

// sum of conj_if(c, col[i]) * v(i) for i < len, v(i) = v[i * inc].
template <class T>
inline T col_dot(idx len, const T* col, const T* v, idx inc, bool c = false) {
    if (len <= 0) return T(0);
    if (inc == 1) return dot_unit<T>(len, col, v, c);
    T s{};
    for (idx i = 0; i < len; ++i) s += mul(conj_if(c, col[i]), v[i * inc]);
    return s;
}

// col[i] += a * v(i) for i < len: a rank-1 update of one column.
template <class T>
inline void axpy_to_col(idx len, T a, const T* v, idx inc, T* col) {
    if (len <= 0) return;
    if (inc == 1) return axpy_unit<T>(len, a, v, col, false);
    for (idx i = 0; i < len; ++i) col[i] += mul(a, v[i * inc]);
}

// y := beta y over len elements before a product is added: beta = 1 leaves y alone, beta = 0
// assigns zeros (so NaNs do not survive), anything else scales. The helpers are called with
// |inc|, which visits the same positions as the negative walk.
template <class T>
inline void scale_y(int len, T beta, T* y, int inc) {
    if (beta == T(1)) return;
    if (inc == -2147483647 - 1) {  // |inc| is no int: walk with a wider step
        for (idx i = 0, p = 0; i < len; ++i, p -= static_cast<idx>(inc)) y[p] = beta == T(0) ? T(0) : y[p] * beta;
        return;
    }
    const int step = inc < 0 ? -inc : inc;
    if (beta == T(0)) {
        fill(len, T(0), y, step);
    } else {
        scal(len, beta, y, step);
    }
}

}  // namespace qnum::kern
