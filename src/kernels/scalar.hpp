// Scalar arithmetic and index helpers shared by the portable kernels.
#pragma once

#include <cmath>
#include <complex>
#include <cstddef>

#include "frame/prec.hpp"
#include "kernels/tuned.hpp"

namespace qnum::kern {

using idx = std::ptrdiff_t;

// Position of element 1 of a vector of n elements with increment inc: the walk starts at the
// far end for a negative increment, so element 1 sits at (1 - n) * inc.
inline idx first(int n, int inc) { return inc < 0 ? static_cast<idx>(1 - n) * inc : 0; }

// Complex products are written out: the library's operator* checks for infinities through a
// call, which costs more than the product itself and is not what the published loops do.
template <class T>
inline T mul(T a, T b) {
    if constexpr (is_complex_v<T>) {
        return T(a.real() * b.real() - a.imag() * b.imag(), a.real() * b.imag() + a.imag() * b.real());
    } else {
        return a * b;
    }
}

// Conjugate; the identity for real data.
template <class T>
inline T conj(T a) {
    if constexpr (is_complex_v<T>) {
        return T(a.real(), -a.imag());
    } else {
        return a;
    }
}

// Conjugate when asked to (the "C" option and the Hermitian kernels); the identity otherwise.
template <class T>
inline T conj_if(bool c, T a) {
    if constexpr (is_complex_v<T>) {
        return c ? T(a.real(), -a.imag()) : a;
    } else {
        (void)c;
        return a;
    }
}

// Quotient a / b. Complex division scales by the larger part of b (Smith, CACM 5(8), 1962,
// p. 435), so that |b|^2 is never formed and cannot overflow or underflow on its own.
template <class T>
inline T div(T a, T b) {
    if constexpr (is_complex_v<T>) {
        using R = Real<T>;
        R br = b.real(), bi = b.imag();
        if (std::fabs(br) >= std::fabs(bi)) {
            R r = bi / br, d = br + bi * r;
            return T((a.real() + a.imag() * r) / d, (a.imag() - a.real() * r) / d);
        }
        R r = br / bi, d = bi + br * r;
        return T((a.real() * r + a.imag()) / d, (a.imag() * r - a.real()) / d);
    } else {
        return a / b;
    }
}

// |Re a| + |Im a|: the size measure of the complex index and sum-of-magnitudes kernels.
template <class T>
inline Real<T> abs1(T a) {
    if constexpr (is_complex_v<T>) {
        return std::fabs(a.real()) + std::fabs(a.imag());
    } else {
        return std::fabs(a);
    }
}

// The real part (the value itself for real data): Hermitian diagonals are real by definition.
template <class T>
inline T real_part(T a) {
    if constexpr (is_complex_v<T>) {
        return T(a.real(), 0);
    } else {
        return a;
    }
}

// Unit-stride inner loops of the Level 1 and 2 kernels, handed to the tuned table of the
// processor when it has one. The portable loops keep four partial sums to keep the
// floating-point pipeline busy; any of them differs from a left-to-right sum only by rounding.
// Complex data reach the tuned tables as pairs of reals (see tuned.hpp).
template <class T>
inline const Real<T>* reals(const T* p) {
    return reinterpret_cast<const Real<T>*>(p);
}
template <class T>
inline Real<T>* reals(T* p) {
    return reinterpret_cast<Real<T>*>(p);
}

template <class T>
inline T dot_unit(idx n, const T* x, const T* y, bool conj_x) {
    if constexpr (is_complex_v<T>) {
        if (auto* t = tuned::complex_ops<Real<T>>()) {
            Real<T> out[2];
            t->dot(n, reals(x), reals(y), conj_x, out);
            return T(out[0], out[1]);
        }
    } else {
        if (auto* t = tuned::ops<T>()) return t->dot(n, x, y);
    }
    T s0{}, s1{}, s2{}, s3{};
    idx i = 0;
    if (conj_x) {
        for (; i + 4 <= n; i += 4) {
            s0 += mul(conj(x[i]), y[i]);
            s1 += mul(conj(x[i + 1]), y[i + 1]);
            s2 += mul(conj(x[i + 2]), y[i + 2]);
            s3 += mul(conj(x[i + 3]), y[i + 3]);
        }
        for (; i < n; ++i) s0 += mul(conj(x[i]), y[i]);
    } else {
        for (; i + 4 <= n; i += 4) {
            s0 += mul(x[i], y[i]);
            s1 += mul(x[i + 1], y[i + 1]);
            s2 += mul(x[i + 2], y[i + 2]);
            s3 += mul(x[i + 3], y[i + 3]);
        }
        for (; i < n; ++i) s0 += mul(x[i], y[i]);
    }
    return (s0 + s1) + (s2 + s3);
}

// y(i) += a * x(i) for unit strides (conjugating x when asked).
template <class T>
inline void axpy_unit(idx n, T a, const T* x, T* y, bool conj_x) {
    if (conj_x) {
        for (idx i = 0; i < n; ++i) y[i] += mul(a, conj(x[i]));
        return;
    }
    if constexpr (is_complex_v<T>) {
        if (auto* t = tuned::complex_ops<Real<T>>()) return t->axpy(n, reals(&a), reals(x), reals(y));
    } else {
        if (auto* t = tuned::ops<T>()) return t->axpy(n, a, x, y);
    }
    for (idx i = 0; i < n; ++i) y[i] += mul(a, x[i]);
}

}  // namespace qnum::kern
