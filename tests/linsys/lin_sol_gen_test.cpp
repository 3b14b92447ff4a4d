// Tests of the general solver: residuals, pivoting, condition estimates, inverse, factor
// format and round trip, hand-back rules, errors and bad numbers.
#include <climits>
#include <cmath>
#include <functional>
#include <limits>

#include "frame/cpu.hpp"
#include "linsys_test.hpp"

namespace qnum::test {
namespace {

template <class T>
class Gen : public ::testing::Test {
protected:
    QuietErrors quiet;
};
TYPED_TEST_SUITE(Gen, AllTypes);

// Every gemm path the machine has, the detected one last (and left active).
std::vector<cpu::Path> paths() {
    const cpu::Path top = cpu::active();
    std::vector<cpu::Path> out;
    for (int p = 0; p <= static_cast<int>(top); ++p) out.push_back(static_cast<cpu::Path>(p));
    return out;
}

TYPED_TEST(Gen, SmallBackwardErrorOnEveryKindOfMatrix) {
    using T = TypeParam;
    for (cpu::Path path : paths()) {
        cpu::force(path);
        for (Kind kind : {Kind::Random, Kind::Graded, Kind::RowScaled, Kind::Hilbert}) {
            for (int n : {1, 2, 3, 31, 32, 33, 65, 130}) {
                for (bool trans : {false, true}) {
                    SCOPED_TRACE(::testing::Message() << "path " << int(path) << " kind " << int(kind) << " n " << n
                                                      << " trans " << trans);
                    const int ld = n + (n % 3);
                    std::vector<T> a = make_matrix<T>(kind, n, ld, 100 + n);
                    std::vector<T> b = make_vector<T>(n, 200 + n);
                    const std::vector<T> a0 = a, b0 = b;
                    T* x = trans ? gen(n, a.data(), b.data(), QNUM_A_COL_DIM, ld, QNUM_TRANSPOSE, 0)
                                 : gen(n, a.data(), b.data(), QNUM_A_COL_DIM, ld, 0);
                    Freed fx(x);
                    ASSERT_NE(x, nullptr);
                    EXPECT_LE(last_type(), 3);
                    EXPECT_LT(backward_error(n, a.data(), ld, x, b.data(), trans), 4.0L);
                    EXPECT_TRUE(same_bits(a, a0));
                    EXPECT_TRUE(same_bits(b, b0));
                }
            }
        }
    }
}

// Row 1 has the larger entry in column 1, but row 2's is larger against the rest of its row.
TYPED_TEST(Gen, ScaledPivotingPrefersTheRowThatIsLargeForItsScale) {
    using T = TypeParam;
    std::vector<T> a = {T(2), T(20000), T(1), T(1)};
    std::vector<T> b = {T(20002), T(2)};
    int* pvt = nullptr;
    T* f = nullptr;
    T* x = gen(2, a.data(), b.data(), QNUM_FACTOR, &pvt, &f, 0);
    Freed fx(x), fp(pvt), ff(f);
    ASSERT_NE(x, nullptr);
    EXPECT_EQ(pvt[0], 2);
    EXPECT_EQ(pvt[1], 2);
    // U = [1 1; 0 19998], the stored multiplier is -2.
    EXPECT_EQ(widen(f[0]), widen(T(1)));
    EXPECT_EQ(widen(f[1]), widen(T(1)));
    EXPECT_EQ(widen(f[2]), widen(T(-2)));
    EXPECT_EQ(widen(f[3]), widen(T(19998)));
    EXPECT_NEAR(std::abs(widen(x[0]) - 1.0L), 0.0L, 10 * eps<T>());
    EXPECT_NEAR(std::abs(widen(x[1]) - 1.0L), 0.0L, 10 * eps<T>());
}

// Against exact solutions and exact condition numbers: the estimate lies within a tenth of
// and three times the true value, and the error within what the condition allows.
TYPED_TEST(Gen, ReferenceSolutionsAndConditionEstimates) {
    using T = TypeParam;
    int checked = 0;
    for (const RefCase& c : reference_cases()) {
        if (c.complex != is_complex_v<T>) continue;
        SCOPED_TRACE(c.name);
        const int n = c.n;
        std::vector<T> a = narrow_all<T>(c.a), b = narrow_all<T>(c.b);
        Real<T> cond = 0;
        T* x = gen(n, a.data(), b.data(), QNUM_CONDITION, &cond, 0);
        Freed fx(x);
        ASSERT_NE(x, nullptr);
        const long double ce = c.cond1 * eps<T>();
        if (ce > 10) EXPECT_EQ(last_code(), 1003);
        if (ce < 1e-3) {
            EXPECT_EQ(last_type(), 0);
            long double err = 0, size = 0;
            for (int i = 0; i < n; ++i) {
                err = std::max(err, std::abs(std::complex<long double>(widen(x[i])) - c.x[i]));
                size = std::max(size, std::abs(c.x[i]));
            }
            EXPECT_LE(err / size, 4 * n * ce);
        }
        if (ce < 0.1) {
            EXPECT_GE(cond, 0.1L * c.cond1);
            EXPECT_LE(cond, 3.0L * c.cond1);
        }
        ++checked;
    }
    EXPECT_GE(checked, 4);
}

// Near a singular matrix one direction dominates A^-1, and the estimate finds it: for these
// 2 by 2 matrices it is within 1% of the exact value, from the closed-form inverse.
TYPED_TEST(Gen, ConditionEstimateIsSharpNearSingularity) {
    using T = TypeParam;
    const long double d1 = 1.0L / 1024, d2 = 1.0L / 128;
    const long double table[][4] = {{1, 1, 1, 1 + d1}, {1, -1, -1, 1 + d2}};
    for (const auto& m : table) {
        std::vector<T> a = {T(Real<T>(m[0])), T(Real<T>(m[1])), T(Real<T>(m[2])), T(Real<T>(m[3]))};
        std::vector<T> b = {T(1), T(1)};
        Real<T> cond = 0;
        T* x = gen(2, a.data(), b.data(), QNUM_CONDITION, &cond, 0);
        Freed fx(x);
        const long double det = m[0] * m[3] - m[1] * m[2];
        const long double anorm = std::max(std::abs(m[0]) + std::abs(m[2]), std::abs(m[1]) + std::abs(m[3]));
        const long double inorm = std::max(std::abs(m[3]) + std::abs(m[2]), std::abs(m[1]) + std::abs(m[0])) / std::abs(det);
        EXPECT_NEAR(cond / (anorm * inorm), 1.0L, 0.01L) << m[3];
    }
}

template <class T>
long double inverse_error(int n, const std::vector<T>& a, const T* inv, int ldi) {
    long double worst = 0, anorm = 0, inorm = 0;
    for (int i = 0; i < n; ++i) {
        long double ra = 0, ri = 0;
        for (int j = 0; j < n; ++j) {
            Wide<T> s = i == j ? Wide<T>(-1) : Wide<T>(0);
            for (int k = 0; k < n; ++k)
                s += widen(inv[static_cast<std::size_t>(i) * ldi + k]) * widen(a[static_cast<std::size_t>(k) * n + j]);
            worst = std::max(worst, static_cast<long double>(std::abs(s)));
            ra += std::abs(widen(a[static_cast<std::size_t>(i) * n + j]));
            ri += std::abs(widen(inv[static_cast<std::size_t>(i) * ldi + j]));
        }
        anorm = std::max(anorm, ra);
        inorm = std::max(inorm, ri);
    }
    return worst / (anorm * inorm * n * eps<T>());
}

TYPED_TEST(Gen, InverseTimesAIsTheIdentityOnEveryPath) {
    using T = TypeParam;
    for (int n : {1, 4, 33, 70}) {
        SCOPED_TRACE(n);
        std::vector<T> a = make_matrix<T>(Kind::Random, n, n, 300 + n);
        std::vector<T> b = make_vector<T>(n, 400 + n);
        T* inv = nullptr;
        T* x = gen(n, a.data(), b.data(), QNUM_INVERSE, &inv, QNUM_INV_COL_DIM, n + 2, 0);
        Freed fx(x), fi(inv);
        ASSERT_NE(inv, nullptr);
        EXPECT_LT(inverse_error(n, a, inv, n + 2), 4.0L);
        for (int i = 0; i < n; ++i) {
            EXPECT_EQ(widen(inv[static_cast<std::size_t>(i) * (n + 2) + n]), widen(T(0)));
            EXPECT_EQ(widen(inv[static_cast<std::size_t>(i) * (n + 2) + n + 1]), widen(T(0)));
        }
        // Inverse only, into the caller's array: the same numbers, padding untouched.
        std::vector<T> mine(static_cast<std::size_t>(n) * (n + 1), sentinel<T>());
        Real<T> cond = 0;
        EXPECT_EQ(gen(n, a.data(), static_cast<T*>(nullptr), QNUM_INVERSE_ONLY, QNUM_INVERSE_USER, mine.data(),
                      QNUM_INV_COL_DIM, n + 1, QNUM_CONDITION, &cond, 0),
                  nullptr);
        EXPECT_EQ(last_type(), 0);
        EXPECT_GE(cond, Real<T>(1));
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j)
                EXPECT_EQ(widen(mine[static_cast<std::size_t>(i) * (n + 1) + j]),
                          widen(inv[static_cast<std::size_t>(i) * (n + 2) + j]));
            EXPECT_EQ(widen(mine[static_cast<std::size_t>(i) * (n + 1) + n]), widen(sentinel<T>()));
        }
    }
}

// Forward elimination as the factor format describes it, applied to the columns of A, must
// give U: this pins down the sign of the multipliers, their unpermuted storage and ipvt.
template <class T>
long double format_error(int n, const std::vector<T>& a, const T* f, int ldf, const int* pvt) {
    long double worst = 0, scale = 0;
    for (int j = 0; j < n; ++j) {
        std::vector<Wide<T>> v(n);
        for (int i = 0; i < n; ++i) v[i] = widen(a[static_cast<std::size_t>(i) * n + j]);
        for (int k = 0; k + 1 < n; ++k) {
            std::swap(v[k], v[pvt[k] - 1]);
            for (int i = k + 1; i < n; ++i) v[i] += v[k] * widen(f[static_cast<std::size_t>(i) * ldf + k]);
        }
        for (int i = 0; i < n; ++i) {
            const Wide<T> u = i <= j ? widen(f[static_cast<std::size_t>(i) * ldf + j]) : Wide<T>(0);
            worst = std::max(worst, static_cast<long double>(std::abs(v[i] - u)));
            scale = std::max(scale, static_cast<long double>(std::abs(v[i])));
        }
    }
    return worst / (scale * n * eps<T>());
}

TYPED_TEST(Gen, FactorFormatAndRoundTrip) {
    using T = TypeParam;
    for (int n : {1, 5, 40, 97}) {
        SCOPED_TRACE(n);
        const int fcd = n + 3;
        std::vector<T> a = make_matrix<T>(Kind::RowScaled, n, n, 500 + n);
        std::vector<T> b = make_vector<T>(n, 600 + n);
        int* pvt = nullptr;
        T* f = nullptr;
        T* x = gen(n, a.data(), b.data(), QNUM_FACTOR, &pvt, &f, QNUM_FAC_COL_DIM, fcd, 0);
        Freed fx(x), fp(pvt), ff(f);
        ASSERT_NE(f, nullptr);
        EXPECT_EQ(pvt[n - 1], n);
        EXPECT_LT(format_error(n, a, f, fcd, pvt), 2.0L);
        for (int i = 0; i < n; ++i)
            for (int j = n; j < fcd; ++j) EXPECT_EQ(widen(f[static_cast<std::size_t>(i) * fcd + j]), widen(T(0)));

        // The factor solves again in another call, bit for bit, plain and transposed.
        std::vector<int> upvt(pvt, pvt + n);
        std::vector<T> uf(f, f + static_cast<std::size_t>(n) * fcd);
        for (int i = 0; i < n; ++i) uf[static_cast<std::size_t>(i) * fcd + n] = sentinel<T>();
        const std::vector<T> uf0 = uf;
        std::vector<T> x2(n);
        EXPECT_EQ(gen(n, static_cast<T*>(nullptr), b.data(), QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, upvt.data(),
                      uf.data(), QNUM_FAC_COL_DIM, fcd, QNUM_RETURN_USER, x2.data(), 0),
                  x2.data());
        EXPECT_TRUE(same_bits(std::vector<T>(x, x + n), x2));
        EXPECT_TRUE(same_bits(uf, uf0));
        T* xt = gen(n, a.data(), b.data(), QNUM_TRANSPOSE, 0);
        Freed fxt(xt);
        T* xt2 = gen(n, static_cast<T*>(nullptr), b.data(), QNUM_TRANSPOSE, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER,
                     upvt.data(), uf.data(), QNUM_FAC_COL_DIM, fcd, 0);
        Freed fxt2(xt2);
        ASSERT_NE(xt2, nullptr);
        EXPECT_TRUE(same_bits(std::vector<T>(xt, xt + n), std::vector<T>(xt2, xt2 + n)));

        // Factored in place in a (rows fcd apart): the same factor.
        std::vector<T> inplace(static_cast<std::size_t>(n) * fcd, sentinel<T>());
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) inplace[static_cast<std::size_t>(i) * fcd + j] = a[static_cast<std::size_t>(i) * n + j];
        std::vector<int> ipvt2(n);
        EXPECT_EQ(gen(n, inplace.data(), static_cast<T*>(nullptr), QNUM_FACTOR_ONLY, QNUM_A_COL_DIM, fcd,
                      QNUM_FACTOR_USER, ipvt2.data(), inplace.data(), 0),
                  nullptr);
        EXPECT_EQ(last_type(), 0);
        EXPECT_EQ(std::vector<int>(pvt, pvt + n), ipvt2);
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j)
                EXPECT_EQ(widen(inplace[static_cast<std::size_t>(i) * fcd + j]), widen(f[static_cast<std::size_t>(i) * fcd + j]));
            EXPECT_EQ(widen(inplace[static_cast<std::size_t>(i) * fcd + n]), widen(sentinel<T>()));
        }
    }
}

// A zero column: FATAL 1004, no solution, allocated results withheld, the caller's factor
// complete and the condition infinite.
TYPED_TEST(Gen, SingularMatrixEndsTheCallButCompletesTheFactor) {
    using T = TypeParam;
    const int n = 40;
    std::vector<T> a = make_matrix<T>(Kind::Random, n, n, 700);
    for (int i = 0; i < n; ++i) a[static_cast<std::size_t>(i) * n + 35] = T(0);
    std::vector<T> b = make_vector<T>(n, 701);
    const std::vector<T> a0 = a;
    int* pvt = nullptr;
    T* f = nullptr;
    T* inv = nullptr;
    Real<T> cond = 0;
    EXPECT_EQ(gen(n, a.data(), b.data(), QNUM_FACTOR, &pvt, &f, QNUM_INVERSE, &inv, QNUM_CONDITION, &cond, 0),
              nullptr);
    EXPECT_EQ(last_type(), 4);
    EXPECT_EQ(last_code(), 1004);
    EXPECT_EQ(pvt, nullptr);
    EXPECT_EQ(f, nullptr);
    EXPECT_EQ(inv, nullptr);
    EXPECT_TRUE(std::isinf(cond));
    EXPECT_TRUE(same_bits(a, a0));

    std::vector<int> upvt(n, 0);
    std::vector<T> uf(static_cast<std::size_t>(n) * n, sentinel<T>());
    EXPECT_EQ(gen(n, a.data(), b.data(), QNUM_FACTOR_USER, upvt.data(), uf.data(), 0), nullptr);
    EXPECT_EQ(last_code(), 1004);
    // The columns after the singular one were still eliminated: rows 36.. of U are finite
    // and the elimination identity holds for the columns before it.
    for (int k = 0; k < n; ++k) {
        EXPECT_GE(upvt[k], k + 1);
        EXPECT_LE(upvt[k], n);
    }
    for (T v : uf) EXPECT_NE(widen(v), widen(sentinel<T>()));
    EXPECT_EQ(widen(uf[static_cast<std::size_t>(n) * n - 1]), widen(uf[static_cast<std::size_t>(n) * n - 1]));
}

TYPED_TEST(Gen, NearlySingularMatrixWarnsWithRcondAndSolves) {
    using T = TypeParam;
    // U(2,2) = eps: invertible, with rcond near eps / 4.
    std::vector<T> a = {T(1), T(1), T(1), T(1) + T(Prec<T>::eps())};
    std::vector<T> b = {T(2), T(2)};
    T* x = gen(2, a.data(), b.data(), 0);
    Freed fx(x);
    EXPECT_NE(x, nullptr);
    EXPECT_EQ(last_type(), 3);
    EXPECT_EQ(last_code(), 1003);
    EXPECT_LE(real_slot(1), Prec<T>::eps());
    EXPECT_GT(real_slot(1), 0.0);
}

TYPED_TEST(Gen, NumberedExportsAreTheRealSolvers) {
    using T = TypeParam;
    if constexpr (!is_complex_v<T>) {
        const int n = 20;
        std::vector<T> a = make_matrix<T>(Kind::Random, n, n, 900);
        std::vector<T> b = make_vector<T>(n, 901);
        T* x = gen(n, a.data(), b.data(), 0);
        T* y = std::is_same_v<T, float> ? reinterpret_cast<T*>(qnum_20000(n, reinterpret_cast<float*>(a.data()),
                                                                          reinterpret_cast<float*>(b.data()), 0))
                                        : reinterpret_cast<T*>(qnum_20001(n, reinterpret_cast<double*>(a.data()),
                                                                          reinterpret_cast<double*>(b.data()), 0));
        Freed fx(x), fy(y);
        EXPECT_TRUE(same_bits(std::vector<T>(x, x + n), std::vector<T>(y, y + n)));
    }
}

// NaN and Inf entries: every call returns, with the inputs restored.
TYPED_TEST(Gen, NonFiniteEntriesNeverCrashOrHang) {
    using T = TypeParam;
    const Real<T> inf = std::numeric_limits<Real<T>>::infinity(), nan = std::numeric_limits<Real<T>>::quiet_NaN();
    for (Real<T> bad : {nan, inf, -inf}) {
        for (int where : {0, 7, 35 * 40 + 2, -1}) {
            const int n = 40;
            std::vector<T> a = make_matrix<T>(Kind::Random, n, n, 800);
            if (where >= 0) {
                a[where] = T(bad);
            } else {
                for (auto& v : a) v = T(bad);
            }
            std::vector<T> b = make_vector<T>(n, 801);
            const std::vector<T> a0 = a;
            Real<T> cond = 0;
            T* inv = nullptr;
            T* x = gen(n, a.data(), b.data(), QNUM_CONDITION, &cond, QNUM_INVERSE, &inv, 0);
            Freed fx(x), fi(inv);
            EXPECT_TRUE(same_bits(a, a0));
        }
    }
}

struct ErrorCase {
    const char* what;
    int type, code;
    std::vector<int> ints;
    std::vector<std::string> strings;
};

template <class T>
void expect_error(const ErrorCase& e, T* result) {
    SCOPED_TRACE(e.what);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(last_type(), e.type);
    EXPECT_EQ(last_code(), e.code);
    for (std::size_t k = 0; k < e.ints.size(); ++k) EXPECT_EQ(int_slot(int(k) + 1), e.ints[k]) << "i" << k + 1;
    for (std::size_t k = 0; k < e.strings.size(); ++k) EXPECT_EQ(string_slot(int(k) + 1), e.strings[k]) << "l" << k + 1;
}

TYPED_TEST(Gen, EveryErrorWithItsSubstitutions) {
    using T = TypeParam;
    const int n = 3;
    std::vector<T> a = make_matrix<T>(Kind::Random, n, n, 1), b = make_vector<T>(n, 2);
    T* A = a.data();
    T* B = b.data();
    T* nul = nullptr;
    int pv[3] = {1, 2, 3};
    int badpv[3] = {2, 1, 3};
    std::vector<T> fac(9, T(1));
    T* F = fac.data();
    T* fp = nullptr;
    int* pp = nullptr;
    Real<T> cond;
    const std::vector<std::pair<ErrorCase, std::function<T*()>>> table = {
        {{"n = 0", 5, 1010, {0}, {}}, [&] { return gen(0, A, B, 0); }},
        {{"n < 0", 5, 1010, {-4}, {}}, [&] { return gen(-4, A, B, 0); }},
        {{"unknown code", 5, 103, {9999, 4}, {}}, [&] { return gen(n, A, B, 9999, 0); }},
        {{"unknown after a value", 5, 103, {10002, 6}, {}}, [&] { return gen(n, A, B, QNUM_A_COL_DIM, n, 10002, 0); }},
        {{"null x", 5, 104, {}, {"x", "QNUM_RETURN_USER"}}, [&] { return gen(n, A, B, QNUM_RETURN_USER, nul, 0); }},
        {{"null cond", 5, 104, {}, {"cond", "QNUM_CONDITION"}},
         [&] { return gen(n, A, B, QNUM_CONDITION, static_cast<Real<T>*>(nullptr), 0); }},
        {{"null pivots", 5, 104, {}, {"ipvt", "QNUM_FACTOR"}},
         [&] { return gen(n, A, B, QNUM_FACTOR_USER, static_cast<int*>(nullptr), F, 0); }},
        {{"null factor", 5, 105, {}, {"factor", "QNUM_FACTOR"}},
         [&] { return gen(n, A, B, QNUM_FACTOR_USER, pv, nul, 0); }},
        {{"null p_pvt", 5, 104, {}, {"ipvt", "QNUM_FACTOR"}},
         [&] { return gen(n, A, B, QNUM_FACTOR, static_cast<int**>(nullptr), &fp, 0); }},
        {{"null p_factor", 5, 105, {}, {"factor", "QNUM_FACTOR"}},
         [&] { return gen(n, A, B, QNUM_FACTOR, &pp, static_cast<T**>(nullptr), 0); }},
        {{"null inva", 5, 104, {}, {"inva", "QNUM_INVERSE_USER"}}, [&] { return gen(n, A, B, QNUM_INVERSE_USER, nul, 0); }},
        {{"null p_inva", 5, 104, {}, {"inva", "QNUM_INVERSE"}},
         [&] { return gen(n, A, B, QNUM_INVERSE, static_cast<T**>(nullptr), 0); }},
        {{"null a", 5, 150, {}, {"a"}}, [&] { return gen(n, nul, B, 0); }},
        {{"null b", 5, 150, {}, {"b"}}, [&] { return gen(n, A, nul, 0); }},
        {{"a before n", 5, 150, {}, {"a"}}, [&] { return gen(0, nul, B, 0); }},
        {{"a_col_dim", 5, 1014, {3, 2}, {"a"}}, [&] { return gen(n, A, B, QNUM_A_COL_DIM, 2, 0); }},
        {{"fac_col_dim", 5, 1014, {3, 1}, {"factor"}}, [&] { return gen(n, A, B, QNUM_FAC_COL_DIM, 1, 0); }},
        {{"inv_col_dim", 5, 1014, {3, 2}, {"inva"}},
         [&] { return gen(n, A, B, QNUM_INVERSE, &fp, QNUM_INV_COL_DIM, 2, 0); }},
        {{"two only options", 5, 1091, {}, {}},
         [&] { return gen(n, A, B, QNUM_FACTOR_ONLY, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, pv, F, 0); }},
        {{"three only options", 5, 1091, {}, {}},
         [&] { return gen(n, A, B, QNUM_FACTOR_ONLY, QNUM_INVERSE_ONLY, QNUM_SOLVE_ONLY, 0); }},
        {{"solve only without factor", 5, 1027, {}, {}}, [&] { return gen(n, A, B, QNUM_SOLVE_ONLY, 0); }},
        {{"solve only with condition", 5, 1038, {}, {}},
         [&] { return gen(n, A, B, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, pv, F, QNUM_CONDITION, &cond, 0); }},
        {{"inverse only without inverse", 5, 1039, {}, {}}, [&] { return gen(n, A, B, QNUM_INVERSE_ONLY, 0); }},
        {{"factor only without factor", 5, 1040, {}, {}}, [&] { return gen(n, A, B, QNUM_FACTOR_ONLY, 0); }},
        {{"pivot out of range", 5, 1034, {2, 1, 3}, {}},
         [&] { return gen(n, nul, B, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, badpv, F, 0); }},
        {{"zero diagonal in a caller's factor", 4, 1004, {}, {}},
         [&] {
             std::vector<T> z(9, T(0));
             return gen(n, nul, B, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, pv, z.data(), 0);
         }},
        {{"zero first pivot in a caller's factor", 4, 1004, {}, {}},
         [&] {
             std::vector<T> z = {T(0), T(1), T(1), T(0), T(1), T(1), T(0), T(0), T(1)};
             return gen(n, nul, B, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, pv, z.data(), 0);
         }},
        {{"zero last pivot, transposed", 4, 1004, {}, {}},
         [&] {
             std::vector<T> z = {T(1), T(1), T(1), T(0), T(1), T(1), T(0), T(0), T(0)};
             return gen(n, nul, B, QNUM_TRANSPOSE, QNUM_SOLVE_ONLY, QNUM_FACTOR_USER, pv, z.data(), 0);
         }},
        {{"element count overflows", 5, 201, {INT_MAX}, {"n"}},
         [&] { return gen(INT_MAX, A, B, QNUM_A_COL_DIM, INT_MAX, QNUM_FAC_COL_DIM, INT_MAX, 0); }},
    };
    for (const auto& [e, call] : table) expect_error(e, call());
    // An optional b: factor-only and inverse-only calls run without it.
    int* p = nullptr;
    T* f = nullptr;
    EXPECT_EQ(gen(n, A, nul, QNUM_FACTOR_ONLY, QNUM_FACTOR, &p, &f, 0), nullptr);
    Freed fp1(p), ff1(f);
    EXPECT_EQ(last_type(), 0);
    EXPECT_NE(f, nullptr);
}

}  // namespace
}  // namespace qnum::test
