// Tests of the positive definite solver (one triangle read, the factor identity, round trip,
// inverse, failing columns, errors) and the nonnegative definite one (rank decisions,
// consistent and inconsistent systems, the generalized inverse, warnings and errors).
#include <climits>
#include <limits>

#include "linsys_test.hpp"

namespace qnum::test {
namespace {

template <class T> using Posdef = Quiet<T>;
TYPED_TEST_SUITE(Posdef, AllTypes);
template <class T> using Nonneg = Quiet<T>;
TYPED_TEST_SUITE(Nonneg, RealTypes);

// B^H B + shift I for an n by n B (rows k..n-1 of B zero when k < n), rows ld apart.
template <class T>
std::vector<T> gram(const std::vector<T>& bm, int n, int ld, Real<T> shift) {
    const auto p = product(n, bm.data(), n, bm.data(), n, true);
    std::vector<T> a(std::size_t(n) * ld, sentinel<T>());
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) a[i * ld + j] = narrow_all<T>({p[i * n + j] + Wide<T>(i == j ? shift : 0)})[0];
    return a;
}
template <class T>
std::vector<T> make_hpd(int n, int ld, unsigned seed) { return gram(make_matrix<T>(Kind::Random, n, n, seed), n, ld, Real<T>(n)); }

// Only the upper triangle is read (the rest holds the sentinel). R is upper with R^H R = A,
// zero below the diagonal and in the padding; the inverse times A is the identity; the factor
// solves again bit for bit; inverse only into the caller's array gives the same numbers and
// leaves its padding; in place, the factor overwrites the upper triangle of a and nothing else.
TYPED_TEST(Posdef, SolvesFactorsAndInvertsFromTheUpperTriangle) {
    using T = TypeParam;
    for (int n : {1, 2, 5, 33, 45, 70}) {
        SCOPED_TRACE(n);
        const int ld = n + 2, fcd = n + 1;
        std::vector<T> full = make_hpd<T>(n, ld, 10 + n), a = full, b = make_vector<T>(n, 20 + n), x2(n);
        for (int i = 0; i < n; ++i) std::fill(&a[i * ld], &a[i * ld + i], sentinel<T>());
        const std::vector<T> a0 = a;
        T *f = nullptr, *inv = nullptr;
        T* x = posdef(n, a.data(), b.data(), QNUM_A_COL_DIM, ld, QNUM_FACTOR, &f, QNUM_FAC_COL_DIM, fcd, QNUM_INVERSE, &inv, 0);
        Freed fx(x), ff(f), fi(inv);
        ASSERT_TRUE(x != nullptr && f != nullptr && inv != nullptr);
        EXPECT_EQ(last_type(), 0);
        EXPECT_LT(backward_error(n, full.data(), ld, x, b.data(), false), 4.0L);
        EXPECT_TRUE(same_bits(a, a0));
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < fcd; ++j) EXPECT_TRUE((j >= i && j < n) || f[i * fcd + j] == T(0)) << i << " " << j;
        EXPECT_LT(rel_diff(n, product(n, f, fcd, f, fcd, true), full.data(), ld) / (n * eps<T>()), 2.0L);
        EXPECT_LT(rel_diff(n, product(n, inv, n, full.data(), ld), (T*)nullptr, 0), 40 * n * eps<T>());
        EXPECT_EQ(posdef(n, (T*)nullptr, b.data(), QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, f, QNUM_FAC_COL_DIM, fcd, QNUM_RETURN_USER, x2.data(), 0), x2.data());
        EXPECT_TRUE(same_bits(vec(x, n), x2));
        std::vector<T> mine(std::size_t(n) * (n + 1), sentinel<T>()), inplace = a;
        posdef(n, a.data(), (T*)nullptr, QNUM_A_COL_DIM, ld, QNUM_INVERSE_ONLY, QNUM_INVERSE_USER, mine.data(), QNUM_INV_COL_DIM, n + 1, 0);
        EXPECT_EQ(last_type(), 0);
        EXPECT_TRUE(same_block(n, mine.data(), n + 1, inv, n));
        posdef(n, inplace.data(), (T*)nullptr, QNUM_A_COL_DIM, ld, QNUM_FACTOR_ONLY, QNUM_FACTOR_USER, inplace.data(), QNUM_FAC_COL_DIM, ld, 0);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < ld; ++j) EXPECT_EQ(widen(inplace[i * ld + j]), widen(j >= i && j < n ? f[i * fcd + j] : sentinel<T>()));
    }
}

// Column k's diagonal made too small to stay positive: FATAL 1018 naming k, nothing handed
// back, the condition infinite.
TYPED_TEST(Posdef, NotPositiveDefiniteNamesTheFailingColumn) {
    using T = TypeParam;
    for (int k : {1, 2, 20, 33, 40}) {
        std::vector<T> a = make_hpd<T>(40, 40, 50), b = make_vector<T>(40, 51);
        a[(k - 1) * 41] = T(k == 1 ? 0 : -1);
        T* f = nullptr;
        Real<T> cond = 0;
        EXPECT_EQ(posdef(40, a.data(), b.data(), QNUM_FACTOR, &f, QNUM_CONDITION, &cond, 0), nullptr);
        EXPECT_EQ(std::vector<int>({last_type(), last_code(), int_slot(1)}), std::vector<int>({4, 1018, k}));
        EXPECT_TRUE(f == nullptr && std::isinf(cond));
    }
}

TYPED_TEST(Posdef, EveryErrorWithItsSubstitutions) {
    using T = TypeParam;
    const int n = 3;
    std::vector<T> a = make_hpd<T>(n, n, 1), b = make_vector<T>(n, 2), f(9, T(1));
    T *A = a.data(), *B = b.data(), *F = f.data(), *nul = nullptr, *fp = nullptr;
    Real<T> cond;
    check_errors({
        {"transpose is unknown", 103, {QNUM_TRANSPOSE, 4}, {}, [&] { return posdef(n, A, B, QNUM_TRANSPOSE, 0); }},
        {"unknown after a value", 103, {QNUM_TRANSPOSE, 6}, {}, [&] { return posdef(n, A, B, QNUM_A_COL_DIM, n, QNUM_TRANSPOSE, 0); }},
        {"null factor", 104, {}, {"factor", "QNUM_FACTOR_USER"}, [&] { return posdef(n, A, B, QNUM_FACTOR_USER, nul, 0); }},
        {"null inva", 104, {}, {"inva", "QNUM_INVERSE_USER"}, [&] { return posdef(n, A, B, QNUM_INVERSE_USER, nul, 0); }},
        {"null x", 104, {}, {"x", "QNUM_RETURN_USER"}, [&] { return posdef(n, A, B, QNUM_RETURN_USER, nul, 0); }},
        {"null cond", 104, {}, {"cond", "QNUM_CONDITION"}, [&] { return posdef(n, A, B, QNUM_CONDITION, (Real<T>*)nullptr, 0); }},
        {"null a", 6002, {}, {"a"}, [&] { return posdef(n, nul, B, 0); }},
        {"null b", 6002, {}, {"b"}, [&] { return posdef(n, A, nul, 0); }},
        {"n = 0", 1010, {0}, {}, [&] { return posdef(0, A, B, 0); }},
        {"a_col_dim", 1014, {3, 2}, {"a"}, [&] { return posdef(n, A, B, QNUM_A_COL_DIM, 2, 0); }},
        {"fac_col_dim", 1014, {3, 2}, {"factor"}, [&] { return posdef(n, A, B, QNUM_FAC_COL_DIM, 2, 0); }},
        {"only options", 1091, {}, {}, [&] { return posdef(n, A, B, QNUM_INVERSE_ONLY, QNUM_FACTOR_ONLY, 0); }},
        {"solve only without factor", 1027, {}, {}, [&] { return posdef(n, A, B, QNUM_SOLVE_ONLY, 0); }},
        {"solve only with condition", 1038, {}, {}, [&] { return posdef(n, A, B, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, F, QNUM_CONDITION, &cond, 0); }},
        {"inverse only without inverse", 1039, {}, {}, [&] { return posdef(n, A, B, QNUM_INVERSE_ONLY, 0); }},
        {"factor only without factor", 1040, {}, {}, [&] { return posdef(n, A, B, QNUM_FACTOR_ONLY, 0); }},
        {"factor too large", 1035, {INT_MAX}, {}, [&] { return posdef(INT_MAX, A, B, QNUM_A_COL_DIM, INT_MAX, QNUM_FAC_COL_DIM, INT_MAX, QNUM_FACTOR, &fp, 0); }},
    });
}

// B^T B for the k by n B = [I K], K small integers, with columns 2 and n swapped: rank k,
// exact in T, and with zero pivots both interleaved and trailing.
template <class T>
std::vector<T> make_psd(int n, int k, unsigned seed) {
    std::vector<T> bm(std::size_t(n) * n, T(0));
    std::mt19937 g(seed);
    std::uniform_int_distribution<int> small(-3, 3);
    for (int r = 0; r < k; ++r)
        for (int c = 0; c < n; ++c) bm[r * n + (n > k && (c == 1 || c == n - 1) ? n - c : c)] = c < k ? T(r == c) : T(small(g));
    return gram(bm, n, n, T(0));
}

// Consistent systems (an integer x0 keeps b = A x0 exact) are solved with the right rank;
// A G A = A, G handed back with zeroed padding; the generalized inverse into the caller's array
// and the factor solving again give the same numbers.
TYPED_TEST(Nonneg, ConsistentSingularSystemsAreSolvedWithTheRightRank) {
    using T = TypeParam;
    for (auto [n, k] : {std::pair{1, 1}, {4, 2}, {12, 5}, {12, 12}, {30, 17}}) {
        SCOPED_TRACE(::testing::Message() << n << " rank " << k);
        std::vector<T> a = make_psd<T>(n, k, 60 + n + k), b(n), x2(n), mine(std::size_t(n) * (n + 1), sentinel<T>());
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) b[i] += a[i * n + j] * T(j % 5 - 2);
        const std::vector<T> a0 = a;
        T *f = nullptr, *g = nullptr;
        T* x = nonnegdef(n, a.data(), b.data(), QNUM_FACTOR, &f, QNUM_INVERSE, &g, QNUM_INV_COL_DIM, n + 1, 0);
        Freed fx(x), ff(f), fg(g);
        ASSERT_NE(x, nullptr);
        EXPECT_EQ(last_type(), 0) << last_code() << " " << int_slot(1);
        EXPECT_TRUE(same_bits(a, a0));
        EXPECT_LT(backward_error(n, a.data(), n, x, b.data(), false), 1000.0L);
        int rank = 0;
        for (int i = 0; i < n; ++i) rank += f[i * n + i] != T(0);
        EXPECT_EQ(rank, k);
        for (int i = 0; i < n; ++i) EXPECT_EQ(g[i * (n + 1) + n], T(0));
        const auto ag = product(n, a.data(), n, g, n + 1);
        EXPECT_LT(rel_diff(n, product(n, ag.data(), n, a.data(), n), a.data(), n), 1e4L * n * eps<T>());
        EXPECT_EQ(nonnegdef(n, a.data(), (T*)nullptr, QNUM_INVERSE_ONLY, QNUM_INVERSE_USER, mine.data(), QNUM_INV_COL_DIM, n + 1, 0),
                  nullptr);
        EXPECT_TRUE(same_block(n, mine.data(), n + 1, g, n + 1));
        nonnegdef(n, (T*)nullptr, b.data(), QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, f, QNUM_RETURN_USER, x2.data(), 0);
        EXPECT_TRUE(same_bits(vec(x, n), x2));
    }
}

// Warnings: [1 1; 1 1] with b = (1, 2) has no solution; [1 2; 2 1] is indefinite at column 2,
// and so is [0 1; 1 4] even with tolerance 0, the factor still produced; a caller's factor
// whose zero pivot row is not zero leaves a nonzero reduced right-hand side there. The
// tolerance decides the rank: in [1 1; 1 1 + 1/1024] the second reduced diagonal is 1/1024 of
// the original one, so rank 2 with the default tolerance, rank 1 with tol = 1e-2.
TYPED_TEST(Nonneg, WarningsAndTheToleranceThatDecidesTheRank) {
    using T = TypeParam;
    std::vector<T> a = {T(1), T(1), T(1), T(1) + T(1.0 / 1024)}, b = {T(1), T(0)};
    for (auto [tol, rank] : {std::pair{-1.0, 2}, {1e-2, 1}, {1e-4, 2}, {1.0, 0}, {0.0, 2}}) {
        T* f = nullptr;
        Freed fx(tol < 0 ? nonnegdef(2, a.data(), b.data(), QNUM_FACTOR, &f, 0)
                         : nonnegdef(2, a.data(), b.data(), QNUM_FACTOR, &f, QNUM_TOLERANCE, tol, 0)), ff(f);
        ASSERT_NE(f, nullptr);
        EXPECT_EQ(int(f[0] != T(0)) + int(f[3] != T(0)), rank) << tol;
    }
    struct Row { std::vector<T> m, rhs; int code, slot; double value; };
    const Row rows[] = {{{1, 1, 1, 1}, {1, 2}, 1051, 2, NAN}, {{1, 2, 2, 1}, {}, 1049, 2, NAN},
                        {{0, 1, 1, 4}, {}, 1049, 2, 0.0}, {{0, 1, 0, 1}, {0, 1}, 1050, 1, -1.0}};
    for (Row r : rows) {
        T* f = nullptr;
        T* x = r.code == 1050 ? nonnegdef(2, (T*)nullptr, r.rhs.data(), QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, r.m.data(), 0)
               : r.rhs.empty() ? nonnegdef(2, r.m.data(), (T*)nullptr, QNUM_FACTOR_ONLY, QNUM_FACTOR, &f, QNUM_TOLERANCE, 0.0, 0)
                               : nonnegdef(2, r.m.data(), r.rhs.data(), 0);
        Freed fx(x), ff(f);
        EXPECT_EQ(std::vector<int>({last_type(), last_code(), int_slot(1)}), std::vector<int>({3, r.code, r.slot}));
        EXPECT_TRUE(std::isnan(r.value) || real_slot(1) == r.value) << real_slot(1);
        EXPECT_TRUE(r.code != 1051 ? r.code != 1049 || f != nullptr : x != nullptr && x[1] == T(0));
    }
}

TYPED_TEST(Nonneg, EveryErrorWithItsSubstitutions) {
    using T = TypeParam;
    const int n = 3;
    std::vector<T> a = make_psd<T>(n, n, 1), b = make_vector<T>(n, 2), f(9, T(1));
    T *A = a.data(), *B = b.data(), *F = f.data(), *nul = nullptr, *fp = nullptr;
    check_errors({
        {"unknown code", 11001, {QNUM_A_COL_DIM, 4}, {}, [&] { return nonnegdef(n, A, B, QNUM_A_COL_DIM, n, 0); }},
        {"unknown later", 11001, {QNUM_CONDITION, 6}, {}, [&] { return nonnegdef(n, A, B, QNUM_TOLERANCE, 0.1, QNUM_CONDITION, 0); }},
        {"null factor", 104, {}, {"factor", "QNUM_FACTOR_USER"}, [&] { return nonnegdef(n, A, B, QNUM_FACTOR_USER, nul, 0); }},
        {"n = 0", 1010, {0}, {}, [&] { return nonnegdef(0, A, B, 0); }},
        {"only options", 1091, {}, {}, [&] { return nonnegdef(n, A, B, QNUM_SOLVE_ONLY, QNUM_FACTOR_ONLY, 0); }},
        {"factor only without factor", 1040, {}, {}, [&] { return nonnegdef(n, A, B, QNUM_FACTOR_ONLY, 0); }},
        {"factor only with inverse", 1093, {}, {}, [&] { return nonnegdef(n, A, B, QNUM_FACTOR_ONLY, QNUM_FACTOR_USER, F, QNUM_INVERSE, &fp, 0); }},
        {"inverse only without inverse", 1039, {}, {}, [&] { return nonnegdef(n, A, B, QNUM_INVERSE_ONLY, 0); }},
        {"inverse only with factor", 1094, {}, {}, [&] { return nonnegdef(n, A, B, QNUM_INVERSE_ONLY, QNUM_INVERSE, &fp, QNUM_FACTOR_USER, F, 0); }},
        {"solve only without factor", 1027, {}, {}, [&] { return nonnegdef(n, A, B, QNUM_SOLVE_ONLY, 0); }},
        {"solve only with inverse", 1092, {}, {}, [&] { return nonnegdef(n, A, B, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, F, QNUM_INVERSE_USER, F, 0); }},
        {"inverse column dimension", 1062, {2, 3}, {"inva", "n"}, [&] { return nonnegdef(n, A, B, QNUM_INVERSE, &fp, QNUM_INV_COL_DIM, 2, 0); }},
        {"factor column dimension", 1062, {1, 3}, {"factor", "n"}, [&] { return nonnegdef(n, A, B, QNUM_FACTOR, &fp, QNUM_FAC_COL_DIM, 1, 0); }},
        {"factor column dimension, internal factor", 1062, {2, 3}, {"factor", "n"}, [&] { return nonnegdef(n, A, B, QNUM_FAC_COL_DIM, 2, 0); }},
        {"null a", 150, {}, {"a"}, [&] { return nonnegdef(n, nul, B, 0); }},
        {"null b", 150, {}, {"b"}, [&] { return nonnegdef(n, A, nul, 0); }},
        {"tolerance above 1", 1048, {}, {}, [&] { return nonnegdef(n, A, B, QNUM_TOLERANCE, 2.0, 0); }},
        {"negative tolerance", 1048, {}, {}, [&] { return nonnegdef(n, A, B, QNUM_TOLERANCE, -0.5, 0); }},
        {"out of memory", 1047, {INT_MAX}, {}, [&] { return nonnegdef(INT_MAX, A, B, 0); }},
    });
    nonnegdef(n, A, B, QNUM_TOLERANCE, 2.0, 0);
    EXPECT_EQ(real_slot(1), 2.0);
}

}  // namespace
}  // namespace qnum::test
