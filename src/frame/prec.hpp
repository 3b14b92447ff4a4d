// Precision traits: what differs between float, double and their complex counterparts.
#pragma once

#include <complex>
#include <type_traits>

#include "qnummath.h"

namespace qnum {

template <class T>
struct Prec;

template <>
struct Prec<float> {
    using Real = float;
    static Real tiny() { return qnum_amach(1); }
    static Real huge() { return qnum_amach(2); }
    static Real eps() { return qnum_amach(4); }
    static Real nan() { return qnum_amach(6); }
};

template <>
struct Prec<double> {
    using Real = double;
    static Real tiny() { return qnum_dmach(1); }
    static Real huge() { return qnum_dmach(2); }
    static Real eps() { return qnum_dmach(4); }
    static Real nan() { return qnum_dmach(6); }
};

template <class R>
struct Prec<std::complex<R>> : Prec<R> {};

template <class T>
using Real = typename Prec<T>::Real;

template <class T>
inline constexpr bool is_complex_v = !std::is_same_v<T, Real<T>>;

}  // namespace qnum
