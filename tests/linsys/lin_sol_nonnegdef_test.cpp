// Tests of the nonnegative definite solver: rank decisions, consistent and inconsistent
// systems, the generalized inverse, warnings and errors.
#include <functional>

#include "linsys_test.hpp"

#include <climits>

namespace qnum::test {
namespace {

template <class T>
class Nonneg : public ::testing::Test {
protected:
    QuietErrors quiet;
};
TYPED_TEST_SUITE(Nonneg, RealTypes);

// B^T B for the k by n B = [I K], K small integers, with columns 2 and n swapped: rank k,
// exact in T, and with zero pivots both interleaved and trailing.
template <class T>
std::vector<T> make_psd(int n, int k, unsigned seed) {
    const int ld = n;
    std::vector<T> bm(static_cast<std::size_t>(k) * ld);
    std::mt19937 g(seed);
    std::uniform_int_distribution<int> small(-3, 3);
    for (int r = 0; r < k; ++r)
        for (int c = 0; c < n; ++c) bm[static_cast<std::size_t>(r) * ld + c] = c < k ? T(r == c) : static_cast<T>(small(g));
    if (n > k) {
        for (int r = 0; r < k; ++r) std::swap(bm[static_cast<std::size_t>(r) * ld + 1], bm[static_cast<std::size_t>(r) * ld + n - 1]);
    }
    std::vector<T> a(static_cast<std::size_t>(n) * n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            long double s = 0;
            for (int r = 0; r < k; ++r) s += (long double)bm[static_cast<std::size_t>(r) * ld + i] * bm[static_cast<std::size_t>(r) * ld + j];
            a[static_cast<std::size_t>(i) * n + j] = static_cast<T>(s);
        }
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < i; ++j) a[static_cast<std::size_t>(i) * n + j] = a[static_cast<std::size_t>(j) * n + i];
    return a;
}

template <class T>
std::vector<T> times(int n, const std::vector<T>& a, const std::vector<T>& v) {
    std::vector<T> out(n);
    for (int i = 0; i < n; ++i) {
        long double s = 0;
        for (int j = 0; j < n; ++j) s += (long double)a[static_cast<std::size_t>(i) * n + j] * v[j];
        out[i] = static_cast<T>(s);
    }
    return out;
}

TYPED_TEST(Nonneg, ConsistentSingularSystemsAreSolvedWithTheRightRank) {
    using T = TypeParam;
    for (auto [n, k] : {std::pair{1, 1}, {4, 2}, {12, 5}, {12, 12}, {30, 17}}) {
        SCOPED_TRACE(::testing::Message() << n << " rank " << k);
        std::vector<T> a = make_psd<T>(n, k, 60 + n + k);
        // An integer x0 keeps b = A x0 exact, so the system is consistent in T too.
        std::vector<T> x0(n);
        for (int i = 0; i < n; ++i) x0[i] = static_cast<T>(i % 5 - 2);
        std::vector<T> b = times(n, a, x0);
        const std::vector<T> a0 = a;
        T* f = nullptr;
        T* g = nullptr;
        T* x = nonnegdef(n, a.data(), b.data(), QNUM_FACTOR, &f, QNUM_INVERSE, &g, 0);
        Freed fx(x), ff(f), fg(g);
        ASSERT_NE(x, nullptr);
        EXPECT_EQ(last_type(), 0) << last_code() << " " << int_slot(1);
        EXPECT_TRUE(same_bits(a, a0));
        EXPECT_LT(backward_error(n, a.data(), n, x, b.data(), false), 1000.0L);
        int rank = 0;
        for (int i = 0; i < n; ++i) rank += f[static_cast<std::size_t>(i) * n + i] != T(0);
        EXPECT_EQ(rank, k);
        // A G A = A.
        long double worst = 0, scale = 0;
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) {
                long double s = 0;
                for (int p = 0; p < n; ++p)
                    for (int q = 0; q < n; ++q)
                        s += (long double)a[static_cast<std::size_t>(i) * n + p] * g[static_cast<std::size_t>(p) * n + q] *
                             a[static_cast<std::size_t>(q) * n + j];
                worst = std::max(worst, std::abs(s - a[static_cast<std::size_t>(i) * n + j]));
                scale = std::max(scale, (long double)std::abs(a[static_cast<std::size_t>(i) * n + j]));
            }
        EXPECT_LT(worst / scale, 1e4L * n * eps<T>());
        // The generalized inverse into the caller's array: the same numbers, padding kept.
        std::vector<T> mine(static_cast<std::size_t>(n) * (n + 1), sentinel<T>());
        EXPECT_EQ(nonnegdef(n, a.data(), static_cast<T*>(nullptr), QNUM_INVERSE_ONLY, QNUM_INVERSE_USER, mine.data(),
                            QNUM_INV_COL_DIM, n + 1, 0),
                  nullptr);
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j)
                EXPECT_EQ(mine[static_cast<std::size_t>(i) * (n + 1) + j], g[static_cast<std::size_t>(i) * n + j]);
            EXPECT_EQ(mine[static_cast<std::size_t>(i) * (n + 1) + n], sentinel<T>());
        }
        // The factor solves again, bit for bit.
        std::vector<T> x2(n);
        nonnegdef(n, static_cast<T*>(nullptr), b.data(), QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, f, QNUM_RETURN_USER, x2.data(), 0);
        EXPECT_TRUE(same_bits(std::vector<T>(x, x + n), x2));
    }
}

TYPED_TEST(Nonneg, InconsistentAndIndefiniteSystemsWarn) {
    using T = TypeParam;
    // Rank 1: [1 1; 1 1] with b = (1, 2) has no solution.
    std::vector<T> a = {T(1), T(1), T(1), T(1)};
    std::vector<T> b = {T(1), T(2)};
    T* x = nonnegdef(2, a.data(), b.data(), 0);
    Freed fx(x);
    ASSERT_NE(x, nullptr);
    EXPECT_EQ(last_type(), 3);
    EXPECT_EQ(last_code(), 1051);
    EXPECT_EQ(int_slot(1), 2);
    EXPECT_EQ(x[1], T(0));
    // Indefinite: column 2 fails; the factor is still produced.
    std::vector<T> c = {T(1), T(2), T(2), T(1)};
    T* f = nullptr;
    T* y = nonnegdef(2, c.data(), static_cast<T*>(nullptr), QNUM_FACTOR_ONLY, QNUM_FACTOR, &f, 0);
    Freed fy(y), ff(f);
    EXPECT_EQ(last_code(), 1049);
    EXPECT_EQ(int_slot(1), 2);
    EXPECT_NE(f, nullptr);
    // A zero diagonal with a nonzero off-diagonal entry is not nonnegative definite either.
    std::vector<T> d = {T(0), T(1), T(1), T(4)};
    T* f2 = nullptr;
    T* z = nonnegdef(2, d.data(), static_cast<T*>(nullptr), QNUM_FACTOR_ONLY, QNUM_FACTOR, &f2, QNUM_TOLERANCE, 0.0, 0);
    Freed fz(z), ff2(f2);
    EXPECT_EQ(last_code(), 1049);
    EXPECT_EQ(int_slot(1), 2);
    EXPECT_EQ(real_slot(1), 0.0);
    // A caller's factor whose zero pivot row is not zero: the reduced right-hand side there
    // is not zero.
    std::vector<T> r = {T(0), T(1), T(0), T(1)};
    std::vector<T> rhs = {T(0), T(1)};
    T* w = nonnegdef(2, static_cast<T*>(nullptr), rhs.data(), QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, r.data(), 0);
    Freed fw(w);
    EXPECT_EQ(last_code(), 1050);
    EXPECT_EQ(int_slot(1), 1);
    EXPECT_EQ(real_slot(1), -1.0);
}

TYPED_TEST(Nonneg, ToleranceDecidesTheRank) {
    using T = TypeParam;
    // [1 1; 1 1 + 1/1024]: the second reduced diagonal is 1/1024 of the original one, so
    // rank 2 with the default tolerance, rank 1 with tol = 1e-2.
    std::vector<T> a = {T(1), T(1), T(1), T(1) + T(1.0 / 1024)};
    std::vector<T> b = {T(1), T(0)};
    for (auto [tol, rank] : {std::pair{-1.0, 2}, {1e-2, 1}, {1e-4, 2}, {1.0, 0}, {0.0, 2}}) {
        T* f = nullptr;
        T* x = tol < 0 ? nonnegdef(2, a.data(), b.data(), QNUM_FACTOR, &f, 0)
                       : nonnegdef(2, a.data(), b.data(), QNUM_FACTOR, &f, QNUM_TOLERANCE, tol, 0);
        Freed fx(x), ff(f);
        ASSERT_NE(f, nullptr);
        EXPECT_EQ(int(f[0] != T(0)) + int(f[3] != T(0)), rank) << tol;
    }
}

TYPED_TEST(Nonneg, EveryErrorWithItsSubstitutions) {
    using T = TypeParam;
    const int n = 3;
    std::vector<T> a = make_psd<T>(n, n, 1), b = make_vector<T>(n, 2), f(9, T(1));
    T* A = a.data();
    T* B = b.data();
    T* F = f.data();
    T* nul = nullptr;
    T* fp = nullptr;
    struct Case {
        const char* what;
        int code;
        std::vector<int> ints;
        std::vector<std::string> strings;
        std::function<T*()> call;
    };
    const std::vector<Case> table = {
        {"unknown code", 11001, {QNUM_A_COL_DIM, 4}, {}, [&] { return nonnegdef(n, A, B, QNUM_A_COL_DIM, n, 0); }},
        {"unknown later", 11001, {QNUM_CONDITION, 6}, {}, [&] { return nonnegdef(n, A, B, QNUM_TOLERANCE, 0.1, QNUM_CONDITION, 0); }},
        {"null factor", 104, {}, {"factor", "QNUM_FACTOR_USER"}, [&] { return nonnegdef(n, A, B, QNUM_FACTOR_USER, nul, 0); }},
        {"n = 0", 1010, {0}, {}, [&] { return nonnegdef(0, A, B, 0); }},
        {"only options", 1091, {}, {}, [&] { return nonnegdef(n, A, B, QNUM_SOLVE_ONLY, QNUM_FACTOR_ONLY, 0); }},
        {"factor only without factor", 1040, {}, {}, [&] { return nonnegdef(n, A, B, QNUM_FACTOR_ONLY, 0); }},
        {"factor only with inverse", 1093, {}, {},
         [&] { return nonnegdef(n, A, B, QNUM_FACTOR_ONLY, QNUM_FACTOR_USER, F, QNUM_INVERSE, &fp, 0); }},
        {"inverse only without inverse", 1039, {}, {}, [&] { return nonnegdef(n, A, B, QNUM_INVERSE_ONLY, 0); }},
        {"inverse only with factor", 1094, {}, {},
         [&] { return nonnegdef(n, A, B, QNUM_INVERSE_ONLY, QNUM_INVERSE, &fp, QNUM_FACTOR_USER, F, 0); }},
        {"solve only without factor", 1027, {}, {}, [&] { return nonnegdef(n, A, B, QNUM_SOLVE_ONLY, 0); }},
        {"solve only with inverse", 1092, {}, {},
         [&] { return nonnegdef(n, A, B, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, F, QNUM_INVERSE_USER, F, 0); }},
        {"inverse column dimension", 1062, {2, 3}, {"inva", "n"},
         [&] { return nonnegdef(n, A, B, QNUM_INVERSE, &fp, QNUM_INV_COL_DIM, 2, 0); }},
        {"factor column dimension", 1062, {1, 3}, {"factor", "n"},
         [&] { return nonnegdef(n, A, B, QNUM_FACTOR, &fp, QNUM_FAC_COL_DIM, 1, 0); }},
        {"factor column dimension, internal factor", 1062, {2, 3}, {"factor", "n"},
         [&] { return nonnegdef(n, A, B, QNUM_FAC_COL_DIM, 2, 0); }},
        {"null a", 150, {}, {"a"}, [&] { return nonnegdef(n, nul, B, 0); }},
        {"null b", 150, {}, {"b"}, [&] { return nonnegdef(n, A, nul, 0); }},
        {"tolerance above 1", 1048, {}, {}, [&] { return nonnegdef(n, A, B, QNUM_TOLERANCE, 2.0, 0); }},
        {"negative tolerance", 1048, {}, {}, [&] { return nonnegdef(n, A, B, QNUM_TOLERANCE, -0.5, 0); }},
        {"out of memory", 1047, {INT_MAX}, {}, [&] { return nonnegdef(INT_MAX, A, B, 0); }},
    };
    for (const Case& c : table) {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(c.call(), nullptr);
        EXPECT_EQ(last_type(), 5);
        EXPECT_EQ(last_code(), c.code);
        for (std::size_t k = 0; k < c.ints.size(); ++k) EXPECT_EQ(int_slot(int(k) + 1), c.ints[k]);
        for (std::size_t k = 0; k < c.strings.size(); ++k) EXPECT_EQ(string_slot(int(k) + 1), c.strings[k]);
    }
    nonnegdef(n, A, B, QNUM_TOLERANCE, 2.0, 0);
    EXPECT_EQ(real_slot(1), 2.0);
}

}  // namespace
}  // namespace qnum::test
