// Entry points of the linear programming routines.
#include <cstdarg>

#include "frame/frame.hpp"
#include "optim/lp.hpp"

using namespace qnum;

extern "C" {

QNUM_API float* qnum_f_linear_programming(const Qnum_d_mps* problem, ...) {
    va_list ap;
    va_start(ap, problem);
    float* x = frame::call<float*>("qnum_f_linear_programming", [&] {
        return optim::linear_programming<float>(problem, frame::Options(ap, /*first_position=*/2));
    });
    va_end(ap);
    return x;
}

QNUM_API double* qnum_d_linear_programming(const Qnum_d_mps* problem, ...) {
    va_list ap;
    va_start(ap, problem);
    double* x = frame::call<double*>("qnum_d_linear_programming", [&] {
        return optim::linear_programming<double>(problem, frame::Options(ap, /*first_position=*/2));
    });
    va_end(ap);
    return x;
}

}  // extern "C"
