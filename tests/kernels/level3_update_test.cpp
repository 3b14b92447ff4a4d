// syrk, herk, syr2k and her2k against long-double reference loops: only the chosen triangle
// changes, Hermitian diagonals come out real, special alpha and beta, every path.
#include "level3_support.hpp"

namespace {

using namespace l3test;

template <class T>
class Level3Update : public ::testing::Test {};
TYPED_TEST_SUITE(Level3Update, Types);

enum class Kind { Syrk, Herk, Syr2k, Her2k };

struct UpdateCase {
    Kind kind;
    const char* uplo;
    const char* trans;
};

// The update on the n by n C, its reference, and the triangle that may change.
template <class T>
void check_update(Kind kind, const char* uplo, const char* trans, int n, int k, T alpha, T beta,
                  std::mt19937& g, bool nan_c = false) {
    const bool herm = kind == Kind::Herk || kind == Kind::Her2k;
    const bool two = kind == Kind::Syr2k || kind == Kind::Her2k;
    const bool tn = trans[0] == 'N' || trans[0] == 'n';
    Mat<T> a = tn ? Mat<T>(n, k, 2) : Mat<T>(k, n, 1), b = tn ? Mat<T>(n, k, 1) : Mat<T>(k, n, 3);
    Mat<T> c(n, n, 2);
    fill_random(a, g), fill_random(b, g), fill_random(c, g);
    if (nan_c)
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < n; ++i) c(i, j) = nan_value<T>();
    // The full update as products: op(X) is n by k, its partner op'(Y) k by n.
    const char left = tn ? 'N' : (herm ? 'C' : 'T'), right = tn ? (herm ? 'C' : 'T') : 'N';
    Expected<T> e = reference_product(left, right, n, n, k, alpha, a, two ? b : a, beta, c);
    if (two) {
        Mat<T> zero(n, n, 0, T(0));
        Expected<T> e2 = reference_product(left, right, n, n, k, herm ? cj(alpha) : alpha, b, a, T(0), zero);
        for (std::size_t i = 0; i < e.value.size(); ++i) e.value[i] += e2.value[i], e.bound[i] += e2.bound[i];
    }
    if (herm)  // the diagonal is real, and its imaginary part exactly zero
        for (int i = 0; i < n; ++i) e.at(i, i) = std::real(e.at(i, i));
    const Mat<T> before = c;
    const Real<T> ra = std::real(alpha), rb = std::real(beta);
    switch (kind) {
        case Kind::Syrk: syrk(uplo, trans, n, k, alpha, a.data(), a.ld, beta, c.data(), c.ld); break;
        case Kind::Syr2k:
            syr2k(uplo, trans, n, k, alpha, a.data(), a.ld, b.data(), b.ld, beta, c.data(), c.ld);
            break;
        case Kind::Herk:
            if constexpr (is_complex<T>) herk(uplo, trans, n, k, ra, a.data(), a.ld, rb, c.data(), c.ld);
            break;
        case Kind::Her2k:
            if constexpr (is_complex<T>)
                her2k(uplo, trans, n, k, alpha, a.data(), a.ld, b.data(), b.ld, rb, c.data(), c.ld);
            break;
    }
    const bool lower = uplo[0] == 'L' || uplo[0] == 'l';
    ASSERT_TRUE(matches(c, before, e, [&](int i, int j) { return lower ? i >= j : i <= j; }));
    if (herm) {
        for (int i = 0; i < n; ++i) ASSERT_EQ(std::imag(c(i, i)), 0) << "diagonal " << i;
    }
}

template <class T>
T complex_or_real(double re, double im) {
    if constexpr (is_complex<T>)
        return T(static_cast<Real<T>>(re), static_cast<Real<T>>(im));
    else
        return static_cast<T>(re);
}

template <class T>
std::vector<UpdateCase> cases() {
    std::vector<UpdateCase> out;
    for (const char* uplo : {"U", "L"}) {
        for (const char* trans : {"N", "T"})
            out.push_back({Kind::Syrk, uplo, trans}), out.push_back({Kind::Syr2k, uplo, trans});
        if constexpr (is_complex<T>) {
            for (const char* trans : {"N", "C"})
                out.push_back({Kind::Herk, uplo, trans}), out.push_back({Kind::Her2k, uplo, trans});
        } else {
            out.push_back({Kind::Syrk, uplo, "c"});  // for real data C is T
        }
    }
    return out;
}

// Orders around the leaf (32) of the recursion and the blocking, inner sizes around the
// register and cache blocks.
TYPED_TEST(Level3Update, MatchesReferenceInItsTriangleOnly) {
    using T = TypeParam;
    std::mt19937 g(21);
    for (auto path : paths()) {
        ForcePath force(path);
        const auto en = active_engine<T>();
        for (const UpdateCase& uc : cases<T>())
            for (auto [n, k] :
                 {std::pair{1, 1}, {3, 0}, {7, 5}, {31, 3}, {32, 2}, {33, en.kc + 1}, {2 * en.mr + 67, 9}}) {
                SCOPED_TRACE(::testing::Message() << path_name(path) << " kind " << static_cast<int>(uc.kind)
                                                  << " " << uc.uplo << uc.trans << " n=" << n << " k=" << k);
                const bool herm = uc.kind == Kind::Herk || uc.kind == Kind::Her2k;
                // Hermitian updates take a real beta, herk a real alpha too.
                const T alpha = uc.kind == Kind::Herk ? T(0.75) : complex_or_real<T>(0.75, -0.5);
                const T beta = herm ? T(-1.5) : complex_or_real<T>(-1.5, 0.25);
                check_update<T>(uc.kind, uc.uplo, uc.trans, n, k, alpha, beta, g);
                if (::testing::Test::HasFatalFailure()) return;
            }
    }
}

// beta = 0 assigns (NaN in C does not survive); alpha = 0 with beta = 1 leaves C bit for bit
// (a Hermitian diagonal included); alpha = 0 otherwise scales the triangle without reading A.
TYPED_TEST(Level3Update, SpecialAlphaAndBeta) {
    using T = TypeParam;
    std::mt19937 g(22);
    for (const UpdateCase& uc : cases<T>()) {
        SCOPED_TRACE(::testing::Message()
                     << "kind " << static_cast<int>(uc.kind) << " " << uc.uplo << uc.trans);
        check_update<T>(uc.kind, uc.uplo, uc.trans, 37, 6, T(2), T(0), g, true);
        check_update<T>(uc.kind, uc.uplo, uc.trans, 9, 4, T(0), T(0.5), g);
        const int n = 6, k = 3;
        Mat<T> a(n, k), c(n, n, 1);  // a all NaN
        fill_random(c, g);
        c(2, 2) = nan_value<T>();
        const Mat<T> before = c;
        switch (uc.kind) {
            case Kind::Syrk: syrk(uc.uplo, uc.trans, n, k, T(0), a.data(), a.ld, T(1), c.data(), c.ld); break;
            case Kind::Syr2k:
                syr2k(uc.uplo, uc.trans, n, k, T(0), a.data(), a.ld, a.data(), a.ld, T(1), c.data(), c.ld);
                break;
            case Kind::Herk:
                if constexpr (is_complex<T>)
                    herk(uc.uplo, uc.trans, n, k, Real<T>(0), a.data(), a.ld, Real<T>(1), c.data(), c.ld);
                break;
            case Kind::Her2k:
                if constexpr (is_complex<T>)
                    her2k(uc.uplo, uc.trans, n, k, T(0), a.data(), a.ld, a.data(), a.ld, Real<T>(1), c.data(),
                          c.ld);
                break;
        }
        EXPECT_TRUE(same_bits(c, before));
    }
}

}  // namespace
