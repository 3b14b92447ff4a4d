// Shape-preserving interpolation: Akima on lines and the concavity-preserving spline on
// convex, concave and turning data.
#include "spline_test.hpp"

namespace qnum::test {
namespace {

template <class T>
using Shape = Quiet<T>;
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

// Convex data with corners: the spline interpolates, is C1, keeps its curvature sign
// everywhere, and needs added knots where the smooth spline would bend back. Concave data
// mirror it. A few iterations may not settle: the warning comes with a spline that still keeps
// the sign.
TYPED_TEST(Shape, ConcavityIsKeptOnDataWithCorners) {
    using T = TypeParam;
    std::vector<T> x, f;
    for (int i = 0; i <= 16; ++i) {
        const double t = -4 + i * 0.5 + (i % 3) * 0.0625;
        x.push_back(T(t));
        f.push_back(T(std::abs(t - 0.3) * 3 + std::abs(t + 2.1) + t * t / 16));
    }
    for (int sign : {1, -1}) {
        std::vector<T> g = f;
        for (T& v : g) v *= T(sign);
        for (int itmax : {25, 1}) {
            SCOPED_TRACE(::testing::Message() << "sign " << sign << " itmax " << itmax);
            Spline<T> s(Api<T>::shape(17, x.data(), g.data(), QNUM_CONCAVE, QNUM_CONCAVE_ITMAX, itmax, 0));
            ASSERT_NE(s, nullptr);
            EXPECT_EQ(last_type(), itmax == 1 ? 3 : 0);
            EXPECT_TRUE(itmax > 1 || last_code() == 3073);
            EXPECT_GT(s->num_breakpoints[0], 17);
            EXPECT_EQ(s->num_coef[0], 4 * (s->num_breakpoints[0] - 1));
            for (int i = 0; i <= 16; ++i) EXPECT_NEAR(at<T>(s.get(), x[i]), g[i], 32 * eps<T>() * 16) << i;
            EXPECT_LT(violation<T>(s.get(), x, sign), 64 * eps<T>());
            EXPECT_LT(jump<T>(s.get(), 0), 64 * eps<T>());
            EXPECT_LT(jump<T>(s.get(), 1), 64 * eps<T>());
        }
    }
}

// Smooth convex data need no knots and no bound: the result is the natural C2 spline.
TYPED_TEST(Shape, SmoothDataGiveTheNaturalSpline) {
    using T = TypeParam;
    std::vector<T> x = {0, 1, 2, 3, 4, 5}, f = {4, 1.5, 0.5, 0.5, 1.5, 4};
    Spline<T> s(Api<T>::shape(6, x.data(), f.data(), QNUM_CONCAVE, 0));
    Spline<T> natural(Api<T>::e_cnd(6, x.data(), f.data(), QNUM_LEFT, 2, 0.0, QNUM_RIGHT, 2, 0.0, 0));
    ASSERT_EQ(s->num_breakpoints[0], 6);
    for (int i = 0; i < 20; ++i) EXPECT_NEAR(s->coef[0][i], natural->coef[0][i], 64 * eps<T>()) << i;
}

// Convex data with a straight run: a convex C1 curve through collinear points is straight
// between them, so the spline is a line along the run and convex on both sides of it.
TYPED_TEST(Shape, StraightRunsStayStraight) {
    using T = TypeParam;
    std::vector<T> x = {0, 1, 2, 3, 4, 5, 6, 7, 8}, f = {9, 4, 1, 0, 1, 2, 3, 5, 9};
    Spline<T> s(Api<T>::shape(9, x.data(), f.data(), QNUM_CONCAVE, 0));
    ASSERT_NE(s, nullptr);
    for (double t = 3; t <= 6; t += 0.25) EXPECT_NEAR(std::abs(at<T>(s.get(), T(t)) - T(t - 3)) + std::abs(at<T>(s.get(), T(t), 1) - 1), 0, 16 * eps<T>()) << t;
    EXPECT_LT(violation<T>(s.get(), x, 1), 64 * eps<T>());
    EXPECT_LT(jump<T>(s.get(), 1), 64 * eps<T>());
}

// On random data every slope at an interior point lies between the chords beside it, and
// every interval where the data keep one concavity keeps it.
TYPED_TEST(Shape, RandomDataKeepTheirShape) {
    using T = TypeParam;
    unsigned seed = 2026;
    auto next = [&] { return int((seed = seed * 1103515245u + 12345u) >> 16) % 64; };
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

}  // namespace
}  // namespace qnum::test
