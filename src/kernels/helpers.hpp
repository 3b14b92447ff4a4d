// The library's own vector and matrix helpers: fill, add a constant, plain sum, signed
// extremes, triple product, scaled copy, and whole-matrix and band-matrix copies.
#pragma once

#include "frame/prec.hpp"

namespace qnum::kern {

// x(i) := a for n elements at the positions 0, |inc|, 2|inc|, ... (the same positions that a
// negative increment walks backwards). n < 1 or inc = 0 writes nothing. Also for int.
template <class T>
void fill(int n, T a, T* x, int inc);
// x(i) := x(i) + a for n elements at the positions 0, |inc|, 2|inc|, ...; inc = 0 adds a to
// x[0] n times.
template <class T>
void add(int n, T a, T* x, int inc);
// Left-to-right sum of the n elements.
template <class T>
T sum(int n, const T* x, int inc);
// 1-based index of the first largest (smallest) element, by signed value; 0 for n < 1.
// Real data only.
template <class T>
int imax(int n, const T* x, int inc);
template <class T>
int imin(int n, const T* x, int inc);
// Left-to-right sum of x(i) y(i) z(i), accumulated in T. Real data only.
template <class T>
T xyz(int n, const T* x, int incx, const T* y, int incy, const T* z, int incz);
// y(i) := a x(i)
template <class T>
void svcal(int n, T a, const T* x, int incx, T* y, int incy);
// Copy of the n by n matrix a (leading dimension lda) into b (ldb). When b's columns lie
// farther apart than a's (widening a matrix in place) the columns go from the last to the
// first, each from its end, so overlapping storage is read before it is overwritten.
template <class T>
void copy_matrix(int n, const T* a, int lda, T* b, int ldb);
// Copy of an n by n band matrix with nla sub- and nua super-diagonals, in band storage (the
// diagonals as rows of an lda by n array, the highest super-diagonal on top), into band
// storage with nlb >= nla sub- and nub >= nua super-diagonals; the diagonals that b has in
// addition are set to zero. The copy runs backwards, so b may widen a in place.
template <class T>
void copy_band(int n, const T* a, int lda, int nla, int nua, T* b, int ldb, int nlb, int nub);

}  // namespace qnum::kern
