// Tuned inner kernels for real and complex data: one table per instruction set, chosen at run time.
#pragma once

namespace qnum::kern::tuned {

// Unit-stride building blocks that the portable kernels hand their hot loops to. Each table
// is compiled for its instruction set in a file of its own (tuned_avx2.cpp, tuned_avx512.cpp).
template <class T>
struct Ops {
    // sum of x(i) * y(i)
    T (*dot)(long n, const T* x, const T* y);
    // y(i) += a * x(i)
    void (*axpy)(long n, T a, const T* x, T* y);
    // sum of x(i)^2 accumulated in double, and the largest |x(i)| through *amax (the norm
    // uses it to decide whether the unscaled sum can be trusted)
    double (*sumsq)(long n, const T* x, T* amax);
    // y += alpha * A x, y with unit stride, x read at x[j * incx] (incx may be negative)
    void (*gemv_n)(long m, long n, T alpha, const T* a, long lda, const T* x, long incx, T* y);
    // y[j * incy] += alpha * dot(column j of A, x), x with unit stride
    void (*gemv_t)(long m, long n, T alpha, const T* a, long lda, const T* x, T* y, long incy);
};

// The complex counterparts, for R = float or double. Complex arrays are passed as their
// interleaved (real, imaginary) pairs and complex scalars as pointers to such a pair, so that
// no complex-number library code is compiled into a table of one instruction set; lengths and
// increments count complex elements.
template <class R>
struct ComplexOps {
    // out := sum of op(x(i)) * y(i), op = conj when conj_x
    void (*dot)(long n, const R* x, const R* y, bool conj_x, R* out);
    // y(i) += a * x(i)
    void (*axpy)(long n, const R* a, const R* x, R* y);
    // x(i) := a * x(i)
    void (*scal)(long n, const R* a, R* x);
    // y += alpha * A x, as the real gemv_n
    void (*gemv_n)(long m, long n, const R* alpha, const R* a, long lda, const R* x, long incx, R* y);
    // y[j * incy] += alpha * sum of op(a(i, j)) * x(i), x with unit stride, op = conj when conj_a
    void (*gemv_t)(long m, long n, const R* alpha, const R* a, long lda, const R* x, R* y, long incy,
                   bool conj_a);
    // One column of a Hermitian product in one pass over it: y(i) += t * col(i), and out := sum
    // of conj(col(i)) * x(i); x and y with unit stride.
    void (*axpy_dotc)(long n, const R* t, const R* col, const R* x, R* y, R* out);
    // The same for `cols` columns c[0 .. cols-1] over the same rows, in one pass: t and out
    // hold one complex number per column. `cols` is the table's own width.
    void (*axpy_dotc_cols)(long n, const R* t, const R* const* c, const R* x, R* y, R* out);
    int cols;
};

// The table for the path that cpu::active() names, or null for the portable path.
template <class T>
const Ops<T>* ops();
template <class R>
const ComplexOps<R>* complex_ops();

namespace avx2 {
extern const Ops<float> ops_float;
extern const Ops<double> ops_double;
extern const ComplexOps<float> ops_complex_float;
extern const ComplexOps<double> ops_complex_double;
}  // namespace avx2
namespace avx512 {
extern const Ops<float> ops_float;
extern const Ops<double> ops_double;
extern const ComplexOps<float> ops_complex_float;
extern const ComplexOps<double> ops_complex_double;
}  // namespace avx512

}  // namespace qnum::kern::tuned
