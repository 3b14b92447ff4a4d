// Matrix-matrix kernels against long double references on every path, over sizes at every
// edge of the register and cache blocking and of the recursion leaf (32).
#include "kernel_test.hpp"

namespace qnum::test {
namespace {

template <class T>
class Level3 : public ::testing::Test {};
TYPED_TEST_SUITE(Level3, Types);

struct Shape {
    int m, n, k;
};

TYPED_TEST(Level3, GemmOnEveryShapeAndTranspose) {
    using T = TypeParam;
    std::mt19937 g(11);
    for_each_path([&] {
        const auto e = engine<T>();
        const Shape shapes[] = {{0, 3, 2}, {3, 0, 2}, {2, 3, 0}, {1, 1, 1}, {e.mr - 1, e.nr + 1, 3},
                                {e.mr + 1, e.nr - 1, 5}, {2 * e.mr + 3, 2 * e.nr + 1, 7}, {e.mc - 1, 5, 9},
                                {e.mc + 1, e.nr + 2, 9}, {5, 3, e.kc - 1}, {7, e.nr + 1, e.kc + 1}, {3, e.nc - 1, 2},
                                {e.mr + 1, e.nc + 1, 3}};
        for (const Shape& s : shapes)
            for (char ta : {'N', 'T', 'C'})
                for (char tb : {'N', 'T', 'C'}) {
                    SCOPED_TRACE(::testing::Message() << "m=" << s.m << " n=" << s.n << " k=" << s.k << " " << ta << tb);
                    Mat<T> a = ta == 'N' ? Mat<T>(s.m, s.k, s.m + 3, g) : Mat<T>(s.k, s.m, s.k + 2, g);
                    Mat<T> b = tb == 'N' ? Mat<T>(s.k, s.n, s.k + 1, g) : Mat<T>(s.n, s.k, s.n + 4, g);
                    Mat<T> c(s.m, s.n, s.m + 2, g);
                    const T alpha = scalar<T>(1.25, -0.5), beta = scalar<T>(-0.75, 0.25);
                    const Mat<T> c0 = c;
                    const Expected<T> want = product<T>(s.m, s.n, s.k, alpha, op(a, ta), op(b, tb), beta, op(c0, 'N'));
                    kern::gemm(ta, tb, s.m, s.n, s.k, alpha, a.data(), a.ld, b.data(), b.ld, beta, c.data(), c.ld);
                    ASSERT_TRUE(matches(c, c0, want));
                }
        // One product that passes every cache block at once.
        const Shape s{e.mc + e.mr + 1, 2 * e.nr + 3, e.kc + 2};
        Mat<T> a(s.k, s.m, s.k + 1, g), b(s.n, s.k, s.n, g), c(s.m, s.n, s.m + 1, g);
        const Mat<T> c0 = c;
        const Expected<T> want = product<T>(s.m, s.n, s.k, T(-1), op(a, 'C'), op(b, 'T'), T(1), op(c0, 'N'));
        kern::gemm('C', 'T', s.m, s.n, s.k, T(-1), a.data(), a.ld, b.data(), b.ld, T(1), c.data(), c.ld);
        ASSERT_TRUE(matches(c, c0, want));
    });
}

// beta = 0 assigns (NaNs in C do not survive); alpha = 0 or k = 0 does not read A or B (all
// NaN here): C becomes beta C, and with beta = 1 keeps every bit.
TYPED_TEST(Level3, GemmSpecialScalars) {
    using T = TypeParam;
    std::mt19937 g(13);
    for_each_path([&] {
        const auto e = engine<T>();
        const int m = 2 * e.mr + 1, n = e.nr + 2;
        Mat<T> a(m, 4, m, g), b(4, n, 4, g), c(m, n, m + 1), nan_a(m, 4, m), nan_b(4, n, 4);
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < m; ++i) c.at(i, j) = nan_value<T>();
        const Mat<T> c0 = c;
        const Expected<T> want = product<T>(m, n, 4, T(2), op(a, 'N'), op(b, 'N'), T(0), op(c0, 'N'));
        kern::gemm('N', 'N', m, n, 4, T(2), a.data(), a.ld, b.data(), b.ld, T(0), c.data(), c.ld);
        ASSERT_TRUE(matches(c, c0, want));
        for (int k : {4, 0})
            for (T beta : {T(1), T(2), T(0)}) {
                Mat<T> d(m, n, m + 1, g);
                d.at(1, 1) = nan_value<T>(), d.at(2, 2) = T(-0.0);
                const Mat<T> d0 = d;
                kern::gemm('N', 'N', m, n, k, k ? T(0) : T(3), nan_a.data(), m, nan_b.data(), 4, beta, d.data(), d.ld);
                EXPECT_TRUE(beta != T(1) || same_bits(d.v, d0.v)) << k;
                for (int j = 0; j < n; ++j)
                    for (int i = 0; i < m; ++i) {
                        const T want_ij = beta == T(0) ? T(0) : beta * d0.at(i, j);
                        EXPECT_TRUE(d.at(i, j) == want_ij || (std::isnan(std::real(want_ij)) && std::isnan(std::real(d.at(i, j)))))
                            << k << " " << i << "," << j;
                    }
            }
    });
}

// symm and hemm equal gemm on the expanded matrix and read only the stored triangle (the
// other one, and for hemm the imaginary parts of the diagonal, hold NaN).
TYPED_TEST(Level3, SymmetricProducts) {
    using T = TypeParam;
    std::mt19937 g(15);
    for_each_path([&] {
        const auto e = engine<T>();
        for (bool herm : {false, true})
            for (char side : {'L', 'R'})
                for (char uplo : {'U', 'L'})
                    for (auto [m, n] : {std::pair{1, 1}, {e.mr + 1, e.nr - 1}, {e.mc + 1, 3}, {4, e.kc + 1}}) {
                        if (herm && !is_complex_v<T>) continue;
                        SCOPED_TRACE(::testing::Message() << (herm ? "hemm " : "symm ") << side << uplo << " m=" << m << " n=" << n);
                        const int na = side == 'L' ? m : n;
                        Mat<T> a(na, na, na + 2), full(na, na, na), b(m, n, m + 1, g), c(m, n, m + 3, g);
                        for (int j = 0; j < na; ++j)
                            for (int i = 0; i < na; ++i)
                                if (uplo == 'L' ? i >= j : i <= j) a.at(i, j) = random_value<T>(g);
                        for (int j = 0; j < na; ++j)
                            for (int i = 0; i < na; ++i) {
                                const bool stored = uplo == 'L' ? i >= j : i <= j;
                                T v = stored ? a.at(i, j) : a.at(j, i);
                                full.at(i, j) = herm && !stored ? cj(v) : herm && i == j ? T(std::real(v)) : v;
                                if (herm && i == j) a.at(i, i) = scalar<T>(std::real(v), std::numeric_limits<double>::quiet_NaN());
                            }
                        const T alpha = scalar<T>(0.5, 1), beta = scalar<T>(2, -1);
                        const Mat<T> c0 = c;
                        const Expected<T> want = side == 'L' ? product<T>(m, n, m, alpha, op(full, 'N'), op(b, 'N'), beta, op(c0, 'N'))
                                                             : product<T>(m, n, n, alpha, op(b, 'N'), op(full, 'N'), beta, op(c0, 'N'));
                        (herm ? kern::hemm<T> : kern::symm<T>)(side, uplo, m, n, alpha, a.data(), a.ld, b.data(), b.ld, beta, c.data(), c.ld);
                        ASSERT_TRUE(matches(c, c0, want));
                    }
    });
}

enum Kind { Syrk, Herk, Syr2k, Her2k };

// One rank-k update of the n by n C against its reference: only the uplo triangle changes,
// and a Hermitian diagonal comes out real with an imaginary part of exactly zero.
template <class T>
void check_update(Kind kind, char uplo, char trans, int n, int k, T alpha, T beta, std::mt19937& g, bool nan_c = false) {
    const bool herm = kind == Herk || kind == Her2k, two = kind == Syr2k || kind == Her2k, tn = trans == 'N';
    Mat<T> a = tn ? Mat<T>(n, k, n + 2, g) : Mat<T>(k, n, k + 1, g), b = tn ? Mat<T>(n, k, n + 1, g) : Mat<T>(k, n, k + 3, g);
    Mat<T> c(n, n, n + 2, g);
    if (nan_c)
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < n; ++i) c.at(i, j) = nan_value<T>();
    // op(X) is n by k, its partner k by n.
    const char left = tn ? 'N' : (herm ? 'C' : 'T'), right = tn ? (herm ? 'C' : 'T') : 'N';
    const Mat<T> c0 = c;
    Expected<T> e = product<T>(n, n, k, alpha, op(a, left), op(two ? b : a, right), beta, op(c0, 'N'));
    if (two) {
        const Expected<T> e2 = product<T>(n, n, k, herm ? cj(alpha) : alpha, op(b, left), op(a, right), T(0), op(c0, 'N'));
        for (std::size_t i = 0; i < e.value.size(); ++i) e.value[i] += e2.value[i], e.bound[i] += e2.bound[i];
    }
    if (herm)
        for (int i = 0; i < n; ++i) e.at(i, i) = std::real(e.at(i, i));
    if (kind == Syrk) kern::syrk(uplo, trans, n, k, alpha, a.data(), a.ld, beta, c.data(), c.ld);
    if (kind == Syr2k) kern::syr2k(uplo, trans, n, k, alpha, a.data(), a.ld, b.data(), b.ld, beta, c.data(), c.ld);
    if (kind == Herk) kern::herk(uplo, trans, n, k, std::real(alpha), a.data(), a.ld, std::real(beta), c.data(), c.ld);
    if (kind == Her2k) kern::her2k(uplo, trans, n, k, alpha, a.data(), a.ld, b.data(), b.ld, std::real(beta), c.data(), c.ld);
    ASSERT_TRUE(matches(c, c0, e, [uplo](int i, int j) { return uplo == 'L' ? i >= j : i <= j; }));
    for (int i = 0; herm && i < n; ++i) ASSERT_EQ(std::imag(c.at(i, i)), 0) << "diagonal " << i;
}

// Every kind, triangle and transpose (for real data 'C' is 'T'), with general scalars on
// sizes around the leaf and the blocking, then the special scalars: beta = 0 assigns, alpha
// = 0 only scales the triangle, and alpha = 0 with beta = 1 keeps every bit of C (a
// Hermitian diagonal's imaginary part and a NaN included) without reading A.
TYPED_TEST(Level3, RankUpdates) {
    using T = TypeParam;
    std::mt19937 g(21);
    for (Kind kind : {Syrk, Syr2k, Herk, Her2k})
        for (char uplo : {'U', 'L'})
            for (char trans : {'N', 'T', 'C'}) {
                const bool herm = kind == Herk || kind == Her2k;
                if ((herm && (!is_complex_v<T> || trans == 'T')) || (!herm && is_complex_v<T> && trans == 'C')) continue;
                SCOPED_TRACE(::testing::Message() << "kind " << kind << " " << uplo << trans);
                const T alpha = kind == Herk ? T(0.75) : scalar<T>(0.75, -0.5), beta = herm ? T(-1.5) : scalar<T>(-1.5, 0.25);
                for_each_path([&] {
                    const auto e = engine<T>();
                    for (auto [n, k] : {std::pair{1, 1}, {3, 0}, {7, 5}, {31, 3}, {32, 2}, {33, e.kc + 1}, {2 * e.mr + 67, 9}}) {
                        SCOPED_TRACE(::testing::Message() << "n=" << n << " k=" << k);
                        check_update<T>(kind, uplo, trans, n, k, alpha, beta, g);
                    }
                });
                check_update<T>(kind, uplo, trans, 37, 6, T(2), T(0), g, true);
                check_update<T>(kind, uplo, trans, 9, 4, T(0), T(0.5), g);
                Mat<T> a(6, 6, 6), c(6, 6, 7, g);  // a all NaN
                c.at(2, 2) = nan_value<T>();
                const Mat<T> c0 = c;
                if (kind == Syrk) kern::syrk(uplo, trans, 6, 3, T(0), a.data(), 6, T(1), c.data(), c.ld);
                if (kind == Syr2k) kern::syr2k(uplo, trans, 6, 3, T(0), a.data(), 6, a.data(), 6, T(1), c.data(), c.ld);
                if (kind == Herk) kern::herk(uplo, trans, 6, 3, Real<T>(0), a.data(), 6, Real<T>(1), c.data(), c.ld);
                if (kind == Her2k) kern::her2k(uplo, trans, 6, 3, T(0), a.data(), 6, a.data(), 6, Real<T>(1), c.data(), c.ld);
                EXPECT_TRUE(same_bits(c.v, c0.v));
            }
}

// trmm and trsm: both sides, both triangles, every transpose, unit and non-unit diagonals.
// The other triangle (and a unit diagonal) holds NaN, and the diagonal dominates so that
// solves are well conditioned; a solve must reproduce alpha B within the bound of
// substitution. alpha = 0 clears B without reading A.
TYPED_TEST(Level3, TriangularProductsAndSolves) {
    using T = TypeParam;
    std::mt19937 g(31);
    for_each_path([&] {
        const auto en = engine<T>();
        for (char side : {'L', 'R'})
            for (char uplo : {'U', 'L'})
                for (char ta : {'N', 'T', 'C'})
                    for (char diag : {'N', 'U'})
                        for (auto [m, n] : {std::pair{0, 3}, {3, 0}, {1, 1}, {5, en.nr + 1}, {31, 2}, {2, 33}, {32, 7}, {65, 40}, {en.mr * 3 + 1, 97}}) {
                            SCOPED_TRACE(::testing::Message() << side << uplo << ta << diag << " m=" << m << " n=" << n);
                            const int na = side == 'L' ? m : n;
                            Mat<T> a(na, na, na + 3), full(na, na, std::max(na, 1));
                            for (int j = 0; j < na; ++j)
                                for (int i = 0; i < na; ++i) {
                                    const bool in = uplo == 'L' ? i > j : i < j;
                                    if (in) a.at(i, j) = random_value<T>(g);
                                    if (i == j) a.at(i, i) = diag == 'U' ? nan_value<T>() : random_value<T>(g) + scalar<T>(2 + na / 4.0, 2 + na / 4.0);
                                    full.at(i, j) = i == j && diag == 'U' ? T(1) : in || i == j ? a.at(i, j) : T(0);
                                }
                            const auto fa = op(full, ta);
                            auto apply = [&](const Mat<T>& x, T alpha) {
                                return side == 'L' ? product<T>(m, n, na, alpha, fa, op(x, 'N'), T(0), op(x, 'N'))
                                                   : product<T>(m, n, na, alpha, op(x, 'N'), fa, T(0), op(x, 'N'));
                            };
                            Mat<T> b(m, n, m + 2, g);
                            const Mat<T> b0 = b;
                            const T alpha = T(-0.5) + random_value<T>(g) * T(0.25);
                            kern::trmm(side, uplo, ta, diag, m, n, alpha, a.data(), a.ld, b.data(), b.ld);
                            ASSERT_TRUE(matches(b, b0, apply(b0, alpha)));
                            b = b0;
                            kern::trsm(side, uplo, ta, diag, m, n, T(1.5), a.data(), a.ld, b.data(), b.ld);
                            Expected<T> r = apply(b, T(1));
                            for (int j = 0; j < n; ++j)
                                for (int i = 0; i < m; ++i) r.value[i + j * m] *= 1 / 1.5L, r.tol(i, j) *= 1.5L;
                            ASSERT_TRUE(matches(b0, b0, r));  // op(A) X / 1.5 = B
                        }
        Mat<T> a(4, 4, 4), b(4, 3, 5, g);
        b.at(0, 0) = nan_value<T>();
        const Mat<T> b0 = b;
        kern::trsm('L', 'U', 'N', 'N', 4, 3, T(0), a.data(), 4, b.data(), b.ld);
        Expected<T> zero(4, 3);
        ASSERT_TRUE(matches(b, b0, zero));
        b = b0;
        kern::trmm('R', 'L', 'T', 'U', 4, 3, T(0), a.data(), 4, b.data(), b.ld);
        ASSERT_TRUE(matches(b, b0, zero));
    });
}

}  // namespace
}  // namespace qnum::test
