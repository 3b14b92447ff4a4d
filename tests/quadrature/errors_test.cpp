// Argument checks, option handling and outcome errors of the quadrature routines; the
// caller's lists, the data-pointer integrand, the user-code markers and a faulting integrand.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <functional>
#include <numeric>
#include <sys/mman.h>
#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif
#include <vector>

#include "battery.hpp"
#include "frame/context.hpp"
#include "frame/prec.hpp"
#include "qnum_test.hpp"

namespace qnum::test {
namespace {

template <class T>
class QuadratureErrors : public ::testing::Test {
protected:
    QuietErrors quiet;
};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(QuadratureErrors, Precisions);

template <class T> T inv_dist(T x) { return 1 / std::abs(x - T(1) / 3); }
template <class T> T x_m105(T x) { return std::pow(x, T(-1.05)); }

struct ErrorCase {
    const char* what;
    int type, code;
    int int_slot1;     // INT_MIN: not checked
    int position = 0;  // of an unknown option, in int slot 2 (0: not checked)
};

// One row per check: the call, and the error it must raise with NaN as the result.
TYPED_TEST(QuadratureErrors, BadArgumentsRaiseTheirErrorAndReturnNaN) {
    using T = TypeParam;
    using A = Api<T>;
    T (*f)(T) = b_exp<T>;
    const T pts_out[1] = {T(2)};
    T est = 0;
    const int none = INT_MIN;
    const std::vector<std::pair<ErrorCase, std::function<T()>>> rows = {
        {{"max_subinter 0", 5, 4001, 0}, [&] { return A::fcn(f, T(0), T(1), QNUM_MAX_SUBINTER, 0, 0); }},
        {{"rule 0", 5, 4002, 0}, [&] { return A::fcn(f, T(0), T(1), QNUM_RULE, 0, 0); }},
        {{"rule 7", 5, 4002, 7}, [&] { return A::fcn(f, T(0), T(1), QNUM_RULE, 7, 0); }},
        {{"err_abs < 0", 5, 4003, none}, [&] { return A::fcn(f, T(0), T(1), QNUM_ERR_ABS, -1e-3, 0); }},
        {{"err_rel < 0", 5, 4004, none}, [&] { return A::sing(f, T(0), T(1), QNUM_ERR_REL, -1e-3, 0); }},
        {{"both zero", 5, 4005, none}, [&] { return A::smooth(f, T(0), T(1), QNUM_ERR_ABS, 0.0, QNUM_ERR_REL, 0.0, 0); }},
        {{"both zero, adaptive", 5, 4005, none}, [&] { return A::inf(f, T(0), 1, QNUM_ERR_ABS, 0.0, QNUM_ERR_REL, 0.0, 0); }},
        {{"err_rel 1", 5, 4006, none}, [&] { return A::smooth(f, T(0), T(1), QNUM_ERR_REL, 1.0, 0); }},
        {{"err_rel 1 by address", 5, 4006, none}, [&] {
             T one = 1;
             return A::cauchy(f, T(0), T(1), T(0.5), QNUM_ERR_REL_ADR, &one, 0);
         }},
        {{"err_abs < 0 by address", 5, 4003, none}, [&] {
             T neg = -1;
             return A::smooth(f, T(0), T(1), QNUM_ERR_ABS_ADR, &neg, 0);
         }},
        {{"no integrand", 5, 6002, none}, [&] { return A::fcn(nullptr, T(0), T(1), 0); }},
        {{"null data integrand", 5, 6002, none},
         [&] { return A::sing(f, T(0), T(1), QNUM_FCN_W_DATA, static_cast<T (*)(T, void*)>(nullptr), nullptr, 0); }},
        {{"unknown option", 5, 103, 99999, 4}, [&] { return A::fcn(f, T(0), T(1), 99999, 0); }},
        {{"unknown option, sing", 5, 103, 99999, 4}, [&] { return A::sing(f, T(0), T(1), 99999, 0); }},
        {{"unknown option, inf", 5, 103, 99999, 4}, [&] { return A::inf(f, T(0), 1, 99999, 0); }},
        {{"unknown option, trig", 5, 103, 99999, 6}, [&] { return A::trig(f, T(1), 1, T(0), T(1), 99999, 0); }},
        {{"unknown option, fourier", 5, 103, 99999, 5}, [&] { return A::fourier(f, T(1), 1, T(0), 99999, 0); }},
        {{"unknown option, cauchy", 5, 103, 99999, 5}, [&] { return A::cauchy(f, T(0), T(1), T(0.5), 99999, 0); }},
        {{"unknown option, smooth", 5, 103, 99999, 4}, [&] { return A::smooth(f, T(0), T(1), 99999, 0); }},
        {{"unknown option, sing_pts", 5, 103, 99999, 6}, [&] { return A::sing_pts(f, T(0), T(1), 0, pts_out, 99999, 0); }},
        {{"unknown option, alg_log", 5, 103, 99999, 7}, [&] { return A::alg_log(f, T(0), T(1), 1, T(0), T(0), 99999, 0); }},
        {{"rule is int_fcn's only", 5, 103, QNUM_RULE}, [&] { return A::sing(f, T(0), T(1), QNUM_RULE, 2, 0); }},
        {{"smooth takes no lists", 5, 103, QNUM_MAX_SUBINTER},
         [&] { return A::smooth(f, T(0), T(1), QNUM_MAX_SUBINTER, 10, 0); }},
        {{"moments are the oscillatory routines' only", 5, 103, QNUM_MAX_MOMENTS},
         [&] { return A::cauchy(f, T(0), T(1), T(0.5), QNUM_MAX_MOMENTS, 5, 0); }},
        {{"null err_est", 5, 104, none},
         [&] { return A::fcn(f, T(0), T(1), QNUM_ERR_EST, static_cast<T*>(nullptr), 0); }},
        {{"interval code 0", 5, 4010, 0}, [&] { return A::inf(f, T(0), 0, 0); }},
        {{"trig weight 3", 5, 4011, 3}, [&] { return A::trig(f, T(1), 3, T(0), T(1), 0); }},
        {{"fourier weight 0", 5, 4011, 0}, [&] { return A::fourier(f, T(1), 0, T(0), 0); }},
        {{"alg_log weight 5", 5, 4011, 5},
         [&] { return A::alg_log(f, T(0), T(1), 5, T(0), T(0), 0); }},
        {{"moment limit 0", 5, 4014, 0},
         [&] { return A::trig(f, T(1), 1, T(0), T(1), QNUM_MAX_MOMENTS, 0, 0); }},
        {{"cycle limit 2", 5, 4015, 2}, [&] { return A::fourier(f, T(1), 1, T(0), QNUM_MAX_CYCLES, 2, 0); }},
        {{"fourier with relative tolerance only", 5, 4023, none},
         [&] { return A::fourier(f, T(1), 1, T(0), QNUM_ERR_ABS, 0.0, QNUM_ERR_REL, 1e-3, 0); }},
        {{"c at a", 5, 4012, none}, [&] { return A::cauchy(f, T(0), T(1), T(0), 0); }},
        {{"c at b", 5, 4012, none}, [&] { return A::cauchy(f, T(0), T(1), T(1), 0); }},
        {{"npoints < 0", 5, 4016, -1}, [&] { return A::sing_pts(f, T(0), T(1), -1, pts_out, 0); }},
        {{"point outside", 5, 4017, 0}, [&] { return A::sing_pts(f, T(0), T(1), 1, pts_out, 0); }},
        {{"points missing", 5, 150, none}, [&] { return A::sing_pts(f, T(0), T(1), 1, nullptr, 0); }},
        {{"max_subinter = npoints", 5, 4001, 1},
         [&] { return A::sing_pts(f, T(0), T(3), 1, pts_out, QNUM_MAX_SUBINTER, 1, 0); }},
        {{"alpha = -1", 5, 4013, none}, [&] { return A::alg_log(f, T(0), T(1), 1, T(-1), T(0), 0); }},
        {{"beta NaN", 5, 4013, none}, [&] { return A::alg_log(f, T(0), T(1), 1, T(0), std::numeric_limits<T>::quiet_NaN(), 0); }},
        {{"alg_log a = b", 5, 4024, none}, [&] { return A::alg_log(f, T(1), T(1), 1, T(0), T(0), 0); }},
        {{"alg_log max_subinter 1", 5, 4001, 1}, [&] { return A::alg_log(f, T(0), T(1), 1, T(0), T(0), QNUM_MAX_SUBINTER, 1, 0); }},
        {{"limit reached", 4, 4007, 3}, [&] { return A::fcn(b_peak<T>, T(0), T(1), QNUM_MAX_SUBINTER, 3, QNUM_ERR_EST, &est, 0); }},
    };
    for (const auto& [k, call] : rows) {
        SCOPED_TRACE(k.what);
        const T r = call();
        EXPECT_TRUE(std::isnan(r)) << r;
        EXPECT_EQ(last_type(), k.type);
        EXPECT_EQ(last_code(), k.code);
        if (k.int_slot1 != none) { EXPECT_EQ(int_slot(1), k.int_slot1); }
        if (k.position != 0) { EXPECT_EQ(int_slot(2), k.position); }
    }
}

// Warnings keep the result: roundoff at an unreachable relative tolerance, a subinterval too
// small to split at a non-integrable point, a divergent integral under extrapolation.
TYPED_TEST(QuadratureErrors, WarningOutcomesStillReturnAFiniteResult) {
    using T = TypeParam;
    using A = Api<T>;
    struct Row { const char* what; int code; std::function<T()> call; };
    const std::vector<Row> rows = {
        {"roundoff", 4008, [] { return A::fcn(b_exp<T>, T(0), T(1), QNUM_ERR_ABS, 0.0, QNUM_ERR_REL, 1e-30, 0); }},
        {"too small to split", 4009, [] { return A::fcn(inv_dist<T>, T(0), T(1), QNUM_MAX_SUBINTER, 5000, 0); }},
        {"too small to split, extrapolating", 4009, [] { return A::sing(inv_dist<T>, T(0), T(1), QNUM_MAX_SUBINTER, 5000, 0); }},
        {"divergent", 4019, [] { return A::sing(x_m105<T>, T(0), T(1), 0); }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const T r = row.call();
        EXPECT_EQ(last_type(), 3);
        EXPECT_EQ(last_code(), row.code);
        EXPECT_TRUE(std::isfinite(r));
    }
    // The bad subinterval is named: it holds the point where 1/|x - 1/3| blows up.
    A::fcn(inv_dist<T>, T(0), T(1), QNUM_MAX_SUBINTER, 5000, 0);
    EXPECT_LE(real_slot(1), 1.0 / 3);
    EXPECT_GE(real_slot(2), 1.0 / 3);
    EXPECT_LT(real_slot(2) - real_slot(1), 100 * Prec<T>::eps());
}

// The caller's error and order lists: the errors add up to the estimate, and the order list
// is a permutation of the subintervals by decreasing error.
TYPED_TEST(QuadratureErrors, CallerListsHoldTheErrorsAndTheirOrder) {
    using T = TypeParam;
    using A = Api<T>;
    const int limit = 50;
    std::vector<T> errs(limit, T(-1));
    std::vector<int> order(limit, -1);
    T est = 0;
    int nsub = 0;
    const T pts[1] = {T(1) / 3};
#define QNUM_LISTS QNUM_MAX_SUBINTER, limit, QNUM_ERR_LIST_USER, errs.data(), QNUM_ORDER_LIST_USER, order.data(), \
                   QNUM_ERR_EST, &est, QNUM_N_SUBINTER, &nsub, 0
    const std::vector<std::function<T()>> calls = {
        [&] { return A::fcn(b_peak<T>, T(0), T(1), QNUM_LISTS); },
        [&] { return A::sing(b_xm05log<T>, T(0), T(1), QNUM_LISTS); },
        [&] { return A::sing_pts(b_step<T>, T(0), T(1), 1, pts, QNUM_LISTS); },
    };
#undef QNUM_LISTS
    for (std::size_t i = 0; i < calls.size(); ++i) {
        SCOPED_TRACE(i);
        calls[i]();
        EXPECT_EQ(last_type(), 0);
        ASSERT_GE(nsub, 2);
        ASSERT_LE(nsub, limit);
        std::vector<int> seen(order.begin(), order.begin() + nsub);
        std::sort(seen.begin(), seen.end());
        for (int k = 0; k < nsub; ++k) EXPECT_EQ(seen[k], k);
        for (int k = 1; k < nsub; ++k) EXPECT_GE(errs[order[k - 1]], errs[order[k]]);
        if (i == 0) {
            // Without extrapolation the estimate is the sum of the list.
            EXPECT_EQ(std::accumulate(errs.begin(), errs.begin() + nsub, T(0)), est);
        }
    }
}

// Options by address read the caller's value; the data-pointer integrand receives the pointer
// and is called in place of fcn.
TYPED_TEST(QuadratureErrors, AddressOptionsAndDataPointerAgreeWithThePlainForms) {
    using T = TypeParam;
    using A = Api<T>;
    T rel = T(1e-3), abs = T(0);
    int n1 = 0, n2 = 0, n3 = 0;
    const T r1 = A::fcn(b_peak<T>, T(0), T(1), QNUM_ERR_ABS, 0.0, QNUM_ERR_REL, 1e-3, QNUM_N_EVALS, &n1, 0);
    const T r2 = A::fcn(b_peak<T>, T(0), T(1), QNUM_ERR_ABS_ADR, &abs, QNUM_ERR_REL_ADR, &rel, QNUM_N_EVALS, &n2, 0);
    EXPECT_EQ(r1, r2);
    EXPECT_EQ(n1, n2);
    struct Shift {
        T by;
        int calls;
    } data{T(0.3), 0};
    T (*shifted)(T, void*) = [](T x, void* p) {
        auto* d = static_cast<Shift*>(p);
        ++d->calls;
        return 1 / ((x - d->by) * (x - d->by) + T(0.001));
    };
    const T r3 = A::fcn(nullptr, T(0), T(1), QNUM_ERR_ABS, 0.0, QNUM_ERR_REL, 1e-3, QNUM_FCN_W_DATA, shifted,
                        static_cast<void*>(&data), QNUM_N_EVALS, &n3, 0);
    EXPECT_EQ(last_type(), 0);
    EXPECT_EQ(r3, r1);
    EXPECT_EQ(n3, n1);
    EXPECT_EQ(data.calls, n1);
}

// Every rule integrates polynomials up to its Kronrod degree exactly on one application: a
// wrong node or weight breaks this at the top degree.
TYPED_TEST(QuadratureErrors, EachRuleIsExactUpToItsDegree) {
    using T = TypeParam;
    using A = Api<T>;
    const int degree[] = {0, 23, 31, 47, 61, 77, 91};
    static int d = 0;
    for (int rule = 1; rule <= 6; ++rule) {
        for (int k : {degree[rule], degree[rule] - 1}) {
            SCOPED_TRACE(::testing::Message() << "rule " << rule << " degree " << k);
            d = k;
            int nsub = 0;
            // (x+1)^d on [-1, 1] tests the nodes' symmetry too.
            const T r = A::fcn([](T x) { return std::pow(x + 1, T(d)); }, T(-1), T(1), QNUM_RULE, rule,
                               QNUM_ERR_REL, 0.5, QNUM_N_SUBINTER, &nsub, 0);
            const T exact = std::pow(T(2), T(k + 1)) / T(k + 1);
            EXPECT_NEAR(r / exact, T(1), 64 * Prec<T>::eps());
            EXPECT_EQ(nsub, 1);
        }
    }
}

// Runs that end at once. A zero integrand has a zero error estimate:
// one subinterval (two for the algebraic-logarithmic step, which starts from the halves) and
// the calls of one application. With one subinterval allowed, the single estimate is returned
// when it meets the tolerance and 4007 (NaN, counts still returned) when it misses. A
// principal value that vanishes by symmetry is not taken from the first estimate: one bisection.
template <class T> T zero(T) { return 0; }

TYPED_TEST(QuadratureErrors, RunsEndingAtOnceReturnTheirCounts) {
    using T = TypeParam;
    using A = Api<T>;
    const T pts[1] = {T(0.5)};
    struct Row {
        const char* what;
        int code, subintervals, evals;
        T want;
        std::function<T(int*, int*)> call;
    };
    const std::vector<Row> rows = {
        {"int_fcn", 0, 1, 21, 0, [](int* s, int* n) { return A::fcn(zero<T>, T(0), T(1), QNUM_N_SUBINTER, s, QNUM_N_EVALS, n, 0); }},
        {"sing", 0, 1, 21, 0, [](int* s, int* n) { return A::sing(zero<T>, T(0), T(1), QNUM_N_SUBINTER, s, QNUM_N_EVALS, n, 0); }},
        {"inf", 0, 1, 15, 0, [](int* s, int* n) { return A::inf(zero<T>, T(0), 1, QNUM_N_SUBINTER, s, QNUM_N_EVALS, n, 0); }},
        {"sing_pts", 0, 2, 42, 0,
         [&](int* s, int* n) { return A::sing_pts(zero<T>, T(0), T(1), 1, pts, QNUM_N_SUBINTER, s, QNUM_N_EVALS, n, 0); }},
        {"trig", 0, 1, 25, 0,
         [](int* s, int* n) { return A::trig(zero<T>, T(50), 1, T(0), T(1), QNUM_N_SUBINTER, s, QNUM_N_EVALS, n, 0); }},
        {"alg_log", 0, 2, 50, 0,
         [](int* s, int* n) { return A::alg_log(zero<T>, T(0), T(1), 1, T(-0.5), T(0.5), QNUM_N_SUBINTER, s, QNUM_N_EVALS, n, 0); }},
        {"one subinterval, met", 0, 1, 21, 1,
         [](int* s, int* n) { return A::fcn(b_poly<T>, T(0), T(1), QNUM_MAX_SUBINTER, 1, QNUM_N_SUBINTER, s, QNUM_N_EVALS, n, 0); }},
        {"one subinterval, missed", 4007, 1, 21, std::numeric_limits<T>::quiet_NaN(),
         [](int* s, int* n) { return A::fcn(b_peak<T>, T(0), T(1), QNUM_MAX_SUBINTER, 1, QNUM_N_SUBINTER, s, QNUM_N_EVALS, n, 0); }},
        {"vanishing principal value", 0, 2, 65, 0,
         [](int* s, int* n) { return A::cauchy(b_one<T>, T(-1), T(1), T(0), QNUM_N_SUBINTER, s, QNUM_N_EVALS, n, 0); }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        int nsub = -1, nev = -1;
        const T r = row.call(&nsub, &nev);
        if (std::isnan(row.want)) EXPECT_TRUE(std::isnan(r));
        else EXPECT_NEAR(r, row.want, std::sqrt(Prec<T>::eps()));
        EXPECT_EQ(last_code(), row.code);
        EXPECT_EQ(nsub, row.subintervals);
        EXPECT_EQ(nev, row.evals);
    }
}

// Integrals that must agree with a closed form or with another call: tolerances at the edges
// of their ranges (err_rel just below 1, a NaN err_rel that no comparison refuses, either
// tolerance alone), a reversed interval, zero and negative frequencies, fewer moment levels
// than bisection levels (each new one is computed again in the last row).
TYPED_TEST(QuadratureErrors, IntegralsAgreeWithTheirClosedForms) {
    using T = TypeParam;
    using A = Api<T>;
    const T pts[1] = {T(0.25)}, e1 = std::exp(T(1)) - 1, nan = std::numeric_limits<T>::quiet_NaN();
    auto fcn = [](T a, T b) { return A::fcn(b_exp<T>, a, b, 0); };
    auto sing = [](T a, T b) { return A::sing(b_exp<T>, a, b, 0); };
    auto smooth = [](T a, T b) { return A::smooth(b_exp<T>, a, b, 0); };
    auto cauchy = [](T a, T b) { return A::cauchy(b_exp<T>, a, b, T(0.5), 0); };
    auto trig = [](T a, T b) { return A::trig(b_exp<T>, T(30), 2, a, b, 0); };
    auto pts_call = [&](T a, T b) { return A::sing_pts(b_exp<T>, a, b, 1, pts, 0); };
    auto peak_sin = [](int levels) { return A::trig(b_peak<T>, T(60), 2, T(0), T(1), QNUM_MAX_MOMENTS, levels, 0); };
    const T peak_full = peak_sin(21);
    struct Row { const char* what; T got, want, tol; };
    const Row rows[] = {
        {"err_rel 0.999", A::fcn(b_exp<T>, T(0), T(1), QNUM_ERR_ABS, 0.0, QNUM_ERR_REL, 0.999, 0), e1, T(1e-3)},
        {"err_rel NaN", A::fcn(b_exp<T>, T(0), T(1), QNUM_ERR_ABS, 1e-3, QNUM_ERR_REL, nan, 0), e1, T(1e-3)},
        {"err_abs only", A::fcn(b_exp<T>, T(0), T(1), QNUM_ERR_ABS, 1e-3, QNUM_ERR_REL, 0.0, 0), e1, T(1e-3)},
        {"err_rel only", A::smooth(b_exp<T>, T(0), T(1), QNUM_ERR_ABS, 0.0, QNUM_ERR_REL, 1e-3, 0), e1, T(1e-3)},
        {"reversed fcn", fcn(T(1), T(0)), -fcn(T(0), T(1)), 8 * Prec<T>::eps()},
        {"reversed sing", sing(T(1), T(0)), -sing(T(0), T(1)), 8 * Prec<T>::eps()},
        {"reversed smooth", smooth(T(1), T(0)), -smooth(T(0), T(1)), 8 * Prec<T>::eps()},
        {"reversed cauchy", cauchy(T(1), T(0)), -cauchy(T(0), T(1)), 8 * Prec<T>::eps()},
        {"reversed trig", trig(T(1), T(0)), -trig(T(0), T(1)), 8 * Prec<T>::eps()},
        {"reversed sing_pts", pts_call(T(1), T(0)), -pts_call(T(0), T(1)), 8 * Prec<T>::eps()},
        {"fourier cos 0", A::fourier(b_expm<T>, T(0), 1, T(0), 0), 1, T(1e-5)},
        {"fourier sin 0", A::fourier(b_expm<T>, T(0), 2, T(0), 0), 0, 0},
        {"fourier sin -2", A::fourier(b_expm<T>, T(-2), 2, T(0), 0), T(-0.4), T(1e-5)},
        {"trig sin -20", A::trig(b_expm<T>, T(-20), 2, T(0), T(2), 0), -A::trig(b_expm<T>, T(20), 2, T(0), T(2), 0), T(1e-6)},
        {"moment levels 1", peak_sin(1), peak_full, T(1e3) * Prec<T>::eps() * std::abs(peak_full)},
        {"moment levels 2", peak_sin(2), peak_full, T(1e3) * Prec<T>::eps() * std::abs(peak_full)},
        {"moment levels 3", peak_sin(3), peak_full, T(1e3) * Prec<T>::eps() * std::abs(peak_full)},
    };
    for (const Row& k : rows) {
        SCOPED_TRACE(k.what);
        EXPECT_NEAR(k.got, k.want, k.tol * std::max(T(1), std::abs(k.want)));
    }
    EXPECT_EQ(last_type(), 0);
}

// The user-code marker is on while the integrand runs and off again between calls.
double marker_probe(double x) {
    EXPECT_EQ(qnum::context()->top->user, 1);
    return x;
}

TEST(QuadratureMarkers, IntegrandRunsMarkedAsUserCode) {
    QuietErrors quiet;
    qnum_d_int_fcn(marker_probe, 0.0, 1.0, 0);
    qnum_d_int_fcn_alg_log(marker_probe, 0.0, 1.0, 4, -0.5, -0.5, 0);
    qnum_d_int_fcn_trig(marker_probe, 40.0, 1, 0.0, 1.0, 0);
    EXPECT_EQ(last_type(), 0);
}

// A fault inside the integrand is trapped: TERMINAL 511 then 102, and the process stops
// with status 5.
double faulting_integrand(double x) {
    static void* page = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return x + *static_cast<volatile double*>(page);
}

TEST(QuadratureDeathTest, FaultingIntegrandStopsWithStatus5) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
#if defined(__SANITIZE_ADDRESS__)
            // The jump out of the fault skips the worker's destructors: the lists are lost on
            // purpose, as the process stops; the leak checker would change the exit status.
            __lsan_disable();
#endif
            qnum_error_options(QNUM_SIGNAL_TRAPPING, 1, 0);
            qnum_d_int_fcn(faulting_integrand, 0.0, 1.0, 0);
        },
        ::testing::ExitedWithCode(5), "TERMINAL Error from l_q2ag.  A segmentation violation.*"
                                      "TERMINAL Error from l_q2ag.  A hardware fault was trapped");
}

}  // namespace
}  // namespace qnum::test
