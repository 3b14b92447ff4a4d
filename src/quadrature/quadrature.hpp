// Workers of the adaptive quadrature routines: option lists, argument checks, the subinterval
// lists, and the mapping of each step's outcome to errors.
#pragma once

#include "frame/frame.hpp"

namespace qnum::quadrature {

template <class T>
using Fcn = T (*)(T);

template <class T>
T int_fcn(Fcn<T> fcn, T a, T b, frame::Options opt);
template <class T>
T int_fcn_sing(Fcn<T> fcn, T a, T b, frame::Options opt);
template <class T>
T int_fcn_inf(Fcn<T> fcn, T bound, int interval_code, frame::Options opt);
template <class T>
T int_fcn_trig(Fcn<T> fcn, T omega, int weight_code, T a, T b, frame::Options opt);
template <class T>
T int_fcn_fourier(Fcn<T> fcn, T omega, int weight_code, T a, frame::Options opt);
template <class T>
T int_fcn_cauchy(Fcn<T> fcn, T a, T b, T c, frame::Options opt);
template <class T>
T int_fcn_smooth(Fcn<T> fcn, T a, T b, frame::Options opt);
template <class T>
T int_fcn_sing_pts(Fcn<T> fcn, T a, T b, int npoints, const T* points, frame::Options opt);
template <class T>
T int_fcn_alg_log(Fcn<T> fcn, T a, T b, int weight_code, T alpha, T beta, frame::Options opt);

}  // namespace qnum::quadrature
