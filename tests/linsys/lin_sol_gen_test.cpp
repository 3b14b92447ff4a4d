// Tests of the general solver: residuals, pivoting, condition estimates, inverse, factor
// format and round trip, hand-back rules, errors and bad numbers.
#include <array>
#include <climits>
#include <limits>

#include "frame/cpu.hpp"
#include "linsys_test.hpp"

namespace qnum::test {
namespace {

template <class T> using Gen = Quiet<T>;
TYPED_TEST_SUITE(Gen, AllTypes);

// Every kind of matrix, plain and transposed, on every gemm path the machine has (the
// detected one last, and left active); the inputs are left as they were.
TYPED_TEST(Gen, SmallBackwardErrorOnEveryKindOfMatrix) {
    using T = TypeParam;
    const int top = static_cast<int>(cpu::active());
    for (int path = 0; path <= top; ++path) {
        cpu::force(static_cast<cpu::Path>(path));
        for (Kind kind : {Kind::Random, Kind::Graded, Kind::RowScaled, Kind::Hilbert})
            for (int n : {1, 2, 3, 31, 32, 33, 65, 130})
                for (bool trans : {false, true}) {
                    SCOPED_TRACE(::testing::Message() << "path " << path << " kind " << int(kind) << " n " << n << " trans " << trans);
                    const int ld = n + (n % 3);
                    std::vector<T> a = make_matrix<T>(kind, n, ld, 100 + n), b = make_vector<T>(n, 200 + n);
                    const std::vector<T> a0 = a, b0 = b;
                    T* x = trans ? gen(n, a.data(), b.data(), QNUM_A_COL_DIM, ld, QNUM_TRANSPOSE, 0)
                                 : gen(n, a.data(), b.data(), QNUM_A_COL_DIM, ld, 0);
                    Freed fx(x);
                    ASSERT_NE(x, nullptr);
                    EXPECT_LE(last_type(), 3);
                    EXPECT_LT(backward_error(n, a.data(), ld, x, b.data(), trans), 4.0L);
                    EXPECT_TRUE(same_bits(a, a0) && same_bits(b, b0));
                }
    }
}

// Against exact solutions and exact condition numbers, for the general solver and, on the
// positive definite cases, the positive definite one: the estimate, a lower bound, lies within
// 0.4 times the true value, and the error within what the condition allows.
TYPED_TEST(Gen, ReferenceSolutionsAndConditionEstimates) {
    using T = TypeParam;
    int checked = 0;
    for (const RefCase& c : reference_cases()) {
        if (c.complex != is_complex_v<T>) continue;
        const bool spd = c.name == "pascal6" || c.name == "lehmer8" || c.name == "pascal9";
        for (int pd = 0; pd <= int(spd); ++pd) {
            SCOPED_TRACE(c.name + (pd ? " posdef" : ""));
            std::vector<T> a = narrow_all<T>(c.a), b = narrow_all<T>(c.b);
            Real<T> cond = 0;
            Freed fx((pd ? posdef<T, int, Real<T>*, int> : gen<T, int, Real<T>*, int>)(c.n, a.data(), b.data(), QNUM_CONDITION, &cond, 0));
            const T* x = (T*)fx.get();
            ASSERT_NE(x, nullptr);
            const long double ce = c.cond1 * eps<T>();
            EXPECT_TRUE(ce <= 10 || last_code() == 1003) << last_code();
            EXPECT_TRUE(ce >= 1e-3 || last_type() == 0) << last_type();
            if (ce >= 0.1) continue;
            long double err = 0, size = 0;
            for (int i = 0; i < c.n; ++i) err = std::max(err, std::abs(widen(x[i]) - c.x[i])), size = std::max(size, std::abs(c.x[i]));
            EXPECT_LE(err / size, 4 * c.n * ce);
            EXPECT_TRUE(cond >= 0.4L * c.cond1 && cond <= 1.01L * c.cond1) << cond << " " << c.cond1;
            checked += !pd;
        }
    }
    EXPECT_GE(checked, 4);
}

// Two by two systems. Scaled pivoting: row 1 has the larger entry in column 1, but row 2's is
// larger against the rest of its row, so U = [1 1; 0 19998] and the stored multiplier is -2.
// Near a singular matrix one direction dominates A^-1, and the condition estimate finds it to
// within 1% of the closed-form value. U(2,2) = eps: a warning with rcond near eps / 4, and a
// solution.
TYPED_TEST(Gen, TwoByTwoSystems) {
    using T = TypeParam;
    std::vector<T> a = {T(2), T(20000), T(1), T(1)}, b = {T(20002), T(2)};
    int* pvt = nullptr;
    T* f = nullptr;
    T* x = gen(2, a.data(), b.data(), QNUM_FACTOR, &pvt, &f, 0);
    Freed fx(x), fp(pvt), ff(f);
    ASSERT_NE(x, nullptr);
    EXPECT_EQ(vec(pvt, 2), std::vector<int>({2, 2}));
    EXPECT_EQ(vec(f, 4), std::vector<T>({T(1), T(1), T(-2), T(19998)}));
    EXPECT_LT(std::abs(widen(x[0]) - 1.0L) + std::abs(widen(x[1]) - 1.0L), 10 * eps<T>());
    for (const auto& m : {std::array<long double, 4>{1, 1, 1, 1 + 1.0L / 1024}, {1, -1, -1, 1 + 1.0L / 128}}) {
        a = {T(Real<T>(m[0])), T(Real<T>(m[1])), T(Real<T>(m[2])), T(Real<T>(m[3]))};
        Real<T> cond = 0;
        Freed fc(gen(2, a.data(), b.data(), QNUM_CONDITION, &cond, 0));
        const long double anorm = std::max(std::abs(m[0]) + std::abs(m[2]), std::abs(m[1]) + std::abs(m[3]));
        const long double inorm = std::max(std::abs(m[3]) + std::abs(m[2]), std::abs(m[1]) + std::abs(m[0]));
        EXPECT_NEAR(cond / (anorm * inorm) * std::abs(m[0] * m[3] - m[1] * m[2]), 1.0L, 0.01L) << m[3];
    }
    a = {T(1), T(1), T(1), T(1) + T(Prec<T>::eps())}, b = {T(2), T(2)};
    Freed fn(gen(2, a.data(), b.data(), 0));
    EXPECT_NE(fn.get(), nullptr);
    EXPECT_EQ(std::vector<int>({last_type(), last_code()}), std::vector<int>({3, 1003}));
    EXPECT_TRUE(real_slot(1) <= Prec<T>::eps() && real_slot(1) > 0.0) << real_slot(1);
}

// Forward elimination as the factor format describes it, applied to the columns of A, must
// give U: this pins down the sign of the multipliers, their unpermuted storage and ipvt.
template <class T>
long double format_error(int n, const std::vector<T>& a, const T* f, int ldf, const int* pvt) {
    long double worst = 0, scale = 0;
    for (int j = 0; j < n; ++j) {
        std::vector<Wide<T>> v(n);
        for (int i = 0; i < n; ++i) v[i] = widen(a[i * n + j]);
        for (int k = 0; k + 1 < n; ++k) {
            std::swap(v[k], v[pvt[k] - 1]);
            for (int i = k + 1; i < n; ++i) v[i] += v[k] * widen(f[i * ldf + k]);
        }
        for (int i = 0; i < n; ++i)
            worst = std::max(worst, static_cast<long double>(std::abs(v[i] - (i <= j ? widen(f[i * ldf + j]) : Wide<T>(0))))),
            scale = std::max(scale, static_cast<long double>(std::abs(v[i])));
    }
    return worst / (scale * n * eps<T>());
}

// The factor and the inverse come with zeroed padding. The factor solves again in another call
// bit for bit, plain and transposed; factoring in place in a gives the same factor and leaves
// the padding. The inverse times A is the identity; inverse only into the caller's array gives
// the same numbers and leaves its padding.
TYPED_TEST(Gen, FactorAndInverseRoundTrips) {
    using T = TypeParam;
    for (int n : {1, 5, 40, 97}) {
        SCOPED_TRACE(n);
        const int fcd = n + 3, icd = n + 2;
        std::vector<T> a = make_matrix<T>(Kind::RowScaled, n, n, 500 + n), b = make_vector<T>(n, 600 + n), x2(n);
        int* pvt = nullptr;
        T *f = nullptr, *inv = nullptr;
        T* x = gen(n, a.data(), b.data(), QNUM_FACTOR, &pvt, &f, QNUM_FAC_COL_DIM, fcd, QNUM_INVERSE, &inv, QNUM_INV_COL_DIM, icd, 0);
        Freed fx(x), fp(pvt), ff(f), fi(inv);
        ASSERT_TRUE(f != nullptr && inv != nullptr);
        EXPECT_EQ(pvt[n - 1], n);
        EXPECT_LT(format_error(n, a, f, fcd, pvt), 2.0L);
        long double anorm = 0, inorm = 0;
        for (int i = 0; i < n; ++i) {
            long double ra = 0, ri = 0;
            for (int j = 0; j < n; ++j) ra += std::abs(widen(a[i * n + j])), ri += std::abs(widen(inv[i * icd + j]));
            anorm = std::max(anorm, ra), inorm = std::max(inorm, ri);
            for (int j = n; j < fcd; ++j) EXPECT_TRUE(f[i * fcd + j] == T(0) && (j >= icd || inv[i * icd + j] == T(0))) << i << " " << j;
        }
        EXPECT_LT(rel_diff(n, product(n, inv, icd, a.data(), n), (T*)nullptr, 0) / (anorm * inorm * n * eps<T>()), 4.0L);
        std::vector<int> upvt(pvt, pvt + n), ipvt2(n);
        std::vector<T> uf(f, f + std::size_t(n) * fcd), inplace(std::size_t(n) * fcd, sentinel<T>()), mine(std::size_t(n) * (n + 1), sentinel<T>());
        for (int i = 0; i < n; ++i) uf[i * fcd + n] = sentinel<T>();
        const std::vector<T> uf0 = uf;
        EXPECT_EQ(gen(n, (T*)nullptr, b.data(), QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, upvt.data(), uf.data(), QNUM_FAC_COL_DIM, fcd, QNUM_RETURN_USER, x2.data(), 0), x2.data());
        EXPECT_TRUE(same_bits(vec(x, n), x2) && same_bits(uf, uf0));
        Freed fxt(gen(n, a.data(), b.data(), QNUM_TRANSPOSE, 0));
        Freed fxt2(gen(n, (T*)nullptr, b.data(), QNUM_TRANSPOSE, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, upvt.data(), uf.data(), QNUM_FAC_COL_DIM, fcd, 0));
        ASSERT_NE(fxt2, nullptr);
        EXPECT_TRUE(same_bits(vec((T*)fxt.get(), n), vec((T*)fxt2.get(), n)));
        for (int i = 0; i < n; ++i) std::copy(&a[i * n], &a[i * n] + n, &inplace[i * fcd]);
        EXPECT_EQ(gen(n, inplace.data(), (T*)nullptr, QNUM_FACTOR_ONLY, QNUM_A_COL_DIM, fcd, QNUM_FACTOR_USER, ipvt2.data(), inplace.data(), 0), nullptr);
        EXPECT_EQ(last_type(), 0);
        EXPECT_EQ(vec(pvt, n), ipvt2);
        EXPECT_TRUE(same_block(n, inplace.data(), fcd, f, fcd));
        Real<T> cond = 0;
        EXPECT_EQ(gen(n, a.data(), (T*)nullptr, QNUM_INVERSE_ONLY, QNUM_INVERSE_USER, mine.data(), QNUM_INV_COL_DIM, n + 1, QNUM_CONDITION, &cond, 0), nullptr);
        EXPECT_TRUE(last_type() <= 3 && cond >= Real<T>(1));  // row scaling makes some ill-conditioned
        EXPECT_TRUE(same_block(n, mine.data(), n + 1, inv, icd));
    }
}

// A zero column: FATAL 1004, no solution, allocated results withheld, the inputs kept and the
// condition infinite; the caller's factor is still completed.
TYPED_TEST(Gen, SingularMatrixEndsTheCallButCompletesTheFactor) {
    using T = TypeParam;
    const int n = 40;
    std::vector<T> a = make_matrix<T>(Kind::Random, n, n, 700), b = make_vector<T>(n, 701);
    for (int i = 0; i < n; ++i) a[i * n + 35] = T(0);
    const std::vector<T> a0 = a;
    int* pvt = nullptr;
    T *f = nullptr, *inv = nullptr;
    Real<T> cond = 0;
    EXPECT_EQ(gen(n, a.data(), b.data(), QNUM_FACTOR, &pvt, &f, QNUM_INVERSE, &inv, QNUM_CONDITION, &cond, 0), nullptr);
    EXPECT_EQ(std::vector<int>({last_type(), last_code()}), std::vector<int>({4, 1004}));
    EXPECT_TRUE(pvt == nullptr && f == nullptr && inv == nullptr && std::isinf(cond) && same_bits(a, a0));
    std::vector<int> upvt(n, 0);
    std::vector<T> uf(std::size_t(n) * n, sentinel<T>());
    EXPECT_EQ(gen(n, a.data(), b.data(), QNUM_FACTOR_USER, upvt.data(), uf.data(), 0), nullptr);
    EXPECT_EQ(last_code(), 1004);
    for (int k = 0; k < n; ++k) EXPECT_TRUE(upvt[k] >= k + 1 && upvt[k] <= n) << k;
    for (T v : uf) EXPECT_TRUE(widen(v) != widen(sentinel<T>()) && widen(v) == widen(v));
}

// The numbered exports are the real solvers, and NaN or Inf entries never crash or hang: every
// call returns, with the inputs restored.
TYPED_TEST(Gen, NumberedExportsAndNonFiniteEntries) {
    using T = TypeParam;
    const int n = 40;
    if constexpr (!is_complex_v<T>) {
        std::vector<T> a = make_matrix<T>(Kind::Random, n, n, 900), b = make_vector<T>(n, 901);
        Freed fx(gen(n, a.data(), b.data(), 0));
        Freed fy(std::is_same_v<T, float> ? (void*)qnum_20000(n, (float*)a.data(), (float*)b.data(), 0)
                                          : (void*)qnum_20001(n, (double*)a.data(), (double*)b.data(), 0));
        EXPECT_TRUE(same_bits(vec((T*)fx.get(), n), vec((T*)fy.get(), n)));
    }
    const Real<T> inf = std::numeric_limits<Real<T>>::infinity(), nan = std::numeric_limits<Real<T>>::quiet_NaN();
    for (Real<T> bad : {nan, inf, -inf})
        for (int where : {0, 7, 35 * 40 + 2, -1}) {
            std::vector<T> a = make_matrix<T>(Kind::Random, n, n, 800), b = make_vector<T>(n, 801);
            for (int i = 0; i < n * n; ++i) a[i] = where == i || where < 0 ? T(bad) : a[i];
            const std::vector<T> a0 = a;
            Real<T> cond = 0;
            T* inv = nullptr;
            Freed fx(gen(n, a.data(), b.data(), QNUM_CONDITION, &cond, QNUM_INVERSE, &inv, 0)), fi(inv);
            EXPECT_TRUE(same_bits(a, a0));
        }
}

TYPED_TEST(Gen, EveryErrorWithItsSubstitutions) {
    using T = TypeParam;
    const int n = 3;
    std::vector<T> a = make_matrix<T>(Kind::Random, n, n, 1), b = make_vector<T>(n, 2), fac(9, T(1));
    std::vector<T> z0(9, T(0)), z1 = {T(0), T(1), T(1), T(0), T(1), T(1), T(0), T(0), T(1)};
    std::vector<T> z2 = {T(1), T(1), T(1), T(0), T(1), T(1), T(0), T(0), T(0)};
    T *A = a.data(), *B = b.data(), *F = fac.data(), *nul = nullptr, *fp = nullptr;
    int pv[3] = {1, 2, 3}, badpv[3] = {2, 1, 3}, badpv0[3] = {4, 2, 3}, *pp = nullptr;
    Real<T> cond;
    check_errors({
        {"n = 0", 1010, {0}, {}, [&] { return gen(0, A, B, 0); }},
        {"n < 0", 1010, {-4}, {}, [&] { return gen(-4, A, B, 0); }},
        {"unknown code", 103, {9999, 4}, {}, [&] { return gen(n, A, B, 9999, 0); }},
        {"unknown after a value", 103, {10002, 6}, {}, [&] { return gen(n, A, B, QNUM_A_COL_DIM, n, 10002, 0); }},
        {"null x", 104, {}, {"x", "QNUM_RETURN_USER"}, [&] { return gen(n, A, B, QNUM_RETURN_USER, nul, 0); }},
        {"null cond", 104, {}, {"cond", "QNUM_CONDITION"}, [&] { return gen(n, A, B, QNUM_CONDITION, (Real<T>*)nullptr, 0); }},
        {"null pivots", 104, {}, {"ipvt", "QNUM_FACTOR"}, [&] { return gen(n, A, B, QNUM_FACTOR_USER, (int*)nullptr, F, 0); }},
        {"null factor", 105, {}, {"factor", "QNUM_FACTOR"}, [&] { return gen(n, A, B, QNUM_FACTOR_USER, pv, nul, 0); }},
        {"null p_pvt", 104, {}, {"ipvt", "QNUM_FACTOR"}, [&] { return gen(n, A, B, QNUM_FACTOR, (int**)nullptr, &fp, 0); }},
        {"null p_factor", 105, {}, {"factor", "QNUM_FACTOR"}, [&] { return gen(n, A, B, QNUM_FACTOR, &pp, (T**)nullptr, 0); }},
        {"null inva", 104, {}, {"inva", "QNUM_INVERSE_USER"}, [&] { return gen(n, A, B, QNUM_INVERSE_USER, nul, 0); }},
        {"null p_inva", 104, {}, {"inva", "QNUM_INVERSE"}, [&] { return gen(n, A, B, QNUM_INVERSE, (T**)nullptr, 0); }},
        {"null a", 150, {}, {"a"}, [&] { return gen(n, nul, B, 0); }},
        {"null b", 150, {}, {"b"}, [&] { return gen(n, A, nul, 0); }},
        {"a before n", 150, {}, {"a"}, [&] { return gen(0, nul, B, 0); }},
        {"a_col_dim", 1014, {3, 2}, {"a"}, [&] { return gen(n, A, B, QNUM_A_COL_DIM, 2, 0); }},
        {"fac_col_dim", 1014, {3, 1}, {"factor"}, [&] { return gen(n, A, B, QNUM_FAC_COL_DIM, 1, 0); }},
        {"inv_col_dim", 1014, {3, 2}, {"inva"}, [&] { return gen(n, A, B, QNUM_INVERSE, &fp, QNUM_INV_COL_DIM, 2, 0); }},
        {"two only options", 1091, {}, {}, [&] { return gen(n, A, B, QNUM_FACTOR_ONLY, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, pv, F, 0); }},
        {"three only options", 1091, {}, {}, [&] { return gen(n, A, B, QNUM_FACTOR_ONLY, QNUM_INVERSE_ONLY, QNUM_SOLVE_ONLY, 0); }},
        {"solve only without factor", 1027, {}, {}, [&] { return gen(n, A, B, QNUM_SOLVE_ONLY, 0); }},
        {"solve only with condition", 1038, {}, {}, [&] { return gen(n, A, B, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, pv, F, QNUM_CONDITION, &cond, 0); }},
        {"inverse only without inverse", 1039, {}, {}, [&] { return gen(n, A, B, QNUM_INVERSE_ONLY, 0); }},
        {"factor only without factor", 1040, {}, {}, [&] { return gen(n, A, B, QNUM_FACTOR_ONLY, 0); }},
        {"pivot out of range", 1034, {2, 1, 3}, {}, [&] { return gen(n, nul, B, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, badpv, F, 0); }},
        {"first pivot out of range", 1034, {1, 4, 3}, {}, [&] { return gen(n, nul, B, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, badpv0, F, 0); }},
        {"zero diagonal in a caller's factor", 1004, {}, {}, [&] { return gen(n, nul, B, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, pv, z0.data(), 0); }, 4},
        {"zero first pivot in a caller's factor", 1004, {}, {}, [&] { return gen(n, nul, B, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, pv, z1.data(), 0); }, 4},
        {"zero last pivot, transposed", 1004, {}, {}, [&] { return gen(n, nul, B, QNUM_TRANSPOSE, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, pv, z2.data(), 0); }, 4},
        {"element count overflows", 201, {INT_MAX}, {"n"}, [&] { return gen(INT_MAX, A, B, QNUM_A_COL_DIM, INT_MAX, QNUM_FAC_COL_DIM, INT_MAX, 0); }},
    });
}

}  // namespace
}  // namespace qnum::test
