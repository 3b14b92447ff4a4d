// gemm, symm and hemm against long-double reference loops, on every instruction-set path the
// machine supports, over sizes at every edge of the register and cache blocking.
#include "level3_support.hpp"

namespace {

using namespace l3test;

template <class T>
class Level3Product : public ::testing::Test {};
TYPED_TEST_SUITE(Level3Product, Types);

struct Shape {
    int m, n, k;
};

// Sizes around every edge of the engine's blocking: empty, single, one sliver and a bit,
// cache blocks plus and minus one in each dimension.
template <class T>
std::vector<Shape> edge_shapes() {
    const auto e = active_engine<T>();
    return {{0, 3, 2},
            {3, 0, 2},
            {2, 3, 0},
            {1, 1, 1},
            {e.mr - 1, e.nr + 1, 3},
            {e.mr + 1, e.nr - 1, 5},
            {2 * e.mr + 3, 2 * e.nr + 1, 7},
            {e.mc - 1, 5, 9},
            {e.mc + 1, e.nr + 2, 9},
            {5, 3, e.kc - 1},
            {7, e.nr + 1, e.kc + 1},
            {3, e.nc - 1, 2},
            {e.mr + 1, e.nc + 1, 3}};
}

template <class T>
T scalar(double re, double im) {
    if constexpr (is_complex<T>)
        return T(static_cast<Real<T>>(re), static_cast<Real<T>>(im));
    else
        return static_cast<T>(re);
}

const char* const transposes[] = {"N", "T", "C"};

TYPED_TEST(Level3Product, GemmMatchesReferenceOnEveryPathShapeAndTranspose) {
    using T = TypeParam;
    std::mt19937 g(11);
    for (auto path : paths()) {
        ForcePath force(path);
        for (const Shape& s : edge_shapes<T>())
            for (const char* ta : transposes)
                for (const char* tb : transposes) {
                    SCOPED_TRACE(::testing::Message() << path_name(path) << " m=" << s.m << " n=" << s.n
                                                      << " k=" << s.k << " " << ta << tb);
                    Mat<T> a = ta[0] == 'N' ? Mat<T>(s.m, s.k, 3) : Mat<T>(s.k, s.m, 2);
                    Mat<T> b = tb[0] == 'N' ? Mat<T>(s.k, s.n, 1) : Mat<T>(s.n, s.k, 4);
                    Mat<T> c(s.m, s.n, 2);
                    fill_random(a, g), fill_random(b, g), fill_random(c, g);
                    const T alpha = scalar<T>(1.25, -0.5), beta = scalar<T>(-0.75, 0.25);
                    Expected<T> e = reference_product(ta[0], tb[0], s.m, s.n, s.k, alpha, a, b, beta, c);
                    const Mat<T> before = c;
                    gemm(ta, tb, s.m, s.n, s.k, alpha, a.data(), a.ld, b.data(), b.ld, beta, c.data(), c.ld);
                    ASSERT_TRUE(matches(c, before, e));
                }
    }
}

// A product large enough to pass every cache block at once, on each path.
TYPED_TEST(Level3Product, GemmCrossesAllCacheBlocksAtOnce) {
    using T = TypeParam;
    std::mt19937 g(12);
    for (auto path : paths()) {
        ForcePath force(path);
        const auto en = active_engine<T>();
        const Shape s{en.mc + en.mr + 1, 2 * en.nr + 3, en.kc + 2};
        SCOPED_TRACE(path_name(path));
        Mat<T> a(s.k, s.m, 1), b(s.n, s.k, 0), c(s.m, s.n, 1);
        fill_random(a, g), fill_random(b, g), fill_random(c, g);
        const T alpha = scalar<T>(-1, 0.5), beta = scalar<T>(1, 0);
        Expected<T> e = reference_product('C', 'T', s.m, s.n, s.k, alpha, a, b, beta, c);
        const Mat<T> before = c;
        gemm("c", "t", s.m, s.n, s.k, alpha, a.data(), a.ld, b.data(), b.ld, beta, c.data(), c.ld);
        ASSERT_TRUE(matches(c, before, e));
    }
}

// beta = 0 assigns: NaNs in C do not survive, on full and edge blocks alike.
TYPED_TEST(Level3Product, GemmBetaZeroOverwritesNaN) {
    using T = TypeParam;
    std::mt19937 g(13);
    for (auto path : paths()) {
        ForcePath force(path);
        const auto en = active_engine<T>();
        const int m = 2 * en.mr + 1, n = en.nr + 2, k = 4;
        Mat<T> a(m, k), b(k, n), c(m, n, 1);
        fill_random(a, g), fill_random(b, g);
        Mat<T> zero_c(m, n, 1, T(0));
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < m; ++i) c(i, j) = nan_value<T>();
        Expected<T> e = reference_product('N', 'N', m, n, k, T(2), a, b, T(0), zero_c);
        const Mat<T> before = c;
        gemm("N", "N", m, n, k, T(2), a.data(), a.ld, b.data(), b.ld, T(0), c.data(), c.ld);
        ASSERT_TRUE(matches(c, before, e)) << path_name(path);
    }
}

// alpha = 0 (or k = 0) does not read A or B: with beta = 1, C keeps every bit (NaNs and
// signed zeros included); otherwise C = beta C, and beta = 0 assigns zeros.
TYPED_TEST(Level3Product, GemmAlphaZeroOrEmptySumOnlyScalesC) {
    using T = TypeParam;
    std::mt19937 g(14);
    const int m = 5, n = 4;
    Mat<T> a(m, 3), b(3, n);  // all NaN: must not be read
    for (int k : {3, 0})
        for (T beta : {T(1), T(2), T(0)}) {
            Mat<T> c(m, n, 1);
            fill_random(c, g);
            c(1, 1) = nan_value<T>();
            c(2, 2) = T(-0.0);
            const Mat<T> before = c;
            gemm("N", "N", m, n, k, k == 0 ? T(3) : T(0), a.data(), a.ld, b.data(), b.ld, beta, c.data(),
                 c.ld);
            if (beta == T(1)) {
                EXPECT_TRUE(same_bits(c, before)) << "k=" << k;
                continue;
            }
            for (int j = 0; j < n; ++j)
                for (int i = 0; i < m; ++i) {
                    if (beta == T(0)) {
                        EXPECT_EQ(c(i, j), T(0));
                    } else if (i != 1 || j != 1) {
                        EXPECT_EQ(c(i, j), beta * before(i, j));
                    }
                }
        }
}

// The full symmetric (Hermitian) matrix of which the `uplo` triangle of a is stored.
template <class T>
Mat<T> expand(const Mat<T>& a, char uplo, bool herm) {
    Mat<T> full(a.rows, a.cols);
    for (int j = 0; j < a.cols; ++j)
        for (int i = 0; i < a.rows; ++i) {
            const bool stored = uplo == 'L' ? i >= j : i <= j;
            T v = stored ? a(i, j) : a(j, i);
            if (herm && !stored) v = cj(v);
            if (herm && i == j) v = T(std::real(v));
            full(i, j) = v;
        }
    return full;
}

// symm and hemm equal gemm on the expanded matrix, and read only the stored triangle (the
// other one, and for hemm the imaginary parts of the diagonal, hold NaNs).
TYPED_TEST(Level3Product, SymmetricProductsReadOneTriangle) {
    using T = TypeParam;
    std::mt19937 g(15);
    for (auto path : paths()) {
        ForcePath force(path);
        const auto en = active_engine<T>();
        for (bool herm : {false, true}) {
            if (herm && !is_complex<T>) continue;
            for (const char* side : {"L", "R"})
                for (const char* uplo : {"U", "L"})
                    for (auto [m, n] :
                         {std::pair{1, 1}, {en.mr + 1, en.nr - 1}, {en.mc + 1, 3}, {4, en.kc + 1}}) {
                        SCOPED_TRACE(::testing::Message() << path_name(path) << (herm ? " hemm " : " symm ")
                                                          << side << uplo << " m=" << m << " n=" << n);
                        const int na = side[0] == 'L' ? m : n;
                        Mat<T> a(na, na, 2), b(m, n, 1), c(m, n, 3);
                        fill_random(b, g), fill_random(c, g);
                        for (int j = 0; j < na; ++j)
                            for (int i = 0; i < na; ++i)
                                if (uplo[0] == 'L' ? i >= j : i <= j) a(i, j) = random_value<T>(g);
                        if constexpr (is_complex<T>)
                            if (herm)
                                for (int i = 0; i < na; ++i) a(i, i).imag(nan_value<Real<T>>());
                        const Mat<T> full = expand(a, uplo[0], herm);
                        const T alpha = scalar<T>(0.5, 1), beta = scalar<T>(2, -1);
                        Expected<T> e = side[0] == 'L'
                                            ? reference_product('N', 'N', m, n, m, alpha, full, b, beta, c)
                                            : reference_product('N', 'N', m, n, n, alpha, b, full, beta, c);
                        const Mat<T> before = c;
                        if constexpr (is_complex<T>) {
                            if (herm)
                                hemm(side, uplo, m, n, alpha, a.data(), a.ld, b.data(), b.ld, beta, c.data(),
                                     c.ld);
                            else
                                symm(side, uplo, m, n, alpha, a.data(), a.ld, b.data(), b.ld, beta, c.data(),
                                     c.ld);
                        } else {
                            symm(side, uplo, m, n, alpha, a.data(), a.ld, b.data(), b.ld, beta, c.data(),
                                 c.ld);
                        }
                        ASSERT_TRUE(matches(c, before, e));
                    }
        }
    }
}

}  // namespace
