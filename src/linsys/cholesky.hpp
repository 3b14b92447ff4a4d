// Cholesky factorization M = L L^H of a Hermitian (real: symmetric) positive definite matrix,
// its condition estimate, solve and inverse. Column-major arrays; only the lower triangle of
// M is read, and L is written over the lower triangle of fac.
#pragma once

#include "frame/prec.hpp"

namespace qnum::linsys {

// TERMINAL 1010 (n < 1), 1011 (lda < n), 1012 (ldfac < n); FATAL 1018 with the column j
// (1-based) when the leading j by j part is not positive definite.
template <class T>
void chol_factor(int n, const T* a, int lda, T* fac, int ldfac);

// The 1-norm of M from its lower triangle (each column's sum is its stored part plus the
// mirrored part of its row), then chol_factor, then rcond (0 when the factorization failed);
// WARNING 1003 when rcond <= eps. work holds n.
template <class T>
void chol_condition(int n, const T* a, int lda, T* fac, int ldfac, Real<T>* rcond, T* work);

// x := M^-1 b from the factor (b may be x).
template <class T>
void chol_solve(int n, const T* fac, int ldfac, const T* b, T* x);

// inv := M^-1, both triangles (inv distinct from fac). TERMINAL 201 when the work square
// cannot be allocated.
template <class T>
void chol_inverse(int n, const T* fac, int ldfac, T* inv, int ldinv);

}  // namespace qnum::linsys
