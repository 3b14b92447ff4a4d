// Data preparation shared by the cubic-spline builders: sorting, checks, result storage.
#include <algorithm>
#include <cmath>

#include "interp/spline.hpp"

namespace qnum::interp {

template <class T>
bool sort_data(int n, const T* x, const T* f, const T* w, Data<T>& d) {
    frame::Level step("QNUM_C1SOR");
    d.n = n;
    bool sorted = true;
    for (int i = 0; i < n; ++i) {
        if (!std::isfinite(x[i])) {
            frame::raise(frame::Type::Fatal, err::abscissa_not_finite, frame::Int{i}, frame::Real{x[i]});
            return false;
        }
        if (i > 0 && !(x[i - 1] < x[i])) sorted = false;
    }
    if (sorted) {  // the common case: the caller's arrays serve as they are
        d.x = x, d.f = f, d.w = w;
        return true;
    }
    d.xs = frame::Buffer<T>(n, "ndata");
    d.fs = frame::Buffer<T>(n, "ndata");
    if (w) d.ws = frame::Buffer<T>(n, "ndata");
    frame::Buffer<int> idx(n, "ndata");
    if (!d.xs || !d.fs || (w && !d.ws) || !idx) return false;
    for (int k = 0; k < n; ++k) idx[k] = k;
    // Ties are broken by index, so a repeated abscissa is reported with its first two
    // occurrences in the caller's order.
    std::sort(idx.get(), idx.get() + n,
              [x](int a, int b) { return x[a] < x[b] || (x[a] == x[b] && a < b); });
    for (int k = 0; k < n; ++k) {
        const int j = idx[k];
        if (k > 0 && x[j] == d.xs[k - 1]) {
            frame::raise(frame::Type::Fatal, err::repeated_abscissa, frame::Int{idx[k - 1]}, frame::Int{j},
                         frame::Real{x[j]});
            return false;
        }
        d.xs[k] = x[j];
        d.fs[k] = f[j];
        if (w) d.ws[k] = w[j];
    }
    d.x = d.xs.get(), d.f = d.fs.get(), d.w = w ? d.ws.get() : nullptr;
    return true;
}

template <class T>
Ppoly<T>* new_spline(int n, int ndata) {
    const int order = 4;
    Ppoly<T>* p = ppoly_alloc<T>(1, 1, &order, &n);
    if (p == nullptr) frame::raise(frame::Type::Terminal, err::no_memory, frame::Str{"ndata"}, frame::Int{ndata});
    return p;
}

template <class T>
void hermite_coef(int n, const T* x, const T* f, T s_last, T* coef) {
    for (int i = 0; i + 1 < n; ++i) {
        const T h = x[i + 1] - x[i];
        const T m = (f[i + 1] - f[i]) / h;
        T* c = coef + 4 * i;
        // Differences from the chord slope: a straight line gives exact zeros.
        const T d0 = c[1] - m, d1 = (i + 2 < n ? c[5] : s_last) - m;
        c[0] = f[i];
        c[2] = -2 * (d0 + d0 + d1) / h;
        c[3] = 6 * (d0 + d1) / (h * h);
    }
}

template bool sort_data<float>(int, const float*, const float*, const float*, Data<float>&);
template bool sort_data<double>(int, const double*, const double*, const double*, Data<double>&);
template Ppoly<float>* new_spline<float>(int, int);
template Ppoly<double>* new_spline<double>(int, int);
template void hermite_coef<float>(int, const float*, const float*, float, float*);
template void hermite_coef<double>(int, const double*, const double*, double, double*);

}  // namespace qnum::interp
