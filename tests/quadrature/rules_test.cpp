// The building blocks of the weighted rules: the Chebyshev moments of cos and sin(p x) against
// mpmath, and the 25-point Chebyshev expansion against the cosine sums that define it.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <vector>

#include "frame/prec.hpp"
#include "quadrature/rules.hpp"
#include "quadrature/subdivide.hpp"

namespace qnum::test {
namespace {

template <class T>
class Rules : public ::testing::Test {};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Rules, Precisions);

// Both branches: the tridiagonal solve below |p| = 24, forward recursion above.
TYPED_TEST(Rules, OscillatoryMomentsMatchMpmath) {
    using T = TypeParam;
    std::ifstream in(std::string(QNUM_TEST_DATA_DIR) + "/quadrature/moments.txt");
    std::map<double, std::vector<double>> ref;
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        double p, v;
        int k;
        std::sscanf(line.c_str(), "%lf %d %lf", &p, &k, &v);
        ref[p].push_back(v);
    }
    ASSERT_EQ(ref.size(), 6u);
    for (const auto& [p, m] : ref) {
        SCOPED_TRACE(p);
        ASSERT_EQ(m.size(), 25u);
        T row[25];
        quadrature::oscillatory_moments(T(p), row);
        for (int k = 0; k < 25; ++k) EXPECT_NEAR(row[k], m[k], 64 * Prec<T>::eps()) << "k " << k;
    }
}

// cheb24[k] = (1/12) sum'' f_j cos(k j pi / 24) and cheb12 the same on every other point; the
// samples are those of a function with every coefficient present.
TYPED_TEST(Rules, ChebyshevExpansionIsTheCosineTransform) {
    using T = TypeParam;
    const double pi = 3.14159265358979323846;
    double f[25];
    T s[25], c12[13], c24[25];
    for (int j = 0; j < 25; ++j) {
        const double x = std::cos(j * pi / 24);
        f[j] = std::exp(x) * std::sin(3 * x + 0.3) + 1 / (1.5 - x);
        s[j] = T(j == 0 || j == 24 ? 0.5 * f[j] : f[j]);
    }
    quadrature::chebyshev_25(s, c12, c24);
    for (int n : {24, 12}) {
        for (int k = 0; k <= n; ++k) {
            double sum = 0;
            for (int j = 0; j <= n; ++j) sum += (j == 0 || j == n ? 0.5 : 1.0) * f[j * 24 / n] * std::cos(k * j * pi / n);
            sum /= (k == 0 || k == n) ? n : n / 2;
            EXPECT_NEAR(n == 24 ? c24[k] : c12[k], sum, 32 * Prec<T>::eps()) << "n " << n << " k " << k;
        }
    }
}

// The epsilon algorithm on partial sums of slowly converging series: the limits of
// sum (-1)^k / (k+1) = log 2 and of the Leibniz series pi/4, from twenty terms (whose plain
// sums are still only good to two digits). A sequence that settles on its limit exactly gives
// it exactly, and where two elements of the table's last diagonal agree the table collapses to
// one entry, which ends the extrapolation (a limit of zero makes the agreement exact equality).
TYPED_TEST(Rules, EpsilonAlgorithmAcceleratesPartialSums) {
    using T = TypeParam;
    const double limits[] = {0.69314718055994530942, 0.78539816339744830962};
    auto run = [](quadrature::Epsilon<T>& eps, T v, T& result, T& abserr) {
        eps.epstab[eps.n++] = v;
        eps.extrapolate(result, abserr);
    };
    for (int series = 0; series < 2; ++series) {
        SCOPED_TRACE(series);
        quadrature::Epsilon<T> eps;
        T s = 0, result = 0, abserr = 0, best = 1;
        for (int k = 0; k < 20; ++k) {
            s += T((k % 2 ? -1.0 : 1.0) / (series == 0 ? k + 1 : 2 * k + 1));
            run(eps, s, result, abserr);
            if (k >= 4) best = std::min(best, T(std::abs(result - limits[series])));
        }
        const T tol = std::max(T(64) * Prec<T>::eps(), T(1e-13));
        EXPECT_LT(std::abs(result - T(limits[series])), tol);
        EXPECT_LT(best, tol);
        EXPECT_LE(std::abs(result - T(limits[series])), abserr);
    }
    const std::vector<std::pair<std::vector<double>, bool>> settled = {
        {{1, 1.5, 1.75, 1.75}, true}, {{1, 0.5, 0.25, 0, 0}, false}, {{0.5, 0, 0}, true},
        {{2, 1, 0, 0, 0}, false}, {{3, 1, 2, 0, 0, 0, 0}, false}, {{1, 0.5, 0.5, 0.25, 0, 0}, false},
        {{0, 0, 1, 0, 0}, true}, {{0, 0, 1}, true}, {{0, 0, 0}, false}, {{4, 0, 1, 0, 1, 0, 0}, true},
    };
    for (const auto& [seq, collapses] : settled) {
        SCOPED_TRACE(::testing::Message() << seq.size() << " " << seq[0]);
        quadrature::Epsilon<T> eps;
        T result = -1, abserr = -1;
        for (double v : seq) run(eps, T(v), result, abserr);
        EXPECT_EQ(result, T(seq.back()));
        EXPECT_EQ(eps.n == 1, collapses);
    }
}

// Bisections that make the error grow count towards roundoff only past the tenth subinterval,
// and twenty of them are too many; ten that leave the area and keep 99% of the error are too.
TYPED_TEST(Rules, GrowingErrorsCountAsRoundoffLateInTheRun) {
    using T = TypeParam;
    quadrature::Roundoff<T> ro, flat;
    const quadrature::RuleOut<T> half{1, T(0.5), 2, 1};
    for (int last = 2; last <= 30; ++last) {
        EXPECT_FALSE(ro.too_many()) << last;
        EXPECT_EQ(flat.too_many(), last > 11) << last;
        ro.count(half, half, T(3), T(2), T(1), T(0.9), last, false);  // the area moved: no iroff1
        flat.count(half, half, T(2), T(2), T(99), T(100), last, last > 6);  // 0.99 * 100 rounds to 99
    }
    EXPECT_TRUE(ro.too_many() && flat.too_many());
}

// The end of an extrapolating step: the limit unless the plain sum is relatively better; a
// limit that disagrees with the sum by a factor of 100 signals divergence (5 after the
// renumbering), except where the sum is exactly zero.
TYPED_TEST(Rules, ExtrapolationEndGameChoosesBetweenLimitAndSum) {
    using T = TypeParam;
    T r[2] = {T(0.25), T(0.5)}, e[2] = {T(0.01), T(0.02)};
    const quadrature::Lists<T> w{nullptr, nullptr, r, e};
    struct Row { T result, abserr, area, errsum; int ier, want_ier; T want; };
    const Row rows[] = {
        {1, T(0.1), T(0.75), T(0.2), 1, 1, 1},         // the limit is relatively better
        {1, T(0.5), T(0.75), T(0.03), 1, 1, T(0.75)},  // the sum is
        {T(0.5), T(0.1), 0, T(0.2), 1, 1, T(0.5)},     // a zero sum: the limit, no divergence test
        {1, T(0.1), 1000, T(0.2), 0, 5, 1},            // limit and sum 1000 apart
    };
    for (const Row& k : rows) {
        SCOPED_TRACE(k.area);
        quadrature::Extrapolation<T> x;
        x.result = k.result, x.abserr = k.abserr;
        const auto out = x.conclude(quadrature::Outcome<T>{0, 0, 0, 2}, k.ier, k.area, k.errsum, T(1), T(1), false, w, T(1));
        EXPECT_EQ(out.result, k.want);
        EXPECT_EQ(out.ier, k.want_ier);
    }
}

}  // namespace
}  // namespace qnum::test
