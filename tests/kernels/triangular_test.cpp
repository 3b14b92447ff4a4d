// Triangular products and solves in full, band and packed storage: products against dense
// references, solves by their residuals.
#include "dense_ref.hpp"
#include "kernels/level2.hpp"

namespace qnum::test {
namespace {

template <class T>
class Triangular : public ::testing::Test {};
TYPED_TEST_SUITE(Triangular, Types);

// A triangular matrix with k off-diagonals, diagonally dominant so that the solves are well
// conditioned, in the three layouts. Everything a kernel must not read holds the sentinel:
// the other triangle, the unused band corners, and the diagonal when it is implicitly one.
template <class T>
struct Tri {
    int n, k;
    bool upper, unit;
    Dense<T> d;
    Mat<T> full, band;
    std::vector<T> packed;
    Tri(int n_, int k_, bool upper_, bool unit_, Rng& rng)
        : n(n_),
          k(k_),
          upper(upper_),
          unit(unit_),
          d(n_, n_),
          full(n_, n_, n_ + 2, rng),
          band(k_ + 1, n_, k_ + 3, rng) {
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < n; ++i) {
                const bool stored = upper ? i <= j && j - i <= k : i >= j && i - j <= k;
                T v = stored ? rng.next<T>() * T(Real<T>(1) / (k + 1)) : T(0);
                if (i == j) v = unit ? T(1) : v + T(2);
                d(i, j) = widen(v);
                const T kept = i == j && unit ? sentinel<T>() : v;
                const bool in_triangle = upper ? i <= j : i >= j;
                full.at(i, j) = in_triangle ? kept : sentinel<T>();
                if (in_triangle) packed.push_back(kept);
            }
        for (int j = 0; j < n; ++j)
            for (int r = 0; r <= k; ++r) {
                const int i = upper ? j - k + r : j + r;
                band.at(r, j) = i >= 0 && i < n ? full.at(i, j) : sentinel<T>();
            }
    }
    // layout 0 full, 1 band, 2 packed
    void run(int layout, bool solve, char trans, T* x, int incx) {
        const char u = upper ? 'U' : 'L', g = unit ? 'U' : 'N';
        if (!solve) {
            if (layout == 0) kern::trmv(u, trans, g, n, full.data(), n + 2, x, incx);
            if (layout == 1) kern::tbmv(u, trans, g, n, k, band.data(), k + 3, x, incx);
            if (layout == 2) kern::tpmv(u, trans, g, n, packed.data(), x, incx);
        } else {
            if (layout == 0) kern::trsv(u, trans, g, n, full.data(), n + 2, x, incx);
            if (layout == 1) kern::tbsv(u, trans, g, n, k, band.data(), k + 3, x, incx);
            if (layout == 2) kern::tpsv(u, trans, g, n, packed.data(), x, incx);
        }
    }
};

TYPED_TEST(Triangular, ProductsAndSolves) {
    using T = TypeParam;
    for_each_path([&] {
        Rng rng;
        for (int n : {0, 1, 2, 3, 4, 7, 16, 33, 70})
            for (int k : {0, 2, 100})
                for (bool upper : {true, false})
                    for (bool unit : {false, true}) {
                        const int kk = std::min(k, std::max(n - 1, 0));
                        Tri<T> t(n, kk, upper, unit, rng);
                        for (char trans : {'N', 'T', 'C'})
                            for (int layout = 0; layout < 3; ++layout) {
                                if (layout != 1 && kk < n - 1)
                                    continue;  // full and packed hold the whole triangle
                                const int incx = layout == 1 ? -2 : (n & 1) ? 1 : 3;
                                SCOPED_TRACE(::testing::Message()
                                             << (upper ? 'U' : 'L') << trans << (unit ? 'U' : 'N') << " n "
                                             << n << " k " << kk << " layout " << layout);
                                Vec<T> x(n, incx, rng);
                                const auto x0 = x.values();
                                t.run(layout, false, trans, x.data(), incx);
                                expect_product(x, product(t.d, trans, T(1), x0, T(0), std::vector<T>(n)), n);

                                Vec<T> z(n, incx, rng);
                                const auto b = z.values();
                                t.run(layout, true, trans, z.data(), incx);
                                EXPECT_TRUE(z.gaps_intact());
                                const auto r = product(t.d, trans, T(1), z.values(), T(0), std::vector<T>(n));
                                for (int i = 0; i < n; ++i)
                                    EXPECT_TRUE(near(b[i], r.value[i], 4 * (n + 4) * eps<T>() * r.size[i]))
                                        << "row " << i;
                            }
                    }
    });
}

}  // namespace
}  // namespace qnum::test
