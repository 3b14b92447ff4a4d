// Adaptive integration with a weight function applied by the routine: Cauchy principal
// values (1/(x-c)), algebraic-logarithmic end-point weights, cos or sin(omega x) on a finite
// interval and Fourier integrals over a half-infinite one.
//
// Algorithms of QUADPACK (Piessens et al., Springer 1983): QAWCE, QAWSE, QAWOE and QAWFE with
// the modified Clenshaw-Curtis rules QC25C, QC25S and QC25F (sections 2.2.3 and 3.3) and the
// Chebyshev moments of the weights (QMOMO, and the moment recurrences of QC25F solved as a
// tridiagonal system where forward recursion is unstable).
#include <algorithm>
#include <cmath>

#include "quadrature/subdivide.hpp"

namespace qnum::quadrature {

namespace {

template <class T>
const KronrodRule<T> qk15() {
    return kronrod_rule<T>(1);
}

// Samples g at the 25 Chebyshev points of [a, b] (end values halved) and expands.
template <class T, class G>
void chebyshev_samples(G&& g, T centr, T hlgth, T cheb12[13], T cheb24[25]) {
    const T* x = tables::Data<T>::qc25_x;
    T fval[25];
    fval[0] = T(0.5) * g(hlgth + centr, 0);
    fval[12] = g(centr, 12);
    fval[24] = T(0.5) * g(centr - hlgth, 24);
    for (int i = 1; i < 12; ++i) {
        const T u = hlgth * x[i - 1];
        fval[i] = g(u + centr, i);
        fval[24 - i] = g(centr - u, 24 - i);
    }
    chebyshev_25(fval, cheb12, cheb24);
}

// sum cheb(i) mom(i): the 13-term and 25-term results.
template <class T>
void moment_sums(const T cheb12[13], const T cheb24[25], const T* mom, T& res12, T& res24) {
    res12 = 0;
    res24 = 0;
    for (int i = 0; i < 13; ++i) {
        res12 += cheb12[i] * mom[i];
        res24 += cheb24[i] * mom[i];
    }
    for (int i = 13; i < 25; ++i) res24 += cheb24[i] * mom[i];
}

// Marks a Clenshaw-Curtis result as one whose error says nothing about roundoff.
template <class T>
RuleOut<T> chebyshev_out(T result, T abserr) {
    RuleOut<T> r;
    r.result = result;
    r.abserr = abserr;
    r.resasc = abserr;
    r.resabs = std::abs(result);
    return r;
}

// 1/(x - c) on [a, b]: the 15-point rule on f/(x - c) when c is well outside, else the
// 25-point Clenshaw-Curtis rule with the moments of 1/(x - c) computed by recurrence.
template <class T>
RuleOut<T> cauchy_rule(Integrand<T>& f, T a, T b, T c) {
    const T cc = (T(2) * c - b - a) / (b - a);
    if (std::abs(cc) >= T(1.1)) return kronrod(qk15<T>(), [&](T x) { return f(x) / (x - c); }, a, b);
    const T hlgth = T(0.5) * (b - a), centr = T(0.5) * (b + a);
    T cheb12[13], cheb24[25];
    chebyshev_samples([&](T x, int) { return f(x); }, centr, hlgth, cheb12, cheb24);
    T amom0 = std::log(std::abs((T(1) - cc) / (T(1) + cc)));
    T amom1 = T(2) + cc * amom0;
    T res12 = cheb12[0] * amom0 + cheb12[1] * amom1;
    T res24 = cheb24[0] * amom0 + cheb24[1] * amom1;
    for (int k = 3; k <= 25; ++k) {
        T amom2 = T(2) * cc * amom1 - amom0;
        const T ak22 = T((k - 2) * (k - 2));
        if (k % 2 == 0) amom2 -= T(4) / (ak22 - T(1));
        if (k <= 13) res12 += cheb12[k - 1] * amom2;
        res24 += cheb24[k - 1] * amom2;
        amom0 = amom1;
        amom1 = amom2;
    }
    return chebyshev_out(res24, std::abs(res24 - res12));
}

// Modified Chebyshev moments of (1+x)^alpha, (1-x)^beta and their products with the
// logarithms on [-1, 1] (QUADPACK QMOMO): ri, rj always, rg for log(x-a), rh for log(b-x).
template <class T>
struct AlgLogMoments {
    T ri[25], rj[25], rg[25], rh[25];

    AlgLogMoments(T alpha, T beta, int weight) {
        const T alfp1 = alpha + T(1), betp1 = beta + T(1), alfp2 = alpha + T(2), betp2 = beta + T(2);
        const T ralf = std::pow(T(2), alfp1), rbet = std::pow(T(2), betp1);
        ri[0] = ralf / alfp1;
        rj[0] = rbet / betp1;
        ri[1] = ri[0] * alpha / alfp2;
        rj[1] = rj[0] * beta / betp2;
        T an = 2, anm1 = 1;
        for (int i = 2; i < 25; ++i) {
            ri[i] = -(ralf + an * (an - alfp2) * ri[i - 1]) / (anm1 * (an + alfp1));
            rj[i] = -(rbet + an * (an - betp2) * rj[i - 1]) / (anm1 * (an + betp1));
            anm1 = an;
            an += T(1);
        }
        if (weight == 2 || weight == 4) log_moments(rg, ri, ralf, alfp1, alfp2);
        if (weight == 3 || weight == 4) {
            log_moments(rh, rj, rbet, betp1, betp2);
            for (int i = 1; i < 25; i += 2) rh[i] = -rh[i];
        }
        for (int i = 1; i < 25; i += 2) rj[i] = -rj[i];
    }

    static void log_moments(T* rg, const T* ri, T ralf, T alfp1, T alfp2) {
        rg[0] = -ri[0] / alfp1;
        rg[1] = -(ralf + ralf) / (alfp2 * alfp2) - rg[0];
        T an = 2, anm1 = 1;
        for (int i = 2; i < 25; ++i) {
            rg[i] = -(an * (an - alfp2) * rg[i - 1] - an * ri[i - 1] + anm1 * ri[i]) / (anm1 * (an + alfp1));
            anm1 = an;
            an += T(1);
        }
    }
};

// One interval [bl, br] of the algebraic-logarithmic integral over [a, b]: Clenshaw-Curtis
// with the moments when the interval touches a singular end point, else the 15-point rule
// on f times the weight.
template <class T>
RuleOut<T> alg_log_rule(Integrand<T>& f, T a, T b, T bl, T br, T alpha, T beta, int weight,
                        const AlgLogMoments<T>& m) {
    const bool log_a = weight == 2 || weight == 4, log_b = weight == 3 || weight == 4;
    const bool left = bl == a && (alpha != 0 || log_a);
    const bool right = br == b && (beta != 0 || log_b);
    if (!left && !right) {
        auto g = [&](T x) {
            const T xma1 = x - a, bmx1 = b - x;
            T q = std::pow(xma1, alpha) * std::pow(bmx1, beta);
            if (log_a) q *= std::log(xma1);
            if (log_b) q *= std::log(bmx1);
            return f(x) * q;
        };
        return kronrod(qk15<T>(), g, bl, br);
    }
    const T hlgth = T(0.5) * (br - bl), centr = T(0.5) * (br + bl);
    // The regular factor of the weight (the far end's power and, for the near end's own
    // logarithm, nothing) goes into the samples; the singular one into the moments.
    const T expo = left ? beta : alpha;
    const bool far_log = left ? log_b : log_a;
    const bool near_log = left ? log_a : log_b;
    auto g = [&](T x, int) {
        const T d = left ? b - x : x - a;
        T v = f(x) * std::pow(d, expo);
        if (far_log) v *= std::log(d);
        return v;
    };
    T cheb12[13], cheb24[25];
    chebyshev_samples(g, centr, hlgth, cheb12, cheb24);
    const T* mom = left ? m.ri : m.rj;
    const T* logmom = left ? m.rg : m.rh;
    T res12, res24, result = 0, abserr = 0;
    moment_sums(cheb12, cheb24, mom, res12, res24);
    if (near_log) {
        const T dc = std::log(br - bl);
        result = res24 * dc;
        abserr = std::abs((res24 - res12) * dc);
        moment_sums(cheb12, cheb24, logmom, res12, res24);
    }
    const T factor = std::pow(hlgth, (left ? alpha : beta) + T(1));
    return chebyshev_out((result + res24) * factor, (abserr + std::abs(res24 - res12)) * factor);
}

}  // namespace

// Solves the tridiagonal system sub(k) x(k-1) + diag(k) x(k) + sup(k) x(k+1) = rhs(k),
// k = 0..n-1, by Gaussian elimination with partial pivoting; x overwrites rhs.
template <class T>
static void tridiagonal(int n, T* sub, T* diag, T* sup, T* rhs) {
    // Row k holds c[k] (sub), d[k] (diag), e[k] (super) and, after a swap, a second
    // super-diagonal f[k].
    T fill[32] = {};
    for (int k = 0; k < n - 1; ++k) {
        if (std::abs(sub[k + 1]) > std::abs(diag[k])) {
            std::swap(sub[k + 1], diag[k]);
            std::swap(diag[k + 1], sup[k]);
            std::swap(sup[k + 1], fill[k]);
            std::swap(rhs[k + 1], rhs[k]);
        }
        if (diag[k] == 0) return;
        const T t = -sub[k + 1] / diag[k];
        diag[k + 1] += t * sup[k];
        sup[k + 1] += t * fill[k];
        rhs[k + 1] += t * rhs[k];
    }
    if (diag[n - 1] == 0) return;
    rhs[n - 1] /= diag[n - 1];
    if (n > 1) rhs[n - 2] = (rhs[n - 2] - sup[n - 2] * rhs[n - 1]) / diag[n - 2];
    for (int k = n - 3; k >= 0; --k) rhs[k] = (rhs[k] - sup[k] * rhs[k + 1] - fill[k] * rhs[k + 2]) / diag[k];
}

// The moments int_{-1}^{1} cos(p x) T_k(x) dx (k even) and sin(p x) T_k(x) dx (k odd),
// k = 0..24, into row[k]. Forward recursion for |p| > 24; below, where it loses accuracy,
// the recurrence is solved as a boundary-value problem with an asymptotic end condition.
template <class T>
void oscillatory_moments(T parint, T row[25]) {
    const int noequ = 25, noeq1 = noequ - 1;
    const T par2 = parint * parint, par22 = par2 + T(2);
    const T sinpar = std::sin(parint), cospar = std::cos(parint);
    T v[28], d[25], d1[25], d2[25];
    // Cosine moments.
    v[0] = T(2) * sinpar / parint;
    v[1] = (T(8) * cospar + (par2 + par2 - T(8)) * sinpar / parint) / par2;
    v[2] = (T(32) * (par2 - T(12)) * cospar + (T(2) * ((par2 - T(80)) * par2 + T(192)) * sinpar) / parint) /
           (par2 * par2);
    T ac = T(8) * cospar, as = T(24) * parint * sinpar;
    if (std::abs(parint) > T(24)) {
        T an = 4;
        for (int i = 3; i < 13; ++i) {
            const T an2 = an * an;
            v[i] = ((an2 - T(4)) * (T(2) * (par22 - an2 - an2) * v[i - 1] - ac) + as -
                    par2 * (an + T(1)) * (an + T(2)) * v[i - 2]) /
                   (par2 * (an - T(1)) * (an - T(2)));
            an += T(2);
        }
    } else {
        T an = 6;
        for (int k = 0; k < noeq1; ++k) {
            const T an2 = an * an;
            d[k] = -T(2) * (an2 - T(4)) * (par22 - an2 - an2);
            d2[k] = (an - T(1)) * (an - T(2)) * par2;
            d1[k + 1] = (an + T(3)) * (an + T(4)) * par2;
            v[k + 3] = as - (an2 - T(4)) * ac;
            an += T(2);
        }
        const T an2 = an * an;
        d[noequ - 1] = -T(2) * (an2 - T(4)) * (par22 - an2 - an2);
        v[noequ + 2] = as - (an2 - T(4)) * ac;
        v[3] -= T(56) * par2 * v[2];
        const T ass = parint * sinpar;
        const T asap = (((((T(210) * par2 - T(1)) * cospar - (T(105) * par2 - T(63)) * ass) / an2 -
                          (T(1) - T(15) * par2) * cospar + T(15) * ass) / an2 - cospar + T(3) * ass) / an2 -
                        cospar) / an2;
        v[noequ + 2] -= T(2) * asap * par2 * (an - T(1)) * (an - T(2));
        d1[0] = 0;
        tridiagonal(noequ, d1, d, d2, v + 3);
    }
    for (int j = 0; j < 13; ++j) row[2 * j] = v[j];
    // Sine moments.
    v[0] = T(2) * (sinpar - parint * cospar) / par2;
    v[1] = (T(18) - T(48) / par2) * sinpar / par2 + (T(-2) + T(48) / par2) * cospar / parint;
    ac = T(-24) * parint * cospar;
    as = T(-8) * sinpar;
    if (std::abs(parint) > T(24)) {
        T an = 3;
        for (int i = 2; i < 12; ++i) {
            const T an2 = an * an;
            v[i] = ((an2 - T(4)) * (T(2) * (par22 - an2 - an2) * v[i - 1] + as) + ac -
                    par2 * (an + T(1)) * (an + T(2)) * v[i - 2]) /
                   (par2 * (an - T(1)) * (an - T(2)));
            an += T(2);
        }
    } else {
        T an = 5;
        for (int k = 0; k < noeq1; ++k) {
            const T an2 = an * an;
            d[k] = -T(2) * (an2 - T(4)) * (par22 - an2 - an2);
            d2[k] = (an - T(1)) * (an - T(2)) * par2;
            d1[k + 1] = (an + T(3)) * (an + T(4)) * par2;
            v[k + 2] = ac + (an2 - T(4)) * as;
            an += T(2);
        }
        const T an2 = an * an;
        d[noequ - 1] = -T(2) * (an2 - T(4)) * (par22 - an2 - an2);
        v[noequ + 1] = ac + (an2 - T(4)) * as;
        v[2] -= T(42) * par2 * v[1];
        const T ass = parint * cospar;
        const T asap = (((((T(105) * par2 - T(63)) * ass + (T(210) * par2 - T(1)) * sinpar) / an2 +
                          (T(15) * par2 - T(1)) * sinpar - T(15) * ass) / an2 - T(3) * ass - sinpar) / an2 -
                        sinpar) / an2;
        v[noequ + 1] -= T(2) * asap * par2 * (an - T(1)) * (an - T(2));
        d1[0] = 0;
        tridiagonal(noequ, d1, d, d2, v + 2);
    }
    for (int j = 0; j < 12; ++j) row[2 * j + 1] = v[j];
}

namespace {

// cos or sin(omega x) on [a, b]: the 15-point rule on f times the weight when the interval
// holds few oscillations, else Clenshaw-Curtis with the moments of bisection level nrmom.
template <class T>
RuleOut<T> oscillatory_rule(Integrand<T>& f, T a, T b, T omega, int weight, int nrmom, bool right_half,
                            Moments<T>& mom) {
    const T centr = T(0.5) * (b + a), hlgth = T(0.5) * (b - a), parint = omega * hlgth;
    if (std::abs(parint) <= T(2)) {
        auto g = [&](T x) { return f(x) * (weight == 1 ? std::cos(omega * x) : std::sin(omega * x)); };
        return kronrod(qk15<T>(), g, a, b);
    }
    const T conc = hlgth * std::cos(centr * omega), cons = hlgth * std::sin(centr * omega);
    // A level's moments are computed once, by the left half that first needs them; the right
    // half uses the same row. Past the last row, each new level overwrites it.
    if (nrmom >= mom.momcom && !right_half) {
        mom.row = mom.momcom;
        oscillatory_moments(parint, mom.chebmo + 25 * mom.row);
    }
    if (nrmom < mom.momcom) mom.row = nrmom;
    if (mom.momcom < mom.maxp1 - 1 && nrmom >= mom.momcom) ++mom.momcom;
    const T* row = mom.chebmo + 25 * mom.row;
    T cheb12[13], cheb24[25];
    chebyshev_samples([&](T x, int) { return f(x); }, centr, hlgth, cheb12, cheb24);
    T resc12 = cheb12[12] * row[12], ress12 = 0;
    for (int k = 10; k >= 0; k -= 2) {
        resc12 += cheb12[k] * row[k];
        ress12 += cheb12[k + 1] * row[k + 1];
    }
    T resc24 = cheb24[24] * row[24], ress24 = 0, resabs = std::abs(cheb24[24]);
    for (int k = 22; k >= 0; k -= 2) {
        resc24 += cheb24[k] * row[k];
        ress24 += cheb24[k + 1] * row[k + 1];
        resabs += std::abs(cheb24[k]) + std::abs(cheb24[k + 1]);
    }
    const T estc = std::abs(resc24 - resc12), ests = std::abs(ress24 - ress12);
    RuleOut<T> r;
    if (weight == 1) {
        r.result = conc * resc24 - cons * ress24;
        r.abserr = std::abs(conc * estc) + std::abs(cons * ests);
    } else {
        r.result = conc * ress24 + cons * resc24;
        r.abserr = std::abs(conc * ests) + std::abs(cons * estc);
    }
    r.resabs = resabs * std::abs(hlgth);
    r.resasc = Mach<T>::huge;
    return r;
}

}  // namespace

template <class T>
Outcome<T> step_qawc(Integrand<T>& f, T a, T b, T c, Tol<T> tol, Lists<T>& w) {
    // Ordered by one comparison, so that a NaN end stays in the interval (and makes the
    // result NaN) instead of collapsing it to a point whose integral is 0.
    const T aa = a < b ? a : b, bb = a < b ? b : a;
    Outcome<T> out;
    const RuleOut<T> r = cauchy_rule(f, aa, bb, c);
    w.alist[0] = aa;
    w.blist[0] = bb;
    w.rlist[0] = r.result;
    w.elist[0] = r.abserr;
    w.iord[0] = 0;  // the subdivision starts from the head of the order list
    out.last = 1;
    out.result = r.result;
    out.abserr = r.abserr;
    out.bad_a = aa;
    out.bad_b = bb;
    const T errbnd = std::max(tol.epsabs, tol.epsrel * std::abs(r.result));
    // The first estimate is accepted only when it is clearly small: the Clenshaw-Curtis
    // estimate on the whole interval is not yet trustworthy.
    const bool done = r.abserr < std::min(T(0.01) * std::abs(r.result), errbnd);
    if (w.limit == 1 && !done) out.ier = limit_reached;
    if (!(done || out.ier == limit_reached)) {
        // The singular point is never a bisection point: the half that holds it is split
        // half-way between it and the far end instead.
        auto split = [c](T a1, T b2) {
            T b1 = T(0.5) * (a1 + b2);
            if (c <= b1 && c > a1) b1 = T(0.5) * (c + b2);
            if (c > b1 && c < b2) b1 = T(0.5) * (a1 + c);
            return b1;
        };
        bisect([&](T lo, T hi) { return cauchy_rule(f, lo, hi, c); }, split, [](T, T) { return true; }, tol, w,
               out);
    }
    if (aa == b) out.result = -out.result;
    return out;
}

template <class T>
Outcome<T> step_qaws(Integrand<T>& f, T a, T b, int weight, T alpha, T beta, Tol<T> tol, Lists<T>& w) {
    const AlgLogMoments<T> m(alpha, beta, weight);
    const T centre = T(0.5) * (b + a);
    auto apply = [&](T lo, T hi) { return alg_log_rule(f, a, b, lo, hi, alpha, beta, weight, m); };
    const RuleOut<T> r1 = apply(a, centre), r2 = apply(centre, b);
    Outcome<T> out;
    out.last = 2;
    out.result = r1.result + r2.result;
    out.abserr = r1.abserr + r2.abserr;
    out.bad_a = a;
    out.bad_b = b;
    const T errbnd = std::max(tol.epsabs, tol.epsrel * std::abs(out.result));
    w.alist[0] = a;
    w.blist[0] = centre;
    w.rlist[0] = r1.result;
    w.elist[0] = r1.abserr;
    w.alist[1] = centre;
    w.blist[1] = b;
    w.rlist[1] = r2.result;
    w.elist[1] = r2.abserr;
    const bool right_larger = r2.abserr > r1.abserr;
    w.iord[0] = right_larger ? 1 : 0;
    w.iord[1] = right_larger ? 0 : 1;
    if (w.limit == 2 && out.abserr > errbnd) out.ier = limit_reached;
    if (out.abserr <= errbnd || out.ier == limit_reached) return out;
    // Intervals at the singular ends never count towards roundoff: their estimates come from
    // the moments and do not shrink like those of the Kronrod rule.
    bisect(apply, midpoint<T>, [a, b](T a1, T b2) { return a1 != a && b2 != b; }, tol, w, out);
    return out;
}

template <class T>
Outcome<T> step_qawo(Integrand<T>& f, T a, T b, T omega, int weight, Tol<T> tol, Lists<T>& w,
                     Moments<T>& mom, bool reuse_moments) {
    const T epmach = Mach<T>::eps;
    const T domega = std::abs(omega);
    if (!reuse_moments) mom.momcom = 0;
    Outcome<T> out;
    const RuleOut<T> r = oscillatory_rule(f, a, b, domega, weight, 0, false, mom);
    w.alist[0] = a;
    w.blist[0] = b;
    w.rlist[0] = r.result;
    w.elist[0] = r.abserr;
    w.level[0] = 0;
    out.last = 1;
    out.result = r.result;
    out.abserr = r.abserr;
    out.bad_a = a;
    out.bad_b = b;
    const T defabs = r.resabs, dres = std::abs(r.result);
    T errbnd = std::max(tol.epsabs, tol.epsrel * dres);
    int ier = 0;
    if (r.abserr <= T(100) * epmach * defabs && r.abserr > errbnd) ier = roundoff;
    if (w.limit == 1 && r.abserr > errbnd) ier = limit_reached;
    const T sign = (weight == 2 && omega < 0) ? T(-1) : T(1);
    if (ier != 0 || r.abserr <= errbnd) {
        out.ier = ier;
        out.result *= sign;
        return out;
    }
    Extrapolation<T> x;
    x.result = r.result;
    T errmax = r.abserr, area = r.result, errsum = r.abserr, erlarg = 0;
    int maxerr = 0, nrmax = 1;
    Roundoff<T> ro;
    bool extrap = false, extall = false;
    T small = std::abs(b - a) * T(0.75);
    if (T(0.5) * std::abs(b - a) * domega > T(2)) {
        extall = true;
        x.seed(r.result);
    }
    if (T(0.25) * std::abs(b - a) * domega <= T(2)) extall = true;
    int last = 1;
    bool summed = false;
    while (last < w.limit && w.reserve(last)) {
        const int nrmom = w.level[maxerr] + 1;
        const T a1 = w.alist[maxerr], b1 = T(0.5) * (w.alist[maxerr] + w.blist[maxerr]);
        const T a2 = b1, b2 = w.blist[maxerr];
        const T erlast = errmax;
        const RuleOut<T> r1 = oscillatory_rule(f, a1, b1, domega, weight, nrmom, false, mom);
        const RuleOut<T> r2 = oscillatory_rule(f, a2, b2, domega, weight, nrmom, true, mom);
        ++last;
        const T area12 = r1.result + r2.result, erro12 = r1.abserr + r2.abserr;
        errsum = errsum + erro12 - errmax;
        area = area + area12 - w.rlist[maxerr];
        ro.count(r1, r2, w.rlist[maxerr], area12, erro12, errmax, last, extrap);
        w.level[maxerr] = nrmom;
        w.level[last - 1] = nrmom;
        errbnd = std::max(tol.epsabs, tol.epsrel * std::abs(area));
        if (ro.too_many()) ier = roundoff;
        if (ro.iroff2 >= 5) x.ierro = 3;
        if (last == w.limit) ier = limit_reached;
        if (too_small(a1, a2, b2)) ier = extrapolation_roundoff;
        out.bad_a = a1;
        out.bad_b = b2;
        store_halves(w, maxerr, last - 1, a1, b1, r1.result, r1.abserr, a2, b2, r2.result, r2.abserr, maxerr,
                     errmax, nrmax);
        if (errsum <= errbnd) {
            summed = true;
            break;
        }
        if (ier != 0) break;
        bool extrapolate_now = false;
        if (last == 2 && extall) {
            small *= T(0.5);
            x.seed(area);
            x.ertest = errbnd;
            erlarg = errsum;
            continue;
        }
        if (x.noext) continue;
        if (extall) {
            erlarg -= erlast;
            if (std::abs(b1 - a1) > small) erlarg += erro12;
            if (extrap) extrapolate_now = true;
        }
        if (!extrapolate_now) {
            // Extrapolation starts when the interval to bisect next is small, and only once
            // its halves hold few oscillations.
            const T width = std::abs(w.blist[maxerr] - w.alist[maxerr]);
            if (width > small) continue;
            if (!extall) {
                small *= T(0.5);
                if (T(0.25) * width * domega > T(2)) continue;
                extall = true;
                x.ertest = errbnd;
                erlarg = errsum;
                continue;
            }
            extrap = true;
            nrmax = 2;
        }
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
    return x.conclude(out, ier, area, errsum, dres, defabs, summed, w, sign);
}

template <class T>
Outcome<T> step_qawf(Integrand<T>& f, T a, T omega, int weight, T epsabs, int max_cycles, Lists<T>& w,
                     Moments<T>& mom) {
    Outcome<T> out;
    if (omega == 0) {
        // cos(0 x) = 1: an ordinary infinite-range integral; sin(0 x) = 0.
        if (weight == 1) return step_qagi(f, a, 1, Tol<T>{epsabs, T(0)}, w);
        return out;
    }
    const T pi = T(3.14159265358979323846264338327950288L);
    const T p = T(0.9), p1 = T(1) - p;
    const T domega = std::abs(omega);
    const T l = std::floor(domega);  // QUADPACK takes the integer part of |omega|
    const T cycle = (T(2) * l + T(1)) * pi / domega;
    T eps = epsabs > Mach<T>::tiny / p1 ? epsabs * p1 : epsabs;
    const T ep = eps;
    T fact = 1, correc = 0, errsum = 0, abserr = 0, drl = 0, c1 = a, c2 = cycle + a;
    Epsilon<T> ext;
    T* psum = ext.epstab;
    int numrl2 = 0, ktmin = 0, ier = 0, ll = 0;
    bool direct = false;  // the partial sum is the answer
    for (int lst = 1; lst <= max_cycles; ++lst) {
        const Outcome<T> cyc = step_qawo(f, c1, c2, omega, weight, Tol<T>{eps * fact, T(0)}, w, mom, lst > 1);
        out.last = std::max(out.last, cyc.last);
        fact *= p;
        errsum += cyc.abserr;
        drl = T(50) * std::abs(cyc.result);
        if (errsum + drl <= epsabs && lst >= 6) {
            direct = true;
            break;
        }
        correc = std::max(correc, cyc.abserr);
        if (cyc.ier != 0) {
            eps = std::max(ep, correc * p1);
            ier = cycle_trouble;
            out.bad_a = c1;
            out.bad_b = c2;
        }
        if (ier == cycle_trouble && errsum + drl <= correc * T(10) && lst > 5) {
            direct = true;
            break;
        }
        ++numrl2;
        if (lst == 1) {
            psum[0] = cyc.result;
        } else {
            psum[numrl2 - 1] = psum[ll - 1] + cyc.result;
            if (lst > 2) {
                if (lst == max_cycles) ier = cycle_limit;
                ext.n = numrl2;
                T reseps, abseps;
                ext.extrapolate(reseps, abseps);
                numrl2 = ext.n;
                ++ktmin;
                if (ktmin >= 15 && abserr <= T(1e-3) * (errsum + drl)) ier = extrapolation_roundoff;
                if (!(abseps > abserr && lst != 3)) {
                    abserr = abseps;
                    out.result = reseps;
                    ktmin = 0;
                    if (abserr + T(10) * correc <= epsabs || (abserr <= epsabs && T(10) * correc >= epsabs))
                        break;
                }
                if (ier != 0 && ier != cycle_trouble) break;
            }
        }
        ll = numrl2;
        c1 = c2;
        c2 += cycle;
    }
    if (!direct) {
        abserr += T(10) * correc;
        out.abserr = abserr;
        out.ier = ier;
        if (ier == 0) return out;
        const T last_sum = psum[numrl2 - 1];
        if (out.result != 0 && last_sum != 0) {
            if (!(abserr / std::abs(out.result) > (errsum + drl) / std::abs(last_sum))) {
                if (ier != cycle_trouble) out.abserr += drl;
                return out;
            }
        } else if (!(abserr > errsum)) {
            return out;
        }
    }
    out.result = psum[numrl2 - 1];
    out.abserr = errsum + drl;
    out.ier = ier;
    return out;
}

#define QNUM_INSTANTIATE(T)                                                                              \
    template Outcome<T> step_qawc(Integrand<T>&, T, T, T, Tol<T>, Lists<T>&);                     \
    template Outcome<T> step_qaws(Integrand<T>&, T, T, int, T, T, Tol<T>, Lists<T>&);             \
    template Outcome<T> step_qawo(Integrand<T>&, T, T, T, int, Tol<T>, Lists<T>&, Moments<T>&,    \
                                  bool);                                                                 \
    template Outcome<T> step_qawf(Integrand<T>&, T, T, int, T, int, Lists<T>&, Moments<T>&);      \
    template void oscillatory_moments(T, T*);
QNUM_INSTANTIATE(float)
QNUM_INSTANTIATE(double)
#undef QNUM_INSTANTIATE

}  // namespace qnum::quadrature
