// Evaluation and integration: grids, derivatives past the order, the ends, and their errors.
#include "spline_test.hpp"

namespace qnum::test {
namespace {

template <class T>
struct Evaluate : Quiet<T> {
    void SetUp() override {
        for (int i = 0; i < 9; ++i) x.push_back(T(i * 0.5 + (i % 2) * 0.125)), f.push_back(T((i * 7) % 5 - 2));
        s.reset(Api<T>::interp(9, x.data(), f.data(), 0));
        ASSERT_NE(s, nullptr);
    }
    std::vector<T> x, f;
    Spline<T> s;
};
TYPED_TEST_SUITE(Evaluate, Precisions);

// A grid gives, point by point, what the scalar call gives, into a new array or the caller's;
// points beyond the breakpoints continue the end pieces.
TYPED_TEST(Evaluate, GridsAgreeWithSinglePoints) {
    using T = TypeParam;
    std::vector<T> g;
    for (double t = -1.5; t < 6; t += 0.0625) g.push_back(T(t));
    for (T b : this->x) g.push_back(b);  // every breakpoint, in order
    std::sort(g.begin(), g.end());
    g.erase(std::unique(g.begin(), g.end()), g.end());
    const int n = int(g.size());
    for (int deriv : {0, 1, 2, 3, 5}) {
        SCOPED_TRACE(deriv);
        T* v = nullptr;
        std::vector<T> u(n);
        Api<T>::value(T(0), this->s.get(), QNUM_DERIV, deriv, QNUM_GRID, n, g.data(), &v, 0);
        ASSERT_NE(v, nullptr);
        const T first = Api<T>::value(T(0), this->s.get(), QNUM_GRID_USER, n, g.data(), u.data(), QNUM_DERIV, deriv, 0);
        EXPECT_EQ(first, u[0]);
        EXPECT_EQ(last_type(), 0);
        for (int i = 0; i < n; ++i) {
            const T one = at<T>(this->s.get(), g[i], deriv);
            ASSERT_EQ(v[i], one) << g[i];
            ASSERT_EQ(u[i], one) << g[i];
        }
        qnum_free_allocated_memory(v);
    }
    // The interpolant passes through the data; the end pieces continue as cubics.
    for (int i = 0; i < 9; ++i) EXPECT_NEAR(at<T>(this->s.get(), this->x[i]), this->f[i], 16 * eps<T>() * 4);
    const T* c = this->s->coef[0];
    const T t = T(-1.5) - this->x[0];
    EXPECT_NEAR(at<T>(this->s.get(), T(-1.5)), c[0] + t * (c[1] + t * (c[2] / 2 + t * c[3] / 6)), 64 * eps<T>() * 100);
    EXPECT_EQ(at<T>(this->s.get(), T(9), 4), 0);
}

// Integrals add over adjacent ranges, change sign when reversed, vanish on a point, and give
// the exact integral of a cubic that the spline reproduces.
TYPED_TEST(Evaluate, IntegralsAddAndReverse) {
    using T = TypeParam;
    Pp<T>* p = this->s.get();
    const T pts[] = {T(-1), T(0.3), T(1.7), T(2.25), T(4.6), T(6)};
    for (T a : pts) {
        EXPECT_EQ(Api<T>::integral(a, a, p), 0);
        for (T b : pts) {
            const T ab = Api<T>::integral(a, b, p);
            EXPECT_EQ(Api<T>::integral(b, a, p), -ab);
            for (T c : pts)
                EXPECT_NEAR(Api<T>::integral(a, c, p), ab + Api<T>::integral(b, c, p), 512 * eps<T>()) << a << b << c;
        }
    }
    std::vector<T> x = {-1, 0, 0.5, 2, 3}, f;
    for (T v : x) f.push_back(v * v * v - 2 * v);
    Spline<T> cubic(Api<T>::interp(5, x.data(), f.data(), 0));
    auto antideriv = [](double v) { return v * v * v * v / 4 - v * v; };
    EXPECT_NEAR(Api<T>::integral(T(-2), T(3.5), cubic.get()), antideriv(3.5) - antideriv(-2), 512 * eps<T>());
    EXPECT_NEAR(Api<T>::integral(T(0.25), T(0.375), cubic.get()), antideriv(0.375) - antideriv(0.25), 16 * eps<T>());
}

// Every error: the result is NaN, and so is every grid entry.
TYPED_TEST(Evaluate, ErrorsGiveNaN) {
    using T = TypeParam;
    Pp<T>* p = this->s.get();
    std::vector<T> g = {0, 1, 1, 2}, u(4, T(7));
    T* v = reinterpret_cast<T*>(&u);  // any non-null value: it must be replaced
    auto all_nan = [](const T* e) { return std::isnan(e[0]) && std::isnan(e[1]) && std::isnan(e[2]) && std::isnan(e[3]); };
    EXPECT_TRUE(std::isnan(Api<T>::value(T(0), p, QNUM_GRID_USER, 4, g.data(), u.data(), 0)));
    EXPECT_EQ(std::vector<double>({double(last_type()), double(last_code()), double(int_slot(1)), double(int_slot(2)), real_slot(1)}),
              std::vector<double>({4, 3122, 1, 2, 1}));
    EXPECT_TRUE(all_nan(u.data()));
    Api<T>::value(T(0), p, QNUM_GRID, 4, g.data(), &v, 0);
    ASSERT_NE(v, nullptr);
    EXPECT_TRUE(all_nan(v));
    std::free(v);

    // A NaN passes the order test and gives a NaN entry of its own.
    g = {0, std::numeric_limits<T>::quiet_NaN(), 1, 2};
    Api<T>::value(T(0), p, QNUM_GRID_USER, 4, g.data(), u.data(), 0);
    EXPECT_EQ(last_type(), 0);
    EXPECT_TRUE(std::isnan(u[1]));
    EXPECT_EQ(u[2], at<T>(p, T(1)));

    Spline<T> empty(Api<T>::create(1, 1, std::vector<int>{4}.data(), std::vector<int>{3}.data(), 0));
    empty->num_breakpoints[0] = 1;
    using A = Api<T>;
    check_errors({
        {"negative deriv", [&] { return double(A::value(T(0), p, QNUM_DERIV, -1, 0)); }, 5, 3108, {-1}},
        {"grid negative deriv", [&] { return double(A::value(T(0), p, QNUM_DERIV, -2, QNUM_GRID_USER, 4, g.data(), u.data(), 0)); }, 5, 3108, {-2}},
        {"empty grid", [&] { return double(A::value(T(0), p, QNUM_GRID, 0, g.data(), &v, 0)); }, 5, 3123, {}},
        {"null grid", [&] { return double(A::value(T(0), p, QNUM_GRID_USER, 4, (T*)nullptr, u.data(), 0)); }, 5, 150, {}},
        {"null result", [&] { return double(A::value(T(0), p, QNUM_GRID_USER, 4, g.data(), (T*)nullptr, 0)); }, 5, 104, {}},
        {"null ppoly", [&] { return double(A::value(T(0), (Pp<T>*)nullptr, 0)); }, 5, 150, {}},
        {"empty ppoly", [&] { return double(A::value(T(0), empty.get(), 0)); }, 5, 3109, {}},
        {"unknown option", [&] { return double(A::value(T(0), p, QNUM_DERIV, 1, 77, 0)); }, 5, 103, {77}},
        {"integral null", [&] { return double(A::integral(T(0), T(1), (Pp<T>*)nullptr)); }, 5, 150, {}},
        {"integral empty", [&] { return double(A::integral(T(0), T(1), empty.get())); }, 5, 3109, {}},
    }, NAN);
    EXPECT_EQ(v, nullptr);  // the empty grid handed back no array
    u.assign(4, T(7));
    Api<T>::value(T(0), p, QNUM_DERIV, -2, QNUM_GRID_USER, 4, g.data(), u.data(), 0);
    EXPECT_TRUE(all_nan(u.data()));
}

}  // namespace
}  // namespace qnum::test
