// Smoothing cubic splines: the natural spline that minimises the sum of squared weighted
// residuals plus lambda times the integral of s''^2 (C. H. Reinsch, Smoothing by spline
// functions, Numer. Math. 10 (1967) 177-183), with lambda set by a bound on the residuals or
// by generalised cross-validation (P. Craven and G. Wahba, Numer. Math. 31 (1979) 377-403),
// whose trace term comes from the central band of the inverse of the banded matrix
// (M. F. Hutchinson and F. R. de Hoog, Smoothing noisy data with spline functions, Numer.
// Math. 47 (1985) 99-106), so that every score costs O(n).
#include <algorithm>
#include <cmath>
#include <limits>

#include "interp/spline.hpp"

namespace qnum::interp {

namespace {

// Work is done in double for both precisions: the scores of a long float series would
// otherwise lose most of their digits to the sums.
class Smoother {
public:
    static constexpr int arrays = 20;  // work arrays of n doubles

    Smoother(int n, double* work) : n_(n), N_(n - 2) {
        double** slots[arrays] = {&x_, &y_, &om_, &h_, &qty_, &r0_, &r1_, &m0_, &m1_, &m2_, &d_,
                                  &l1_, &l2_, &g_, &s0_, &s1_, &s2_, &ih_, &iom_, &id_};
        for (int k = 0; k < arrays; ++k) *slots[k] = work + std::size_t(k) * n;
    }

    template <class T>
    void load(const Data<T>& d) {
        for (int i = 0; i < n_; ++i) {
            x_[i] = d.x[i], y_[i] = d.f[i];
            const double w = d.w ? double(d.w[i]) : 1.0;
            om_[i] = w * w;
        }
        for (int i = 0; i < n_; ++i) iom_[i] = 1 / om_[i];
        for (int i = 0; i + 1 < n_; ++i) h_[i] = x_[i + 1] - x_[i], ih_[i] = 1 / h_[i];
        // Q (n by n-2) holds the second divided differences, R (n-2 square) the integrals of
        // products of hat functions; M = Q^T W^-1 Q is pentadiagonal.
        for (int j = 0; j < N_; ++j) {
            const double ha = h_[j], hb = h_[j + 1];
            qty_[j] = (y_[j + 2] - y_[j + 1]) / hb - (y_[j + 1] - y_[j]) / ha;
            r0_[j] = (ha + hb) / 3;
            r1_[j] = hb / 6;
            const double q0 = ih_[j], q1 = -ih_[j] - ih_[j + 1], q2 = ih_[j + 1];
            m0_[j] = q0 * q0 * iom_[j] + q1 * q1 * iom_[j + 1] + q2 * q2 * iom_[j + 2];
            // Entries past the band's end are set to 0, so that nothing reads uninitialised.
            m1_[j] = j + 1 < N_ ? q1 * q2 * iom_[j + 1] + q2 * (-ih_[j + 1] - ih_[j + 2]) * iom_[j + 2] : 0;
            m2_[j] = j + 2 < N_ ? q2 * ih_[j + 2] * iom_[j + 2] : 0;
        }
        double tr = 0, tm = 0;
        for (int j = 0; j < N_; ++j) tr += r0_[j], tm += m0_[j];
        lambda0_ = tm > 0 ? tr / tm : 1;
    }

    // The reference scale of lambda, where R and lambda M weigh the same.
    double lambda0() const { return lambda0_; }

    // Factors R + lambda M and solves for the second derivatives; false on breakdown.
    bool fit(double lambda) {
        lambda_ = lambda;
        for (int i = 0; i < N_; ++i) {
            const double a1 = i >= 1 ? r1_[i - 1] + lambda * m1_[i - 1] : 0;  // A(i, i-1)
            const double a2 = i >= 2 ? lambda * m2_[i - 2] : 0;               // A(i, i-2)
            l2_[i] = i >= 2 ? a2 * id_[i - 2] : 0;
            l1_[i] = i >= 1 ? (a1 - (i >= 2 ? l2_[i] * l1_[i - 1] * d_[i - 2] : 0)) * id_[i - 1] : 0;
            d_[i] = r0_[i] + lambda * m0_[i] - l1_[i] * l1_[i] * (i >= 1 ? d_[i - 1] : 0) -
                    l2_[i] * l2_[i] * (i >= 2 ? d_[i - 2] : 0);
            if (!(d_[i] > 0) || !std::isfinite(d_[i])) return false;
            id_[i] = 1 / d_[i];
        }
        for (int i = 0; i < N_; ++i)
            g_[i] = qty_[i] - (i >= 1 ? l1_[i] * g_[i - 1] : 0) - (i >= 2 ? l2_[i] * g_[i - 2] : 0);
        for (int i = N_ - 1; i >= 0; --i)
            g_[i] = g_[i] * id_[i] - (i + 1 < N_ ? l1_[i + 1] * g_[i + 1] : 0) -
                    (i + 2 < N_ ? l2_[i + 2] * g_[i + 2] : 0);
        ssr_ = 0;
        for (int i = 0; i < n_; ++i) {
            const double qg = qgamma(i);
            ssr_ += qg * qg * iom_[i];
        }
        ssr_ *= lambda * lambda;
        return std::isfinite(ssr_);
    }

    // Sum of squared weighted residuals of the last fit.
    double ssr() const { return ssr_; }

    // Generalised cross-validation score of the last fit: n SSR / tr(I - H)^2, the trace
    // being lambda tr(A^-1 M), from the central band of A^-1 = (L D L^T)^-1.
    double gcv() {
        double tr = 0;
        for (int i = N_ - 1; i >= 0; --i) {
            const double la = i + 1 < N_ ? l1_[i + 1] : 0, lb = i + 2 < N_ ? l2_[i + 2] : 0;
            const double s0a = i + 1 < N_ ? s0_[i + 1] : 0, s0b = i + 2 < N_ ? s0_[i + 2] : 0;
            const double s1a = i + 1 < N_ ? s1_[i + 1] : 0;
            s2_[i] = -(la * s1a + lb * s0b);
            s1_[i] = -(la * s0a + lb * s1a);
            s0_[i] = id_[i] - la * s1_[i] - lb * s2_[i];
            tr += s0_[i] * m0_[i] + 2 * ((i + 1 < N_ ? s1_[i] * m1_[i] : 0) + (i + 2 < N_ ? s2_[i] * m2_[i] : 0));
        }
        tr *= lambda_;
        return n_ * ssr_ / (tr * tr);
    }

    // Sum of squared weighted residuals of the weighted least-squares line.
    double line_ssr() {
        line();
        double s = 0;
        for (int i = 0; i < n_; ++i) {
            const double r = y_[i] - (alpha_ + beta_ * (x_[i] - xbar_));
            s += om_[i] * r * r;
        }
        return s;
    }

    // Taylor coefficients of the last fit (lambda < infinity) or of the line.
    template <class T>
    void coefficients(bool as_line, T* bp, T* coef) {
        if (as_line) line();
        auto c2 = [&](int i) { return i == 0 || i == n_ - 1 || as_line ? 0.0 : g_[i - 1]; };
        auto value = [&](int i) {
            return as_line ? alpha_ + beta_ * (x_[i] - xbar_) : y_[i] - lambda_ * qgamma(i) * iom_[i];
        };
        double v0 = value(0);
        for (int i = 0; i + 1 < n_; ++i) {
            const double v1 = value(i + 1), h = h_[i], a = c2(i), b = c2(i + 1);
            T* c = coef + 4 * i;
            c[0] = T(v0);
            c[1] = T((v1 - v0) / h - h * (2 * a + b) / 6);
            c[2] = T(a);
            c[3] = T((b - a) / h);
            bp[i] = T(x_[i]);
            v0 = v1;
        }
        bp[n_ - 1] = T(x_[n_ - 1]);
    }

private:
    // (Q gamma)_i: the jump of the spline's third derivative at x_i, times 1.
    double qgamma(int i) const {
        double v = 0;
        if (i >= 2) v += g_[i - 2] * ih_[i - 1];
        if (i >= 1 && i <= N_) v -= g_[i - 1] * (ih_[i - 1] + ih_[i]);
        if (i < N_) v += g_[i] * ih_[i];
        return v;
    }

    void line() {
        double sw = 0, sx = 0;
        for (int i = 0; i < n_; ++i) sw += om_[i], sx += om_[i] * x_[i];
        xbar_ = sx / sw;
        double sy = 0, sxx = 0, sxy = 0;
        for (int i = 0; i < n_; ++i) {
            const double u = x_[i] - xbar_;
            sy += om_[i] * y_[i], sxx += om_[i] * u * u, sxy += om_[i] * u * y_[i];
        }
        alpha_ = sy / sw;
        beta_ = sxy / sxx;
    }

    int n_, N_;
    double *x_, *y_, *om_, *h_, *qty_, *r0_, *r1_, *m0_, *m1_, *m2_, *d_, *l1_, *l2_, *g_, *s0_, *s1_, *s2_;
    double *ih_, *iom_, *id_;  // reciprocals of h, of the squared weights and of the pivots
    double lambda0_ = 1, lambda_ = 0, ssr_ = 0, alpha_ = 0, beta_ = 0, xbar_ = 0;
};

// Smoothing given sigma: F(lambda) = SSR rises from 0 (the interpolant) to the residual of the
// least-squares line, so F = sigma has one root, found by regula falsi (Illinois) in
// log lambda. Returns -1 for the line, or lambda. A lambda so large that the banded matrix
// is numerically singular counts as smoothing too much.
double lambda_for_sigma(Smoother& s, double sigma, bool& ok) {
    const double line = s.line_ssr();
    if (!(ok = std::isfinite(line))) return 0;
    if (!(sigma < line)) return -1;
    if (sigma == 0 || !(ok = s.fit(0))) return 0;
    const double l0 = s.lambda0();
    auto score = [&](double t) {  // log(F / sigma) at lambda = l0 e^t
        return s.fit(l0 * std::exp(t)) ? std::log(s.ssr() / sigma) : 1.0;
    };
    double lo = -20, hi = 20, glo = score(lo), ghi = score(hi);
    while (glo > 0 && lo > -200) glo = score(lo -= 20);
    while (ghi < 0 && hi < 400) ghi = score(hi += 20);
    if (glo > 0) return 0;  // even a vanishing lambda leaves more than sigma: interpolate
    if (ghi < 0) return l0 * std::exp(hi);
    int side = 0;
    for (int it = 0; it < 200; ++it) {
        double t = (lo * ghi - hi * glo) / (ghi - glo);
        if (!(t > lo && t < hi)) t = (lo + hi) / 2;
        const double g = score(t);
        if (std::abs(g) < 1e-14 || hi - lo < 1e-15 * std::max(1.0, std::abs(t))) return l0 * std::exp(t);
        if (g < 0) {
            lo = t, glo = g;
            if (side < 0) ghi /= 2;
            side = -1;
        } else {
            hi = t, ghi = g;
            if (side > 0) glo /= 2;
            side = 1;
        }
    }
    return l0 * std::exp(lo);
}

// Cross-validation: the score on a grid of decades of lambda / lambda0, from 1e-4 to
// n^4 1e4 (past that every mode but the line is gone), then golden-section search between
// the neighbours of the best grid point. Parameters at which the banded matrix is
// numerically singular are passed over; if every one is, the computation fails.
double lambda_by_gcv(Smoother& s, int n, bool& ok) {
    const double l0 = s.lambda0();
    const double inf = std::numeric_limits<double>::infinity();
    auto score = [&](double u) {
        if (!s.fit(l0 * std::pow(10.0, u))) return inf;
        const double v = s.gcv();
        return std::isfinite(v) ? v : inf;
    };
    const double top = 4 * std::log10(double(n)) + 4;
    double best = -4, vbest = inf;
    for (double u = -4; u <= top; u += 1) {
        const double v = score(u);
        if (v < vbest) best = u, vbest = v;
    }
    if (!(ok = vbest < inf)) return 0;
    const double r = (std::sqrt(5.0) - 1) / 2;
    double a = best - 1, b = best + 1;
    double c = b - r * (b - a), d = a + r * (b - a), vc = score(c), vd = score(d);
    for (int it = 0; it < 40 && b - a > 1e-4; ++it) {
        if (vc < vd) b = d, d = c, vd = vc, c = b - r * (b - a), vc = score(c);
        else a = c, c = d, vc = vd, d = a + r * (b - a), vd = score(d);
    }
    const double u = vc < vd ? c : d;
    return l0 * std::pow(10.0, std::min(vc, vd) < vbest ? u : best);
}

template <class T>
Ppoly<T>* smooth(const Data<T>& d, bool have_sigma, T sigma) {
    const int n = d.n;
    frame::Buffer<double> work(Smoother::arrays * (long long)n, "ndata");
    if (!work) return nullptr;
    PpolyOwner<T> p(new_spline<T>(n, n));
    if (!p.get()) return nullptr;
    Smoother s(n, work.get());
    s.load(d);
    bool ok = true;
    double lambda;
    if (have_sigma) {
        lambda = n == 2 ? 0 : lambda_for_sigma(s, sigma, ok);
    } else {
        frame::Level step("QNUM_C2SCV");
        lambda = lambda_by_gcv(s, n, ok);
    }
    if (ok && lambda >= 0) ok = s.fit(lambda);
    if (!ok) {
        frame::raise(frame::Type::Fatal, err::smoothing_failed);
        return nullptr;
    }
    s.coefficients(lambda < 0, p->breakpoints[0], p->coef[0]);
    return p.release();
}

}  // namespace

template <class T>
Ppoly<T>* cub_spline_smooth(int n, const T* x, const T* f, frame::Options opt) {
    const T* w = nullptr;
    bool have_sigma = false;
    double sigma = 0;
    while (int code = opt.next()) {
        switch (code) {
        case QNUM_WEIGHTS: w = opt.ptr<const T>("weights", "QNUM_WEIGHTS"); break;
        case QNUM_SMOOTHING_PAR: have_sigma = true, sigma = opt.get<double>(); break;
        case QNUM_SMOOTHING_PAR_ADR: {
            const T* p = opt.ptr<const T>("sigma", "QNUM_SMOOTHING_PAR_ADR");
            if (p) have_sigma = true, sigma = *p;
            break;
        }
        default: opt.unknown(code);
        }
    }
    if (have_sigma) {
        if (n < 2) frame::raise(frame::Type::Terminal, err::too_few_points, frame::Int{n});
        if (!(sigma >= 0)) frame::raise(frame::Type::Terminal, err::bad_smoothing_par, frame::Real{sigma});
    } else if (n < 3) {
        frame::raise(frame::Type::Terminal, err::too_few_points_3, frame::Int{n});
    }
    check::array(x, "xdata");
    check::array(f, "fdata");
    if (frame::pending()) return nullptr;
    for (int i = 0; w && i < n; ++i) {
        if (!(w[i] > 0) || !std::isfinite(w[i])) {
            frame::raise(frame::Type::Fatal, err::bad_weight, frame::Int{i}, frame::Real{w[i]});
            return nullptr;
        }
    }
    return build<T>(n, x, f, w, [&](const Data<T>& d) { return smooth(d, have_sigma, T(sigma)); });
}

template Ppoly<float>* cub_spline_smooth<float>(int, const float*, const float*, frame::Options);
template Ppoly<double>* cub_spline_smooth<double>(int, const double*, const double*, frame::Options);

}  // namespace qnum::interp
