// The tuned paths against the portable one: every kernel with an AVX2 or AVX-512 body runs on
// each path this machine has, over lengths at the edges of the vector loops, increments of
// both signs and the special scalars, and must agree with the portable result within a few
// roundings per term; storage outside the result (gaps, padding) must stay as it was.
#include "kernel_test.hpp"

namespace qnum::test {
namespace {

template <class T>
class SimdPaths : public ::testing::Test {};
TYPED_TEST_SUITE(SimdPaths, Types);

// One run of a kernel: the storage it wrote (whole, gaps included) and the number of terms
// that each result element sums, which scales the rounding allowed.
template <class T>
struct Out {
    std::vector<T> v;
    int terms;
};
// A case: computes one run from a fresh generator for sizes m, n, increments, and scalars.
template <class T>
using Case = std::function<Out<T>(int m, int n, int incx, int incy, T alpha, T beta, std::mt19937&)>;

template <class T>
std::vector<std::pair<T, T>> scalars() {
    return {{scalar<T>(0.75, -0.5), scalar<T>(-0.5, 0.25)},
            {T(0), T(1)},
            {T(0), T(0)},
            {T(1), T(0)},
            {T(-1), T(1)},
            {scalar<T>(0, 1), scalar<T>(2, -1)}};
}

// Runs `run` on the portable path and on every tuned one from the same seed, and compares.
template <class T>
void agree(const char* name, int m, int n, int incx, int incy, T alpha, T beta, const Case<T>& run) {
    SCOPED_TRACE(::testing::Message() << name << " m " << m << " n " << n << " inc " << incx << "," << incy
                                      << " alpha " << alpha << " beta " << beta);
    cpu::force(cpu::Path::Portable);
    std::mt19937 g0(static_cast<unsigned>(m * 7919 + n));
    const Out<T> ref = run(m, n, incx, incy, alpha, beta, g0);
    for (int p = 1; p <= static_cast<int>(cpu::detected()); ++p) {
        cpu::force(static_cast<cpu::Path>(p));
        std::mt19937 g(static_cast<unsigned>(m * 7919 + n));
        const Out<T> got = run(m, n, incx, incy, alpha, beta, g);
        ASSERT_EQ(got.v.size(), ref.v.size());
        for (std::size_t i = 0; i < ref.v.size(); ++i) {
            const bool ref_nan = std::isnan(std::abs(ref.v[i])), got_nan = std::isnan(std::abs(got.v[i]));
            const long double tol = 16 * eps<T>() * (ref.terms + 2) * (1 + std::abs(widen(ref.v[i])));
            if (ref_nan || got_nan) {
                ASSERT_EQ(ref_nan, got_nan) << "path " << p << " element " << i;
            } else {
                ASSERT_LE(std::abs(widen(got.v[i]) - widen(ref.v[i])), tol)
                    << "path " << p << " element " << i << ": " << got.v[i] << " vs " << ref.v[i];
            }
        }
    }
    cpu::reset();
}

// Vector kernels: n elements, both increments.
template <class T>
std::vector<std::pair<const char*, Case<T>>> vector_cases() {
    auto pair_of = [](T v) { return Out<T>{{v}, 1}; };
    return {
        {"dot",
         [=](int, int n, int ix, int iy, T, T, std::mt19937& g) {
             Vec<T> x(n, ix, g), y(n, iy, g);
             return Out<T>{{kern::dot(n, x.data(), ix, y.data(), iy)}, n};
         }},
        {"dotc",
         [=](int, int n, int ix, int iy, T, T, std::mt19937& g) {
             Vec<T> x(n, ix, g), y(n, iy, g);
             return Out<T>{{kern::dotc(n, x.data(), ix, y.data(), iy)}, n};
         }},
        {"axpy",
         [](int, int n, int ix, int iy, T alpha, T, std::mt19937& g) {
             Vec<T> x(n, ix, g), y(n, iy, g);
             kern::axpy(n, alpha, x.data(), ix, y.data(), iy);
             return Out<T>{y.v, 1};
         }},
        {"scal",
         [](int, int n, int ix, int, T alpha, T, std::mt19937& g) {
             Vec<T> x(n, ix, g);
             kern::scal(n, alpha, x.data(), ix);
             return Out<T>{x.v, 1};
         }},
        {"nrm2",
         [=](int, int n, int ix, int, T, T, std::mt19937& g) {
             Vec<T> x(n, ix, g);
             return pair_of(T(kern::nrm2(n, x.data(), ix)));
         }},
    };
}

TYPED_TEST(SimdPaths, VectorKernels) {
    using T = TypeParam;
    for (auto& [name, run] : vector_cases<T>())
        for (int n : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 33, 64, 65, 300})
            for (auto [incx, incy] : {std::pair{1, 1}, {-1, -1}, {2, -3}, {-2, 1}})
                for (auto [alpha, beta] : scalars<T>()) agree<T>(name, 0, n, incx, incy, alpha, beta, run);
}

// The same data placed at another address gives the same bits on every path: solvers that
// copy their operands rely on it.
TYPED_TEST(SimdPaths, ResultsDoNotDependOnAlignment) {
    using T = TypeParam;
    const int n = 203;
    std::mt19937 g(7);
    std::vector<T> x(n + 8), y(n + 8);
    for (T& v : x) v = random_value<T>(g);
    for (T& v : y) v = random_value<T>(g);
    const T a = scalar<T>(0.75, -0.5);
    for_each_path([&] {
        std::vector<std::vector<T>> got;
        for (int shift : {0, 1, 3}) {
            std::vector<T> xs(n + 8), ys(n + 8);
            std::copy(x.begin(), x.begin() + n, xs.begin() + shift);
            std::copy(y.begin(), y.begin() + n, ys.begin() + shift);
            kern::axpy(n, a, xs.data() + shift, 1, ys.data() + shift, 1);
            kern::scal(n, a, xs.data() + shift, 1);
            std::vector<T> r(ys.begin() + shift, ys.begin() + shift + n);
            r.insert(r.end(), xs.begin() + shift, xs.begin() + shift + n);
            r.push_back(kern::dot(n, xs.data() + shift, 1, ys.data() + shift, 1));
            got.push_back(r);
        }
        for (std::size_t k = 1; k < got.size(); ++k)
            EXPECT_EQ(std::memcmp(got[0].data(), got[k].data(), got[0].size() * sizeof(T)), 0) << k;
    });
}

// Matrix-vector kernels: A m by n (leading dimension m + 3), or n by n for the Hermitian and
// triangular ones.
template <class T>
std::vector<std::pair<std::string, Case<T>>> matrix_vector_cases() {
    std::vector<std::pair<std::string, Case<T>>> cases;
    for (char trans : {'N', 'T', 'C'})
        cases.push_back({std::string("gemv ") + trans, [trans](int m, int n, int ix, int iy, T alpha, T beta, std::mt19937& g) {
                             Mat<T> a(m, n, m + 3, g);
                             const int lx = trans == 'N' ? n : m, ly = trans == 'N' ? m : n;
                             Vec<T> x(lx, ix, g), y(ly, iy, g);
                             if (beta == T(0)) y[ly / 2] = nan_value<T>();
                             kern::gemv(trans, m, n, alpha, a.data(), a.ld, x.data(), ix, beta, y.data(), iy);
                             return Out<T>{y.v, lx};
                         }});
    for (char uplo : {'U', 'L'}) {
        cases.push_back({std::string("hemv ") + uplo, [uplo](int, int n, int ix, int iy, T alpha, T beta, std::mt19937& g) {
                             Mat<T> a(n, n, n + 1, g);
                             Vec<T> x(n, ix, g), y(n, iy, g);
                             kern::hemv(uplo, n, alpha, a.data(), a.ld, x.data(), ix, beta, y.data(), iy);
                             return Out<T>{y.v, n};
                         }});
        for (char trans : {'N', 'T', 'C'})
            cases.push_back({std::string("trmv/trsv ") + uplo + trans, [uplo, trans](int, int n, int ix, int, T, T, std::mt19937& g) {
                                 Mat<T> a(n, n, n + 2, g);
                                 for (int i = 0; i < n; ++i) a.at(i, i) = scalar<T>(n + 1.0, 0.5);
                                 Vec<T> x(n, ix, g);
                                 kern::trmv(uplo, trans, 'U', n, a.data(), a.ld, x.data(), ix);
                                 kern::trsv(uplo, trans, 'N', n, a.data(), a.ld, x.data(), ix);
                                 return Out<T>{x.v, n * n};
                             }});
    }
    for (bool c : {false, true})
        cases.push_back({c ? "gerc" : "ger", [c](int m, int n, int ix, int iy, T alpha, T, std::mt19937& g) {
                             Mat<T> a(m, n, m + 1, g);
                             Vec<T> x(m, ix, g), y(n, iy, g);
                             (c ? kern::gerc<T> : kern::ger<T>)(m, n, alpha, x.data(), ix, y.data(), iy, a.data(), a.ld);
                             return Out<T>{a.v, 1};
                         }});
    return cases;
}

TYPED_TEST(SimdPaths, MatrixVectorKernels) {
    using T = TypeParam;
    const std::pair<int, int> shapes[] = {{1, 1}, {3, 5}, {8, 4}, {9, 7}, {17, 3}, {33, 9}, {64, 65}};
    for (auto& [name, run] : matrix_vector_cases<T>()) {
        for (auto [m, n] : shapes)
            for (auto [incx, incy] : {std::pair{1, 1}, {-1, 2}, {3, -1}})
                for (auto [alpha, beta] : scalars<T>()) agree<T>(name.c_str(), m, n, incx, incy, alpha, beta, run);
        // Long columns that span several of the row blocks the no-transpose product keeps in cache.
        for (int m : {1023, 2049, 4097}) agree<T>(name.c_str(), m, 6, 1, 1, scalars<T>()[0].first, scalars<T>()[0].second, run);
    }
}

// Level 3 pieces with bodies of their own per path: the triangular leaves (orders up to 32,
// and the recursion above them) and the packing of operands that run across the slivers.
template <class T>
std::vector<std::pair<std::string, Case<T>>> level3_cases() {
    std::vector<std::pair<std::string, Case<T>>> cases;
    for (char side : {'L', 'R'})
        for (char uplo : {'U', 'L'})
            for (char ta : {'N', 'T', 'C'})
                for (char diag : {'N', 'U'})
                    cases.push_back({std::string("trmm/trsm ") + side + uplo + ta + diag,
                                     [=](int m, int n, int, int, T alpha, T, std::mt19937& g) {
                                         const int k = side == 'L' ? m : n;
                                         Mat<T> a(k, k, k + 1, g), b(m, n, m + 2, g);
                                         for (int i = 0; i < k; ++i) a.at(i, i) = scalar<T>(2 + i % 3, 0.5);
                                         kern::trmm(side, uplo, ta, diag, m, n, alpha, a.data(), a.ld, b.data(), b.ld);
                                         kern::trsm(side, uplo, ta, 'N', m, n, T(1), a.data(), a.ld, b.data(), b.ld);
                                         return Out<T>{b.v, 4 * k};
                                     }});
    for (char ta : {'N', 'T', 'C'})
        for (char tb : {'N', 'T', 'C'})
            cases.push_back({std::string("gemm ") + ta + tb, [=](int m, int n, int, int, T alpha, T beta, std::mt19937& g) {
                                 const int k = (m + n) / 2 + 1;
                                 Mat<T> a(ta == 'N' ? m : k, ta == 'N' ? k : m, (ta == 'N' ? m : k) + 1, g);
                                 Mat<T> b(tb == 'N' ? k : n, tb == 'N' ? n : k, (tb == 'N' ? k : n) + 3, g);
                                 Mat<T> c(m, n, m + 1, g);
                                 kern::gemm(ta, tb, m, n, k, alpha, a.data(), a.ld, b.data(), b.ld, beta, c.data(), c.ld);
                                 return Out<T>{c.v, k};
                             }});
    return cases;
}

TYPED_TEST(SimdPaths, TriangularLeavesAndPacking) {
    using T = TypeParam;
    const std::pair<int, int> shapes[] = {{1, 1}, {5, 3}, {7, 33}, {32, 9}, {33, 31}, {70, 45}};
    const auto s = scalars<T>();
    for (auto& [name, run] : level3_cases<T>())
        for (auto [m, n] : shapes)
            for (int k : {0, 3}) agree<T>(name.c_str(), m, n, 1, 1, s[k].first, s[k].second, run);
}

}  // namespace
}  // namespace qnum::test
