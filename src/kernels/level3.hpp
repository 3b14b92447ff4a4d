// Matrix-matrix kernels (BLAS Level 3): one signature for float, double and their complex
// counterparts, column-major storage with leading dimensions.
#pragma once

#include <complex>

#include "frame/prec.hpp"

namespace qnum::kern {

// Options are single upper-case characters: trans 'N', 'T' or 'C' (op(X) = X, X^T, X^H);
// uplo 'U' or 'L'; side 'L' or 'R'; diag 'U' (unit) or 'N'. These overloads make no checks:
// the exported wrappers in api_level3.cpp check the arguments first.
// The callers have checked the arguments (sizes >= 0, leading dimensions large enough). A
// kernel that needs workspace and cannot get it raises TERMINAL 201 and leaves its outputs
// untouched. For real T, hemm is symm, herk is syrk and her2k is syr2k; conjugate transposes
// are transposes.

// C = alpha op(A) op(B) + beta C, C m by n, op(A) m by k. beta = 0 assigns C (a NaN in C does
// not survive); alpha = 0 or k = 0 only scales C.
template <class T>
void gemm(char ta, char tb, int m, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, T beta,
          T* c, int ldc);

// C = alpha A B + beta C (side Left, A m by m) or alpha B A + beta C (side Right, A n by n);
// A symmetric, of which only the uplo triangle is read.
template <class T>
void symm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta, T* c,
          int ldc);
// As symm with A Hermitian; the imaginary parts of its diagonal are taken as zero.
template <class T>
void hemm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta, T* c,
          int ldc);

// The uplo triangle of the n by n C becomes alpha A A^T + beta C (trans N, A n by k) or
// alpha A^T A + beta C (trans T, A k by n).
template <class T>
void syrk(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, T beta, T* c, int ldc);
// Hermitian rank-k update with A^H in place of A^T (trans N or C), real alpha and beta; the
// diagonal of C comes out real.
template <class T>
void herk(char uplo, char trans, int n, int k, Real<T> alpha, const T* a, int lda, Real<T> beta, T* c,
          int ldc);
// alpha A B^T + alpha B A^T + beta C (trans N) or alpha A^T B + alpha B^T A + beta C (trans T).
template <class T>
void syr2k(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, T beta,
           T* c, int ldc);
// alpha A B^H + conj(alpha) B A^H + beta C (trans N) or the same with A^H B and B^H A
// (trans C); real beta, real diagonal.
template <class T>
void her2k(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb,
           Real<T> beta, T* c, int ldc);

// B = alpha op(A) B (side Left, A m by m) or alpha B op(A) (side Right, A n by n), A
// triangular; B is m by n and overwritten.
template <class T>
void trmm(char side, char uplo, char ta, char diag, int m, int n, T alpha, const T* a, int lda, T* b,
          int ldb);
// Solves op(A) X = alpha B (side Left) or X op(A) = alpha B (side Right); X overwrites B. A
// zero on a non-unit diagonal gives infinities and NaNs, as the division does: no test is made.
template <class T>
void trsm(char side, char uplo, char ta, char diag, int m, int n, T alpha, const T* a, int lda, T* b,
          int ldb);

}  // namespace qnum::kern
