// Shared pieces of the dense solver tests: typed entry points, row-major test matrices,
// long double residuals and the committed reference table.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "frame/prec.hpp"
#include "qnum_test.hpp"
#include "qnummath.h"

namespace qnum::test {

using C = std::complex<float>;
using Z = std::complex<double>;
using AllTypes = ::testing::Types<float, double, C, Z>;
using RealTypes = ::testing::Types<float, double>;

template <class T>
using Wide = std::conditional_t<is_complex_v<T>, std::complex<long double>, long double>;

template <class T>
Wide<T> widen(T v) {
    if constexpr (is_complex_v<T>) {
        return {v.real(), v.imag()};
    } else {
        return v;
    }
}
template <class T>
long double eps() {
    return Prec<T>::eps();
}
template <class W>
W conj_w(W v) {
    if constexpr (std::is_same_v<W, long double>) {
        return v;
    } else {
        return std::conj(v);
    }
}

// C-typed pointers for the complex entry points.
template <class V>
V c_arg(V v) {
    return v;
}
inline qnum_f_complex* c_arg(C* p) { return reinterpret_cast<qnum_f_complex*>(p); }
inline qnum_d_complex* c_arg(Z* p) { return reinterpret_cast<qnum_d_complex*>(p); }
inline qnum_f_complex** c_arg(C** p) { return reinterpret_cast<qnum_f_complex**>(p); }
inline qnum_d_complex** c_arg(Z** p) { return reinterpret_cast<qnum_d_complex**>(p); }

template <class T, class... A>
T* gen(int n, T* a, T* b, A... args) {
    if constexpr (std::is_same_v<T, float>) {
        return qnum_f_lin_sol_gen(n, a, b, args...);
    } else if constexpr (std::is_same_v<T, double>) {
        return qnum_d_lin_sol_gen(n, a, b, args...);
    } else if constexpr (std::is_same_v<T, C>) {
        return reinterpret_cast<C*>(qnum_c_lin_sol_gen(n, c_arg(a), c_arg(b), c_arg(args)...));
    } else {
        return reinterpret_cast<Z*>(qnum_z_lin_sol_gen(n, c_arg(a), c_arg(b), c_arg(args)...));
    }
}

template <class T, class... A>
T* posdef(int n, T* a, T* b, A... args) {
    if constexpr (std::is_same_v<T, float>) {
        return qnum_f_lin_sol_posdef(n, a, b, args...);
    } else if constexpr (std::is_same_v<T, double>) {
        return qnum_d_lin_sol_posdef(n, a, b, args...);
    } else if constexpr (std::is_same_v<T, C>) {
        return reinterpret_cast<C*>(qnum_c_lin_sol_posdef(n, c_arg(a), c_arg(b), c_arg(args)...));
    } else {
        return reinterpret_cast<Z*>(qnum_z_lin_sol_posdef(n, c_arg(a), c_arg(b), c_arg(args)...));
    }
}

template <class T, class... A>
T* nonnegdef(int n, T* a, T* b, A... args) {
    if constexpr (std::is_same_v<T, float>) {
        return qnum_f_lin_sol_nonnegdef(n, a, b, args...);
    } else {
        return qnum_d_lin_sol_nonnegdef(n, a, b, args...);
    }
}

// A value no routine computes: storage a routine must not write holds it.
template <class T>
T sentinel() {
    if constexpr (is_complex_v<T>) {
        return T(-777.25f, 333.5f);
    } else {
        return static_cast<T>(-777.25f);
    }
}

template <class T>
bool same_bits(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), sizeof(T) * a.size()) == 0;
}

template <class T>
T random_value(std::mt19937& g) {
    std::uniform_real_distribution<double> d(-1, 1);
    if constexpr (is_complex_v<T>) {
        const auto re = static_cast<Real<T>>(d(g));
        return T(re, static_cast<Real<T>>(d(g)));
    } else {
        return static_cast<T>(d(g));
    }
}

// Kinds of test matrix: uniform random; graded (entry (i, j) scaled by 2^-(i+j)/2);
// rows scaled by random powers of ten over 12 decades; a Hilbert-like 1/(i+j+1) with a
// random perturbation so that it is not symmetric.
enum class Kind { Random, Graded, RowScaled, Hilbert };

// An n by n row-major matrix with rows ld apart; the padding holds the sentinel.
template <class T>
std::vector<T> make_matrix(Kind kind, int n, int ld, unsigned seed) {
    std::mt19937 g(seed);
    std::vector<T> a(static_cast<std::size_t>(n) * ld, sentinel<T>());
    std::uniform_int_distribution<int> decade(-6, 6);
    for (int i = 0; i < n; ++i) {
        const Real<T> row_scale = kind == Kind::RowScaled ? static_cast<Real<T>>(std::pow(10.0, decade(g))) : 1;
        for (int j = 0; j < n; ++j) {
            T v = random_value<T>(g);
            if (kind == Kind::Graded) v *= static_cast<Real<T>>(std::ldexp(1.0, -(i + j) / 2));
            if (kind == Kind::Hilbert) v = T(static_cast<Real<T>>(1.0 / (i + j + 1))) + v * Real<T>(1e-3);
            a[static_cast<std::size_t>(i) * ld + j] = v * row_scale;
        }
    }
    return a;
}

template <class T>
std::vector<T> make_vector(int n, unsigned seed) {
    std::mt19937 g(seed);
    std::vector<T> b(n);
    for (auto& v : b) v = random_value<T>(g);
    return b;
}

// ||op(A) x - b||_inf / (||A||_inf ||x||_inf n eps), in long double; op is A, A^T for real
// and A^H for complex data when `trans`.
template <class T>
long double backward_error(int n, const T* a, int ld, const T* x, const T* b, bool trans) {
    long double res = 0, anorm = 0, xnorm = 0;
    for (int i = 0; i < n; ++i) {
        Wide<T> s = -widen(b[i]);
        long double row = 0;
        for (int j = 0; j < n; ++j) {
            Wide<T> aij = trans ? conj_w(widen(a[static_cast<std::size_t>(j) * ld + i]))
                                : widen(a[static_cast<std::size_t>(i) * ld + j]);
            s += aij * widen(x[j]);
            row += std::abs(aij);
        }
        res = std::max(res, static_cast<long double>(std::abs(s)));
        anorm = std::max(anorm, row);
        xnorm = std::max(xnorm, static_cast<long double>(std::abs(widen(x[i]))));
    }
    return res / (anorm * xnorm * n * eps<T>());
}

// One case of data/linsys/reference.txt.
struct RefCase {
    std::string name;
    bool complex = false;
    int n = 0;
    std::vector<std::complex<long double>> a, b, x;
    long double cond1 = 0;
};

inline std::vector<RefCase> reference_cases() {
    std::ifstream in(std::string(QNUM_TEST_DATA_DIR) + "/linsys/reference.txt");
    std::vector<RefCase> out;
    std::string line;
    auto read = [](std::istringstream& s, bool cplx, std::vector<std::complex<long double>>& v) {
        long double re, im = 0;
        while (s >> re) {
            if (cplx) s >> im;
            v.emplace_back(re, im);
        }
    };
    while (std::getline(in, line)) {
        std::istringstream s(line);
        std::string tag;
        s >> tag;
        if (tag == "case") {
            RefCase c;
            std::string kind;
            s >> c.name >> kind >> c.n;
            c.complex = kind == "complex";
            out.push_back(c);
        } else if (tag == "a") {
            read(s, out.back().complex, out.back().a);
        } else if (tag == "b") {
            read(s, out.back().complex, out.back().b);
        } else if (tag == "x") {
            read(s, out.back().complex, out.back().x);
        } else if (tag == "cond1") {
            s >> out.back().cond1;
        }
    }
    return out;
}

template <class T>
T narrow(std::complex<long double> v) {
    if constexpr (is_complex_v<T>) {
        return T(static_cast<Real<T>>(v.real()), static_cast<Real<T>>(v.imag()));
    } else {
        return static_cast<T>(v.real());
    }
}

template <class T>
std::vector<T> narrow_all(const std::vector<std::complex<long double>>& v) {
    std::vector<T> out;
    for (auto e : v) out.push_back(narrow<T>(e));
    return out;
}

// Frees a routine-allocated result at the end of the scope.
struct Freed {
    void* p;
    explicit Freed(void* q) : p(q) {}
    ~Freed() { qnum_free_allocated_memory(p); }
    Freed(const Freed&) = delete;
    Freed& operator=(const Freed&) = delete;
};

}  // namespace qnum::test
