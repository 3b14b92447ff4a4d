// Data preparation shared by the cubic-spline builders: sorting, checks, result storage.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "interp/spline.hpp"

namespace qnum::interp {

template <class T>
bool sort_data(int n, const T* x, const T* f, const T* w, Data<T>& d) {
    frame::Level step("QNUM_C1SOR");
    for (int i = 0; i < n; ++i) {
        if (!std::isfinite(x[i])) {
            frame::raise(frame::Type::Fatal, err::abscissa_not_finite, frame::Int{i}, frame::Real{x[i]});
            return false;
        }
    }
    d.n = n;
    d.x = frame::Buffer<T>(n, "ndata");
    d.f = frame::Buffer<T>(n, "ndata");
    if (w) d.w = frame::Buffer<T>(n, "ndata");
    if (!d.x || !d.f || (w && !d.w)) return false;

    int i = 1;
    while (i < n && x[i - 1] < x[i]) ++i;
    if (i >= n) {  // already increasing: the common case costs one pass and a copy
        std::memcpy(d.x.get(), x, sizeof(T) * n);
        std::memcpy(d.f.get(), f, sizeof(T) * n);
        if (w) std::memcpy(d.w.get(), w, sizeof(T) * n);
        return true;
    }
    frame::Buffer<int> idx(n, "ndata");
    if (!idx) return false;
    for (int k = 0; k < n; ++k) idx[k] = k;
    // Ties are broken by index, so a repeated abscissa is reported with its first two
    // occurrences in the caller's order.
    std::sort(idx.get(), idx.get() + n,
              [x](int a, int b) { return x[a] < x[b] || (x[a] == x[b] && a < b); });
    for (int k = 0; k < n; ++k) {
        const int j = idx[k];
        if (k > 0 && x[j] == d.x[k - 1]) {
            frame::raise(frame::Type::Fatal, err::repeated_abscissa, frame::Int{idx[k - 1]}, frame::Int{j},
                         frame::Real{x[j]});
            return false;
        }
        d.x[k] = x[j];
        d.f[k] = f[j];
        if (w) d.w[k] = w[j];
    }
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
void hermite_coef(int n, const T* x, const T* f, const T* s, T* coef) {
    for (int i = 0; i + 1 < n; ++i) {
        const T h = x[i + 1] - x[i];
        const T m = (f[i + 1] - f[i]) / h;
        // Differences from the chord slope: a straight line gives exact zeros.
        const T d0 = s[i] - m, d1 = s[i + 1] - m;
        T* c = coef + 4 * i;
        c[0] = f[i];
        c[1] = s[i];
        c[2] = -2 * (d0 + d0 + d1) / h;
        c[3] = 6 * (d0 + d1) / (h * h);
    }
}

template bool sort_data<float>(int, const float*, const float*, const float*, Data<float>&);
template bool sort_data<double>(int, const double*, const double*, const double*, Data<double>&);
template Ppoly<float>* new_spline<float>(int, int);
template Ppoly<double>* new_spline<double>(int, int);
template void hermite_coef<float>(int, const float*, const float*, const float*, float*);
template void hermite_coef<double>(int, const double*, const double*, const double*, double*);

}  // namespace qnum::interp
