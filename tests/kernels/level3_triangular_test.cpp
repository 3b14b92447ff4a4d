// trmm and trsm against long-double reference loops: both sides, both triangles, every
// transpose, unit and non-unit diagonals, sizes around the recursion leaf and the blocking,
// on every path; the other triangle (and a unit diagonal) is never read.
#include "level3_support.hpp"

namespace {

using namespace l3test;

template <class T>
class Level3Triangular : public ::testing::Test {};
TYPED_TEST_SUITE(Level3Triangular, Types);

// An n by n triangle with NaN in the other triangle (and on a unit diagonal), and a
// dominant diagonal, so that solves are well conditioned.
template <class T>
Mat<T> triangle(int n, char uplo, char diag, std::mt19937& g) {
    Mat<T> a(n, n, 3);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i)
            if (uplo == 'L' ? i > j : i < j) a(i, j) = random_value<T>(g);
    for (int i = 0; i < n; ++i)
        a(i, i) = diag == 'U' ? nan_value<T>() : random_value<T>(g) + T(static_cast<Real<T>>(2 + n / 4.0));
    return a;
}

// op(A)(i, j) of the triangle, in reference arithmetic, with its diagonal.
template <class T>
Ref<T> tri_elem(const Mat<T>& a, char uplo, char ta, char diag, int i, int j) {
    const int r = ta == 'N' ? i : j, c = ta == 'N' ? j : i;  // position in A
    if (r == c) return diag == 'U' ? Ref<T>(1) : (ta == 'C' ? cj(Ref<T>(a(r, c))) : Ref<T>(a(r, c)));
    if (uplo == 'L' ? r < c : r > c) return Ref<T>(0);
    return ta == 'C' ? cj(Ref<T>(a(r, c))) : Ref<T>(a(r, c));
}

struct TriCase {
    char side, uplo, ta, diag;
};

std::vector<TriCase> tri_cases() {
    std::vector<TriCase> out;
    for (char side : {'L', 'R'})
        for (char uplo : {'U', 'L'})
            for (char ta : {'N', 'T', 'C'})
                for (char diag : {'N', 'U'}) out.push_back({side, uplo, ta, diag});
    return out;
}

// Sizes m, n around the leaf (32), its double, and the engine's register blocks.
template <class T>
std::vector<std::pair<int, int>> tri_shapes() {
    const auto e = active_engine<T>();
    return {{0, 3}, {3, 0}, {1, 1}, {5, e.nr + 1}, {31, 2}, {2, 33}, {32, 7}, {65, 40}, {e.mr * 3 + 1, 97}};
}

// (op(A) X)(i, j) for the left side, (X op(A))(i, j) for the right, in long double, with the
// sum of the magnitudes of its terms added to abs_sum.
template <class T>
Ref<T> tri_product(const Mat<T>& a, const TriCase& tc, const Mat<T>& x, int na, int i, int j,
                   long double& abs_sum) {
    Ref<T> s = 0;
    for (int p = 0; p < na; ++p) {
        const Ref<T> t = tc.side == 'L' ? tri_elem(a, tc.uplo, tc.ta, tc.diag, i, p) * Ref<T>(x(p, j))
                                        : Ref<T>(x(i, p)) * tri_elem(a, tc.uplo, tc.ta, tc.diag, p, j);
        s += t;
        abs_sum += std::abs(t);
    }
    return s;
}

TYPED_TEST(Level3Triangular, ProductMatchesReference) {
    using T = TypeParam;
    std::mt19937 g(31);
    for (auto path : paths()) {
        ForcePath force(path);
        for (const TriCase& tc : tri_cases())
            for (auto [m, n] : tri_shapes<T>()) {
                SCOPED_TRACE(::testing::Message() << path_name(path) << " " << tc.side << tc.uplo << tc.ta
                                                  << tc.diag << " m=" << m << " n=" << n);
                const int na = tc.side == 'L' ? m : n;
                const Mat<T> a = triangle<T>(na, tc.uplo, tc.diag, g);
                Mat<T> b(m, n, 2);
                fill_random(b, g);
                const T alpha = T(-0.5) + random_value<T>(g) * T(0.25);
                Expected<T> e(m, n);
                for (int j = 0; j < n; ++j)
                    for (int i = 0; i < m; ++i) {
                        long double abs_sum = 0;
                        const Ref<T> s = tri_product(a, tc, b, na, i, j, abs_sum);
                        e.at(i, j) = Ref<T>(alpha) * s;
                        e.tol(i, j) = 4.0L * (na + 2) * eps<T>() * std::abs(alpha) * abs_sum +
                                      std::numeric_limits<Real<T>>::min();
                    }
                const Mat<T> before = b;
                const char s[2] = {tc.side, 0}, u[2] = {tc.uplo, 0}, t[2] = {tc.ta, 0}, d[2] = {tc.diag, 0};
                trmm(s, u, t, d, m, n, alpha, a.data(), a.ld, b.data(), b.ld);
                ASSERT_TRUE(matches(b, before, e));
            }
    }
}

// The solution reproduces alpha B: op(A) X (or X op(A)) computed in long double from the
// returned X matches alpha B to within the backward-error bound of substitution.
TYPED_TEST(Level3Triangular, SolveHasSmallResidual) {
    using T = TypeParam;
    std::mt19937 g(32);
    for (auto path : paths()) {
        ForcePath force(path);
        for (const TriCase& tc : tri_cases())
            for (auto [m, n] : tri_shapes<T>()) {
                SCOPED_TRACE(::testing::Message() << path_name(path) << " " << tc.side << tc.uplo << tc.ta
                                                  << tc.diag << " m=" << m << " n=" << n);
                const int na = tc.side == 'L' ? m : n;
                const Mat<T> a = triangle<T>(na, tc.uplo, tc.diag, g);
                Mat<T> b(m, n, 1);
                fill_random(b, g);
                const T alpha = T(1.5) + random_value<T>(g) * T(0.25);
                const Mat<T> before = b;
                const char s[2] = {tc.side, 0}, u[2] = {tc.uplo, 0}, t[2] = {tc.ta, 0}, d[2] = {tc.diag, 0};
                trsm(s, u, t, d, m, n, alpha, a.data(), a.ld, b.data(), b.ld);
                for (int j = 0; j < b.cols; ++j)
                    for (int i = m; i < b.ld; ++i) ASSERT_TRUE(is_nan(b(i, j))) << "padding written";
                for (int j = 0; j < n; ++j)
                    for (int i = 0; i < m; ++i) {
                        long double abs_sum = 0;
                        const Ref<T> r = tri_product(a, tc, b, na, i, j, abs_sum);
                        const long double err = std::abs(r - Ref<T>(alpha) * Ref<T>(before(i, j)));
                        ASSERT_LE(err, 4.0L * (na + 2) * eps<T>() *
                                           (abs_sum + std::abs(Ref<T>(alpha) * Ref<T>(before(i, j)))))
                            << "row " << i << " column " << j;
                    }
            }
    }
}

// alpha = 0 sets B to zero (NaNs in B included) without reading A.
TYPED_TEST(Level3Triangular, AlphaZeroClearsB) {
    using T = TypeParam;
    std::mt19937 g(33);
    Mat<T> a(4, 4);  // all NaN
    for (bool solve : {false, true}) {
        Mat<T> b(4, 3, 1);
        fill_random(b, g);
        b(0, 0) = nan_value<T>();
        if (solve)
            trsm("L", "U", "N", "N", 4, 3, T(0), a.data(), a.ld, b.data(), b.ld);
        else
            trmm("R", "L", "T", "U", 4, 3, T(0), a.data(), a.ld, b.data(), b.ld);
        for (int j = 0; j < 3; ++j) {
            for (int i = 0; i < 4; ++i) EXPECT_EQ(b(i, j), T(0));
            EXPECT_TRUE(is_nan(b(4, j)));
        }
    }
}

}  // namespace
