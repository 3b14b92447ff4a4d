// Long double dense references for the matrix-vector kernel tests: every storage layout is
// expanded into a plain matrix, and the products are formed from it by the textbook loops.
#pragma once

#include "kernel_util.hpp"

namespace qnum::test {

template <class T>
struct Dense {
    int m, n;
    std::vector<Wide<T>> a;
    Dense(int m_, int n_) : m(m_), n(n_), a(static_cast<std::size_t>(m_) * n_) {}
    Wide<T>& operator()(int i, int j) { return a[static_cast<std::size_t>(j) * m + i]; }
    Wide<T> operator()(int i, int j) const { return a[static_cast<std::size_t>(j) * m + i]; }
};

template <class T>
Wide<T> conj_w(Wide<T> v) {
    if constexpr (is_complex_v<T>) {
        return std::conj(v);
    } else {
        return v;
    }
}

// op(D)(i, j) for trans 'N', 'T' or 'C'.
template <class T>
Wide<T> op_at(const Dense<T>& d, char trans, int i, int j) {
    if (trans == 'N') return d(i, j);
    return trans == 'C' ? conj_w<T>(d(j, i)) : d(j, i);
}

// The exact alpha op(D) x + beta y0 per element, and a bound on the magnitudes that enter it
// (the scale of its rounding error).
template <class T>
struct Expected {
    std::vector<Wide<T>> value;
    std::vector<long double> size;
};

template <class T>
Expected<T> product(const Dense<T>& d, char trans, T alpha, const std::vector<T>& x, T beta,
                    const std::vector<T>& y0) {
    const int rows = trans == 'N' ? d.m : d.n, cols = trans == 'N' ? d.n : d.m;
    Expected<T> e{std::vector<Wide<T>>(rows), std::vector<long double>(rows)};
    for (int i = 0; i < rows; ++i) {
        Wide<T> s{};
        long double sz = 0;
        for (int j = 0; j < cols; ++j) {
            s += op_at(d, trans, i, j) * widen(x[j]);
            sz += std::abs(op_at(d, trans, i, j)) * mag(x[j]);
        }
        e.value[i] = widen(alpha) * s + widen(beta) * widen(y0[i]);
        e.size[i] = mag(alpha) * sz + mag(beta) * mag(y0[i]);
    }
    return e;
}

// Checks y against the expectation, with an error bound of (terms + 4) roundings.
template <class T>
void expect_product(Vec<T>& y, const Expected<T>& e, int terms) {
    ASSERT_EQ(static_cast<std::size_t>(y.n), e.value.size());
    for (int i = 0; i < y.n; ++i)
        EXPECT_TRUE(near(y.at(i), e.value[i], (terms + 4) * eps<T>() * e.size[i])) << "element " << i;
    EXPECT_TRUE(y.gaps_intact());
}

template <class T>
T conj_t(T v) {
    if constexpr (is_complex_v<T>) {
        return std::conj(v);
    } else {
        return v;
    }
}

// A random Hermitian (for real data symmetric) n by n matrix with k off-diagonals (k = n - 1
// for a full one), kept both in working precision (t) and as the long double reference (d).
template <class T>
struct Hermitian {
    int n;
    std::vector<T> t;
    Dense<T> d;
    Hermitian(int n_, int k, Rng& rng) : n(n_), t(static_cast<std::size_t>(n_) * n_), d(n_, n_) {
        for (int j = 0; j < n; ++j)
            for (int i = 0; i <= j; ++i) {
                T v = j - i <= k ? rng.next<T>() : T(0);
                if (i == j) v = T(std::real(v));
                at(i, j) = v;
                at(j, i) = conj_t(v);
                d(i, j) = widen(v);
                d(j, i) = widen(conj_t(v));
            }
    }
    T& at(int i, int j) { return t[static_cast<std::size_t>(j) * n + i]; }
};

// A stored diagonal element of a Hermitian matrix: its imaginary part is not read, so it gets
// a value that would show if it were.
template <class T>
T with_stray_imaginary(T v) {
    if constexpr (is_complex_v<T>) {
        return T(v.real(), 99);
    } else {
        return v;
    }
}

// Scalars that exercise the special cases of the products: zero, one, and general values.
template <class T>
std::vector<std::pair<T, T>> alpha_beta() {
    return {{T(0.75f), T(-0.5f)}, {T(0), T(1)},  {T(0), T(0.5f)},
            {T(1.5f), T(0)},      {T(-1), T(1)}, {T(0), T(0)}};
}

}  // namespace qnum::test
