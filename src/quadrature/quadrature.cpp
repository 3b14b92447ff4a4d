// Workers of the adaptive quadrature routines: each reads its options, checks its arguments,
// and hands its step to one driver that checks the tolerances, allocates the subinterval
// lists, runs the step, returns the counts and maps the outcome to errors.
#include "quadrature/quadrature.hpp"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "frame/prec.hpp"
#include "quadrature/steps.hpp"

namespace qnum::quadrature {

namespace {

using frame::Int;
using frame::Real;
using frame::Str;
using frame::Type;

// Which options a routine takes beyond the tolerances and the error estimate.
enum Accepts : unsigned {
    takes_rule = 1u << 0,
    takes_lists = 1u << 1,  // max_subinter, counts, caller's lists
    takes_moments = 1u << 2,
    takes_cycles = 1u << 3,
};

template <class T>
struct Settings {
    T err_abs = Mach<T>::root_eps;
    T err_rel = Mach<T>::root_eps;
    int rule = 2;
    int max_subinter = 500;
    int max_moments = 21;
    int max_cycles = 50;
    T* err_est = nullptr;
    int* n_subinter = nullptr;
    int* n_evals = nullptr;
    T* err_list = nullptr;
    int* order_list = nullptr;
    Integrand<T> fcn;
};

// Reads the option list; an option the routine does not take is unknown (TERMINAL 103).
template <class T>
void read_options(Settings<T>& s, frame::Options& opt, unsigned accepts) {
    while (int code = opt.next()) {
        const bool lists = accepts & takes_lists;
        switch (code) {
        case QNUM_ERR_ABS: s.err_abs = static_cast<T>(opt.get<double>()); continue;
        case QNUM_ERR_REL: s.err_rel = static_cast<T>(opt.get<double>()); continue;
        case QNUM_ERR_ABS_ADR:
            if (T* p = opt.ptr<T>("err_abs", "QNUM_ERR_ABS_ADR")) s.err_abs = *p;
            continue;
        case QNUM_ERR_REL_ADR:
            if (T* p = opt.ptr<T>("err_rel", "QNUM_ERR_REL_ADR")) s.err_rel = *p;
            continue;
        case QNUM_ERR_EST: s.err_est = opt.ptr<T>("err_est", "QNUM_ERR_EST"); continue;
        case QNUM_N_EVALS: s.n_evals = opt.ptr<int>("n_evals", "QNUM_N_EVALS"); continue;
        case QNUM_FCN_W_DATA:
            s.fcn.with_data = opt.get<T (*)(T, void*)>();
            s.fcn.data = opt.get<void*>();
            s.fcn.plain = nullptr;  // a null function here is a missing integrand, not a fallback
            continue;
        case QNUM_RULE:
            if (!(accepts & takes_rule)) break;
            s.rule = opt.get<int>();
            continue;
        case QNUM_MAX_SUBINTER:
            if (!lists) break;
            s.max_subinter = opt.get<int>();
            continue;
        case QNUM_N_SUBINTER:
            if (!lists) break;
            s.n_subinter = opt.ptr<int>("n_subinter", "QNUM_N_SUBINTER");
            continue;
        case QNUM_ERR_LIST_USER:
            if (!lists) break;
            s.err_list = opt.ptr<T>("err_list", "QNUM_ERR_LIST_USER");
            continue;
        case QNUM_ORDER_LIST_USER:
            if (!lists) break;
            s.order_list = opt.ptr<int>("order_list", "QNUM_ORDER_LIST_USER");
            continue;
        case QNUM_MAX_MOMENTS:
            if (!(accepts & takes_moments)) break;
            s.max_moments = opt.get<int>();
            continue;
        case QNUM_MAX_CYCLES:
            if (!(accepts & takes_cycles)) break;
            s.max_cycles = opt.get<int>();
            continue;
        default: break;
        }
        opt.unknown(code);
    }
}

// Options, then the checks every worker makes itself: the list length (at least `min_lists`
// entries; 0 for the non-adaptive rule) and the integrand.
template <class T>
Settings<T> start(Fcn<T> fcn, frame::Options& opt, unsigned accepts, int min_lists) {
    Settings<T> s;
    s.fcn.plain = fcn;
    read_options(s, opt, accepts);
    if (min_lists > 0 && s.max_subinter < min_lists)
        frame::raise(Type::Terminal, err::max_subinter_too_small, Int{s.max_subinter}, Int{min_lists});
    if (s.fcn.with_data == nullptr && s.fcn.plain == nullptr)
        frame::raise(Type::Terminal, err::null_required_argument, Str{"fcn"});
    return s;
}

// The tolerance checks of a step, in this order, all made before any work.
template <class T>
void check_tolerances(const Settings<T>& s, int min_lists, bool uses_rule, bool absolute_only) {
    if (min_lists > 0 && s.max_subinter < min_lists)
        frame::raise(Type::Terminal, err::max_subinter_too_small, Int{s.max_subinter}, Int{min_lists});
    if (uses_rule && (s.rule < 1 || s.rule > 6)) frame::raise(Type::Terminal, err::bad_rule, Int{s.rule});
    if (s.err_abs < 0) frame::raise(Type::Terminal, err::negative_err_abs, Real{s.err_abs});
    if (s.err_rel < 0) frame::raise(Type::Terminal, err::negative_err_rel, Real{s.err_rel});
    if (s.err_abs == 0 && s.err_rel == 0) frame::raise(Type::Terminal, err::zero_tolerances);
    if (s.err_rel >= 1) frame::raise(Type::Terminal, err::err_rel_too_large, Real{s.err_rel});
    if (absolute_only && s.err_abs == 0 && s.err_rel != 0)
        frame::raise(Type::Terminal, err::fourier_needs_err_abs, Real{s.err_abs});
}

// The usual case of the checks above, in a few comparisons: positive tolerances, err_rel
// below 1 (NaNs go the long way, which lets a NaN err_rel pass as the checks do).
template <class T>
bool usual_tolerances(const Settings<T>& s) {
    return s.err_abs > 0 && s.err_rel > 0 && s.err_rel < 1;
}

// The subinterval lists of one call: a few entries here, then one allocation of the full
// length when the step needs more (the caller's error and order lists, when given, are used
// from the start). The right-end list may need more room than max_subinter (break points).
template <class T>
class Storage {
public:
    Storage(const Settings<T>& s, int blist_length) : blist_length_(blist_length) {
        w.alist = alist_;
        w.blist = blist_;
        w.rlist = rlist_;
        w.elist = s.err_list ? s.err_list : elist_;
        w.iord = s.order_list ? s.order_list : iord_;
        w.level = level_;
        w.limit = s.max_subinter;
        w.room = std::min(s.max_subinter, small);
        w.grow = &Storage::grow;
        w.owner = this;
    }
    ~Storage() { std::free(block_); }
    Storage(const Storage&) = delete;
    Storage& operator=(const Storage&) = delete;

    Lists<T> w{};

private:
    static constexpr int small = 16;

    static bool grow(Lists<T>& w, void* owner) {
        Storage& st = *static_cast<Storage*>(owner);
        if (st.block_ != nullptr) return false;  // already at the full length
        const long long n = w.limit, nb = std::max<long long>(n, st.blist_length_);
        // Per list entry: alist, rlist, elist, blist (reals), iord and level (ints); the
        // reals first keep every list aligned.
        const std::size_t per = 4 * sizeof(T) + 2 * sizeof(int);
        const long long extra = (nb - n) * static_cast<long long>(sizeof(T)) / static_cast<long long>(per) + 1;
        st.block_ = frame::allocate(n + extra, per, "max_subinter");  // 201 names max_subinter
        if (st.block_ == nullptr) return false;
        T* r = static_cast<T*>(st.block_);
        const int k = w.room;
        // Entries past the ones in use are copied as they are, unread.
        auto move = [k](auto*& list, auto* to) {
            std::memcpy(to, list, k * sizeof *list);
            list = to;
        };
        move(w.alist, r);
        move(w.rlist, r + n);
        if (w.elist == st.elist_) move(w.elist, r + 2 * n);
        move(w.blist, r + 3 * n);
        int* i = reinterpret_cast<int*>(r + 3 * n + nb);
        if (w.iord == st.iord_) move(w.iord, i);
        move(w.level, i + n);
        w.room = w.limit;
        return true;
    }

    T alist_[small], blist_[small + 1], rlist_[small], elist_[small];
    int iord_[small], level_[small];
    int blist_length_;
    void* block_ = nullptr;
};

// Raises the error of a step's outcome at the routine's level.
template <class T>
void report(const Outcome<T>& o, const Settings<T>& s, bool smooth) {
    switch (o.ier) {
    case limit_reached:
        if (smooth) frame::raise(Type::Fatal, err::smooth_not_converged);
        else frame::raise(Type::Fatal, err::subinterval_limit, Int{s.max_subinter});
        break;
    case roundoff: frame::raise(Type::Warning, err::roundoff, Real{s.err_abs}, Real{s.err_rel}); break;
    case bad_behaviour: frame::raise(Type::Warning, err::bad_integrand, Real{o.bad_a}, Real{o.bad_b}); break;
    case extrapolation_roundoff: frame::raise(Type::Warning, err::extrapolation_roundoff); break;
    case divergent: frame::raise(Type::Warning, err::divergent); break;
    case cycle_limit: frame::raise(Type::Fatal, err::cycle_limit, Int{s.max_cycles}); break;
    case cycle_trouble: frame::raise(Type::Warning, err::bad_cycles, Real{o.bad_a}, Real{o.bad_b}); break;
    default: break;
    }
}

// Hands the error estimate and the counts to the caller, and raises the outcome's error at
// the routine's level: a fatal outcome returns NaN.
template <class T>
T deliver(const Settings<T>& s, const Outcome<T>& o, bool smooth) {
    if (s.err_est) *s.err_est = o.abserr;
    if (s.n_subinter) *s.n_subinter = o.last;
    if (s.n_evals) *s.n_evals = s.fcn.evals;
    if (o.ier == converged) return o.result;
    report(o, s, smooth);
    return qnum::context()->status[0] >= 4 ? Mach<T>::nan : o.result;
}

// What a step needs from the driver.
struct StepKind {
    const char* name;
    int min_lists;      // 0: no lists (the non-adaptive rule)
    int blist_length;   // the right-end list may need more room than max_subinter
    bool uses_rule;
    bool absolute_only;
};

// Runs one step: tolerance checks under the step's name, the lists, the step itself, the
// returned counts, and the outcome's error at the routine's level.
template <class T, class Run>
T drive(Settings<T>& s, const StepKind& k, Run&& run) {
    if (frame::pending()) return Mach<T>::nan;
    Outcome<T> o;
    Storage<T> store(s, k.blist_length);
    {
        frame::Level step(k.name);
        check_tolerances(s, k.min_lists, k.uses_rule, k.absolute_only);
        if (frame::pending()) return Mach<T>::nan;
        s.fcn.mark_level();
        o = run(Tol<T>{s.err_abs, s.err_rel}, store.w);
    }
    if (frame::pending()) return Mach<T>::nan;
    if (s.order_list != nullptr) {
        // The caller's order list, complete: every subinterval by decreasing error.
        const T* e = store.w.elist;
        for (int i = 0; i < o.last; ++i) s.order_list[i] = i;
        std::stable_sort(s.order_list, s.order_list + o.last, [e](int x, int y) { return e[x] > e[y]; });
    }
    return deliver(s, o, k.min_lists == 0);
}

constexpr unsigned adaptive = takes_lists;

}  // namespace

template <class T>
T int_fcn(Fcn<T> fcn, T a, T b, frame::Options opt) {
    Settings<T> s = start(fcn, opt, adaptive | takes_rule, 1);
    return drive(s, {"l_q2ag", 1, 0, true, false},
                 [&](Tol<T> tol, Lists<T>& w) { return step_qag(s.fcn, a, b, tol, s.rule, w); });
}

template <class T>
T int_fcn_sing(Fcn<T> fcn, T a, T b, frame::Options opt) {
    Settings<T> s = start(fcn, opt, adaptive, 1);
    return drive(s, {"l_q2ags", 1, 0, false, false},
                 [&](Tol<T> tol, Lists<T>& w) { return step_qags(s.fcn, a, b, tol, w); });
}

template <class T>
T int_fcn_inf(Fcn<T> fcn, T bound, int interval_code, frame::Options opt) {
    Settings<T> s = start(fcn, opt, adaptive, 1);
    if (interval_code != -1 && interval_code != 1 && interval_code != 2)
        frame::raise(Type::Terminal, err::bad_interval_code, Int{interval_code});
    return drive(s, {"l_q2agi", 1, 0, false, false},
                 [&](Tol<T> tol, Lists<T>& w) { return step_qagi(s.fcn, bound, interval_code, tol, w); });
}

// Checks shared by the oscillatory routines: weight code and moment limit.
template <class T>
void check_oscillatory(const Settings<T>& s, int weight_code) {
    if (weight_code != 1 && weight_code != 2)
        frame::raise(Type::Terminal, err::bad_weight_code, Int{weight_code}, Int{2});
    if (s.max_moments < 1) frame::raise(Type::Terminal, err::bad_moment_limit, Int{s.max_moments});
}

template <class T>
T int_fcn_trig(Fcn<T> fcn, T omega, int weight_code, T a, T b, frame::Options opt) {
    Settings<T> s = start(fcn, opt, adaptive | takes_moments, 1);
    check_oscillatory(s, weight_code);
    frame::Buffer<T> chebmo;
    if (!frame::pending()) chebmo = frame::Buffer<T>(25LL * s.max_moments, "max_moments");
    return drive(s, {"l_q2awo", 1, 0, false, false}, [&](Tol<T> tol, Lists<T>& w) {
        Moments<T> mom{chebmo.get(), s.max_moments};
        return step_qawo(s.fcn, a, b, omega, weight_code, tol, w, mom, false);
    });
}

template <class T>
T int_fcn_fourier(Fcn<T> fcn, T omega, int weight_code, T a, frame::Options opt) {
    Settings<T> s = start(fcn, opt, adaptive | takes_moments | takes_cycles, 1);
    check_oscillatory(s, weight_code);
    if (s.max_cycles < 3) frame::raise(Type::Terminal, err::bad_cycle_limit, Int{s.max_cycles});
    frame::Buffer<T> chebmo;
    if (!frame::pending()) chebmo = frame::Buffer<T>(25LL * s.max_moments, "max_moments");
    return drive(s, {"Q2AWF", 1, 0, false, true}, [&](Tol<T> tol, Lists<T>& w) {
        Moments<T> mom{chebmo.get(), s.max_moments};
        return step_qawf(s.fcn, a, omega, weight_code, tol.epsabs, s.max_cycles, w, mom);
    });
}

template <class T>
T int_fcn_cauchy(Fcn<T> fcn, T a, T b, T c, frame::Options opt) {
    Settings<T> s = start(fcn, opt, adaptive, 1);
    if (c == a || c == b) frame::raise(Type::Terminal, err::cauchy_point_at_end, Real{c});
    return drive(s, {"l_q2awc", 1, 0, false, false},
                 [&](Tol<T> tol, Lists<T>& w) { return step_qawc(s.fcn, a, b, c, tol, w); });
}

// The non-adaptive rule needs no lists, and its cheapest integrals cost little more than the
// call itself: the usual tolerances skip the checks' calls.
template <class T>
T int_fcn_smooth(Fcn<T> fcn, T a, T b, frame::Options opt) {
    Settings<T> s = start(fcn, opt, 0, 0);
    if (frame::pending()) return Mach<T>::nan;
    Outcome<T> o;
    {
        frame::Level step("QDNG");
        if (!usual_tolerances(s)) {
            check_tolerances(s, 0, false, false);
            if (frame::pending()) return Mach<T>::nan;
        }
        s.fcn.mark_level();
        o = step_qng(s.fcn, a, b, Tol<T>{s.err_abs, s.err_rel});
    }
    if (frame::pending()) return Mach<T>::nan;
    return deliver(s, o, true);
}

template <class T>
T int_fcn_sing_pts(Fcn<T> fcn, T a, T b, int npoints, const T* points, frame::Options opt) {
    // Each break point adds an interval: the lists need room for all of them and one more.
    Settings<T> s = start(fcn, opt, adaptive, 1);
    if (npoints < 0) {
        frame::raise(Type::Terminal, err::negative_npoints, Int{npoints});
    } else if (npoints > 0 && check::array(points, "points")) {
        const T lo = std::min(a, b), hi = std::max(a, b);
        for (int i = 0; i < npoints; ++i) {
            if (!(points[i] >= lo && points[i] <= hi)) {
                frame::raise(Type::Terminal, err::point_outside, Int{i}, Real{points[i]}, Real{a}, Real{b});
                break;
            }
        }
    }
    const int min_lists = npoints < 0 || npoints == 2147483647 ? 1 : npoints + 1;
    if (!frame::pending() && s.max_subinter < min_lists)
        frame::raise(Type::Terminal, err::max_subinter_too_small, Int{s.max_subinter}, Int{min_lists});
    return drive(s, {"l_q2agp", min_lists, min_lists + 1, false, false}, [&](Tol<T> tol, Lists<T>& w) {
        return step_qagp(s.fcn, a, b, npoints, points, tol, w);
    });
}

template <class T>
T int_fcn_alg_log(Fcn<T> fcn, T a, T b, int weight_code, T alpha, T beta, frame::Options opt) {
    // The step starts from the two halves of [a, b]: two list entries at least.
    Settings<T> s = start(fcn, opt, adaptive, 2);
    if (weight_code < 1 || weight_code > 4)
        frame::raise(Type::Terminal, err::bad_weight_code, Int{weight_code}, Int{4});
    if (!(alpha > -1) || !(beta > -1)) frame::raise(Type::Terminal, err::bad_exponent, Real{alpha}, Real{beta});
    if (!(b > a)) frame::raise(Type::Terminal, err::bad_alg_log_interval, Real{a}, Real{b});
    return drive(s, {"l_q2aws", 2, 0, false, false}, [&](Tol<T> tol, Lists<T>& w) {
        return step_qaws(s.fcn, a, b, weight_code, alpha, beta, tol, w);
    });
}

#define QNUM_INSTANTIATE(T)                                                                   \
    template T int_fcn(Fcn<T>, T, T, frame::Options);                                        \
    template T int_fcn_sing(Fcn<T>, T, T, frame::Options);                                   \
    template T int_fcn_inf(Fcn<T>, T, int, frame::Options);                                  \
    template T int_fcn_trig(Fcn<T>, T, int, T, T, frame::Options);                           \
    template T int_fcn_fourier(Fcn<T>, T, int, T, frame::Options);                           \
    template T int_fcn_cauchy(Fcn<T>, T, T, T, frame::Options);                              \
    template T int_fcn_smooth(Fcn<T>, T, T, frame::Options);                                 \
    template T int_fcn_sing_pts(Fcn<T>, T, T, int, const T*, frame::Options);                \
    template T int_fcn_alg_log(Fcn<T>, T, T, int, T, T, frame::Options);
QNUM_INSTANTIATE(float)
QNUM_INSTANTIATE(double)
#undef QNUM_INSTANTIATE

}  // namespace qnum::quadrature
