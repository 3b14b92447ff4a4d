// Real zeros of a user function: Mueller's method on the deflated function, one zero after
// another (D. E. Muller, "A method for solving algebraic equations using an automatic
// computer", MTAC 10 (1956) 208-215; the deflation and step control follow the classic
// real-arithmetic form of the method).
#include "zeros/zeros_fcn.hpp"

#include <cmath>

#include "frame/prec.hpp"

namespace qnum::zeros {
namespace {

template <class T>
struct Settings {
    T err_abs, err_rel, eta, eps;
    int num_roots = 1;
    int itmax = 100;
};

// f(x) divided by (x - z) for every earlier zero z. An x within eps of an earlier zero is
// moved by eta and f evaluated there instead: such a point says nothing new about the
// function, and dividing by the tiny distance would swamp the value. Returns the deflated
// value; fx receives f itself.
template <class T>
T evaluate(const UserFcn<T>& f, const Settings<T>& s, const T* found, int nfound, T& x, T& fx) {
    // Pushes one eta at a time are what the iteration expects; an eps many etas wide (1e300
    // with the default eta) would take forever that way, so after a few pushes x steps
    // straight to the edge of the neighbourhood it is in.
    constexpr int single_pushes = 64;
    for (int pushes = 0;; ++pushes) {
        fx = f(x);
        T deflated = fx;
        int j = 0;
        for (; j < nfound; ++j) {
            if (std::abs(x - found[j]) < s.eps) break;
            deflated /= x - found[j];
        }
        // A push that cannot move x (eta = 0, or too small for x's size) would never end.
        if (j == nfound || x + s.eta == x) return deflated;
        const T edge = found[j] + (s.eta > 0 ? s.eps : -s.eps);
        if (pushes >= single_pushes && (s.eta > 0 ? edge > x : edge < x)) {
            x = edge;
        } else {
            x += s.eta;
        }
    }
}

// One zero, starting from `guess`. Returns the number of evaluations used, or itmax + 1 when
// the iteration did not converge; x receives the zero (or the last iterate).
template <class T>
int one_zero(const UserFcn<T>& f, const Settings<T>& s, const T* found, int nfound, T guess,
             T& x) {
    const T start[3] = {guess != 0 ? T(0.9) * guess : T(-1), guess != 0 ? T(1.1) * guess : T(1),
                        guess};
    x = start[0];
    T f1 = 0, f2 = 0, f3 = 0, lambda = 0, h = 0;
    for (int k = 1; k < s.itmax; ++k) {
        T fx;
        const T fd = evaluate(f, s, found, nfound, x, fx);
        if (std::abs(fx) < s.err_abs && std::abs(fd) < s.err_abs) return k;
        if (k == 1) {
            f1 = fd;
            x = start[1];
            continue;
        }
        if (k == 2) {
            f2 = fd;
            x = start[2];
            continue;
        }
        if (k == 3) {
            // The three starting points are spaced so that the last step is -0.5 times the one
            // before it.
            lambda = T(-0.5);
            h = guess != 0 ? T(-0.1) * guess : T(-1);
        } else if (T(10) * std::abs(f3) <= std::abs(fd)) {
            // The deflated value grew tenfold: the step overshot, so go back half of it and
            // evaluate again before another parabola is fitted.
            lambda /= 2;
            h /= 2;
            x -= h;
            continue;
        } else {
            f1 = f2;
            f2 = f3;
        }
        f3 = fd;
        // Mueller step: the parabola through the last three points, in the step ratio lambda.
        // A negative discriminant is dropped (s = 0) so the iterates stay real; the sign is
        // chosen to make the denominator larger in magnitude, which picks the root of the
        // parabola nearer the newest point.
        const T delta = lambda + 1;
        const T g = (delta + lambda) * f3 + lambda * lambda * f1 - delta * delta * f2;
        const T disc = g * g - 4 * f3 * delta * lambda * (f3 + lambda * f1 - delta * f2);
        const T root = disc > 0 ? std::sqrt(disc) : T(0);
        T den = g + root;
        if (std::abs(g + root) <= std::abs(g - root)) den = g - root;
        if (den == 0) den = 1;
        lambda = -2 * f3 * delta / den;
        h *= lambda;
        x += h;
        if (std::abs(h) < std::abs(x) * s.err_rel) return k;
    }
    return s.itmax + 1;
}

}  // namespace

template <class T>
T* zeros_fcn(T (*fcn)(T), frame::Options opt) {
    const T tol = std::sqrt(Prec<T>::eps());
    Settings<T> s{tol, tol, T(0.01), tol};
    UserFcn<T> f;
    f.plain = fcn;
    const T* xguess = nullptr;
    int* info_user = nullptr;
    int** info_address = nullptr;
    frame::Out<T> zeros;
    while (int code = opt.next()) {
        switch (code) {
        case QNUM_ERR_ABS: s.err_abs = static_cast<T>(opt.get<double>()); break;
        case QNUM_ERR_REL: s.err_rel = static_cast<T>(opt.get<double>()); break;
        case QNUM_ETA: s.eta = static_cast<T>(opt.get<double>()); break;
        case QNUM_EPS: s.eps = static_cast<T>(opt.get<double>()); break;
        case QNUM_ERR_ABS_ADR:
            if (T* p = opt.ptr<T>("err_abs", "QNUM_ERR_ABS_ADR")) s.err_abs = *p;
            break;
        case QNUM_ERR_REL_ADR:
            if (T* p = opt.ptr<T>("err_rel", "QNUM_ERR_REL_ADR")) s.err_rel = *p;
            break;
        case QNUM_ETA_ADR:
            if (T* p = opt.ptr<T>("eta", "QNUM_ETA_ADR")) s.eta = *p;
            break;
        case QNUM_EPS_ADR:
            if (T* p = opt.ptr<T>("eps", "QNUM_EPS_ADR")) s.eps = *p;
            break;
        case QNUM_NUM_ROOTS: s.num_roots = opt.get<int>(); break;
        case QNUM_MAX_EVALS: s.itmax = opt.get<int>(); break;
        case QNUM_XGUESS: xguess = opt.ptr<T>("xguess", "QNUM_XGUESS"); break;
        // The counts go to one place: of QNUM_INFO_USER and QNUM_INFO, the later one wins.
        case QNUM_INFO_USER:
            info_user = opt.ptr<int>("info", "QNUM_INFO_USER");
            info_address = nullptr;
            break;
        case QNUM_INFO:
            info_address = opt.ptr<int*>("info", "QNUM_INFO");
            info_user = nullptr;
            break;
        case QNUM_RETURN_USER:
            if (T* p = opt.ptr<T>("zeros", "QNUM_RETURN_USER")) zeros.borrow(p);
            break;
        case QNUM_FCN_W_DATA:
            f.with_data = opt.get<T (*)(T, void*)>();
            f.data = opt.get<void*>();
            if (f.with_data == nullptr) {
                frame::raise(frame::Type::Terminal, err::null_option_pointer, frame::Str{"fcn"},
                             frame::Str{"QNUM_FCN_W_DATA"});
            }
            break;
        default: opt.unknown(code);
        }
    }
    if (f.with_data == nullptr) check::array(reinterpret_cast<const void*>(fcn), "fcn");
    check::positive(s.num_roots, "num_roots");
    check::positive(s.itmax, "itmax");
    // A zero that does not converge counts itmax + 1 evaluations, which must fit in an int;
    // one evaluation fewer out of 2^31 changes nothing anyone can wait for.
    if (s.itmax == 2147483647) s.itmax = 2147483646;
    if (frame::pending()) return nullptr;

    // A few guesses and counts live on the stack: most calls ask for one zero, and two heap
    // round trips would cost as much as the evaluations.
    const int n = s.num_roots;
    constexpr int on_stack = 8;
    T local_guesses[on_stack] = {};
    int local_counts[on_stack];
    frame::Buffer<T> guesses;
    if (xguess == nullptr) {
        if (n > on_stack) {
            guesses = frame::Buffer<T>(n, "num_roots");
            if (!guesses) return nullptr;
            for (int i = 0; i < n; ++i) guesses[i] = 0;
        }
        xguess = n > on_stack ? guesses.get() : local_guesses;
    }
    frame::Out<int> counts;
    if (info_user != nullptr) {
        counts.borrow(info_user);
    } else if (info_address == nullptr && n <= on_stack) {
        counts.borrow(local_counts);
    }
    if (!counts.ensure(n, "num_roots") || !zeros.ensure(n, "num_roots")) return nullptr;

    for (int i = 0; i < n; ++i) {
        T x;
        counts[i] = one_zero(f, s, zeros.get(), i, xguess[i], x);
        zeros[i] = x;
        if (counts[i] == s.itmax + 1) {
            frame::raise(frame::Type::Warning, err::zero_not_converged, frame::Int{s.itmax},
                         frame::Int{i + 1});
        }
    }
    // A terminal error raised from inside the user's function makes the results unusable.
    if (context()->status[0] == static_cast<int>(frame::Type::Terminal)) return nullptr;
    if (info_address != nullptr) *info_address = counts.release();
    return zeros.release();
}

template float* zeros_fcn(float (*)(float), frame::Options);
template double* zeros_fcn(double (*)(double), frame::Options);

}  // namespace qnum::zeros
