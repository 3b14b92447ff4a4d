// Entry points of the zero finders for real functions.
#include <cstdarg>

#include "frame/frame.hpp"
#include "zeros/zeros_fcn.hpp"

using namespace qnum;

extern "C" {

QNUM_API float* qnum_f_zeros_fcn(float (*fcn)(float x), ...) {
    va_list ap;
    va_start(ap, fcn);
    float* r = frame::call<float*>("qnum_f_zeros_fcn", [&] {
        return zeros::zeros_fcn<float>(fcn, frame::Options(ap, /*first_position=*/2));
    });
    va_end(ap);
    return r;
}

QNUM_API double* qnum_d_zeros_fcn(double (*fcn)(double x), ...) {
    va_list ap;
    va_start(ap, fcn);
    double* r = frame::call<double*>("qnum_d_zeros_fcn", [&] {
        return zeros::zeros_fcn<double>(fcn, frame::Options(ap, /*first_position=*/2));
    });
    va_end(ap);
    return r;
}

}  // extern "C"
