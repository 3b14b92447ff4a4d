/* qnummath: the public C interface of the numerical mathematics library.
 *
 * Every routine reports problems on a per-thread error stack instead of returning codes:
 * call a routine, then ask qnum_n1rty(1) for the type of its error (0: none) and
 * qnum_20305() for its code. Results the library allocates are released with
 * qnum_free_allocated_memory. Optional arguments follow the required ones as a list of
 * option codes, each followed by its values, closed by 0.
 */
#ifndef QNUMMATH_H
#define QNUMMATH_H

#include <stdio.h>

#if defined(_WIN32)
#define QNUM_API __declspec(dllexport)
#elif defined(__GNUC__)
#define QNUM_API __attribute__((visibility("default")))
#else
#define QNUM_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------
 * Shared types
 * ------------------------------------------------------------------------------------------ */

/* Complex numbers: two consecutive reals, real part first. */
typedef struct qnum_f_complex { float re, im; } qnum_f_complex;
typedef struct qnum_d_complex { double re, im; } qnum_d_complex;

/* Error types. */
#define QNUM_NOTE 1
#define QNUM_ALERT 2
#define QNUM_WARNING 3
#define QNUM_FATAL 4
#define QNUM_TERMINAL 5
#define QNUM_WARNING_IMMEDIATE 6
#define QNUM_FATAL_IMMEDIATE 7
#define QNUM_INTERNAL 8

/* Option codes shared by many routines. */
#define QNUM_RETURN_USER 10260
#define QNUM_FCN_W_DATA 13101

/* A printer receives (type, code, routine name, message text). */
typedef void (*qnum_error_printer)(int type, int code, const char* routine, const char* message);
/* The notification callback receives (type, code, message text) of every reported error. */
typedef void (*qnum_error_callback)(int type, int code, const char* message);

/* ------------------------------------------------------------------------------------------
 * Error stack
 * ------------------------------------------------------------------------------------------ */

/* Enter a routine level named `name` (a constant string, not copied). Overflowing the
 * 200-entry stack raises INTERNAL 60000. */
QNUM_API void qnum_e1psh(const char* name);
/* Leave the level `name`: report its error if control returns to a user level, pass the
 * error up if it is at least as severe as the caller's, stop the process if the policy says
 * so. A name differing from the top's raises INTERNAL 60001. */
QNUM_API void qnum_e1pop(const char* name);
/* Raise error `code` of `type` with the catalogue's text for the code. */
QNUM_API void qnum_ermes(int type, int code);
/* Raise with an explicit message template. Type -1 re-reports (code -1) or recodes the top. */
QNUM_API void qnum_e1mes(int type, int code, const char* message_template);
/* Substitution slots 1..9 for %(i1) %(r1) %(d1) %(c1) %(z1) %(l1); other k are ignored.
 * qnum_e1stl takes |k|; strings are not copied. */
QNUM_API void qnum_e1sti(int k, int value);
QNUM_API void qnum_e1str(int k, float value);
QNUM_API void qnum_e1std(int k, double value);
QNUM_API void qnum_e1stc(int k, qnum_f_complex value);
QNUM_API void qnum_e1stz(int k, qnum_d_complex value);
QNUM_API void qnum_e1stl(int k, const char* value);
/* Level 0: type (code) raised at the current level; level 1: of the level popped last.
 * Any other level raises INTERNAL 122. */
QNUM_API int qnum_n1rty(int level);
QNUM_API int qnum_n1rcd(int level);
/* Code of the error of the last public routine called (0: none). */
QNUM_API int qnum_20305(void);
/* type < 0: read the print and stop flags of |type|; 1..8: set flags from positive values;
 * 0: set types 1..7 from values of 0 or more. A type outside -8..8 raises TERMINAL 132. */
QNUM_API void qnum_e1pos(int type, int* print, int* stop);
/* "ON" marks the current level as a user level (errors of deeper levels report on return to
 * it); "OFF" clears the mark. Only the second character is looked at. */
QNUM_API void qnum_e1usr(const char* on_off);
/* Process-wide callback that receives every reported error; set it before threads start. */
QNUM_API void qnum_set_at_checksum(qnum_error_callback callback);

/* qnum_error_options(option, values..., 0): error policy per thread.
 * Errors: TERMINAL 132 for a type outside 1..7, TERMINAL 103 for an unknown option. */
QNUM_API void qnum_error_options(int option, ...);

#define QNUM_SET_PRINT 10188           /* int type, int setting */
#define QNUM_GET_PRINT 10189           /* int type, int* */
#define QNUM_SET_STOP 10190            /* int type, int setting */
#define QNUM_GET_STOP 10191            /* int type, int* */
#define QNUM_GET_TRACEBACK 10192       /* int type, int* */
#define QNUM_SET_TRACEBACK 10193       /* int type, int setting */
#define QNUM_SET_ERROR_FILE 10194      /* FILE*: error output of this thread */
#define QNUM_ERROR_PRINT_PROC 10195    /* qnum_error_printer, or NULL for the stream printer */
#define QNUM_SET_ERROR_PATH 10196      /* const char*: catalogue search path of this thread */
/* The catalogue qnumerr.bin is looked for along the ';'-separated path of QNUM_SET_ERROR_PATH,
 * else of the environment variable QNUMERRPATH, each searched alone and exactly as written;
 * when neither is set, along ".;$LIB;/lib;c:/lib" and then the library's own folder. A
 * catalogue that is not found is announced once and every error keeps a generic text. */
#define QNUM_SET_ERROR_FILE_NAME 10197 /* const char*: catalogue file name */
#define QNUM_GET_ERROR_FILE 10210      /* FILE** */
#define QNUM_FULL_TRACEBACK 10301      /* int: nonzero lists every level */
#define QNUM_GET_ERROR_PRINTER 50000   /* int*: 50002 stream, 50003 message box, 50004 console */
#define QNUM_SET_ERROR_PRINTER 50001   /* int kind */
#define QNUM_SIGNAL_TRAPPING 50012     /* int: process-wide fault trapping on or off */

#define QNUM_PRINTER_STREAM 50002
#define QNUM_PRINTER_MESSAGE_BOX 50003
#define QNUM_PRINTER_CONSOLE 50004

/* ------------------------------------------------------------------------------------------
 * Public-routine frame
 * ------------------------------------------------------------------------------------------ */

/* Turn fault trapping off for the process. Multi-threaded programs call this (or
 * qnum_error_options(QNUM_SIGNAL_TRAPPING, 0, 0)) before a second thread calls the library.
 * With trapping on, a SIGSEGV or SIGILL inside a library routine becomes TERMINAL 511 or 504
 * followed by TERMINAL 102. The library installs its fault handler once, at the first
 * trapped call; a handler the program installed before that keeps receiving the faults
 * raised outside library calls. */
QNUM_API void qnum_skip_signal_handler(void);
/* Release a block that a routine allocated and handed to the caller. */
QNUM_API void qnum_free_allocated_memory(void* p);

/* ------------------------------------------------------------------------------------------
 * Machine constants and IEEE values
 * ------------------------------------------------------------------------------------------ */

/* 1 smallest normalised, 2 largest, 3 smallest relative spacing, 4 largest relative spacing
 * (epsilon), 5 log10(2), 6 quiet NaN, 7 +inf, 8 -inf. Other i: TERMINAL 12009, result 0. */
QNUM_API float qnum_amach(int i);
QNUM_API double qnum_dmach(int i);
/* The same tables in the public-routine frame; i outside 1..8 raises TERMINAL 132. */
QNUM_API float qnum_f_machine(int i);
QNUM_API double qnum_d_machine(int i);
/* Integer constants 0..12 (bases, digit counts, largest integers, exponent limits);
 * i outside 0..12 raises TERMINAL 132. */
QNUM_API int qnum_i_machine(int i);
/* Stream units of the calling thread: 1 input, 2 output, 3 error output.
 * n > 0: *p := unit n; n < 0: unit |n| := *p. |n| outside 1..3: TERMINAL 12010. */
QNUM_API void qnum_umach(int n, FILE** p);
/* 1 if x is a NaN (looking only at its bits), else 0. */
QNUM_API int qnum_ifnan(float x);
QNUM_API int qnum_difnan(double x);

/* ------------------------------------------------------------------------------------------
 * Version query
 * ------------------------------------------------------------------------------------------ */

#define QNUM_OS_VERSION 10272       /* from QNL_OS_VERSION */
#define QNUM_COMPILER_VERSION 10273 /* from QNL_COMPILER_VERSION */
#define QNUM_LIBRARY_VERSION 10274  /* "QNUM C/Math/Library Version " + QNL_VERSION */
#define QNUM_LICENSE_NUMBER 10308   /* from QNL_LICENSE_NUMBER */
/* Returns a new string (free with qnum_free_allocated_memory); another code raises TERMINAL
 * 103 and returns NULL. */
QNUM_API char* qnum_version(int code);
/* The instruction-set path the tuned routines take on this machine, chosen at run time:
 * "AVX-512", "AVX2" or "portable". A constant string; do not free it. */
QNUM_API const char* qnum_tuned_path(void);

/* ------------------------------------------------------------------------------------------
 * Vector, matrix-vector and matrix-matrix kernels
 * ------------------------------------------------------------------------------------------ */

/* Conventions of the kernels. Matrices are column-major with a leading dimension (lda, the
 * distance between the starts of two columns); band matrices keep their diagonals as rows of
 * an lda by n array (the highest super-diagonal on top), packed ones store one triangle column
 * after column. A vector is (n, x, incx): element i (1-based) is x[(i-1)*incx] for incx > 0;
 * for incx < 0 the walk starts at x[(1-n)*incx] and runs backwards. Complex values are two
 * reals, real part first. Only the first character of an option string counts, in either
 * case: trans "N" (none), "T" (transpose) or "C" (conjugate transpose); uplo "U" or "L";
 * diag "U" (unit) or "N". Where an option is followed by a length, the length is not used.
 *
 * Four calling conventions:
 *   1. lengths, increments, leading dimensions and real scalars by value;
 *   2. every argument by address, no options;
 *   3. every argument by address, each option string followed by its length (an int by value);
 *   4. options without lengths, the rest by address.
 *
 * The Level 1 kernels and the numbered helpers make no checks: a length below 1 returns at
 * once (0 for the functions). The Level 2 kernels check their arguments in the order listed
 * with each family; the first failure raises a TERMINAL error under the routine tag shown
 * (pushed, raised and popped), and nothing is written. Codes: 2033 m < 0 (i1 = m); 2014 n < 0
 * (i1 = n); 1020 lda < m or lda = 0 (i1 = lda, i2 = m); 2024 lda < n or lda = 0 (i1 = lda,
 * i2 = n); 1059 k < 0 (i1 = k); 1060 lda < k + 1 (i1 = lda, i2 = k); 2015 incx = 0 (i1);
 * 2016 incy = 0 (i1); 1019 bad trans, 2017 bad uplo, 2040 bad diag (l1 = the string).
 *
 * Products y := alpha op(A) x + beta y return at once when alpha = 0 and beta = 1 (y is left
 * bit for bit); beta = 0 assigns zeros to y, so NaNs in y do not survive. */

/* ---- Level 1, real: convention 1 ---- */

/* sum x(i) y(i); sdsdot adds sb and accumulates in double, dsdot returns the double sum. */
QNUM_API float qnum_sdot(int n, const float* x, int incx, const float* y, int incy);
QNUM_API double qnum_ddot(int n, const double* x, int incx, const double* y, int incy);
QNUM_API float qnum_sdsdot(int n, float sb, const float* x, int incx, const float* y, int incy);
QNUM_API double qnum_dsdot(int n, const float* x, int incx, const float* y, int incy);
/* y := a x + y (a = 0 leaves y untouched). qnum_20723 and qnum_20724 are the same code. */
QNUM_API void qnum_saxpy(int n, float a, const float* x, int incx, float* y, int incy);
QNUM_API void qnum_daxpy(int n, double a, const double* x, int incx, double* y, int incy);
/* x := a x; incx <= 0 returns. qnum_20729 and qnum_20730 are the same code. */
QNUM_API void qnum_sscal(int n, float a, float* x, int incx);
QNUM_API void qnum_dscal(int n, double a, double* x, int incx);
/* y := x */
QNUM_API void qnum_scopy(int n, const float* x, int incx, float* y, int incy);
QNUM_API void qnum_dcopy(int n, const double* x, int incx, double* y, int incy);
/* x <-> y. qnum_20735 and qnum_20736 are the same code. */
QNUM_API void qnum_sswap(int n, float* x, int incx, float* y, int incy);
QNUM_API void qnum_dswap(int n, double* x, int incx, double* y, int incy);
/* Plane rotation: x := c x + s y, y := c y - s x. */
QNUM_API void qnum_srot(int n, float* x, int incx, float* y, int incy, float c, float s);
QNUM_API void qnum_drot(int n, double* x, int incx, double* y, int incy, double c, double s);
/* Modified rotation; param = (flag, h11, h21, h12, h22), flag -2 the identity, -1 the full
 * H, 0 unit diagonal, 1 h12 = 1 and h21 = -1. */
QNUM_API void qnum_srotm(int n, float* x, int incx, float* y, int incy, const float* param);
QNUM_API void qnum_drotm(int n, double* x, int incx, double* y, int incy, const double* param);
/* Construct a rotation that zeroes b: a := r, b := z (the rotation coded in one number). */
QNUM_API void qnum_srotg(float* a, float* b, float* c, float* s);
QNUM_API void qnum_drotg(double* a, double* b, double* c, double* s);
/* Construct a modified rotation that zeroes the second component of (sqrt(d1) x1,
 * sqrt(d2) y1); d1, d2 and x1 are updated, param receives H. */
QNUM_API void qnum_srotmg(float* d1, float* d2, float* x1, const float* y1, float* param);
QNUM_API void qnum_drotmg(double* d1, double* d2, double* x1, const double* y1, double* param);
/* Euclidean norm, scaled so that no finite input overflows. */
QNUM_API float qnum_snrm2(int n, const float* x, int incx);
QNUM_API double qnum_dnrm2(int n, const double* x, int incx);
/* sum |x(i)|; incx <= 0 returns 0. */
QNUM_API float qnum_sasum(int n, const float* x, int incx);
QNUM_API double qnum_dasum(int n, const double* x, int incx);
/* 1-based index of the first largest |x(i)|; n < 1 or incx <= 0 returns 0. */
QNUM_API int qnum_isamax(int n, const float* x, int incx);
QNUM_API int qnum_idamax(int n, const double* x, int incx);

/* ---- Level 1, complex: convention 2 ---- */

QNUM_API void qnum_caxpy(const int* n, const qnum_f_complex* a, const qnum_f_complex* x, const int* incx,
                         qnum_f_complex* y, const int* incy);
QNUM_API void qnum_zaxpy(const int* n, const qnum_d_complex* a, const qnum_d_complex* x, const int* incx,
                         qnum_d_complex* y, const int* incy);
QNUM_API void qnum_ccopy(const int* n, const qnum_f_complex* x, const int* incx, qnum_f_complex* y,
                         const int* incy);
QNUM_API void qnum_zcopy(const int* n, const qnum_d_complex* x, const int* incx, qnum_d_complex* y,
                         const int* incy);
/* x := a x (incx <= 0 returns); csscal and zdscal with a real a. */
QNUM_API void qnum_cscal(const int* n, const qnum_f_complex* a, qnum_f_complex* x, const int* incx);
QNUM_API void qnum_zscal(const int* n, const qnum_d_complex* a, qnum_d_complex* x, const int* incx);
QNUM_API void qnum_csscal(const int* n, const float* a, qnum_f_complex* x, const int* incx);
QNUM_API void qnum_zdscal(const int* n, const double* a, qnum_d_complex* x, const int* incx);
QNUM_API void qnum_cswap(const int* n, qnum_f_complex* x, const int* incx, qnum_f_complex* y, const int* incy);
QNUM_API void qnum_zswap(const int* n, qnum_d_complex* x, const int* incx, qnum_d_complex* y, const int* incy);
/* Plane rotation of complex vectors with real c and s. */
QNUM_API void qnum_csrot(const int* n, qnum_f_complex* x, const int* incx, qnum_f_complex* y, const int* incy,
                         const float* c, const float* s);
QNUM_API void qnum_zdrot(const int* n, qnum_d_complex* x, const int* incx, qnum_d_complex* y, const int* incy,
                         const double* c, const double* s);
/* Construct a rotation with real c and complex s that zeroes b: a := r, b unchanged. */
QNUM_API void qnum_crotg(qnum_f_complex* a, const qnum_f_complex* b, float* c, qnum_f_complex* s);
QNUM_API void qnum_zrotg(qnum_d_complex* a, const qnum_d_complex* b, double* c, qnum_d_complex* s);
/* sum x(i) y(i) (dotu) and sum conj(x(i)) y(i) (dotc). */
QNUM_API qnum_f_complex qnum_cdotu(const int* n, const qnum_f_complex* x, const int* incx,
                                   const qnum_f_complex* y, const int* incy);
QNUM_API qnum_d_complex qnum_zdotu(const int* n, const qnum_d_complex* x, const int* incx,
                                   const qnum_d_complex* y, const int* incy);
QNUM_API qnum_f_complex qnum_cdotc(const int* n, const qnum_f_complex* x, const int* incx,
                                   const qnum_f_complex* y, const int* incy);
QNUM_API qnum_d_complex qnum_zdotc(const int* n, const qnum_d_complex* x, const int* incx,
                                   const qnum_d_complex* y, const int* incy);
/* Index of the first largest |Re x(i)| + |Im x(i)|; sum of those magnitudes (incx <= 0
 * returns 0); Euclidean norm. */
QNUM_API int qnum_icamax(const int* n, const qnum_f_complex* x, const int* incx);
QNUM_API int qnum_izamax(const int* n, const qnum_d_complex* x, const int* incx);
QNUM_API float qnum_scasum(const int* n, const qnum_f_complex* x, const int* incx);
QNUM_API double qnum_dzasum(const int* n, const qnum_d_complex* x, const int* incx);
QNUM_API float qnum_scnrm2(const int* n, const qnum_f_complex* x, const int* incx);
QNUM_API double qnum_dznrm2(const int* n, const qnum_d_complex* x, const int* incx);

/* ---- The library's own vector helpers ---- */

/* Fill x(i) := a over n elements at increment |incx| (incx = 0 writes nothing). */
QNUM_API void qnum_20731(int n, float a, float* x, int incx);
QNUM_API void qnum_20732(int n, double a, double* x, int incx);
QNUM_API void qnum_iset(int n, int a, int* x, int incx);
/* Add a constant: x(i) := x(i) + a over n elements at increment |incx|. */
QNUM_API void qnum_20721(int n, float a, float* x, int incx);
QNUM_API void qnum_20722(int n, double a, double* x, int incx);
/* Aliases: axpy (20723/20724), scal (20729/20730), swap (20735/20736). */
QNUM_API void qnum_20723(int n, float a, const float* x, int incx, float* y, int incy);
QNUM_API void qnum_20724(int n, double a, const double* x, int incx, double* y, int incy);
QNUM_API void qnum_20729(int n, float a, float* x, int incx);
QNUM_API void qnum_20730(int n, double a, double* x, int incx);
QNUM_API void qnum_20735(int n, float* x, int incx, float* y, int incy);
QNUM_API void qnum_20736(int n, double* x, int incx, double* y, int incy);
/* 1-based index of the first largest (20717/20718) or smallest (20719/20720) signed value;
 * n < 1 returns 0. */
QNUM_API int qnum_20717(int n, const float* x, int incx);
QNUM_API int qnum_20718(int n, const double* x, int incx);
QNUM_API int qnum_20719(int n, const float* x, int incx);
QNUM_API int qnum_20720(int n, const double* x, int incx);
/* Plain sum of the elements. */
QNUM_API float qnum_20733(int n, const float* x, int incx);
QNUM_API double qnum_20734(int n, const double* x, int incx);
/* y(i) := a x(i), x unchanged. */
QNUM_API void qnum_svcal(int n, float a, const float* x, int incx, float* y, int incy);
/* sum x(i) y(i) z(i), accumulated in the routine's precision; n < 1 returns 0. */
QNUM_API float qnum_sxyz(int n, const float* x, int incx, const float* y, int incy, const float* z, int incz);
QNUM_API double qnum_dxyz(int n, const double* x, int incx, const double* y, int incy, const double* z,
                          int incz);
/* Integer copy y := x. */
QNUM_API void qnum_icopy(int n, const int* x, int incx, int* y, int incy);
/* Convention 2. Fill x(i) := a (as the real fill); add a constant x(i) := x(i) + a, where
 * a = 0 leaves x untouched. */
QNUM_API void qnum_cset(const int* n, const qnum_f_complex* a, qnum_f_complex* x, const int* incx);
QNUM_API void qnum_zset(const int* n, const qnum_d_complex* a, qnum_d_complex* x, const int* incx);
QNUM_API void qnum_cadd(const int* n, const qnum_f_complex* a, qnum_f_complex* x, const int* incx);
QNUM_API void qnum_zadd(const int* n, const qnum_d_complex* a, qnum_d_complex* x, const int* incx);
/* Copy the n by n matrix a (lda) into b (ldb); b may widen a in place (ldb > lda, same
 * storage). Tags "qnum_ccgcg" and "qnum_dcgcg"; errors 604 n < 1 (i1 = n), 605 lda < n
 * (i1 = lda, i2 = n), 606 ldb < n (i1 = ldb, i2 = n). */
QNUM_API void qnum_ccgcg(const int* n, const qnum_f_complex* a, const int* lda, qnum_f_complex* b,
                         const int* ldb);
QNUM_API void qnum_dccgcg(const int* n, const qnum_d_complex* a, const int* lda, qnum_d_complex* b,
                          const int* ldb);
/* Copy an n by n band matrix with nlca sub- and nuca super-diagonals into band storage with
 * nlcb >= nlca and nucb >= nuca diagonals, zeroing the extra ones; b may widen a in place.
 * Tags "CCBCB " and "DCCBCB"; errors 14010 n < 1 (n), 14011 nlca < 0 (nlca), 14012 nuca < 0
 * (nuca), 14013 lda < nlca + nuca + 1 (lda, nlca, nuca), 14014 nlcb < nlca (nlcb, nlca),
 * 14015 nucb < nuca (nucb, nuca), 14016 ldb < nlcb + nucb + 1 (ldb, nlcb, nucb). */
QNUM_API void qnum_ccbcb(const int* n, const qnum_f_complex* a, const int* lda, const int* nlca,
                         const int* nuca, qnum_f_complex* b, const int* ldb, const int* nlcb, const int* nucb);
QNUM_API void qnum_dccbcb(const int* n, const qnum_d_complex* a, const int* lda, const int* nlca,
                          const int* nuca, qnum_d_complex* b, const int* ldb, const int* nlcb, const int* nucb);

/* ---- Level 2: general products, convention 3 ----
 * gemv checks m, n, lda (1020), incx, incy, trans; tags "SGEMV ", "DGEMV ", "CGEMV ", "ZGEMV ".
 * gbmv checks m, n, kl (5029: kl < 0, or kl > m-1 when m > 0; i1 = kl, i2 = m), ku (5030,
 * likewise with n), lda < kl+ku+1 (5031; lda, kl, ku), incx, incy, trans; tag "SGBMV " for
 * the float and double ones, "CGBMV " and "ZGBMV " for the complex ones. */
QNUM_API void qnum_sgemv(const char* trans, int trans_len, const int* m, const int* n, const float* alpha,
                         const float* a, const int* lda, const float* x, const int* incx, const float* beta,
                         float* y, const int* incy);
QNUM_API void qnum_dgemv(const char* trans, int trans_len, const int* m, const int* n, const double* alpha,
                         const double* a, const int* lda, const double* x, const int* incx, const double* beta,
                         double* y, const int* incy);
QNUM_API void qnum_cgemv(const char* trans, int trans_len, const int* m, const int* n,
                         const qnum_f_complex* alpha, const qnum_f_complex* a, const int* lda,
                         const qnum_f_complex* x, const int* incx, const qnum_f_complex* beta, qnum_f_complex* y,
                         const int* incy);
QNUM_API void qnum_zgemv(const char* trans, int trans_len, const int* m, const int* n,
                         const qnum_d_complex* alpha, const qnum_d_complex* a, const int* lda,
                         const qnum_d_complex* x, const int* incx, const qnum_d_complex* beta, qnum_d_complex* y,
                         const int* incy);
QNUM_API void qnum_sgbmv(const char* trans, int trans_len, const int* m, const int* n, const int* kl,
                         const int* ku, const float* alpha, const float* a, const int* lda, const float* x,
                         const int* incx, const float* beta, float* y, const int* incy);
QNUM_API void qnum_dsgbmv(const char* trans, int trans_len, const int* m, const int* n, const int* kl,
                          const int* ku, const double* alpha, const double* a, const int* lda, const double* x,
                          const int* incx, const double* beta, double* y, const int* incy);
QNUM_API void qnum_cgbmv(const char* trans, int trans_len, const int* m, const int* n, const int* kl,
                         const int* ku, const qnum_f_complex* alpha, const qnum_f_complex* a, const int* lda,
                         const qnum_f_complex* x, const int* incx, const qnum_f_complex* beta, qnum_f_complex* y,
                         const int* incy);
QNUM_API void qnum_zgbmv(const char* trans, int trans_len, const int* m, const int* n, const int* kl,
                         const int* ku, const qnum_d_complex* alpha, const qnum_d_complex* a, const int* lda,
                         const qnum_d_complex* x, const int* incx, const qnum_d_complex* beta, qnum_d_complex* y,
                         const int* incy);

/* ---- Level 2: symmetric and Hermitian products, convention 3 ----
 * symv/hemv check n, lda (2024), incx, incy, uplo; sbmv/hbmv check n, k (1059), lda (1060),
 * incx, incy, uplo; spmv/hpmv check n, incx, incy, uplo. Tags: "SSYMV ", "DSYMV ",
 * "qnum_chemv" (also qnum_20745), "qnum_zhemv" (qnum_20746); the others their own names
 * ("qnum_ssbmv", "qnum_dssbmv", "qnum_chbmv", ...). The Hermitian kernels take the diagonal as
 * real. */
QNUM_API void qnum_ssymv(const char* uplo, int uplo_len, const int* n, const float* alpha, const float* a,
                         const int* lda, const float* x, const int* incx, const float* beta, float* y,
                         const int* incy);
QNUM_API void qnum_dsymv(const char* uplo, int uplo_len, const int* n, const double* alpha, const double* a,
                         const int* lda, const double* x, const int* incx, const double* beta, double* y,
                         const int* incy);
QNUM_API void qnum_chemv(const char* uplo, int uplo_len, const int* n, const qnum_f_complex* alpha,
                         const qnum_f_complex* a, const int* lda, const qnum_f_complex* x, const int* incx,
                         const qnum_f_complex* beta, qnum_f_complex* y, const int* incy);
QNUM_API void qnum_zhemv(const char* uplo, int uplo_len, const int* n, const qnum_d_complex* alpha,
                         const qnum_d_complex* a, const int* lda, const qnum_d_complex* x, const int* incx,
                         const qnum_d_complex* beta, qnum_d_complex* y, const int* incy);
QNUM_API void qnum_20745(const char* uplo, int uplo_len, const int* n, const qnum_f_complex* alpha,
                         const qnum_f_complex* a, const int* lda, const qnum_f_complex* x, const int* incx,
                         const qnum_f_complex* beta, qnum_f_complex* y, const int* incy);
QNUM_API void qnum_20746(const char* uplo, int uplo_len, const int* n, const qnum_d_complex* alpha,
                         const qnum_d_complex* a, const int* lda, const qnum_d_complex* x, const int* incx,
                         const qnum_d_complex* beta, qnum_d_complex* y, const int* incy);
QNUM_API void qnum_ssbmv(const char* uplo, int uplo_len, const int* n, const int* k, const float* alpha,
                         const float* a, const int* lda, const float* x, const int* incx, const float* beta,
                         float* y, const int* incy);
QNUM_API void qnum_dssbmv(const char* uplo, int uplo_len, const int* n, const int* k, const double* alpha,
                          const double* a, const int* lda, const double* x, const int* incx, const double* beta,
                          double* y, const int* incy);
QNUM_API void qnum_chbmv(const char* uplo, int uplo_len, const int* n, const int* k, const qnum_f_complex* alpha,
                         const qnum_f_complex* a, const int* lda, const qnum_f_complex* x, const int* incx,
                         const qnum_f_complex* beta, qnum_f_complex* y, const int* incy);
QNUM_API void qnum_zhbmv(const char* uplo, int uplo_len, const int* n, const int* k, const qnum_d_complex* alpha,
                         const qnum_d_complex* a, const int* lda, const qnum_d_complex* x, const int* incx,
                         const qnum_d_complex* beta, qnum_d_complex* y, const int* incy);
QNUM_API void qnum_sspmv(const char* uplo, int uplo_len, const int* n, const float* alpha, const float* ap,
                         const float* x, const int* incx, const float* beta, float* y, const int* incy);
QNUM_API void qnum_dspmv(const char* uplo, int uplo_len, const int* n, const double* alpha, const double* ap,
                         const double* x, const int* incx, const double* beta, double* y, const int* incy);
QNUM_API void qnum_chpmv(const char* uplo, int uplo_len, const int* n, const qnum_f_complex* alpha,
                         const qnum_f_complex* ap, const qnum_f_complex* x, const int* incx,
                         const qnum_f_complex* beta, qnum_f_complex* y, const int* incy);
QNUM_API void qnum_zhpmv(const char* uplo, int uplo_len, const int* n, const qnum_d_complex* alpha,
                         const qnum_d_complex* ap, const qnum_d_complex* x, const int* incx,
                         const qnum_d_complex* beta, qnum_d_complex* y, const int* incy);

/* ---- Level 2: triangular products and solves ----
 * Convention 3 unless said otherwise. trmv/trsv check n, lda (2024), incx, uplo, trans, diag;
 * tbmv/tbsv check n, k (1059), lda (1060), incx, uplo, trans, diag; tpmv/tpsv check n, incx,
 * uplo, trans, diag. Tags: "qnum_ctrsv", "STBSV ", "DTBSV ", the routine's own name for the
 * others. The solves do not test for singularity.
 * qnum_strsv and qnum_dtrsv (convention 1, options without lengths) make no checks: n < 1,
 * incx = 0, lda < n or a bad option character returns without touching x.
 * qnum_stbsv and qnum_dtbsv use convention 4.
 * qnum_ctbsv and qnum_dctbsv (tag "CTBSV " for both) make every check and report each failure:
 * 14017 n < 0 (n), 14018 k < 0 when n >= 1 (k), 14019 lda < k + 1 (lda, k), 14020 incx = 0
 * (incx), 14021 bad trans, 14022 bad uplo, 14023 bad diag (the string). */
QNUM_API void qnum_strmv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const float* a, const int* lda, float* x, const int* incx);
QNUM_API void qnum_dtrmv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const double* a, const int* lda, double* x, const int* incx);
QNUM_API void qnum_ctrmv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const qnum_f_complex* a, const int* lda, qnum_f_complex* x,
                         const int* incx);
QNUM_API void qnum_ztrmv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const qnum_d_complex* a, const int* lda, qnum_d_complex* x,
                         const int* incx);
QNUM_API void qnum_stbmv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const int* k, const float* a, const int* lda, float* x,
                         const int* incx);
QNUM_API void qnum_dtbmv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const int* k, const double* a, const int* lda, double* x,
                         const int* incx);
QNUM_API void qnum_ctbmv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const int* k, const qnum_f_complex* a, const int* lda,
                         qnum_f_complex* x, const int* incx);
QNUM_API void qnum_ztbmv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const int* k, const qnum_d_complex* a, const int* lda,
                         qnum_d_complex* x, const int* incx);
QNUM_API void qnum_stpmv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const float* ap, float* x, const int* incx);
QNUM_API void qnum_dtpmv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const double* ap, double* x, const int* incx);
QNUM_API void qnum_ctpmv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const qnum_f_complex* ap, qnum_f_complex* x, const int* incx);
QNUM_API void qnum_ztpmv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const qnum_d_complex* ap, qnum_d_complex* x, const int* incx);
QNUM_API void qnum_strsv(const char* uplo, const char* trans, const char* diag, int n, const float* a, int lda,
                         float* x, int incx);
QNUM_API void qnum_dtrsv(const char* uplo, const char* trans, const char* diag, int n, const double* a, int lda,
                         double* x, int incx);
QNUM_API void qnum_ctrsv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const qnum_f_complex* a, const int* lda, qnum_f_complex* x,
                         const int* incx);
QNUM_API void qnum_ztrsv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const qnum_d_complex* a, const int* lda, qnum_d_complex* x,
                         const int* incx);
QNUM_API void qnum_stbsv(const char* uplo, const char* trans, const char* diag, const int* n, const int* k,
                         const float* a, const int* lda, float* x, const int* incx);
QNUM_API void qnum_dtbsv(const char* uplo, const char* trans, const char* diag, const int* n, const int* k,
                         const double* a, const int* lda, double* x, const int* incx);
QNUM_API void qnum_ctbsv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const int* k, const qnum_f_complex* a, const int* lda,
                         qnum_f_complex* x, const int* incx);
QNUM_API void qnum_dctbsv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                          int diag_len, const int* n, const int* k, const qnum_d_complex* a, const int* lda,
                          qnum_d_complex* x, const int* incx);
QNUM_API void qnum_stpsv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const float* ap, float* x, const int* incx);
QNUM_API void qnum_dtpsv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const double* ap, double* x, const int* incx);
QNUM_API void qnum_ctpsv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const qnum_f_complex* ap, qnum_f_complex* x, const int* incx);
QNUM_API void qnum_ztpsv(const char* uplo, int uplo_len, const char* trans, int trans_len, const char* diag,
                         int diag_len, const int* n, const qnum_d_complex* ap, qnum_d_complex* x, const int* incx);

/* ---- Level 2: rank updates ----
 * ger: A := alpha x y^T + A (sger, dger: convention 1); geru and gerc (y conjugated):
 * convention 2. They check m, n, lda (1020), incx, incy. Tags: "qnum_sger", "qnum_dger",
 * "qnum_cgeru", "qnum_zgeru", "CGERC ", "ZGERC ".
 * syr/her (A := alpha x x^H + A, alpha real) check n, lda (2024), incx, uplo; spr/hpr check n,
 * incx, uplo; syr2/her2 (A := alpha x y^H + conj(alpha) y x^H + A) check n, lda, incx, incy,
 * uplo; spr2/hpr2 check n, incx, incy, uplo. Convention 3; tags: the routine's own name
 * ("qnum_ssyr" also for qnum_20737, "qnum_cher" for 20747, "qnum_cher2" for 20749, ...). The
 * Hermitian updates leave the diagonal real. */
QNUM_API void qnum_sger(int m, int n, float alpha, const float* x, int incx, const float* y, int incy, float* a,
                        int lda);
QNUM_API void qnum_dger(int m, int n, double alpha, const double* x, int incx, const double* y, int incy,
                        double* a, int lda);
QNUM_API void qnum_cgeru(const int* m, const int* n, const qnum_f_complex* alpha, const qnum_f_complex* x,
                         const int* incx, const qnum_f_complex* y, const int* incy, qnum_f_complex* a,
                         const int* lda);
QNUM_API void qnum_zgeru(const int* m, const int* n, const qnum_d_complex* alpha, const qnum_d_complex* x,
                         const int* incx, const qnum_d_complex* y, const int* incy, qnum_d_complex* a,
                         const int* lda);
QNUM_API void qnum_cgerc(const int* m, const int* n, const qnum_f_complex* alpha, const qnum_f_complex* x,
                         const int* incx, const qnum_f_complex* y, const int* incy, qnum_f_complex* a,
                         const int* lda);
QNUM_API void qnum_zgerc(const int* m, const int* n, const qnum_d_complex* alpha, const qnum_d_complex* x,
                         const int* incx, const qnum_d_complex* y, const int* incy, qnum_d_complex* a,
                         const int* lda);
QNUM_API void qnum_ssyr(const char* uplo, int uplo_len, const int* n, const float* alpha, const float* x,
                        const int* incx, float* a, const int* lda);
QNUM_API void qnum_dsyr(const char* uplo, int uplo_len, const int* n, const double* alpha, const double* x,
                        const int* incx, double* a, const int* lda);
QNUM_API void qnum_20737(const char* uplo, int uplo_len, const int* n, const float* alpha, const float* x,
                         const int* incx, float* a, const int* lda);
QNUM_API void qnum_20738(const char* uplo, int uplo_len, const int* n, const double* alpha, const double* x,
                         const int* incx, double* a, const int* lda);
QNUM_API void qnum_cher(const char* uplo, int uplo_len, const int* n, const float* alpha, const qnum_f_complex* x,
                        const int* incx, qnum_f_complex* a, const int* lda);
QNUM_API void qnum_zher(const char* uplo, int uplo_len, const int* n, const double* alpha, const qnum_d_complex* x,
                        const int* incx, qnum_d_complex* a, const int* lda);
QNUM_API void qnum_20747(const char* uplo, int uplo_len, const int* n, const float* alpha, const qnum_f_complex* x,
                         const int* incx, qnum_f_complex* a, const int* lda);
QNUM_API void qnum_20748(const char* uplo, int uplo_len, const int* n, const double* alpha,
                         const qnum_d_complex* x, const int* incx, qnum_d_complex* a, const int* lda);
QNUM_API void qnum_sspr(const char* uplo, int uplo_len, const int* n, const float* alpha, const float* x,
                        const int* incx, float* ap);
QNUM_API void qnum_dspr(const char* uplo, int uplo_len, const int* n, const double* alpha, const double* x,
                        const int* incx, double* ap);
QNUM_API void qnum_chpr(const char* uplo, int uplo_len, const int* n, const float* alpha, const qnum_f_complex* x,
                        const int* incx, qnum_f_complex* ap);
QNUM_API void qnum_zhpr(const char* uplo, int uplo_len, const int* n, const double* alpha, const qnum_d_complex* x,
                        const int* incx, qnum_d_complex* ap);
QNUM_API void qnum_ssyr2(const char* uplo, int uplo_len, const int* n, const float* alpha, const float* x,
                         const int* incx, const float* y, const int* incy, float* a, const int* lda);
QNUM_API void qnum_dsyr2(const char* uplo, int uplo_len, const int* n, const double* alpha, const double* x,
                         const int* incx, const double* y, const int* incy, double* a, const int* lda);
QNUM_API void qnum_cher2(const char* uplo, int uplo_len, const int* n, const qnum_f_complex* alpha,
                         const qnum_f_complex* x, const int* incx, const qnum_f_complex* y, const int* incy,
                         qnum_f_complex* a, const int* lda);
QNUM_API void qnum_zher2(const char* uplo, int uplo_len, const int* n, const qnum_d_complex* alpha,
                         const qnum_d_complex* x, const int* incx, const qnum_d_complex* y, const int* incy,
                         qnum_d_complex* a, const int* lda);
QNUM_API void qnum_20749(const char* uplo, int uplo_len, const int* n, const qnum_f_complex* alpha,
                         const qnum_f_complex* x, const int* incx, const qnum_f_complex* y, const int* incy,
                         qnum_f_complex* a, const int* lda);
QNUM_API void qnum_20750(const char* uplo, int uplo_len, const int* n, const qnum_d_complex* alpha,
                         const qnum_d_complex* x, const int* incx, const qnum_d_complex* y, const int* incy,
                         qnum_d_complex* a, const int* lda);
QNUM_API void qnum_sspr2(const char* uplo, int uplo_len, const int* n, const float* alpha, const float* x,
                         const int* incx, const float* y, const int* incy, float* ap);
QNUM_API void qnum_dspr2(const char* uplo, int uplo_len, const int* n, const double* alpha, const double* x,
                         const int* incx, const double* y, const int* incy, double* ap);
QNUM_API void qnum_chpr2(const char* uplo, int uplo_len, const int* n, const qnum_f_complex* alpha,
                         const qnum_f_complex* x, const int* incx, const qnum_f_complex* y, const int* incy,
                         qnum_f_complex* ap);
QNUM_API void qnum_zhpr2(const char* uplo, int uplo_len, const int* n, const qnum_d_complex* alpha,
                         const qnum_d_complex* x, const int* incx, const qnum_d_complex* y, const int* incy,
                         qnum_d_complex* ap);

/* ------------------------------------------------------------------------------------------
 * Matrix-matrix kernels (convention 3: every argument by address, each option string
 * followed by its length passed by value)
 * ------------------------------------------------------------------------------------------ */

/* All matrices are column-major with a leading dimension; every scalar and size is passed by
 * address, and each option string is followed by its length (an int, by value, not used).
 * Only the first character of an option counts, in either case: TRANS (TRANSA, TRANSB) N, T or
 * C (conjugate transpose); UPLO U or L (the triangle that is referenced); SIDE L or R (the
 * symmetric or triangular matrix multiplies from the left or right); DIAG U (unit diagonal,
 * not read) or N. The results are those of the published BLAS definitions. beta = 0 assigns
 * C, so a NaN in C does not survive; alpha = 0 with beta = 1 leaves C as it was, bit for bit.
 * Arrays must not overlap the output. The kernels are re-entrant: many threads may call them
 * at once (with signal trapping off, as for every routine).
 *
 * Errors (TERMINAL, raised under the kernel's name, nothing written), checked in this order,
 * the first failure only: 2033 M < 0; 2014 N < 0; 14101 K < 0; 14100 SIDE not L or R; 2017
 * UPLO not U or L; 1019 TRANS not N, T or C (14105: not N or T for csyrk, zsyrk, csyr2k,
 * zsyr2k; 14106: not N or C for cherk, zherk, cher2k, zher2k); 2040 DIAG not U or N; 14102,
 * 14103, 14104 LDA, LDB, LDC below the number of rows of the array (i1 = the leading
 * dimension, i2 = the rows) or below 1. TERMINAL 201 if the packing workspace cannot be
 * allocated. */

/* C = alpha op(A) op(B) + beta C; C m by n, op(A) m by k, op(B) k by n. */
QNUM_API void qnum_sgemm(const char* transa, int transa_len, const char* transb, int transb_len,
                         const int* m, const int* n, const int* k, const float* alpha,
                         const float* a, const int* lda, const float* b, const int* ldb,
                         const float* beta, float* c, const int* ldc);
QNUM_API void qnum_dgemm(const char* transa, int transa_len, const char* transb, int transb_len,
                         const int* m, const int* n, const int* k, const double* alpha,
                         const double* a, const int* lda, const double* b, const int* ldb,
                         const double* beta, double* c, const int* ldc);
QNUM_API void qnum_cgemm(const char* transa, int transa_len, const char* transb, int transb_len,
                         const int* m, const int* n, const int* k, const qnum_f_complex* alpha,
                         const qnum_f_complex* a, const int* lda, const qnum_f_complex* b,
                         const int* ldb, const qnum_f_complex* beta, qnum_f_complex* c,
                         const int* ldc);
QNUM_API void qnum_zgemm(const char* transa, int transa_len, const char* transb, int transb_len,
                         const int* m, const int* n, const int* k, const qnum_d_complex* alpha,
                         const qnum_d_complex* a, const int* lda, const qnum_d_complex* b,
                         const int* ldb, const qnum_d_complex* beta, qnum_d_complex* c,
                         const int* ldc);

/* C = alpha A B + beta C (SIDE L, A m by m) or alpha B A + beta C (SIDE R, A n by n); A
 * symmetric (hemm: Hermitian, the imaginary parts of its diagonal taken as zero), only its
 * UPLO triangle read. */
QNUM_API void qnum_ssymm(const char* side, int side_len, const char* uplo, int uplo_len,
                         const int* m, const int* n, const float* alpha, const float* a,
                         const int* lda, const float* b, const int* ldb, const float* beta,
                         float* c, const int* ldc);
QNUM_API void qnum_dsymm(const char* side, int side_len, const char* uplo, int uplo_len,
                         const int* m, const int* n, const double* alpha, const double* a,
                         const int* lda, const double* b, const int* ldb, const double* beta,
                         double* c, const int* ldc);
QNUM_API void qnum_csymm(const char* side, int side_len, const char* uplo, int uplo_len,
                         const int* m, const int* n, const qnum_f_complex* alpha,
                         const qnum_f_complex* a, const int* lda, const qnum_f_complex* b,
                         const int* ldb, const qnum_f_complex* beta, qnum_f_complex* c,
                         const int* ldc);
QNUM_API void qnum_zsymm(const char* side, int side_len, const char* uplo, int uplo_len,
                         const int* m, const int* n, const qnum_d_complex* alpha,
                         const qnum_d_complex* a, const int* lda, const qnum_d_complex* b,
                         const int* ldb, const qnum_d_complex* beta, qnum_d_complex* c,
                         const int* ldc);
QNUM_API void qnum_chemm(const char* side, int side_len, const char* uplo, int uplo_len,
                         const int* m, const int* n, const qnum_f_complex* alpha,
                         const qnum_f_complex* a, const int* lda, const qnum_f_complex* b,
                         const int* ldb, const qnum_f_complex* beta, qnum_f_complex* c,
                         const int* ldc);
QNUM_API void qnum_zhemm(const char* side, int side_len, const char* uplo, int uplo_len,
                         const int* m, const int* n, const qnum_d_complex* alpha,
                         const qnum_d_complex* a, const int* lda, const qnum_d_complex* b,
                         const int* ldb, const qnum_d_complex* beta, qnum_d_complex* c,
                         const int* ldc);

/* The UPLO triangle of the n by n C = alpha A A^T + beta C (TRANS N, A n by k) or
 * alpha A^T A + beta C (TRANS T, A k by n). herk: A^H for A^T, TRANS N or C, real alpha and
 * beta, and the diagonal of C comes out real. */
QNUM_API void qnum_ssyrk(const char* uplo, int uplo_len, const char* trans, int trans_len,
                         const int* n, const int* k, const float* alpha, const float* a,
                         const int* lda, const float* beta, float* c, const int* ldc);
QNUM_API void qnum_dsyrk(const char* uplo, int uplo_len, const char* trans, int trans_len,
                         const int* n, const int* k, const double* alpha, const double* a,
                         const int* lda, const double* beta, double* c, const int* ldc);
QNUM_API void qnum_csyrk(const char* uplo, int uplo_len, const char* trans, int trans_len,
                         const int* n, const int* k, const qnum_f_complex* alpha,
                         const qnum_f_complex* a, const int* lda, const qnum_f_complex* beta,
                         qnum_f_complex* c, const int* ldc);
QNUM_API void qnum_zsyrk(const char* uplo, int uplo_len, const char* trans, int trans_len,
                         const int* n, const int* k, const qnum_d_complex* alpha,
                         const qnum_d_complex* a, const int* lda, const qnum_d_complex* beta,
                         qnum_d_complex* c, const int* ldc);
QNUM_API void qnum_cherk(const char* uplo, int uplo_len, const char* trans, int trans_len,
                         const int* n, const int* k, const float* alpha, const qnum_f_complex* a,
                         const int* lda, const float* beta, qnum_f_complex* c, const int* ldc);
QNUM_API void qnum_zherk(const char* uplo, int uplo_len, const char* trans, int trans_len,
                         const int* n, const int* k, const double* alpha, const qnum_d_complex* a,
                         const int* lda, const double* beta, qnum_d_complex* c, const int* ldc);

/* The UPLO triangle of C = alpha A B^T + alpha B A^T + beta C (TRANS N; A, B n by k) or
 * alpha A^T B + alpha B^T A + beta C (TRANS T; A, B k by n). her2k: alpha A B^H +
 * conj(alpha) B A^H + beta C (TRANS N) or alpha A^H B + conj(alpha) B^H A + beta C (TRANS C),
 * real beta, real diagonal. */
QNUM_API void qnum_ssyr2k(const char* uplo, int uplo_len, const char* trans, int trans_len,
                          const int* n, const int* k, const float* alpha, const float* a,
                          const int* lda, const float* b, const int* ldb, const float* beta,
                          float* c, const int* ldc);
QNUM_API void qnum_dsyr2k(const char* uplo, int uplo_len, const char* trans, int trans_len,
                          const int* n, const int* k, const double* alpha, const double* a,
                          const int* lda, const double* b, const int* ldb, const double* beta,
                          double* c, const int* ldc);
QNUM_API void qnum_csyr2k(const char* uplo, int uplo_len, const char* trans, int trans_len,
                          const int* n, const int* k, const qnum_f_complex* alpha,
                          const qnum_f_complex* a, const int* lda, const qnum_f_complex* b,
                          const int* ldb, const qnum_f_complex* beta, qnum_f_complex* c,
                          const int* ldc);
QNUM_API void qnum_zsyr2k(const char* uplo, int uplo_len, const char* trans, int trans_len,
                          const int* n, const int* k, const qnum_d_complex* alpha,
                          const qnum_d_complex* a, const int* lda, const qnum_d_complex* b,
                          const int* ldb, const qnum_d_complex* beta, qnum_d_complex* c,
                          const int* ldc);
QNUM_API void qnum_cher2k(const char* uplo, int uplo_len, const char* trans, int trans_len,
                          const int* n, const int* k, const qnum_f_complex* alpha,
                          const qnum_f_complex* a, const int* lda, const qnum_f_complex* b,
                          const int* ldb, const float* beta, qnum_f_complex* c, const int* ldc);
QNUM_API void qnum_zher2k(const char* uplo, int uplo_len, const char* trans, int trans_len,
                          const int* n, const int* k, const qnum_d_complex* alpha,
                          const qnum_d_complex* a, const int* lda, const qnum_d_complex* b,
                          const int* ldb, const double* beta, qnum_d_complex* c, const int* ldc);

/* trmm: B = alpha op(A) B (SIDE L, A m by m) or alpha B op(A) (SIDE R, A n by n), A
 * triangular, B m by n. trsm: solves op(A) X = alpha B (SIDE L) or X op(A) = alpha B (SIDE R)
 * and overwrites B with X; a zero on a non-unit diagonal is not tested for and gives
 * infinities or NaNs. alpha = 0 sets B to zero without reading A. */
QNUM_API void qnum_strmm(const char* side, int side_len, const char* uplo, int uplo_len,
                         const char* transa, int transa_len, const char* diag, int diag_len,
                         const int* m, const int* n, const float* alpha, const float* a,
                         const int* lda, float* b, const int* ldb);
QNUM_API void qnum_dtrmm(const char* side, int side_len, const char* uplo, int uplo_len,
                         const char* transa, int transa_len, const char* diag, int diag_len,
                         const int* m, const int* n, const double* alpha, const double* a,
                         const int* lda, double* b, const int* ldb);
QNUM_API void qnum_ctrmm(const char* side, int side_len, const char* uplo, int uplo_len,
                         const char* transa, int transa_len, const char* diag, int diag_len,
                         const int* m, const int* n, const qnum_f_complex* alpha,
                         const qnum_f_complex* a, const int* lda, qnum_f_complex* b,
                         const int* ldb);
QNUM_API void qnum_ztrmm(const char* side, int side_len, const char* uplo, int uplo_len,
                         const char* transa, int transa_len, const char* diag, int diag_len,
                         const int* m, const int* n, const qnum_d_complex* alpha,
                         const qnum_d_complex* a, const int* lda, qnum_d_complex* b,
                         const int* ldb);
QNUM_API void qnum_strsm(const char* side, int side_len, const char* uplo, int uplo_len,
                         const char* transa, int transa_len, const char* diag, int diag_len,
                         const int* m, const int* n, const float* alpha, const float* a,
                         const int* lda, float* b, const int* ldb);
QNUM_API void qnum_dtrsm(const char* side, int side_len, const char* uplo, int uplo_len,
                         const char* transa, int transa_len, const char* diag, int diag_len,
                         const int* m, const int* n, const double* alpha, const double* a,
                         const int* lda, double* b, const int* ldb);
QNUM_API void qnum_ctrsm(const char* side, int side_len, const char* uplo, int uplo_len,
                         const char* transa, int transa_len, const char* diag, int diag_len,
                         const int* m, const int* n, const qnum_f_complex* alpha,
                         const qnum_f_complex* a, const int* lda, qnum_f_complex* b,
                         const int* ldb);
QNUM_API void qnum_ztrsm(const char* side, int side_len, const char* uplo, int uplo_len,
                         const char* transa, int transa_len, const char* diag, int diag_len,
                         const int* m, const int* n, const qnum_d_complex* alpha,
                         const qnum_d_complex* a, const int* lda, qnum_d_complex* b,
                         const int* ldb);

/* Numbered Level 3 kernels: qnum_20725 is qnum_sgemm and qnum_20726 qnum_dgemm; qnum_20743
 * is qnum_strsm and qnum_20744 qnum_dtrsm (same arguments, same errors, reported under the
 * names qnum_sgemm, qnum_dgemm, qnum_strsm, qnum_dtrsm). */
QNUM_API void qnum_20725(const char* transa, int transa_len, const char* transb, int transb_len,
                         const int* m, const int* n, const int* k, const float* alpha,
                         const float* a, const int* lda, const float* b, const int* ldb,
                         const float* beta, float* c, const int* ldc);
QNUM_API void qnum_20726(const char* transa, int transa_len, const char* transb, int transb_len,
                         const int* m, const int* n, const int* k, const double* alpha,
                         const double* a, const int* lda, const double* b, const int* ldb,
                         const double* beta, double* c, const int* ldc);
QNUM_API void qnum_20743(const char* side, int side_len, const char* uplo, int uplo_len,
                         const char* transa, int transa_len, const char* diag, int diag_len,
                         const int* m, const int* n, const float* alpha, const float* a,
                         const int* lda, float* b, const int* ldb);
QNUM_API void qnum_20744(const char* side, int side_len, const char* uplo, int uplo_len,
                         const char* transa, int transa_len, const char* diag, int diag_len,
                         const int* m, const int* n, const double* alpha, const double* a,
                         const int* lda, double* b, const int* ldb);

/* ------------------------------------------------------------------------------------------
 * Uniform random numbers
 * ------------------------------------------------------------------------------------------ */

/* Every thread draws from a stream of its own: a multiplicative congruential generator
 * s := (a * s) mod (2^31 - 1), a deviate being s times a float just below 2^-31, which keeps
 * it strictly inside (0, 1). The shuffled generators also hand out the entries of their
 * table, which they build as s / (2^31 - 1); in float that rounds to 1 for the 63 seeds
 * nearest the modulus. The same seed set in two threads gives the same sequence in both. A
 * stream that no one seeded takes a seed from the clock (UTC hour, minute and second) on its
 * first draw. */

/* Selects the generator of the calling thread's stream: 1 and 2 multiply by 16807, 3 and 4
 * by 397204094, 5 and 6 by 950706376; the even options shuffle the output through a table of
 * 128 deviates. The default is 1. The seed and a shuffle table already built stay as they
 * are. Errors: TERMINAL 132 for an option outside 1..6 ("generator_option"), the stream
 * unchanged. */
QNUM_API void qnum_random_option(int generator_option);
/* 1 <= seed <= 2147483646 fixes the seed of the calling thread's stream. 0 takes a new seed
 * from the clock, without counting the stream as seeded (its first draw still takes a clock
 * seed of its own). Any other value is not an error: it seeds an unseeded stream from the
 * clock and leaves a seeded one as it is. */
QNUM_API void qnum_random_seed_set(int seed);
/* The current seed of the calling thread's stream; a stream not yet seeded is seeded from
 * the clock first, so the value returned is the one the next draw continues from. */
QNUM_API int qnum_random_seed_get(void);
/* Installs a shuffle table of 128 entries for the shuffled generators (options 2, 4, 6).
 * table[0] <= 0 drops the installed table instead: the generator builds its own on the next
 * shuffled draw. Each entry must satisfy 0 < v <= 1; a bad one raises TERMINAL 11031 (value
 * and 1-based position) and the entry keeps its previous value (0 in a table never built).
 * qnum_rnses sets the table of the float routines, qnum_drnses that of the double ones.
 * Errors: TERMINAL 150 for a null table. */
QNUM_API void qnum_rnses(const float table[]);
QNUM_API void qnum_drnses(const double table[]);
/* qnum_f_random_uniform(n, options..., 0): n uniform deviates in (0, 1), in a new array (free
 * it with qnum_free_allocated_memory) or in the caller's.
 * Options: QNUM_RETURN_USER, float* r: the deviates are written to r, which is returned.
 * Errors: TERMINAL 132 for n < 1 ("n_random"), TERMINAL 11001 for an unknown option (code
 * and position), TERMINAL 104 for a null r, TERMINAL 201 or 200 when memory runs out; on an
 * error the routine frees what it allocated and returns NULL. */
QNUM_API float* qnum_f_random_uniform(int n, ...);
QNUM_API double* qnum_d_random_uniform(int n, ...);
/* Fills r[0..n-1] with uniform deviates from the same stream.
 * Errors: TERMINAL 132 for n < 1 ("n"), TERMINAL 150 for a null r, TERMINAL 200 when memory
 * runs out. */
QNUM_API void qnum_rnun(int n, float r[]);
QNUM_API void qnum_drnun(int n, double r[]);

/* ------------------------------------------------------------------------------------------
 * Dense linear systems
 * ------------------------------------------------------------------------------------------ */

/* Option codes of the dense solvers. */
#define QNUM_TRANSPOSE 10001
#define QNUM_A_COL_DIM 10003
#define QNUM_FACTOR 10004
#define QNUM_FAC_COL_DIM 10005
#define QNUM_FACTOR_ONLY 10006
#define QNUM_SOLVE_ONLY 10007
#define QNUM_TOLERANCE 10053
#define QNUM_FACTOR_USER 10151
#define QNUM_INVERSE 10152
#define QNUM_INVERSE_USER 10153
#define QNUM_INV_COL_DIM 10154
#define QNUM_INVERSE_ONLY 10155
#define QNUM_CONDITION 10270

/* qnum_f_lin_sol_gen(n, a, b, options..., 0): the solution x of A x = b for a general n by n
 * A (row-major, rows a_col_dim apart), by LU factorization with scaled partial pivoting, in a
 * new array (free it with qnum_free_allocated_memory) or the caller's. a and b hold on return
 * exactly what they held on entry (unless a is also the factor array).
 * Options:
 *   QNUM_TRANSPOSE                      solve A^T x = b; for the complex solvers the conjugate
 *                                       transpose, A^H x = b.
 *   QNUM_A_COL_DIM, int                 column dimension of a (default n).
 *   QNUM_FACTOR, int** p_pvt, T** p_fac the LU factorization in new arrays: n pivots and n rows
 *                                       of fac_col_dim elements (columns beyond n are 0).
 *   QNUM_FACTOR_USER, int* pvt, T* fac  the same in the caller's arrays (fac may be a: the
 *                                       factorization then overwrites a, and the larger of the
 *                                       two column dimensions spaces its rows). With
 *                                       QNUM_SOLVE_ONLY they are the input factorization.
 *   QNUM_FAC_COL_DIM, int               column dimension of the factor (default n).
 *   QNUM_FACTOR_ONLY                    factor only (needs a factor option); b may be NULL.
 *   QNUM_SOLVE_ONLY                     solve with the factorization of QNUM_FACTOR_USER; a may
 *                                       be NULL. An inverse option may be added.
 *   QNUM_INVERSE, T** p_inva            the inverse in a new n by inv_col_dim array.
 *   QNUM_INVERSE_USER, T* inva          the inverse in the caller's array.
 *   QNUM_INV_COL_DIM, int               column dimension of the inverse (default n).
 *   QNUM_INVERSE_ONLY                   compute the inverse only (needs an inverse option).
 *   QNUM_RETURN_USER, T* x              the solution in the caller's array (also returned).
 *   QNUM_CONDITION, real* cond          an estimate of the L1 condition number of A; +infinity
 *                                       for a singular A (stored even when the call then ends
 *                                       with FATAL 1004).
 * Factor format (row-major, as handed back): the upper triangle is U; below the diagonal,
 * column k holds the negated multipliers of step k as they were when column k was
 * eliminated; pvt[k] (1-based) is the row swapped with row k at step k, pvt[n-1] = n. Caller
 * arrays keep their padding columns; new ones have them zeroed. New results are set to NULL
 * first and are handed back only when the call succeeds.
 * Errors: TERMINAL 103 unknown option (code, position); 104 null pointer ("ipvt"/QNUM_FACTOR
 * for the pivot array, "x", "cond", "inva"); 105 null factor array ("factor"/QNUM_FACTOR);
 * 150 null a or b; 1010 n < 1; 1014 a column dimension below n ("a", "factor", "inva");
 * 1091 more than one *_ONLY option; 1027 QNUM_SOLVE_ONLY without QNUM_FACTOR_USER; 1038
 * QNUM_SOLVE_ONLY with QNUM_CONDITION; 1039 QNUM_INVERSE_ONLY without an inverse option;
 * 1040 QNUM_FACTOR_ONLY without a factor option; 1034 a caller's pivot entry out of range;
 * 201 out of memory ("n", n). FATAL 1004 singular matrix (NULL returned; a caller's factor
 * arrays still hold the complete factorization). WARNING 1003 ill-conditioned (rcond), the
 * solution is returned. */
QNUM_API float* qnum_f_lin_sol_gen(int n, float a[], float b[], ...);
QNUM_API double* qnum_d_lin_sol_gen(int n, double a[], double b[], ...);
QNUM_API qnum_f_complex* qnum_c_lin_sol_gen(int n, qnum_f_complex a[], qnum_f_complex b[], ...);
QNUM_API qnum_d_complex* qnum_z_lin_sol_gen(int n, qnum_d_complex a[], qnum_d_complex b[], ...);
/* Numbered exports: qnum_20000 is qnum_f_lin_sol_gen, qnum_20001 is qnum_d_lin_sol_gen. */
QNUM_API float* qnum_20000(int n, float a[], float b[], ...);
QNUM_API double* qnum_20001(int n, double a[], double b[], ...);

/* qnum_f_lin_sol_posdef(n, a, b, options..., 0): the solution of A x = b for a symmetric
 * (complex: Hermitian) positive definite A by Cholesky factorization. Only the upper triangle
 * of a (a[i*a_col_dim + j], j >= i) is read; the imaginary parts of its diagonal are ignored.
 * The factor is the upper triangular R with A = R^T R (complex: A = R^H R); the strictly lower
 * triangle of a factor array other than a is set to zero.
 * Options: QNUM_A_COL_DIM, QNUM_FACTOR (T** p_factor), QNUM_FACTOR_USER (T* factor; may be a),
 * QNUM_FAC_COL_DIM, QNUM_FACTOR_ONLY, QNUM_SOLVE_ONLY, QNUM_INVERSE, QNUM_INVERSE_USER,
 * QNUM_INV_COL_DIM, QNUM_INVERSE_ONLY, QNUM_RETURN_USER, QNUM_CONDITION, as for
 * qnum_f_lin_sol_gen; there is no QNUM_TRANSPOSE.
 * Errors: as qnum_f_lin_sol_gen, with 6002 in place of 150 for a null a or b, 104 naming
 * "factor"/QNUM_FACTOR_USER, 1035 and 1036 when the factor or the solution cannot be
 * allocated, and FATAL 1018 (the failing column) in place of 1004. */
QNUM_API float* qnum_f_lin_sol_posdef(int n, float a[], float b[], ...);
QNUM_API double* qnum_d_lin_sol_posdef(int n, double a[], double b[], ...);
QNUM_API qnum_f_complex* qnum_c_lin_sol_posdef(int n, qnum_f_complex a[], qnum_f_complex b[], ...);
QNUM_API qnum_d_complex* qnum_z_lin_sol_posdef(int n, qnum_d_complex a[], qnum_d_complex b[], ...);

/* qnum_f_lin_sol_nonnegdef(n, a, b, options..., 0): a solution of the consistent part of
 * A x = b for a symmetric nonnegative definite, possibly singular, A (row-major, rows n
 * apart; only the upper triangle is read), through A = R^T R with a rank decision: a diagonal
 * of R whose reduced value lies within tol times the original diagonal is taken as 0, and
 * the solution components there are set to 0.
 * Options: QNUM_FACTOR, QNUM_FACTOR_USER, QNUM_FAC_COL_DIM, QNUM_FACTOR_ONLY, QNUM_SOLVE_ONLY,
 * QNUM_INVERSE, QNUM_INVERSE_USER (a generalized inverse G with A G A = A), QNUM_INV_COL_DIM,
 * QNUM_INVERSE_ONLY, QNUM_RETURN_USER as above; QNUM_TOLERANCE, double tol (default 100
 * times the machine epsilon).
 * Errors: TERMINAL 11001 unknown option (code, position); 1010; 1091; 1040, 1093 (factor-only
 * without a factor or with an inverse option); 1039, 1094; 1027, 1092; 1062 a column
 * dimension below n; 150 null a or b; 1047 out of memory; 1048 tol outside [0, 1]. WARNING
 * 1049 not nonnegative definite (column, tol); 1050 and 1051 inconsistent system (row). */
QNUM_API float* qnum_f_lin_sol_nonnegdef(int n, float a[], float b[], ...);
QNUM_API double* qnum_d_lin_sol_nonnegdef(int n, double a[], double b[], ...);

/* qnum_f_m1ran(rows, cols, a, b): b := the cols by rows transpose of the rows by cols array a
 * (row-major); b may be a. An in-place rectangular transpose uses a temporary copy when it
 * can and otherwise permutes in place, so it never fails for want of memory.
 * Errors: TERMINAL 620 rows < 1, 621 cols < 1 (the bad value). */
QNUM_API void qnum_f_m1ran(int rows, int cols, const float a[], float b[]);
QNUM_API void qnum_d_m1ran(int rows, int cols, const double a[], double b[]);
QNUM_API void qnum_c_m1ran(int rows, int cols, const qnum_f_complex a[], qnum_f_complex b[]);
QNUM_API void qnum_z_m1ran(int rows, int cols, const qnum_d_complex a[], qnum_d_complex b[]);

/* ------------------------------------------------------------------------------------------
 * Cubic splines
 * ------------------------------------------------------------------------------------------ */

/* A piecewise polynomial: one allocation holding this header, then the breakpoint pointers,
 * the coefficient pointers, all breakpoint values, all coefficient values and the order,
 * num_coef and num_breakpoints arrays, so that one free releases it (free or
 * qnum_free_allocated_memory). For a cubic spline (domain_dim 1, order 4, n breakpoints) the
 * coefficients coef[0][4i + j], j = 0..3, of interval i are the value and the first three
 * derivatives at its left breakpoint: s(x) = sum over j of c_j (x - x_i)^j / j!; num_coef
 * is 4(n - 1). */
typedef struct Qnum_f_ppoly {
    int domain_dim;         /* number of independent variables */
    int target_dim;         /* number of dependent components */
    int* order;             /* [domain_dim] polynomial order per variable (4 for a cubic) */
    int* num_coef;          /* [domain_dim] coefficients per component, the same in every entry */
    int* num_breakpoints;   /* [domain_dim] breakpoints per variable */
    float** breakpoints;    /* [domain_dim] increasing breakpoint values */
    float** coef;           /* [target_dim] num_coef coefficients each */
} Qnum_f_ppoly;
typedef struct Qnum_d_ppoly {
    int domain_dim;
    int target_dim;
    int* order;
    int* num_coef;
    int* num_breakpoints;
    double** breakpoints;
    double** coef;
} Qnum_d_ppoly;

#define QNUM_BREAKPOINTS 10026       /* T* breakpoints[domain_dim]: copied into the structure */
#define QNUM_COEFFICIENTS 10027      /* T* coef[target_dim]: copied into the structure */
#define QNUM_DERIV 10028             /* int deriv: order of the derivative (default 0) */
#define QNUM_CONCAVE 10029           /* none: concavity-preserving instead of Akima */
#define QNUM_PERIODIC 10030          /* none: periodic end conditions */
#define QNUM_LEFT 10031              /* int ileft, double left: left end condition */
#define QNUM_RIGHT 10032             /* int iright, double right: right end condition */
#define QNUM_LEFT_ADR 11009          /* int* ileft, T* left */
#define QNUM_RIGHT_ADR 11010         /* int* iright, T* right */
#define QNUM_WEIGHTS 10141           /* T weights[ndata] */
#define QNUM_SMOOTHING_PAR 10146     /* double sigma */
#define QNUM_CONCAVE_ITMAX 10149     /* int itmax (default 25) */
#define QNUM_SMOOTHING_PAR_ADR 11012 /* T* sigma */
#define QNUM_GRID 11050              /* int n, T xvec[], T** value: results in a new array */
#define QNUM_GRID_USER 11051         /* int n, T xvec[], T value[]: results in the caller's */

/* Every builder sorts the abscissas (the caller's arrays are left as they are), carrying the
 * ordinates and weights along. The breakpoints are the sorted abscissas, except that the
 * concavity-preserving builder adds knots. Errors of every builder: TERMINAL 150 for a null
 * xdata or fdata, FATAL 3035 for an abscissa that is NaN or infinite (index, value), FATAL
 * 3034 for two equal abscissas (their indices in the caller's arrays, the value), TERMINAL
 * 103 for an unknown option, TERMINAL 201 when memory runs out ("ndata"). On an error of type
 * FATAL or worse the builder returns NULL. */

/* The interpolating cubic spline with end conditions. Options: QNUM_LEFT and QNUM_RIGHT (or
 * their _ADR forms): code 0 not-a-knot (the default; with two points and the other end not
 * not-a-knot, the third derivative vanishes), 1 the first derivative, 2 the second derivative
 * at that end equals the value. Two points with not-a-knot at both ends give the straight line,
 * three points the parabola. QNUM_PERIODIC: first and second derivatives agree at the ends
 * (end codes ignored); every ordinate is interpolated as given.
 * Errors: TERMINAL 3066 for ndata < 2, TERMINAL 3069 for ndata < 4 when periodic, WARNING
 * 3070 when periodic and the end ordinates differ (x_0, f_0, x_{n-1}, f_{n-1}), TERMINAL
 * 132 for an end code outside 0..2, TERMINAL 104/105 for a null _ADR pointer. */
QNUM_API Qnum_f_ppoly* qnum_f_cub_spline_interp_e_cnd(int ndata, float xdata[], float fdata[], ...);
QNUM_API Qnum_d_ppoly* qnum_d_cub_spline_interp_e_cnd(int ndata, double xdata[], double fdata[], ...);
/* The not-a-knot interpolant (the defaults of the routine above); no options. */
QNUM_API Qnum_f_ppoly* qnum_f_cub_spline_interp(int ndata, float xdata[], float fdata[], ...);
QNUM_API Qnum_d_ppoly* qnum_d_cub_spline_interp(int ndata, double xdata[], double fdata[], ...);
/* Shape-preserving interpolation: Akima's slopes by default (ndata >= 4, else TERMINAL
 * 3069); with QNUM_CONCAVE a C1 cubic that keeps the sign of the data's second differences
 * in every interval, adding knots where a single cubic piece cannot (ndata >= 3, else
 * TERMINAL 3071). QNUM_CONCAVE_ITMAX bounds its iterations: TERMINAL 3072 for itmax < 1,
 * WARNING 3073 when they run out (the last iterate, which keeps the concavity, is
 * returned), TERMINAL 3074 for an ordinate that is NaN or infinite (index, value). */
QNUM_API Qnum_f_ppoly* qnum_f_cub_spline_interp_shape(int ndata, float xdata[], float fdata[], ...);
QNUM_API Qnum_d_ppoly* qnum_d_cub_spline_interp_shape(int ndata, double xdata[], double fdata[], ...);
/* The smoothing spline: among the natural cubic splines whose sum of squared weighted
 * residuals sum (w_i (s(x_i) - f_i))^2 is at most sigma, the one with the least integral of
 * s''^2. sigma 0 gives the natural interpolant, a sigma at least the residual of the
 * weighted least-squares line gives that line. Without sigma the smoothing is chosen by
 * generalised cross-validation (ndata >= 3). Options: QNUM_WEIGHTS, QNUM_SMOOTHING_PAR,
 * QNUM_SMOOTHING_PAR_ADR. Errors: TERMINAL 3071 for ndata < 3 (cross-validation), TERMINAL
 * 3066 for ndata < 2 (given sigma), TERMINAL 3047 for a negative or NaN sigma, FATAL 3046
 * for a weight that is not positive and finite (index, weight), FATAL 3050 when the
 * computation breaks down (non-finite data). */
QNUM_API Qnum_f_ppoly* qnum_f_cub_spline_smooth(int ndata, float xdata[], float fdata[], ...);
QNUM_API Qnum_d_ppoly* qnum_d_cub_spline_smooth(int ndata, double xdata[], double fdata[], ...);
/* The value, or with QNUM_DERIV the derivative of order deriv, at x. Outside the breakpoints
 * the end polynomials continue; derivatives above the order less one are 0. With QNUM_GRID
 * or QNUM_GRID_USER the n strictly increasing points xvec are evaluated in one pass (x is
 * ignored). Errors: TERMINAL 150 for a null ppoly or xvec, TERMINAL 132 for a structure
 * that is not one variable, TERMINAL 3109 for a structure with fewer than one interval or
 * order below 1 (the count), TERMINAL 3108 for deriv < 0, TERMINAL 3123 for n < 1, FATAL
 * 3122 for xvec[i] <= xvec[i-1] (i-1, i and both values; NaN entries pass), TERMINAL 201
 * ("length") when memory runs out. On an error the result is NaN, and so is every grid
 * entry (a QNUM_GRID array is still allocated and handed back when n >= 1). */
QNUM_API float qnum_f_cub_spline_value(float x, Qnum_f_ppoly* ppoly, ...);
QNUM_API double qnum_d_cub_spline_value(double x, Qnum_d_ppoly* ppoly, ...);
/* The integral from a to b (negative when a > b; the end polynomials continue outside the
 * breakpoints). Errors as for the value; NaN on an error. */
QNUM_API float qnum_f_cub_spline_integral(float a, float b, Qnum_f_ppoly* ppoly);
QNUM_API double qnum_d_cub_spline_integral(double a, double b, Qnum_d_ppoly* ppoly);
/* A piecewise polynomial with the given dimensions; num_coef is the product over the
 * variables of (num_breakpoints[i] - 1) * order[i]. Options: QNUM_BREAKPOINTS and
 * QNUM_COEFFICIENTS copy the given arrays; values not given are left uninitialised.
 * Errors: TERMINAL 132 for domain_dim or target_dim below 1, an order below 1 or fewer than 2
 * breakpoints in a variable; TERMINAL 150 for a null order, num_breakpoints or given array;
 * FATAL 202 when the structure does not fit in memory (domain_dim, target_dim). */
QNUM_API Qnum_f_ppoly* qnum_f_ppoly_create(int domain_dim, int target_dim, int order[], int num_breakpoints[], ...);
QNUM_API Qnum_d_ppoly* qnum_d_ppoly_create(int domain_dim, int target_dim, int order[], int num_breakpoints[], ...);

/* ------------------------------------------------------------------------------------------
 * Adaptive quadrature
 * ------------------------------------------------------------------------------------------ */

/* Integrate a user function of one variable. fcn is the integrand alone; the routines apply
 * any weight themselves. Every call of fcn is marked as user code on the error stack.
 * Shared options (values after each code; float options of qnum_f_ pass as double):
 *   QNUM_ERR_ABS double, QNUM_ERR_REL double (both default sqrt(qnum_amach(4)), or
 *   sqrt(qnum_dmach(4)) for qnum_d_), QNUM_ERR_ABS_ADR and QNUM_ERR_REL_ADR (the same, by
 *   address), QNUM_ERR_EST T* (estimate of the absolute error), QNUM_N_EVALS int* (calls of
 *   fcn), QNUM_FCN_W_DATA T (*)(T, void*), void* (called in place of fcn, with the pointer).
 * Adaptive members also take QNUM_MAX_SUBINTER int (default 500), QNUM_N_SUBINTER int*,
 *   QNUM_ERR_LIST_USER T[max_subinter] (error estimate of each subinterval) and
 *   QNUM_ORDER_LIST_USER int[max_subinter] (0-based subinterval numbers, largest error first).
 * Result: the integral; NaN after an error of type FATAL or worse.
 * Errors: TERMINAL 4001 max_subinter too small, 4002 rule not 1..6, 4003 err_abs < 0,
 *   4004 err_rel < 0, 4005 both tolerances zero, 4006 err_rel >= 1, 6002 no integrand,
 *   103 unknown option, 104 null option pointer, 201 no memory for the lists;
 *   FATAL 4007 max_subinter subintervals used (err_est, n_subinter, n_evals still returned);
 *   WARNING 4008 roundoff, 4009 bad integrand behaviour on a subinterval, 4018 roundoff in
 *   the extrapolation table, 4019 probably divergent; and each member's own below. */
#ifndef QNUM_ERR_ABS
#define QNUM_ERR_ABS 10010
#endif
#ifndef QNUM_ERR_REL
#define QNUM_ERR_REL 10011
#endif
#ifndef QNUM_ERR_ABS_ADR
#define QNUM_ERR_ABS_ADR 11036
#endif
#ifndef QNUM_ERR_REL_ADR
#define QNUM_ERR_REL_ADR 11035
#endif
#define QNUM_RULE 10019             /* int rule 1..6: 15, 21, 31, 41, 51, 61 points (default 2) */
#define QNUM_ERR_EST 10020          /* T* err_est */
#define QNUM_MAX_SUBINTER 10021     /* int max_subinter */
#define QNUM_N_SUBINTER 10022       /* int* n_subinter */
#define QNUM_N_EVALS 10023          /* int* n_evals */
#define QNUM_ERR_LIST_USER 10024    /* T err_list[max_subinter] */
#define QNUM_ORDER_LIST_USER 10025  /* int order_list[max_subinter] */
#define QNUM_MAX_MOMENTS 10046      /* int: levels of Chebyshev moments kept (default 21) */
#define QNUM_MAX_CYCLES 10047       /* int: cycles of a Fourier integral (default 50, >= 3) */

/* General integrand over [a, b]: globally adaptive Gauss-Kronrod (QNUM_RULE). */
QNUM_API float qnum_f_int_fcn(float (*fcn)(float), float a, float b, ...);
QNUM_API double qnum_d_int_fcn(double (*fcn)(double), double a, double b, ...);
/* Integrable singularities at or inside [a, b]: 21-point rule with extrapolation. */
QNUM_API float qnum_f_int_fcn_sing(float (*fcn)(float), float a, float b, ...);
QNUM_API double qnum_d_int_fcn_sing(double (*fcn)(double), double a, double b, ...);
/* interval_code -1: (-inf, bound], 1: [bound, +inf), 2: the whole line (TERMINAL 4010). */
QNUM_API float qnum_f_int_fcn_inf(float (*fcn)(float), float bound, int interval_code, ...);
QNUM_API double qnum_d_int_fcn_inf(double (*fcn)(double), double bound, int interval_code, ...);
/* fcn(x) cos(omega x) (weight_code 1) or sin(omega x) (2) over [a, b]. TERMINAL 4011 bad
 * weight code, 4014 QNUM_MAX_MOMENTS < 1. */
QNUM_API float qnum_f_int_fcn_trig(float (*fcn)(float), float omega, int weight_code, float a, float b,
                                   ...);
QNUM_API double qnum_d_int_fcn_trig(double (*fcn)(double), double omega, int weight_code, double a,
                                    double b, ...);
/* fcn(x) cos(omega x) or sin(omega x) over [a, +inf), cycle by cycle with extrapolation.
 * The tolerance is absolute (QNUM_ERR_ABS; TERMINAL 4023 when it is zero). TERMINAL 4011,
 * 4014, 4015 QNUM_MAX_CYCLES < 3; FATAL 4021 cycle limit; WARNING 4022 trouble in a cycle. */
QNUM_API float qnum_f_int_fcn_fourier(float (*fcn)(float), float omega, int weight_code, float a, ...);
QNUM_API double qnum_d_int_fcn_fourier(double (*fcn)(double), double omega, int weight_code, double a,
                                       ...);
/* Cauchy principal value of fcn(x) / (x - c) over [a, b]; TERMINAL 4012 when c = a or b. */
QNUM_API float qnum_f_int_fcn_cauchy(float (*fcn)(float), float a, float b, float c, ...);
QNUM_API double qnum_d_int_fcn_cauchy(double (*fcn)(double), double a, double b, double c, ...);
/* Smooth integrand: the 21-, 43- and 87-point rules in turn, no subdivision. Takes only the
 * shared options. FATAL 4020 when the 87-point rule misses the tolerance. */
QNUM_API float qnum_f_int_fcn_smooth(float (*fcn)(float), float a, float b, ...);
QNUM_API double qnum_d_int_fcn_smooth(double (*fcn)(double), double a, double b, ...);
/* Integrand with trouble at the npoints break points inside [a, b] (any order).
 * TERMINAL 4016 npoints < 0, 4017 a point outside [a, b], 150 points NULL, 4001 when
 * max_subinter <= npoints. */
QNUM_API float qnum_f_int_fcn_sing_pts(float (*fcn)(float), float a, float b, int npoints,
                                       const float points[], ...);
QNUM_API double qnum_d_int_fcn_sing_pts(double (*fcn)(double), double a, double b, int npoints,
                                        const double points[], ...);
/* fcn(x) w(x) over [a, b], a < b, with w(x) = (x-a)^alpha (b-x)^beta times 1 (weight_code 1),
 * log(x-a) (2), log(b-x) (3) or log(x-a) log(b-x) (4). TERMINAL 4011, 4013 alpha or beta
 * <= -1, 4024 a >= b, 4001 max_subinter < 2. */
QNUM_API float qnum_f_int_fcn_alg_log(float (*fcn)(float), float a, float b, int weight_code, float alpha,
                                      float beta, ...);
QNUM_API double qnum_d_int_fcn_alg_log(double (*fcn)(double), double a, double b, int weight_code,
                                       double alpha, double beta, ...);

/* ------------------------------------------------------------------------------------------
 * Zeros of a real function
 * ------------------------------------------------------------------------------------------ */

/* Option codes of the zero finders. The tolerance codes are shared with other families. */
#ifndef QNUM_ERR_ABS
#define QNUM_ERR_ABS 10010 /* double err_abs */
#endif
#ifndef QNUM_ERR_REL
#define QNUM_ERR_REL 10011 /* double err_rel */
#endif
#ifndef QNUM_ERR_ABS_ADR
#define QNUM_ERR_ABS_ADR 11036 /* float* (qnum_f_) or double* (qnum_d_) err_abs */
#endif
#ifndef QNUM_ERR_REL_ADR
#define QNUM_ERR_REL_ADR 11035 /* float* or double* err_rel */
#endif
#define QNUM_ETA 10012         /* double eta */
#define QNUM_EPS 10013         /* double eps */
#define QNUM_ETA_ADR 11023     /* float* or double* eta */
#define QNUM_EPS_ADR 11024     /* float* or double* eps */
#define QNUM_NUM_ROOTS 10018   /* int num_roots */
#define QNUM_MAX_EVALS 10113   /* int itmax: evaluations allowed per zero */
#define QNUM_XGUESS 10100      /* float[] or double[] xguess, num_roots entries */
#define QNUM_INFO_USER 10099   /* int info[], num_roots entries: receives the counts */
#define QNUM_INFO 10017        /* int** info: receives a new array of counts, the caller's */

/* qnum_f_zeros_fcn(fcn, options..., 0): num_roots real zeros of fcn by Mueller's method, one
 * after another, each search dividing f by (x - z) for every zero z already found.
 * Zero i starts from 0.9 g, 1.1 g and g, where g is its guess (default 0), or from -1, 1 and
 * 0 when g is 0. An iterate that comes within eps of an earlier zero is moved by eta and f is
 * evaluated again there (that evaluation is not counted). A point is accepted when both |f|
 * and the deflated |f| are below err_abs, or when the last step h satisfies
 * |h| < |x| err_rel. The count of zero i is the number of evaluations it took, or itmax + 1
 * when it did not converge; the last iterate is then returned as the zero.
 * Options: QNUM_ERR_ABS, QNUM_ERR_REL, QNUM_ETA (default 0.01), QNUM_EPS (each default
 * sqrt(qnum_amach(4)), or sqrt(qnum_dmach(4)) in double), the same by address
 * (QNUM_*_ADR), QNUM_NUM_ROOTS (default 1), QNUM_MAX_EVALS (default 100), QNUM_XGUESS,
 * QNUM_INFO_USER, QNUM_INFO (free the array with qnum_free_allocated_memory),
 * QNUM_RETURN_USER (the zeros are written to the caller's array, which is returned),
 * QNUM_FCN_W_DATA, float (*fcn)(float, void*), void* data (called instead of fcn).
 * Errors: WARNING 7001 for a zero that did not converge (itmax and the number of the zero,
 * counting from 1), TERMINAL 132 for num_roots < 1 or itmax < 1, TERMINAL 150 for a null
 * fcn, TERMINAL 103 for an unknown option, TERMINAL 104/105 for null option pointers,
 * TERMINAL 201 when memory runs out. After a TERMINAL error the routine frees what it
 * allocated and returns NULL; after a warning the zeros are returned. */
QNUM_API float* qnum_f_zeros_fcn(float (*fcn)(float x), ...);
QNUM_API double* qnum_d_zeros_fcn(double (*fcn)(double x), ...);

/* ------------------------------------------------------------------------------------------
 * MPS files
 * ------------------------------------------------------------------------------------------ */

/* Option codes of the MPS reader. */
#define QNUM_MPS_FILE 15001              /* FILE*: read from this open stream, not by name */
#define QNUM_MPS_NAME_OBJECTIVE 15002    /* const char*: objective row to use */
#define QNUM_MPS_NAME_RHS 15003          /* const char*: right-hand-side set to use */
#define QNUM_MPS_NAME_RANGES 15004       /* const char*: ranges set to use */
#define QNUM_MPS_NAME_BOUNDS 15005       /* const char*: bounds set to use */
#define QNUM_MPS_POSITIVE_INFINITY 15006 /* double: value stored for an infinite upper bound */
#define QNUM_MPS_NEGATIVE_INFINITY 15007 /* double: value stored for an infinite lower bound */

/* A linear or quadratic programme read from an MPS file:
 *     optimise  objective_constant + objective . x + 1/2 x' Q x
 *     subject to  row i of the matrix, compared with rhs[i] by row_type[i], and ranges,
 *                 lower_bound <= x <= upper_bound, integer where variable_type & 1.
 * Rows are every ROWS entry except the objective row, in file order; N rows other than the
 * objective stay as free rows (type 'N'). Indices are 0-based. The record is one allocation
 * that holds all its arrays: release it with qnum_d_mps_free (or qnum_free_allocated_memory). */
typedef struct Qnum_d_mps {
    char name[58];              /* from the NAME line, columns 6 on, blanks trimmed */
    int nrows;                  /* constraint rows (the objective row excluded) */
    int ncolumns;               /* columns */
    int nonzeros;               /* coefficients read for the rows, as read: zeros kept,
                                   repeats not merged */
    int* matrix_row;            /* [nonzeros] row index of each coefficient */
    int* matrix_column;         /* [nonzeros] column index, nondecreasing */
    double* matrix_value;       /* [nonzeros] */
    double* objective;          /* [ncolumns] objective coefficient of each column */
    double* rhs;                /* [nrows] right-hand side, 0 where none was given */
    double* ranges;             /* [nrows] the RANGES value R as read, 0 where none given.
                                   With |R|: 'G' rows are rhs <= a.x <= rhs + |R|, 'L' rows
                                   rhs - |R| <= a.x <= rhs, 'E' rows [rhs, rhs + R] when
                                   R > 0 and [rhs + R, rhs] when R < 0 */
    int* row_type;              /* [nrows] 'E', 'L', 'G' or 'N' */
    char** row_name;            /* [nrows] names, blanks trimmed */
    char** column_name;         /* [ncolumns] */
    double* lower_bound;        /* [ncolumns] default 0 */
    double* upper_bound;        /* [ncolumns] default positive_infinity */
    int* variable_type;         /* [ncolumns] bit 1 (value 1): integer column */
    char name_objective[9];     /* the objective row used (requested, or the first N row) */
    char name_rhs[9];           /* the right-hand-side set used (requested, or the first met) */
    char name_ranges[9];        /* the ranges set used */
    char name_bounds[9];        /* the bounds set used */
    double positive_infinity;   /* stored for an infinite upper bound, default 1.0e30 */
    double negative_infinity;   /* stored for an infinite lower bound, default -1.0e30 */
    double objective_constant;  /* minus the right-hand side given for the objective row */
    int quadratic_nonzeros;     /* entries of the quadratic sections, as read */
    int* quadratic_row;         /* [quadratic_nonzeros] column index of the first name */
    int* quadratic_column;      /* [quadratic_nonzeros] column index of the second name */
    double* quadratic_value;    /* [quadratic_nonzeros] */
} Qnum_d_mps;

/* qnum_d_read_mps(filename, options..., 0): reads a fixed-column MPS file (the 61-column
 * layout: fields at columns 2-3, 5-12, 15-22, 25-36, 40-47 and 50-61; a line ending in CR LF
 * reads as if it ended in LF). Sections NAME, ROWS, COLUMNS, RHS, RANGES, BOUNDS, ENDATA, in
 * that order (RHS, RANGES and BOUNDS may be left out), and the quadratic sections QUADOBJ,
 * QUADS, QSECTION, HESSIAN, QUADRATIC and QMATRIX anywhere after COLUMNS. COLUMNS lines
 * between a 'MARKER' ... 'INTORG' line and a 'MARKER' ... 'INTEND' line are integer columns.
 * Only the first RHS, RANGES and BOUNDS set met is used unless one is named by option; lines
 * of other sets are skipped.
 * Bound types LO, UP, FX, FR, MI, PL, BV (0 and 1, not marked integer), UI and LI (marked
 * integer), SC (upper bound only); UP and UI with a negative value and a lower bound of
 * exactly 0 make the lower bound negative_infinity. A right-hand side given for the
 * objective row sets objective_constant to its negative.
 * Options: QNUM_MPS_FILE, QNUM_MPS_NAME_OBJECTIVE, QNUM_MPS_NAME_RHS, QNUM_MPS_NAME_RANGES,
 * QNUM_MPS_NAME_BOUNDS, QNUM_MPS_POSITIVE_INFINITY, QNUM_MPS_NEGATIVE_INFINITY.
 * Errors (line numbers count every line from 1): TERMINAL 8097 no name and no stream,
 * TERMINAL 8112 the file cannot be opened, TERMINAL 103 unknown option, TERMINAL 200 or 201
 * out of memory; FATAL 8098 end of file before ENDATA, 8099 data line before ROWS, 8104
 * section out of order, 8105 unknown section, 8106 unknown row type, 8107 unknown row name,
 * 8108 a row or column named twice, 8109 unknown column in a bounds or quadratic line, 8110
 * a value that is not a number, 8113 unknown bound type; WARNING 8100, 8101, 8102, 8103 when
 * the requested objective, RHS, ranges or bounds name was not found. Reading stops at the
 * first FATAL or TERMINAL error and the routine returns NULL. */
QNUM_API Qnum_d_mps* qnum_d_read_mps(const char* filename, ...);
/* Releases a record returned by qnum_d_read_mps; NULL is allowed. */
QNUM_API void qnum_d_mps_free(Qnum_d_mps* problem);

/* ------------------------------------------------------------------------------------------
 * Linear programming
 * ------------------------------------------------------------------------------------------ */

/* Options of the linear programming routines (T is float for qnum_f_, double for qnum_d_). */
#define QNUM_LP_OBJ_VALUE 15020       /* T*: receives the objective value */
#define QNUM_LP_ROW_ACTIVITY 15021    /* T[nrows]: receives each row's activity a.x */
#define QNUM_LP_DUALS 15022           /* T[nrows]: receives each row's dual value */
#define QNUM_LP_REDUCED_COSTS 15023   /* T[ncolumns]: receives c - A^T y */
#define QNUM_LP_BASIS 15024           /* int row_status[nrows], int column_status[ncolumns] */
#define QNUM_LP_ITERATIONS 15025      /* int*: receives the simplex iteration count */
#define QNUM_LP_MAX_ITERATIONS 15026  /* int: iteration limit, default INT_MAX */
#define QNUM_LP_FEASIBILITY_TOL 15027 /* T: bound violation allowed, default 1e-7 */
#define QNUM_LP_OPTIMALITY_TOL 15028  /* T: reduced-cost violation allowed, default 1e-7 */
#define QNUM_LP_MAXIMIZE 15029        /* no value: maximise instead of minimise */
#define QNUM_LP_WARM_START 15030      /* const int row_status[nrows], const int column_status[ncolumns] */
#define QNUM_LP_PROGRESS 15031        /* qnum_lp_progress fcn, void* data: called as the solve runs */

/* A progress report: the iteration count, the objective of the current basis (of the
 * problem as solved, so minimised), and its sums of primal and dual infeasibilities. Called
 * every 100 iterations and once at the end; it runs in the calling thread. */
typedef void (*qnum_lp_progress)(int iteration, double objective, double primal_infeasibility,
                                 double dual_infeasibility, void* data);

/* Basis status codes of rows and columns (QNUM_LP_BASIS, QNUM_LP_WARM_START). */
#define QNUM_LP_BASIC 1    /* basic */
#define QNUM_LP_AT_LOWER 2 /* nonbasic at its lower bound */
#define QNUM_LP_AT_UPPER 3 /* nonbasic at its upper bound */
#define QNUM_LP_FREE 4     /* nonbasic free variable at zero */
#define QNUM_LP_FIXED 5    /* nonbasic with equal bounds */

/* qnum_d_linear_programming(problem, options..., 0): minimises objective . x +
 * objective_constant over the record's rows and bounds: 'E', 'L' and 'G' rows with their
 * right-hand sides and ranges (as documented with Qnum_d_mps); 'N' rows are free and ignored.
 * Bounds at or beyond the record's positive_infinity / negative_infinity are infinite (when
 * those are 0, as in a zero-filled record, only true infinities are). lower_bound NULL means
 * 0 for every column, upper_bound NULL means no upper bounds, ranges NULL means none.
 * Returns the ncolumns values of the solution in a new array (free it with
 * qnum_free_allocated_memory) or in the caller's (QNUM_RETURN_USER). qnum_f_linear_programming
 * takes the same record, computes in double and returns float results.
 * Duals follow c - A^T y = reduced costs for the sense solved, so that each is the rate of
 * change of the optimal objective with its row's bound; 'N' rows get dual 0 and status basic.
 * Options: QNUM_RETURN_USER, QNUM_LP_OBJ_VALUE, QNUM_LP_ROW_ACTIVITY, QNUM_LP_DUALS,
 * QNUM_LP_REDUCED_COSTS, QNUM_LP_BASIS, QNUM_LP_ITERATIONS, QNUM_LP_MAX_ITERATIONS,
 * QNUM_LP_FEASIBILITY_TOL, QNUM_LP_OPTIMALITY_TOL, QNUM_LP_MAXIMIZE, QNUM_LP_PROGRESS (a null
 * function is allowed and reports nothing), QNUM_LP_WARM_START (a
 * basis with one basic variable per non-'N' row; the solve then starts from it and skips
 * presolve, and an optimal basis takes 0 iterations).
 * Method: presolve (empty and singleton rows, fixed, empty and free singleton columns), scaling,
 * a bounded dual simplex with dual steepest-edge pricing and a bound-flipping ratio test on a
 * sparse LU of the basis, a primal simplex to finish.
 * Errors: TERMINAL 150 null problem or array, 132 negative count or iteration limit, 8134
 * matrix index out of range, 8135 bad row type, 8136 a NaN in the data, 8137 a tolerance not
 * in (0, 1), 8138 a bad warm-start status, 8139 a warm-start basis of the wrong size, 103
 * unknown option, 104/105 null option pointer, 201 out of memory; FATAL 8130 infeasible (with
 * the sum of infeasibilities), 8131 unbounded (with the column's name), 8133 numerical
 * trouble; on these the routine returns NULL. WARNING 8132 when the iteration limit is
 * reached: the point of the last basis is returned. */
QNUM_API float* qnum_f_linear_programming(const Qnum_d_mps* problem, ...);
QNUM_API double* qnum_d_linear_programming(const Qnum_d_mps* problem, ...);

/* ------------------------------------------------------------------------------------------
 * Special functions
 * ------------------------------------------------------------------------------------------ */

/* Every routine of this section takes its arguments by value and returns the function value;
 * none takes options. A routine that fails returns NaN (a documented underflow returns 0) and
 * reports through the error stack. The float routines carry their intermediates in double; the
 * double ones carry in double-double the few steps that decide their last bit (a series' last
 * terms, exp(-x^2), the Stirling exponent, running products). */

/* Chebyshev machinery. qnum_inits/qnum_initds: how many of the n coefficients cs[0..n-1] to keep
 * so that the dropped ones sum to at most eta (decided in float for both); TERMINAL 9004 when
 * n < 1, TERMINAL 9005 (0 terms) when even the last coefficient exceeds eta, 150 for a null cs.
 * qnum_csevl/qnum_dcsevl: cs[0]/2 + sum_k cs[k] T_k(x) over n terms by Clenshaw's recurrence;
 * TERMINAL 9001 (n < 1) and 9002 (n > 1000) return NaN, WARNING 9003 when |x| > 1.1. */
QNUM_API int qnum_inits(const float cs[], int n, float eta);
QNUM_API int qnum_initds(const double cs[], int n, double eta);
QNUM_API float qnum_csevl(float x, const float cs[], int n);
QNUM_API double qnum_dcsevl(double x, const double cs[], int n);
/* log gamma(x) - [(x - 1/2) log x - x + log sqrt(2 pi)] for x >= 10: FATAL 60002 below 10,
 * ALERT 9015 (result 0) where 1/(12x) underflows. */
QNUM_API float qnum_r9lgmc(float x);
QNUM_API double qnum_d9lgmc(double x);

/* Error functions. erf and erfc keep their term counts per thread: TERMINAL 200 when that
 * block cannot be allocated. erfc: ALERT 9015 (result 0) beyond the underflow limit.
 * erf_inverse (|x| < 1) and erfc_inverse (0 < x < 2): FATAL 120 outside (a NaN argument too),
 * WARNING 9025/9029 where the argument's own spacing leaves fewer than half the digits, FATAL
 * 9030 (last iterate returned) if Newton's method fails. */
QNUM_API float qnum_f_erf(float x);
QNUM_API double qnum_d_erf(double x);
QNUM_API float qnum_f_erfc(float x);
QNUM_API double qnum_d_erfc(double x);
QNUM_API float qnum_f_erf_inverse(float x);
QNUM_API double qnum_d_erf_inverse(double x);
QNUM_API float qnum_f_erfc_inverse(float x);
QNUM_API double qnum_d_erfc_inverse(double x);
/* w(z) = exp(-z^2) erfc(-iz); FATAL 9035 where exp(-z^2) overflows (far below the real axis). */
QNUM_API qnum_f_complex qnum_c_erfe(qnum_f_complex z);
QNUM_API qnum_d_complex qnum_z_erfe(qnum_d_complex z);

/* Gamma family. gamma: TERMINAL 9024 at 0, TERMINAL 9006 at a negative integer >= -10, FATAL
 * 9021 at one below -10, FATAL 9011 next to 0, FATAL 9009 above the overflow limit, ALERT 9014
 * (result 0) below the underflow limit, WARNING 9020 next to a negative integer.
 * log_gamma: log |gamma(x)|; FATAL 9006 at a negative integer below -10, FATAL 9013 when |x| >
 * huge/log(huge), WARNING 9020; for |x| <= 10 the errors of gamma. */
QNUM_API float qnum_f_gamma(float x);
QNUM_API double qnum_d_gamma(double x);
QNUM_API float qnum_f_log_gamma(float x);
QNUM_API double qnum_d_log_gamma(double x);
/* beta(a, b): TERMINAL 9031 unless a, b > 0, ALERT 9018 (result 0) on underflow.
 * log_beta(a, b): TERMINAL 9038 unless a, b > 0. */
QNUM_API float qnum_f_beta(float a, float b);
QNUM_API double qnum_d_beta(double a, double b);
QNUM_API float qnum_f_log_beta(float a, float b);
QNUM_API double qnum_d_log_beta(double a, double b);
/* The integral of t^(a-1) exp(-t) from 0 to x: TERMINAL 9032 (a <= 0) and 9033 (x < 0), both
 * when both hold; FATAL 9034 when the result overflows, FATAL 9039 if the series fails. */
QNUM_API float qnum_f_gamma_incomplete(float a, float x);
QNUM_API double qnum_d_gamma_incomplete(double a, double x);
/* The regularised incomplete beta function I_x(a, b): FATAL 120 unless 0 <= x <= 1, TERMINAL
 * 9031 unless a, b > 0, FATAL 9039 if the continued fraction fails. */
QNUM_API float qnum_f_beta_incomplete(float x, float a, float b);
QNUM_API double qnum_d_beta_incomplete(double x, double a, double b);

#ifdef __cplusplus
}
#endif

#endif /* QNUMMATH_H */
