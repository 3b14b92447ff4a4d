// Matrix-vector kernels (BLAS Level 2) for float, double, complex<float> and complex<double>.
//
// Matrices are column-major with a leading dimension; band matrices use the BLAS band layout
// (the diagonals as rows of an lda by n array) and packed ones store the triangle column by
// column. Vectors follow the increment convention of level1.hpp. Options are single upper-case
// characters: trans 'N', 'T' or 'C'; uplo 'U' or 'L'; diag 'U' or 'N'. These overloads make no
// checks; the exported wrappers in api.cpp check the arguments first.
//
// The products y := alpha op(A) x + beta y leave y untouched (bit for bit) when alpha = 0 and
// beta = 1, and assign zeros when beta = 0, so that NaNs in y do not survive. For real data
// the Hermitian kernels (hemv, hbmv, hpmv, her, hpr, her2, hpr2) are the symmetric ones; for
// complex data they ignore the imaginary parts of the diagonal and the rank updates set them
// to zero.
#pragma once

#include "frame/prec.hpp"

namespace qnum::kern {

// y := alpha op(A) x + beta y, A m by n
template <class T>
void gemv(char trans, int m, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y,
          int incy);
// the same with A an m by n band matrix of kl sub- and ku super-diagonals
template <class T>
void gbmv(char trans, int m, int n, int kl, int ku, T alpha, const T* a, int lda, const T* x, int incx,
          T beta, T* y, int incy);
// y := alpha A x + beta y, A Hermitian (symmetric), one triangle referenced
template <class T>
void hemv(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy);
// the same with A a Hermitian band matrix of k off-diagonals
template <class T>
void hbmv(char uplo, int n, int k, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y,
          int incy);
// the same with A packed
template <class T>
void hpmv(char uplo, int n, T alpha, const T* ap, const T* x, int incx, T beta, T* y, int incy);

// x := op(A) x, A triangular (full, band with k off-diagonals, packed)
template <class T>
void trmv(char uplo, char trans, char diag, int n, const T* a, int lda, T* x, int incx);
template <class T>
void tbmv(char uplo, char trans, char diag, int n, int k, const T* a, int lda, T* x, int incx);
template <class T>
void tpmv(char uplo, char trans, char diag, int n, const T* ap, T* x, int incx);
// x := op(A)^-1 x, A triangular (full, band, packed); no test for singularity
template <class T>
void trsv(char uplo, char trans, char diag, int n, const T* a, int lda, T* x, int incx);
template <class T>
void tbsv(char uplo, char trans, char diag, int n, int k, const T* a, int lda, T* x, int incx);
template <class T>
void tpsv(char uplo, char trans, char diag, int n, const T* ap, T* x, int incx);

// A := alpha x y^T + A (ger) and A := alpha x y^H + A (gerc, the same as ger for real data)
template <class T>
void ger(int m, int n, T alpha, const T* x, int incx, const T* y, int incy, T* a, int lda);
template <class T>
void gerc(int m, int n, T alpha, const T* x, int incx, const T* y, int incy, T* a, int lda);
// A := alpha x x^H + A, one triangle of a Hermitian (symmetric) A, full or packed
template <class T>
void her(char uplo, int n, Real<T> alpha, const T* x, int incx, T* a, int lda);
template <class T>
void hpr(char uplo, int n, Real<T> alpha, const T* x, int incx, T* ap);
// A := alpha x y^H + conj(alpha) y x^H + A, full or packed
template <class T>
void her2(char uplo, int n, T alpha, const T* x, int incx, const T* y, int incy, T* a, int lda);
template <class T>
void hpr2(char uplo, int n, T alpha, const T* x, int incx, const T* y, int incy, T* ap);

}  // namespace qnum::kern
