// Vector kernels against long double loops, over lengths, increments and tuned paths.
#include "kernel_test.hpp"

namespace qnum::test {
namespace {

template <class T>
class Level1 : public ::testing::Test {};
TYPED_TEST_SUITE(Level1, Types);

// Runs check(n, incx, incy) over lengths at the unrolling edges of every path (the tuned
// loops take 4 vectors of 4 to 16 elements at a time) and mixed increments.
void sweep(const std::function<void(int, int, int, std::mt19937&)>& check) {
    for_each_path([&] {
        for (int n : {0, 1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33, 63, 64, 65, 127, 129, 300})
            for (auto [incx, incy] : {std::pair{1, 1}, {2, 1}, {1, 2}, {2, 2}, {2, -2}, {-1, 3}, {-3, 1}}) {
                SCOPED_TRACE(::testing::Message() << "n " << n << " incx " << incx << " incy " << incy);
                std::mt19937 g(n);
                check(n, incx, incy, g);
            }
    });
}

// One element function per vector, for the reference product.
template <class T>
std::function<Wide<T>(int, int)> elems(std::vector<T> v, bool conj = false) {
    return [v, conj](int i, int j) { return conj ? cj(widen(v[i + j])) : widen(v[i + j]); };
}

TYPED_TEST(Level1, DotProducts) {
    using T = TypeParam;
    sweep([](int n, int incx, int incy, std::mt19937& g) {
        Vec<T> x(n, incx, g), y(n, incy, g);
        for (bool conj : {false, true}) {
            const Expected<T> e = product<T>(1, 1, n, T(1), elems(x.values(), conj), elems(y.values()), T(0),
                                             elems(std::vector<T>{T(0)}));
            const T got = conj ? kern::dotc(n, x.data(), incx, y.data(), incy) : kern::dot(n, x.data(), incx, y.data(), incy);
            EXPECT_LE(std::abs(widen(got) - e.value[0]), e.bound[0]) << conj;
        }
    });
}

// axpy, copy, scal, rscal, swap and rot: each result element within a few roundings, the
// gaps between elements untouched.
TYPED_TEST(Level1, Updates) {
    using T = TypeParam;
    sweep([](int n, int incx, int incy, std::mt19937& g) {
        Vec<T> x(n, incx, g), y(n, incy, g), u(n, incx, g), v(n, incy, g);
        const Vec<T> x0 = x, y0 = y, u0 = u, v0 = v;
        const T a = random_value<T>(g);
        const Real<T> c = 0.6f, s = 0.8f;
        auto expect = [&](const Vec<T>& got, const Vec<T>& before, const std::function<Wide<T>(int)>& want) {
            Expected<T> e(n, 1);
            for (int i = 0; i < n; ++i) e.at(i, 0) = want(i), e.tol(i, 0) = 8 * eps<T>();
            EXPECT_TRUE(matches(got, before, e));
        };
        auto X = [&](int i) { return widen(x0[i]); };
        auto Y = [&](int i) { return widen(y0[i]); };
        kern::axpy(n, a, x.data(), incx, y.data(), incy);
        expect(y, y0, [&](int i) { return widen(a) * X(i) + Y(i); });
        y = y0;
        kern::copy(n, x.data(), incx, y.data(), incy);
        expect(y, y0, [&](int i) { return X(i); });
        kern::scal(n, a, x.data(), incx);
        expect(x, x0, [&](int i) { return widen(a) * X(i); });
        x = x0;
        kern::rscal(n, c, x.data(), incx);
        expect(x, x0, [&](int i) { return (long double)c * X(i); });
        kern::swap(n, u.data(), incx, v.data(), incy);
        EXPECT_EQ(u.values(), v0.values());
        EXPECT_EQ(v.values(), u0.values());
        u = u0, v = v0;
        kern::rot(n, u.data(), incx, v.data(), incy, c, s);
        expect(u, u0, [&](int i) { return (long double)c * widen(u0[i]) + (long double)s * widen(v0[i]); });
        expect(v, v0, [&](int i) { return (long double)c * widen(v0[i]) - (long double)s * widen(u0[i]); });
    });
}

TYPED_TEST(Level1, NormsSumsAndIndices) {
    using T = TypeParam;
    sweep([](int n, int incx, int, std::mt19937& g) {
        Vec<T> x(n, incx, g);
        long double ss = 0, sa = 0, big = -1;
        int index = 0;
        for (int i = 0; i < n; ++i) {
            const long double a1 = std::fabs((long double)std::real(x[i])) + std::fabs((long double)std::imag(x[i]));
            ss += std::norm(widen(x[i]));
            sa += a1;
            if (a1 > big) big = a1, index = i + 1;
        }
        EXPECT_LE(std::fabs(kern::nrm2(n, x.data(), incx) - std::sqrt(ss)), 2 * eps<T>() * std::sqrt(ss));
        EXPECT_LE(std::fabs(kern::asum(n, x.data(), incx) - sa), (n + 1) * eps<T>() * sa);
        EXPECT_EQ(index, kern::iamax(n, x.data(), incx));
    });
}

// The first of equal magnitudes wins; axpy with a zero multiplier leaves y bit for bit.
TYPED_TEST(Level1, TiesAndZeroMultiplier) {
    using T = TypeParam;
    const T v[] = {T(1), T(-3), T(3), T(2)};
    EXPECT_EQ(2, kern::iamax(4, v, 1));
    EXPECT_EQ(2, kern::iamax(4, v, -1));  // walked backwards: 2, 3, -3, 1
    EXPECT_EQ(0, kern::iamax(0, v, 1));
    std::mt19937 g;
    for_each_path([&] {
        Vec<T> x(40, 1, g), y(40, 1, g);
        y[3] = nan_value<T>();
        const auto before = y.v;
        kern::axpy(40, T(0), x.data(), 1, y.data(), 1);
        EXPECT_TRUE(same_bits(before, y.v));
    });
}

// The same data at another address gives the same bits on every path: the vector loops may
// peel to an alignment boundary, but an element's rounding must not depend on where it lies.
TYPED_TEST(Level1, ResultsDoNotDependOnAlignment) {
    using T = TypeParam;
    const int n = 203;
    std::mt19937 g(7);
    const Vec<T> x(n, 1, g), y(n, 1, g);
    const T a = scalar<T>(0.75, -0.5);
    for_each_path([&] {
        std::vector<T> first;
        for (int shift : {0, 1, 3}) {
            std::vector<T> xs(n + 3), ys(n + 3);
            std::copy(x.v.begin(), x.v.end(), xs.begin() + shift);
            std::copy(y.v.begin(), y.v.end(), ys.begin() + shift);
            kern::axpy(n, a, xs.data() + shift, 1, ys.data() + shift, 1);
            kern::scal(n, a, xs.data() + shift, 1);
            std::vector<T> r(ys.begin() + shift, ys.begin() + shift + n);
            r.insert(r.end(), xs.begin() + shift, xs.begin() + shift + n);
            r.push_back(kern::dot(n, xs.data() + shift, 1, ys.data() + shift, 1));
            if (shift == 0) first = r;
            EXPECT_TRUE(same_bits(first, r)) << shift;
        }
    });
}

// Scaling keeps the norm finite and accurate at both ends of the exponent range.
TYPED_TEST(Level1, NormNeitherOverflowsNorUnderflows) {
    using T = TypeParam;
    using R = Real<T>;
    const R inf = std::numeric_limits<R>::infinity();
    for_each_path([&] {
        for (R scale : {std::numeric_limits<R>::max() / 32, std::numeric_limits<R>::denorm_min() * 8,
                        std::numeric_limits<R>::min() * 2, R(1)})
            for (int n : {1, 2, 5, 37, 100}) {
                std::vector<T> x(n);
                long double ss = 0;
                for (int i = 0; i < n; ++i) x[i] = T(scale * (R((i % 7) + 1) / R(8))), ss += std::norm(widen(x[i]));
                const long double want = std::sqrt(ss), tol = 4 * eps<T>() * want + std::numeric_limits<R>::denorm_min();
                EXPECT_LE(std::fabs(kern::nrm2(n, x.data(), 1) - want), tol) << scale << " n " << n;
                EXPECT_LE(std::fabs(kern::nrm2(n, x.data(), -1) - want), tol) << scale << " n " << n;
            }
        std::vector<T> x(20, T(1));
        x[5] = T(inf);
        EXPECT_EQ(inf, kern::nrm2(20, x.data(), 1));
        x[9] = nan_value<T>();
        EXPECT_TRUE(std::isnan(kern::nrm2(20, x.data(), 1)));
    });
}

// rotg: the rotation maps (a, b) to (r, 0).
TYPED_TEST(Level1, RotationConstruction) {
    using T = TypeParam;
    using R = Real<T>;
    const R tol = 8 * std::numeric_limits<R>::epsilon();
    for (auto [p, q] : {std::pair<R, R>{3, 4}, {-4, 3}, {0, 2}, {2, 0}, {0, 0}, {1e-3f, -7}, {-5, -5}}) {
        const T a0 = scalar<T>(p, q / 2), b0 = scalar<T>(q, -p);
        T a = a0, b = b0, s;
        R c;
        kern::rotg(&a, &b, &c, &s);
        const R size = std::abs(a0) + std::abs(b0) + 1;
        EXPECT_LE(std::abs(c * a0 + s * b0 - a), tol * size) << p << " " << q;
        EXPECT_LE(std::abs(-cj(s) * a0 + c * b0), tol * size) << p << " " << q;
        EXPECT_LE(std::abs(c * c + std::norm(s) - 1), tol) << p << " " << q;
    }
}

// rotmg: H (x1, y1) has a zero second component and sqrt(d1') x1' is the weighted norm of
// (x1, y1); rotm applies the same H, coded in param by its flag (-1 full, 0 unit diagonal,
// 1 unit anti-diagonal, -2 identity).
TEST(Level1Real, ModifiedRotations) {
    const double tol = 64 * std::numeric_limits<double>::epsilon();
    const double cases[][4] = {{1, 1, 3, 4},  {2, 0.5, 1, 7},    {1, 1, 5, 0.1}, {3e-9, 2, 1, 1},
                               {1, 3e8, 2, 1}, {4, 9, 1e-4, 1e3}, {1, -1, 1, 3},  {0.5, 0.25, 8, -2}, {1, 0x1p-24, 0x1p-40, 1},
                               {0x1p-24, 0x1p-84, 1, 1}};  // d1 exactly at the lower scaling bound; d1 and d2 both rescaled
    for (auto& c : cases) {
        double d1 = c[0], d2 = c[1], x1 = c[2], p[5] = {0, 0, 0, 0, 0};
        const double y1 = c[3];
        kern::rotmg(&d1, &d2, &x1, y1, p);
        const double f = p[0];
        const double h[2][2] = {{f == -1 || f == 1 ? p[1] : 1, f == -1 || f == 0 ? p[3] : f == 1 ? 1 : 0},
                                {f == -1 || f == 0 ? p[2] : f == 1 ? -1 : 0, f == -1 || f == 1 ? p[4] : 1}};
        if (f == -1 && d1 == 0 && d2 == 0) continue;  // the degenerate case zeroes everything
        const double hx = h[0][0] * c[2] + h[0][1] * y1, hy = h[1][0] * c[2] + h[1][1] * y1;
        const double norm = std::sqrt(c[0] * c[2] * c[2] + c[1] * y1 * y1);
        EXPECT_LE(std::fabs(hy), tol * (std::fabs(hx) + 1)) << c[0] << " " << c[1] << " " << c[2] << " " << c[3];
        EXPECT_NEAR(std::sqrt(d1) * std::fabs(x1), norm, tol * norm);
        EXPECT_NEAR(hx, x1, tol * std::fabs(x1));
        std::mt19937 g;
        Vec<double> x(9, 2, g), y(9, -1, g);
        const auto x0 = x.values(), y0 = y.values();
        kern::rotm(9, x.data(), 2, y.data(), -1, p);
        double u = x0[0], v = y0[0];  // a single pair too
        kern::rotm(1, &u, 1, &v, 1, p);
        EXPECT_NEAR(u, h[0][0] * x0[0] + h[0][1] * y0[0], tol * 8);
        EXPECT_NEAR(v, h[1][0] * x0[0] + h[1][1] * y0[0], tol * 8);
        for (int i = 0; i < 9; ++i) {
            EXPECT_NEAR(x[i], h[0][0] * x0[i] + h[0][1] * y0[i], tol * 8);
            EXPECT_NEAR(y[i], h[1][0] * x0[i] + h[1][1] * y0[i], tol * 8);
        }
    }
    double d1 = -1, d2 = 1, x1 = 1, p[5];
    kern::rotmg(&d1, &d2, &x1, 1.0, p);
    EXPECT_EQ(-1, p[0]);
    EXPECT_EQ(0, d1 + d2 + x1);
    d1 = 1, d2 = 0;
    kern::rotmg(&d1, &d2, &x1, 1.0, p);
    EXPECT_EQ(-2, p[0]);
}

}  // namespace
}  // namespace qnum::test
