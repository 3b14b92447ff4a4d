// Rank-revealing factorization A = R^T R of a symmetric nonnegative definite matrix and the
// solves and generalized inverse built on it. Arrays here are in the caller's row-major
// layout: element (i, j) of a is a[i*lda + j].
#pragma once

namespace qnum::linsys {

// R (upper triangle of r; its strictly lower triangle is zeroed when r is not a) from the
// upper triangle of a, column by column. A diagonal whose reduced value lies within tol
// times the original one is taken as 0, and its row of R is 0. TERMINAL 1048 unless
// 0 <= tol <= 1; WARNING 1049 (column, tol) when the matrix is not nonnegative definite.
// Returns the rank found. Pushes "l_chfac".
template <class T>
int chfac(int n, const T* a, int lda, double tol, T* r, int ldr);

// x := a solution of R^T R x = b through R^T y = b, then R x = y; components at zero
// diagonals of R are set to 0. With `warn`, WARNING 1051 (row) when R^T y = b cannot hold at
// a zero diagonal and WARNING 1050 (row, column 1, value) when a reduced right-hand side at a
// zero diagonal of R x = y is not zero. Pushes "l_girts".
template <class T>
void girts(int n, const T* r, int ldr, const T* b, T* x, bool warn);

}  // namespace qnum::linsys
