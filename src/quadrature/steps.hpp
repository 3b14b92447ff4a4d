// The integration steps of the adaptive quadrature family: subdivision with and without
// extrapolation, the weighted variants and the non-adaptive rule.
#pragma once

#include "quadrature/rules.hpp"

namespace qnum::quadrature {

// Outcome codes of a step: 0 converged, 1 subinterval limit, 2 roundoff, 3 bad integrand
// behaviour in a subinterval, 4 roundoff in the extrapolation table, 5 divergent or slowly
// convergent integral, 6 subinterval limit in a cycle of a Fourier integral, 7 bad behaviour
// within cycles of a Fourier integral.
enum Ier : int {
    converged = 0,
    limit_reached = 1,
    roundoff = 2,
    bad_behaviour = 3,
    extrapolation_roundoff = 4,
    divergent = 5,
    cycle_limit = 6,
    cycle_trouble = 7,
};

// Subinterval lists of one call: end points, integrals and errors, the ordering by decreasing
// error (indices into the lists) and a per-interval integer (bisection level or moment level).
// They start in a few entries of the caller's frame and move to the heap, at their full
// length `limit`, only when a step needs more: most cheap integrals never subdivide.
template <class T>
struct Lists {
    T* alist;
    T* blist;
    T* rlist;
    T* elist;
    int* iord;
    int* level;
    int limit;
    int room;                       // entries usable now (blist holds one more)
    bool (*grow)(Lists&, void*);    // to the full length; false when that fails (201 raised)
    void* owner;

    // Room for entry n (0-based); false when the lists cannot grow.
    bool reserve(int n) { return n < room || grow(*this, owner); }
};

template <class T>
struct Outcome {
    T result = 0;
    T abserr = 0;
    int ier = converged;
    int last = 0;      // subintervals in the lists
    T bad_a = 0;       // the subinterval where the trouble was seen
    T bad_b = 0;
};

// Tolerances shared by every step.
template <class T>
struct Tol {
    T epsabs;
    T epsrel;
};

template <class T>
Outcome<T> step_qag(Integrand<T>& f, T a, T b, Tol<T> tol, int rule, Lists<T>& w);
template <class T>
Outcome<T> step_qags(Integrand<T>& f, T a, T b, Tol<T> tol, Lists<T>& w);
// interval code -1: (-inf, bound], 1: [bound, +inf), 2: the whole line.
template <class T>
Outcome<T> step_qagi(Integrand<T>& f, T bound, int inf, Tol<T> tol, Lists<T>& w);
// points: npoints interior break points, in any order (copied, not changed).
template <class T>
Outcome<T> step_qagp(Integrand<T>& f, T a, T b, int npoints, const T* points, Tol<T> tol,
                     Lists<T>& w);
template <class T>
Outcome<T> step_qawc(Integrand<T>& f, T a, T b, T c, Tol<T> tol, Lists<T>& w);
// weight 1..4: (x-a)^alpha (b-x)^beta times 1, log(x-a), log(b-x), log(x-a) log(b-x).
template <class T>
Outcome<T> step_qaws(Integrand<T>& f, T a, T b, int weight, T alpha, T beta, Tol<T> tol,
                     Lists<T>& w);
template <class T>
Outcome<T> step_qng(Integrand<T>& f, T a, T b, Tol<T> tol);

// Chebyshev moments of cos and sin(omega x) on the bisection levels of one oscillatory
// integral, kept between the cycles of a Fourier integral (all levels have equal lengths).
template <class T>
struct Moments {
    T* chebmo;     // maxp1 rows of 25
    int maxp1;
    int momcom = 0;  // rows computed so far
    int row = 0;     // the row the last Clenshaw-Curtis application used
};

// The Chebyshev moments int_{-1}^{1} cos(p x) T_k(x) dx (k even) and sin(p x) T_k(x) dx
// (k odd), k = 0..24, into row[k] (|p| > 2).
template <class T>
void oscillatory_moments(T parint, T row[25]);

// weight 1: cos(omega x), 2: sin(omega x).
template <class T>
Outcome<T> step_qawo(Integrand<T>& f, T a, T b, T omega, int weight, Tol<T> tol, Lists<T>& w,
                     Moments<T>& mom, bool reuse_moments);
// The Fourier integral over [a, +inf): QAWO on cycles of length (2k+1) pi / |omega|, summed
// and extrapolated. Tolerance is absolute only.
template <class T>
Outcome<T> step_qawf(Integrand<T>& f, T a, T omega, int weight, T epsabs, int max_cycles,
                     Lists<T>& w, Moments<T>& mom);

}  // namespace qnum::quadrature
