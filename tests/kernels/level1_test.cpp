// Vector kernels against plain long double loops, over lengths, increments and tuned paths.
#include "kernels/level1.hpp"

#include <limits>

#include "kernel_util.hpp"

namespace qnum::test {
namespace {

template <class T>
class Level1 : public ::testing::Test {};
TYPED_TEST_SUITE(Level1, Types);

template <class T>
Wide<T> cj(Wide<T> v) {
    if constexpr (is_complex_v<T>) {
        return std::conj(v);
    } else {
        return v;
    }
}

// Runs check(n, incx, incy) over all lengths and increment pairs on every path.
void sweep(const std::function<void(int, int, int)>& check) {
    for_each_path([&] {
        for (int n : lengths())
            for (int incx : increments())
                for (int incy : {1, -2, 3}) {
                    SCOPED_TRACE(::testing::Message() << "n " << n << " incx " << incx << " incy " << incy);
                    check(n, incx, incy);
                }
    });
}

TYPED_TEST(Level1, DotProductsMatchTheExactSum) {
    using T = TypeParam;
    sweep([](int n, int incx, int incy) {
        Rng rng(n);
        Vec<T> x(n, incx, rng), y(n, incy, rng);
        for (bool conj_x : {false, true}) {
            Wide<T> want{};
            long double size = 0;
            for (int i = 0; i < n; ++i) {
                Wide<T> xi = conj_x ? cj<T>(widen(x.at(i))) : widen(x.at(i));
                want += xi * widen(y.at(i));
                size += mag(x.at(i)) * mag(y.at(i));
            }
            T got = conj_x ? kern::dotc(n, x.data(), incx, y.data(), incy)
                           : kern::dot(n, x.data(), incx, y.data(), incy);
            EXPECT_TRUE(near(got, want, 2 * (n + 1) * eps<T>() * size));
        }
    });
}

TYPED_TEST(Level1, UpdatesTouchOnlyTheirElements) {
    using T = TypeParam;
    sweep([](int n, int incx, int incy) {
        Rng rng(n + 7);
        Vec<T> x(n, incx, rng), y(n, incy, rng);
        const auto x0 = x.values(), y0 = y.values();
        const T a = rng.next<T>();
        const Real<T> c = 0.6f, s = 0.8f;

        kern::axpy(n, a, x.data(), incx, y.data(), incy);
        for (int i = 0; i < n; ++i)
            EXPECT_TRUE(near(y.at(i), widen(a) * widen(x0[i]) + widen(y0[i]), 4 * eps<T>()));
        EXPECT_TRUE(y.gaps_intact());

        Vec<T> r(n, incy, rng);
        kern::copy(n, x.data(), incx, r.data(), incy);
        for (int i = 0; i < n; ++i) EXPECT_TRUE(Vec<T>::same(r.at(i), x0[i]));
        EXPECT_TRUE(r.gaps_intact());

        kern::scal(n, a, r.data(), incy);
        for (int i = 0; i < n; ++i) EXPECT_TRUE(near(r.at(i), widen(a) * widen(x0[i]), 2 * eps<T>()));
        kern::rscal(n, c, r.data(), incy);
        for (int i = 0; i < n; ++i)
            EXPECT_TRUE(near(r.at(i), widen(a) * widen(x0[i]) * (long double)c, 4 * eps<T>()));

        Vec<T> u(n, incx, rng), v(n, incy, rng);
        const auto u0 = u.values(), v0 = v.values();
        kern::swap(n, u.data(), incx, v.data(), incy);
        for (int i = 0; i < n; ++i) EXPECT_TRUE(Vec<T>::same(u.at(i), v0[i]) && Vec<T>::same(v.at(i), u0[i]));
        kern::rot(n, u.data(), incx, v.data(), incy, c, s);
        for (int i = 0; i < n; ++i) {
            EXPECT_TRUE(
                near(u.at(i), (long double)c * widen(v0[i]) + (long double)s * widen(u0[i]), 4 * eps<T>()));
            EXPECT_TRUE(
                near(v.at(i), (long double)c * widen(u0[i]) - (long double)s * widen(v0[i]), 4 * eps<T>()));
        }
        EXPECT_TRUE(u.gaps_intact() && v.gaps_intact());
    });
}

TYPED_TEST(Level1, AxpyWithZeroLeavesNaNs) {
    using T = TypeParam;
    Rng rng;
    for_each_path([&] {
        Vec<T> x(40, 1, rng), y(40, 1, rng);
        y.at(3) = T(std::numeric_limits<Real<T>>::quiet_NaN());
        const auto before = y.v;
        kern::axpy(40, T(0), x.data(), 1, y.data(), 1);
        EXPECT_TRUE(same_bits(before, y.v));
    });
}

TYPED_TEST(Level1, NormsSumsAndIndices) {
    using T = TypeParam;
    sweep([](int n, int incx, int) {
        Rng rng(3 * n);
        Vec<T> x(n, incx, rng);
        long double ss = 0, sa = 0, big = -1;
        int want_index = 0;
        for (int i = 0; i < n; ++i) {
            ss += mag(x.at(i)) * mag(x.at(i));
            long double a1;
            if constexpr (is_complex_v<T>) {
                a1 = std::fabs((long double)x.at(i).real()) + std::fabs((long double)x.at(i).imag());
            } else {
                a1 = std::fabs((long double)x.at(i));
            }
            sa += a1;
            if (a1 > big) big = a1, want_index = i + 1;
        }
        EXPECT_TRUE(near(kern::nrm2(n, x.data(), incx), std::sqrt(ss), 2 * eps<T>() * std::sqrt(ss)));
        EXPECT_TRUE(near(kern::asum(n, x.data(), incx), sa, (n + 1) * eps<T>() * sa));
        EXPECT_EQ(want_index, kern::iamax(n, x.data(), incx));
    });
}

// The first of equal magnitudes wins; an element may tie with a negative one.
TYPED_TEST(Level1, IndexOfLargestTakesTheFirstOfTies) {
    using T = TypeParam;
    const T v[] = {T(1), T(-3), T(3), T(2)};
    EXPECT_EQ(2, kern::iamax(4, v, 1));
    EXPECT_EQ(2, kern::iamax(4, v, -1));  // walked backwards: 2, 3, -3, 1
    EXPECT_EQ(0, kern::iamax(0, v, 1));
}

// Scaling keeps the norm finite and accurate at both ends of the exponent range.
TYPED_TEST(Level1, NormNeitherOverflowsNorUnderflows) {
    using T = TypeParam;
    using R = Real<T>;
    const R huge = std::numeric_limits<R>::max() / 32, tiny = std::numeric_limits<R>::denorm_min() * 8;
    const R normal_tiny = std::numeric_limits<R>::min() * 2;
    for_each_path([&] {
        for (R scale : {huge, tiny, normal_tiny, R(1)}) {
            for (int n : {1, 2, 5, 37, 100}) {
                std::vector<T> x(n);
                long double ss = 0;
                for (int i = 0; i < n; ++i) {
                    x[i] = T(scale * (R((i % 7) + 1) / R(8)));
                    ss += mag(x[i]) * mag(x[i]);
                }
                const long double want = std::sqrt(ss);
                // a denormal result carries an absolute rounding error of its own
                const long double tol = 4 * eps<T>() * want + std::numeric_limits<R>::denorm_min();
                EXPECT_TRUE(near(kern::nrm2(n, x.data(), 1), want, tol)) << "scale " << scale << " n " << n;
                EXPECT_TRUE(near(kern::nrm2(n, x.data(), -1), want, tol));
            }
        }
        const R inf = std::numeric_limits<R>::infinity(), nan = std::numeric_limits<R>::quiet_NaN();
        std::vector<T> x(20, T(1));
        x[5] = T(inf);
        EXPECT_EQ(inf, kern::nrm2(20, x.data(), 1));
        x[9] = T(nan);
        EXPECT_TRUE(std::isnan(kern::nrm2(20, x.data(), 1)));
    });
}

// rotg: the rotation maps (a, b) to (r, 0).
TYPED_TEST(Level1, RotationConstructionZeroesTheSecondComponent) {
    using T = TypeParam;
    using R = Real<T>;
    const R tol = 8 * std::numeric_limits<R>::epsilon();
    const R pairs[][2] = {{3, 4}, {-4, 3}, {0, 2}, {2, 0}, {0, 0}, {1e-3f, -7}, {-5, -5}};
    for (auto& p : pairs) {
        T a = T(p[0]), b = T(p[1]);
        if constexpr (is_complex_v<T>) a = T(p[0], p[1] / 2), b = T(p[1], -p[0]);
        const T a0 = a, b0 = b;
        R c;
        T s;
        kern::rotg(&a, &b, &c, &s);
        const R scale = std::abs(a0) + std::abs(b0) + 1;
        if constexpr (is_complex_v<T>) {
            EXPECT_LE(std::abs(c * a0 + s * b0 - a), tol * scale);
            EXPECT_LE(std::abs(-std::conj(s) * a0 + c * b0), tol * scale);
        } else {
            EXPECT_LE(std::abs(c * a0 + s * b0 - a), tol * scale);
            EXPECT_LE(std::abs(-s * a0 + c * b0), tol * scale);
        }
        EXPECT_LE(std::abs(c * c + std::norm(s) - 1), tol) << p[0] << " " << p[1];
    }
}

template <class T>
class Level1Real : public ::testing::Test {};
TYPED_TEST_SUITE(Level1Real, RealTypes);

// The matrix coded in param: flag -1 full, 0 unit diagonal, 1 unit anti-diagonal, -2 identity.
template <class T>
void unpack(const T* p, T h[2][2]) {
    const T f = p[0];
    h[0][0] = f == -1 ? p[1] : f == 0 ? 1 : f == 1 ? p[1] : 1;
    h[1][0] = f == -1 ? p[2] : f == 0 ? p[2] : f == 1 ? -1 : 0;
    h[0][1] = f == -1 ? p[3] : f == 0 ? p[3] : f == 1 ? 1 : 0;
    h[1][1] = f == -1 ? p[4] : f == 0 ? 1 : f == 1 ? p[4] : 1;
}

// rotmg: H (x1, y1) has a zero second component, and the weights carry the scaling, so
// sqrt(d1') x1' is the norm of (sqrt(d1) x1, sqrt(d2) y1). rotm applies the same H.
TYPED_TEST(Level1Real, ModifiedRotations) {
    using T = TypeParam;
    const T tol = 64 * std::numeric_limits<T>::epsilon();
    const T cases[][4] = {{1, 1, 3, 4},    {2, 0.5, 1, 7},      {1, 1, 5, 0.1}, {3e-9f, 2, 1, 1},
                          {1, 3e8f, 2, 1}, {4, 9, 1e-4f, 1e3f}, {1, -1, 1, 3},  {0.5, 0.25, 8, -2}};
    for (auto& c : cases) {
        T d1 = c[0], d2 = c[1], x1 = c[2];
        const T y1 = c[3];
        T p[5] = {0, 0, 0, 0, 0};
        kern::rotmg(&d1, &d2, &x1, y1, p);
        T h[2][2];
        unpack(p, h);
        const T hx = h[0][0] * c[2] + h[0][1] * y1, hy = h[1][0] * c[2] + h[1][1] * y1;
        if (p[0] == -1 && d1 == 0 && d2 == 0) continue;  // the degenerate case zeroes everything
        EXPECT_LE(std::fabs(hy), tol * (std::fabs(hx) + 1))
            << c[0] << " " << c[1] << " " << c[2] << " " << c[3];
        const T norm = std::sqrt(c[0] * c[2] * c[2] + c[1] * y1 * y1);
        EXPECT_NEAR(std::sqrt(d1) * std::fabs(x1), norm, tol * norm);
        EXPECT_NEAR(hx, x1, tol * std::fabs(x1));

        Rng rng;
        Vec<T> x(9, 2, rng), y(9, -1, rng);
        auto x0 = x.values(), y0 = y.values();
        kern::rotm(9, x.data(), 2, y.data(), -1, p);
        for (int i = 0; i < 9; ++i) {
            EXPECT_NEAR(x.at(i), h[0][0] * x0[i] + h[0][1] * y0[i], tol * 8);
            EXPECT_NEAR(y.at(i), h[1][0] * x0[i] + h[1][1] * y0[i], tol * 8);
        }
    }
    T d1 = -1, d2 = 1, x1 = 1, p[5];
    kern::rotmg(&d1, &d2, &x1, T(1), p);
    EXPECT_EQ(-1, p[0]);
    EXPECT_EQ(0, d1 + d2 + x1);
    d1 = 1, d2 = 0;
    kern::rotmg(&d1, &d2, &x1, T(1), p);
    EXPECT_EQ(-2, p[0]);
}

}  // namespace
}  // namespace qnum::test
