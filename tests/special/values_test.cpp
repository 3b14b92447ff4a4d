// Chebyshev machinery and the identities and exact values of the special functions.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "qnum_test.hpp"
#include "qnummath.h"
#include "special/functions.hpp"
#include "special/tables.hpp"
#include "functions_test.hpp"

namespace qnum::test {
namespace {

using special::convert;
namespace table = special::table;

// The kept term counts of the tables: the double counts are those at which the dropped tail
// first stays below 0.1 * 2^-53 (the log-gamma correction: 2^-53 itself).
TEST(Chebyshev, TermCountsOfTheTables) {
    struct Row {
        const char* name;
        const long double* t;
        int n, nf, nd;
        bool corr;
    };
    const Row rows[] = {
        {"erfcs", table::erfcs, 21, 7, 12, false},     {"erc2cs", table::erc2cs, 49, 10, 24, false},
        {"erfccs", table::erfccs, 59, 9, 25, false},   {"gamcs", table::gamcs, 42, 12, 23, false},
        {"algmcs", table::algmcs, 15, 2, 6, true},     {"alnrcs", table::alnrcs, 43, 11, 23, false},
        {"erfinv1", table::erfinv1, 44, 11, 23, false}, {"erfinv2", table::erfinv2, 59, 14, 31, false},
    };
    for (const Row& r : rows) {
        float f[64];
        double d[64];
        for (int i = 0; i < r.n; ++i) f[i] = float(r.t[i]), d[i] = double(r.t[i]);
        const float ef = r.corr ? qnum_amach(3) : 0.1f * qnum_amach(3);
        const double ed = r.corr ? qnum_dmach(3) : 0.1 * qnum_dmach(3);
        EXPECT_EQ(qnum_inits(f, r.n, ef), r.nf) << r.name;
        EXPECT_EQ(qnum_initds(d, r.n, ed), r.nd) << r.name;
        EXPECT_EQ(qnum_n1rty(1), 0) << r.name;
    }
}

// The stopping rule: the tail is accumulated from the end and the count is the first index
// where it exceeds eta (strictly); a tail that never exceeds it keeps one term.
TEST(Chebyshev, InitsStopsWhereTheTailFirstExceedsEta) {
    QuietErrors quiet;
    const double cs[5] = {1.0, -0.5, 0.25, -0.125, 0.0625};
    const struct {
        int n;
        double eta;
        int want;
    } cases[] = {
        {5, 0.0625, 4}, {5, 0.1875, 3}, {5, 0.18, 4}, {5, 0.4375, 2}, {5, 10.0, 1}, {1, 0.5, 0}, {2, 0.3, 0},
    };
    for (const auto& c : cases) {
        float f[5];
        for (int i = 0; i < 5; ++i) f[i] = float(cs[i]);
        EXPECT_EQ(qnum_initds(cs, c.n, c.eta), c.want) << c.n << " " << c.eta;
        EXPECT_EQ(qnum_inits(f, c.n, float(c.eta)), c.want) << c.n << " " << c.eta;
        EXPECT_EQ(qnum_20305(), c.want == 0 ? 9005 : 0) << c.n << " " << c.eta;
    }
}

// cs = {2, 1, 0, 0.5}: S(x) = 1 + T1(x) + 0.5 T3(x) = 1 + x + 2x^3 - 1.5x.
TEST(Chebyshev, ClenshawSumsTheSeries) {
    const double cs[4] = {2.0, 1.0, 0.0, 0.5};
    const float cf[4] = {2.0f, 1.0f, 0.0f, 0.5f};
    for (double x : {-1.0, -0.75, -0.3, 0.0, 0.2, 0.5, 1.0}) {
        const double want = 1 + x + 2 * x * x * x - 1.5 * x;
        EXPECT_NEAR(qnum_dcsevl(x, cs, 4), want, 4e-16) << x;
        EXPECT_NEAR(qnum_csevl(float(x), cf, 4), want, 4e-7) << x;
        EXPECT_NEAR(qnum_dcsevl(x, cs, 2), 1 + x, 4e-16) << x;  // the first two terms only
    }
    EXPECT_EQ(qnum_dcsevl(0.5, cs, 1), 1.0);
    EXPECT_EQ(qnum_n1rty(1), 0);
}

// The double-double exponential and logarithms of the double routines against the 64-bit ones of
// the C library, over their ranges (the exponential's ends are scaled in two steps). Bounds:
// 2^-60 relative (exp), 2^-60 and 2^-54 absolute (log, the fast log; relative beyond 1, where the
// references themselves hold no more); at the bottom of exp's range
// the low part is subnormal and only the rounded value is held to 2^-52.
TEST(DoubleDouble, ExpAndLogAgainstLongDouble) {
    using special::DD;
    struct Row {
        double a;
        long double got, want, tol;  // tol absolute
    };
    auto exp_row = [](double a) {
        const DD e = special::exp(DD(a));
        const long double want = std::exp(static_cast<long double>(a));
        return Row{a, static_cast<long double>(e.hi) + e.lo, want, 0x1p-60L * want};
    };
    auto log_row = [](double a, bool fast) {
        const DD l = fast ? special::log_fast(a) : special::log(DD(a));
        const long double want = std::log(static_cast<long double>(a));
        return Row{a, static_cast<long double>(l.hi) + l.lo, want, (fast ? 0x1p-54L : 0x1p-60L) * std::max(1.0L, std::fabs(want))};
    };
    std::vector<Row> rows;
    for (double a : {-700.25, -1.0, -1e-3, 0.0, 2.5e-3, 1.0, 300.7, 709.5, 709.78}) rows.push_back(exp_row(a));
    for (double a : {1e-300, 0.3, 0.75, 0.999999, 1.0000001, 1.5, 10.0, 123.456, 1e300}) {
        rows.push_back(log_row(a, false));
        rows.push_back(log_row(a, true));
    }
    for (const Row& r : rows) EXPECT_LE(std::fabs(r.got - r.want), r.tol) << r.a;
    // Dekker's exact product (huge factors scaled before the split) agrees with the fused one.
    for (double a : {0.1, 1.7e300, -5e305})
        EXPECT_EQ(special::dd::two_prod(a, 1 / 3.0).lo, std::fma(a, 1 / 3.0, -(a * (1 / 3.0)))) << a;
    const DD low = special::exp(DD(-708.5));
    EXPECT_NEAR(low.hi + low.lo, double(std::exp(-708.5L)), 0x1p-52 * 3.3e-308);
}

template <class T>
class Values : public ::testing::Test {};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Values, Precisions);

TYPED_TEST(Values, ErrorFunctionEdges) {
    using T = TypeParam;
    using F = Api<T>;
    const T eps = std::numeric_limits<T>::epsilon();
    EXPECT_EQ(F::erf(T(0)), T(0));
    EXPECT_EQ(F::erfc(T(0)), T(1));
    // Beyond xbig erf is exactly +-1; beyond -xbig erfc is exactly 2.
    const T big = std::is_same_v<T, float> ? T(4.0) : T(6.0);
    for (T s : {T(1), T(-1)}) EXPECT_EQ(F::erf(s * big), s);
    EXPECT_EQ(F::erfc(-big), T(2));
    for (T x : {T(1e-30), T(1e-6), T(0.3), T(1), T(1.5), T(2), T(3.25)}) {
        EXPECT_EQ(F::erf(-x), -F::erf(x)) << x;
        EXPECT_NEAR(F::erfc(-x), 2 - F::erfc(x), 2 * eps) << x;
        EXPECT_NEAR(F::erf(x) + F::erfc(x), T(1), 2 * eps) << x;
        // Round trips where the rounded value still determines x: erf for small x, erfc for
        // larger x, where they lose what the slope costs (a factor exp(x^2)).
        if (x <= 1) {
            EXPECT_NEAR(F::erf_inverse(F::erf(x)) / x, T(1), 4 * eps) << x;
        }
        if (x >= T(0.3)) {
            EXPECT_NEAR(F::erfc_inverse(F::erfc(x)) / x, T(1), 4 * eps * std::exp(x * x)) << x;
        }
    }
    EXPECT_EQ(F::erf_inverse(T(0)), T(0));
    EXPECT_EQ(F::erfc_inverse(T(1)), T(0));
    EXPECT_TRUE(std::signbit(F::erf(T(-0.0))));
    EXPECT_EQ(qnum_n1rty(1), 0);
}

TYPED_TEST(Values, GammaAtTheIntegersAndHalfIntegers) {
    using T = TypeParam;
    using F = Api<T>;
    const T eps = std::numeric_limits<T>::epsilon();
    double fact = 1;
    const int last_exact = std::is_same_v<T, float> ? 10 : 18;  // n! exact in T up to here
    for (int n = 1; n <= last_exact; ++n) {
        fact *= n;
        EXPECT_EQ(F::gamma(T(n + 1)), T(fact)) << n;
    }
    EXPECT_EQ(F::gamma(T(1)), T(1));
    const T sqrtpi = T(1.772453850905516027298);
    EXPECT_NEAR(F::gamma(T(0.5)) / sqrtpi, T(1), eps);
    EXPECT_NEAR(F::gamma(T(-0.5)) / (-2 * sqrtpi), T(1), eps);
    EXPECT_NEAR(F::gamma(T(-1.5)) / (4 * sqrtpi / 3), T(1), eps);
    for (T x : {T(1), T(2)}) EXPECT_NEAR(F::log_gamma(x), T(0), 2 * eps) << x;
    EXPECT_NEAR(F::log_gamma(T(11)), std::log(T(3628800)), 2 * eps * 16);
    if constexpr (std::is_same_v<T, double>) {
        // Subnormal arguments, where double intermediates would overflow (mpmath, 50 digits).
        EXPECT_NEAR(F::log_gamma(-1e-310), 713.8013788281541651, 2 * 713.8 * eps);
        EXPECT_NEAR(F::log_beta(1e-300, 1e-17), 690.77552789821370518, 4 * 690.8 * eps);
        EXPECT_NEAR(F::erfc_inverse(1e-310), 26.644806559364764782, 2 * 26.6 * eps);
    }
    EXPECT_EQ(qnum_n1rty(1), 0);
}

TYPED_TEST(Values, BetaIdentities) {
    using T = TypeParam;
    using F = Api<T>;
    const T eps = std::numeric_limits<T>::epsilon();
    const T pairs[][2] = {{T(0.5), T(0.5)}, {T(2), T(3)}, {T(0.01), T(50)}, {T(12), T(30)}, {T(200), T(3)},
                          {T(150), T(160)}};
    for (const auto& p : pairs) {
        EXPECT_EQ(F::beta(p[0], p[1]), F::beta(p[1], p[0])) << p[0] << " " << p[1];
        EXPECT_EQ(F::log_beta(p[0], p[1]), F::log_beta(p[1], p[0])) << p[0] << " " << p[1];
        for (T x : {T(0.001), T(0.2), T(0.5), T(0.9)}) {
            const T i = F::beta_incomplete(x, p[0], p[1]), j = F::beta_incomplete(1 - x, p[1], p[0]);
            EXPECT_NEAR(i + j, T(1), 4 * eps) << x << " " << p[0] << " " << p[1];
        }
    }
    EXPECT_NEAR(F::beta(T(0.5), T(0.5)) / T(3.14159265358979323846), T(1), 2 * eps);
    EXPECT_NEAR(F::beta(T(2), T(3)) * 12, T(1), 2 * eps);
    for (T x : {T(0.125), T(0.5), T(0.75)}) {
        EXPECT_NEAR(F::beta_incomplete(x, T(1), T(1)), x, eps) << x;
        EXPECT_NEAR(F::beta_incomplete(x, T(3), T(1)) / (x * x * x), T(1), 4 * eps) << x;
    }
    for (T x : {T(0), T(1)}) EXPECT_EQ(F::beta_incomplete(x, T(2), T(3)), x);
    EXPECT_EQ(qnum_n1rty(1), 0);
}

TYPED_TEST(Values, IncompleteGammaIdentities) {
    using T = TypeParam;
    using F = Api<T>;
    const T eps = std::numeric_limits<T>::epsilon();
    for (T x : {T(1e-3), T(0.5), T(1.5), T(2), T(7), T(30)})
        EXPECT_NEAR(F::gamma_incomplete(T(1), x) / -std::expm1(-x), T(1), 4 * eps) << x;
    // Far beyond a the integral is the whole gamma function.
    EXPECT_NEAR(F::gamma_incomplete(T(5), T(80)) / T(24), T(1), 2 * eps);
    EXPECT_NEAR(F::gamma_incomplete(T(0.5), T(4)) / (T(1.772453850905516) * std::erf(T(2))), T(1), 4 * eps);
    EXPECT_EQ(F::gamma_incomplete(T(3), T(0)), T(0));
    EXPECT_EQ(qnum_n1rty(1), 0);
}

TYPED_TEST(Values, ErfeOnTheAxes) {
    using T = TypeParam;
    using F = Api<T>;
    const T eps = std::numeric_limits<T>::epsilon();
    for (T x : {T(0), T(0.5), T(1), T(2), T(3)}) {
        // On the real axis Re w = exp(-x^2); on the imaginary axis w is real, exp(y^2) erfc(y).
        const std::complex<T> w = F::erfe(x, 0), v = F::erfe(0, x), u = F::erfe(0, -x);
        EXPECT_NEAR(w.real(), std::exp(-x * x), 4 * eps) << x;
        EXPECT_NEAR(v.real() / (std::exp(x * x) * std::erfc(x)), T(1), 4 * eps) << x;
        EXPECT_EQ(v.imag(), T(0)) << x;
        EXPECT_NEAR(u.real() / (std::exp(x * x) * std::erfc(-x)), T(1), 4 * eps) << x;
        // w(-conj z) = conj w(z)
        const std::complex<T> a = F::erfe(x, T(0.7)), b = F::erfe(-x, T(0.7));
        EXPECT_NEAR(a.real(), b.real(), 4 * eps) << x;
        EXPECT_NEAR(a.imag(), -b.imag(), 4 * eps) << x;
    }
    EXPECT_EQ(qnum_n1rty(1), 0);
}

}  // namespace
}  // namespace qnum::test
