// Shared pieces of the kernel tests: guarded matrices and strided vectors, random data, a
// long double reference product with its error bound, and a loop over the tuned paths.
#pragma once

#include <gtest/gtest.h>

#include <complex>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "frame/cpu.hpp"
#include "frame/prec.hpp"
#include "kernels/gemm_engine.hpp"
#include "kernels/level1.hpp"
#include "kernels/level2.hpp"
#include "kernels/level3.hpp"
#include "qnum_test.hpp"

namespace qnum::test {

using C = std::complex<float>;
using Z = std::complex<double>;
using Types = ::testing::Types<float, double, C, Z>;

// The long double counterpart of T, for references.
template <class T>
using Wide = std::conditional_t<is_complex_v<T>, std::complex<long double>, long double>;
template <class T>
Wide<T> widen(T v) {
    return Wide<T>(v);
}
inline long double cj(long double v) { return v; }
template <class R>
std::complex<R> cj(std::complex<R> v) {
    return std::conj(v);
}
template <class T>
long double eps() {
    return Prec<T>::eps();
}
template <class T>
T nan_value() {
    return T(std::numeric_limits<Real<T>>::quiet_NaN());
}
// A real scalar, or a complex one with the given imaginary part.
template <class T>
T scalar(double re, double im = 0) {
    if constexpr (is_complex_v<T>) {
        return T(static_cast<Real<T>>(re), static_cast<Real<T>>(im));
    } else {
        return static_cast<T>(re);
    }
}
template <class T>
T random_value(std::mt19937& g) {
    std::uniform_real_distribution<double> u(-1, 1);
    const double re = u(g);
    return scalar<T>(re, u(g));
}
template <class T>
bool same_bits(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

// A column-major rows by cols matrix with leading dimension ld, allocated to exactly its
// extent (cols-1)*ld + rows so that the sanitizer sees an access past its end; the padding
// rows hold NaN, which spoils any result that reads them. A strided vector is a 1 by n
// matrix with ld = |inc|, walked backwards for a negative increment.
template <class T>
struct Mat {
    int rows, cols, ld;
    std::vector<T> v;
    Mat(int r, int c, int ld_) : rows(r), cols(c), ld(ld_) {
        v.assign(r > 0 && c > 0 ? static_cast<std::size_t>(c - 1) * ld + r : 1, nan_value<T>());
    }
    Mat(int r, int c, int ld_, std::mt19937& g) : Mat(r, c, ld_) {
        for (int j = 0; j < cols; ++j)
            for (int i = 0; i < rows; ++i) at(i, j) = random_value<T>(g);
    }
    T& at(int i, int j) { return v[static_cast<std::size_t>(j) * ld + i]; }
    T at(int i, int j) const { return v[static_cast<std::size_t>(j) * ld + i]; }
    T* data() { return v.data(); }
};
template <class T>
struct Vec : Mat<T> {
    int inc;
    Vec(int n, int inc_, std::mt19937& g) : Mat<T>(n > 0 ? 1 : 0, n, inc_ < 0 ? -inc_ : inc_, g), inc(inc_) {}
    T& operator[](int i) { return this->at(0, inc < 0 ? this->cols - 1 - i : i); }
    T operator[](int i) const { return this->at(0, inc < 0 ? this->cols - 1 - i : i); }
    std::vector<T> values() const {
        std::vector<T> out;
        for (int i = 0; i < this->cols; ++i) out.push_back((*this)[i]);
        return out;
    }
};

// Exact values and, per element, the rounding error allowed.
template <class T>
struct Expected {
    int rows, cols;
    std::vector<Wide<T>> value;
    std::vector<long double> bound;
    Expected(int r, int c) : rows(r), cols(c), value(static_cast<std::size_t>(r) * c), bound(value.size()) {}
    Wide<T>& at(int i, int j) { return value[static_cast<std::size_t>(j) * rows + i]; }
    long double& tol(int i, int j) { return bound[static_cast<std::size_t>(j) * rows + i]; }
};

// op(X)(i, j) of a stored matrix, in long double.
template <class T>
auto op(const Mat<T>& x, char trans) {
    return [&x, trans](int i, int j) {
        if (trans == 'N') return widen(x.at(i, j));
        return trans == 'C' ? cj(widen(x.at(j, i))) : widen(x.at(j, i));
    };
}

// alpha A B + beta C for element functions a (m by k), b (k by n) and c (m by n), with the
// bound 2 (k + 4) eps (|alpha| |A| |B| + |beta C|), doubled for complex data.
template <class T, class FA, class FB, class FC>
Expected<T> product(int m, int n, int k, T alpha, FA a, FB b, T beta, FC c) {
    Expected<T> e(m, n);
    const long double gamma = 2.0L * (k + 4) * eps<T>() * (is_complex_v<T> ? 2 : 1);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i) {
            Wide<T> s = 0;
            long double size = 0;
            for (int p = 0; p < k; ++p) {
                const Wide<T> x = a(i, p), y = b(p, j);
                s += x * y;
                size += std::abs(x) * std::abs(y);
            }
            const Wide<T> cij = beta == T(0) ? Wide<T>(0) : widen(beta) * Wide<T>(c(i, j));
            e.at(i, j) = widen(alpha) * s + cij;
            e.tol(i, j) = gamma * (std::abs(widen(alpha)) * size + std::abs(cij)) + std::numeric_limits<Real<T>>::min();
        }
    return e;
}

// Every element of got that `only` selects within its bound, every other stored element
// (padding, gaps, the other triangle) bit for bit as before.
template <class T>
::testing::AssertionResult matches(
    const Mat<T>& got, const Mat<T>& before, Expected<T> e,
    const std::function<bool(int, int)>& only = [](int, int) { return true; }) {
    for (std::size_t p = 0; p < got.v.size(); ++p) {
        const int i = static_cast<int>(p % got.ld), j = static_cast<int>(p / got.ld);
        if (i >= got.rows || j >= got.cols || !only(i, j)) {
            if (std::memcmp(&got.v[p], &before.v[p], sizeof(T)) != 0)
                return ::testing::AssertionFailure() << "(" << i << ", " << j << ") outside the result changed";
            continue;
        }
        const long double err = std::abs(widen(got.v[p]) - e.at(i, j));
        if (!(err <= e.tol(i, j)))
            return ::testing::AssertionFailure() << "(" << i << ", " << j << "): got " << got.v[p] << ", error "
                                                 << static_cast<double>(err) << " > " << static_cast<double>(e.tol(i, j));
    }
    return ::testing::AssertionSuccess();
}
// The same for a vector, whose element i is expected at e(i, 0).
template <class T>
::testing::AssertionResult matches(const Vec<T>& got, const Vec<T>& before, Expected<T> e) {
    Expected<T> row(1, got.cols);
    for (int i = 0; i < got.cols; ++i) {
        const int s = got.inc < 0 ? got.cols - 1 - i : i;
        row.at(0, s) = e.at(i, 0), row.tol(0, s) = e.tol(i, 0);
    }
    return matches<T>(static_cast<const Mat<T>&>(got), before, row);
}

// Runs fn once on every path this machine has (portable, AVX2, AVX-512), forcing it.
inline void for_each_path(const std::function<void()>& fn) {
    for (int p = 0; p <= static_cast<int>(cpu::detected()); ++p) {
        cpu::force(static_cast<cpu::Path>(p));
        SCOPED_TRACE(::testing::Message() << "path " << p);
        fn();
    }
    cpu::reset();
}
// The blocking of the product engine on the active path.
template <class T>
kern::gemm_impl::Engine<T> engine() {
    return kern::gemm_impl::engine<T>();
}

}  // namespace qnum::test
