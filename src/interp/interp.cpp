// Interpolating cubic splines with end conditions, not-a-knot and periodic: a tridiagonal
// system for the slopes at the breakpoints (C. de Boor, A Practical Guide to Splines,
// Springer 1978, chapter IV), cyclic for periodic ends.
#include <algorithm>
#include <cmath>

#include "interp/spline.hpp"

namespace qnum::interp {

namespace {

// Slopes at the breakpoints of the C2 interpolant with end conditions ileft and iright
// (0 not-a-knot, 1 first derivative, 2 second derivative). They are left in coef[4i + 1], and
// the elimination keeps its pivots and superdiagonal in coef[4i + 2] and coef[4i + 3], which
// the Taylor coefficients overwrite later; the last slope is returned.
template <class T>
T end_condition_slopes(int n, const T* x, const T* f, int ileft, T left, int iright, T right, T* coef) {
    auto h = [&](int i) { return x[i + 1] - x[i]; };
    auto m = [&](int i) { return (f[i + 1] - f[i]) / h(i); };
    auto s = [&](int i) -> T& { return coef[4 * i + 1]; };
    auto b = [&](int i) -> T& { return coef[4 * i + 2]; };
    auto c = [&](int i) -> T& { return coef[4 * i + 3]; };
    if (ileft == 0 && iright == 0 && n <= 3) {
        if (n == 2) {  // the straight line
            s(0) = m(0);
            return m(0);
        }
        // The parabola: its slope at the middle is the weighted mean of the chords.
        s(1) = (h(1) * m(0) + h(0) * m(1)) / (h(0) + h(1));
        s(0) = 2 * m(0) - s(1);
        return 2 * m(1) - s(1);
    }
    // Row 0. Without a second interval, not-a-knot degenerates to s''' = 0 on the only one.
    T h0 = h(0), m0 = m(0);
    if (ileft == 1) {
        b(0) = 1, c(0) = 0, s(0) = left;
    } else if (ileft == 2) {
        b(0) = 2, c(0) = 1, s(0) = 3 * m0 - h0 * left / 2;
    } else if (n == 2) {
        b(0) = 1, c(0) = 1, s(0) = 2 * m0;
    } else {
        const T h1 = h(1), g = h0 + h1;
        b(0) = h1, c(0) = g, s(0) = ((h0 + 2 * g) * h1 * m0 + h0 * h0 * m(1)) / g;
    }
    // Interior rows, eliminated as they are formed (no pivoting: the rows are diagonally
    // dominant, and the not-a-knot rows leave positive pivots).
    for (int i = 1; i + 1 < n; ++i) {
        const T h1 = h(i), m1 = m(i);
        const T w = h1 / b(i - 1);
        b(i) = 2 * (h0 + h1) - w * c(i - 1);
        c(i) = h0;
        s(i) = 3 * (h1 * m0 + h0 * m1) - w * s(i - 1);
        h0 = h1, m0 = m1;
    }
    // Last row: h0, m0 now belong to the last interval.
    const int l = n - 1;
    T a, bl, rl;
    if (iright == 1) {
        a = 0, bl = 1, rl = right;
    } else if (iright == 2) {
        a = 1, bl = 2, rl = 3 * m0 + h0 * right / 2;
    } else if (n == 2) {
        a = 1, bl = 1, rl = 2 * m0;
    } else {
        const T hp = h(n - 3), g = h0 + hp;
        a = g, bl = hp, rl = (h0 * h0 * m(n - 3) + (2 * g + h0) * hp * m0) / g;
    }
    const T w = a / b(l - 1);
    const T last = (rl - w * s(l - 1)) / (bl - w * c(l - 1));
    T next = last;
    for (int i = l - 1; i >= 0; --i) next = s(i) = (s(i) - c(i) * next) / b(i);
    return last;
}

// Slopes of the periodic interpolant: s_0 = s_{n-1}, second derivatives matching at the ends.
// The cyclic system of order k = n - 1 is solved through its tridiagonal part and one
// Sherman-Morrison correction for the two corner entries. a, b, c, z are work arrays of n.
template <class T>
void periodic_slopes(int n, const T* x, const T* f, T* s, T* a, T* b, T* c, T* z) {
    const int k = n - 1;
    auto h = [&](int i) { return x[i + 1] - x[i]; };
    auto m = [&](int i) { return (f[i + 1] - f[i]) / h(i); };
    for (int i = 0; i < k; ++i) {
        const int p = i == 0 ? k - 1 : i - 1;  // the interval before breakpoint i, cyclically
        a[i] = h(i);
        b[i] = 2 * (h(p) + h(i));
        c[i] = h(p);
        s[i] = 3 * (h(i) * m(p) + h(p) * m(i));
    }
    const T alpha = a[0], beta = c[k - 1], gamma = -b[0];
    b[0] -= gamma;
    b[k - 1] -= alpha * beta / gamma;
    for (int i = 0; i < k; ++i) z[i] = 0;
    z[0] = gamma, z[k - 1] = beta;
    for (int i = 1; i < k; ++i) {
        const T w = a[i] / b[i - 1];
        b[i] -= w * c[i - 1];
        s[i] -= w * s[i - 1];
        z[i] -= w * z[i - 1];
    }
    s[k - 1] /= b[k - 1];
    z[k - 1] /= b[k - 1];
    for (int i = k - 2; i >= 0; --i) {
        s[i] = (s[i] - c[i] * s[i + 1]) / b[i];
        z[i] = (z[i] - c[i] * z[i + 1]) / b[i];
    }
    const T fact = (s[0] + alpha * s[k - 1] / gamma) / (1 + z[0] + alpha * z[k - 1] / gamma);
    for (int i = 0; i < k; ++i) s[i] -= fact * z[i];
    s[k] = s[0];
}

// The compute step shared by both entry points: slopes, then the Taylor coefficients.
template <class T>
Ppoly<T>* interpolate(const char* step_name, const Data<T>& d, bool periodic, int ileft, T left,
                      int iright, T right) {
    frame::Level step(step_name);
    const int n = d.n;
    PpolyOwner<T> p(new_spline<T>(n, n));
    if (!p.get()) return nullptr;
    T* coef = p->coef[0];
    T last;
    if (periodic) {
        frame::Buffer<T> work(5LL * n, "ndata");
        if (!work) return nullptr;
        T* s = work.get();
        periodic_slopes(n, d.x, d.f, s, s + n, s + 2 * n, s + 3 * n, s + 4 * n);
        for (int i = 0; i + 1 < n; ++i) coef[4 * i + 1] = s[i];
        last = s[n - 1];
    } else {
        last = end_condition_slopes(n, d.x, d.f, ileft, left, iright, right, coef);
    }
    hermite_coef(n, d.x, d.f, last, coef);
    std::copy(d.x, d.x + n, p->breakpoints[0]);
    return p.release();
}

bool check_data(const void* x, const void* f) {
    return check::array(x, "xdata") & check::array(f, "fdata");
}

}  // namespace

template <class T>
Ppoly<T>* cub_spline_interp_e_cnd(int n, const T* x, const T* f, frame::Options opt) {
    bool periodic = false;
    int ileft = 0, iright = 0;
    T left = 0, right = 0;
    while (int code = opt.next()) {
        switch (code) {
        case QNUM_PERIODIC: periodic = true; break;
        case QNUM_LEFT: ileft = opt.get<int>(); left = opt.get<T>(); break;
        case QNUM_RIGHT: iright = opt.get<int>(); right = opt.get<T>(); break;
        case QNUM_LEFT_ADR: {
            const int* pi = opt.ptr<int>("ileft", "QNUM_LEFT_ADR");
            const T* pv = opt.ptr<T>("left", "QNUM_LEFT_ADR", true);
            if (pi && pv) ileft = *pi, left = *pv;
            break;
        }
        case QNUM_RIGHT_ADR: {
            const int* pi = opt.ptr<int>("iright", "QNUM_RIGHT_ADR");
            const T* pv = opt.ptr<T>("right", "QNUM_RIGHT_ADR", true);
            if (pi && pv) iright = *pi, right = *pv;
            break;
        }
        default: opt.unknown(code);
        }
    }
    if (periodic) {
        if (n < 4) frame::raise(frame::Type::Terminal, err::too_few_points_4, frame::Int{n});
    } else {
        if (n < 2) frame::raise(frame::Type::Terminal, err::too_few_points, frame::Int{n});
        check::range(ileft, 0, 2, "ileft");
        check::range(iright, 0, 2, "iright");
    }
    check_data(x, f);
    if (frame::pending()) return nullptr;
    return build<T>(n, x, f, nullptr, [&](const Data<T>& d) -> Ppoly<T>* {
        const int l = n - 1;
        if (periodic && d.f[0] != d.f[l]) {
            frame::raise(frame::Type::Warning, err::periodic_ends_differ, frame::Real{d.x[0]},
                         frame::Real{d.f[0]}, frame::Real{d.x[l]}, frame::Real{d.f[l]});
        }
        return interpolate<T>("QNUM_C2DEC", d, periodic, ileft, left, iright, right);
    });
}

template <class T>
Ppoly<T>* cub_spline_interp(int n, const T* x, const T* f, frame::Options opt) {
    while (int code = opt.next()) opt.unknown(code);
    if (n < 2) frame::raise(frame::Type::Terminal, err::too_few_points, frame::Int{n});
    check_data(x, f);
    if (frame::pending()) return nullptr;
    return build<T>(n, x, f, nullptr, [&](const Data<T>& d) {
        return interpolate<T>("QNUM_C2INT", d, false, 0, T(0), 0, T(0));
    });
}

template Ppoly<float>* cub_spline_interp_e_cnd<float>(int, const float*, const float*, frame::Options);
template Ppoly<double>* cub_spline_interp_e_cnd<double>(int, const double*, const double*, frame::Options);
template Ppoly<float>* cub_spline_interp<float>(int, const float*, const float*, frame::Options);
template Ppoly<double>* cub_spline_interp<double>(int, const double*, const double*, frame::Options);

}  // namespace qnum::interp
