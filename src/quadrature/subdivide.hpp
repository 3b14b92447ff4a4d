// Pieces shared by the adaptive steps: the error ordering, the epsilon algorithm, the test for
// a subinterval too small to split, and the bookkeeping of one bisection.
#pragma once

#include <algorithm>
#include <cmath>

#include "quadrature/steps.hpp"

namespace qnum::quadrature {

// Keeps iord (positions 1..last, 1-based positions, 0-based list indices) in decreasing order
// of elist after a bisection that changed the errors of the lists' entries `hi` and `lo`
// (elist[hi] >= elist[lo]). Only the positions that the remaining bisections can still reach
// are kept sorted: near the limit the tail is dropped. nrmax is the 1-based position of the
// interval to bisect next; on return maxerr and ermax name it.
template <class T>
void sort_errors(int limit, int last, int hi, int lo, int& maxerr, T& ermax, const T* elist, int* iord,
                 int& nrmax) {
    int* ord = iord - 1;  // 1-based positions
    if (last <= 2) {
        ord[1] = hi;
        ord[2] = lo;
    } else {
        const T errmax = elist[hi];
        // An extrapolating step may have raised nrmax; the grown error may belong higher up.
        while (nrmax > 1) {
            const int isucc = ord[nrmax - 1];
            if (errmax <= elist[isucc]) break;
            ord[nrmax] = isucc;
            --nrmax;
        }
        const int jupbn = last > limit / 2 + 2 ? limit + 3 - last : last;
        const T errmin = elist[lo];
        const int jbnd = jupbn - 1;
        int i = nrmax + 1;
        for (; i <= jbnd; ++i) {
            const int isucc = ord[i];
            if (errmax >= elist[isucc]) break;
            ord[i - 1] = isucc;
        }
        if (i > jbnd) {
            ord[jbnd] = hi;
            ord[jupbn] = lo;
        } else {
            ord[i - 1] = hi;
            int k = jbnd;
            bool placed = false;
            for (int j = i; j <= jbnd; ++j) {
                const int isucc = ord[k];
                if (errmin < elist[isucc]) {
                    ord[k + 1] = lo;
                    placed = true;
                    break;
                }
                ord[k + 1] = isucc;
                --k;
            }
            if (!placed) ord[i] = lo;
        }
    }
    maxerr = ord[nrmax];
    ermax = elist[maxerr];
}

// Stores the halves of the bisected interval maxerr: the left one in its slot, the right one
// at `last` (0-based), and re-sorts.
template <class T>
void store_halves(Lists<T>& w, int maxerr_slot, int last, T a1, T b1, T area1, T error1, T a2,
                  T b2, T area2, T error2, int& maxerr, T& errmax, int& nrmax) {
    w.alist[maxerr_slot] = a1;
    w.blist[maxerr_slot] = b1;
    w.rlist[maxerr_slot] = area1;
    w.elist[maxerr_slot] = error1;
    w.alist[last] = a2;
    w.blist[last] = b2;
    w.rlist[last] = area2;
    w.elist[last] = error2;
    // Ties keep the left half first, so equal errors are bisected from left to right.
    const bool right_larger = error2 > error1;
    sort_errors(w.limit, last + 1, right_larger ? last : maxerr_slot, right_larger ? maxerr_slot : last,
                maxerr, errmax, w.elist, w.iord, nrmax);
}

// True when [a1, b2] with midpoint a2 can no longer be split in this precision.
template <class T>
bool too_small(T a1, T a2, T b2) {
    // (1 + 1000 c eps)(|midpoint| + 10000 u) with c = 0.1: two orders of magnitude above the
    // spacing of the numbers, and clear of the underflow threshold near zero.
    const T grow = T(1) + T(100) * Mach<T>::eps, floor = T(10000) * Mach<T>::tiny;
    const T tmp = grow * (std::abs(a2) + floor);
    return std::abs(a1) <= tmp && std::abs(b2) <= tmp;
}

template <class T>
T sum_list(const T* r, int n) {
    T s = 0;
    for (int k = 0; k < n; ++k) s += r[k];
    return s;
}

// The epsilon algorithm (P. Wynn, 1956) on the sequence epstab[0..n-1], in the form that keeps
// only the last diagonal of the table: returns the extrapolated limit and an error estimate
// from the last three results. epstab holds 52 entries, res3la the last three limits.
template <class T>
struct Epsilon {
    T epstab[52];
    T res3la[3];
    int n = 0;      // entries in epstab
    int nres = 0;   // extrapolations performed

    void extrapolate(T& result, T& abserr);
};

// The extrapolation of the extrapolating steps: after each round of refinement the total of
// the lists joins a sequence whose limit the epsilon algorithm estimates, and the best limit
// so far is kept. The steps seed the sequence with their first totals (`seed`).
template <class T>
struct Extrapolation {
    Epsilon<T> table;
    T result = 0;
    T abserr = Mach<T>::huge;  // of the best limit; huge until one is found
    T correc = 0;              // the error over the large intervals when it was found
    T ertest = 0;              // the tolerance the limit must meet
    int ktmin = 0;             // extrapolations since the limit last improved
    int ierro = 0;             // 3: roundoff seen while extrapolating
    bool noext = false;        // the table collapsed: no more extrapolation

    void seed(T total) { table.epstab[table.n++] = total; }

    // The total `area` joins the sequence; from its third member on, a new limit is formed and
    // kept when its estimate is smaller. True when the step should end: the limit meets the
    // tolerance, or the sequence diverges (ier = divergent).
    bool add(T area, T errsum, T erlarg, Tol<T> tol, int& ier) {
        seed(area);
        if (table.n < 3) return false;
        T reseps, abseps;
        table.extrapolate(reseps, abseps);
        ++ktmin;
        if (ktmin > 5 && abserr < T(1e-3) * errsum) ier = divergent;
        if (abseps < abserr) {
            ktmin = 0;
            abserr = abseps;
            result = reseps;
            correc = erlarg;
            ertest = std::max(tol.epsabs, tol.epsrel * std::abs(reseps));
            if (abserr <= ertest) return true;
        }
        if (table.n == 1) noext = true;
        return ier == divergent;
    }

    // The end of the step, unless the plain sum met the tolerance (`summed`): the extrapolated
    // limit when it is the better estimate, else the sum of the lists. `ier` is the loop's
    // outcome; dres and defabs are |integral| and integral of |f| of the first rule, and the
    // result is multiplied by `sign`.
    Outcome<T> conclude(Outcome<T> out, int ier, T area, T errsum, T dres, T defabs, bool summed,
                        const Lists<T>& w, T sign) const {
        if (!summed && abserr != Mach<T>::huge) {
            T err = abserr;
            bool use_sum = false, plain = false;
            if (ier + ierro != 0) {
                if (ierro == 3) err += correc;
                if (ier == 0) ier = bad_behaviour;  // renumbered below to roundoff
                if (result != 0 && area != 0) use_sum = err / std::abs(result) > errsum / std::abs(area);
                else if (err > errsum) use_sum = true;
                else if (area == 0) plain = true;
            }
            if (!use_sum) {
                // An integrand of one sign whose limit and sum disagree in size: divergence.
                const bool one_sign = dres >= (T(1) - T(50) * Mach<T>::eps) * defabs;
                if (!plain && (one_sign || !(std::max(std::abs(result), std::abs(area)) <= defabs * T(0.01)))) {
                    if (T(0.01) > result / area || result / area > T(100) || errsum > std::abs(area)) ier = 6;
                }
                out.ier = ier > 2 ? ier - 1 : ier;
                out.result = result * sign;
                out.abserr = err;
                return out;
            }
        }
        out.result = sum_list(w.rlist, out.last) * sign;
        out.abserr = sum_list(w.elist, out.last);
        out.ier = ier > 2 ? ier - 1 : ier;
        return out;
    }
};

// Moves nrmax down the error ordering to the first interval that is still `large` (a
// predicate of its list index), within the positions the remaining bisections can reach;
// false when there is none. On return maxerr and errmax name the interval at nrmax.
template <class T, class Large>
bool next_large(const Lists<T>& w, int last, int& nrmax, int& maxerr, T& errmax, Large&& large) {
    const int jupbnd = last > 2 + w.limit / 2 ? w.limit + 3 - last : last;
    for (int k = nrmax; k <= jupbnd; ++k) {
        maxerr = w.iord[nrmax - 1];
        errmax = w.elist[maxerr];
        if (large(maxerr)) return true;
        ++nrmax;
    }
    return false;
}

// Bisection without extrapolation, continuing from lists that hold out.last intervals in
// order (out.result and out.abserr their totals): bisect the interval with the largest error
// at split(a, b), until the total error meets the tolerance or a limit is hit. The roundoff
// counters skip pairs in which a half's error equals its deviation integral (an estimate
// that says nothing about roundoff) and intervals for which counts(a, b) is false.
template <class T, class Apply, class Split, class Counts>
void bisect(Apply&& apply, Split&& split, Counts&& counts, Tol<T> tol, Lists<T>& w, Outcome<T>& out) {
    int last = out.last, maxerr = w.iord[0], nrmax = 1, iroff1 = 0, iroff2 = 0;
    T errmax = w.elist[maxerr], area = out.result, errsum = out.abserr;
    while (last < w.limit && w.reserve(last)) {
        const T a1 = w.alist[maxerr], b2 = w.blist[maxerr];
        const T b1 = split(a1, b2), a2 = b1;
        const RuleOut<T> r1 = apply(a1, b1), r2 = apply(a2, b2);
        ++last;
        const T area12 = r1.result + r2.result, erro12 = r1.abserr + r2.abserr;
        errsum = errsum + erro12 - errmax;
        area = area + area12 - w.rlist[maxerr];
        if (counts(a1, b2) && r1.resasc != r1.abserr && r2.resasc != r2.abserr) {
            if (std::abs(w.rlist[maxerr] - area12) <= T(1e-5) * std::abs(area12) && erro12 >= T(0.99) * errmax)
                ++iroff1;
            if (last > 10 && erro12 > errmax) ++iroff2;
        }
        const T errbnd = std::max(tol.epsabs, tol.epsrel * std::abs(area));
        if (errsum > errbnd) {
            if (iroff1 >= 6 || iroff2 >= 20) out.ier = roundoff;
            if (last == w.limit) out.ier = limit_reached;
            if (too_small(a1, a2, b2)) out.ier = bad_behaviour;
        }
        out.bad_a = a1;
        out.bad_b = b2;
        store_halves(w, maxerr, last - 1, a1, b1, r1.result, r1.abserr, a2, b2, r2.result, r2.abserr, maxerr,
                     errmax, nrmax);
        if (out.ier != converged || errsum <= errbnd) break;
    }
    // The totals from the lists: the running sums carry the rounding of every update.
    out.result = sum_list(w.rlist, last);
    out.abserr = sum_list(w.elist, last);
    out.last = last;
}

template <class T>
T midpoint(T a, T b) {
    return T(0.5) * (a + b);
}

}  // namespace qnum::quadrature
