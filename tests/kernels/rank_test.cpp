// Rank-1 and rank-2 updates against element-wise long double references.
#include "dense_ref.hpp"
#include "kernels/level2.hpp"

namespace qnum::test {
namespace {

template <class T>
class Rank : public ::testing::Test {};
TYPED_TEST_SUITE(Rank, Types);

TYPED_TEST(Rank, GeneralUpdates) {
    using T = TypeParam;
    for_each_path([&] {
        Rng rng;
        for (int m : {0, 1, 2, 5, 16, 33})
            for (int n : {0, 1, 3, 17})
                for (bool conj_y : {false, true})
                    for (T alpha : {T(0.5f), T(0)}) {
                        SCOPED_TRACE(::testing::Message() << "m " << m << " n " << n << " conj " << conj_y);
                        const int lda = std::max(1, m + 2), incx = -2, incy = 3;
                        Mat<T> a(m, n, lda, rng);
                        Vec<T> x(m, incx, rng), y(n, incy, rng);
                        const auto a0 = a.v;
                        if (conj_y) {
                            kern::gerc(m, n, alpha, x.data(), incx, y.data(), incy, a.data(), lda);
                        } else {
                            kern::ger(m, n, alpha, x.data(), incx, y.data(), incy, a.data(), lda);
                        }
                        EXPECT_TRUE(a.padding_intact());
                        for (int j = 0; j < n; ++j)
                            for (int i = 0; i < m; ++i) {
                                const Wide<T> yj = conj_y ? conj_w<T>(widen(y.at(j))) : widen(y.at(j));
                                const Wide<T> add = widen(alpha) * widen(x.at(i)) * yj;
                                const T old = a0[static_cast<std::size_t>(j) * lda + i];
                                EXPECT_TRUE(near(a.at(i, j), widen(old) + add,
                                                 4 * eps<T>() * (mag(old) + std::abs(add))));
                            }
                    }
    });
}

// Hermitian updates touch only the stored triangle and leave its diagonal real.
TYPED_TEST(Rank, HermitianUpdates) {
    using T = TypeParam;
    for_each_path([&] {
        Rng rng;
        for (int n : {0, 1, 2, 3, 8, 17, 40})
            for (bool upper : {true, false})
                for (bool two : {false, true})
                    for (T alpha : {T(0.75f), T(0)}) {
                        SCOPED_TRACE(::testing::Message()
                                     << (upper ? 'U' : 'L') << " n " << n << " rank " << (two ? 2 : 1));
                        const char uplo = upper ? 'U' : 'L';
                        T al = alpha;  // the rank-2 form takes a complex alpha
                        if constexpr (is_complex_v<T>) {
                            if (two) al = alpha * T(1, 0.5f);
                        }
                        Vec<T> x(n, 2, rng), y(n, -1, rng);
                        Mat<T> a(n, n, n + 1, rng);
                        std::vector<T> packed;
                        for (int j = 0; j < n; ++j)
                            for (int i = 0; i < n; ++i)
                                if (upper ? i <= j : i >= j) packed.push_back(a.at(i, j));
                        const auto a0 = a.v;
                        const auto p0 = packed;
                        if (two) {
                            kern::her2(uplo, n, al, x.data(), 2, y.data(), -1, a.data(), n + 1);
                            kern::hpr2(uplo, n, al, x.data(), 2, y.data(), -1, packed.data());
                        } else {
                            kern::her(uplo, n, std::real(al), x.data(), 2, a.data(), n + 1);
                            kern::hpr(uplo, n, std::real(al), x.data(), 2, packed.data());
                        }
                        if (al == T(0)) {
                            EXPECT_TRUE(same_bits(a0, a.v));
                            EXPECT_TRUE(same_bits(p0, packed));
                            continue;
                        }
                        EXPECT_TRUE(a.padding_intact());
                        std::size_t p = 0;
                        for (int j = 0; j < n; ++j)
                            for (int i = 0; i < n; ++i) {
                                const T old = a0[static_cast<std::size_t>(j) * (n + 1) + i];
                                if (!(upper ? i <= j : i >= j)) {
                                    EXPECT_TRUE(Vec<T>::same(a.at(i, j), old)) << i << "," << j;
                                    continue;
                                }
                                Wide<T> add =
                                    widen(al) * widen(x.at(i)) * conj_w<T>(widen(two ? y.at(j) : x.at(j)));
                                if (two)
                                    add += conj_w<T>(widen(al)) * widen(y.at(i)) * conj_w<T>(widen(x.at(j)));
                                Wide<T> want = widen(old) + add;
                                if (i == j) want = Wide<T>(std::real(want));
                                const long double tol = 6 * eps<T>() * (mag(old) + std::abs(add));
                                EXPECT_TRUE(near(a.at(i, j), want, tol)) << i << "," << j;
                                EXPECT_TRUE(near(packed[p++], want, tol)) << i << "," << j;
                                if (i == j) {
                                    EXPECT_EQ(0, std::imag(a.at(i, j)));
                                }
                            }
                    }
    });
}

}  // namespace
}  // namespace qnum::test
