// Entry points of the dense linear system solvers and of the in-place transpose.
#include <complex>
#include <cstdarg>

#include "frame/frame.hpp"
#include "linsys/m1ran.hpp"
#include "linsys/solvers.hpp"

using namespace qnum;

namespace {

using cf = std::complex<float>;
using cd = std::complex<double>;

cf* as_cpp(qnum_f_complex* p) { return reinterpret_cast<cf*>(p); }
cd* as_cpp(qnum_d_complex* p) { return reinterpret_cast<cd*>(p); }
const cf* as_cpp(const qnum_f_complex* p) { return reinterpret_cast<const cf*>(p); }
const cd* as_cpp(const qnum_d_complex* p) { return reinterpret_cast<const cd*>(p); }
qnum_f_complex* as_c(cf* p) { return reinterpret_cast<qnum_f_complex*>(p); }
qnum_d_complex* as_c(cd* p) { return reinterpret_cast<qnum_d_complex*>(p); }

// The first optional argument of the solvers is argument 4 (after n, a and b).
constexpr int first_option = 4;

template <class T>
using Worker = T* (*)(int, T*, T*, frame::Options);

// The frame around a solver's worker; the wrappers below only convert the C types.
template <class T>
T* solve(const char* name, Worker<T> worker, int n, T* a, T* b, va_list ap) {
    return frame::call<T*>(name, [&] { return worker(n, a, b, frame::Options(ap, first_option)); });
}

}  // namespace

extern "C" {

QNUM_API float* qnum_f_lin_sol_gen(int n, float a[], float b[], ...) {
    va_list ap;
    va_start(ap, b);
    float* x = solve<float>("qnum_f_lin_sol_gen", linsys::lin_sol_gen<float>, n, a, b, ap);
    va_end(ap);
    return x;
}

QNUM_API double* qnum_d_lin_sol_gen(int n, double a[], double b[], ...) {
    va_list ap;
    va_start(ap, b);
    double* x = solve<double>("qnum_d_lin_sol_gen", linsys::lin_sol_gen<double>, n, a, b, ap);
    va_end(ap);
    return x;
}

QNUM_API qnum_f_complex* qnum_c_lin_sol_gen(int n, qnum_f_complex a[], qnum_f_complex b[], ...) {
    va_list ap;
    va_start(ap, b);
    cf* x = solve<cf>("qnum_c_lin_sol_gen", linsys::lin_sol_gen<cf>, n, as_cpp(a), as_cpp(b), ap);
    va_end(ap);
    return as_c(x);
}

QNUM_API qnum_d_complex* qnum_z_lin_sol_gen(int n, qnum_d_complex a[], qnum_d_complex b[], ...) {
    va_list ap;
    va_start(ap, b);
    cd* x = solve<cd>("qnum_z_lin_sol_gen", linsys::lin_sol_gen<cd>, n, as_cpp(a), as_cpp(b), ap);
    va_end(ap);
    return as_c(x);
}

// The numbered exports of the real general solvers push the solvers' public names.

QNUM_API float* qnum_20000(int n, float a[], float b[], ...) {
    va_list ap;
    va_start(ap, b);
    float* x = solve<float>("qnum_f_lin_sol_gen", linsys::lin_sol_gen<float>, n, a, b, ap);
    va_end(ap);
    return x;
}

QNUM_API double* qnum_20001(int n, double a[], double b[], ...) {
    va_list ap;
    va_start(ap, b);
    double* x = solve<double>("qnum_d_lin_sol_gen", linsys::lin_sol_gen<double>, n, a, b, ap);
    va_end(ap);
    return x;
}

QNUM_API float* qnum_f_lin_sol_posdef(int n, float a[], float b[], ...) {
    va_list ap;
    va_start(ap, b);
    float* x = solve<float>("qnum_f_lin_sol_posdef", linsys::lin_sol_posdef<float>, n, a, b, ap);
    va_end(ap);
    return x;
}

QNUM_API double* qnum_d_lin_sol_posdef(int n, double a[], double b[], ...) {
    va_list ap;
    va_start(ap, b);
    double* x = solve<double>("qnum_d_lin_sol_posdef", linsys::lin_sol_posdef<double>, n, a, b, ap);
    va_end(ap);
    return x;
}

QNUM_API qnum_f_complex* qnum_c_lin_sol_posdef(int n, qnum_f_complex a[], qnum_f_complex b[], ...) {
    va_list ap;
    va_start(ap, b);
    cf* x = solve<cf>("qnum_c_lin_sol_posdef", linsys::lin_sol_posdef<cf>, n, as_cpp(a), as_cpp(b), ap);
    va_end(ap);
    return as_c(x);
}

QNUM_API qnum_d_complex* qnum_z_lin_sol_posdef(int n, qnum_d_complex a[], qnum_d_complex b[], ...) {
    va_list ap;
    va_start(ap, b);
    cd* x = solve<cd>("qnum_z_lin_sol_posdef", linsys::lin_sol_posdef<cd>, n, as_cpp(a), as_cpp(b), ap);
    va_end(ap);
    return as_c(x);
}

QNUM_API float* qnum_f_lin_sol_nonnegdef(int n, float a[], float b[], ...) {
    va_list ap;
    va_start(ap, b);
    float* x = solve<float>("qnum_f_lin_sol_nonnegdef", linsys::lin_sol_nonnegdef<float>, n, a, b, ap);
    va_end(ap);
    return x;
}

QNUM_API double* qnum_d_lin_sol_nonnegdef(int n, double a[], double b[], ...) {
    va_list ap;
    va_start(ap, b);
    double* x = solve<double>("qnum_d_lin_sol_nonnegdef", linsys::lin_sol_nonnegdef<double>, n, a, b, ap);
    va_end(ap);
    return x;
}

QNUM_API void qnum_f_m1ran(int rows, int cols, const float a[], float b[]) {
    frame::call<void>("qnum_f_m1ran", [&] { linsys::m1ran(rows, cols, a, b); });
}

QNUM_API void qnum_d_m1ran(int rows, int cols, const double a[], double b[]) {
    frame::call<void>("qnum_d_m1ran", [&] { linsys::m1ran(rows, cols, a, b); });
}

QNUM_API void qnum_c_m1ran(int rows, int cols, const qnum_f_complex a[], qnum_f_complex b[]) {
    frame::call<void>("qnum_c_m1ran", [&] { linsys::m1ran(rows, cols, as_cpp(a), as_cpp(b)); });
}

QNUM_API void qnum_z_m1ran(int rows, int cols, const qnum_d_complex a[], qnum_d_complex b[]) {
    frame::call<void>("qnum_z_m1ran", [&] { linsys::m1ran(rows, cols, as_cpp(a), as_cpp(b)); });
}

}  // extern "C"
