// Smoothing splines: the limits of the residual bound, the bound itself, cross-validation
// against the peer, weights, and long or tightly spaced data.
#include "spline_test.hpp"

namespace qnum::test {
namespace {

template <class T>
using Smooth = Quiet<T>;
TYPED_TEST_SUITE(Smooth, Precisions);

// Noisy samples of a smooth curve, with a fixed pseudo-random noise.
template <class T>
void sample(int n, std::vector<T>& x, std::vector<T>& f, double spacing = 0.25) {
    x.clear(), f.clear();
    for (unsigned i = 0, s = 12345; int(i) < n; ++i) {
        s = s * 1103515245u + 12345u;
        x.push_back(T(i * spacing + (i % 3) * spacing / 8));
        f.push_back(T(std::sin(x.back() / 2) + (int((s >> 8) % 2001) - 1000) / 4000.0));
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
TYPED_TEST(Smooth, SigmaRunsFromTheInterpolantToTheLine) {
    using T = TypeParam;
    const int n = 40;
    std::vector<T> x, f;
    sample(n, x, f);
    Spline<T> natural(Api<T>::e_cnd(n, x.data(), f.data(), QNUM_LEFT, 2, 0.0, QNUM_RIGHT, 2, 0.0, 0));
    Spline<T> s0(Api<T>::smooth(n, x.data(), f.data(), QNUM_SMOOTHING_PAR, 0.0, 0));
    ASSERT_NE(s0, nullptr);
    EXPECT_EQ(s0->num_coef[0], 4 * (n - 1));
    for (int i = 0; i < 4 * (n - 1); ++i)
        EXPECT_NEAR(s0->coef[0][i], natural->coef[0][i], 64 * eps<T>() * scale_of<T>(natural.get())) << i;
    // The least-squares line, from its normal equations.
    double sx = 0, sy = 0, sxx = 0, sxy = 0, line_ssr = 0;
    for (int i = 0; i < n; ++i) sx += x[i], sy += f[i];
    for (int i = 0; i < n; ++i) sxx += std::pow(x[i] - sx / n, 2), sxy += (x[i] - sx / n) * f[i];
    auto line = [&](double t) { return sy / n + sxy / sxx * (t - sx / n); };
    for (int i = 0; i < n; ++i) line_ssr += std::pow(f[i] - line(x[i]), 2);
    for (double sigma : {line_ssr, 10 * line_ssr}) {
        Spline<T> s(Api<T>::smooth(n, x.data(), f.data(), QNUM_SMOOTHING_PAR, sigma, 0));
        ASSERT_NE(s, nullptr);
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
        // Continuity is as good as the banded solve, whose matrix grows ill-conditioned
        // (like a fourth difference) as the smoothing grows.
        for (int k = 0; k < 3; ++k) EXPECT_LT(jump<T>(s.get(), k), 64 * eps<T>() + 1e-10) << k;
        EXPECT_EQ(at<T>(s.get(), x[0], 2), 0);
    }
}

// Weights scale the residuals: doubling every weight is the same as quartering sigma, and a
// heavy weight pulls the spline to its point. The residuals follow the jumps of the third
// derivative: at every data point w_i^2 (f_i - s(x_i)) is the same positive multiple of the
// jump there (the natural ends count it as 0 outside the data).
TYPED_TEST(Smooth, WeightsScaleTheResidualsThatFollowTheThirdDerivativeJumps) {
    using T = TypeParam;
    const int n = 30;
    std::vector<T> x, f, w(n, T(2));
    sample(n, x, f);
    Spline<T> a(Api<T>::smooth(n, x.data(), f.data(), QNUM_WEIGHTS, w.data(), QNUM_SMOOTHING_PAR, 1.0, 0));
    Spline<T> b(Api<T>::smooth(n, x.data(), f.data(), QNUM_SMOOTHING_PAR, 0.25, 0));
    ASSERT_NE(a, nullptr);
    EXPECT_NEAR(ssr(a.get(), x, f, w), 1.0, 1e3 * eps<T>());
    for (int i = 0; i < 4 * (n - 1); ++i) EXPECT_NEAR(a->coef[0][i], b->coef[0][i], 1e-4 * scale_of<T>(b.get())) << i;
    w.assign(n, T(1));
    w[12] = 1000;
    Spline<T> c(Api<T>::smooth(n, x.data(), f.data(), QNUM_WEIGHTS, w.data(), QNUM_SMOOTHING_PAR, 1.0, 0));
    EXPECT_NEAR(at<T>(c.get(), x[12]), f[12], 2e-3);
    EXPECT_NEAR(ssr(c.get(), x, f, w), 1.0, 1e3 * eps<T>());
    for (int i = 0; i < n; ++i) w[i] = T(0.5 + (i % 4) * 0.25);
    for (double sigma : {0.05, 0.5}) {
        Spline<T> s(Api<T>::smooth(n, x.data(), f.data(), QNUM_WEIGHTS, w.data(), QNUM_SMOOTHING_PAR, sigma, 0));
        ASSERT_NE(s, nullptr);
        const T* cf = s->coef[0];
        std::vector<double> jumps(n), res(n);
        int big = 0;
        double size = 0;
        for (int i = 0; i < n; ++i) {
            jumps[i] = (i < n - 1 ? cf[4 * i + 3] : 0.0) - (i > 0 ? cf[4 * i - 1] : 0.0);
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
// so parameters a little apart give splines within a small fraction of the data's size.
TYPED_TEST(Smooth, CrossValidationMatchesThePeer) {
    using T = TypeParam;
    const auto cases = load_cases("smoothing.txt");
    EXPECT_EQ(cases.size(), 3u);
    for (const RefCase& c : cases) {
        SCOPED_TRACE(c.head[0]);
        std::vector<T> x = cast<T>(c.x), f = cast<T>(c.f);
        Spline<T> s(Api<T>::smooth(int(x.size()), x.data(), f.data(), 0));
        ASSERT_NE(s, nullptr);
        EXPECT_EQ(last_type(), 0);
        double range = 0;
        for (T v : f) range = std::max(range, std::abs(double(v)));
        for (const auto& p : c.eval) EXPECT_NEAR(at<T>(s.get(), T(p[0])), p[1], 2e-3 * range) << p[0];
    }
}

// Long series and abscissas a billionth apart (double only): the scale of the parameter follows
// the data. Smoothing leaves less than the noise (variance 1/48) and more than nothing.
TYPED_TEST(Smooth, LongAndTightlySpacedData) {
    using T = TypeParam;
    for (double spacing : {1e-9, 1.0}) {
        if (std::is_same_v<T, float> && spacing < 1e-6) continue;
        std::vector<T> x, f;
        sample(std::is_same_v<T, float> ? 20000 : 100000, x, f, spacing);
        Spline<T> s(Api<T>::smooth(int(x.size()), x.data(), f.data(), 0));
        ASSERT_NE(s, nullptr) << spacing;
        EXPECT_EQ(last_type(), 0);
        const double r = ssr(s.get(), x, f) / x.size();
        EXPECT_TRUE(r < 1.0 / 48 * 1.2 && r > 1.0 / 48 * 0.5) << r << " " << spacing;
    }
}

}  // namespace
}  // namespace qnum::test
