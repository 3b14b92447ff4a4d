// LU factorization with scaled partial pivoting, its solves, condition estimate and inverse.
// All arrays here are column-major with a leading dimension.
//
// Factor format: the upper triangle of fac holds U; the strictly lower triangle holds the
// elimination multipliers with their signs reversed, each column as it was when that column
// was eliminated (later row interchanges are not applied to it); ipvt(k) (1-based) is the
// row swapped with row k at step k, and ipvt(n) = n. Forward elimination is: for k = 1..n-1,
// swap x(k) and x(ipvt(k)), then x(k+1..n) += x(k) fac(k+1..n, k).
#pragma once

#include "frame/prec.hpp"

namespace qnum::linsys {

// The names the internal steps push, per precision.
template <class T>
struct LuNames {
    static const char* const factor;     // LU
    static const char* const condition;  // LU with condition estimate
    static const char* const solve;
    static const char* const inverse;
};

// 1-norm (largest column sum of |Re| + |Im|) of an nra by nca array. TERMINAL 1015 when nra
// > lda, 1016 when nra < 1, 1017 when nca < 1 (pushes "NR1RR ").
template <class T>
Real<T> nr1rr(int nra, int nca, const T* a, int lda);

// LU factorization of a into fac (fac may be a; otherwise a is copied first). scale is work
// of n. TERMINAL 1010 (n < 1), 1011 (lda < n), 1012 (ldfac < n); FATAL 1004 when a pivot is
// not larger than the safe minimum: the factorization is still complete.
template <class T>
void l2trg(int n, const T* a, int lda, T* fac, int ldfac, int* ipvt, Real<T>* scale);

// nr1rr, l2trg, then the reciprocal condition estimate rcond of the 1-norm (0 when the
// factorization failed). WARNING 1003 (rcond) when rcond <= eps. work and scale hold n.
template <class T>
void l2crg(int n, const T* a, int lda, T* fac, int ldfac, int* ipvt, Real<T>* rcond, T* work,
           Real<T>* scale);

// x := the solution of A x = b (ipath 1) or A^T x = b (ipath 2; conjugate transpose for
// complex data) from the factorization; b may be x. TERMINAL 1010, 1012, 1033 (3097 for
// complex data) for a bad ipath, 1034 for a pivot entry outside its range; FATAL 1004 for
// an exactly zero diagonal entry of U.
template <class T>
void lfsrg(int n, const T* fac, int ldfac, const int* ipvt, const T* b, int ipath, T* x);

// ainv := the inverse of the upper triangular a (ainv may be a; only the upper triangle is
// read and written). TERMINAL 1010, 1011, 1013; FATAL 1004 for a zero diagonal entry
// (pushes "LINRT ").
template <class T>
void linrt(int n, const T* a, int lda, T* ainv, int ldainv);

// The inverse of A into inv (leading dimension ldinv). With factor_first, inv holds A on
// entry and is factored in place by l2crg (ipvt, rcond, work and scale receive what l2crg
// gives); otherwise fac and ipvt hold A's factorization (fac may be inv).
template <class T>
void lu_inverse(int n, const T* fac, int ldfac, int* ipvt, bool factor_first, T* inv, int ldinv,
                Real<T>* rcond, T* work, Real<T>* scale);

}  // namespace qnum::linsys
