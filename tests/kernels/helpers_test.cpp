// The library's own helpers, through their public entry points.
#include <limits>

#include "kernel_util.hpp"
#include "qnummath.h"

namespace qnum::test {
namespace {

const double nan_d = std::numeric_limits<double>::quiet_NaN();

// The fill visits n elements at |incx| and nothing else; an increment of 0 writes nothing.
TEST(Helpers, FillWritesExactlyItsElements) {
    for (int n : {0, 1, 2, 5, 9})
        for (int inc : {1, 2, 3, -2, 0}) {
            std::vector<double> x(40, -1.0);
            std::vector<int> ix(40, -1);
            std::vector<qnum_d_complex> zx(40, qnum_d_complex{-1, -1});
            const qnum_d_complex z{2, 3};
            qnum_20732(n, 7.0, x.data(), inc);
            qnum_iset(n, 7, ix.data(), inc);
            qnum_zset(&n, &z, zx.data(), &inc);
            const int step = inc < 0 ? -inc : inc;
            for (int p = 0; p < 40; ++p) {
                const bool hit = inc != 0 && p % step == 0 && p / step < n;
                EXPECT_EQ(hit ? 7.0 : -1.0, x[p]) << "n " << n << " inc " << inc << " p " << p;
                EXPECT_EQ(hit ? 7 : -1, ix[p]);
                EXPECT_EQ(hit ? 3.0 : -1.0, zx[p].im);
            }
        }
    float f[3] = {1, 1, 1};
    qnum_20731(2, 0.5f, f, 2);
    EXPECT_EQ(0.5f, f[0]);
    EXPECT_EQ(1.0f, f[1]);
    EXPECT_EQ(0.5f, f[2]);
}

TEST(Helpers, AddSumAndTripleProduct) {
    float f[5] = {1, 2, 3, 4, 5};
    qnum_20721(3, 0.5f, f, 2);  // elements 1, 3, 5
    EXPECT_EQ(1.5f, f[0]);
    EXPECT_EQ(2.0f, f[1]);
    EXPECT_EQ(5.5f, f[4]);
    double d[5] = {1, 2, 3, 4, 5};
    qnum_20722(2, 1.0, d, 0);  // the same element twice
    EXPECT_EQ(3.0, d[0]);
    EXPECT_EQ(3 + 2 + 3 + 4 + 5, qnum_20734(5, d, 1));
    EXPECT_EQ(3 + 3 + 5, qnum_20734(3, d, -2));
    EXPECT_EQ(0.0, qnum_20734(0, d, 1));
    EXPECT_EQ(1.5f + 4.0f, qnum_20733(2, f, 3));

    const double x[] = {1, 2, 3, 4}, y[] = {2, 2, 2, 2}, z[] = {1, -1, 1, -1};
    EXPECT_EQ(2 - 4 + 6 - 8, qnum_dxyz(4, x, 1, y, 1, z, 1));
    EXPECT_EQ(3 * 2 * 1 + 1 * 2 * 1, qnum_dxyz(2, x, -2, y, 1, z, 2));  // x walked 3, 1
    EXPECT_EQ(0.0, qnum_dxyz(0, x, 1, y, 1, z, 1));
    const float xf[] = {0.5f, 3}, yf[] = {4, 1}, zf[] = {1, 1};
    EXPECT_EQ(5.0f, qnum_sxyz(2, xf, 1, yf, 1, zf, 1));

    float out[4] = {9, 9, 9, 9};
    qnum_svcal(2, 3.0f, xf, 1, out, -3);  // y walked backwards: out[3], out[0]
    EXPECT_EQ(1.5f, out[3]);
    EXPECT_EQ(9.0f, out[1]);
    EXPECT_EQ(9.0f, out[0] - 0.0f);
}

// Signed extremes: the first of equal values wins, and n < 1 gives 0.
TEST(Helpers, IndexOfSignedExtremes) {
    const float a[] = {3, 7, 7};
    EXPECT_EQ(2, qnum_20717(3, a, 1));
    EXPECT_EQ(1, qnum_20719(3, a, 1));
    const double b[] = {-1, 5, -9, 5, -9};
    EXPECT_EQ(2, qnum_20718(5, b, 1));
    EXPECT_EQ(3, qnum_20720(5, b, 1));
    EXPECT_EQ(1, qnum_20720(5, b, -1));  // walked backwards: the last -9 comes first
    EXPECT_EQ(1, qnum_20718(1, b, 1));
    EXPECT_EQ(0, qnum_20718(0, b, 1));
    EXPECT_EQ(0, qnum_20719(-3, a, 1));
}

TEST(Helpers, IntegerCopy) {
    const int x[] = {1, 2, 3, 4, 5, 6};
    int y[6] = {0, 0, 0, 0, 0, 0};
    qnum_icopy(6, x, 1, y, 1);
    EXPECT_EQ(6, y[5]);
    int z[6] = {0, 0, 0, 0, 0, 0};
    qnum_icopy(3, x, 2, z, -1);  // 1, 3, 5 into z[2], z[1], z[0]
    EXPECT_EQ(5, z[0]);
    EXPECT_EQ(1, z[2]);
    EXPECT_EQ(0, z[3]);
    qnum_icopy(0, x, 1, z, 1);
    EXPECT_EQ(5, z[0]);
}

// Adding a complex zero leaves x alone bit for bit, NaNs and negative zeros included.
TEST(Helpers, ComplexAddConstant) {
    qnum_d_complex x[3] = {{nan_d, -0.0}, {1, 2}, {3, 4}};
    const qnum_d_complex zero{0, -0.0}, a{1, -1};
    const int n = 3, inc = 1, minus = -1;
    qnum_d_complex before[3];
    std::memcpy(before, x, sizeof x);
    qnum_zadd(&n, &zero, x, &inc);
    EXPECT_EQ(0, std::memcmp(before, x, sizeof x));
    qnum_zadd(&n, &a, x, &minus);
    EXPECT_EQ(2.0, x[1].re);
    EXPECT_EQ(1.0, x[1].im);
    EXPECT_EQ(3.0, x[2].im);
    qnum_f_complex f[2] = {{1, 1}, {2, 2}};
    const qnum_f_complex fa{0.5f, 0};
    const int two = 2;
    qnum_cadd(&two, &fa, f, &inc);
    EXPECT_EQ(2.5f, f[1].re);
}

// A matrix widened in place (ldb > lda over the same storage) comes out intact, as does one
// narrowed in place and one copied between separate arrays.
TEST(Helpers, WholeMatrixCopies) {
    for (int n : {1, 2, 5})
        for (auto [lda, ldb] :
             {std::pair{n, n}, std::pair{n, n + 3}, std::pair{n + 2, n}, std::pair{n + 1, n + 1}}) {
            SCOPED_TRACE(::testing::Message() << "n " << n << " lda " << lda << " ldb " << ldb);
            auto value = [](int i, int j) { return Z(i + 10 * j, -j); };
            std::vector<Z> store(static_cast<std::size_t>(std::max(lda, ldb)) * n, Z(-5, -5));
            for (int j = 0; j < n; ++j)
                for (int i = 0; i < n; ++i) store[j * lda + i] = value(i, j);
            std::vector<Z> separate(static_cast<std::size_t>(ldb) * n, Z(-5, -5));
            auto* a = reinterpret_cast<qnum_d_complex*>(store.data());
            qnum_dccgcg(&n, a, &lda, reinterpret_cast<qnum_d_complex*>(separate.data()), &ldb);
            qnum_dccgcg(&n, a, &lda, a, &ldb);
            for (int j = 0; j < n; ++j)
                for (int i = 0; i < n; ++i) {
                    EXPECT_EQ(value(i, j), store[j * ldb + i]);
                    EXPECT_EQ(value(i, j), separate[j * ldb + i]);
                }
            std::vector<C> cs(static_cast<std::size_t>(ldb) * n, C(-5, -5));
            std::vector<C> ca(static_cast<std::size_t>(lda) * n, C(1, 2));
            qnum_ccgcg(&n, reinterpret_cast<qnum_f_complex*>(ca.data()), &lda,
                       reinterpret_cast<qnum_f_complex*>(cs.data()), &ldb);
            EXPECT_EQ(C(1, 2), cs[static_cast<std::size_t>(n - 1) * ldb + n - 1]);
        }
}

// A band matrix copied into a wider band, separately and in place: the diagonals of a keep
// their places, b's extra diagonals become zero, rows past b's band are left alone.
TEST(Helpers, BandMatrixCopies) {
    const int n = 6;
    for (auto [nla, nua, nlb, nub] :
         {std::array{1, 1, 1, 1}, std::array{1, 2, 3, 2}, std::array{0, 1, 2, 4}, std::array{2, 0, 2, 3}}) {
        const int lda = nla + nua + 1, ldb = nlb + nub + 2;
        SCOPED_TRACE(::testing::Message() << nla << nua << nlb << nub);
        auto value = [](int r, int j) { return Z(r + 1, j + 1); };  // band row r of column j
        std::vector<Z> store(static_cast<std::size_t>(ldb) * n, Z(-5, -5));
        for (int j = 0; j < n; ++j)
            for (int r = 0; r < lda; ++r) store[j * lda + r] = value(r, j);
        std::vector<Z> separate(static_cast<std::size_t>(ldb) * n, Z(-5, -5));
        auto* a = reinterpret_cast<qnum_d_complex*>(store.data());
        qnum_dccbcb(&n, a, &lda, &nla, &nua, reinterpret_cast<qnum_d_complex*>(separate.data()), &ldb, &nlb,
                    &nub);
        qnum_dccbcb(&n, a, &lda, &nla, &nua, a, &ldb, &nlb, &nub);
        for (const auto* b : {&store, &separate})
            for (int j = 0; j < n; ++j)
                for (int r = 0; r < ldb; ++r) {
                    const int ra = r - (nub - nua);
                    const Z want = r == ldb - 1          ? (*b)[j * ldb + r]
                                   : ra >= 0 && ra < lda ? value(ra, j)
                                                         : Z(0);
                    EXPECT_EQ(want, (*b)[j * ldb + r]) << "row " << r << " column " << j;
                }
        EXPECT_EQ(Z(-5, -5), separate[ldb - 1]);
    }
}

}  // namespace
}  // namespace qnum::test
