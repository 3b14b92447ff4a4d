// Shared pieces of the Level 3 kernel tests: the exported kernels by type, matrices with
// guarded padding, long-double reference loops and an error-bound comparison.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "frame/prec.hpp"
#include "frame/cpu.hpp"
#include "kernels/gemm_engine.hpp"
#include "qnummath.h"

namespace l3test {

using cf = std::complex<float>;
using cd = std::complex<double>;
using Types = ::testing::Types<float, double, cf, cd>;

template <class T>
using Real = qnum::Real<T>;
template <class T>
inline constexpr bool is_complex = qnum::is_complex_v<T>;
// Reference arithmetic: long double, complex or not like T.
template <class T>
using Ref = std::conditional_t<is_complex<T>, std::complex<long double>, long double>;

template <class T>
Real<T> eps() {
    return std::numeric_limits<Real<T>>::epsilon();
}
template <class T>
T nan_value() {
    const Real<T> q = std::numeric_limits<Real<T>>::quiet_NaN();
    if constexpr (is_complex<T>)
        return T(q, q);
    else
        return q;
}
template <class T>
bool is_nan(T x) {
    if constexpr (is_complex<T>)
        return std::isnan(x.real()) || std::isnan(x.imag());
    else
        return std::isnan(x);
}
template <class X>
X cj(X x) {
    if constexpr (std::is_arithmetic_v<X>)
        return x;
    else
        return std::conj(x);
}

// The exported kernels, overloaded on the element type (scalars by value here).
inline float* c_(float* x) { return x; }
inline const float* c_(const float* x) { return x; }
inline double* c_(double* x) { return x; }
inline const double* c_(const double* x) { return x; }
inline qnum_f_complex* c_(cf* x) { return reinterpret_cast<qnum_f_complex*>(x); }
inline const qnum_f_complex* c_(const cf* x) { return reinterpret_cast<const qnum_f_complex*>(x); }
inline qnum_d_complex* c_(cd* x) { return reinterpret_cast<qnum_d_complex*>(x); }
inline const qnum_d_complex* c_(const cd* x) { return reinterpret_cast<const qnum_d_complex*>(x); }

inline void gemm(const char* ta, const char* tb, int m, int n, int k, float al, const float* a, int lda,
                 const float* b, int ldb, float be, float* c, int ldc) {
    qnum_sgemm(ta, 1, tb, 1, &m, &n, &k, c_(&al), c_(a), &lda, c_(b), &ldb, c_(&be), c_(c), &ldc);
}
inline void symm(const char* sd, const char* ul, int m, int n, float al, const float* a, int lda,
                 const float* b, int ldb, float be, float* c, int ldc) {
    qnum_ssymm(sd, 1, ul, 1, &m, &n, c_(&al), c_(a), &lda, c_(b), &ldb, c_(&be), c_(c), &ldc);
}
inline void syrk(const char* ul, const char* tr, int n, int k, float al, const float* a, int lda, float be,
                 float* c, int ldc) {
    qnum_ssyrk(ul, 1, tr, 1, &n, &k, c_(&al), c_(a), &lda, c_(&be), c_(c), &ldc);
}
inline void syr2k(const char* ul, const char* tr, int n, int k, float al, const float* a, int lda,
                  const float* b, int ldb, float be, float* c, int ldc) {
    qnum_ssyr2k(ul, 1, tr, 1, &n, &k, c_(&al), c_(a), &lda, c_(b), &ldb, c_(&be), c_(c), &ldc);
}
inline void trmm(const char* sd, const char* ul, const char* ta, const char* dg, int m, int n, float al,
                 const float* a, int lda, float* b, int ldb) {
    qnum_strmm(sd, 1, ul, 1, ta, 1, dg, 1, &m, &n, c_(&al), c_(a), &lda, c_(b), &ldb);
}
inline void trsm(const char* sd, const char* ul, const char* ta, const char* dg, int m, int n, float al,
                 const float* a, int lda, float* b, int ldb) {
    qnum_strsm(sd, 1, ul, 1, ta, 1, dg, 1, &m, &n, c_(&al), c_(a), &lda, c_(b), &ldb);
}
inline void gemm(const char* ta, const char* tb, int m, int n, int k, double al, const double* a, int lda,
                 const double* b, int ldb, double be, double* c, int ldc) {
    qnum_dgemm(ta, 1, tb, 1, &m, &n, &k, c_(&al), c_(a), &lda, c_(b), &ldb, c_(&be), c_(c), &ldc);
}
inline void symm(const char* sd, const char* ul, int m, int n, double al, const double* a, int lda,
                 const double* b, int ldb, double be, double* c, int ldc) {
    qnum_dsymm(sd, 1, ul, 1, &m, &n, c_(&al), c_(a), &lda, c_(b), &ldb, c_(&be), c_(c), &ldc);
}
inline void syrk(const char* ul, const char* tr, int n, int k, double al, const double* a, int lda, double be,
                 double* c, int ldc) {
    qnum_dsyrk(ul, 1, tr, 1, &n, &k, c_(&al), c_(a), &lda, c_(&be), c_(c), &ldc);
}
inline void syr2k(const char* ul, const char* tr, int n, int k, double al, const double* a, int lda,
                  const double* b, int ldb, double be, double* c, int ldc) {
    qnum_dsyr2k(ul, 1, tr, 1, &n, &k, c_(&al), c_(a), &lda, c_(b), &ldb, c_(&be), c_(c), &ldc);
}
inline void trmm(const char* sd, const char* ul, const char* ta, const char* dg, int m, int n, double al,
                 const double* a, int lda, double* b, int ldb) {
    qnum_dtrmm(sd, 1, ul, 1, ta, 1, dg, 1, &m, &n, c_(&al), c_(a), &lda, c_(b), &ldb);
}
inline void trsm(const char* sd, const char* ul, const char* ta, const char* dg, int m, int n, double al,
                 const double* a, int lda, double* b, int ldb) {
    qnum_dtrsm(sd, 1, ul, 1, ta, 1, dg, 1, &m, &n, c_(&al), c_(a), &lda, c_(b), &ldb);
}
inline void gemm(const char* ta, const char* tb, int m, int n, int k, cf al, const cf* a, int lda,
                 const cf* b, int ldb, cf be, cf* c, int ldc) {
    qnum_cgemm(ta, 1, tb, 1, &m, &n, &k, c_(&al), c_(a), &lda, c_(b), &ldb, c_(&be), c_(c), &ldc);
}
inline void symm(const char* sd, const char* ul, int m, int n, cf al, const cf* a, int lda, const cf* b,
                 int ldb, cf be, cf* c, int ldc) {
    qnum_csymm(sd, 1, ul, 1, &m, &n, c_(&al), c_(a), &lda, c_(b), &ldb, c_(&be), c_(c), &ldc);
}
inline void syrk(const char* ul, const char* tr, int n, int k, cf al, const cf* a, int lda, cf be, cf* c,
                 int ldc) {
    qnum_csyrk(ul, 1, tr, 1, &n, &k, c_(&al), c_(a), &lda, c_(&be), c_(c), &ldc);
}
inline void syr2k(const char* ul, const char* tr, int n, int k, cf al, const cf* a, int lda, const cf* b,
                  int ldb, cf be, cf* c, int ldc) {
    qnum_csyr2k(ul, 1, tr, 1, &n, &k, c_(&al), c_(a), &lda, c_(b), &ldb, c_(&be), c_(c), &ldc);
}
inline void trmm(const char* sd, const char* ul, const char* ta, const char* dg, int m, int n, cf al,
                 const cf* a, int lda, cf* b, int ldb) {
    qnum_ctrmm(sd, 1, ul, 1, ta, 1, dg, 1, &m, &n, c_(&al), c_(a), &lda, c_(b), &ldb);
}
inline void trsm(const char* sd, const char* ul, const char* ta, const char* dg, int m, int n, cf al,
                 const cf* a, int lda, cf* b, int ldb) {
    qnum_ctrsm(sd, 1, ul, 1, ta, 1, dg, 1, &m, &n, c_(&al), c_(a), &lda, c_(b), &ldb);
}
inline void gemm(const char* ta, const char* tb, int m, int n, int k, cd al, const cd* a, int lda,
                 const cd* b, int ldb, cd be, cd* c, int ldc) {
    qnum_zgemm(ta, 1, tb, 1, &m, &n, &k, c_(&al), c_(a), &lda, c_(b), &ldb, c_(&be), c_(c), &ldc);
}
inline void symm(const char* sd, const char* ul, int m, int n, cd al, const cd* a, int lda, const cd* b,
                 int ldb, cd be, cd* c, int ldc) {
    qnum_zsymm(sd, 1, ul, 1, &m, &n, c_(&al), c_(a), &lda, c_(b), &ldb, c_(&be), c_(c), &ldc);
}
inline void syrk(const char* ul, const char* tr, int n, int k, cd al, const cd* a, int lda, cd be, cd* c,
                 int ldc) {
    qnum_zsyrk(ul, 1, tr, 1, &n, &k, c_(&al), c_(a), &lda, c_(&be), c_(c), &ldc);
}
inline void syr2k(const char* ul, const char* tr, int n, int k, cd al, const cd* a, int lda, const cd* b,
                  int ldb, cd be, cd* c, int ldc) {
    qnum_zsyr2k(ul, 1, tr, 1, &n, &k, c_(&al), c_(a), &lda, c_(b), &ldb, c_(&be), c_(c), &ldc);
}
inline void trmm(const char* sd, const char* ul, const char* ta, const char* dg, int m, int n, cd al,
                 const cd* a, int lda, cd* b, int ldb) {
    qnum_ztrmm(sd, 1, ul, 1, ta, 1, dg, 1, &m, &n, c_(&al), c_(a), &lda, c_(b), &ldb);
}
inline void trsm(const char* sd, const char* ul, const char* ta, const char* dg, int m, int n, cd al,
                 const cd* a, int lda, cd* b, int ldb) {
    qnum_ztrsm(sd, 1, ul, 1, ta, 1, dg, 1, &m, &n, c_(&al), c_(a), &lda, c_(b), &ldb);
}
inline void hemm(const char* sd, const char* ul, int m, int n, cf al, const cf* a, int lda, const cf* b,
                 int ldb, cf be, cf* c, int ldc) {
    qnum_chemm(sd, 1, ul, 1, &m, &n, c_(&al), c_(a), &lda, c_(b), &ldb, c_(&be), c_(c), &ldc);
}
inline void herk(const char* ul, const char* tr, int n, int k, float al, const cf* a, int lda, float be,
                 cf* c, int ldc) {
    qnum_cherk(ul, 1, tr, 1, &n, &k, &al, c_(a), &lda, &be, c_(c), &ldc);
}
inline void her2k(const char* ul, const char* tr, int n, int k, cf al, const cf* a, int lda, const cf* b,
                  int ldb, float be, cf* c, int ldc) {
    qnum_cher2k(ul, 1, tr, 1, &n, &k, c_(&al), c_(a), &lda, c_(b), &ldb, &be, c_(c), &ldc);
}
inline void hemm(const char* sd, const char* ul, int m, int n, cd al, const cd* a, int lda, const cd* b,
                 int ldb, cd be, cd* c, int ldc) {
    qnum_zhemm(sd, 1, ul, 1, &m, &n, c_(&al), c_(a), &lda, c_(b), &ldb, c_(&be), c_(c), &ldc);
}
inline void herk(const char* ul, const char* tr, int n, int k, double al, const cd* a, int lda, double be,
                 cd* c, int ldc) {
    qnum_zherk(ul, 1, tr, 1, &n, &k, &al, c_(a), &lda, &be, c_(c), &ldc);
}
inline void her2k(const char* ul, const char* tr, int n, int k, cd al, const cd* a, int lda, const cd* b,
                  int ldb, double be, cd* c, int ldc) {
    qnum_zher2k(ul, 1, tr, 1, &n, &k, c_(&al), c_(a), &lda, c_(b), &ldb, &be, c_(c), &ldc);
}

// ---- matrices ----

// A column-major rows by cols matrix with leading dimension ld >= rows; the padding rows
// hold `pad`, so that a kernel reading them produces NaNs and one writing them is caught.
template <class T>
struct Mat {
    int rows = 0, cols = 0, ld = 1;
    std::vector<T> v;
    Mat() = default;
    Mat(int r, int c, int extra = 0, T pad = nan_value<T>())
        : rows(r),
          cols(c),
          ld((r > 0 ? r : 1) + extra),
          v(static_cast<std::size_t>(ld) * (c > 0 ? c : 1), pad) {}
    T& operator()(int i, int j) { return v[i + static_cast<std::size_t>(j) * ld]; }
    T operator()(int i, int j) const { return v[i + static_cast<std::size_t>(j) * ld]; }
    T* data() { return v.data(); }
    const T* data() const { return v.data(); }
};

template <class T>
T random_value(std::mt19937& g) {
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    if constexpr (is_complex<T>)
        return T(static_cast<Real<T>>(u(g)), static_cast<Real<T>>(u(g)));
    else
        return static_cast<T>(u(g));
}

template <class T>
void fill_random(Mat<T>& m, std::mt19937& g) {
    for (int j = 0; j < m.cols; ++j)
        for (int i = 0; i < m.rows; ++i) m(i, j) = random_value<T>(g);
}

template <class T>
bool same_bits(const Mat<T>& a, const Mat<T>& b) {
    return a.v.size() == b.v.size() && std::memcmp(a.v.data(), b.v.data(), a.v.size() * sizeof(T)) == 0;
}

// Element (i, j) of op(A), in reference arithmetic.
template <class T>
Ref<T> op_elem(const Mat<T>& a, char op, int i, int j) {
    const Ref<T> x = op == 'N' ? Ref<T>(a(i, j)) : Ref<T>(a(j, i));
    return op == 'C' ? cj(x) : x;
}

template <class T>
long double mag(Ref<T> x) {
    return std::abs(x);
}

// A reference result: values and, per element, a bound on the rounding error allowed.
template <class T>
struct Expected {
    int rows, cols;
    std::vector<Ref<T>> value;
    std::vector<long double> bound;
    Expected(int r, int c)
        : rows(r), cols(c), value(static_cast<std::size_t>(r) * c), bound(value.size(), 0) {}
    Ref<T>& at(int i, int j) { return value[i + static_cast<std::size_t>(j) * rows]; }
    long double& tol(int i, int j) { return bound[i + static_cast<std::size_t>(j) * rows]; }
};

// Every element of the rows by cols part of c within its bound; the padding untouched.
// `only(i, j)` selects the elements compared (a triangle); the others must keep `before`.
template <class T, class Only>
::testing::AssertionResult matches(const Mat<T>& c, const Mat<T>& before, Expected<T>& e, Only only) {
    for (int j = 0; j < c.cols; ++j)
        for (int i = 0; i < c.ld; ++i) {
            const T got = c.v[i + static_cast<std::size_t>(j) * c.ld];
            const T old = before.v[i + static_cast<std::size_t>(j) * c.ld];
            if (i >= c.rows || !only(i, j)) {
                if (std::memcmp(&got, &old, sizeof(T)) != 0)
                    return ::testing::AssertionFailure()
                           << "element (" << i << ", " << j << ") outside the result was changed";
                continue;
            }
            const long double err = mag<T>(Ref<T>(got) - e.at(i, j));
            if (!(err <= e.tol(i, j)))
                return ::testing::AssertionFailure()
                       << "element (" << i << ", " << j << "): got " << got << ", expected "
                       << static_cast<T>(e.at(i, j)) << ", error " << static_cast<double>(err) << " > bound "
                       << static_cast<double>(e.tol(i, j));
        }
    return ::testing::AssertionSuccess();
}
template <class T>
::testing::AssertionResult matches(const Mat<T>& c, const Mat<T>& before, Expected<T>& e) {
    return matches(c, before, e, [](int, int) { return true; });
}

// alpha op(A) op(B) + beta C with the bound gamma (|alpha| |op(A)| |op(B)| + |beta| |C|),
// gamma = 2 (k + 2) eps (a complex multiply-add rounds a few times more than a real one).
template <class T>
Expected<T> reference_product(char ta, char tb, int m, int n, int k, T alpha, const Mat<T>& a,
                              const Mat<T>& b, T beta, const Mat<T>& c) {
    Expected<T> e(m, n);
    const long double gamma = 2.0L * (k + 2) * eps<T>() * (is_complex<T> ? 2 : 1);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i) {
            Ref<T> s = 0;
            long double abs_sum = 0;
            for (int p = 0; p < k; ++p) {
                const Ref<T> x = op_elem(a, ta, i, p), y = op_elem(b, tb, p, j);
                s += x * y;
                abs_sum += mag<T>(x) * mag<T>(y);
            }
            const bool beta_zero = beta == T(0);
            const Ref<T> cij = beta_zero ? Ref<T>(0) : Ref<T>(beta) * Ref<T>(c(i, j));
            e.at(i, j) = Ref<T>(alpha) * s + cij;
            e.tol(i, j) = gamma * (std::abs(alpha) * abs_sum + (beta_zero ? 0 : mag<T>(cij))) +
                          std::numeric_limits<Real<T>>::min();
        }
    return e;
}

// ---- instruction-set paths ----

// Every path the machine supports, the portable one first.
inline std::vector<qnum::cpu::Path> paths() {
    std::vector<qnum::cpu::Path> out;
    for (int p = 0; p <= static_cast<int>(qnum::cpu::detected()); ++p)
        out.push_back(static_cast<qnum::cpu::Path>(p));
    return out;
}
inline const char* path_name(qnum::cpu::Path p) {
    switch (p) {
        case qnum::cpu::Path::Avx512: return "avx512";
        case qnum::cpu::Path::Avx2: return "avx2";
        default: return "portable";
    }
}

// Forces one path for its lifetime.
class ForcePath {
public:
    explicit ForcePath(qnum::cpu::Path p) { qnum::cpu::force(p); }
    ~ForcePath() { qnum::cpu::reset(); }
    ForcePath(const ForcePath&) = delete;
    ForcePath& operator=(const ForcePath&) = delete;
};

// The blocking of the product engine on the active path.
template <class T>
qnum::kern::gemm_impl::Engine<T> active_engine() {
    return qnum::kern::gemm_impl::engine<T>();
}

}  // namespace l3test
