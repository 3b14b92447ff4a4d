// Shape-preserving cubic interpolation: Akima's local slopes, and a concavity-preserving C1
// spline that adds knots where one cubic per interval cannot keep the data's concavity.
#include <algorithm>
#include <cmath>
#include <limits>

#include "interp/spline.hpp"

namespace qnum::interp {

namespace {

// Akima's slopes (H. Akima, A new method of interpolation and smooth curve fitting based on
// local procedures, J. ACM 17 (1970) 589-602): each slope is a mean of the two chords beside
// the point, weighted by how much the chords change on the far sides.
template <class T>
Ppoly<T>* akima(const Data<T>& d) {
    frame::Level step("QNUM_C2AKM");
    const int n = d.n;
    frame::Buffer<T> work(n + 3LL, "ndata");
    if (!work) return nullptr;
    PpolyOwner<T> p(new_spline<T>(n, n));
    if (!p.get()) return nullptr;
    const T* x = d.x;
    const T* f = d.f;
    T* m = work.get() + 2;  // chords m[-2] .. m[n]
    T* coef = p->coef[0];
    T last = 0;
    for (int i = 0; i + 1 < n; ++i) m[i] = (f[i + 1] - f[i]) / (x[i + 1] - x[i]);
    m[-1] = 2 * m[0] - m[1];
    m[-2] = 2 * m[-1] - m[0];
    m[n - 1] = 2 * m[n - 2] - m[n - 3];
    m[n] = 2 * m[n - 1] - m[n - 2];
    for (int i = 0; i < n; ++i) {
        const T w1 = std::abs(m[i + 1] - m[i]), w2 = std::abs(m[i - 1] - m[i - 2]);
        // Both weights vanish where the chords on each side agree: any mean would do, and the
        // plain one keeps a straight line straight.
        const T t = w1 + w2 == 0 ? (m[i - 1] + m[i]) / 2 : (w1 * m[i - 1] + w2 * m[i]) / (w1 + w2);
        (i + 1 < n ? coef[4 * i + 1] : last) = t;
    }
    hermite_coef(n, x, f, last, coef);
    std::copy(x, x + n, p->breakpoints[0]);
    return p.release();
}

// The concavity-preserving interpolant. The slopes s_i at the data are chosen as close to
// those of the C2 spline with natural ends as the concavity of the data allows: each slope
// is confined to a range that lets every interval keep the sign of the data's second
// differences, and an active-set iteration (each step one tridiagonal solve, with the slopes
// held at their bounds taken out) settles which bounds are met. An interval whose cubic
// Hermite piece would still change concavity gets one added knot and two quadratic pieces,
// which keep the concavity for any slopes on the right sides of the chord (L. L. Schumaker,
// On shape preserving quadratic spline interpolation, SIAM J. Numer. Anal. 20 (1983)
// 854-864); the knot sits where the two end tangents meet.
template <class T>
class Concave {
public:
    Concave(const Data<T>& d, T* work) : n_(d.n), x_(d.x), f_(d.f), m_(work),
        lo_(work + n_), hi_(work + 2 * n_), s_(work + 3 * n_), b_(work + 4 * n_), c_(work + 5 * n_),
        state_(work + 6 * n_), sign_(work + 7 * n_) {}

    // Slopes within their ranges; false when the iterations ran out first.
    bool slopes(int itmax) {
        chords_and_ranges();
        std::fill(state_, state_ + n_, T(0));
        T scale = 0;
        for (int i = 0; i + 1 < n_; ++i) scale = std::max(scale, std::abs(m_[i]));
        const T tol = 10 * Prec<T>::eps() * scale;
        bool settled = false;
        for (int it = 0; it < itmax && !settled; ++it) {
            solve();
            settled = true;
            for (int i = 0; i < n_; ++i) {
                if (state_[i] == 0) {
                    if (s_[i] < lo_[i] - tol) state_[i] = -1, settled = false;
                    else if (s_[i] > hi_[i] + tol) state_[i] = 1, settled = false;
                } else if (lo_[i] < hi_[i]) {
                    // A held slope is let go when its own row would move it inside the range.
                    const T want = free_value(i);
                    if ((state_[i] < 0 && want > lo_[i] + tol) || (state_[i] > 0 && want < hi_[i] - tol))
                        state_[i] = 0, settled = false;
                }
            }
        }
        for (int i = 0; i < n_; ++i) s_[i] = std::min(std::max(s_[i], lo_[i]), hi_[i]);
        return settled;
    }

    // Breakpoints needed: the data plus one knot for every interval that needs one.
    int breakpoints() const {
        int nb = n_;
        for (int i = 0; i + 1 < n_; ++i) nb += needs_knot(i);
        return nb;
    }

    void coefficients(T* bp, T* coef) const {
        int k = 0;
        for (int i = 0; i + 1 < n_; ++i) {
            const T h = x_[i + 1] - x_[i], m = m_[i];
            const T d0 = s_[i] - m, d1 = s_[i + 1] - m;
            if (!needs_knot(i)) {
                bp[k] = x_[i];
                coef[4 * k + 1] = s_[i];
                hermite_coef(2, x_ + i, f_ + i, s_[i + 1], coef + 4 * k);
                ++k;
                continue;
            }
            const T a = d1 / (d1 - d0);            // the knot's place in the interval, in (0, 1)
            const T sk = 2 * m - a * s_[i] - (1 - a) * s_[i + 1];  // the slope at the knot
            T* c = coef + 4 * k;
            bp[k] = x_[i];
            c[0] = f_[i], c[1] = s_[i], c[2] = (sk - s_[i]) / (a * h), c[3] = 0;
            bp[k + 1] = x_[i] + a * h;
            c[4] = f_[i] + (s_[i] + sk) * (a * h) / 2, c[5] = sk, c[6] = (s_[i + 1] - sk) / ((1 - a) * h), c[7] = 0;
            k += 2;
        }
        bp[k] = x_[n_ - 1];
    }

private:
    // The concavity each interval must keep: +1 convex, -1 concave, 0 free (the data turn
    // there). End intervals take the second difference of their one interior neighbour.
    int interval_sign(int i) const {
        const T dl = diff(std::max(i, 1)), dr = diff(std::min(i + 1, n_ - 2));
        if (dl >= 0 && dr >= 0 && (dl > 0 || dr > 0)) return 1;
        if (dl <= 0 && dr <= 0 && (dl < 0 || dr < 0)) return -1;
        return 0;
    }
    T diff(int i) const { return m_[i] - m_[i - 1]; }

    void chords_and_ranges() {
        const T inf = std::numeric_limits<T>::infinity();
        for (int i = 0; i + 1 < n_; ++i) m_[i] = (f_[i + 1] - f_[i]) / (x_[i + 1] - x_[i]);
        for (int i = 0; i + 1 < n_; ++i) sign_[i] = T(interval_sign(i));
        for (int i = 0; i < n_; ++i) {
            T lo = -inf, hi = inf;
            if (i > 0 && i < n_ - 1) lo = std::min(m_[i - 1], m_[i]), hi = std::max(m_[i - 1], m_[i]);
            // A slope must stay off the chord of a curved interval beside it (by a 64th of
            // the smaller second difference there), or that interval could not bend its way;
            // beside a straight run of data it must match the run.
            if (i > 0) limit(i, i - 1, lo, hi, -1);
            if (i < n_ - 1) limit(i, i, lo, hi, 1);
            if (lo > hi) lo = hi = (lo + hi) / 2;  // data no C1 curve can follow: split the difference
            lo_[i] = lo, hi_[i] = hi;
        }
    }

    // Narrows the range of slope i by interval j beside it (side -1: j on the left).
    void limit(int i, int j, T& lo, T& hi, int side) const {
        const int sg = int(sign_[j]);
        if (sg == 0) return;
        const int far = side < 0 ? j : j + 1;  // the other end of interval j
        const T dnear = i >= 1 && i <= n_ - 2 ? std::abs(diff(i)) : inf_like();
        const T dfar = far >= 1 && far <= n_ - 2 ? std::abs(diff(far)) : inf_like();
        T margin = std::min(dnear, dfar) / 64;
        if (!(margin < inf_like())) margin = 0;
        if (dfar == 0) {  // a straight run continues through this interval
            lo = std::max(lo, m_[j]), hi = std::min(hi, m_[j]);
            return;
        }
        // Convex on the right of the point, or concave on its left: slope below the chord.
        if (sg * side > 0) hi = std::min(hi, m_[j] - margin);
        else lo = std::max(lo, m_[j] + margin);
    }
    static T inf_like() { return std::numeric_limits<T>::infinity(); }

    bool needs_knot(int i) const {
        const int sg = int(sign_[i]);
        if (sg == 0) return false;
        const T d0 = s_[i] - m_[i], d1 = s_[i + 1] - m_[i];
        // The cubic's second derivative is linear: it keeps its sign if both ends do.
        const bool cubic_ok = -sg * (2 * d0 + d1) >= 0 && sg * (d0 + 2 * d1) >= 0;
        // The quadratic pair needs the slopes strictly on both sides of the chord.
        return !cubic_ok && sg * d0 < 0 && sg * d1 > 0;
    }

    // Slope i from its own row with the neighbours as they are.
    T free_value(int i) const {
        T a, b, c, r;
        row(i, a, b, c, r);
        T v = r;
        if (i > 0) v -= a * s_[i - 1];
        if (i < n_ - 1) v -= c * s_[i + 1];
        return v / b;
    }

    // Row i of the C2 system with natural ends: a s_{i-1} + b s_i + c s_{i+1} = r.
    void row(int i, T& a, T& b, T& c, T& r) const {
        if (i == 0) {
            a = 0, b = 2, c = 1, r = 3 * m_[0];
        } else if (i == n_ - 1) {
            a = 1, b = 2, c = 0, r = 3 * m_[n_ - 2];
        } else {
            const T h0 = x_[i] - x_[i - 1], h1 = x_[i + 1] - x_[i];
            a = h1, b = 2 * (h0 + h1), c = h0, r = 3 * (h1 * m_[i - 1] + h0 * m_[i]);
        }
    }

    // One tridiagonal solve with the held slopes fixed at their bounds.
    void solve() {
        for (int i = 0; i < n_; ++i) {
            T a, b, c, r;
            if (state_[i] != 0) {
                a = 0, b = 1, c = 0, r = state_[i] < 0 ? lo_[i] : hi_[i];
            } else {
                row(i, a, b, c, r);
            }
            if (i > 0) {
                const T w = a / b_[i - 1];
                b -= w * c_[i - 1];
                r -= w * s_[i - 1];
            }
            b_[i] = b, c_[i] = c, s_[i] = r;
        }
        s_[n_ - 1] /= b_[n_ - 1];
        for (int i = n_ - 2; i >= 0; --i) s_[i] = (s_[i] - c_[i] * s_[i + 1]) / b_[i];
    }

    int n_;
    const T* x_;
    const T* f_;
    T *m_, *lo_, *hi_, *s_, *b_, *c_, *state_, *sign_;
};

template <class T>
Ppoly<T>* concave(const Data<T>& d, int itmax) {
    frame::Level step("QNUM_C2CON");
    frame::Buffer<T> work(8LL * d.n, "ndata");
    if (!work) return nullptr;
    Concave<T> c(d, work.get());
    const bool settled = c.slopes(itmax);
    PpolyOwner<T> p(new_spline<T>(c.breakpoints(), d.n));
    if (!p.get()) return nullptr;
    c.coefficients(p->breakpoints[0], p->coef[0]);
    if (!settled) frame::raise(frame::Type::Warning, err::concave_itmax_reached);
    return p.release();
}

}  // namespace

template <class T>
Ppoly<T>* cub_spline_interp_shape(int n, const T* x, const T* f, frame::Options opt) {
    bool concavity = false;
    int itmax = 25;
    while (int code = opt.next()) {
        switch (code) {
        case QNUM_CONCAVE: concavity = true; break;
        case QNUM_CONCAVE_ITMAX: itmax = opt.get<int>(); break;
        default: opt.unknown(code);
        }
    }
    if (concavity) {
        if (n < 3) frame::raise(frame::Type::Terminal, err::too_few_points_3, frame::Int{n});
        if (itmax < 1) frame::raise(frame::Type::Terminal, err::bad_concave_itmax, frame::Int{itmax});
    } else if (n < 4) {
        frame::raise(frame::Type::Terminal, err::too_few_points_4, frame::Int{n});
    }
    check::array(x, "xdata");
    check::array(f, "fdata");
    if (concavity && !frame::pending()) {
        for (int i = 0; i < n; ++i) {
            if (!std::isfinite(f[i])) {
                frame::raise(frame::Type::Terminal, err::ordinate_not_finite, frame::Int{i}, frame::Real{f[i]});
                break;
            }
        }
    }
    if (frame::pending()) return nullptr;
    return build<T>(n, x, f, nullptr, [&](const Data<T>& d) { return concavity ? concave(d, itmax) : akima(d); });
}

template Ppoly<float>* cub_spline_interp_shape<float>(int, const float*, const float*, frame::Options);
template Ppoly<double>* cub_spline_interp_shape<double>(int, const double*, const double*, frame::Options);

}  // namespace qnum::interp
