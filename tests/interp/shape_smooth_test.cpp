// Shape-preserving interpolation (Akima, the concavity-preserving spline) and smoothing splines
// (the residual bound, weights, cross-validation against the peer, long or tightly spaced data).
#include "spline_test.hpp"

namespace qnum::test {
namespace {

template <class T> using Shape = Quiet<T>;
TYPED_TEST_SUITE(Shape, Precisions);

// Collinear data make every Akima weight vanish; the plain mean keeps the line exact. A line
// with a single corner keeps both straight runs away from the corner.
TYPED_TEST(Shape, AkimaKeepsLinesStraight) {
    using T = TypeParam;
    std::vector<T> x = {-3, -1, 0, 0.5, 2, 4.25, 5}, f;
    for (T v : x) f.push_back(T(1.5) * v - 2);
    Spline<T> s(Api<T>::shape(7, x.data(), f.data(), 0));
    ASSERT_NE(s, nullptr);
    for (int i = 0; i < 6; ++i) EXPECT_EQ(std::vector<T>(s->coef[0] + 4 * i + 1, s->coef[0] + 4 * i + 4), std::vector<T>({1.5, 0, 0}));
    for (T& v : f) v = std::abs(v);  // corner between x = 0.5 and x = 2
    Spline<T> c(Api<T>::shape(7, x.data(), f.data(), 0));
    for (double t : {-3.0, -2.0, -0.5, 0.25}) EXPECT_NEAR(at<T>(c.get(), T(t)), 2 - 1.5 * t, 8 * eps<T>()) << t;
    for (double t : {2.5, 4.0, 5.0}) EXPECT_NEAR(at<T>(c.get(), T(t)), 1.5 * t - 2, 8 * eps<T>()) << t;
}

// Sign of the second derivative on a fine sampling of each data interval, both ends of every
// piece included; returns the worst violation of `sign` relative to the curvature's size.
template <class T>
double violation(Pp<T>* s, const std::vector<T>& x, int sign) {
    double worst = 0, size = 0;
    for (std::size_t i = 0; i + 1 < x.size(); ++i) {
        for (int k = 0; k <= 64; ++k) {
            const double c = at<T>(s, x[i] + (x[i + 1] - x[i]) * T(k) / 64, 2);
            size = std::max(size, std::abs(c)), worst = std::max(worst, -sign * c);
        }
    }
    for (int j = 0; j + 1 < s->num_breakpoints[0]; ++j) {
        const T *c = s->coef[0] + 4 * j, *b = s->breakpoints[0] + j;
        if (b[0] >= x.front() && b[1] <= x.back()) worst = std::max({worst, -sign * double(c[2]), -sign * (c[2] + (double(b[1]) - b[0]) * c[3])});
    }
    return worst / size;
}

// Convex data with corners, and concave ones: the spline interpolates, is C1, keeps its
// curvature sign everywhere with added knots; after too few iterations too, with a warning.
TYPED_TEST(Shape, ConcavityIsKeptOnDataWithCorners) {
    using T = TypeParam;
    std::vector<T> x, f;
    for (int i = 0; i <= 16; ++i) x.push_back(T(-4 + i * 0.5 + (i % 3) * 0.0625));
    for (T t : x) f.push_back(T(std::abs(t - 0.3) * 3 + std::abs(t + 2.1) + t * t / 16));
    for (int sign : {1, -1}) {
        std::vector<T> g;
        for (T v : f) g.push_back(v * T(sign));
        for (int itmax : {25, 1}) {
            SCOPED_TRACE(::testing::Message() << "sign " << sign << " itmax " << itmax);
            Spline<T> s(Api<T>::shape(17, x.data(), g.data(), QNUM_CONCAVE, QNUM_CONCAVE_ITMAX, itmax, 0));
            ASSERT_NE(s, nullptr);
            EXPECT_EQ(last_type(), itmax == 1 ? 3 : 0);
            EXPECT_TRUE(itmax > 1 || last_code() == 3073);
            EXPECT_TRUE(s->num_breakpoints[0] > 17 && s->num_coef[0] == 4 * (s->num_breakpoints[0] - 1));
            for (int i = 0; i <= 16; ++i) EXPECT_NEAR(at<T>(s.get(), x[i]), g[i], 32 * eps<T>() * 16) << i;
            EXPECT_LT(violation<T>(s.get(), x, sign), 64 * eps<T>());
            EXPECT_LT(std::max(jump<T>(s.get(), 0), jump<T>(s.get(), 1)), 64 * eps<T>());
        }
    }
}

// Smooth convex data need no knots and no bound: the result is the natural C2 spline. Convex
// data with a straight run: a convex C1 curve through collinear points is straight between
// them, so the spline is a line along the run and convex on both sides of it.
TYPED_TEST(Shape, SmoothDataGiveTheNaturalSplineAndStraightRunsStayStraight) {
    using T = TypeParam;
    std::vector<T> x = {0, 1, 2, 3, 4, 5, 6, 7, 8}, f = {4, 1.5, 0.5, 0.5, 1.5, 4}, g = {9, 4, 1, 0, 1, 2, 3, 5, 9};
    Spline<T> s(Api<T>::shape(6, x.data(), f.data(), QNUM_CONCAVE, 0));
    Spline<T> natural(Api<T>::e_cnd(6, x.data(), f.data(), QNUM_LEFT, 2, 0.0, QNUM_RIGHT, 2, 0.0, 0));
    ASSERT_EQ(s->num_breakpoints[0], 6);
    for (int i = 0; i < 20; ++i) EXPECT_NEAR(s->coef[0][i], natural->coef[0][i], 64 * eps<T>()) << i;
    Spline<T> r(Api<T>::shape(9, x.data(), g.data(), QNUM_CONCAVE, 0));
    for (double t = 3; t <= 6; t += 0.25)
        EXPECT_NEAR(std::abs(at<T>(r.get(), T(t)) - T(t - 3)) + std::abs(at<T>(r.get(), T(t), 1) - 1), 0, 16 * eps<T>()) << t;
    EXPECT_LT(violation<T>(r.get(), x, 1), 64 * eps<T>());
    EXPECT_LT(jump<T>(r.get(), 1), 64 * eps<T>());
}

// On random data every slope at an interior point lies between the chords beside it, and
// every interval where the data keep one concavity keeps it.
TYPED_TEST(Shape, RandomDataKeepTheirShape) {
    using T = TypeParam;
    auto next = [seed = 2026u]() mutable { return int((seed = seed * 1103515245u + 12345u) >> 16) % 64; };
    for (int trial = 0; trial < 200; ++trial) {
        const int n = 4 + trial % 7;
        std::vector<T> x(n), f(n);
        for (int i = 0; i < n; ++i) x[i] = T(i == 0 ? 0 : x[i - 1] + 1 + next() / 32.0), f[i] = T(next() / 8.0);
        Spline<T> s(Api<T>::shape(n, x.data(), f.data(), QNUM_CONCAVE, 0));
        ASSERT_NE(s, nullptr);
        auto chord = [&](int i) { return (double(f[i + 1]) - f[i]) / (double(x[i + 1]) - x[i]); };
        for (int i = 1; i + 1 < n; ++i) {
            const double ml = chord(i - 1), mr = chord(i), s1 = at<T>(s.get(), x[i], 1), tol = 64 * eps<T>() * (std::abs(ml) + std::abs(mr));
            ASSERT_TRUE(s1 >= std::min(ml, mr) - tol && s1 <= std::max(ml, mr) + tol) << trial << " " << i;
        }
        for (int i = 1; i + 2 < n; ++i) {
            const double d1 = chord(i) - chord(i - 1), d2 = chord(i + 1) - chord(i);
            if (d1 * d2 <= 0) continue;  // the data turn in this interval
            ASSERT_LT(violation<T>(s.get(), {x[i], x[i + 1]}, d1 > 0 ? 1 : -1), 64 * eps<T>()) << trial << " " << i;
        }
    }
}

// Noisy samples of a smooth curve, with a fixed pseudo-random noise.
template <class T>
void sample(int n, std::vector<T>& x, std::vector<T>& f, double spacing = 0.25) {
    for (unsigned i = 0, s = 12345; int(i) < n; ++i) {
        s = s * 1103515245u + 12345u;
        x.push_back(T(i * spacing + (i % 3) * spacing / 8)), f.push_back(T(std::sin(x.back() / 2) + (int((s >> 8) % 2001) - 1000) / 4000.0));
    }
}

// Sum of squared weighted residuals at the data.
template <class T>
double ssr(Pp<T>* s, const std::vector<T>& x, const std::vector<T>& f, const std::vector<T>& w = {}) {
    double r = 0;
    for (std::size_t i = 0; i < x.size(); ++i) r += std::pow((w.empty() ? 1 : w[i]) * (double(at<T>(s, x[i])) - f[i]), 2);
    return r;
}

// sigma 0 is the natural interpolant; every sigma in between meets its bound; a sigma at least
// the least-squares line's residual gives that line.
TYPED_TEST(Shape, SigmaRunsFromTheInterpolantToTheLine) {
    using T = TypeParam;
    const int n = 40;
    std::vector<T> x, f;
    sample(n, x, f);
    Spline<T> natural(Api<T>::e_cnd(n, x.data(), f.data(), QNUM_LEFT, 2, 0.0, QNUM_RIGHT, 2, 0.0, 0));
    Spline<T> s0(Api<T>::smooth(n, x.data(), f.data(), QNUM_SMOOTHING_PAR, 0.0, 0));
    ASSERT_TRUE(s0 != nullptr && s0->num_coef[0] == 4 * (n - 1));
    for (int i = 0; i < 4 * (n - 1); ++i) EXPECT_NEAR(s0->coef[0][i], natural->coef[0][i], 64 * eps<T>() * scale_of<T>(natural.get())) << i;
    // The least-squares line, from its normal equations.
    double sx = 0, sy = 0, sxx = 0, sxy = 0, line_ssr = 0;
    for (int i = 0; i < n; ++i) sx += x[i], sy += f[i];
    for (int i = 0; i < n; ++i) sxx += std::pow(x[i] - sx / n, 2), sxy += (x[i] - sx / n) * f[i];
    auto line = [&](double t) { return sy / n + sxy / sxx * (t - sx / n); };
    for (int i = 0; i < n; ++i) line_ssr += std::pow(f[i] - line(x[i]), 2);
    for (double sigma : {line_ssr, 10 * line_ssr}) {
        Spline<T> s(Api<T>::smooth(n, x.data(), f.data(), QNUM_SMOOTHING_PAR, sigma, 0));
        for (double t : {-1.0, 3.0, 9.5, 12.0}) EXPECT_NEAR(at<T>(s.get(), T(t)), line(t), 32 * eps<T>() * 4) << t;
        EXPECT_EQ(at<T>(s.get(), T(3), 2), 0);
    }
    double previous = 0;
    for (double frac : {1e-6, 0.01, 0.3, 0.9, 0.999}) {
        const T sigma = T(frac * line_ssr);
        Spline<T> s(Api<T>::smooth(n, x.data(), f.data(), QNUM_SMOOTHING_PAR_ADR, &sigma, 0));
        ASSERT_NE(s, nullptr);
        const double r = ssr(s.get(), x, f);
        EXPECT_NEAR(r / sigma, 1, 1e3 * eps<T>() + 1e-9) << frac;
        EXPECT_GT(r, previous);
        previous = r;
        // Continuity is as good as the banded solve, ill-conditioned as the smoothing grows.
        for (int k = 0; k < 3; ++k) EXPECT_LT(jump<T>(s.get(), k), 64 * eps<T>() + 1e-10) << k;
        EXPECT_EQ(at<T>(s.get(), x[0], 2), 0);
    }
}

// Weights scale the residuals: doubling every weight is the same as quartering sigma, and a
// heavy weight pulls the spline to its point. The residuals follow the jumps of the third
// derivative: at every data point w_i^2 (f_i - s(x_i)) is the same positive multiple of the
// jump there (the natural ends count it as 0 outside the data).
TYPED_TEST(Shape, WeightsScaleTheResidualsThatFollowTheThirdDerivativeJumps) {
    using T = TypeParam;
    const int n = 30;
    std::vector<T> x, f, w(n, T(2));
    sample(n, x, f);
    Spline<T> a(Api<T>::smooth(n, x.data(), f.data(), QNUM_WEIGHTS, w.data(), QNUM_SMOOTHING_PAR, 1.0, 0));
    Spline<T> b(Api<T>::smooth(n, x.data(), f.data(), QNUM_SMOOTHING_PAR, 0.25, 0));
    ASSERT_NE(a, nullptr);
    EXPECT_NEAR(ssr(a.get(), x, f, w), 1.0, 1e3 * eps<T>());
    for (int i = 0; i < 4 * (n - 1); ++i) EXPECT_NEAR(a->coef[0][i], b->coef[0][i], 1e-4 * scale_of<T>(b.get())) << i;
    w.assign(n, T(1)), w[12] = 1000;
    Spline<T> c(Api<T>::smooth(n, x.data(), f.data(), QNUM_WEIGHTS, w.data(), QNUM_SMOOTHING_PAR, 1.0, 0));
    EXPECT_NEAR(at<T>(c.get(), x[12]), f[12], 2e-3);
    EXPECT_NEAR(ssr(c.get(), x, f, w), 1.0, 1e3 * eps<T>());
    for (int i = 0; i < n; ++i) w[i] = T(0.5 + (i % 4) * 0.25);
    for (double sigma : {0.05, 0.5}) {
        Spline<T> s(Api<T>::smooth(n, x.data(), f.data(), QNUM_WEIGHTS, w.data(), QNUM_SMOOTHING_PAR, sigma, 0));
        ASSERT_NE(s, nullptr);
        std::vector<double> jumps(n), res(n);
        int big = 0;
        double size = 0;
        for (int i = 0; i < n; ++i) {
            jumps[i] = (i < n - 1 ? s->coef[0][4 * i + 3] : 0.0) - (i > 0 ? s->coef[0][4 * i - 1] : 0.0);
            res[i] = double(w[i]) * w[i] * (f[i] - double(at<T>(s.get(), x[i])));
            if (std::abs(jumps[i]) > std::abs(jumps[big])) big = i;
            size = std::max(size, std::abs(res[i]));
        }
        const double lambda = res[big] / jumps[big];
        EXPECT_GT(lambda, 0);
        for (int i = 0; i < n; ++i) EXPECT_NEAR(res[i], lambda * jumps[i], 1e3 * eps<T>() * size + 1e-9) << sigma << " " << i;
    }
}

// Cross-validation picks the same smoothing as the peer's: the score is flat near its minimum,
// so parameters a little apart give splines within a small fraction of the data's size. On long
// series, and abscissas a billionth apart (double only), the scale of the parameter follows the
// data: smoothing leaves less than the noise (variance 1/48) and more than nothing.
TYPED_TEST(Shape, CrossValidationMatchesThePeerAtAnyScale) {
    using T = TypeParam;
    const auto cases = load_cases("smoothing.txt");
    EXPECT_EQ(cases.size(), 3u);
    for (const RefCase& c : cases) {
        std::vector<T> x = cast<T>(c.x), f = cast<T>(c.f);
        Spline<T> s(Api<T>::smooth(int(x.size()), x.data(), f.data(), 0));
        EXPECT_EQ(last_type(), 0) << c.head[0];
        const double range = std::max(*std::max_element(f.begin(), f.end()), -*std::min_element(f.begin(), f.end()));
        for (const auto& p : c.eval) EXPECT_NEAR(at<T>(s.get(), T(p[0])), p[1], 2e-3 * range) << c.head[0] << " " << p[0];
    }
    for (double spacing : {1e-9, 1.0}) {
        if (std::is_same_v<T, float> && spacing < 1e-6) continue;
        std::vector<T> x, f;
        sample(std::is_same_v<T, float> ? 20000 : 100000, x, f, spacing);
        Spline<T> s(Api<T>::smooth(int(x.size()), x.data(), f.data(), 0));
        EXPECT_EQ(last_type(), 0);
        const double r = ssr(s.get(), x, f) / x.size();
        EXPECT_TRUE(r < 1.0 / 48 * 1.2 && r > 1.0 / 48 * 0.5) << r << " " << spacing;
    }
}

}  // namespace
}  // namespace qnum::test
