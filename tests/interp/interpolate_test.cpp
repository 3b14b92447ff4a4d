// Interpolation builders against the peer, periodic ends, sorting, the structure's layout,
// evaluation on grids, and every error path.
#include <climits>

#include "spline_test.hpp"

namespace qnum::test {
namespace {

template <class T> using Builders = Quiet<T>;
TYPED_TEST_SUITE(Builders, Precisions);

// Against the peer's values, derivatives and integrals for every end condition (head of a
// case: name kind ileft left iright right n). The same points reversed and rotated, with the
// end conditions read from the caller's variables, give the same spline bit for bit and leave
// the caller's arrays as they were: sorting is by abscissa alone, carrying the ordinates.
template <class T>
Pp<T>* build(const RefCase& c, std::vector<T>& x, std::vector<T>& f, bool by_address) {
    int n = int(x.size()), il = std::stoi(c.head[2]), ir = std::stoi(c.head[4]);
    T l = T(std::stod(c.head[3])), r = T(std::stod(c.head[5]));
    if (c.head[1] == "akima") return Api<T>::shape(n, x.data(), f.data(), 0);
    if (c.head[1] == "periodic") return Api<T>::e_cnd(n, x.data(), f.data(), QNUM_PERIODIC, 0);
    if (by_address) return Api<T>::e_cnd(n, x.data(), f.data(), QNUM_LEFT_ADR, &il, &l, QNUM_RIGHT_ADR, &ir, &r, 0);
    if (il == 0 && ir == 0) return Api<T>::interp(n, x.data(), f.data(), 0);
    return Api<T>::e_cnd(n, x.data(), f.data(), QNUM_LEFT, il, double(l), QNUM_RIGHT, ir, double(r), 0);
}

TYPED_TEST(Builders, MatchThePeerInAnyOrder) {
    using T = TypeParam;
    const auto cases = load_cases("splines.txt");
    ASSERT_GE(cases.size(), 20u);
    for (const RefCase& c : cases) {
        SCOPED_TRACE(c.head[0]);
        std::vector<T> x = cast<T>(c.x), f = cast<T>(c.f);
        const int n = int(x.size());
        Spline<T> s(build(c, x, f, false));
        ASSERT_TRUE(s != nullptr && s->num_coef[0] == 4 * (n - 1));
        EXPECT_EQ(last_type(), 0);
        EXPECT_EQ(std::vector<T>(s->breakpoints[0], s->breakpoints[0] + s->num_breakpoints[0]), x);
        // Errors scale with the size of each derivative over the whole case; the data are
        // exact, so what remains is the rounding of the solve, a few hundred ulps at most.
        double size[4] = {0, 0, 0, 0};
        for (const auto& p : c.eval)
            for (int k = 0; k < 4; ++k) size[k] = std::max({size[k], std::abs(p[k + 1]), k ? size[k - 1] : 0.0});
        for (const auto& p : c.eval)
            for (int k = 0; k < 5; ++k)
                EXPECT_NEAR(at<T>(s.get(), T(p[0]), k), k < 4 ? p[k + 1] : 0, 256 * eps<T>() * size[k % 4]) << k << " " << p[0];
        for (const auto& q : c.integral) {
            const T v = Api<T>::integral(T(q[0]), T(q[1]), s.get());
            EXPECT_NEAR(v, q[2], 256 * eps<T>() * size[0] * (std::abs(q[1] - q[0]) + 1)) << q[0] << " to " << q[1];
            EXPECT_EQ(Api<T>::integral(T(q[1]), T(q[0]), s.get()), -v);
        }
        std::vector<T> xr, fr;  // reversed and rotated by one
        for (int i = 0; i < n; ++i) xr.push_back(x[n - 1 - (i + 1) % n]), fr.push_back(f[n - 1 - (i + 1) % n]);
        const std::vector<T> xr0 = xr, fr0 = fr;
        Spline<T> r(build(c, xr, fr, true));
        ASSERT_NE(r, nullptr);
        EXPECT_TRUE(xr == xr0 && fr == fr0);
        EXPECT_EQ(coefs<T>(s.get()), coefs<T>(r.get()));
    }
}

// Unequal periodic end values still give a spline through every point, joined in slope and
// curvature, with the warning; the periodic option outranks an end condition.
TYPED_TEST(Builders, PeriodicEndsJoinSmoothly) {
    using T = TypeParam;
    std::vector<T> x, f;
    for (int i = 0; i <= 8; ++i) x.push_back(T(i * 0.75 + (i % 3) * 0.125)), f.push_back(T(std::sin(i * 0.8)));
    f[8] = f[0] + T(0.5);
    Spline<T> s(Api<T>::e_cnd(9, x.data(), f.data(), QNUM_PERIODIC, QNUM_LEFT, 1, 5.0, 0));
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(std::vector<double>({double(last_type()), double(last_code()), real_slot(1), real_slot(2), real_slot(3), real_slot(4)}),
              std::vector<double>({3, 3070, x[0], f[0], x[8], f[8]}));
    for (int i = 0; i <= 8; ++i) EXPECT_NEAR(at<T>(s.get(), x[i]), f[i], 16 * eps<T>());
    for (int k = 1; k <= 2; ++k) EXPECT_NEAR(at<T>(s.get(), x[0], k), at<T>(s.get(), x[8], k), 256 * eps<T>()) << k;
    EXPECT_LT(jump<T>(s.get(), 2), 64 * eps<T>());
}

// One allocation in the documented order: header, breakpoint pointers, coefficient pointers,
// breakpoint values, coefficient values, then order, num_coef and num_breakpoints.
TYPED_TEST(Builders, PpolyCreateLaysOutOneBlock) {
    using T = TypeParam;
    int order[2] = {4, 3}, nbp[2] = {5, 2};
    std::vector<T> b0 = {0, 1, 2, 3, 4}, b1 = {-1, 1};
    T* bps[2] = {b0.data(), b1.data()};
    std::vector<std::vector<T>> cv(3, std::vector<T>(48));
    for (int i = 0; i < 144; ++i) cv[i / 48][i % 48] = T(i / 48 * 100 + i % 48);
    T* cps[3] = {cv[0].data(), cv[1].data(), cv[2].data()};
    Spline<T> p(Api<T>::create(2, 3, order, nbp, QNUM_BREAKPOINTS, bps, QNUM_COEFFICIENTS, cps, 0));
    ASSERT_NE(p, nullptr);
    const char* base = reinterpret_cast<char*>(p.get());
    const std::pair<const void*, const void*> chain[] = {
        {p->breakpoints, base + sizeof(Pp<T>)}, {p->coef, p->breakpoints + 2}, {p->breakpoints[0], p->coef + 3},
        {p->breakpoints[1], p->breakpoints[0] + 5}, {p->coef[0], p->breakpoints[1] + 2}, {p->coef[1], p->coef[0] + 48},
        {p->coef[2], p->coef[1] + 48}, {p->order, p->coef[2] + 48}, {p->num_coef, p->order + 2}, {p->num_breakpoints, p->order + 4}};
    for (auto [got, want] : chain) EXPECT_EQ(got, want);
    EXPECT_EQ(std::vector<int>({p->domain_dim, p->target_dim, p->order[1], p->num_coef[0], p->num_coef[1], p->num_breakpoints[0]}),
              std::vector<int>({2, 3, 3, 48, 48, 5}));
    EXPECT_EQ(std::vector<T>({p->breakpoints[1][1], p->coef[2][47], p->coef[1][0]}), std::vector<T>({1, 247, 100}));
}

// Every error, its type, code and substitutions, and the null result that goes with it.
TYPED_TEST(Builders, ErrorsAreReportedWithTheirValues) {
    using T = TypeParam;
    std::vector<T> x = {0, 2, 1, 2, 3}, f = {1, 2, 3, 4, 5}, xs = {0, 1, 2, 3, 4}, w = {1, 1, -2, 1, 1};
    const T nan = std::numeric_limits<T>::quiet_NaN();
    std::vector<T> xn = {0, 1, nan, 3, 4}, fn = {0, 1, 3, nan, 4}, xd = {0, 1, 1, 2};
    int il = 0, big_order = 4, big_n = INT_MAX, zero = 0, bad_nb = 1;
    T *null = nullptr, *xsp = xs.data();
    using A = Api<T>;
    check_errors({
        {"one point", ptr([&] { return A::e_cnd(1, xs.data(), f.data(), 0); }), 5, 3066, {1}},
        {"interp one point", ptr([&] { return A::interp(1, xs.data(), f.data(), 0); }), 5, 3066, {1}},
        {"periodic three", ptr([&] { return A::e_cnd(3, xs.data(), f.data(), QNUM_PERIODIC, 0); }), 5, 3069, {3}},
        {"end code 3", ptr([&] { return A::e_cnd(5, xs.data(), f.data(), QNUM_RIGHT, 3, 0.0, 0); }), 5, 132, {0, 2, 3}},
        {"end code -1", ptr([&] { return A::e_cnd(5, xs.data(), f.data(), QNUM_LEFT, -1, 0.0, 0); }), 5, 132, {0, 2, -1}},
        {"null x", ptr([&] { return A::e_cnd(5, null, f.data(), 0); }), 5, 150, {}},
        {"null f", ptr([&] { return A::smooth(5, xs.data(), null, 0); }), 5, 150, {}},
        {"unknown option", ptr([&] { return A::e_cnd(5, xs.data(), f.data(), QNUM_PERIODIC, 4321, 0); }), 5, 103, {4321, 5}},
        {"interp takes none", ptr([&] { return A::interp(5, xs.data(), f.data(), QNUM_PERIODIC, 0); }), 5, 103, {QNUM_PERIODIC, 4}},
        {"null ileft", ptr([&] { return A::e_cnd(5, xs.data(), f.data(), QNUM_LEFT_ADR, (int*)nullptr, f.data(), 0); }), 5, 104, {}},
        {"null right", ptr([&] { return A::e_cnd(5, xs.data(), f.data(), QNUM_RIGHT_ADR, &il, null, 0); }), 5, 105, {}},
        {"repeated", ptr([&] { return A::e_cnd(5, x.data(), f.data(), 0); }), 4, 3034, {1, 3}},
        {"repeated akima", ptr([&] { return A::shape(5, x.data(), f.data(), 0); }), 4, 3034, {1, 3}},
        {"repeated smooth", ptr([&] { return A::smooth(5, x.data(), f.data(), 0); }), 4, 3034, {1, 3}},
        {"repeated in order", ptr([&] { return A::e_cnd(4, xd.data(), f.data(), 0); }), 4, 3034, {1, 2}},
        {"NaN abscissa", ptr([&] { return A::interp(5, xn.data(), f.data(), 0); }), 4, 3035, {2}},
        {"akima three", ptr([&] { return A::shape(3, xs.data(), f.data(), 0); }), 5, 3069, {3}},
        {"concave two", ptr([&] { return A::shape(2, xs.data(), f.data(), QNUM_CONCAVE, 0); }), 5, 3071, {2}},
        {"concave itmax", ptr([&] { return A::shape(5, xs.data(), f.data(), QNUM_CONCAVE, QNUM_CONCAVE_ITMAX, 0, 0); }), 5, 3072, {0}},
        {"concave NaN", ptr([&] { return A::shape(5, xs.data(), fn.data(), QNUM_CONCAVE, 0); }), 5, 3074, {3}},
        {"shape unknown", ptr([&] { return A::shape(5, xs.data(), f.data(), 1, 0); }), 5, 103, {1, 4}},
        {"smooth two", ptr([&] { return A::smooth(2, xs.data(), f.data(), 0); }), 5, 3071, {2}},
        {"smooth sigma one", ptr([&] { return A::smooth(1, xs.data(), f.data(), QNUM_SMOOTHING_PAR, 1.0, 0); }), 5, 3066, {1}},
        {"negative sigma", ptr([&] { return A::smooth(5, xs.data(), f.data(), QNUM_SMOOTHING_PAR, -1.0, 0); }), 5, 3047, {}},
        {"null sigma", ptr([&] { return A::smooth(5, xs.data(), f.data(), QNUM_SMOOTHING_PAR_ADR, null, 0); }), 5, 104, {}},
        {"negative weight", ptr([&] { return A::smooth(5, xs.data(), f.data(), QNUM_WEIGHTS, w.data(), 0); }), 4, 3046, {2}},
        {"NaN ordinate", ptr([&] { return A::smooth(5, xs.data(), fn.data(), 0); }), 4, 3050, {}},
        {"NaN ordinate sigma", ptr([&] { return A::smooth(5, xs.data(), fn.data(), QNUM_SMOOTHING_PAR, 0.5, 0); }), 4, 3050, {}},
        {"create dims", ptr([&] { return A::create(0, 1, &il, &il, 0); }), 5, 132, {1, INT_MAX, 0}},
        {"create order null", ptr([&] { return A::create(1, 1, (int*)nullptr, &il, 0); }), 5, 150, {}},
        {"create order 0", ptr([&] { return A::create(1, 1, &zero, &big_order, 0); }), 5, 132, {1, INT_MAX, 0}},
        {"create one breakpoint", ptr([&] { return A::create(1, 1, &big_order, &bad_nb, 0); }), 5, 132, {2, INT_MAX, 1}},
        {"create null values", ptr([&] { return A::create(1, 1, &big_order, &big_order, QNUM_COEFFICIENTS, (T**)nullptr, 0); }), 5, 104, {}},
        {"create unknown option", ptr([&] { return A::create(1, 1, &big_order, &big_order, QNUM_BREAKPOINTS, &xsp, 55, 0); }), 5, 103, {55, 7}},
        {"create too big", ptr([&] { return A::create(1, 2, &big_order, &big_n, 0); }), 4, 202, {1, 2}},
    }, 0);
    // The values that go with the integers above.
    EXPECT_EQ((A::e_cnd(5, x.data(), f.data(), 0), real_slot(1)), 2);
    EXPECT_EQ((A::smooth(5, xs.data(), f.data(), QNUM_WEIGHTS, w.data(), 0), real_slot(1)), -2);
    A::create(1, 2, &big_order, &big_n, 0);
    EXPECT_EQ(string_slot(1) + " " + string_slot(2), "domain_dim target_dim");
    // The builders name their steps, so that a traceback shows where an error arose.
    qnum_error_options(QNUM_SET_PRINT, 4, 1, QNUM_SET_TRACEBACK, 4, 1, 0);
    const std::string out = capture_errors([&] { A::interp(4, x.data(), f.data(), 0); });
    for (const char* want : {"QNUM_C1SOR", "QNUM_REPEATED_ABSCISSA", "xdata[1] and xdata[3] are both 2"})
        EXPECT_NE(out.find(want), std::string::npos) << out;
}

template <class T>
Spline<T> zigzag(std::vector<T> x = {0, 0.625, 1, 1.625, 2, 2.625, 3, 3.625, 4}, std::vector<T> f = {-2, 0, 2, -1, 1, -2, 0, 2, -1}) {
    return Spline<T>(Api<T>::interp(9, x.data(), f.data(), 0));
}

// A grid (every breakpoint among its points, and points beyond them both) gives, point by point,
// what the scalar call gives, into a new array or the caller's.
TYPED_TEST(Builders, GridsAgreeWithSinglePoints) {
    using T = TypeParam;
    Spline<T> s = zigzag<T>();
    Pp<T>* p = s.get();
    std::vector<T> g;
    for (double t = -1.5; t < 6; t += 0.0625) g.push_back(T(t));
    const int n = int(g.size());
    for (int deriv : {0, 1, 2, 3, 5}) {
        T* v = nullptr;
        std::vector<T> u(n), one(n);
        Api<T>::value(T(0), p, QNUM_DERIV, deriv, QNUM_GRID, n, g.data(), &v, 0);
        ASSERT_NE(v, nullptr);
        const T first = Api<T>::value(T(0), p, QNUM_GRID_USER, n, g.data(), u.data(), QNUM_DERIV, deriv, 0);
        EXPECT_EQ(std::make_pair(first, last_type()), std::make_pair(u[0], 0));
        for (int i = 0; i < n; ++i) one[i] = at<T>(p, g[i], deriv);
        EXPECT_TRUE(std::vector<T>(v, v + n) == one && u == one) << deriv;
        qnum_free_allocated_memory(v);
    }
}

// Every error gives NaN, and so does every grid entry; a NaN grid point passes the order test
// and gives a NaN entry of its own.
TYPED_TEST(Builders, EvaluationErrorsGiveNaN) {
    using T = TypeParam;
    using A = Api<T>;
    Spline<T> s = zigzag<T>();
    Pp<T>* p = s.get();
    std::vector<T> g = {0, 1, 1, 2}, u(4, T(7));
    T* v = reinterpret_cast<T*>(&u);  // any non-null value: it must be replaced
    auto all_nan = [](const T* e) { return std::isnan(e[0]) && std::isnan(e[1]) && std::isnan(e[2]) && std::isnan(e[3]); };
    EXPECT_TRUE(std::isnan(A::value(T(0), p, QNUM_GRID_USER, 4, g.data(), u.data(), 0)) && all_nan(u.data()));
    EXPECT_EQ(std::vector<double>({double(last_type()), double(last_code()), double(int_slot(1)), double(int_slot(2)), real_slot(1)}),
              std::vector<double>({4, 3122, 1, 2, 1}));
    A::value(T(0), p, QNUM_GRID, 4, g.data(), &v, 0);
    EXPECT_TRUE(v != nullptr && all_nan(v));
    std::free(v);
    g = {0, std::numeric_limits<T>::quiet_NaN(), 1, 2};
    A::value(T(0), p, QNUM_GRID_USER, 4, g.data(), u.data(), 0);
    EXPECT_TRUE(last_type() == 0 && std::isnan(u[1]) && u[2] == at<T>(p, T(1)));
    Spline<T> empty(A::create(1, 1, std::vector<int>{4}.data(), std::vector<int>{3}.data(), 0));
    empty->num_breakpoints[0] = 1;
    check_errors({
        {"grid negative deriv", [&] { return double(A::value(T(0), p, QNUM_DERIV, -2, QNUM_GRID_USER, 4, g.data(), u.data(), 0)); }, 5, 3108, {-2}},
        {"negative deriv", [&] { return double(A::value(T(0), p, QNUM_DERIV, -1, 0)); }, 5, 3108, {-1}},
        {"empty grid", [&] { return double(A::value(T(0), p, QNUM_GRID, 0, g.data(), &v, 0)); }, 5, 3123, {}},
        {"null grid", [&] { return double(A::value(T(0), p, QNUM_GRID_USER, 4, (T*)nullptr, u.data(), 0)); }, 5, 150, {}},
        {"null result", [&] { return double(A::value(T(0), p, QNUM_GRID_USER, 4, g.data(), (T*)nullptr, 0)); }, 5, 104, {}},
        {"null ppoly", [&] { return double(A::value(T(0), (Pp<T>*)nullptr, 0)); }, 5, 150, {}},
        {"empty ppoly", [&] { return double(A::value(T(0), empty.get(), 0)); }, 5, 3109, {}},
        {"unknown option", [&] { return double(A::value(T(0), p, QNUM_DERIV, 1, 77, 0)); }, 5, 103, {77}},
        {"integral null", [&] { return double(A::integral(T(0), T(1), (Pp<T>*)nullptr)); }, 5, 150, {}},
        {"integral empty", [&] { return double(A::integral(T(0), T(1), empty.get())); }, 5, 3109, {}},
    }, NAN);
    EXPECT_TRUE(v == nullptr && all_nan(u.data()));  // the empty grid handed back no array
}

}  // namespace
}  // namespace qnum::test
