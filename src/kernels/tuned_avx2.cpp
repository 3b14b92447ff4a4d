// Tuned inner kernels for processors with AVX2 and FMA: the tables of tuned::ops().
#include "kernels/tuned_body.hpp"

namespace qnum::kern::tuned::avx2 {

const Ops<float> ops_float = {dot<float>, axpy<float>, sumsq<float>, gemv_n<float>, gemv_t<float>};
const Ops<double> ops_double = {dot<double>, axpy<double>, sumsq<double>, gemv_n<double>, gemv_t<double>};
const ComplexOps<float> ops_complex_float = {cdot<float>,    caxpy<float>,   cscal<float>,
                                             cgemv_n<float>, cgemv_t<float>, caxpy_dotc<float>, caxpy_dotc_cols<float, 4>, 4};
const ComplexOps<double> ops_complex_double = {cdot<double>,    caxpy<double>,   cscal<double>,
                                               cgemv_n<double>, cgemv_t<double>, caxpy_dotc<double>, caxpy_dotc_cols<double, 4>, 4};

}  // namespace qnum::kern::tuned::avx2
