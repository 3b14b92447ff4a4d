// Entry points of the adaptive quadrature routines, single and double precision.
#include <cstdarg>

#include "frame/frame.hpp"
#include "quadrature/quadrature.hpp"

using namespace qnum;

extern "C" {

QNUM_API float qnum_f_int_fcn(float (*fcn)(float), float a, float b, ...) {
    va_list ap;
    va_start(ap, b);
    float r = frame::call<float>("qnum_f_int_fcn", [&] {
        return quadrature::int_fcn<float>(fcn, a, b, frame::Options(ap, /*first_position=*/4));
    });
    va_end(ap);
    return r;
}

QNUM_API double qnum_d_int_fcn(double (*fcn)(double), double a, double b, ...) {
    va_list ap;
    va_start(ap, b);
    double r = frame::call<double>("qnum_d_int_fcn", [&] {
        return quadrature::int_fcn<double>(fcn, a, b, frame::Options(ap, /*first_position=*/4));
    });
    va_end(ap);
    return r;
}

QNUM_API float qnum_f_int_fcn_sing(float (*fcn)(float), float a, float b, ...) {
    va_list ap;
    va_start(ap, b);
    float r = frame::call<float>("qnum_f_int_fcn_sing", [&] {
        return quadrature::int_fcn_sing<float>(fcn, a, b, frame::Options(ap, /*first_position=*/4));
    });
    va_end(ap);
    return r;
}

QNUM_API double qnum_d_int_fcn_sing(double (*fcn)(double), double a, double b, ...) {
    va_list ap;
    va_start(ap, b);
    double r = frame::call<double>("qnum_d_int_fcn_sing", [&] {
        return quadrature::int_fcn_sing<double>(fcn, a, b, frame::Options(ap, /*first_position=*/4));
    });
    va_end(ap);
    return r;
}

QNUM_API float qnum_f_int_fcn_inf(float (*fcn)(float), float bound, int interval_code, ...) {
    va_list ap;
    va_start(ap, interval_code);
    float r = frame::call<float>("qnum_f_int_fcn_inf", [&] {
        return quadrature::int_fcn_inf<float>(fcn, bound, interval_code, frame::Options(ap, /*first_position=*/4));
    });
    va_end(ap);
    return r;
}

QNUM_API double qnum_d_int_fcn_inf(double (*fcn)(double), double bound, int interval_code, ...) {
    va_list ap;
    va_start(ap, interval_code);
    double r = frame::call<double>("qnum_d_int_fcn_inf", [&] {
        return quadrature::int_fcn_inf<double>(fcn, bound, interval_code, frame::Options(ap, /*first_position=*/4));
    });
    va_end(ap);
    return r;
}

QNUM_API float qnum_f_int_fcn_trig(float (*fcn)(float), float omega, int weight_code, float a, float b, ...) {
    va_list ap;
    va_start(ap, b);
    float r = frame::call<float>("qnum_f_int_fcn_trig", [&] {
        return quadrature::int_fcn_trig<float>(fcn, omega, weight_code, a, b, frame::Options(ap, /*first_position=*/6));
    });
    va_end(ap);
    return r;
}

QNUM_API double qnum_d_int_fcn_trig(double (*fcn)(double), double omega, int weight_code, double a, double b, ...) {
    va_list ap;
    va_start(ap, b);
    double r = frame::call<double>("qnum_d_int_fcn_trig", [&] {
        return quadrature::int_fcn_trig<double>(fcn, omega, weight_code, a, b, frame::Options(ap, /*first_position=*/6));
    });
    va_end(ap);
    return r;
}

QNUM_API float qnum_f_int_fcn_fourier(float (*fcn)(float), float omega, int weight_code, float a, ...) {
    va_list ap;
    va_start(ap, a);
    float r = frame::call<float>("qnum_f_int_fcn_fourier", [&] {
        return quadrature::int_fcn_fourier<float>(fcn, omega, weight_code, a, frame::Options(ap, /*first_position=*/5));
    });
    va_end(ap);
    return r;
}

QNUM_API double qnum_d_int_fcn_fourier(double (*fcn)(double), double omega, int weight_code, double a, ...) {
    va_list ap;
    va_start(ap, a);
    double r = frame::call<double>("qnum_d_int_fcn_fourier", [&] {
        return quadrature::int_fcn_fourier<double>(fcn, omega, weight_code, a, frame::Options(ap, /*first_position=*/5));
    });
    va_end(ap);
    return r;
}

QNUM_API float qnum_f_int_fcn_cauchy(float (*fcn)(float), float a, float b, float c, ...) {
    va_list ap;
    va_start(ap, c);
    float r = frame::call<float>("qnum_f_int_fcn_cauchy", [&] {
        return quadrature::int_fcn_cauchy<float>(fcn, a, b, c, frame::Options(ap, /*first_position=*/5));
    });
    va_end(ap);
    return r;
}

QNUM_API double qnum_d_int_fcn_cauchy(double (*fcn)(double), double a, double b, double c, ...) {
    va_list ap;
    va_start(ap, c);
    double r = frame::call<double>("qnum_d_int_fcn_cauchy", [&] {
        return quadrature::int_fcn_cauchy<double>(fcn, a, b, c, frame::Options(ap, /*first_position=*/5));
    });
    va_end(ap);
    return r;
}

QNUM_API float qnum_f_int_fcn_smooth(float (*fcn)(float), float a, float b, ...) {
    va_list ap;
    va_start(ap, b);
    float r = frame::call<float>("qnum_f_int_fcn_smooth", [&] {
        return quadrature::int_fcn_smooth<float>(fcn, a, b, frame::Options(ap, /*first_position=*/4));
    });
    va_end(ap);
    return r;
}

QNUM_API double qnum_d_int_fcn_smooth(double (*fcn)(double), double a, double b, ...) {
    va_list ap;
    va_start(ap, b);
    double r = frame::call<double>("qnum_d_int_fcn_smooth", [&] {
        return quadrature::int_fcn_smooth<double>(fcn, a, b, frame::Options(ap, /*first_position=*/4));
    });
    va_end(ap);
    return r;
}

QNUM_API float qnum_f_int_fcn_sing_pts(float (*fcn)(float), float a, float b, int npoints, const float points[], ...) {
    va_list ap;
    va_start(ap, points);
    float r = frame::call<float>("qnum_f_int_fcn_sing_pts", [&] {
        return quadrature::int_fcn_sing_pts<float>(fcn, a, b, npoints, points, frame::Options(ap, /*first_position=*/6));
    });
    va_end(ap);
    return r;
}

QNUM_API double qnum_d_int_fcn_sing_pts(double (*fcn)(double), double a, double b, int npoints, const double points[], ...) {
    va_list ap;
    va_start(ap, points);
    double r = frame::call<double>("qnum_d_int_fcn_sing_pts", [&] {
        return quadrature::int_fcn_sing_pts<double>(fcn, a, b, npoints, points, frame::Options(ap, /*first_position=*/6));
    });
    va_end(ap);
    return r;
}

QNUM_API float qnum_f_int_fcn_alg_log(float (*fcn)(float), float a, float b, int weight_code, float alpha, float beta, ...) {
    va_list ap;
    va_start(ap, beta);
    float r = frame::call<float>("qnum_f_int_fcn_alg_log", [&] {
        return quadrature::int_fcn_alg_log<float>(fcn, a, b, weight_code, alpha, beta, frame::Options(ap, /*first_position=*/7));
    });
    va_end(ap);
    return r;
}

QNUM_API double qnum_d_int_fcn_alg_log(double (*fcn)(double), double a, double b, int weight_code, double alpha, double beta, ...) {
    va_list ap;
    va_start(ap, beta);
    double r = frame::call<double>("qnum_d_int_fcn_alg_log", [&] {
        return quadrature::int_fcn_alg_log<double>(fcn, a, b, weight_code, alpha, beta, frame::Options(ap, /*first_position=*/7));
    });
    va_end(ap);
    return r;
}

}  // extern "C"
