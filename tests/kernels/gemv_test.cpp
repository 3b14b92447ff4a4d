// General and band matrix-vector products against dense long double references.
#include <limits>

#include "dense_ref.hpp"
#include "kernels/level2.hpp"

namespace qnum::test {
namespace {

template <class T>
class Gemv : public ::testing::Test {};
TYPED_TEST_SUITE(Gemv, Types);

// Runs one product and compares it; y starts with a NaN when beta = 0, which must not survive,
// and alpha = 0 with beta = 1, or an empty matrix, must leave y bit for bit.
template <class T, class Call>
void check_product(const Dense<T>& d, char trans, int incx, int incy, T alpha, T beta, Rng& rng, Call call) {
    const int lenx = trans == 'N' ? d.n : d.m, leny = trans == 'N' ? d.m : d.n;
    Vec<T> x(lenx, incx, rng), y(leny, incy, rng);
    if (beta == T(0) && leny > 0) y.at(leny / 2) = T(std::numeric_limits<Real<T>>::quiet_NaN());
    const auto y0 = y.values();
    const auto before = y.v;
    call(x.data(), y.data());
    if ((alpha == T(0) && beta == T(1)) || d.m == 0 || d.n == 0) {
        EXPECT_TRUE(same_bits(before, y.v));
        return;
    }
    auto e = product(d, trans, alpha, x.values(), beta, beta == T(0) ? std::vector<T>(leny) : y0);
    expect_product(y, e, lenx);
}

TYPED_TEST(Gemv, GeneralProductMatchesTheReference) {
    using T = TypeParam;
    const int sizes[] = {0, 1, 2, 3, 4, 5, 7, 8, 9, 16, 17, 33, 65};
    for_each_path([&] {
        Rng rng;
        for (int m : sizes)
            for (int n : sizes)
                for (char trans : {'N', 'T', 'C'})
                    for (int pad : {0, 3}) {
                        SCOPED_TRACE(::testing::Message()
                                     << trans << " m " << m << " n " << n << " pad " << pad);
                        const int lda = std::max(1, m + pad);
                        Mat<T> a(m, n, lda, rng);
                        Dense<T> d(m, n);
                        for (int j = 0; j < n; ++j)
                            for (int i = 0; i < m; ++i) d(i, j) = widen(a.at(i, j));
                        int k = 0;
                        for (auto [alpha, beta] : alpha_beta<T>()) {
                            const int incx = (k & 1) ? -2 : 1, incy = (k % 3 == 2) ? 3 : (k & 1) ? 1 : -1;
                            ++k;
                            check_product(d, trans, incx, incy, alpha, beta, rng, [&](const T* x, T* y) {
                                kern::gemv(trans, m, n, alpha, a.data(), lda, x, incx, beta, y, incy);
                            });
                        }
                    }
    });
}

// Columns longer than the row block that the tuned no-transpose product keeps in cache.
TYPED_TEST(Gemv, LongColumnsCrossTheRowBlocks) {
    using T = TypeParam;
    for_each_path([&] {
        Rng rng;
        for (int m : {4095, 4097, 8191, 8193})
            for (char trans : {'N', 'T'}) {
                const int n = 11;
                Mat<T> a(m, n, m + 1, rng);
                Dense<T> d(m, n);
                for (int j = 0; j < n; ++j)
                    for (int i = 0; i < m; ++i) d(i, j) = widen(a.at(i, j));
                check_product(d, trans, 1, 1, T(0.5f), T(2), rng, [&](const T* x, T* y) {
                    kern::gemv(trans, m, n, T(0.5f), a.data(), m + 1, x, 1, T(2), y, 1);
                });
            }
    });
}

// A band matrix with kl sub- and ku super-diagonals; the band array's unused corners hold the
// sentinel, which would spoil the result if read.
TYPED_TEST(Gemv, BandProductMatchesTheReference) {
    using T = TypeParam;
    for_each_path([&] {
        Rng rng;
        for (int m : {1, 2, 5, 9, 17})
            for (int n : {1, 3, 6, 17})
                for (int kl : {0, 1, 4})
                    for (int ku : {0, 2, 5}) {
                        if (kl > m - 1 || ku > n - 1) continue;
                        for (char trans : {'N', 'T', 'C'}) {
                            SCOPED_TRACE(::testing::Message() << trans << " m " << m << " n " << n << " kl "
                                                              << kl << " ku " << ku);
                            const int lda = kl + ku + 1 + (m & 1);
                            Mat<T> band(lda, n, lda, rng);
                            Dense<T> d(m, n);
                            for (int j = 0; j < n; ++j)
                                for (int r = 0; r < lda; ++r) {
                                    const int i = j - ku + r;
                                    if (r < kl + ku + 1 && i >= 0 && i < m) {
                                        d(i, j) = widen(band.at(r, j));
                                    } else {
                                        band.at(r, j) = sentinel<T>();
                                    }
                                }
                            for (auto [alpha, beta] : alpha_beta<T>())
                                check_product(d, trans, -1, 2, alpha, beta, rng, [&](const T* x, T* y) {
                                    kern::gbmv(trans, m, n, kl, ku, alpha, band.data(), lda, x, -1, beta, y,
                                               2);
                                });
                        }
                    }
    });
}

}  // namespace
}  // namespace qnum::test
