// Tuned inner kernels for processors with AVX-512 (F, DQ, VL, BW): the tables of tuned::ops().
#include "kernels/tuned_body.hpp"

namespace qnum::kern::tuned::avx512 {

const Ops<float> ops_float = {dot<float>, axpy<float>, sumsq<float>, gemv_n<float>, gemv_t<float>};
const Ops<double> ops_double = {dot<double>, axpy<double>, sumsq<double>, gemv_n<double>, gemv_t<double>};
// The complex dot products and vector updates measured faster here with 256-bit vectors.
const ComplexOps<float> ops_complex_float = {cdot<float, V256<float>>, caxpy<float, V256<float>>, cscal<float>,
                                             cgemv_n<float>,           cgemv_t<float>,            caxpy_dotc<float>, caxpy_dotc_cols<float, 4>, 4};
const ComplexOps<double> ops_complex_double = {cdot<double, V256<double>>, caxpy<double, V256<double>>, cscal<double>,
                                               cgemv_n<double>,            cgemv_t<double>,             caxpy_dotc<double>, caxpy_dotc_cols<double, 4>, 4};

}  // namespace qnum::kern::tuned::avx512
