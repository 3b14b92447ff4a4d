// Tuned inner kernels for processors with AVX2 and FMA: the tables of tuned::ops().
#include "kernels/tuned_body.hpp"

namespace qnum::kern::tuned::avx2 {

const Ops<float> ops_float = {dot<float>, axpy<float>, sumsq<float>, gemv_n<float>, gemv_t<float>};
const Ops<double> ops_double = {dot<double>, axpy<double>, sumsq<double>, gemv_n<double>, gemv_t<double>};

}  // namespace qnum::kern::tuned::avx2
