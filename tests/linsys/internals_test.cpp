// The internal steps that other solvers call directly, the rectangular transpose (every shape,
// in place and out, with and without the temporary copy), and threads solving at once.
#include <thread>
#include <tuple>

#include "linsys/cholesky.hpp"
#include "linsys/lu.hpp"
#include "linsys/m1ran.hpp"
#include "linsys_test.hpp"

namespace qnum::test {
namespace {

template <class T>
struct Internals : Quiet<T> {
    ~Internals() override { linsys::testing::force_cycle_path(false); }
};
TYPED_TEST_SUITE(Internals, AllTypes);

TYPED_TEST(Internals, ArgumentChecksAndTheTriangleInverse) {
    using T = TypeParam;
    std::vector<T> a(16, T(1)), f(16, T(0)), x(4, T(0));
    for (int i = 0; i < 4; ++i) a[i * 5] = T(4);
    std::vector<int> p = {1, 2, 3, 4};
    std::vector<Real<T>> s(4);
    Real<T> rc;
    T *A = a.data(), *F = f.data(), *X = x.data();
    auto none = [](auto call) { return [call] { return call(), (const void*)nullptr; }; };
    check_errors({
        {"norm rows above lda", 1015, {5, 4}, {}, none([&] { linsys::nr1rr(5, 2, A, 4); })},
        {"norm rows", 1016, {0}, {}, none([&] { linsys::nr1rr(0, 2, A, 4); })},
        {"norm columns", 1017, {-1}, {}, none([&] { linsys::nr1rr(2, -1, A, 4); })},
        {"lu order", 1010, {0}, {}, none([&] { linsys::l2trg(0, A, 4, F, 4, p.data(), s.data()); })},
        {"lu lda", 1011, {4, 3}, {}, none([&] { linsys::l2trg(4, A, 3, F, 4, p.data(), s.data()); })},
        {"lu ldfac", 1012, {4, 2}, {}, none([&] { linsys::l2trg(4, A, 4, F, 2, p.data(), s.data()); })},
        {"condition order", 1016, {0}, {}, none([&] { linsys::l2crg(0, A, 4, F, 4, p.data(), &rc, X, s.data()); })},
        {"solve order", 1010, {0}, {}, none([&] { linsys::lfsrg(0, A, 4, p.data(), X, 1, X); })},
        {"solve ldfac", 1012, {4, 3}, {}, none([&] { linsys::lfsrg(4, A, 3, p.data(), X, 1, X); })},
        {"solve path", is_complex_v<T> ? 3097 : 1033, {}, {}, none([&] { linsys::lfsrg(4, A, 4, p.data(), X, 3, X); })},
        {"triangle order", 1010, {0}, {}, none([&] { linsys::linrt(0, A, 4, F, 4); })},
        {"triangle lda", 1011, {4, 1}, {}, none([&] { linsys::linrt(4, A, 1, F, 4); })},
        {"triangle ldainv", 1013, {4, 2}, {}, none([&] { linsys::linrt(4, A, 4, F, 2); })},
        {"cholesky order", 1010, {-3}, {}, none([&] { linsys::chol_factor(-3, A, 4, F, 4); })},
        {"cholesky lda", 1011, {4, 2}, {}, none([&] { linsys::chol_factor(4, A, 2, F, 4); })},
        {"cholesky ldfac", 1012, {4, 3}, {}, none([&] { linsys::chol_factor(4, A, 4, F, 3); })},
    });
    linsys::lfsrg(4, A, 4, p.data(), X, 0, X);
    EXPECT_EQ(int_slot(is_complex_v<T> ? 1 : 3), 0);
    // A zero on the diagonal of the triangle: FATAL 1004, nothing written.
    std::vector<T> u = a;
    u[2 * 5] = T(0);
    linsys::linrt(4, u.data(), 4, F, 4);
    EXPECT_EQ(std::vector<int>({last_type(), last_code()}), std::vector<int>({4, 1004}));
    EXPECT_TRUE(same_bits(f, std::vector<T>(16, T(0))));
    // The triangle's inverse times the triangle is the identity.
    for (int j = 0; j < 4; ++j)
        for (int i = 0; i < j; ++i) u[i + 4 * j] = T(Real<T>(i - j));
    u[2 * 5] = T(3);
    linsys::linrt(4, u.data(), 4, F, 4);
    EXPECT_EQ(last_type(), 0);
    for (int i = 0; i < 4; ++i)
        for (int j = i; j < 4; ++j) {
            Wide<T> sum = 0;
            for (int k = i; k <= j; ++k) sum += widen(f[i + 4 * k]) * widen(u[k + 4 * j]);
            EXPECT_LT(std::abs(sum - Wide<T>(i == j ? 1 : 0)), 8 * eps<T>()) << i << " " << j;
        }
}

template <class T>
void m1ran(int rows, int cols, const T* a, T* b) {
    if constexpr (std::is_same_v<T, float>) qnum_f_m1ran(rows, cols, a, b);
    else if constexpr (std::is_same_v<T, double>) qnum_d_m1ran(rows, cols, a, b);
    else if constexpr (std::is_same_v<T, C>) qnum_c_m1ran(rows, cols, (const qnum_f_complex*)a, (qnum_f_complex*)b);
    else qnum_z_m1ran(rows, cols, (const qnum_d_complex*)a, (qnum_d_complex*)b);
}

TYPED_TEST(Internals, TransposeEveryShapeEveryPath) {
    using T = TypeParam;
    const std::pair<int, int> shapes[] = {{1, 1}, {1, 7}, {7, 1}, {2, 3}, {3, 2}, {4, 4}, {5, 9}, {13, 29}, {64, 3}, {33, 33}, {40, 70}};
    for (int mode : {0, 1, 2}) {  // out of place, in place with the temporary copy, in place by cycles
        linsys::testing::force_cycle_path(mode == 2);
        for (auto [r, c] : shapes) {
            std::vector<T> a(std::size_t(r) * c), want(a.size()), out(a.size(), sentinel<T>());
            for (std::size_t i = 0; i < a.size(); ++i) a[i] = T(Real<T>(i + 1));
            for (int i = 0; i < r; ++i)
                for (int j = 0; j < c; ++j) want[j * r + i] = a[i * c + j];
            const std::vector<T> a0 = a;
            if (mode > 0) out = a;
            m1ran(r, c, mode == 0 ? a.data() : out.data(), out.data());
            EXPECT_TRUE(last_type() == 0 && same_bits(out, want) && same_bits(a, a0)) << r << " by " << c << " mode " << mode;
        }
    }
    // Bad sizes write nothing.
    std::vector<T> a(6, T(1)), b(6, sentinel<T>());
    const std::vector<T> b0 = b;
    for (auto [r, c, code, bad] : {std::tuple{0, 3, 620, 0}, {-2, 3, 620, -2}, {2, 0, 621, 0}, {2, -5, 621, -5}, {0, 0, 620, 0}}) {
        m1ran(r, c, a.data(), b.data());
        EXPECT_EQ(std::vector<int>({last_type(), last_code(), int_slot(1)}), std::vector<int>({5, code, bad}));
        EXPECT_TRUE(same_bits(b, b0));
    }
    // The solvers' own transposes survive a failed temporary too.
    const int n = 7, ld = 10;
    std::vector<T> m = make_matrix<T>(Kind::Random, n, ld, 5), rhs = make_vector<T>(n, 6), f(std::size_t(n) * ld, sentinel<T>());
    std::vector<int> pvt(n);
    Freed fx(gen(n, m.data(), rhs.data(), QNUM_A_COL_DIM, ld, QNUM_FACTOR_USER, pvt.data(), f.data(), QNUM_FAC_COL_DIM, ld, 0));
    ASSERT_NE(fx, nullptr);
    EXPECT_LT(backward_error(n, m.data(), ld, (T*)fx.get(), rhs.data(), false), 4.0L);
    for (int i = 0; i < n; ++i) EXPECT_EQ(widen(f[i * ld + n]), widen(sentinel<T>()));
}

// The solvers keep no shared state: threads solving at once get what one thread gets.
TEST(LinsysThreads, ConcurrentSolvesMatchSerialOnes) {
    qnum_skip_signal_handler();
    constexpr int threads = 4, n = 70;
    std::vector<std::vector<double>> want(threads), got(threads);
    auto solve = [](int t) {
        QuietErrors quiet;
        std::vector<double> a = make_matrix<double>(Kind::Random, n, n, 40 + t), b = make_vector<double>(n, 50 + t);
        double* inv = nullptr;
        Freed x(qnum_d_lin_sol_gen(n, a.data(), b.data(), QNUM_INVERSE, &inv, 0)), fi(inv);
        Freed y(qnum_d_lin_sol_posdef(n, inv, b.data(), 0));  // any matrix will do: only the outcome is compared
        std::vector<double> out = vec((double*)x.get(), n);
        out.push_back(qnum_n1rty(1));
        if (y.get() != nullptr) out.insert(out.end(), (double*)y.get(), (double*)y.get() + n);
        return out;
    };
    for (int t = 0; t < threads; ++t) want[t] = solve(t);
    std::vector<std::thread> pool;
    for (int t = 0; t < threads; ++t) pool.emplace_back([&, t] { got[t] = solve(t); });
    for (auto& th : pool) th.join();
    for (int t = 0; t < threads; ++t) EXPECT_TRUE(same_bits(want[t], got[t])) << t;
}

}  // namespace
}  // namespace qnum::test
