// Tests of the in-place rectangular transpose: every shape, in place and out of place, with
// and without the temporary copy, and its errors.
#include <functional>
#include <tuple>

#include "linsys/m1ran.hpp"
#include "linsys_test.hpp"

namespace qnum::test {
namespace {

template <class T>
class Transpose : public ::testing::Test {
protected:
    QuietErrors quiet;
    ~Transpose() override { linsys::testing::force_cycle_path(false); }
};
TYPED_TEST_SUITE(Transpose, AllTypes);

template <class T>
void m1ran(int rows, int cols, const T* a, T* b) {
    if constexpr (std::is_same_v<T, float>) {
        qnum_f_m1ran(rows, cols, a, b);
    } else if constexpr (std::is_same_v<T, double>) {
        qnum_d_m1ran(rows, cols, a, b);
    } else if constexpr (std::is_same_v<T, C>) {
        qnum_c_m1ran(rows, cols, reinterpret_cast<const qnum_f_complex*>(a), reinterpret_cast<qnum_f_complex*>(b));
    } else {
        qnum_z_m1ran(rows, cols, reinterpret_cast<const qnum_d_complex*>(a), reinterpret_cast<qnum_d_complex*>(b));
    }
}

TYPED_TEST(Transpose, EveryShapeEveryPath) {
    using T = TypeParam;
    const std::pair<int, int> shapes[] = {{1, 1}, {1, 7}, {7, 1}, {2, 3}, {3, 2}, {4, 4}, {5, 9}, {13, 29}, {64, 3}, {33, 33}, {40, 70}};
    enum Mode { OutOfPlace, Copy, Cycles };
    for (Mode mode : {OutOfPlace, Copy, Cycles}) {
        linsys::testing::force_cycle_path(mode == Cycles);
        for (auto [r, c] : shapes) {
            SCOPED_TRACE(::testing::Message() << r << " by " << c << " mode " << mode);
            const std::size_t count = static_cast<std::size_t>(r) * c;
            std::vector<T> a(count);
            for (std::size_t i = 0; i < count; ++i) a[i] = T(static_cast<Real<T>>(i + 1));
            std::vector<T> want(count);
            for (int i = 0; i < r; ++i)
                for (int j = 0; j < c; ++j) want[static_cast<std::size_t>(j) * r + i] = a[static_cast<std::size_t>(i) * c + j];
            std::vector<T> out(count, sentinel<T>());
            if (mode == OutOfPlace) {
                const std::vector<T> a0 = a;
                m1ran(r, c, a.data(), out.data());
                EXPECT_TRUE(same_bits(a, a0));
            } else {
                out = a;
                m1ran(r, c, out.data(), out.data());
            }
            EXPECT_EQ(last_type(), 0);
            EXPECT_TRUE(same_bits(out, want));
        }
    }
}

TYPED_TEST(Transpose, BadSizesWriteNothing) {
    using T = TypeParam;
    std::vector<T> a(6, T(1)), b(6, sentinel<T>());
    const std::vector<T> b0 = b;
    for (auto [r, c, code, bad] : {std::tuple{0, 3, 620, 0}, {-2, 3, 620, -2}, {2, 0, 621, 0}, {2, -5, 621, -5}, {0, 0, 620, 0}}) {
        m1ran(r, c, a.data(), b.data());
        EXPECT_EQ(last_type(), 5);
        EXPECT_EQ(last_code(), code);
        EXPECT_EQ(int_slot(1), bad);
        EXPECT_TRUE(same_bits(b, b0));
    }
}

// The solvers' own transposes survive a failed temporary too.
TYPED_TEST(Transpose, SolverRunsWithoutTheTemporary) {
    using T = TypeParam;
    linsys::testing::force_cycle_path(true);
    const int n = 7, ld = 10;
    std::vector<T> a = make_matrix<T>(Kind::Random, n, ld, 5), b = make_vector<T>(n, 6);
    std::vector<int> pvt(n);
    std::vector<T> f(static_cast<std::size_t>(n) * ld, sentinel<T>());
    T* x = gen(n, a.data(), b.data(), QNUM_A_COL_DIM, ld, QNUM_FACTOR_USER, pvt.data(), f.data(), QNUM_FAC_COL_DIM, ld, 0);
    Freed fx(x);
    ASSERT_NE(x, nullptr);
    EXPECT_LT(backward_error(n, a.data(), ld, x, b.data(), false), 4.0L);
    for (int i = 0; i < n; ++i) EXPECT_EQ(widen(f[static_cast<std::size_t>(i) * ld + n]), widen(sentinel<T>()));
}

}  // namespace
}  // namespace qnum::test
