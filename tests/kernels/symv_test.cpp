// Hermitian (symmetric) products in full, band and packed storage against dense references.
#include <limits>

#include "dense_ref.hpp"
#include "kernels/level2.hpp"

namespace qnum::test {
namespace {

template <class T>
class Symv : public ::testing::Test {};
TYPED_TEST_SUITE(Symv, Types);

// The stored triangle of h in the three layouts. The triangle that is not stored, and the
// unused corners of the band array, hold the sentinel; the diagonal carries a stray
// imaginary part.
template <class T>
struct Stored {
    Mat<T> full, band;
    std::vector<T> packed;
    Stored(Hermitian<T>& h, bool upper, int k, int lda, Rng& rng)
        : full(h.n, h.n, lda, rng), band(k + 1, h.n, k + 2, rng) {
        const int n = h.n;
        for (int j = 0; j < n; ++j) {
            for (int i = 0; i < n; ++i) {
                const bool stored = upper ? i <= j : i >= j;
                full.at(i, j) = stored ? h.at(i, j) : sentinel<T>();
                if (stored) packed.push_back(i == j ? with_stray_imaginary(h.at(i, j)) : h.at(i, j));
            }
            full.at(j, j) = with_stray_imaginary(h.at(j, j));
            for (int r = 0; r < k + 1; ++r) {
                const int i = upper ? j - k + r : j + r;
                band.at(r, j) = i >= 0 && i < n ? (i == j ? with_stray_imaginary(h.at(i, j)) : h.at(i, j))
                                                : sentinel<T>();
            }
        }
    }
};

TYPED_TEST(Symv, ProductsMatchTheReference) {
    using T = TypeParam;
    for_each_path([&] {
        Rng rng;
        for (int n : {0, 1, 2, 3, 5, 8, 17, 33})
            for (int k : {0, 1, 3, 40})
                for (bool upper : {true, false}) {
                    const int kk = std::min(k, std::max(n - 1, 0));
                    Hermitian<T> h(n, kk, rng);
                    const int lda = std::max(1, n + (k & 1));
                    Stored<T> s(h, upper, kk, lda, rng);
                    const char uplo = upper ? 'U' : 'L';
                    int c = 0;
                    for (auto [alpha, beta] : alpha_beta<T>()) {
                        const int incx = c & 1 ? -1 : 2, incy = c % 3 ? 1 : -3;
                        ++c;
                        SCOPED_TRACE(::testing::Message()
                                     << uplo << " n " << n << " k " << kk << " case " << c);
                        Vec<T> x(n, incx, rng), y(n, incy, rng);
                        if (beta == T(0) && n > 0) y.at(0) = T(std::numeric_limits<Real<T>>::quiet_NaN());
                        const auto e = product(h.d, 'N', alpha, x.values(), beta,
                                               beta == T(0) ? std::vector<T>(n) : y.values());
                        for (int layout = 0; layout < 3; ++layout) {
                            Vec<T> yy = y;
                            if (layout == 0)
                                kern::hemv(uplo, n, alpha, s.full.data(), lda, x.data(), incx, beta,
                                           yy.data(), incy);
                            if (layout == 1)
                                kern::hbmv(uplo, n, kk, alpha, s.band.data(), kk + 2, x.data(), incx, beta,
                                           yy.data(), incy);
                            if (layout == 2)
                                kern::hpmv(uplo, n, alpha, s.packed.data(), x.data(), incx, beta, yy.data(),
                                           incy);
                            if ((alpha == T(0) && beta == T(1)) || n == 0) {
                                EXPECT_TRUE(same_bits(y.v, yy.v));
                            } else {
                                expect_product(yy, e, n);
                            }
                        }
                    }
                }
    });
}

}  // namespace
}  // namespace qnum::test
