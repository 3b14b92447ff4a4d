// Shared pieces of the dense solver tests: typed entry points, row-major test matrices, long
// double products and residuals, the committed reference table and error tables.
#pragma once

#include <gtest/gtest.h>

#include <complex>
#include <cstring>
#include <fstream>
#include <functional>
#include <memory>
#include <random>
#include <sstream>

#include "frame/prec.hpp"
#include "qnum_test.hpp"
#include "qnummath.h"

namespace qnum::test {

using C = std::complex<float>;
using Z = std::complex<double>;
using AllTypes = ::testing::Types<float, double, C, Z>;
using RealTypes = ::testing::Types<float, double>;
template <class T> struct Quiet : ::testing::Test { QuietErrors quiet; };

template <class T>
using Wide = std::conditional_t<is_complex_v<T>, std::complex<long double>, long double>;
inline long double widen(long double v) { return v; }
inline std::complex<long double> widen(std::complex<long double> v) { return v; }
inline std::complex<long double> widen(C v) { return {v.real(), v.imag()}; }
inline std::complex<long double> widen(Z v) { return {v.real(), v.imag()}; }
template <class T> long double eps() { return Prec<T>::eps(); }
template <class W> W conj_w(W v) { return v; }
template <class W> std::complex<W> conj_w(std::complex<W> v) { return std::conj(v); }

// C-typed pointers for the complex entry points (the optional arguments pass as they are).
inline qnum_f_complex* c_arg(C* p) { return reinterpret_cast<qnum_f_complex*>(p); }
inline qnum_d_complex* c_arg(Z* p) { return reinterpret_cast<qnum_d_complex*>(p); }

#define QNUM_LINSYS_ENTRY(name)                                                                           \
    template <class T, class... A>                                                                        \
    T* name(int n, T* a, T* b, A... args) {                                                               \
        if constexpr (std::is_same_v<T, float>) return qnum_f_lin_sol_##name(n, a, b, args...);          \
        else if constexpr (std::is_same_v<T, double>) return qnum_d_lin_sol_##name(n, a, b, args...);    \
        else if constexpr (std::is_same_v<T, C>)                                                          \
            return reinterpret_cast<T*>(qnum_c_lin_sol_##name(n, c_arg(a), c_arg(b), args...));   \
        else return reinterpret_cast<T*>(qnum_z_lin_sol_##name(n, c_arg(a), c_arg(b), args...));  \
    }
QNUM_LINSYS_ENTRY(gen)
QNUM_LINSYS_ENTRY(posdef)
#undef QNUM_LINSYS_ENTRY

template <class T, class... A>
T* nonnegdef(int n, T* a, T* b, A... args) {
    if constexpr (std::is_same_v<T, float>) return qnum_f_lin_sol_nonnegdef(n, a, b, args...); else return qnum_d_lin_sol_nonnegdef(n, a, b, args...);
}

// A value no routine computes: storage a routine must not write holds it.
template <class T> T sentinel() { if constexpr (is_complex_v<T>) return T(-777.25f, 333.5f); else return T(-777.25f); }

template <class T>
bool same_bits(const std::vector<T>& a, const std::vector<T>& b) { return a.size() == b.size() && !std::memcmp(a.data(), b.data(), sizeof(T) * a.size()); }
template <class T> std::vector<T> vec(const T* p, std::size_t n) { return std::vector<T>(p, p + n); }

// n values uniform in [-1, 1) (both parts for complex data) from g.
template <class T>
std::vector<T> randoms(std::mt19937& g, int n) {
    std::uniform_real_distribution<double> d(-1, 1);
    std::vector<T> v(n);
    for (T& e : v) { const auto re = Real<T>(d(g)); if constexpr (is_complex_v<T>) e = T(re, Real<T>(d(g))); else e = re; }
    return v;
}

// Kinds of test matrix: uniform random; graded (entry (i, j) scaled by 2^-(i+j)/2); rows scaled
// by powers of ten over 12 decades; a Hilbert-like 1/(i+j+1), perturbed so as not to be symmetric.
enum class Kind { Random, Graded, RowScaled, Hilbert };

// An n by n row-major matrix with rows ld apart; the padding holds the sentinel.
template <class T>
std::vector<T> make_matrix(Kind kind, int n, int ld, unsigned seed) {
    std::mt19937 g(seed);
    std::vector<T> a(std::size_t(n) * ld, sentinel<T>());
    std::uniform_int_distribution<int> decade(-6, 6);
    for (int i = 0; i < n; ++i) {
        const Real<T> row_scale = kind == Kind::RowScaled ? Real<T>(std::pow(10.0, decade(g))) : 1;
        const std::vector<T> row = randoms<T>(g, n);
        for (int j = 0; j < n; ++j) {
            T v = row[j];
            if (kind == Kind::Graded) v *= Real<T>(std::ldexp(1.0, -(i + j) / 2));
            if (kind == Kind::Hilbert) v = T(Real<T>(1.0 / (i + j + 1))) + v * Real<T>(1e-3);
            a[std::size_t(i) * ld + j] = v * row_scale;
        }
    }
    return a;
}

template <class T> std::vector<T> make_vector(int n, unsigned seed) { std::mt19937 g(seed); return randoms<T>(g, n); }

// ||op(A) x - b||_inf / (||A||_inf ||x||_inf n eps), in long double; op is A, A^T for real
// and A^H for complex data when `trans`.
template <class T>
long double backward_error(int n, const T* a, int ld, const T* x, const T* b, bool trans) {
    long double res = 0, anorm = 0, xnorm = 0;
    for (int i = 0; i < n; ++i) {
        Wide<T> s = -widen(b[i]);
        long double row = 0;
        for (int j = 0; j < n; ++j) {
            const Wide<T> aij = trans ? conj_w(widen(a[std::size_t(j) * ld + i])) : widen(a[std::size_t(i) * ld + j]);
            s += aij * widen(x[j]), row += std::abs(aij);
        }
        res = std::max(res, static_cast<long double>(std::abs(s)));
        anorm = std::max(anorm, row);
        xnorm = std::max(xnorm, static_cast<long double>(std::abs(widen(x[i]))));
    }
    return res / (anorm * xnorm * n * eps<T>());
}

// The n by n product op(P) Q in long double, P and Q row-major with rows ldp and ldq apart;
// op(P) is P^H when `herm`.
template <class P, class Q>
auto product(int n, const P* p, int ldp, const Q* q, int ldq, bool herm = false) {
    std::vector<decltype(widen(p[0]) * widen(q[0]))> out(std::size_t(n) * n);
    for (int i = 0; i < n; ++i)
        for (int k = 0; k < n; ++k) {
            const auto pik = herm ? conj_w(widen(p[std::size_t(k) * ldp + i])) : widen(p[std::size_t(i) * ldp + k]);
            for (int j = 0; j < n; ++j) out[std::size_t(i) * n + j] += pik * widen(q[std::size_t(k) * ldq + j]);
        }
    return out;
}

// max |M - E| / max |E| over n by n row-major matrices, E with rows lde apart; the identity
// (and an absolute difference) when E is null.
template <class W, class T>
long double rel_diff(int n, const std::vector<W>& m, const T* e, int lde) {
    long double worst = 0, size = e ? 0 : 1;
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            const W want = e ? W(widen(e[std::size_t(i) * lde + j])) : W(i == j ? 1 : 0);
            worst = std::max(worst, static_cast<long double>(std::abs(m[std::size_t(i) * n + j] - want)));
            size = std::max(size, static_cast<long double>(std::abs(want)));
        }
    return worst / size;
}

// The n by n block of `got` (rows ldg apart) holds `want` (rows ldw apart) bit for bit, and
// the padding of its rows the sentinel.
template <class T>
bool same_block(int n, const T* got, int ldg, const T* want, int ldw) {
    const T s = sentinel<T>();
    for (int i = 0; i < n; ++i) {
        if (std::memcmp(got + std::size_t(i) * ldg, want + std::size_t(i) * ldw, n * sizeof(T)) != 0) return false;
        for (int j = n; j < ldg; ++j)
            if (std::memcmp(got + std::size_t(i) * ldg + j, &s, sizeof(T)) != 0) return false;
    }
    return true;
}

// One case of data/linsys/reference.txt: "case name real|complex n", then rows "a", "b",
// "x" of numbers (pairs for complex data) and "cond1".
struct RefCase { std::string name; bool complex = false; int n = 0; std::vector<std::complex<long double>> a, b, x; long double cond1 = 0; };

inline std::vector<RefCase> reference_cases() {
    std::ifstream in(std::string(QNUM_TEST_DATA_DIR) + "/linsys/reference.txt");
    std::vector<RefCase> out;
    for (std::string line, tag, kind; std::getline(in, line);) {
        std::istringstream s(line);
        s >> tag;
        if (tag == "case") out.emplace_back(), s >> out.back().name >> kind >> out.back().n, out.back().complex = kind == "complex";
        if (tag == "cond1") s >> out.back().cond1;
        if (tag != "a" && tag != "b" && tag != "x") continue;
        auto& v = tag == "a" ? out.back().a : tag == "b" ? out.back().b : out.back().x;
        for (long double re, im = 0; s >> re && (!out.back().complex || s >> im);) v.emplace_back(re, im);
    }
    return out;
}

template <class T>
std::vector<T> narrow_all(const std::vector<std::complex<long double>>& v) {
    std::vector<T> out;
    for (auto e : v) if constexpr (is_complex_v<T>) out.emplace_back(Real<T>(e.real()), Real<T>(e.imag())); else out.push_back(T(e.real()));
    return out;
}

// Frees a routine-allocated result at the end of the scope.
struct FreeFn { void operator()(void* p) const { qnum_free_allocated_memory(p); } };
using Freed = std::unique_ptr<void, FreeFn>;

// An error table: each call returns null with the type, code and substitutions of its row.
struct ErrorRow { const char* what; int code; std::vector<int> ints; std::vector<std::string> strings;
                  std::function<const void*()> call; int type = 5; };
inline void check_errors(const std::vector<ErrorRow>& table) {
    for (const ErrorRow& e : table) {
        SCOPED_TRACE(e.what);
        EXPECT_EQ(e.call(), nullptr);
        EXPECT_EQ(std::vector<int>({last_type(), last_code()}), std::vector<int>({e.type, e.code}));
        for (std::size_t k = 0; k < e.ints.size(); ++k) EXPECT_EQ(int_slot(int(k) + 1), e.ints[k]) << "i" << k + 1;
        for (std::size_t k = 0; k < e.strings.size(); ++k) EXPECT_EQ(string_slot(int(k) + 1), e.strings[k]) << "l" << k + 1;
    }
}

}  // namespace qnum::test
