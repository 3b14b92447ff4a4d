// Tests of the positive definite solver: residuals with one triangle read, the factor
// identity, round trip, inverse, condition estimates and errors.
#include <cmath>
#include <functional>
#include <limits>

#include "linsys_test.hpp"

#include <climits>

namespace qnum::test {
namespace {

template <class T>
class Posdef : public ::testing::Test {
protected:
    QuietErrors quiet;
};
TYPED_TEST_SUITE(Posdef, AllTypes);

// B^H B + n I in full (rows ld apart), Hermitian positive definite.
template <class T>
std::vector<T> make_hpd(int n, int ld, unsigned seed) {
    std::vector<T> bm = make_matrix<T>(Kind::Random, n, n, seed);
    std::vector<T> a(static_cast<std::size_t>(n) * ld, sentinel<T>());
    for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
            Wide<T> s = i == j ? Wide<T>(n) : Wide<T>(0);
            for (int k = 0; k < n; ++k)
                s += conj_w(widen(bm[static_cast<std::size_t>(k) * n + i])) * widen(bm[static_cast<std::size_t>(k) * n + j]);
            a[static_cast<std::size_t>(i) * ld + j] = narrow<T>(std::complex<long double>(s));
        }
        if constexpr (is_complex_v<T>) a[static_cast<std::size_t>(i) * ld + i].imag(0);
    }
    return a;
}

TYPED_TEST(Posdef, SolvesReadingOnlyTheUpperTriangle) {
    using T = TypeParam;
    for (int n : {1, 2, 31, 33, 70}) {
        SCOPED_TRACE(n);
        const int ld = n + 2;
        std::vector<T> full = make_hpd<T>(n, ld, 10 + n);
        std::vector<T> a = full;
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < i; ++j) a[static_cast<std::size_t>(i) * ld + j] = T(std::numeric_limits<Real<T>>::quiet_NaN());
        std::vector<T> b = make_vector<T>(n, 20 + n);
        const std::vector<T> a0 = a;
        T* x = posdef(n, a.data(), b.data(), QNUM_A_COL_DIM, ld, 0);
        Freed fx(x);
        ASSERT_NE(x, nullptr);
        EXPECT_EQ(last_type(), 0);
        EXPECT_LT(backward_error(n, full.data(), ld, x, b.data(), false), 4.0L);
        EXPECT_TRUE(same_bits(a, a0));
    }
}

TYPED_TEST(Posdef, FactorRoundTripAndInverse) {
    using T = TypeParam;
    for (int n : {1, 5, 45}) {
        SCOPED_TRACE(n);
        const int fcd = n + 1;
        std::vector<T> a = make_hpd<T>(n, n, 30 + n);
        std::vector<T> b = make_vector<T>(n, 40 + n);
        T* f = nullptr;
        T* inv = nullptr;
        T* x = posdef(n, a.data(), b.data(), QNUM_FACTOR, &f, QNUM_FAC_COL_DIM, fcd, QNUM_INVERSE, &inv, 0);
        Freed fx(x), ff(f), fi(inv);
        ASSERT_NE(f, nullptr);
        ASSERT_NE(inv, nullptr);
        // R upper with R^H R = A; zero below the diagonal and in the padding.
        long double worst = 0, scale = 0;
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < fcd; ++j) {
                if (j < i || j >= n) EXPECT_EQ(widen(f[static_cast<std::size_t>(i) * fcd + j]), widen(T(0)));
                if (j >= n) continue;
                Wide<T> s = 0;
                for (int k = 0; k <= std::min(i, j); ++k)
                    s += conj_w(widen(f[static_cast<std::size_t>(k) * fcd + i])) * widen(f[static_cast<std::size_t>(k) * fcd + j]);
                worst = std::max(worst, static_cast<long double>(std::abs(s - widen(a[static_cast<std::size_t>(i) * n + j]))));
                scale = std::max(scale, static_cast<long double>(std::abs(widen(a[static_cast<std::size_t>(i) * n + j]))));
            }
        }
        EXPECT_LT(worst / (scale * n * eps<T>()), 2.0L);
        // Inverse times A.
        long double ie = 0;
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) {
                Wide<T> s = i == j ? Wide<T>(-1) : Wide<T>(0);
                for (int k = 0; k < n; ++k) s += widen(inv[static_cast<std::size_t>(i) * n + k]) * widen(a[static_cast<std::size_t>(k) * n + j]);
                ie = std::max(ie, static_cast<long double>(std::abs(s)));
            }
        EXPECT_LT(ie, 40 * n * eps<T>());
        // Solve only with the factor, into the caller's x.
        std::vector<T> x2(n);
        EXPECT_EQ(posdef(n, static_cast<T*>(nullptr), b.data(), QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, f, QNUM_FAC_COL_DIM,
                         fcd, QNUM_RETURN_USER, x2.data(), 0),
                  x2.data());
        EXPECT_TRUE(same_bits(std::vector<T>(x, x + n), x2));
        // Inverse only into the caller's array, padding untouched.
        std::vector<T> mine(static_cast<std::size_t>(n) * (n + 1), sentinel<T>());
        posdef(n, a.data(), static_cast<T*>(nullptr), QNUM_INVERSE_ONLY, QNUM_INVERSE_USER, mine.data(), QNUM_INV_COL_DIM,
               n + 1, 0);
        EXPECT_EQ(last_type(), 0);
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j)
                EXPECT_EQ(widen(mine[static_cast<std::size_t>(i) * (n + 1) + j]), widen(inv[static_cast<std::size_t>(i) * n + j]));
            EXPECT_EQ(widen(mine[static_cast<std::size_t>(i) * (n + 1) + n]), widen(sentinel<T>()));
        }
        // In place: the factor overwrites the upper triangle of a and leaves the rest.
        std::vector<T> inplace = a;
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < i; ++j) inplace[static_cast<std::size_t>(i) * n + j] = sentinel<T>();
        posdef(n, inplace.data(), static_cast<T*>(nullptr), QNUM_FACTOR_ONLY, QNUM_FACTOR_USER, inplace.data(), 0);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j)
                EXPECT_EQ(widen(inplace[static_cast<std::size_t>(i) * n + j]),
                          widen(j < i ? sentinel<T>() : f[static_cast<std::size_t>(i) * fcd + j]));
    }
}

TYPED_TEST(Posdef, ConditionEstimatesAgainstExactValues) {
    using T = TypeParam;
    if constexpr (!is_complex_v<T>) {
        for (const RefCase& c : reference_cases()) {
            if (c.name != "pascal6" && c.name != "lehmer8" && c.name != "pascal9") continue;
            SCOPED_TRACE(c.name);
            std::vector<T> a = narrow_all<T>(c.a), b = narrow_all<T>(c.b);
            Real<T> cond = 0;
            T* x = posdef(c.n, a.data(), b.data(), QNUM_CONDITION, &cond, 0);
            Freed fx(x);
            ASSERT_NE(x, nullptr);
            const long double ce = c.cond1 * eps<T>();
            if (ce > 10) EXPECT_EQ(last_code(), 1003);
            if (ce < 0.1) {
                EXPECT_GE(cond, 0.1L * c.cond1);
                EXPECT_LE(cond, 3.0L * c.cond1);
                long double err = 0, size = 0;
                for (int i = 0; i < c.n; ++i) {
                    err = std::max(err, std::abs(std::complex<long double>(widen(x[i])) - c.x[i]));
                    size = std::max(size, std::abs(c.x[i]));
                }
                EXPECT_LE(err / size, 4 * c.n * ce);
            }
        }
    }
}

TYPED_TEST(Posdef, NotPositiveDefiniteNamesTheFailingColumn) {
    using T = TypeParam;
    for (int k : {1, 2, 20, 33, 40}) {
        SCOPED_TRACE(k);
        const int n = 40;
        std::vector<T> a = make_hpd<T>(n, n, 50);
        // Column k's diagonal made too small to stay positive.
        a[static_cast<std::size_t>(k - 1) * n + (k - 1)] = T(k == 1 ? 0 : -1);
        std::vector<T> b = make_vector<T>(n, 51);
        T* f = nullptr;
        Real<T> cond = 0;
        EXPECT_EQ(posdef(n, a.data(), b.data(), QNUM_FACTOR, &f, QNUM_CONDITION, &cond, 0), nullptr);
        EXPECT_EQ(last_type(), 4);
        EXPECT_EQ(last_code(), 1018);
        EXPECT_EQ(int_slot(1), k);
        EXPECT_EQ(f, nullptr);
        EXPECT_TRUE(std::isinf(cond));
    }
    std::vector<T> a = {T(1), T(2), T(2), T(1)};
    std::vector<T> b = {T(1), T(1)};
    EXPECT_EQ(posdef(2, a.data(), b.data(), 0), nullptr);
    EXPECT_EQ(int_slot(1), 2);
}

TYPED_TEST(Posdef, EveryErrorWithItsSubstitutions) {
    using T = TypeParam;
    const int n = 3;
    std::vector<T> a = make_hpd<T>(n, n, 1), b = make_vector<T>(n, 2), f(9, T(1));
    T* A = a.data();
    T* B = b.data();
    T* F = f.data();
    T* nul = nullptr;
    T* fp = nullptr;
    Real<T> cond;
    struct Case {
        const char* what;
        int code;
        std::vector<int> ints;
        std::vector<std::string> strings;
        std::function<T*()> call;
    };
    const std::vector<Case> table = {
        {"transpose is unknown", 103, {QNUM_TRANSPOSE, 4}, {}, [&] { return posdef(n, A, B, QNUM_TRANSPOSE, 0); }},
        {"unknown after a value", 103, {QNUM_TRANSPOSE, 6}, {}, [&] { return posdef(n, A, B, QNUM_A_COL_DIM, n, QNUM_TRANSPOSE, 0); }},
        {"null factor", 104, {}, {"factor", "QNUM_FACTOR_USER"}, [&] { return posdef(n, A, B, QNUM_FACTOR_USER, nul, 0); }},
        {"null inva", 104, {}, {"inva", "QNUM_INVERSE_USER"}, [&] { return posdef(n, A, B, QNUM_INVERSE_USER, nul, 0); }},
        {"null x", 104, {}, {"x", "QNUM_RETURN_USER"}, [&] { return posdef(n, A, B, QNUM_RETURN_USER, nul, 0); }},
        {"null cond", 104, {}, {"cond", "QNUM_CONDITION"},
         [&] { return posdef(n, A, B, QNUM_CONDITION, static_cast<Real<T>*>(nullptr), 0); }},
        {"null a", 6002, {}, {"a"}, [&] { return posdef(n, nul, B, 0); }},
        {"null b", 6002, {}, {"b"}, [&] { return posdef(n, A, nul, 0); }},
        {"n = 0", 1010, {0}, {}, [&] { return posdef(0, A, B, 0); }},
        {"a_col_dim", 1014, {3, 2}, {"a"}, [&] { return posdef(n, A, B, QNUM_A_COL_DIM, 2, 0); }},
        {"fac_col_dim", 1014, {3, 2}, {"factor"}, [&] { return posdef(n, A, B, QNUM_FAC_COL_DIM, 2, 0); }},
        {"only options", 1091, {}, {}, [&] { return posdef(n, A, B, QNUM_INVERSE_ONLY, QNUM_FACTOR_ONLY, 0); }},
        {"solve only without factor", 1027, {}, {}, [&] { return posdef(n, A, B, QNUM_SOLVE_ONLY, 0); }},
        {"solve only with condition", 1038, {}, {},
         [&] { return posdef(n, A, B, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, F, QNUM_CONDITION, &cond, 0); }},
        {"inverse only without inverse", 1039, {}, {}, [&] { return posdef(n, A, B, QNUM_INVERSE_ONLY, 0); }},
        {"factor only without factor", 1040, {}, {}, [&] { return posdef(n, A, B, QNUM_FACTOR_ONLY, 0); }},
        {"factor too large", 1035, {INT_MAX}, {},
         [&] { return posdef(INT_MAX, A, B, QNUM_A_COL_DIM, INT_MAX, QNUM_FAC_COL_DIM, INT_MAX, QNUM_FACTOR, &fp, 0); }},
    };
    for (const Case& c : table) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(c.call(), nullptr);
        EXPECT_EQ(last_type(), 5);
        EXPECT_EQ(last_code(), c.code);
        for (std::size_t k = 0; k < c.ints.size(); ++k) EXPECT_EQ(int_slot(int(k) + 1), c.ints[k]);
        for (std::size_t k = 0; k < c.strings.size(); ++k) EXPECT_EQ(string_slot(int(k) + 1), c.strings[k]);
    }
}

}  // namespace
}  // namespace qnum::test
