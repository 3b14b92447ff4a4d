// Interpolants against the peer's values, derivatives and integrals, for every end condition;
// any order of the same points gives the same spline.
#include <algorithm>

#include "spline_test.hpp"

namespace qnum::test {
namespace {

template <class T>
using Reference = Quiet<T>;
TYPED_TEST_SUITE(Reference, Precisions);

// Builds a case of splines.txt (head: name kind ileft left iright right n) from x and f.
template <class T>
Pp<T>* build(const RefCase& c, std::vector<T>& x, std::vector<T>& f) {
    const int n = int(x.size()), il = std::stoi(c.head[2]), ir = std::stoi(c.head[4]);
    if (c.head[1] == "akima") return Api<T>::shape(n, x.data(), f.data(), 0);
    if (c.head[1] == "periodic") return Api<T>::e_cnd(n, x.data(), f.data(), QNUM_PERIODIC, 0);
    if (il == 0 && ir == 0) return Api<T>::interp(n, x.data(), f.data(), 0);
    return Api<T>::e_cnd(n, x.data(), f.data(), QNUM_LEFT, il, std::stod(c.head[3]), QNUM_RIGHT, ir, std::stod(c.head[5]), 0);
}

TYPED_TEST(Reference, ValuesDerivativesAndIntegralsMatchThePeer) {
    using T = TypeParam;
    const auto cases = load_cases("splines.txt");
    ASSERT_GE(cases.size(), 20u);
    for (const RefCase& c : cases) {
        SCOPED_TRACE(c.head[0]);
        std::vector<T> x = cast<T>(c.x), f = cast<T>(c.f);
        Spline<T> s(build(c, x, f));
        ASSERT_NE(s, nullptr);
        EXPECT_EQ(last_type(), 0);
        const int n = int(x.size());
        ASSERT_EQ(s->num_breakpoints[0], n);
        ASSERT_EQ(s->num_coef[0], 4 * (n - 1));
        EXPECT_EQ(std::vector<T>(s->breakpoints[0], s->breakpoints[0] + n), x);
        // Errors scale with the size of each derivative over the whole case; the data are
        // exact, so what remains is the rounding of the solve, a few hundred ulps at most.
        double size[4] = {0, 0, 0, 0};
        for (const auto& p : c.eval)
            for (int k = 0; k < 4; ++k) size[k] = std::max({size[k], std::abs(p[k + 1]), k ? size[k - 1] : 0.0});
        for (const auto& p : c.eval) {
            for (int k = 0; k < 4; ++k)
                EXPECT_NEAR(at<T>(s.get(), T(p[0]), k), p[k + 1], 256 * eps<T>() * size[k]) << "derivative " << k << " at " << p[0];
            EXPECT_EQ(at<T>(s.get(), T(p[0]), 4), 0);
        }
        for (const auto& q : c.integral)
            EXPECT_NEAR(Api<T>::integral(T(q[0]), T(q[1]), s.get()), q[2], 256 * eps<T>() * size[0] * (std::abs(q[1] - q[0]) + 1))
                << "from " << q[0] << " to " << q[1];
        // Sorting is by abscissa alone, carrying the ordinates: the same points reversed and
        // rotated give the same spline, bit for bit, and the caller's arrays stay as they were.
        std::vector<T> xr(x.rbegin(), x.rend()), fr(f.rbegin(), f.rend());
        std::rotate(xr.begin(), xr.begin() + 1, xr.end());
        std::rotate(fr.begin(), fr.begin() + 1, fr.end());
        const std::vector<T> xr0 = xr, fr0 = fr;
        Spline<T> r(build(c, xr, fr));
        ASSERT_NE(r, nullptr);
        EXPECT_TRUE(xr == xr0 && fr == fr0);
        EXPECT_EQ(std::vector<T>(s->coef[0], s->coef[0] + 4 * (n - 1)), std::vector<T>(r->coef[0], r->coef[0] + 4 * (n - 1)));
    }
}

}  // namespace
}  // namespace qnum::test
