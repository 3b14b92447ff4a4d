// Matrix-vector kernels in full, band and packed storage against long double references:
// products, triangular solves by their residuals, rank-1 and rank-2 updates.
#include "kernel_test.hpp"

namespace qnum::test {
namespace {

template <class T>
class Level2 : public ::testing::Test {};
TYPED_TEST_SUITE(Level2, Types);

template <class T>
using Elem = std::function<Wide<T>(int, int)>;

template <class T>
Elem<T> column(std::vector<T> v) {
    return [v](int i, int) { return widen(v[i]); };
}
// op(F) for trans 'N', 'T' or 'C'.
template <class T>
Elem<T> opf(Elem<T> f, char trans) {
    return [f, trans](int i, int j) { return trans == 'N' ? f(i, j) : trans == 'T' ? f(j, i) : cj(f(j, i)); };
}
// Scalars for the special cases of the products: zero, one and general values.
template <class T>
std::vector<std::pair<T, T>> alpha_beta() {
    return {{T(0.75f), T(-0.5f)}, {T(0), T(1)}, {T(0), T(0.5f)}, {T(1.5f), T(0)}, {T(-1), T(1)}, {T(0), T(0)}};
}

// y = alpha A x + beta y for A (rows by cols) given by its elements; `call` runs the kernel.
// A NaN in y must not survive beta = 0; alpha = 0 with beta = 1, or an empty A, leaves y
// bit for bit.
template <class T>
void check_mv(int rows, int cols, const Elem<T>& a, T alpha, T beta, int incx, int incy, std::mt19937& g,
              const std::function<void(const T*, T*)>& call) {
    Vec<T> x(cols, incx, g), y(rows, incy, g);
    if (beta == T(0) && rows > 0) y[rows / 2] = nan_value<T>();
    const Vec<T> y0 = y;
    call(x.data(), y.data());
    if ((alpha == T(0) && beta == T(1)) || rows == 0 || cols == 0)
        EXPECT_TRUE(same_bits(y.v, y0.v));
    else
        EXPECT_TRUE(matches(y, y0, product<T>(rows, 1, cols, alpha, a, column(x.values()), beta, column(y0.values()))));
}

TYPED_TEST(Level2, GeneralAndBandProducts) {
    using T = TypeParam;
    std::mt19937 g(1);
    for_each_path([&] {
        const int sizes[] = {0, 1, 2, 3, 4, 5, 7, 8, 9, 16, 17, 33, 65};
        for (int m : sizes)
            for (int n : sizes)
                for (char trans : {'N', 'T', 'C'}) {
                    SCOPED_TRACE(::testing::Message() << trans << " m " << m << " n " << n);
                    const int lda = std::max(1, m + (n & 1) * 3), r = trans == 'N' ? m : n, c = trans == 'N' ? n : m;
                    Mat<T> a(m, n, lda, g);
                    int k = 0;
                    for (auto [alpha, beta] : alpha_beta<T>()) {
                        const int incx = (k & 1) ? -2 : 1, incy = (k % 3 == 2) ? 3 : (k & 1) ? 1 : -1;
                        ++k;
                        check_mv<T>(r, c, op(a, trans), alpha, beta, incx, incy, g,
                                    [&](const T* x, T* y) { kern::gemv(trans, m, n, alpha, a.data(), lda, x, incx, beta, y, incy); });
                    }
                }
        // Columns longer than the row block that the tuned no-transpose product keeps in cache.
        for (int m : {4095, 4097, 8193})
            for (char trans : {'N', 'T'}) {
                Mat<T> a(m, 11, m + 1, g);
                check_mv<T>(trans == 'N' ? m : 11, trans == 'N' ? 11 : m, op(a, trans), T(0.5f),
                            T(2), 1, 1, g, [&](const T* x, T* y) { kern::gemv(trans, m, 11, T(0.5f), a.data(), m + 1, x, 1, T(2), y, 1); });
            }
        // Band matrices: the unused corners of the band array hold NaN.
        for (int m : {1, 2, 5, 17})
            for (int n : {1, 3, 6, 17})
                for (auto [kl, ku] : {std::pair{0, 0}, {1, 2}, {4, 0}, {0, 5}, {4, 5}}) {
                    if (kl > m - 1 || ku > n - 1) continue;
                    const int lda = kl + ku + 1 + (m & 1);
                    Mat<T> band(lda, n, lda);
                    for (int j = 0; j < n; ++j)
                        for (int i = std::max(0, j - ku); i < std::min(m, j + kl + 1); ++i) band.at(ku + i - j, j) = random_value<T>(g);
                    const Elem<T> d = [&](int i, int j) { return i - j > kl || j - i > ku ? Wide<T>(0) : widen(band.at(ku + i - j, j)); };
                    for (char trans : {'N', 'T', 'C'})
                        for (auto [alpha, beta] : alpha_beta<T>()) {
                            SCOPED_TRACE(::testing::Message() << "band " << trans << " m " << m << " n " << n << " kl " << kl << " ku " << ku);
                            check_mv<T>(trans == 'N' ? m : n, trans == 'N' ? n : m, opf<T>(d, trans), alpha, beta, -1, 2, g,
                                        [&](const T* x, T* y) { kern::gbmv(trans, m, n, kl, ku, alpha, band.data(), lda, x, -1, beta, y, 2); });
                        }
                }
    });
}

// A stored diagonal element of a Hermitian matrix: its imaginary part must not be read.
template <class T>
T stray(T v) {
    return scalar<T>(std::real(v), 99);
}

// Hermitian (for real data symmetric) products in full, band and packed storage: only the
// stored triangle is read.
TYPED_TEST(Level2, HermitianProducts) {
    using T = TypeParam;
    std::mt19937 g(2);
    for_each_path([&] {
        for (int n : {0, 1, 2, 3, 5, 8, 17, 33})
            for (int k : {0, 1, 3, 40})
                for (char uplo : {'U', 'L'}) {
                    const int kk = std::min(k, std::max(n - 1, 0)), lda = std::max(1, n + (k & 1));
                    Mat<T> h(n, n, std::max(n, 1), g), full(n, n, lda), band(kk + 1, n, kk + 2);
                    std::vector<T> packed;
                    for (int j = 0; j < n; ++j)
                        for (int i = 0; i <= j; ++i) {
                            if (j - i > kk) h.at(i, j) = T(0);
                            h.at(j, i) = i == j ? T(std::real(h.at(i, j))) : cj(h.at(i, j));
                            h.at(i, j) = cj(h.at(j, i));
                        }
                    for (int j = 0; j < n; ++j)
                        for (int i = 0; i < n; ++i) {
                            if (uplo == 'U' ? i > j : i < j) continue;
                            const T s = i == j ? stray(h.at(i, j)) : h.at(i, j);
                            full.at(i, j) = s;
                            packed.push_back(s);
                            if (std::abs(i - j) <= kk) band.at(uplo == 'U' ? kk + i - j : i - j, j) = s;
                        }
                    int c = 0;
                    for (auto [alpha, beta] : alpha_beta<T>()) {
                        // unit strides in cases 0 and 4 send complex data down the tuned column groups
                        const int incx = c % 4 == 0 ? 1 : c & 1 ? -1 : 2, incy = c % 3 ? 1 : -3;
                        ++c;
                        SCOPED_TRACE(::testing::Message() << uplo << " n " << n << " k " << kk << " case " << c);
                        const Elem<T> d = op(h, 'N');
                        check_mv<T>(n, n, d, alpha, beta, incx, incy, g,
                                    [&](const T* x, T* y) { kern::hemv(uplo, n, alpha, full.data(), lda, x, incx, beta, y, incy); });
                        check_mv<T>(n, n, d, alpha, beta, incx, incy, g,
                                    [&](const T* x, T* y) { kern::hbmv(uplo, n, kk, alpha, band.data(), kk + 2, x, incx, beta, y, incy); });
                        check_mv<T>(n, n, d, alpha, beta, incx, incy, g,
                                    [&](const T* x, T* y) { kern::hpmv(uplo, n, alpha, packed.data(), x, incx, beta, y, incy); });
                    }
                }
    });
}

// Triangular products and solves in the three layouts. What a kernel must not read holds
// NaN: the other triangle, the band corners, and the diagonal when it is implicitly one.
// The matrix is diagonally dominant so that the solves are well conditioned.
TYPED_TEST(Level2, TriangularProductsAndSolves) {
    using T = TypeParam;
    std::mt19937 g(3);
    for_each_path([&] {
        for (int n : {0, 1, 2, 3, 4, 7, 16, 33, 70})
            for (int k : {0, 2, 100})
                for (char uplo : {'U', 'L'})
                    for (char diag : {'N', 'U'}) {
                        const int kk = std::min(k, std::max(n - 1, 0));
                        Mat<T> d(n, n, std::max(n, 1)), full(n, n, n + 2), band(kk + 1, n, kk + 3);
                        std::vector<T> packed;
                        for (int j = 0; j < n; ++j)
                            for (int i = 0; i < n; ++i) {
                                const bool in = uplo == 'U' ? i <= j : i >= j;
                                T v = in && std::abs(i - j) <= kk ? random_value<T>(g) * T(Real<T>(1) / (kk + 1)) : T(0);
                                if (i == j) v = diag == 'U' ? T(1) : v + scalar<T>(2, 2);  // both parts of a complex one may dominate
                                d.at(i, j) = v;
                                if (!in) continue;
                                full.at(i, j) = i == j && diag == 'U' ? nan_value<T>() : v;
                                packed.push_back(full.at(i, j));
                                if (std::abs(i - j) <= kk) band.at(uplo == 'U' ? kk + i - j : i - j, j) = full.at(i, j);
                            }
                        for (char trans : {'N', 'T', 'C'})
                            for (int layout = 0; layout < 3; ++layout) {
                                if (layout != 1 && kk < n - 1) continue;  // full and packed hold the whole triangle
                                const int inc = layout == 1 ? -2 : (n & 1) ? 1 : 3;
                                SCOPED_TRACE(::testing::Message() << uplo << trans << diag << " n " << n << " k " << kk << " layout " << layout);
                                auto run = [&](bool solve, T* x) {
                                    if (layout == 0) (solve ? kern::trsv<T> : kern::trmv<T>)(uplo, trans, diag, n, full.data(), n + 2, x, inc);
                                    if (layout == 1) (solve ? kern::tbsv<T> : kern::tbmv<T>)(uplo, trans, diag, n, kk, band.data(), kk + 3, x, inc);
                                    if (layout == 2) (solve ? kern::tpsv<T> : kern::tpmv<T>)(uplo, trans, diag, n, packed.data(), x, inc);
                                };
                                const Elem<T> a = op(d, trans);
                                Vec<T> x(n, inc, g);
                                const Vec<T> x0 = x;
                                run(false, x.data());
                                EXPECT_TRUE(matches(x, x0, product<T>(n, 1, n, T(1), a, column(x0.values()), T(0), column(x0.values()))));
                                x = x0;
                                run(true, x.data());
                                const Expected<T> r = product<T>(n, 1, n, T(1), a, column(x.values()), T(0), column(x0.values()));
                                for (int i = 0; i < n; ++i) EXPECT_LE(std::abs(widen(x0[i]) - r.value[i]), 2 * r.bound[i]) << i;
                            }
                    }
    });
}

// ger/gerc on the whole matrix; her/hpr/her2/hpr2 on the stored triangle only, with a real
// diagonal; alpha = 0 changes nothing.
TYPED_TEST(Level2, RankUpdates) {
    using T = TypeParam;
    std::mt19937 g(4);
    for_each_path([&] {
        for (int m : {0, 1, 2, 5, 16, 33})
            for (int n : {0, 1, 3, 17})
                for (bool conj : {false, true})
                    for (T alpha : {T(0.5f), T(0)}) {
                        SCOPED_TRACE(::testing::Message() << "m " << m << " n " << n << " conj " << conj);
                        Mat<T> a(m, n, std::max(1, m + 2), g);
                        const int ix = conj ? -2 : 1;  // a unit stride takes the tuned column update
                        Vec<T> x(m, ix, g), y(n, 3, g);
                        const Mat<T> a0 = a;
                        (conj ? kern::gerc<T> : kern::ger<T>)(m, n, alpha, x.data(), ix, y.data(), 3, a.data(), a.ld);
                        const auto yv = y.values();
                        EXPECT_TRUE(matches(a, a0, product<T>(m, n, 1, alpha, column(x.values()), [&](int, int j) { return conj ? cj(widen(yv[j])) : widen(yv[j]); }, T(1), op(a0, 'N'))));
                    }
        for (int n : {0, 1, 2, 3, 8, 17, 40})
            for (char uplo : {'U', 'L'})
                for (bool two : {false, true})
                    for (T alpha : {scalar<T>(0.75, two ? 0.375 : 0), T(0)}) {
                        SCOPED_TRACE(::testing::Message() << uplo << " n " << n << " rank " << (two ? 2 : 1));
                        const int ix = n & 1 ? 1 : 2;
                        Vec<T> x(n, ix, g), y(n, -2, g);
                        Mat<T> a(n, n, n + 1, g);
                        const auto in = [uplo](int i, int j) { return uplo == 'U' ? i <= j : i >= j; };
                        std::vector<T> packed;
                        for (int j = 0; j < n; ++j)
                            for (int i = 0; i < n; ++i)
                                if (in(i, j)) packed.push_back(a.at(i, j));
                        const Mat<T> a0 = a;
                        const std::vector<T> p0 = packed;
                        if (two) {
                            kern::her2(uplo, n, alpha, x.data(), ix, y.data(), -2, a.data(), n + 1);
                            kern::hpr2(uplo, n, alpha, x.data(), ix, y.data(), -2, packed.data());
                        } else {
                            kern::her(uplo, n, std::real(alpha), x.data(), ix, a.data(), n + 1);
                            kern::hpr(uplo, n, std::real(alpha), x.data(), ix, packed.data());
                        }
                        if (alpha == T(0)) {
                            EXPECT_TRUE(same_bits(a0.v, a.v));
                            EXPECT_TRUE(same_bits(p0, packed));
                            continue;
                        }
                        // alpha x y^H + conj(alpha) y x^H as a product of inner dimension 2.
                        const auto xv = x.values(), yv = two ? y.values() : x.values();
                        const Wide<T> al = widen(alpha), al2 = two ? cj(al) : Wide<T>(0);
                        Expected<T> e = product<T>(n, n, 2, T(1), [&](int i, int p) { return widen(p ? yv[i] : xv[i]); },
                                                   [&](int p, int j) { return p ? al2 * cj(widen(xv[j])) : al * cj(widen(yv[j])); }, T(1), op(a0, 'N'));
                        for (int i = 0; i < n; ++i) e.at(i, i) = std::real(e.at(i, i));
                        EXPECT_TRUE(matches(a, a0, e, in));
                        std::size_t p = 0;
                        for (int j = 0; j < n; ++j)
                            for (int i = 0; i < n; ++i)
                                if (in(i, j)) {  // NOLINT
                                    EXPECT_LE(std::abs(widen(packed[p]) - e.at(i, j)), e.tol(i, j)) << i << "," << j;
                                    EXPECT_TRUE(i != j || std::abs(std::imag(a.at(i, j))) + std::abs(std::imag(packed[p])) == 0);
                                    ++p;
                                }
                    }
    });
}

}  // namespace
}  // namespace qnum::test
