// Values, derivatives and integrals of a piecewise polynomial in Taylor form (one variable).
#include <algorithm>
#include <cmath>

#include "interp/spline.hpp"

namespace qnum::interp {

namespace {

// Checks the structure; false (with the error raised) when it cannot be evaluated.
template <class T>
bool check_ppoly(const Ppoly<T>* pp) {
    if (!check::array(pp, "ppoly")) return false;
    if (!check::range(pp->domain_dim, 1, 1, "domain_dim")) return false;
    const int count = std::min(pp->num_breakpoints[0] - 1, pp->order[0]);
    if (count < 1 || pp->target_dim < 1) {
        frame::raise(frame::Type::Terminal, err::empty_ppoly, frame::Int{std::min(count, pp->target_dim)});
        return false;
    }
    return true;
}

// The interval whose polynomial serves x: the end ones continue beyond the breakpoints (and
// take NaN, which no comparison places).
template <class T>
int interval_of(const T* bp, int nb, T x) {
    return static_cast<int>(std::upper_bound(bp + 1, bp + nb - 1, x) - (bp + 1));
}

// Derivative `deriv` at offset t of the Taylor polynomial c[0..k-1]: sum over j >= deriv of
// c_j t^(j-deriv) / (j-deriv)!, by Horner's rule.
template <class T>
T taylor(const T* c, int k, int deriv, T t) {
    if (k == 4 && deriv == 0) return c[0] + t * (c[1] + t * (c[2] * T(0.5) + t * (c[3] * T(1.0 / 6))));
    if (deriv >= k) return 0;
    T acc = c[k - 1];
    for (int j = k - 2; j >= deriv; --j) acc = c[j] + acc * t / T(j - deriv + 1);
    return acc;
}

// Integral from 0 to t of the Taylor polynomial c[0..k-1].
template <class T>
T taylor_integral(const T* c, int k, T t) {
    T acc = c[k - 1];
    for (int j = k - 2; j >= 0; --j) acc = c[j] + acc * t / T(j + 2);
    return acc * t;
}

// The grid step: n increasing points in one pass, the interval found by walking forward.
template <class T>
void grid_values(const Ppoly<T>* pp, int deriv, int n, const T* xv, T* out) {
    frame::Level step("QNUM_C21GD");
    const T nan = Prec<T>::nan();
    for (int i = 1; i < n; ++i) {
        if (xv[i] <= xv[i - 1]) {
            frame::raise(frame::Type::Fatal, err::grid_not_increasing, frame::Int{i - 1}, frame::Int{i},
                         frame::Real{xv[i - 1]}, frame::Real{xv[i]});
            std::fill(out, out + n, nan);
            return;
        }
    }
    const T* bp = pp->breakpoints[0];
    const T* coef = pp->coef[0];
    const int nb = pp->num_breakpoints[0], k = pp->order[0];
    int j = interval_of(bp, nb, xv[0]);
    for (int i = 0; i < n; ++i) {
        const T x = xv[i];
        while (j < nb - 2 && x >= bp[j + 1]) ++j;
        out[i] = taylor(coef + std::size_t(k) * j, k, deriv, x - bp[j]);
    }
}

}  // namespace

template <class T>
T cub_spline_value(T x, const Ppoly<T>* pp, frame::Options opt) {
    int deriv = 0;
    int n = 0;
    const T* xv = nullptr;
    T** value = nullptr;
    frame::Out<T> out;
    bool grid = false;
    while (int code = opt.next()) {
        switch (code) {
        case QNUM_DERIV: deriv = opt.get<int>(); break;
        case QNUM_GRID:
            grid = true;
            n = opt.get<int>();
            xv = opt.get<const T*>();
            value = opt.ptr<T*>("value", "QNUM_GRID");
            if (value) *value = nullptr;
            break;
        case QNUM_GRID_USER:
            grid = true;
            n = opt.get<int>();
            xv = opt.get<const T*>();
            out.borrow(opt.ptr<T>("value", "QNUM_GRID_USER"));
            break;
        default: opt.unknown(code);
        }
    }
    const T nan = Prec<T>::nan();
    if (deriv < 0) frame::raise(frame::Type::Terminal, err::negative_deriv, frame::Int{deriv});
    if (grid) {
        if (n < 1) frame::raise(frame::Type::Terminal, err::empty_grid, frame::Int{n});
        check::array(xv, "xvec");
    }
    check_ppoly<T>(pp);
    if (grid && n >= 1 && (value || out.is_user())) {
        // Every entry is defined on every path: NaN until the grid step fills it.
        if (out.ensure(n, "length")) {
            std::fill(out.get(), out.get() + n, nan);
            if (!frame::pending()) grid_values(pp, deriv, n, xv, out.get());
            if (value) *value = out.release();
        }
    }
    if (frame::pending() || frame::failed_below()) return nan;
    if (grid) return out.get()[0];
    frame::Level step("QNUM_CSDER");
    const int nb = pp->num_breakpoints[0], k = pp->order[0];
    const int j = interval_of(pp->breakpoints[0], nb, x);
    return taylor(pp->coef[0] + std::size_t(k) * j, k, deriv, x - pp->breakpoints[0][j]);
}

template <class T>
T cub_spline_integral(T a, T b, const Ppoly<T>* pp) {
    if (!check_ppoly<T>(pp)) return Prec<T>::nan();
    frame::Level step("QNUM_CSITG");
    T sign = 1;
    if (b < a) std::swap(a, b), sign = -1;
    const T* bp = pp->breakpoints[0];
    const T* coef = pp->coef[0];
    const int nb = pp->num_breakpoints[0], k = pp->order[0];
    const int ia = interval_of(bp, nb, a), ib = interval_of(bp, nb, b);
    auto piece = [&](int i, T t) { return taylor_integral(coef + std::size_t(k) * i, k, t); };
    if (ia == ib) return sign * (piece(ia, b - bp[ia]) - piece(ia, a - bp[ia]));
    T sum = piece(ia, bp[ia + 1] - bp[ia]) - piece(ia, a - bp[ia]);
    for (int i = ia + 1; i < ib; ++i) sum += piece(i, bp[i + 1] - bp[i]);
    return sign * (sum + piece(ib, b - bp[ib]));
}

template float cub_spline_value<float>(float, const Ppoly<float>*, frame::Options);
template double cub_spline_value<double>(double, const Ppoly<double>*, frame::Options);
template float cub_spline_integral<float>(float, float, const Ppoly<float>*);
template double cub_spline_integral<double>(double, double, const Ppoly<double>*);

}  // namespace qnum::interp
