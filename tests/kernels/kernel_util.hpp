// Shared pieces of the kernel tests: strided vectors whose gaps are watched, random data,
// long double references, tolerances, and a loop over the tuned paths of the machine.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstring>
#include <functional>
#include <random>
#include <vector>

#include "frame/prec.hpp"
#include "frame/cpu.hpp"

namespace qnum::test {

using C = std::complex<float>;
using Z = std::complex<double>;
using Types = ::testing::Types<float, double, C, Z>;
using RealTypes = ::testing::Types<float, double>;

// The long double counterpart of T, for references.
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
long double mag(T v) {
    return std::abs(widen(v));
}
template <class T>
long double eps() {
    return Prec<T>::eps();
}

// Random values in [-1, 1] (both parts for complex data), from a fixed seed.
class Rng {
public:
    explicit Rng(unsigned seed = 12345) : g_(seed) {}
    template <class T>
    T next() {
        std::uniform_real_distribution<double> d(-1, 1);
        if constexpr (is_complex_v<T>) {
            auto re = static_cast<Real<T>>(d(g_));
            return T(re, static_cast<Real<T>>(d(g_)));
        } else {
            return static_cast<T>(d(g_));
        }
    }

private:
    std::mt19937 g_;
};

// A value no kernel computes: the positions a kernel must not write hold it.
template <class T>
T sentinel() {
    if constexpr (is_complex_v<T>) {
        return T(-777.25f, 333.5f);
    } else {
        return static_cast<T>(-777.25f);
    }
}

// The same bytes (NaNs and signed zeros compare by their bits).
template <class T>
bool same_bits(const std::vector<T>& a, const std::vector<T>& b) {
    return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), sizeof(T) * a.size()) == 0);
}

// Exactly the storage that (n, inc) describes: 1 + (n-1)|inc| elements, nothing beyond, so the
// sanitizer sees any access past either end. The gaps between elements hold the sentinel.
template <class T>
struct Vec {
    int n, inc;
    std::vector<T> v;
    Vec(int n_, int inc_, Rng& rng) : n(n_), inc(inc_) {
        const int step = inc < 0 ? -inc : inc;
        v.assign(n > 0 ? 1 + static_cast<std::size_t>(n - 1) * step : 0, sentinel<T>());
        for (int i = 0; i < n; ++i) at(i) = rng.next<T>();
    }
    // element i (0-based) in the walk that the increment describes
    T& at(int i) {
        return v[inc >= 0 ? static_cast<std::size_t>(i) * inc : static_cast<std::size_t>(n - 1 - i) * -inc];
    }
    T* data() { return v.empty() ? nullptr : v.data(); }
    std::vector<T> values() {
        std::vector<T> out(n);
        for (int i = 0; i < n; ++i) out[i] = at(i);
        return out;
    }
    bool gaps_intact() const {
        const int step = inc < 0 ? -inc : inc;
        for (std::size_t p = 0; p < v.size(); ++p)
            if (step > 1 && p % step != 0 && !same(v[p], sentinel<T>())) return false;
        return true;
    }
    static bool same(T a, T b) { return std::memcmp(&a, &b, sizeof(T)) == 0; }
};

// A column-major m by n matrix with leading dimension lda, allocated to exactly the extent
// (n-1)*lda + m; the rows below m hold the sentinel.
template <class T>
struct Mat {
    int m, n, lda;
    std::vector<T> v;
    Mat(int m_, int n_, int lda_, Rng& rng) : m(m_), n(n_), lda(lda_) {
        v.assign(n > 0 ? static_cast<std::size_t>(n - 1) * lda + m : 0, sentinel<T>());
        if (v.empty()) v.assign(1, sentinel<T>());
        for (int j = 0; j < n; ++j)
            for (int i = 0; i < m; ++i) at(i, j) = rng.next<T>();
    }
    T& at(int i, int j) { return v[static_cast<std::size_t>(j) * lda + i]; }
    T* data() { return v.data(); }
    bool padding_intact() const {
        for (int j = 0; j + 1 < n; ++j)
            for (int i = m; i < lda; ++i)
                if (!Vec<T>::same(v[static_cast<std::size_t>(j) * lda + i], sentinel<T>())) return false;
        return true;
    }
};

// |got - want| <= tol, comparing in long double.
template <class T>
::testing::AssertionResult near(T got, Wide<T> want, long double tol) {
    const long double err = std::abs(widen(got) - want);
    if (err <= tol || (std::isnan(std::abs(want)) && std::isnan(std::abs(widen(got)))))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "error " << static_cast<double>(err) << " > tolerance " << static_cast<double>(tol);
}

// Runs fn once for every kernel path this machine has (portable, AVX2, AVX-512), forcing it,
// and names the path in failures.
inline void for_each_path(const std::function<void()>& fn) {
    for (auto p : {cpu::Path::Portable, cpu::Path::Avx2, cpu::Path::Avx512}) {
        if (static_cast<int>(p) > static_cast<int>(cpu::detected())) continue;
        cpu::force(p);
        SCOPED_TRACE(::testing::Message() << "path " << static_cast<int>(p));
        fn();
    }
    cpu::reset();
}

// Lengths that hit the unrolling and blocking edges of every path: the tuned loops take 4
// vectors of 4 to 16 elements at a time, the portable ones 2 or 4 elements.
inline const std::vector<int>& lengths() {
    static const std::vector<int> v = {0,  1,  2,  3,  4,  5,  7,  8,   9,   15, 16,
                                       17, 31, 32, 33, 63, 64, 65, 127, 129, 300};
    return v;
}
inline const std::vector<int>& increments() {
    static const std::vector<int> v = {1, 2, -1, -3};
    return v;
}

}  // namespace qnum::test
