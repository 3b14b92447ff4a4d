// Argument checks of the internal steps that other solvers call directly.
#include <functional>

#include "linsys/cholesky.hpp"
#include "linsys/lu.hpp"
#include "linsys_test.hpp"

namespace qnum::test {
namespace {

template <class T>
class Internals : public ::testing::Test {
protected:
    QuietErrors quiet;
};
TYPED_TEST_SUITE(Internals, AllTypes);

TYPED_TEST(Internals, ArgumentChecks) {
    using T = TypeParam;
    std::vector<T> a(16, T(1)), f(16, T(0)), x(4, T(0));
    for (int i = 0; i < 4; ++i) a[i * 5] = T(4);
    std::vector<int> p = {1, 2, 3, 4};
    std::vector<Real<T>> s(4);
    Real<T> rc;
    const int bad_path = is_complex_v<T> ? 3097 : 1033;
    struct Case {
        const char* what;
        int code;
        std::vector<int> ints;
        std::function<void()> call;
    };
    const std::vector<Case> table = {
        {"norm rows above lda", 1015, {5, 4}, [&] { linsys::nr1rr(5, 2, a.data(), 4); }},
        {"norm rows", 1016, {0}, [&] { linsys::nr1rr(0, 2, a.data(), 4); }},
        {"norm columns", 1017, {-1}, [&] { linsys::nr1rr(2, -1, a.data(), 4); }},
        {"lu order", 1010, {0}, [&] { linsys::l2trg(0, a.data(), 4, f.data(), 4, p.data(), s.data()); }},
        {"lu lda", 1011, {4, 3}, [&] { linsys::l2trg(4, a.data(), 3, f.data(), 4, p.data(), s.data()); }},
        {"lu ldfac", 1012, {4, 2}, [&] { linsys::l2trg(4, a.data(), 4, f.data(), 2, p.data(), s.data()); }},
        {"condition order", 1016, {0}, [&] { linsys::l2crg(0, a.data(), 4, f.data(), 4, p.data(), &rc, x.data(), s.data()); }},
        {"solve order", 1010, {0}, [&] { linsys::lfsrg(0, a.data(), 4, p.data(), x.data(), 1, x.data()); }},
        {"solve ldfac", 1012, {4, 3}, [&] { linsys::lfsrg(4, a.data(), 3, p.data(), x.data(), 1, x.data()); }},
        {"solve path", bad_path, {}, [&] { linsys::lfsrg(4, a.data(), 4, p.data(), x.data(), 3, x.data()); }},
        {"triangle order", 1010, {0}, [&] { linsys::linrt(0, a.data(), 4, f.data(), 4); }},
        {"triangle lda", 1011, {4, 1}, [&] { linsys::linrt(4, a.data(), 1, f.data(), 4); }},
        {"triangle ldainv", 1013, {4, 2}, [&] { linsys::linrt(4, a.data(), 4, f.data(), 2); }},
        {"cholesky order", 1010, {-3}, [&] { linsys::chol_factor(-3, a.data(), 4, f.data(), 4); }},
        {"cholesky lda", 1011, {4, 2}, [&] { linsys::chol_factor(4, a.data(), 2, f.data(), 4); }},
        {"cholesky ldfac", 1012, {4, 3}, [&] { linsys::chol_factor(4, a.data(), 4, f.data(), 3); }},
    };
    for (const Case& c : table) {
        SCOPED_TRACE(c.what);
        c.call();
        EXPECT_EQ(last_type(), 5);
        EXPECT_EQ(last_code(), c.code);
        for (std::size_t k = 0; k < c.ints.size(); ++k) EXPECT_EQ(int_slot(int(k) + 1), c.ints[k]);
    }
    linsys::lfsrg(4, a.data(), 4, p.data(), x.data(), 0, x.data());
    EXPECT_EQ(int_slot(is_complex_v<T> ? 1 : 3), 0);
    // A zero on the diagonal of the triangle: FATAL 1004, nothing written.
    std::vector<T> u = a;
    u[2 * 5] = T(0);
    linsys::linrt(4, u.data(), 4, f.data(), 4);
    EXPECT_EQ(last_type(), 4);
    EXPECT_EQ(last_code(), 1004);
    for (T v : f) EXPECT_EQ(widen(v), widen(T(0)));
    // The triangle's inverse times the triangle is the identity.
    for (int j = 0; j < 4; ++j)
        for (int i = 0; i < j; ++i) u[i + 4 * j] = T(Real<T>(i - j));
    u[2 * 5] = T(3);
    linsys::linrt(4, u.data(), 4, f.data(), 4);
    EXPECT_EQ(last_type(), 0);
    for (int i = 0; i < 4; ++i)
        for (int j = i; j < 4; ++j) {
            Wide<T> sum = 0;
            for (int k = i; k <= j; ++k) sum += widen(f[i + 4 * k]) * widen(u[k + 4 * j]);
            EXPECT_LT(std::abs(sum - Wide<T>(i == j ? 1 : 0)), 8 * eps<T>()) << i << " " << j;
        }
}

}  // namespace
}  // namespace qnum::test
