// Basic quadrature rules on one interval: Gauss-Kronrod pairs (plain, weighted and on the
// transformed infinite range), the 10-21-43-87 Patterson sequence and the 25-point Chebyshev
// expansion of the modified Clenshaw-Curtis rules.
//
// Rules and error estimates after R. Piessens, E. de Doncker-Kapenga, C. Ueberhuber and
// D. Kahaner, QUADPACK (Springer, 1983), section 2.2 and 3.2; node and weight tables in
// gk_tables.hpp.
#pragma once

#include <algorithm>
#include <cmath>

#include "frame/frame.hpp"
#include "frame/prec.hpp"
#include "quadrature/gk_tables.hpp"

namespace qnum::quadrature {

// Machine constants of T, read once at load time: every rule application needs some of them.
template <class T>
struct Mach {
    static inline const T eps = Prec<T>::eps();
    static inline const T tiny = Prec<T>::tiny();
    static inline const T huge = Prec<T>::huge();
    static inline const T nan = Prec<T>::nan();
    static inline const T root_eps = std::sqrt(Prec<T>::eps());
};

// The user's integrand: a plain function or one with a data pointer. Every call counts and
// marks the error-stack level of the step as the user's, so errors raised inside it are
// reported to the caller. The level is found once per call of the routine (`mark_level`):
// user functions are called millions of times.
template <class T>
struct Integrand {
    T (*plain)(T) = nullptr;
    T (*with_data)(T, void*) = nullptr;
    void* data = nullptr;
    int evals = 0;
    StackEntry* level = nullptr;

    void mark_level() { level = context()->top; }

    T operator()(T x) {
        ++evals;
        level->user = 1;  // "ON"
        const T v = with_data != nullptr ? with_data(x, data) : plain(x);
        level->user = 0;  // "OFF"
        return v;
    }
};

// One rule application: the integral, its error estimate, the integral of |f| and of
// |f - mean| over the interval.
template <class T>
struct RuleOut {
    T result = 0, abserr = 0, resabs = 0, resasc = 0;
};

// Roundoff counters of the extrapolating members. A bisection whose halves barely change the
// area while the error hardly falls counts in iroff1 before extrapolation starts and in iroff2
// after; one that makes the error grow late in the run counts in iroff3. A half whose error
// estimate is its whole resasc says nothing about convergence, and the pair is skipped.
template <class T>
struct Roundoff {
    int iroff1 = 0, iroff2 = 0, iroff3 = 0;
    void count(const RuleOut<T>& r1, const RuleOut<T>& r2, T old_area, T area12, T erro12, T errmax,
               int last, bool extrap) {
        if (r1.resasc == r1.abserr || r2.resasc == r2.abserr) return;
        if (std::abs(old_area - area12) <= T(1e-5) * std::abs(area12) && erro12 >= T(0.99) * errmax) {
            if (extrap) ++iroff2;
            else ++iroff1;
        }
        if (last > 10 && erro12 > errmax) ++iroff3;
    }
    bool too_many() const { return iroff1 + iroff2 >= 10 || iroff3 >= 20; }
};

// The error estimate shared by every Kronrod-type rule: the raw difference is scaled by
// (200 err / resasc)^1.5, which is pessimistic for slowly converging rules and sharp for
// fast ones, and never drops below the rounding level 50 eps resabs.
template <class T>
T scaled_error(T abserr, T resabs, T resasc) {
    const T epmach = Mach<T>::eps, uflow = Mach<T>::tiny;
    if (resasc != 0 && abserr != 0) {
        const T ratio = T(200) * abserr / resasc;  // to the power 1.5, without a call of pow
        abserr = resasc * std::min(T(1), ratio * std::sqrt(ratio));
    }
    if (resabs > uflow / (T(50) * epmach)) abserr = std::max(epmach * T(50) * resabs, abserr);
    return abserr;
}

// A Gauss-Kronrod pair in the tables' layout: xgk[0..m-2] alternate added Kronrod nodes (even
// positions) and Gauss nodes (odd positions), xgk[m-1] = 0 is the centre, which is a Gauss
// node when the Gauss order is odd (m - 1 odd); wg[j] is the weight of xgk[2j + 1].
template <class T>
struct KronrodRule {
    const T* xgk;
    const T* wgk;
    const T* wg;
    int m;
};

// Rule code 1..6: 15, 21, 31, 41, 51 or 61 points.
template <class T>
KronrodRule<T> kronrod_rule(int rule) {
    using D = tables::Data<T>;
    switch (rule) {
    case 1: return {D::qk15_xgk, D::qk15_wgk, D::qk15_wg, 8};
    case 3: return {D::qk31_xgk, D::qk31_wgk, D::qk31_wg, 16};
    case 4: return {D::qk41_xgk, D::qk41_wgk, D::qk41_wg, 21};
    case 5: return {D::qk51_xgk, D::qk51_wgk, D::qk51_wg, 26};
    case 6: return {D::qk61_xgk, D::qk61_wgk, D::qk61_wg, 31};
    default: return {D::qk21_xgk, D::qk21_wgk, D::qk21_wg, 11};
    }
}

// Applies the pair to g over [a, b]; g is the integrand, or the integrand times a weight.
// The sums are formed between the calls: their additions overlap the integrand's work.
template <class T, class G>
RuleOut<T> kronrod(const KronrodRule<T>& r, G&& g, T a, T b) {
    const int c = r.m - 1;
    const T centr = T(0.5) * (a + b), hlgth = T(0.5) * (b - a), dhlgth = std::abs(hlgth);
    T fv1[31], fv2[31];
    const T fc = g(centr);
    T resg = (c % 2 == 1) ? fc * r.wg[c / 2] : T(0);
    T resk = fc * r.wgk[c];
    T resabs = std::abs(resk);
    for (int j = 1; j < c; j += 2) {
        const T absc = hlgth * r.xgk[j];
        const T f1 = g(centr - absc), f2 = g(centr + absc);
        fv1[j] = f1;
        fv2[j] = f2;
        resg += r.wg[j / 2] * (f1 + f2);
        resk += r.wgk[j] * (f1 + f2);
        resabs += r.wgk[j] * (std::abs(f1) + std::abs(f2));
    }
    for (int j = 0; j < c; j += 2) {
        const T absc = hlgth * r.xgk[j];
        const T f1 = g(centr - absc), f2 = g(centr + absc);
        fv1[j] = f1;
        fv2[j] = f2;
        resk += r.wgk[j] * (f1 + f2);
        resabs += r.wgk[j] * (std::abs(f1) + std::abs(f2));
    }
    const T reskh = resk * T(0.5);
    T resasc = r.wgk[c] * std::abs(fc - reskh);
    for (int j = 0; j < c; ++j) resasc += r.wgk[j] * (std::abs(fv1[j] - reskh) + std::abs(fv2[j] - reskh));
    RuleOut<T> out;
    out.result = resk * hlgth;
    out.resabs = resabs * dhlgth;
    out.resasc = resasc * dhlgth;
    out.abserr = scaled_error(std::abs((resk - resg) * hlgth), out.resabs, out.resasc);
    return out;
}

// The 15-point pair on [a, b] inside (0, 1] after x = bound + dir (1 - t) / t; dir is +1 or
// -1, and `both` adds f(-x) for the whole line (bound 0).
template <class T, class F>
RuleOut<T> kronrod_infinite(F& f, T bound, T dir, bool both, T a, T b) {
    using D = tables::Data<T>;
    const T centr = T(0.5) * (a + b), hlgth = T(0.5) * (b - a);
    auto g = [&](T t) {
        const T x = bound + dir * (T(1) - t) / t;
        T v = f(x);
        if (both) v += f(-x);
        return (v / t) / t;
    };
    T fv1[7], fv2[7];
    const T fc = g(centr);
    T resg = D::qk15i_wg[7] * fc, resk = D::qk15i_wgk[7] * fc, resabs = std::abs(resk);
    for (int j = 0; j < 7; ++j) {
        const T absc = hlgth * D::qk15i_xgk[j];
        const T f1 = g(centr - absc), f2 = g(centr + absc);
        fv1[j] = f1;
        fv2[j] = f2;
        resg += D::qk15i_wg[j] * (f1 + f2);
        resk += D::qk15i_wgk[j] * (f1 + f2);
        resabs += D::qk15i_wgk[j] * (std::abs(f1) + std::abs(f2));
    }
    const T reskh = resk * T(0.5);
    T resasc = D::qk15i_wgk[7] * std::abs(fc - reskh);
    for (int j = 0; j < 7; ++j)
        resasc += D::qk15i_wgk[j] * (std::abs(fv1[j] - reskh) + std::abs(fv2[j] - reskh));
    RuleOut<T> out;
    out.result = resk * hlgth;
    out.resasc = resasc * hlgth;
    out.resabs = resabs * hlgth;
    out.abserr = scaled_error(std::abs((resk - resg) * hlgth), out.resabs, out.resasc);
    return out;
}

// Chebyshev coefficients of degrees 12 and 24 of the function sampled at cos(k pi / 24),
// k = 0..24 (fval[0] and fval[24] already halved): the 24-point discrete cosine transform,
// split by parity so that the 13-point one falls out of it.
template <class T>
void chebyshev_25(T fval[25], T cheb12[13], T cheb24[25]);

}  // namespace qnum::quadrature
