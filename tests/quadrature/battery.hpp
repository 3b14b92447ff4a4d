// The quadrature battery of the tests: integrands, the routine and arguments of each case, and
// the committed reference data (mpmath values, GSL's evaluation and subinterval counts).
#pragma once

#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "qnummath.h"

namespace qnum::test {

template <class T> T b_exp(T x) { return std::exp(x); }
template <class T> T b_poly(T x) { return 3 * x * x - 2 * x + 1; }
template <class T> T b_peak(T x) { return 1 / ((x - T(0.3)) * (x - T(0.3)) + T(0.001)); }
template <class T> T b_xsin(T x) { return x * std::sin(30 * x); }
template <class T> T b_step(T x) { return x < T(1) / 3 ? T(1) : std::exp(x); }
template <class T> T b_x26log(T x) { return std::pow(x, T(2.6)) * std::log(1 / x); }
template <class T> T b_xm09log(T x) { return std::pow(x, T(-0.9)) * std::log(1 / x); }
template <class T> T b_xm05log(T x) { return std::pow(x, T(-0.5)) * std::log(1 / x); }
template <class T> T b_logsqrt(T x) { return std::log(x) / std::sqrt(x); }
template <class T> T b_lorentz(T x) { return 1 / (1 + x * x); }
template <class T> T b_x2exp(T x) { return x * x * std::exp(-x); }
template <class T> T b_log100(T x) { return std::log(x) / (1 + 100 * x * x); }
template <class T> T b_guardlog(T x) { return x == 0 ? T(0) : std::log(x); }
template <class T> T b_expm(T x) { return std::exp(-x); }
template <class T> T b_xlorentz(T x) { return x / (1 + x * x); }
template <class T> T b_cubic_c(T x) { return 1 / (5 * x * x * x + 6); }
template <class T> T b_gauss(T x) { return std::exp(-x * x); }
template <class T> T b_sqrt(T x) { return std::sqrt(x); }
template <class T> T b_sqrtshift(T x) { return std::sqrt(x + T(0.01)); }
template <class T> T b_qagp(T x) { return x * x * x * std::log(std::abs((x * x - 1) * (x * x - 2))); }
template <class T> T b_one(T) { return 1; }
template <class T> T b_cos(T x) { return std::cos(x); }
template <class T> T b_xm099(T x) { return std::pow(x, T(-0.99)); }
template <class T> T b_twoends(T x) { return 1 / std::sqrt(x) + 1 / std::sqrt(1 - x); }
template <class T> T b_log1m(T x) { return x == 1 ? T(0) : std::log(1 - x); }
template <class T> T b_isqpk(T x) { return x == 0 ? T(0) : std::exp(-x / 4) / std::sqrt(x) + 1 / ((x - 20) * (x - 20) + T(0.01)); }
template <class T> T b_isqpk2(T x) { return x == 0 ? T(0) : 1 / (std::sqrt(x) * (1 + x)) + 1 / ((x - 30) * (x - 30) + T(0.1)); }

enum class Kind { qag, qags, qagi, qawo, qawf, qawc, qng, qagp, qaws };

template <class T>
struct Case {
    const char* id;   // the case in data/quadrature/gsl_counts.txt
    const char* ref;  // its exact value in data/quadrature/reference.txt
    Kind kind;
    T (*f)(T);
    double a, b, c;   // c: the Cauchy point, omega, or the bound
    int code;         // rule, interval code or weight code
    double alpha, beta;
    int expected_code;  // the error the case raises (0: none)
    int limit = 0;      // max_subinter (and Fourier cycles) when not the default
    double rel = 0;     // with a limit: err_rel, with err_abs 0 (0: the defaults)
};

template <class T>
std::vector<Case<T>> battery() {
    const double pi = 3.14159265358979323846;
    return {
        {"qag_exp_r1", "qag_exp", Kind::qag, b_exp<T>, 0, 1, 0, 1, 0, 0, 0},
        {"qag_exp_r2", "qag_exp", Kind::qag, b_exp<T>, 0, 1, 0, 2, 0, 0, 0},
        {"qag_exp_r3", "qag_exp", Kind::qag, b_exp<T>, 0, 1, 0, 3, 0, 0, 0},
        {"qag_exp_r4", "qag_exp", Kind::qag, b_exp<T>, 0, 1, 0, 4, 0, 0, 0},
        {"qag_exp_r5", "qag_exp", Kind::qag, b_exp<T>, 0, 1, 0, 5, 0, 0, 0},
        {"qag_exp_r6", "qag_exp", Kind::qag, b_exp<T>, 0, 1, 0, 6, 0, 0, 0},
        {"qag_poly", "qag_poly", Kind::qag, b_poly<T>, 0, 1, 0, 2, 0, 0, 0},
        {"qag_peak", "qag_peak", Kind::qag, b_peak<T>, 0, 1, 0, 2, 0, 0, 0},
        {"qag_xsin", "qag_xsin", Kind::qag, b_xsin<T>, 0, 2 * pi, 0, 6, 0, 0, 0},
        {"qag_step", "qag_step", Kind::qag, b_step<T>, 0, 1, 0, 1, 0, 0, 0},
        {"qag_x26log", "x26log", Kind::qag, b_x26log<T>, 0, 1, 0, 2, 0, 0, 0},
        // Bisection hardly lowers the error next to this singularity: the limit, not roundoff.
        {"qag_xm099", "xm099", Kind::qag, b_xm099<T>, 0, 1, 0, 2, 0, 0, sizeof(T) == 8 ? 4007 : 4009},
        {"qags_x26log", "x26log", Kind::qags, b_x26log<T>, 0, 1, 0, 0, 0, 0, 0},
        {"qags_xm09log", "xm09log", Kind::qags, b_xm09log<T>, 0, 1, 0, 0, 0, 0, 0},
        {"qags_xm05log", "xm05log", Kind::qags, b_xm05log<T>, 0, 1, 0, 0, 0, 0, 0},
        {"qags_logsqrt", "logsqrt", Kind::qags, b_logsqrt<T>, 0, 1, 0, 0, 0, 0, 0},
        {"qags_peak", "qag_peak", Kind::qags, b_peak<T>, 0, 1, 0, 0, 0, 0, 0},
        {"qags_twoends", "twoends", Kind::qags, b_twoends<T>, 0, 1, 0, 0, 0, 0, 0},
        {"qagi_lorentz_2", "qagi_lorentz_2", Kind::qagi, b_lorentz<T>, 0, 0, 0, 2, 0, 0, 0},
        {"qagi_x2exp_1", "qagi_x2exp_1", Kind::qagi, b_x2exp<T>, 0, 0, 0, 1, 0, 0, 0},
        {"qagi_log100_1", "qagi_log100_1", Kind::qagi, b_log100<T>, 0, 0, 0, 1, 0, 0, 0},
        {"qagi_lorentz_m1", "qagi_lorentz_m1", Kind::qagi, b_lorentz<T>, 0, 0, 1, -1, 0, 0, 0},
        {"qawo_log_sin", "qawo_log_sin", Kind::qawo, b_guardlog<T>, 0, 1, 10 * pi, 2, 0, 0, 0},
        {"qawo_exp_cos", "qawo_exp_cos", Kind::qawo, b_expm<T>, 0, 2, 20, 1, 0, 0, 0},
        {"qawo_lorentz_cos", "qawo_lorentz_cos", Kind::qawo, b_lorentz<T>, -1, 4, 3, 1, 0, 0, 0},
        {"qawo_peak_sym", "qawo_peak_sym", Kind::qawo, b_peak<T>, -1, 1, 3, 1, 0, 0, 0},
        {"qawo_peak_sin", "qawo_peak_sin", Kind::qawo, b_peak<T>, 0, 1, 40, 2, 0, 0, 0},
        {"qawo_log1m_sin", "qawo_log1m_sin", Kind::qawo, b_log1m<T>, -1, 1, 10 * pi, 2, 0, 0, 0},
        {"qawf_lorentz_cos", "qawf_lorentz_cos", Kind::qawf, b_lorentz<T>, 0, 0, 1, 1, 0, 0, 0},
        {"qawf_xlorentz_sin", "qawf_xlorentz_sin", Kind::qawf, b_xlorentz<T>, 0, 0, 1, 2, 0, 0, 0},
        {"qawf_expm_sin", "qawf_expm_sin", Kind::qawf, b_expm<T>, 0, 0, 2, 2, 0, 0, 0},
        {"qawc_cubic", "qawc_cubic", Kind::qawc, b_cubic_c<T>, -1, 5, 0, 0, 0, 0, 0},
        {"qawc_exp_rev", "qawc_exp_rev", Kind::qawc, b_exp<T>, 1, -1, 0.5, 0, 0, 0, 0},
        {"qawc_far", "qawc_far", Kind::qawc, b_lorentz<T>, 0, 1, 3, 0, 0, 0, 0},
        {"qng_exp", "qag_exp", Kind::qng, b_exp<T>, 0, 1, 0, 0, 0, 0, 0},
        {"qng_gauss", "qng_gauss", Kind::qng, b_gauss<T>, 0, 3, 0, 0, 0, 0, 0},
        // The 87-point rule reaches single precision's tolerance on sqrt(x), not double's.
        {"qng_sqrt", "qng_sqrt", Kind::qng, b_sqrt<T>, 0, 1, 0, 0, 0, 0, sizeof(T) == 8 ? 4020 : 0},
        {"qng_poly", "qag_poly", Kind::qng, b_poly<T>, 0, 1, 0, 0, 0, 0, 0},
        {"qng_sqrtshift", "qng_sqrtshift", Kind::qng, b_sqrtshift<T>, 0, 3, 0, 0, 0, 0, 0},
        {"qagp_cubiclog", "qagp_cubiclog", Kind::qagp, b_qagp<T>, 0, 3, 0, 0, 0, 0, 0},
        {"qagp_step", "qag_step", Kind::qagp, b_step<T>, 0, 1, 0, 0, 0, 0, 0},
        {"qagp_xsin", "qag_xsin", Kind::qagp, b_xsin<T>, 0, 2 * pi, 0, 0, 0, 0, 0},
        {"qaws_one_w1", "qaws_one_w1", Kind::qaws, b_one<T>, 0, 1, 0, 1, -0.5, -0.5, 0},
        {"qaws_cos_w2", "qaws_cos_w2", Kind::qaws, b_cos<T>, 0, 1, 0, 2, 0, 0, 0},
        {"qaws_exp_w3", "qaws_exp_w3", Kind::qaws, b_expm<T>, 0, 2, 0, 3, 0.5, -0.3, 0},
        {"qaws_exp_w4", "qaws_exp_w4", Kind::qaws, b_expm<T>, 0, 1, 0, 4, -0.5, 0.3, 0},
        {"qaws_peak_w1", "qaws_peak_w1", Kind::qaws, b_peak<T>, 0, 1, 0, 1, -0.5, 0, 0},
        {"qaws_peak_right", "qaws_peak_right", Kind::qaws, b_peak<T>, 0, 0.5, 0, 1, -0.5, 0, 0},
        {"qaws_peak_w4", "qaws_peak_w4", Kind::qaws, b_peak<T>, 0, 1, 0, 4, 0.5, -0.5, 0},
        // Runs cut short by a small limit: the end game of each step near its limit.
        {"qag_peak_lim3", "qag_peak", Kind::qag, b_peak<T>, 0, 1, 0, 2, 0, 0, 4007, 3},
        {"qags_xm09log_lim6", "xm09log", Kind::qags, b_xm09log<T>, 0, 1, 0, 0, 0, 0, 4007, 6},
        {"qags_logsqrt_lim5", "logsqrt", Kind::qags, b_logsqrt<T>, 0, 1, 0, 0, 0, 0, 4007, 5},
        {"qagi_log100_lim8", "qagi_log100_1", Kind::qagi, b_log100<T>, 0, 0, 0, 1, 0, 0, 4007, 8},
        {"qagp_cubiclog_lim13", "qagp_cubiclog", Kind::qagp, b_qagp<T>, 0, 3, 0, 0, 0, 0, 4007, 13},
        // Far below what the integrand's rounding allows: roundoff stops the extrapolation.
        {"qagp_cubiclog_tight", "qagp_cubiclog", Kind::qagp, b_qagp<T>, 0, 3, 0, 0, 0, 0,
         sizeof(T) == 8 ? 4018 : 4008, 500, 1e-14},
        {"qag_xsin_tight", "qag_xsin", Kind::qag, b_xsin<T>, 0, 2 * pi, 0, 1, 0, 0, 4008, 500, 1.2e-14},
        {"qags_xsin_tight", "qag_xsin", Kind::qags, b_xsin<T>, 0, 2 * pi, 0, 0, 0, 0, 4008, 499, 1.2e-14},
        {"qagp_cubiclog_lim17", "qagp_cubiclog", Kind::qagp, b_qagp<T>, 0, 3, 0, 0, 0, 0, 4007, 17},
        {"qawo_log_sin_lim6", "qawo_log_sin", Kind::qawo, b_guardlog<T>, 0, 1, 10 * pi, 2, 0, 0, 4007, 6},
        {"qawc_cubic_lim4", "qawc_cubic", Kind::qawc, b_cubic_c<T>, -1, 5, 0, 0, 0, 0, 4007, 4},
        {"qaws_peak_w1_lim6", "qaws_peak_w1", Kind::qaws, b_peak<T>, 0, 1, 0, 1, -0.5, 0, sizeof(T) == 8 ? 4007 : 0, 6},
        {"qawf_lorentz_cos_lim4", "qawf_lorentz_cos", Kind::qawf, b_lorentz<T>, 0, 0, 1, 1, 0, 0, 4021, 4},
        {"qawf_xlorentz_sin_lim5", "qawf_xlorentz_sin", Kind::qawf, b_xlorentz<T>, 0, 0, 1, 2, 0, 0, 4021, 5},
        {"qawf_expm_sin_lim3", "qawf_expm_sin", Kind::qawf, b_expm<T>, 0, 0, 2, 2, 0, 0, 4021, 3},
        {"qawf_isqpk_cos_lim6", "qawf_isqpk_cos", Kind::qawf, b_isqpk<T>, 0, 0, 1, 1, 0, 0, 4022, 6},  // cycle 1 misses
        {"qawf_isqpk2_sin_lim10", "qawf_isqpk2_sin", Kind::qawf, b_isqpk2<T>, 0, 0, 1, 2, 0, 0, 4021, 10},
    };
}

// The public routines of one precision.
template <class T>
struct Api;

#define QNUM_QUADRATURE_API(T, L)                                                  \
    template <>                                                                    \
    struct Api<T> {                                                                \
        static constexpr auto fcn = qnum_##L##_int_fcn;                            \
        static constexpr auto sing = qnum_##L##_int_fcn_sing;                      \
        static constexpr auto inf = qnum_##L##_int_fcn_inf;                        \
        static constexpr auto trig = qnum_##L##_int_fcn_trig;                      \
        static constexpr auto fourier = qnum_##L##_int_fcn_fourier;                \
        static constexpr auto cauchy = qnum_##L##_int_fcn_cauchy;                  \
        static constexpr auto smooth = qnum_##L##_int_fcn_smooth;                  \
        static constexpr auto sing_pts = qnum_##L##_int_fcn_sing_pts;              \
        static constexpr auto alg_log = qnum_##L##_int_fcn_alg_log;                \
    };
QNUM_QUADRATURE_API(float, f)
QNUM_QUADRATURE_API(double, d)
#undef QNUM_QUADRATURE_API

// What a call returned through the options.
template <class T>
struct Counts {
    T err_est = -1;
    int n_evals = -1;
    int n_subinter = -1;
};

// Runs one case with the default tolerances.
template <class T>
T run_case(const Case<T>& k, Counts<T>& out) {
    using A = Api<T>;
    const T a = T(k.a), b = T(k.b), c = T(k.c);
    // The limit, when one is given, ends every option list; a 0 in its place ends it early.
    // The reference port's Fourier limit bounds the cycles, and one short, each cycle's lists.
    const int lim = k.limit > 0 ? QNUM_MAX_SUBINTER : 0, cyc = k.limit > 0 ? QNUM_MAX_CYCLES : 0;
    const int rel = k.rel > 0 ? QNUM_ERR_REL : 0;
    // The counts, then the limit and the tolerance: every member but the non-adaptive one.
#define QNUM_COUNTS QNUM_ERR_EST, &out.err_est, QNUM_N_EVALS, &out.n_evals, QNUM_N_SUBINTER, &out.n_subinter
#define QNUM_LIMITS lim, k.limit, rel, k.rel, QNUM_ERR_ABS, 0.0, 0
    switch (k.kind) {
    case Kind::qag: return A::fcn(k.f, a, b, QNUM_RULE, k.code, QNUM_COUNTS, QNUM_LIMITS);
    case Kind::qags: return A::sing(k.f, a, b, QNUM_COUNTS, QNUM_LIMITS);
    case Kind::qagi: return A::inf(k.f, c, k.code, QNUM_COUNTS, QNUM_LIMITS);
    case Kind::qawo: return A::trig(k.f, c, k.code, a, b, QNUM_COUNTS, QNUM_LIMITS);
    case Kind::qawf: return A::fourier(k.f, c, k.code, a, QNUM_COUNTS, lim, k.limit - 1, cyc, k.limit, 0);
    case Kind::qawc: return A::cauchy(k.f, a, b, c, QNUM_COUNTS, QNUM_LIMITS);
    case Kind::qng: return A::smooth(k.f, a, b, QNUM_ERR_EST, &out.err_est, QNUM_N_EVALS, &out.n_evals, 0);
    case Kind::qagp: {
        const T pts[2] = {T(1), std::sqrt(T(2))};
        const T step[1] = {T(1) / 3};
        const bool two = k.f == b_qagp<T>;
        return A::sing_pts(k.f, a, b, two ? 2 : 1, two ? pts : step, QNUM_COUNTS, QNUM_LIMITS);
    }
    case Kind::qaws: return A::alg_log(k.f, a, b, k.code, T(k.alpha), T(k.beta), QNUM_COUNTS, QNUM_LIMITS);
    }
#undef QNUM_COUNTS
#undef QNUM_LIMITS
    return 0;
}

// "id rest of line" records of a committed data file, comments skipped.
inline std::map<std::string, std::string> read_records(const std::string& name) {
    std::map<std::string, std::string> out;
    std::ifstream in(std::string(QNUM_TEST_DATA_DIR) + "/quadrature/" + name);
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream s(line);
        std::string id, rest;
        s >> id;
        std::getline(s, rest);
        out[id] = rest;
    }
    return out;
}

}  // namespace qnum::test
