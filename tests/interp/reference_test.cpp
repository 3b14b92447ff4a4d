// Interpolants against the peer's values, derivatives and integrals, for every end condition.
#include <algorithm>
#include <numeric>

#include "spline_test.hpp"

namespace qnum::test {
namespace {

template <class T>
class Reference : public ::testing::Test {
protected:
    QuietErrors quiet;
    static const std::vector<RefCase>& cases() {
        static const std::vector<RefCase> c = load_cases();
        return c;
    }

    // Builds the case's spline from the data in the given order.
    static Pp<T>* build(const RefCase& c, const std::vector<T>& x, const std::vector<T>& f) {
        const int n = int(x.size());
        T* xp = const_cast<T*>(x.data());
        T* fp = const_cast<T*>(f.data());
        if (c.kind == "akima") return Api<T>::shape(n, xp, fp, 0);
        if (c.kind == "periodic") return Api<T>::e_cnd(n, xp, fp, QNUM_PERIODIC, 0);
        if (c.ileft == 0 && c.iright == 0) return Api<T>::interp(n, xp, fp, 0);
        return Api<T>::e_cnd(n, xp, fp, QNUM_LEFT, c.ileft, c.left, QNUM_RIGHT, c.iright, c.right, 0);
    }
};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Reference, Precisions);

TYPED_TEST(Reference, ValuesDerivativesAndIntegralsMatchThePeer) {
    using T = TypeParam;
    ASSERT_GE(this->cases().size(), 20u);
    for (const RefCase& c : this->cases()) {
        SCOPED_TRACE(c.name);
        const std::vector<T> x = cast<T>(c.x), f = cast<T>(c.f);
        Spline<T> s(this->build(c, x, f));
        ASSERT_NE(s, nullptr);
        EXPECT_EQ(last_type(), 0);
        const int n = int(x.size());
        ASSERT_EQ(s->num_breakpoints[0], n);
        ASSERT_EQ(s->num_coef[0], 4 * (n - 1));
        for (int i = 0; i < n; ++i) EXPECT_EQ(s->breakpoints[0][i], x[i]);
        // Errors scale with the size of each derivative over the whole case; the data are
        // exact, so what remains is the rounding of the solve, a few hundred ulps at most.
        double size[4] = {0, 0, 0, 0};
        for (const auto& p : c.points)
            for (int k = 0; k < 4; ++k) size[k] = std::max({size[k], std::abs(p.d[k]), k ? size[k - 1] : 0.0});
        for (const auto& p : c.points) {
            for (int k = 0; k < 4; ++k) {
                EXPECT_NEAR(at<T>(s.get(), T(p.x), k), p.d[k], 256 * eps<T>() * size[k])
                    << "derivative " << k << " at " << p.x;
            }
            EXPECT_EQ(at<T>(s.get(), T(p.x), 4), 0);
        }
        for (const auto& q : c.integrals) {
            EXPECT_NEAR(Api<T>::integral(T(q.a), T(q.b), s.get()), q.v,
                        256 * eps<T>() * size[0] * (std::abs(q.b - q.a) + 1))
                << "from " << q.a << " to " << q.b;
        }
    }
}

// Sorting is by abscissa alone, carrying the ordinates: any order of the same points gives the
// same spline, bit for bit, and leaves the caller's arrays as they were.
TYPED_TEST(Reference, AnyOrderOfTheDataGivesTheSameSpline) {
    using T = TypeParam;
    for (const RefCase& c : this->cases()) {
        SCOPED_TRACE(c.name);
        const std::vector<T> x = cast<T>(c.x), f = cast<T>(c.f);
        std::vector<T> xr(x.rbegin(), x.rend()), fr(f.rbegin(), f.rend());
        std::rotate(xr.begin(), xr.begin() + 1, xr.end());
        std::rotate(fr.begin(), fr.begin() + 1, fr.end());
        const std::vector<T> xr0 = xr, fr0 = fr;
        Spline<T> s(this->build(c, x, f)), r(this->build(c, xr, fr));
        ASSERT_NE(r, nullptr);
        EXPECT_EQ(xr, xr0);
        EXPECT_EQ(fr, fr0);
        for (int i = 0; i < s->num_coef[0]; ++i) ASSERT_EQ(s->coef[0][i], r->coef[0][i]) << i;
    }
}

}  // namespace
}  // namespace qnum::test
