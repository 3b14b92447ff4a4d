// Cubic splines: the builders, evaluation and integration, and the helpers they share.
#pragma once

#include "frame/frame.hpp"
#include "frame/prec.hpp"
#include "interp/ppoly.hpp"

namespace qnum::interp {

// ---- public workers ----
template <class T>
Ppoly<T>* cub_spline_interp_e_cnd(int n, const T* x, const T* f, frame::Options opt);
template <class T>
Ppoly<T>* cub_spline_interp(int n, const T* x, const T* f, frame::Options opt);
template <class T>
Ppoly<T>* cub_spline_interp_shape(int n, const T* x, const T* f, frame::Options opt);
template <class T>
Ppoly<T>* cub_spline_smooth(int n, const T* x, const T* f, frame::Options opt);
template <class T>
T cub_spline_value(T x, const Ppoly<T>* pp, frame::Options opt);
template <class T>
T cub_spline_integral(T a, T b, const Ppoly<T>* pp);

// ---- shared by the builders ----

// The data sorted by abscissa, ordinates and weights carried along: the caller's own arrays
// when they came sorted, else sorted copies.
template <class T>
struct Data {
    int n = 0;
    const T* x = nullptr;
    const T* f = nullptr;
    const T* w = nullptr;
    frame::Buffer<T> xs, fs, ws;
};

// Sorts and checks the caller's data (the step "QNUM_C1SOR"); w may be null. False when an
// error of type FATAL or worse was raised.
template <class T>
bool sort_data(int n, const T* x, const T* f, const T* w, Data<T>& d);

// A cubic-spline structure with n breakpoints: create(1, 1, {4}, {n}); raises TERMINAL 201
// ("ndata") when it cannot be had.
template <class T>
Ppoly<T>* new_spline(int n, int ndata);

// Taylor coefficients of the C1 cubic that takes values f at the breakpoints and the slopes
// already stored in coef[4i + 1] (i < n - 1), s_last at the last breakpoint. The builders
// keep their slopes there from the start, so that no other array is needed.
template <class T>
void hermite_coef(int n, const T* x, const T* f, T s_last, T* coef);

// Runs a builder's compute step on the sorted data and hands over its result, or frees it and
// returns null when the step ended with an error of type FATAL or worse.
template <class T, class Step>
Ppoly<T>* build(int n, const T* x, const T* f, const T* w, Step&& step) {
    Data<T> d;
    if (!sort_data(n, x, f, w, d)) return nullptr;
    PpolyOwner<T> result(step(d));
    if (frame::failed_below() || qnum::context()->status[0] >= 4) return nullptr;
    return result.release();
}

}  // namespace qnum::interp
