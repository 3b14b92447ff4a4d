// Fuzz target: the numeric inputs of the special functions, the splines, the quadrature and
// the zero finder, in both precisions. The first byte picks the family and the precision;
// the rest becomes arguments: NaN, infinities, subnormals, huge and tiny magnitudes, repeated
// and unsorted abscissas, degenerate intervals and tolerances. Every call must come back;
// whatever it allocated is freed.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "fuzz_util.hpp"

// fuzz-sources: src/frame src/special src/interp src/quadrature src/zeros
// fuzz-options: -max_len=1024

namespace {

volatile double sink;

// The routines of one precision.
template <class T>
struct Api;

template <>
struct Api<double> {
    using Ppoly = Qnum_d_ppoly;
    using Complex = qnum_d_complex;
    static constexpr double (*unary[])(double) = {qnum_d_erf,   qnum_d_erfc,      qnum_d_erf_inverse,
                                                  qnum_d_erfc_inverse, qnum_d_gamma, qnum_d_log_gamma,
                                                  qnum_d9lgmc};
    static constexpr double (*binary[])(double, double) = {qnum_d_beta, qnum_d_log_beta, qnum_d_gamma_incomplete};
    static constexpr auto beta_incomplete = qnum_d_beta_incomplete;
    static constexpr auto erfe = qnum_z_erfe;
    static constexpr auto initds = qnum_initds;
    static constexpr auto csevl = qnum_dcsevl;
    static constexpr auto interp = qnum_d_cub_spline_interp;
    static constexpr auto interp_e_cnd = qnum_d_cub_spline_interp_e_cnd;
    static constexpr auto interp_shape = qnum_d_cub_spline_interp_shape;
    static constexpr auto smooth = qnum_d_cub_spline_smooth;
    static constexpr auto value = qnum_d_cub_spline_value;
    static constexpr auto integral = qnum_d_cub_spline_integral;
    static constexpr auto int_fcn = qnum_d_int_fcn;
    static constexpr auto int_fcn_sing = qnum_d_int_fcn_sing;
    static constexpr auto int_fcn_inf = qnum_d_int_fcn_inf;
    static constexpr auto int_fcn_trig = qnum_d_int_fcn_trig;
    static constexpr auto int_fcn_fourier = qnum_d_int_fcn_fourier;
    static constexpr auto int_fcn_cauchy = qnum_d_int_fcn_cauchy;
    static constexpr auto int_fcn_smooth = qnum_d_int_fcn_smooth;
    static constexpr auto int_fcn_sing_pts = qnum_d_int_fcn_sing_pts;
    static constexpr auto int_fcn_alg_log = qnum_d_int_fcn_alg_log;
    static constexpr auto zeros_fcn = qnum_d_zeros_fcn;
};

template <>
struct Api<float> {
    using Ppoly = Qnum_f_ppoly;
    using Complex = qnum_f_complex;
    static constexpr float (*unary[])(float) = {qnum_f_erf,   qnum_f_erfc,      qnum_f_erf_inverse,
                                                qnum_f_erfc_inverse, qnum_f_gamma, qnum_f_log_gamma,
                                                qnum_r9lgmc};
    static constexpr float (*binary[])(float, float) = {qnum_f_beta, qnum_f_log_beta, qnum_f_gamma_incomplete};
    static constexpr auto beta_incomplete = qnum_f_beta_incomplete;
    static constexpr auto erfe = qnum_c_erfe;
    static constexpr auto initds = qnum_inits;
    static constexpr auto csevl = qnum_csevl;
    static constexpr auto interp = qnum_f_cub_spline_interp;
    static constexpr auto interp_e_cnd = qnum_f_cub_spline_interp_e_cnd;
    static constexpr auto interp_shape = qnum_f_cub_spline_interp_shape;
    static constexpr auto smooth = qnum_f_cub_spline_smooth;
    static constexpr auto value = qnum_f_cub_spline_value;
    static constexpr auto integral = qnum_f_cub_spline_integral;
    static constexpr auto int_fcn = qnum_f_int_fcn;
    static constexpr auto int_fcn_sing = qnum_f_int_fcn_sing;
    static constexpr auto int_fcn_inf = qnum_f_int_fcn_inf;
    static constexpr auto int_fcn_trig = qnum_f_int_fcn_trig;
    static constexpr auto int_fcn_fourier = qnum_f_int_fcn_fourier;
    static constexpr auto int_fcn_cauchy = qnum_f_int_fcn_cauchy;
    static constexpr auto int_fcn_smooth = qnum_f_int_fcn_smooth;
    static constexpr auto int_fcn_sing_pts = qnum_f_int_fcn_sing_pts;
    static constexpr auto int_fcn_alg_log = qnum_f_int_fcn_alg_log;
    static constexpr auto zeros_fcn = qnum_f_zeros_fcn;
};

template <class T>
void special(FuzzedDataProvider& in) {
    using A = Api<T>;
    switch (in.ConsumeIntegralInRange<int>(0, 4)) {
    case 0:
        for (auto f : A::unary) sink = f(fuzz::value<T>(in));
        break;
    case 1:
        for (auto f : A::binary) sink = f(fuzz::value<T>(in), fuzz::value<T>(in));
        break;
    case 2: sink = A::beta_incomplete(fuzz::value<T>(in), fuzz::value<T>(in), fuzz::value<T>(in)); break;
    case 3: {
        typename A::Complex z{fuzz::value<T>(in), fuzz::value<T>(in)};
        z = A::erfe(z);
        sink = z.re + z.im;
        break;
    }
    default: {
        // A Chebyshev series of n terms (n just past the evaluator's limit is allowed).
        const int n = in.ConsumeIntegralInRange<int>(-1, 1002);
        std::vector<T> cs(static_cast<std::size_t>(std::max(n, 1)));
        for (auto& c : cs) c = in.remaining_bytes() ? fuzz::value<T>(in) : T(0.5);
        sink = A::initds(cs.data(), n, fuzz::value<T>(in));
        sink = A::csevl(fuzz::value<T>(in), cs.data(), n);
    }
    }
}

// Abscissas: any values, sorted or not, or an arithmetic run base + i h whose steps may
// vanish against the base; ordinates any values.
template <class T>
void fill_data(FuzzedDataProvider& in, std::vector<T>& x, std::vector<T>& f) {
    const int mode = in.ConsumeIntegralInRange<int>(0, 3);
    const T base = fuzz::value<T>(in), step = fuzz::value<T>(in);
    for (std::size_t i = 0; i < x.size(); ++i) {
        x[i] = mode < 2 ? fuzz::value<T>(in) : static_cast<T>(base + static_cast<T>(i) * step);
        f[i] = fuzz::value<T>(in);
    }
    if (mode == 1) std::sort(x.begin(), x.end());
    if (mode == 3 && x.size() > 2) std::swap(x[0], x[x.size() / 2]);
}

template <class T>
void splines(FuzzedDataProvider& in) {
    using A = Api<T>;
    const int ndata = in.ConsumeIntegralInRange<int>(-1, 40);
    std::vector<T> x(static_cast<std::size_t>(std::max(ndata, 0))), f(x.size()), w(x.size());
    fill_data(in, x, f);
    typename A::Ppoly* pp = nullptr;
    switch (in.ConsumeIntegralInRange<int>(0, 5)) {
    case 0: pp = A::interp(ndata, x.data(), f.data(), 0); break;
    case 1:
        pp = A::interp_e_cnd(ndata, x.data(), f.data(), QNUM_LEFT, in.ConsumeIntegralInRange<int>(-1, 3),
                             fuzz::number(in), QNUM_RIGHT, in.ConsumeIntegralInRange<int>(-1, 3), fuzz::number(in), 0);
        break;
    case 2: pp = A::interp_e_cnd(ndata, x.data(), f.data(), QNUM_PERIODIC, 0); break;
    case 3: pp = A::interp_shape(ndata, x.data(), f.data(), 0); break;
    case 4:
        pp = A::interp_shape(ndata, x.data(), f.data(), QNUM_CONCAVE, QNUM_CONCAVE_ITMAX,
                             in.ConsumeIntegralInRange<int>(-1, 30), 0);
        break;
    default:
        for (auto& v : w) v = fuzz::value<T>(in);
        if (in.ConsumeBool()) {
            pp = A::smooth(ndata, x.data(), f.data(), QNUM_WEIGHTS, w.data(), 0);
        } else {
            pp = A::smooth(ndata, x.data(), f.data(), QNUM_WEIGHTS, w.data(), QNUM_SMOOTHING_PAR, fuzz::number(in), 0);
        }
    }
    if (pp == nullptr) return;
    // The result is evaluated anywhere, in every derivative, on a grid and as an integral.
    for (int k = 0; k < 3; ++k) {
        sink = A::value(fuzz::value<T>(in), pp, QNUM_DERIV, in.ConsumeIntegralInRange<int>(-1, 5), 0);
    }
    std::vector<T> grid(static_cast<std::size_t>(in.ConsumeIntegralInRange<int>(1, 12)));
    for (auto& g : grid) g = fuzz::value<T>(in);
    if (in.ConsumeBool()) std::sort(grid.begin(), grid.end());
    std::vector<T> out(grid.size());
    sink = A::value(T(0), pp, QNUM_GRID_USER, static_cast<int>(grid.size()), grid.data(), out.data(), 0);
    T* fresh = nullptr;
    sink = A::value(T(0), pp, QNUM_DERIV, 1, QNUM_GRID, static_cast<int>(grid.size()), grid.data(), &fresh, 0);
    std::free(fresh);
    sink = A::integral(fuzz::value<T>(in), fuzz::value<T>(in), pp);
    std::free(pp);
}

// Cheap integrands with the usual troubles: smooth, peaked, singular, overflowing, NaN.
int integrand_kind = 0;

template <class T>
T integrand(T x) {
    switch (integrand_kind) {
    case 0: return (x - T(3)) * x + T(1);
    case 1: return std::exp(-x * x);
    case 2: return T(1) / std::sqrt(std::fabs(x));
    case 3: return std::exp(x);
    case 4: return x > T(0.3) ? T(1) : T(0);
    case 5: return x > T(0) ? std::numeric_limits<T>::quiet_NaN() : T(1);
    default: return std::log(std::fabs(x));
    }
}

template <class T>
void quadrature(FuzzedDataProvider& in) {
    using A = Api<T>;
    integrand_kind = in.ConsumeIntegralInRange<int>(0, 6);
    auto fcn = integrand<T>;
    const double err_abs = fuzz::number(in), err_rel = fuzz::number(in);
    const int max_sub = in.ConsumeIntegralInRange<int>(-1, 600);
    T err_est = 0;
    int evals = 0;
    const T a = fuzz::value<T>(in), b = fuzz::value<T>(in), c = fuzz::value<T>(in);
    const int code = in.ConsumeIntegralInRange<int>(-2, 5);
    switch (in.ConsumeIntegralInRange<int>(0, 8)) {
    case 0:
        sink = A::int_fcn(fcn, a, b, QNUM_RULE, in.ConsumeIntegralInRange<int>(0, 7), QNUM_ERR_ABS, err_abs,
                          QNUM_ERR_REL, err_rel, QNUM_MAX_SUBINTER, max_sub, QNUM_ERR_EST, &err_est, 0);
        break;
    case 1:
        sink = A::int_fcn_sing(fcn, a, b, QNUM_ERR_ABS, err_abs, QNUM_ERR_REL, err_rel, QNUM_MAX_SUBINTER, max_sub,
                               QNUM_N_EVALS, &evals, 0);
        break;
    case 2:
        sink = A::int_fcn_inf(fcn, a, code, QNUM_ERR_ABS, err_abs, QNUM_ERR_REL, err_rel, QNUM_MAX_SUBINTER,
                              max_sub, 0);
        break;
    case 3:
        sink = A::int_fcn_trig(fcn, c, code, a, b, QNUM_ERR_ABS, err_abs, QNUM_ERR_REL, err_rel, QNUM_MAX_SUBINTER,
                               max_sub, QNUM_MAX_MOMENTS, in.ConsumeIntegralInRange<int>(-1, 30), 0);
        break;
    case 4:
        sink = A::int_fcn_fourier(fcn, c, code, a, QNUM_ERR_ABS, err_abs, QNUM_MAX_SUBINTER, max_sub,
                                  QNUM_MAX_CYCLES, in.ConsumeIntegralInRange<int>(-1, 60), 0);
        break;
    case 5:
        sink = A::int_fcn_cauchy(fcn, a, b, c, QNUM_ERR_ABS, err_abs, QNUM_ERR_REL, err_rel, QNUM_MAX_SUBINTER,
                                 max_sub, 0);
        break;
    case 6: sink = A::int_fcn_smooth(fcn, a, b, QNUM_ERR_ABS, err_abs, QNUM_ERR_REL, err_rel, 0); break;
    case 7: {
        const int npoints = in.ConsumeIntegralInRange<int>(-1, 8);
        std::vector<T> points(static_cast<std::size_t>(std::max(npoints, 1)));
        for (auto& p : points) p = fuzz::value<T>(in);
        sink = A::int_fcn_sing_pts(fcn, a, b, npoints, points.data(), QNUM_ERR_ABS, err_abs, QNUM_ERR_REL,
                                   err_rel, QNUM_MAX_SUBINTER, max_sub, 0);
        break;
    }
    default:
        sink = A::int_fcn_alg_log(fcn, a, b, code, c, fuzz::value<T>(in), QNUM_ERR_ABS, err_abs, QNUM_ERR_REL,
                                  err_rel, QNUM_MAX_SUBINTER, max_sub, 0);
    }
    sink = err_est + static_cast<T>(evals);
}

// Functions with several, one, no or only NaN zeros.
template <class T>
T zero_of(T x) {
    switch (integrand_kind) {
    case 0: return (x - T(1)) * (x + T(2)) * (x - T(0.5));
    case 1: return std::exp(x) - T(2);
    case 2: return x * x + T(1);
    case 3: return std::numeric_limits<T>::quiet_NaN();
    default: return std::cos(x) * T(1e30);
    }
}

template <class T>
void zeros(FuzzedDataProvider& in) {
    using A = Api<T>;
    integrand_kind = in.ConsumeIntegralInRange<int>(0, 4);
    const int roots = in.ConsumeIntegralInRange<int>(-1, 6);
    std::vector<T> guess(static_cast<std::size_t>(std::max(roots, 1)));
    for (auto& g : guess) g = fuzz::value<T>(in);
    std::vector<int> info(guess.size());
    const int itmax = in.ConsumeIntegralInRange<int>(-1, 200);
    const double err_abs = fuzz::number(in), err_rel = fuzz::number(in), eta = fuzz::number(in);
    double eps = fuzz::number(in);
    // An iterate within eps of an earlier zero is pushed by eta until it is out: an eps huge
    // against eta makes that walk practically endless (fuzz/crashes/numeric-2), so keep the
    // walk short here.
    if (std::fabs(eps) > 1e4 * std::fabs(eta)) eps = eta;
    T* z = A::zeros_fcn(zero_of<T>, QNUM_NUM_ROOTS, roots, QNUM_MAX_EVALS, itmax, QNUM_XGUESS, guess.data(),
                        QNUM_ERR_ABS, err_abs, QNUM_ERR_REL, err_rel, QNUM_ETA, eta, QNUM_EPS, eps, QNUM_INFO_USER,
                        info.data(), 0);
    if (z != nullptr) {
        for (int i = 0; i < roots; ++i) sink = z[i] + static_cast<T>(info[static_cast<std::size_t>(i)]);
        std::free(z);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::quiet_errors();
    FuzzedDataProvider in(data, size);
    const auto pick = in.ConsumeIntegral<std::uint8_t>();
    const bool single = pick & 1;
    switch ((pick >> 1) % 4) {
    case 0: single ? special<float>(in) : special<double>(in); break;
    case 1: single ? splines<float>(in) : splines<double>(in); break;
    case 2: single ? quadrature<float>(in) : quadrature<double>(in); break;
    default: single ? zeros<float>(in) : zeros<double>(in);
    }
    return 0;
}
