// Adaptive Gauss-Kronrod subdivision: the plain step, the extrapolating steps for end-point
// singularities, infinite ranges and user break points, and the non-adaptive Patterson rule.
//
// Algorithms of QUADPACK (Piessens, de Doncker-Kapenga, Ueberhuber, Kahaner, Springer 1983):
// QAGE, QAGSE, QAGIE, QAGPE and QNG, with the epsilon algorithm of Wynn for the limit of the
// sequence of partial results.
#include <algorithm>
#include <cmath>

#include "quadrature/subdivide.hpp"

namespace qnum::quadrature {

template <class T>
void Epsilon<T>::extrapolate(T& result, T& abserr) {
    const T epmach = Mach<T>::eps, oflow = Mach<T>::huge;
    // 1-based, as the table's diagonals are counted, without a pointer before the array.
    struct { T* p; T& operator[](int i) const { return p[i - 1]; } } e{epstab};
    ++nres;
    abserr = oflow;
    result = e[n];
    if (n < 3) {
        abserr = std::max(abserr, T(5) * epmach * std::abs(result));
        return;
    }
    const int limexp = 50;
    e[n + 2] = e[n];
    const int newelm = (n - 1) / 2;
    e[n] = oflow;
    const int num = n;
    int k1 = n;
    for (int i = 1; i <= newelm; ++i) {
        const int k2 = k1 - 1, k3 = k1 - 2;
        T res = e[k1 + 2];
        const T e0 = e[k3], e1 = e[k2], e2 = res;
        const T e1abs = std::abs(e1);
        const T delta2 = e2 - e1, err2 = std::abs(delta2);
        const T tol2 = std::max(std::abs(e2), e1abs) * epmach;
        const T delta3 = e1 - e0, err3 = std::abs(delta3);
        const T tol3 = std::max(e1abs, std::abs(e0)) * epmach;
        if (err2 <= tol2 && err3 <= tol3) {
            // e0, e1 and e2 agree to machine accuracy: convergence is assumed.
            result = res;
            abserr = err2 + err3;
            abserr = std::max(abserr, T(5) * epmach * std::abs(result));
            return;
        }
        const T e3 = e[k1];
        e[k1] = e1;
        const T delta1 = e1 - e3, err1 = std::abs(delta1);
        const T tol1 = std::max(e1abs, std::abs(e3)) * epmach;
        // Two close elements: the table is cut here, the rest would be noise.
        if (err1 <= tol1 || err2 <= tol2 || err3 <= tol3) {
            n = i + i - 1;
            break;
        }
        const T ss = T(1) / delta1 + T(1) / delta2 - T(1) / delta3;
        if (std::abs(ss * e1) <= T(1e-4)) {
            n = i + i - 1;
            break;
        }
        res = e1 + T(1) / ss;
        e[k1] = res;
        k1 -= 2;
        const T error = err2 + std::abs(res - e2) + err3;
        if (error <= abserr) {
            abserr = error;
            result = res;
        }
    }
    if (n == limexp) n = 2 * (limexp / 2) - 1;
    int ib = (num % 2 == 0) ? 2 : 1;
    const int ie = newelm + 1;
    for (int i = 1; i <= ie; ++i) {
        e[ib] = e[ib + 2];
        ib += 2;
    }
    if (num != n) {
        int indx = num - n + 1;
        for (int i = 1; i <= n; ++i) e[i] = e[indx++];
    }
    if (nres < 4) {
        res3la[nres - 1] = result;
        abserr = oflow;
    } else {
        abserr = std::abs(result - res3la[2]) + std::abs(result - res3la[1]) + std::abs(result - res3la[0]);
        res3la[0] = res3la[1];
        res3la[1] = res3la[2];
        res3la[2] = result;
    }
    abserr = std::max(abserr, T(5) * epmach * std::abs(result));
}

template <class T>
Outcome<T> step_qag(Integrand<T>& f, T a, T b, Tol<T> tol, int rule, Lists<T>& w) {
    const T epmach = Mach<T>::eps;
    const KronrodRule<T> kr = kronrod_rule<T>(rule);
    auto apply = [&](T lo, T hi) { return kronrod(kr, f, lo, hi); };
    Outcome<T> out;
    RuleOut<T> r = apply(a, b);
    w.alist[0] = a;
    w.blist[0] = b;
    w.rlist[0] = r.result;
    w.elist[0] = r.abserr;
    w.iord[0] = 0;  // the subdivision starts from the head of the order list
    out.last = 1;
    out.result = r.result;
    out.abserr = r.abserr;
    T errbnd = std::max(tol.epsabs, tol.epsrel * std::abs(r.result));
    const bool done = (r.abserr <= errbnd && r.abserr != r.resabs) || r.abserr == 0;
    if (r.abserr <= T(50) * epmach * r.resabs && r.abserr > errbnd) out.ier = roundoff;
    // One subinterval allowed: the limit counts only when the single estimate misses.
    if (w.limit == 1 && !done) out.ier = limit_reached;
    if (out.ier != converged || done) {
        out.bad_a = a;
        out.bad_b = b;
        return out;
    }
    bisect(apply, midpoint<T>, [](T, T) { return true; }, tol, w, out);
    return out;
}

// The extrapolating subdivision shared by the singular and infinite-range steps: bisection
// of the interval with the largest error, and once the small intervals dominate, the epsilon
// algorithm on the sequence of totals obtained by refining only the large ones.
template <class T, class Rule>
Outcome<T> extrapolating(Rule&& apply, T a, T b, T small0, Tol<T> tol, Lists<T>& w) {
    const T epmach = Mach<T>::eps;
    Outcome<T> out;
    RuleOut<T> r = apply(a, b);
    w.alist[0] = a;
    w.blist[0] = b;
    w.rlist[0] = r.result;
    w.elist[0] = r.abserr;
    out.last = 1;
    out.result = r.result;
    out.abserr = r.abserr;
    out.bad_a = a;
    out.bad_b = b;
    const T defabs = r.resabs;
    const T dres = std::abs(r.result);
    T errbnd = std::max(tol.epsabs, tol.epsrel * dres);
    int ier = 0;
    const bool done = (r.abserr <= errbnd && r.abserr != r.resasc) || r.abserr == 0;
    if (r.abserr <= T(100) * epmach * defabs && r.abserr > errbnd) ier = roundoff;
    if (w.limit == 1 && !done) ier = limit_reached;
    if (ier != 0 || done) {
        out.ier = ier;
        return out;
    }
    Extrapolation<T> x;
    x.seed(r.result);
    x.result = r.result;
    T errmax = r.abserr, area = r.result, errsum = r.abserr;
    T small = 0, erlarg = 0;
    int maxerr = 0, nrmax = 1;
    Roundoff<T> ro;
    bool extrap = false;
    int last = 1;
    bool summed = false;  // leave with the plain sum of the lists
    while (last < w.limit && w.reserve(last)) {
        const T a1 = w.alist[maxerr], b1 = T(0.5) * (w.alist[maxerr] + w.blist[maxerr]);
        const T a2 = b1, b2 = w.blist[maxerr];
        const T erlast = errmax;
        const RuleOut<T> r1 = apply(a1, b1), r2 = apply(a2, b2);
        ++last;
        const T area12 = r1.result + r2.result, erro12 = r1.abserr + r2.abserr;
        errsum = errsum + erro12 - errmax;
        area = area + area12 - w.rlist[maxerr];
        ro.count(r1, r2, w.rlist[maxerr], area12, erro12, errmax, last, extrap);
        errbnd = std::max(tol.epsabs, tol.epsrel * std::abs(area));
        if (ro.too_many()) ier = roundoff;
        if (ro.iroff2 >= 5) x.ierro = 3;
        if (last == w.limit) ier = limit_reached;
        if (too_small(a1, a2, b2)) ier = extrapolation_roundoff;  // renumbered below
        out.bad_a = a1;
        out.bad_b = b2;
        store_halves(w, maxerr, last - 1, a1, b1, r1.result, r1.abserr, a2, b2, r2.result, r2.abserr, maxerr,
                     errmax, nrmax);
        if (errsum <= errbnd) {
            summed = true;
            break;
        }
        if (ier != 0) break;
        if (last == 2) {
            small = small0;
            erlarg = errsum;
            x.ertest = errbnd;
            x.seed(area);
            continue;
        }
        if (x.noext) continue;
        erlarg -= erlast;
        if (std::abs(b1 - a1) > small) erlarg += erro12;
        if (!extrap) {
            // Extrapolation starts once the interval to bisect next is small.
            if (std::abs(w.blist[maxerr] - w.alist[maxerr]) > small) continue;
            extrap = true;
            nrmax = 2;
        }
        // Bisect the large intervals first while their errors dominate.
        if (x.ierro != 3 && erlarg > x.ertest &&
            next_large(w, last, nrmax, maxerr, errmax, [&](int i) { return std::abs(w.blist[i] - w.alist[i]) > small; }))
            continue;
        if (x.add(area, errsum, erlarg, tol, ier)) break;
        maxerr = w.iord[0];
        errmax = w.elist[maxerr];
        nrmax = 1;
        extrap = false;
        small *= T(0.5);
        erlarg = errsum;
    }
    out.last = last;
    return x.conclude(out, ier, area, errsum, dres, defabs, summed, w, T(1));
}

template <class T>
Outcome<T> step_qags(Integrand<T>& f, T a, T b, Tol<T> tol, Lists<T>& w) {
    const KronrodRule<T> kr = kronrod_rule<T>(2);
    return extrapolating([&](T lo, T hi) { return kronrod(kr, f, lo, hi); }, a, b,
                         std::abs(b - a) * T(0.375), tol, w);
}

template <class T>
Outcome<T> step_qagi(Integrand<T>& f, T bound, int inf, Tol<T> tol, Lists<T>& w) {
    const T boun = inf == 2 ? T(0) : bound;
    const T dir = inf == -1 ? T(-1) : T(1);
    return extrapolating([&](T lo, T hi) { return kronrod_infinite(f, boun, dir, inf == 2, lo, hi); }, T(0),
                         T(1), T(0.375), tol, w);
}

template <class T>
Outcome<T> step_qng(Integrand<T>& fcn, T a, T b, Tol<T> tol) {
    using D = tables::Data<T>;
    // A copy whose address does not escape: its count and level stay in registers across
    // the integrand's calls.
    Integrand<T> f = fcn;
    struct Count {
        Integrand<T>& to;
        const Integrand<T>& from;
        ~Count() { to.evals = from.evals; }
    } count{fcn, f};
    const T hlgth = T(0.5) * (b - a), dhlgth = std::abs(hlgth), centr = T(0.5) * (b + a);
    // Each rule first samples, then sums: no sum is live across an integrand call.
    auto sample = [&](const T* x, int n, T* right, T* left) {
        for (int k = 0; k < n; ++k) {
            const T absc = hlgth * x[k];
            right[k] = f(centr + absc);
            left[k] = f(centr - absc);
        }
    };
    const T fcentr = f(centr);
    T savfun[21], fv1[5], fv2[5], fv3[5], fv4[5], up[22], down[22];
    sample(D::qng_x1, 5, fv1, fv2);
    sample(D::qng_x2, 5, fv3, fv4);
    Outcome<T> out;
    out.ier = limit_reached;
    out.bad_a = a;
    out.bad_b = b;
    T res10 = 0, res21 = D::qng_w21b[5] * fcentr, resabs = D::qng_w21b[5] * std::abs(fcentr);
    for (int k = 0; k < 5; ++k) {
        savfun[k] = fv1[k] + fv2[k];
        res10 += D::qng_w10[k] * savfun[k];
        res21 += D::qng_w21a[k] * savfun[k];
        resabs += D::qng_w21a[k] * (std::abs(fv1[k]) + std::abs(fv2[k]));
    }
    for (int k = 0; k < 5; ++k) {
        savfun[5 + k] = fv3[k] + fv4[k];
        res21 += D::qng_w21b[k] * savfun[5 + k];
        resabs += D::qng_w21b[k] * (std::abs(fv3[k]) + std::abs(fv4[k]));
    }
    resabs *= dhlgth;
    const T reskh = T(0.5) * res21;
    T resasc = D::qng_w21b[5] * std::abs(fcentr - reskh);
    for (int k = 0; k < 5; ++k)
        resasc += D::qng_w21a[k] * (std::abs(fv1[k] - reskh) + std::abs(fv2[k] - reskh)) +
                  D::qng_w21b[k] * (std::abs(fv3[k] - reskh) + std::abs(fv4[k] - reskh));
    resasc *= dhlgth;
    // The 21-, 43- and 87-point results in turn, each against the one before.
    T prev = res10, res = res21;
    for (int l = 1; l <= 3; ++l) {
        if (l == 2) {
            sample(D::qng_x3, 11, up, down);
            res = D::qng_w43b[11] * fcentr;
            for (int k = 0; k < 10; ++k) res += savfun[k] * D::qng_w43a[k];
            for (int k = 0; k < 11; ++k) {
                savfun[10 + k] = up[k] + down[k];
                res += savfun[10 + k] * D::qng_w43b[k];
            }
        } else if (l == 3) {
            sample(D::qng_x4, 22, up, down);
            res = D::qng_w87b[22] * fcentr;
            for (int k = 0; k < 21; ++k) res += savfun[k] * D::qng_w87a[k];
            for (int k = 0; k < 22; ++k) res += D::qng_w87b[k] * (up[k] + down[k]);
        }
        out.result = res * hlgth;
        out.abserr = scaled_error(std::abs((res - prev) * hlgth), resabs, resasc);
        if (out.abserr <= std::max(tol.epsabs, tol.epsrel * std::abs(out.result))) {
            out.ier = converged;
            break;
        }
        prev = res;
    }
    return out;
}

template <class T>
Outcome<T> step_qagp(Integrand<T>& f, T a, T b, int npts, const T* points, Tol<T> tol, Lists<T>& w) {
    const T epmach = Mach<T>::eps;
    const KronrodRule<T> kr = kronrod_rule<T>(2);
    auto apply = [&](T lo, T hi) { return kronrod(kr, f, lo, hi); };
    const int nint = npts + 1;
    const T sign = a > b ? T(-1) : T(1);
    Outcome<T> out;
    // The break points, sorted, between the ordered end points; they live in blist until the
    // intervals are formed (limit > npts leaves room for all of them; blist has one entry
    // more than the others).
    if (!w.reserve(nint - 1)) return out;
    T* pts = w.blist;
    pts[0] = std::min(a, b);
    for (int i = 0; i < npts; ++i) pts[i + 1] = points[i];
    pts[nint] = std::max(a, b);
    std::sort(pts + 1, pts + nint);
    T result = 0, abserr = 0, resabs = 0;
    T a1 = pts[0];
    for (int i = 0; i < nint; ++i) {
        const T b1 = pts[i + 1];
        const RuleOut<T> r = apply(a1, b1);
        abserr += r.abserr;
        result += r.result;
        // An estimate equal to its own deviation integral is unreliable: it takes the total.
        w.level[i] = (r.abserr == r.resasc && r.abserr != 0) ? -1 : 0;
        resabs += r.resabs;
        w.elist[i] = r.abserr;
        w.alist[i] = a1;
        w.rlist[i] = r.result;
        w.iord[i] = i;
        a1 = b1;
    }
    for (int i = 0; i < nint; ++i) w.blist[i] = w.alist[i + 1 < nint ? i + 1 : i];
    w.blist[nint - 1] = std::max(a, b);
    T errsum = 0;
    for (int i = 0; i < nint; ++i) {
        if (w.level[i] == -1) w.elist[i] = abserr;
        w.level[i] = 0;
        errsum += w.elist[i];
    }
    int last = nint;
    const T dres = std::abs(result);
    T errbnd = std::max(tol.epsabs, tol.epsrel * dres);
    int ier = 0;
    if (abserr <= T(100) * epmach * resabs && abserr > errbnd) ier = roundoff;
    // Order the first intervals by decreasing error (selection, as the number is small).
    for (int i = 0; i < nint - 1; ++i) {
        int ind1 = w.iord[i], k = i;
        for (int j = i + 1; j < nint; ++j) {
            const int ind2 = w.iord[j];
            if (w.elist[ind1] <= w.elist[ind2]) {
                ind1 = ind2;
                k = j;
            }
        }
        if (ind1 != w.iord[i]) {
            w.iord[k] = w.iord[i];
            w.iord[i] = ind1;
        }
    }
    if (w.limit < npts + 2 && abserr > errbnd) ier = limit_reached;
    out.last = last;
    out.bad_a = a;
    out.bad_b = b;
    if (ier != 0 || abserr <= errbnd) {
        out.ier = ier;
        out.result = result * sign;
        out.abserr = abserr;
        return out;
    }
    Extrapolation<T> x;
    x.seed(result);
    x.result = result;
    x.ertest = errbnd;
    int maxerr = w.iord[0];
    T errmax = w.elist[maxerr], area = result, erlarg = errsum;
    int nrmax = 1, levmax = 1;
    Roundoff<T> ro;
    bool extrap = false;
    bool summed = false;
    while (last < w.limit && w.reserve(last)) {
        const int levcur = w.level[maxerr] + 1;
        const T a1x = w.alist[maxerr], b1 = T(0.5) * (w.alist[maxerr] + w.blist[maxerr]);
        const T a2 = b1, b2 = w.blist[maxerr];
        const T erlast = errmax;
        const RuleOut<T> r1 = apply(a1x, b1), r2 = apply(a2, b2);
        ++last;
        const T area12 = r1.result + r2.result, erro12 = r1.abserr + r2.abserr;
        errsum = errsum + erro12 - errmax;
        area = area + area12 - w.rlist[maxerr];
        ro.count(r1, r2, w.rlist[maxerr], area12, erro12, errmax, last, extrap);
        w.level[maxerr] = levcur;
        w.level[last - 1] = levcur;
        errbnd = std::max(tol.epsabs, tol.epsrel * std::abs(area));
        if (ro.too_many()) ier = roundoff;
        if (ro.iroff2 >= 5) x.ierro = 3;
        if (last == w.limit) ier = limit_reached;
        if (too_small(a1x, a2, b2)) ier = extrapolation_roundoff;
        out.bad_a = a1x;
        out.bad_b = b2;
        store_halves(w, maxerr, last - 1, a1x, b1, r1.result, r1.abserr, a2, b2, r2.result, r2.abserr, maxerr,
                     errmax, nrmax);
        if (errsum <= errbnd) {
            summed = true;
            break;
        }
        if (ier != 0) break;
        if (x.noext) continue;
        erlarg -= erlast;
        if (levcur + 1 <= levmax) erlarg += erro12;
        if (!extrap) {
            if (w.level[maxerr] + 1 <= levmax) continue;
            extrap = true;
            nrmax = 2;
        }
        if (x.ierro != 3 && erlarg > x.ertest &&
            next_large(w, last, nrmax, maxerr, errmax, [&](int i) { return w.level[i] + 1 <= levmax; }))
            continue;
        if (x.add(area, errsum, erlarg, tol, ier)) break;
        maxerr = w.iord[0];
        errmax = w.elist[maxerr];
        nrmax = 1;
        extrap = false;
        ++levmax;
        erlarg = errsum;
    }
    out.last = last;
    return x.conclude(out, ier, area, errsum, dres, resabs, summed, w, sign);
}

#define QNUM_INSTANTIATE(T)                                                                            \
    template struct Epsilon<T>;                                                                        \
    template Outcome<T> step_qag(Integrand<T>&, T, T, Tol<T>, int, Lists<T>&);                  \
    template Outcome<T> step_qags(Integrand<T>&, T, T, Tol<T>, Lists<T>&);                      \
    template Outcome<T> step_qagi(Integrand<T>&, T, int, Tol<T>, Lists<T>&);                    \
    template Outcome<T> step_qagp(Integrand<T>&, T, T, int, const T*, Tol<T>, Lists<T>&);       \
    template Outcome<T> step_qng(Integrand<T>&, T, T, Tol<T>);
QNUM_INSTANTIATE(float)
QNUM_INSTANTIATE(double)
#undef QNUM_INSTANTIATE

}  // namespace qnum::quadrature
