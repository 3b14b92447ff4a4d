// Entry points of the cubic splines and the piecewise-polynomial constructor.
#include <cstdarg>

#include "frame/frame.hpp"
#include "interp/spline.hpp"

using namespace qnum;

namespace {

// The entry points of the three builders differ only in name, precision and worker.
template <class T>
interp::Ppoly<T>* builder(const char* name, int ndata, T* x, T* f, va_list ap,
                          interp::Ppoly<T>* (*worker)(int, const T*, const T*, frame::Options)) {
    return frame::call<interp::Ppoly<T>*>(name, [&] { return worker(ndata, x, f, frame::Options(ap, 4)); });
}

}  // namespace

extern "C" {

QNUM_API Qnum_f_ppoly* qnum_f_cub_spline_interp_e_cnd(int ndata, float xdata[], float fdata[], ...) {
    va_list ap;
    va_start(ap, fdata);
    Qnum_f_ppoly* p = builder("qnum_f_cub_spline_interp_e_cnd", ndata, xdata, fdata, ap, interp::cub_spline_interp_e_cnd<float>);
    va_end(ap);
    return p;
}

QNUM_API Qnum_d_ppoly* qnum_d_cub_spline_interp_e_cnd(int ndata, double xdata[], double fdata[], ...) {
    va_list ap;
    va_start(ap, fdata);
    Qnum_d_ppoly* p = builder("qnum_d_cub_spline_interp_e_cnd", ndata, xdata, fdata, ap, interp::cub_spline_interp_e_cnd<double>);
    va_end(ap);
    return p;
}

QNUM_API Qnum_f_ppoly* qnum_f_cub_spline_interp(int ndata, float xdata[], float fdata[], ...) {
    va_list ap;
    va_start(ap, fdata);
    Qnum_f_ppoly* p = builder("qnum_f_cub_spline_interp", ndata, xdata, fdata, ap, interp::cub_spline_interp<float>);
    va_end(ap);
    return p;
}

QNUM_API Qnum_d_ppoly* qnum_d_cub_spline_interp(int ndata, double xdata[], double fdata[], ...) {
    va_list ap;
    va_start(ap, fdata);
    Qnum_d_ppoly* p = builder("qnum_d_cub_spline_interp", ndata, xdata, fdata, ap, interp::cub_spline_interp<double>);
    va_end(ap);
    return p;
}

QNUM_API Qnum_f_ppoly* qnum_f_cub_spline_interp_shape(int ndata, float xdata[], float fdata[], ...) {
    va_list ap;
    va_start(ap, fdata);
    Qnum_f_ppoly* p = builder("qnum_f_cub_spline_interp_shape", ndata, xdata, fdata, ap, interp::cub_spline_interp_shape<float>);
    va_end(ap);
    return p;
}

QNUM_API Qnum_d_ppoly* qnum_d_cub_spline_interp_shape(int ndata, double xdata[], double fdata[], ...) {
    va_list ap;
    va_start(ap, fdata);
    Qnum_d_ppoly* p = builder("qnum_d_cub_spline_interp_shape", ndata, xdata, fdata, ap, interp::cub_spline_interp_shape<double>);
    va_end(ap);
    return p;
}

QNUM_API Qnum_f_ppoly* qnum_f_cub_spline_smooth(int ndata, float xdata[], float fdata[], ...) {
    va_list ap;
    va_start(ap, fdata);
    Qnum_f_ppoly* p = builder("qnum_f_cub_spline_smooth", ndata, xdata, fdata, ap, interp::cub_spline_smooth<float>);
    va_end(ap);
    return p;
}

QNUM_API Qnum_d_ppoly* qnum_d_cub_spline_smooth(int ndata, double xdata[], double fdata[], ...) {
    va_list ap;
    va_start(ap, fdata);
    Qnum_d_ppoly* p = builder("qnum_d_cub_spline_smooth", ndata, xdata, fdata, ap, interp::cub_spline_smooth<double>);
    va_end(ap);
    return p;
}

QNUM_API float qnum_f_cub_spline_value(float x, Qnum_f_ppoly* ppoly, ...) {
    va_list ap;
    va_start(ap, ppoly);
    const float v = frame::call<float>("qnum_f_cub_spline_value", [&] {
        return interp::cub_spline_value<float>(x, ppoly, frame::Options(ap, 3));
    });
    va_end(ap);
    return v;
}

QNUM_API double qnum_d_cub_spline_value(double x, Qnum_d_ppoly* ppoly, ...) {
    va_list ap;
    va_start(ap, ppoly);
    const double v = frame::call<double>("qnum_d_cub_spline_value", [&] {
        return interp::cub_spline_value<double>(x, ppoly, frame::Options(ap, 3));
    });
    va_end(ap);
    return v;
}

QNUM_API float qnum_f_cub_spline_integral(float a, float b, Qnum_f_ppoly* ppoly) {
    return frame::call<float>("qnum_f_cub_spline_integral",
                              [&] { return interp::cub_spline_integral<float>(a, b, ppoly); });
}

QNUM_API double qnum_d_cub_spline_integral(double a, double b, Qnum_d_ppoly* ppoly) {
    return frame::call<double>("qnum_d_cub_spline_integral",
                               [&] { return interp::cub_spline_integral<double>(a, b, ppoly); });
}

QNUM_API Qnum_f_ppoly* qnum_f_ppoly_create(int domain_dim, int target_dim, int order[], int num_breakpoints[], ...) {
    va_list ap;
    va_start(ap, num_breakpoints);
    Qnum_f_ppoly* p = frame::call<Qnum_f_ppoly*>("qnum_f_ppoly_create", [&] {
        return interp::ppoly_create<float>(domain_dim, target_dim, order, num_breakpoints, frame::Options(ap, 5));
    });
    va_end(ap);
    return p;
}

QNUM_API Qnum_d_ppoly* qnum_d_ppoly_create(int domain_dim, int target_dim, int order[], int num_breakpoints[], ...) {
    va_list ap;
    va_start(ap, num_breakpoints);
    Qnum_d_ppoly* p = frame::call<Qnum_d_ppoly*>("qnum_d_ppoly_create", [&] {
        return interp::ppoly_create<double>(domain_dim, target_dim, order, num_breakpoints, frame::Options(ap, 5));
    });
    va_end(ap);
    return p;
}

}  // extern "C"
