// Entry points of the special functions: Chebyshev machinery, error functions, gamma and beta.
#include <complex>

#include "frame/frame.hpp"
#include "special/functions.hpp"

using namespace qnum;

namespace {

// A result that starts as the quiet NaN, so a routine that does not run (an error pending on
// entry, a trapped fault) returns NaN rather than zero.
template <class T>
struct Slot {
    T v = special::Mach<T>::nan();
};

template <class T, class... A>
T call(const char* name, T (*worker)(A...), A... args) {
    return frame::call<Slot<T>>(name, [&] { return Slot<T>{worker(args...)}; }).v;
}

template <class T, class C>
C erfe(const char* name, C z) {
    Slot<T> re, im;
    frame::call<void>(name, [&] {
        const std::complex<T> w = special::erfe<T>({z.re, z.im});
        re.v = w.real();
        im.v = w.imag();
    });
    return C{re.v, im.v};
}

}  // namespace

extern "C" {

// ---- Chebyshev machinery and the log-gamma correction ----

QNUM_API int qnum_inits(const float cs[], int n, float eta) {
    return frame::call<int>("qnum_inits", [&] {
        return check::array(cs, "cs") ? special::inits(cs, n, eta, nullptr) : 0;
    });
}

QNUM_API int qnum_initds(const double cs[], int n, double eta) {
    return frame::call<int>("qnum_initds", [&] {
        return check::array(cs, "cs") ? special::inits(cs, n, static_cast<float>(eta), nullptr) : 0;
    });
}

QNUM_API float qnum_csevl(float x, const float cs[], int n) {
    return frame::call<Slot<float>>("qnum_csevl", [&] {
        return Slot<float>{check::array(cs, "cs") ? special::csevl(x, cs, n, nullptr) : qnum_amach(6)};
    }).v;
}

QNUM_API double qnum_dcsevl(double x, const double cs[], int n) {
    return frame::call<Slot<double>>("qnum_dcsevl", [&] {
        return Slot<double>{check::array(cs, "cs") ? special::csevl(x, cs, n, nullptr) : qnum_dmach(6)};
    }).v;
}

QNUM_API float qnum_r9lgmc(float x) {
    return frame::call<Slot<float>>("qnum_r9lgmc", [&] {
        return Slot<float>{static_cast<float>(special::r9lgmc<float, double>(x, nullptr))};
    }).v;
}

QNUM_API double qnum_d9lgmc(double x) {
    return frame::call<Slot<double>>("qnum_d9lgmc", [&] {
        return Slot<double>{static_cast<double>(special::r9lgmc<double, long double>(x, nullptr))};
    }).v;
}

// ---- error functions ----

QNUM_API float qnum_f_erf(float x) { return call("qnum_f_erf", special::erf<float>, x); }
QNUM_API double qnum_d_erf(double x) { return call("qnum_d_erf", special::erf<double>, x); }
QNUM_API float qnum_f_erfc(float x) { return call("qnum_f_erfc", special::erfc<float>, x); }
QNUM_API double qnum_d_erfc(double x) { return call("qnum_d_erfc", special::erfc<double>, x); }
QNUM_API float qnum_f_erf_inverse(float x) { return call("qnum_f_erf_inverse", special::erf_inverse<float>, x); }
QNUM_API double qnum_d_erf_inverse(double x) { return call("qnum_d_erf_inverse", special::erf_inverse<double>, x); }
QNUM_API float qnum_f_erfc_inverse(float x) { return call("qnum_f_erfc_inverse", special::erfc_inverse<float>, x); }
QNUM_API double qnum_d_erfc_inverse(double x) {
    return call("qnum_d_erfc_inverse", special::erfc_inverse<double>, x);
}
QNUM_API qnum_f_complex qnum_c_erfe(qnum_f_complex z) { return erfe<float>("qnum_c_erfe", z); }
QNUM_API qnum_d_complex qnum_z_erfe(qnum_d_complex z) { return erfe<double>("qnum_z_erfe", z); }

// ---- gamma and beta families ----

QNUM_API float qnum_f_gamma(float x) { return call("qnum_f_gamma", special::gamma<float>, x); }
QNUM_API double qnum_d_gamma(double x) { return call("qnum_d_gamma", special::gamma<double>, x); }
QNUM_API float qnum_f_log_gamma(float x) { return call("qnum_f_log_gamma", special::log_gamma<float>, x); }
QNUM_API double qnum_d_log_gamma(double x) { return call("qnum_d_log_gamma", special::log_gamma<double>, x); }
QNUM_API float qnum_f_beta(float a, float b) { return call("qnum_f_beta", special::beta<float>, a, b); }
QNUM_API double qnum_d_beta(double a, double b) { return call("qnum_d_beta", special::beta<double>, a, b); }
QNUM_API float qnum_f_log_beta(float a, float b) { return call("qnum_f_log_beta", special::log_beta<float>, a, b); }
QNUM_API double qnum_d_log_beta(double a, double b) {
    return call("qnum_d_log_beta", special::log_beta<double>, a, b);
}
QNUM_API float qnum_f_gamma_incomplete(float a, float x) {
    return call("qnum_f_gamma_incomplete", special::gamma_incomplete<float>, a, x);
}
QNUM_API double qnum_d_gamma_incomplete(double a, double x) {
    return call("qnum_d_gamma_incomplete", special::gamma_incomplete<double>, a, x);
}
QNUM_API float qnum_f_beta_incomplete(float x, float a, float b) {
    return call("qnum_f_beta_incomplete", special::beta_incomplete<float>, x, a, b);
}
QNUM_API double qnum_d_beta_incomplete(double x, double a, double b) {
    return call("qnum_d_beta_incomplete", special::beta_incomplete<double>, x, a, b);
}

}  // extern "C"
