// Tuned inner kernels for float and double: one table per instruction set, chosen at run time.
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

// The table for the path that cpu::active() names, or null for the portable path.
template <class T>
const Ops<T>* ops();

namespace avx2 {
extern const Ops<float> ops_float;
extern const Ops<double> ops_double;
}  // namespace avx2
namespace avx512 {
extern const Ops<float> ops_float;
extern const Ops<double> ops_double;
}  // namespace avx512

}  // namespace qnum::kern::tuned
