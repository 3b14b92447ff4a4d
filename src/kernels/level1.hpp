// Vector kernels (BLAS Level 1) for float, double, complex<float> and complex<double>.
//
// A vector is (n, x, inc): element i (1-based) is x[(i-1)*inc] for inc > 0; for inc < 0 the
// walk starts at x[(1-n)*inc] and runs backwards; inc = 0 names x[0] n times. A length below 1
// makes every kernel here a quick return (0 for the functions). These overloads make no
// checks: the exported wrappers in api.cpp apply the conventions of the public names.
#pragma once

#include "frame/prec.hpp"

namespace qnum::kern {

// sum of x(i) * y(i)
template <class T>
T dot(int n, const T* x, int incx, const T* y, int incy);
// sum of conj(x(i)) * y(i); the same as dot for real data
template <class T>
T dotc(int n, const T* x, int incx, const T* y, int incy);
// y := a * x + y; a = 0 leaves y untouched (NaNs included)
template <class T>
void axpy(int n, T a, const T* x, int incx, T* y, int incy);
// x := a * x
template <class T>
void scal(int n, T a, T* x, int incx);
// x := a * x with a real a (complex data: both parts scaled)
template <class T>
void rscal(int n, Real<T> a, T* x, int incx);
// y := x, element 1 first (so the walk direction decides which overlapping part is read
// before it is written)
template <class T>
void copy(int n, const T* x, int incx, T* y, int incy);
// x <-> y
template <class T>
void swap(int n, T* x, int incx, T* y, int incy);
// plane rotation: x := c x + s y, y := c y - s x, with real c and s
template <class T>
void rot(int n, T* x, int incx, T* y, int incy, Real<T> c, Real<T> s);
// modified rotation with the 2 by 2 matrix H coded in param (flag, h11, h21, h12, h22);
// real data only
template <class T>
void rotm(int n, T* x, int incx, T* y, int incy, const T* param);
// Construct a plane rotation that zeroes b: a := r, c and s the rotation. Real data: b :=
// the reconstruction value z. Complex data: b is left as it is.
template <class T>
void rotg(T* a, T* b, Real<T>* c, T* s);
// Construct a modified rotation (real data only): d1, d2, x1 updated, param as for rotm.
template <class T>
void rotmg(T* d1, T* d2, T* x1, T y1, T* param);
// Euclidean norm, without overflow or harmful underflow for any finite data.
template <class T>
Real<T> nrm2(int n, const T* x, int incx);
// sum of |x(i)| (complex data: |Re| + |Im|)
template <class T>
Real<T> asum(int n, const T* x, int incx);
// 1-based index of the first element of largest |x(i)| (complex data: |Re| + |Im|); 0 for
// n < 1. A NaN never wins over an earlier number.
template <class T>
int iamax(int n, const T* x, int incx);

}  // namespace qnum::kern
