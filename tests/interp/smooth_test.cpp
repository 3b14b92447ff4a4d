// Smoothing splines: the limits of the residual bound, the bound itself, cross-validation
// against the peer, weights, and long or tightly spaced data.
#include "spline_test.hpp"

namespace qnum::test {
namespace {

template <class T>
class Smooth : public ::testing::Test {
protected:
    QuietErrors quiet;
    // Noisy samples of a smooth curve, with a fixed pseudo-random noise.
    void sample(int n, double spacing = 0.25) {
        x.clear(), f.clear();
        unsigned s = 12345;
        for (int i = 0; i < n; ++i) {
            s = s * 1103515245u + 12345u;
            const double noise = (int((s >> 8) % 2001) - 1000) / 4000.0;
            x.push_back(T(i * spacing + (i % 3) * spacing / 8));
            f.push_back(T(std::sin(x.back() / 2) + noise));
        }
    }
    // Sum of squared weighted residuals at the data.
    double ssr(Pp<T>* s, const std::vector<T>& w = {}) {
        double r = 0;
        for (std::size_t i = 0; i < x.size(); ++i) {
            const double wi = w.empty() ? 1 : w[i];
            const double e = wi * (double(at<T>(s, x[i])) - f[i]);
            r += e * e;
        }
        return r;
    }
    std::vector<T> x, f;
};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Smooth, Precisions);

// sigma 0 is the natural interpolant; every sigma in between meets its bound; a sigma at least
// the least-squares line's residual gives that line.
TYPED_TEST(Smooth, SigmaRunsFromTheInterpolantToTheLine) {
    using T = TypeParam;
    this->sample(40);
    const int n = 40;
    Spline<T> natural(Api<T>::e_cnd(n, this->x.data(), this->f.data(), QNUM_LEFT, 2, 0.0, QNUM_RIGHT, 2, 0.0, 0));
    Spline<T> s0(Api<T>::smooth(n, this->x.data(), this->f.data(), QNUM_SMOOTHING_PAR, 0.0, 0));
    ASSERT_NE(s0, nullptr);
    EXPECT_EQ(s0->num_coef[0], 4 * (n - 1));
    for (int i = 0; i < 4 * (n - 1); ++i)
        EXPECT_NEAR(s0->coef[0][i], natural->coef[0][i], 64 * eps<T>() * scale_of<T>(natural.get())) << i;

    // The weighted least-squares line, from its normal equations.
    double sx = 0, sy = 0, sxx = 0, sxy = 0;
    for (int i = 0; i < n; ++i) sx += this->x[i], sy += this->f[i];
    for (int i = 0; i < n; ++i) {
        const double u = this->x[i] - sx / n;
        sxx += u * u, sxy += u * this->f[i];
    }
    const double slope = sxy / sxx;
    auto line = [&](double t) { return sy / n + slope * (t - sx / n); };
    double line_ssr = 0;
    for (int i = 0; i < n; ++i) line_ssr += std::pow(this->f[i] - line(this->x[i]), 2);
    for (double sigma : {line_ssr, 10 * line_ssr}) {
        Spline<T> s(Api<T>::smooth(n, this->x.data(), this->f.data(), QNUM_SMOOTHING_PAR, sigma, 0));
        ASSERT_NE(s, nullptr);
        for (double t : {-1.0, 3.0, 9.5, 12.0})
            EXPECT_NEAR(at<T>(s.get(), T(t)), line(t), 32 * eps<T>() * 4) << t;
        EXPECT_EQ(at<T>(s.get(), T(3), 2), 0);
    }
    double previous = 0;
    for (double frac : {1e-6, 0.01, 0.3, 0.9, 0.999}) {
        const T sigma = T(frac * line_ssr);
        Spline<T> s(Api<T>::smooth(n, this->x.data(), this->f.data(), QNUM_SMOOTHING_PAR_ADR, &sigma, 0));
        ASSERT_NE(s, nullptr);
        const double r = this->ssr(s.get());
        EXPECT_LE(r, sigma * (1 + 1e3 * eps<T>() + 1e-9)) << frac;
        EXPECT_GE(r, sigma * (1 - 1e3 * eps<T>() - 1e-9)) << frac;
        EXPECT_GT(r, previous);
        previous = r;
        // Continuity is as good as the banded solve, whose matrix grows ill-conditioned
        // (like a fourth difference) as the smoothing grows.
        for (int k = 0; k < 3; ++k) EXPECT_LT(jump<T>(s.get(), k), 64 * eps<T>() + 1e-10) << k;
        EXPECT_EQ(at<T>(s.get(), this->x[0], 2), 0);
    }
}

// Weights scale the residuals: doubling every weight is the same as quartering sigma, and a
// heavy weight pulls the spline to its point.
TYPED_TEST(Smooth, WeightsScaleTheResiduals) {
    using T = TypeParam;
    this->sample(30);
    const int n = 30;
    std::vector<T> w(n, T(2));
    Spline<T> a(Api<T>::smooth(n, this->x.data(), this->f.data(), QNUM_WEIGHTS, w.data(), QNUM_SMOOTHING_PAR, 1.0, 0));
    Spline<T> b(Api<T>::smooth(n, this->x.data(), this->f.data(), QNUM_SMOOTHING_PAR, 0.25, 0));
    ASSERT_NE(a, nullptr);
    EXPECT_NEAR(this->ssr(a.get(), w), 1.0, 1e3 * eps<T>());
    for (int i = 0; i < 4 * (n - 1); ++i)
        EXPECT_NEAR(a->coef[0][i], b->coef[0][i], 1e-4 * scale_of<T>(b.get())) << i;
    w.assign(n, T(1));
    w[12] = 1000;
    Spline<T> c(Api<T>::smooth(n, this->x.data(), this->f.data(), QNUM_WEIGHTS, w.data(), QNUM_SMOOTHING_PAR, 1.0, 0));
    EXPECT_NEAR(at<T>(c.get(), this->x[12]), this->f[12], 2e-3);
    EXPECT_NEAR(this->ssr(c.get(), w), 1.0, 1e3 * eps<T>());
}

// Cross-validation picks the same smoothing as the peer's, whose score is the same.
TYPED_TEST(Smooth, CrossValidationMatchesThePeer) {
    using T = TypeParam;
    std::ifstream in(std::string(QNUM_TEST_DATA_DIR) + "/interp/smoothing.txt");
    std::string line, word, name;
    int cases = 0;
    while (std::getline(in, line)) {
        if (line.rfind("case", 0) != 0) continue;
        int n, m;
        std::istringstream(line) >> word >> name >> n;
        SCOPED_TRACE(name);
        std::vector<T> x(n), f(n);
        for (auto* v : {&x, &f}) {
            std::getline(in, line);
            std::istringstream t(line);
            t >> word;
            for (T& e : *v) t >> e;
        }
        std::getline(in, line);
        std::istringstream(line) >> word >> m;
        Spline<T> s(Api<T>::smooth(n, x.data(), f.data(), 0));
        ASSERT_NE(s, nullptr);
        EXPECT_EQ(last_type(), 0);
        double range = 0;
        for (T v : f) range = std::max(range, std::abs(double(v)));
        for (int k = 0; k < m; ++k) {
            double p, v;
            std::getline(in, line);
            std::istringstream(line) >> p >> v;
            // The score is flat near its minimum: parameters a little apart give splines
            // within a small fraction of the data's size.
            EXPECT_NEAR(at<T>(s.get(), T(p)), v, 2e-3 * range) << p;
        }
        ++cases;
    }
    EXPECT_EQ(cases, 3);
}

// Long series and abscissas a billionth apart: the scale of the parameter follows the data.
TYPED_TEST(Smooth, LongAndTightlySpacedData) {
    using T = TypeParam;
    for (double spacing : {1e-9, 1.0}) {
        if (std::is_same_v<T, float> && spacing < 1e-6) continue;  // 1e-9 steps need a double abscissa
        this->sample(std::is_same_v<T, float> ? 20000 : 100000, spacing);
        const int n = int(this->x.size());
        Spline<T> s(Api<T>::smooth(n, this->x.data(), this->f.data(), 0));
        ASSERT_NE(s, nullptr) << spacing;
        EXPECT_EQ(last_type(), 0);
        // Smoothing leaves less than the noise (variance 1/48) and more than nothing.
        const double r = this->ssr(s.get()) / n;
        EXPECT_LT(r, 1.0 / 48 * 1.2) << spacing;
        EXPECT_GT(r, 1.0 / 48 * 0.5) << spacing;
    }
}

// The smoothing spline is characterised by its residuals: at every data point the weighted
// residual w_i^2 (f_i - s(x_i)) is the same multiple of the jump of the third derivative there
// (the natural ends count it as 0 outside the data).
TYPED_TEST(Smooth, ResidualsFollowTheThirdDerivativeJumps) {
    using T = TypeParam;
    this->sample(25);
    const int n = 25;
    std::vector<T> w(n);
    for (int i = 0; i < n; ++i) w[i] = T(0.5 + (i % 4) * 0.25);
    for (double sigma : {0.05, 0.5}) {
        Spline<T> s(Api<T>::smooth(n, this->x.data(), this->f.data(), QNUM_WEIGHTS, w.data(), QNUM_SMOOTHING_PAR, sigma, 0));
        ASSERT_NE(s, nullptr);
        const T* c = s->coef[0];
        std::vector<double> jumps(n), res(n);
        int big = 0;
        double size = 0;
        for (int i = 0; i < n; ++i) {
            jumps[i] = (i < n - 1 ? c[4 * i + 3] : 0.0) - (i > 0 ? c[4 * i - 1] : 0.0);
            res[i] = double(w[i]) * w[i] * (this->f[i] - double(at<T>(s.get(), this->x[i])));
            if (std::abs(jumps[i]) > std::abs(jumps[big])) big = i;
            size = std::max(size, std::abs(res[i]));
        }
        const double lambda = res[big] / jumps[big];
        EXPECT_GT(lambda, 0);
        for (int i = 0; i < n; ++i)
            EXPECT_NEAR(res[i], lambda * jumps[i], 1e3 * eps<T>() * size + 1e-9) << sigma << " " << i;
    }
}

}  // namespace
}  // namespace qnum::test
