// Bad input over the whole public header: sizes 0, -1, INT_MIN, INT_MAX and ones whose
// products overflow, a null for each pointer argument, NaN and infinities for each value.
// Every call must end (a watchdog kills a hang) with a documented error, or with NaN or NULL
// where that is the documented answer; after an error of type FATAL or worse the result must
// be NaN or NULL, and a kernel that reports an error must have written nothing.
#include <csignal>
#include <cstring>
#include <fstream>
#include <regex>
#include <set>
#include <unistd.h>
#include <vector>

#include "hardening.hpp"

namespace qnum::test::hard {
namespace {

const char* current = "";
void hung(int) {
    const char msg[] = "bad-input sweep: a call did not end: ";
    (void)!write(2, msg, sizeof msg - 1);
    (void)!write(2, current, std::strlen(current));
    _exit(124);
}

// One variant of a call. The row's body asks it for each size, pointer and value in turn;
// the one the probe picks (counting from 1) comes back bad.
struct Probe {
    enum Kind { none, size, null, value } kind = none;
    int which = 0;
    double bad = 0;
    mutable int sizes = 0, ptrs = 0, values = 0;
    int n(int good) const { return ++sizes == which && kind == size ? static_cast<int>(bad) : good; }
    // A size that the caller's arrays must match: probed with 0 and negatives only.
    int small(int good) const {
        if (kind == none) small_mask |= 1u << sizes;
        return kind == size && bad > 0 ? (++sizes, good) : n(good);
    }
    mutable unsigned small_mask = 0;
    // Rows that make several calls note each one's outcome: the worst one counts.
    mutable Outcome worst{0, 0};
    void after() const {
        const Outcome o = outcome();
        if (o.type > worst.type) worst = o;
    }
    template <class P> P* p(P* good) const { return ++ptrs == which && kind == null ? nullptr : good; }
    template <class T> T v(T good) const { return ++values == which && kind == value ? T(bad) : good; }
};

constexpr double nan = NAN, inf = INFINITY;
struct Row {
    std::string name;
    std::function<double(const Probe&)> call;  // NaN for a NaN or NULL result
    bool huge = true;          // sizes beyond any array are probed: the size is checked or allocated first
    double at_inf = nan, at_minus_inf = nan;  // the true limits, when the routine has them
    unsigned counts = 0;       // sizes (bit which-1) for which any value >= 0 is valid input
};

template <class T> T sq(T x) { return x * x; }
template <class T> T decay(T x) { return std::exp(-x); }
template <class T> T* xs() { static T x[6] = {0, 0.5, 1, 1.5, 2, 2.5}; return x; }
template <class T> T* fs() { static T f[6] = {0, 0.25, 1, 2.25, 4, 6.25}; return f; }
template <class P> double summary(P* p, double v) { return p == nullptr ? nan : v; }
// What a routine without a result answers: nothing after a failure.
double done() { return qnum_n1rty(1) >= 4 || qnum_n1rty(0) >= 4 ? nan : 0; }

template <class T, auto fn>
double solve(const Probe& p) {
    T a[9], b[3];
    for (int i = 0; i < 9; ++i) a[i] = num<T>(i % 4 == 0 ? 4 : 1);
    for (int i = 0; i < 3; ++i) b[i] = num<T>(1);
    a[4] = num<T>(p.v(4.0));
    const int n = p.n(3);
    T* pa = p.p(a);
    T* x = fn(n, pa, p.p(b), 0);
    const double r = summary(x, x ? re(x[0]) : 0);
    qnum_free_allocated_memory(x);
    return r;
}
template <class T, auto fn>
double transpose(const Probe& p) {
    T a[6] = {}, b[6] = {};
    const int rows = p.small(2), cols = p.small(3);
    T* pa = p.p(a);
    fn(rows, cols, pa, p.p(b));
    return done();
}
template <class T, auto fn>
double build(const Probe& p) {
    T x[6], f[6];
    std::copy(xs<T>(), xs<T>() + 6, x);
    std::copy(fs<T>(), fs<T>() + 6, f);
    x[3] = p.v(x[3]);
    f[3] = p.v(f[3]);
    const int n = p.n(6);
    T* px = p.p(x);
    auto* pp = fn(n, px, p.p(f), 0);
    const double r = pp ? (std::is_same_v<T, float> ? qnum_f_cub_spline_integral(0, 2.5f, (Qnum_f_ppoly*)pp)
                                                     : qnum_d_cub_spline_integral(0, 2.5, (Qnum_d_ppoly*)pp)) : nan;
    qnum_free_allocated_memory(pp);
    return r;
}
template <class T, class P, auto interp, auto value, auto integral, int what>
double evaluate(const Probe& p) {
    static P* pp = interp(6, xs<T>(), fs<T>(), 0);
    if constexpr (what == 0) {  // the value or a derivative at x
        const T x = p.v(T(1));
        const int deriv = p.n(1);
        return value(x, p.p(pp), QNUM_DERIV, deriv, 0);
    } else if constexpr (what == 1) {  // a grid
        T xv[3] = {0.5, 1, 2}, *out = nullptr;
        xv[1] = p.v(xv[1]);
        const int n = p.small(3);
        P* q = p.p(pp);
        T* pxv = p.p(xv);
        value(T(0), q, QNUM_GRID, n, pxv, p.p(&out), 0);
        const double s = out ? out[1] : nan;
        qnum_free_allocated_memory(out);
        return s;
    } else {
        const T a = p.v(T(0)), b = p.v(T(2));
        return integral(a, b, p.p(pp));
    }
}
template <class T, auto fn>
double create(const Probe& p) {
    int order[1] = {4}, nbp[1] = {5};
    const int domain = p.small(1), target = p.n(1);
    auto* pp = fn(domain, target, p.p(order), p.p(nbp), 0);
    qnum_free_allocated_memory(pp);
    return summary(pp, 0);
}
// The quadrature members by their shapes: 0 [a, b], 1 a half line, 2 and 3 weighted by
// sin or cos, 4 Cauchy, 5 break points, 6 algebraic-logarithmic.
template <class T, int shape, auto fn>
double quad(const Probe& p) {
    T (*f)(T) = p.p(shape == 1 || shape == 3 ? decay<T> : sq<T>);
    const T pts[1] = {T(0.5)};
    const int max = shape == 3 || shape == 7 ? 0 : p.n(500);
    const T u = p.v(T(shape == 2 || shape == 3 ? 3 : 0));
    const T w = shape == 1 || shape == 3 ? T(1) : p.v(T(shape == 6 ? -0.5 : 1));
    const T z = shape == 2 || shape == 3 || shape == 4 || shape == 6 ? p.v(T(0.5)) : T(0.5);
    if constexpr (shape == 0) return fn(f, u, w, QNUM_MAX_SUBINTER, max, 0);
    else if constexpr (shape == 7) return fn(f, u, w, 0);
    else if constexpr (shape == 1) return fn(f, u, 1, QNUM_MAX_SUBINTER, max, 0);
    else if constexpr (shape == 2) return fn(f, u, 1, z, w, QNUM_MAX_SUBINTER, max, 0);
    else if constexpr (shape == 3) return fn(f, u, 2, z, QNUM_ERR_ABS, 1e-3, 0);
    else if constexpr (shape == 4) return fn(f, u, w, z, QNUM_MAX_SUBINTER, max, 0);
    else if constexpr (shape == 5) {
        const int np = p.small(1);
        return fn(f, u, w, np, p.p(pts), QNUM_MAX_SUBINTER, max, 0);
    } else return fn(f, u, T(1), 1, w, z, QNUM_MAX_SUBINTER, max, 0);
}
template <class T> T quadratic(T x) { return x * x - 2; }
template <class T, auto fn>
double zeros(const Probe& p) {
    T guess[1] = {p.v(T(1))};
    const int roots = p.small(1), evals = p.n(100);
    T (*f)(T) = p.p(quadratic<T>);
    T* z = fn(f, QNUM_NUM_ROOTS, roots, QNUM_MAX_EVALS, evals, QNUM_XGUESS, p.p(guess), 0);
    const double r = summary(z, z ? z[0] : 0);
    qnum_free_allocated_memory(z);
    return r;
}
template <class T, auto fn>
double lp(const Probe& p) {
    int rows[2] = {0, 0}, cols[2] = {0, 1}, type[1] = {'G'};
    double values[2] = {1, 1}, obj[2] = {p.v(1.0), 2}, rhs[1] = {p.v(1.0)};
    Qnum_d_mps m{};
    m.nrows = p.small(1), m.ncolumns = p.small(2), m.nonzeros = p.small(2);
    m.matrix_row = p.p(rows), m.matrix_column = p.p(cols), m.matrix_value = p.p(values);
    m.objective = p.p(obj), m.rhs = p.p(rhs), m.row_type = p.p(type);
    T* x = fn(p.p(&m), 0);
    const double r = summary(x, x ? x[0] : 0);
    qnum_free_allocated_memory(x);
    return r;
}
template <auto fn, int x = 3> double special1(const Probe& p) { return fn(p.v(x / 4.0)); }
template <auto fn> double special2(const Probe& p) {
    const double a = p.v(0.75);
    return fn(a, p.v(1.5));
}
template <class T, auto fn> double special3(const Probe& p) {
    const T x = p.v(T(0.5)), a = p.v(T(1.5));
    return fn(x, a, p.v(T(2)));
}
template <class T, auto fn> double erfe(const Probe& p) {
    const float x = p.v(0.5f);
    const T r = fn(T{x, p.v(0.25f)});
    return std::isnan(r.re) || std::isnan(r.im) ? nan : r.re;
}
template <class T, auto init, auto eval>
double series(const Probe& p) {
    static const T cs[4] = {T(1), T(0.5), T(0.01), T(1e-9)};
    const int n = p.small(4), m = p.n(3);
    const T* c1 = p.p(cs);
    const int terms = init(c1, n, T(1e-6));
    p.after();
    const T x = p.v(T(0.5));
    const double v = eval(x, p.p(cs), m);  // NaN after its own failure; the count has none
    return outcome().type < 4 && p.worst.type >= 4 ? nan : v + terms;
}
template <class T, auto fn>
double draw(const Probe& p) {
    T r[4];
    const int n = p.n(4);  // the caller's array holds 4: larger requests are allocated
    T* x = n <= 4 ? fn(n, QNUM_RETURN_USER, p.p(r), 0) : fn(n, 0);
    if (x != r) qnum_free_allocated_memory(x);
    return summary(x, 0);
}
template <class T, auto fill, auto table>
double draw_into(const Probe& p) {
    T r[4], t[128];
    for (T& v : t) v = T(0.5);
    t[7] = p.v(T(0.25));
    qnum_random_option(p.n(2));
    p.after();
    table(p.p(t));
    p.after();
    const int n = p.small(4);
    fill(n, p.p(r));
    p.after();
    qnum_random_option(1);
    return p.worst.type >= 4 ? nan : r[0];
}

#define PD(stem, ...) {"qnum_f_" #stem, __VA_ARGS__<float, qnum_f_##stem>}, {"qnum_d_" #stem, __VA_ARGS__<double, qnum_d_##stem>}
const std::vector<Row>& rows() {
    static const std::vector<Row> t = {
        PD(lin_sol_gen, solve), PD(lin_sol_posdef, solve), PD(lin_sol_nonnegdef, solve),
        {"qnum_c_lin_sol_gen", solve<qnum_f_complex, qnum_c_lin_sol_gen>},
        {"qnum_z_lin_sol_gen", solve<qnum_d_complex, qnum_z_lin_sol_gen>},
        {"qnum_c_lin_sol_posdef", solve<qnum_f_complex, qnum_c_lin_sol_posdef>},
        {"qnum_z_lin_sol_posdef", solve<qnum_d_complex, qnum_z_lin_sol_posdef>},
        {"qnum_20000", solve<float, qnum_20000>}, {"qnum_20001", solve<double, qnum_20001>},
        {"qnum_f_m1ran", transpose<float, qnum_f_m1ran>, false}, {"qnum_d_m1ran", transpose<double, qnum_d_m1ran>, false},
        {"qnum_c_m1ran", transpose<qnum_f_complex, qnum_c_m1ran>, false},
        {"qnum_z_m1ran", transpose<qnum_d_complex, qnum_z_m1ran>, false},
        PD(cub_spline_interp_e_cnd, build), PD(cub_spline_interp, build), PD(cub_spline_interp_shape, build),
        PD(cub_spline_smooth, build),
        {"qnum_f_ppoly_create", create<float, qnum_f_ppoly_create>, true, nan, nan, 2},
        {"qnum_d_ppoly_create", create<double, qnum_d_ppoly_create>, true, nan, nan, 2},
#define EV(p, T, P, what) evaluate<T, P, qnum_##p##_cub_spline_interp, qnum_##p##_cub_spline_value, qnum_##p##_cub_spline_integral, what>
        {"qnum_f_cub_spline_value", EV(f, float, Qnum_f_ppoly, 0), true, inf, inf, 1},
        {"qnum_d_cub_spline_value", EV(d, double, Qnum_d_ppoly, 0), true, inf, inf, 1},
        {"qnum_f_cub_spline_value", EV(f, float, Qnum_f_ppoly, 1)}, {"qnum_d_cub_spline_value", EV(d, double, Qnum_d_ppoly, 1)},
        {"qnum_f_cub_spline_integral", EV(f, float, Qnum_f_ppoly, 2)}, {"qnum_d_cub_spline_integral", EV(d, double, Qnum_d_ppoly, 2)},
        {"qnum_f_int_fcn", quad<float, 0, qnum_f_int_fcn>, true, nan, nan, 1}, {"qnum_d_int_fcn", quad<double, 0, qnum_d_int_fcn>, true, nan, nan, 1},
        {"qnum_f_int_fcn_sing", quad<float, 0, qnum_f_int_fcn_sing>, true, nan, nan, 1}, {"qnum_d_int_fcn_sing", quad<double, 0, qnum_d_int_fcn_sing>, true, nan, nan, 1},
        {"qnum_f_int_fcn_smooth", quad<float, 7, qnum_f_int_fcn_smooth>}, {"qnum_d_int_fcn_smooth", quad<double, 7, qnum_d_int_fcn_smooth>},
        {"qnum_f_int_fcn_inf", quad<float, 1, qnum_f_int_fcn_inf>, true, 0, nan, 1}, {"qnum_d_int_fcn_inf", quad<double, 1, qnum_d_int_fcn_inf>, true, 0, nan, 1},
        {"qnum_f_int_fcn_trig", quad<float, 2, qnum_f_int_fcn_trig>, true, nan, nan, 1}, {"qnum_d_int_fcn_trig", quad<double, 2, qnum_d_int_fcn_trig>, true, nan, nan, 1},
        {"qnum_f_int_fcn_fourier", quad<float, 3, qnum_f_int_fcn_fourier>}, {"qnum_d_int_fcn_fourier", quad<double, 3, qnum_d_int_fcn_fourier>},
        {"qnum_f_int_fcn_cauchy", quad<float, 4, qnum_f_int_fcn_cauchy>, true, 0, 0, 1}, {"qnum_d_int_fcn_cauchy", quad<double, 4, qnum_d_int_fcn_cauchy>, true, 0, 0, 1},
        {"qnum_f_int_fcn_sing_pts", quad<float, 5, qnum_f_int_fcn_sing_pts>, true, nan, nan, 3},
        {"qnum_d_int_fcn_sing_pts", quad<double, 5, qnum_d_int_fcn_sing_pts>, true, nan, nan, 3},
        {"qnum_f_int_fcn_alg_log", quad<float, 6, qnum_f_int_fcn_alg_log>, true, nan, nan, 1}, {"qnum_d_int_fcn_alg_log", quad<double, 6, qnum_d_int_fcn_alg_log>, true, nan, nan, 1},
        {"qnum_f_zeros_fcn", zeros<float, qnum_f_zeros_fcn>, true, nan, nan, 2}, {"qnum_d_zeros_fcn", zeros<double, qnum_d_zeros_fcn>, true, nan, nan, 2}, {"qnum_f_linear_programming", lp<float, qnum_f_linear_programming>, true, 0, 0},
        {"qnum_d_linear_programming", lp<double, qnum_d_linear_programming>, true, 0, 0},
        {"qnum_f_random_uniform", draw<float, qnum_f_random_uniform>, true, nan, nan, 1},
        {"qnum_d_random_uniform", draw<double, qnum_d_random_uniform>, true, nan, nan, 1},
        {"qnum_rnun", draw_into<float, qnum_rnun, qnum_rnses>, false}, {"qnum_drnun", draw_into<double, qnum_drnun, qnum_drnses>, false},
        {"qnum_inits", series<float, qnum_inits, qnum_csevl>, false}, {"qnum_initds", series<double, qnum_initds, qnum_dcsevl>, false},
        {"qnum_f_erf", special1<qnum_f_erf>, true, 1, -1}, {"qnum_d_erf", special1<qnum_d_erf>, true, 1, -1},
        {"qnum_f_erfc", special1<qnum_f_erfc>, true, 0, 2}, {"qnum_d_erfc", special1<qnum_d_erfc>, true, 0, 2},
        {"qnum_f_erf_inverse", special1<qnum_f_erf_inverse>}, {"qnum_d_erf_inverse", special1<qnum_d_erf_inverse>},
        {"qnum_f_erfc_inverse", special1<qnum_f_erfc_inverse>}, {"qnum_d_erfc_inverse", special1<qnum_d_erfc_inverse>},
        {"qnum_f_gamma", special1<qnum_f_gamma>}, {"qnum_d_gamma", special1<qnum_d_gamma>},
        {"qnum_f_log_gamma", special1<qnum_f_log_gamma>}, {"qnum_d_log_gamma", special1<qnum_d_log_gamma>},
        {"qnum_r9lgmc", special1<qnum_r9lgmc, 48>, true, 0}, {"qnum_d9lgmc", special1<qnum_d9lgmc, 48>, true, 0},
        {"qnum_f_beta", special2<qnum_f_beta>, true, 0}, {"qnum_d_beta", special2<qnum_d_beta>, true, 0},
        {"qnum_f_log_beta", special2<qnum_f_log_beta>, true, -inf}, {"qnum_d_log_beta", special2<qnum_d_log_beta>, true, -inf},
        {"qnum_f_gamma_incomplete", special2<qnum_f_gamma_incomplete>}, {"qnum_d_gamma_incomplete", special2<qnum_d_gamma_incomplete>},
        {"qnum_f_beta_incomplete", special3<float, qnum_f_beta_incomplete>}, {"qnum_d_beta_incomplete", special3<double, qnum_d_beta_incomplete>},
        {"qnum_c_erfe", erfe<qnum_f_complex, qnum_c_erfe>}, {"qnum_z_erfe", erfe<qnum_d_complex, qnum_z_erfe>},
        {"qnum_f_machine", [](const Probe& p) { qnum_f_machine(p.n(1)); return done(); }},
        {"qnum_i_machine", [](const Probe& p) { qnum_i_machine(p.n(1)); return done(); }, true, nan, nan, 1},
        {"qnum_version", [](const Probe& p) { char* s = qnum_version(p.n(QNUM_OS_VERSION)); qnum_free_allocated_memory(s); return summary(s, 0); }},
        {"qnum_umach", [](const Probe& p) { FILE* f = nullptr; const int u = p.n(3); qnum_umach(u, p.p(&f)); return summary(f, 0); }},
        {"qnum_random_option", [](const Probe& p) { qnum_random_option(p.n(1)); return done(); }},
        {"qnum_error_options", [](const Probe& p) { int v = -1; const int t = p.n(3); qnum_error_options(QNUM_GET_PRINT, t, p.p(&v), 0); return v == -1 ? nan : v; }},
        {"qnum_d_read_mps", [](const Probe& p) { Qnum_d_mps* m = qnum_d_read_mps(p.p(mps_path().c_str()), 0); qnum_d_mps_free(m); return summary(m, 0); }},
    };
    return t;
}

// The trouble with one outcome, or "".
std::string judge(const Row& row, const Probe& p, double r, Outcome o) {
    if (o.type >= 4 && !std::isnan(r)) return "a result after error " + std::to_string(o.code);
    if (o.type >= 1 || std::isnan(r) || std::isinf(r)) return "";
    if (p.kind == Probe::value && p.bad == inf && r == row.at_inf) return "";
    if (p.kind == Probe::value && p.bad == -inf && r == row.at_minus_inf) return "";
    return "an ordinary-looking answer " + std::to_string(r) + " without an error";
}

const double sizes[] = {0, -1, INT_MIN, INT_MAX, 46341, 1 << 30};

TEST(HardeningBadInput, EveryRoutineEndsWithADocumentedOutcome) {
    QuietErrors quiet;
    signal(SIGALRM, hung);
    set_size_cap(std::size_t(1) << 28);  // bigger requests fail, as in a full process
    long calls = 0;
    for (const Row& row : rows()) {
        current = row.name.c_str();
        Probe census;
        forget();
        const double r0 = row.call(census);
        EXPECT_EQ(outcome().type, 0) << row.name << " fails on good input, code " << outcome().code;
        EXPECT_FALSE(std::isnan(r0)) << row.name;
        std::vector<Probe> probes;
        for (int i = 1; i <= census.sizes; ++i)
            for (double s : sizes)
                if ((row.huge && !(census.small_mask >> (i - 1) & 1)) || s <= 0) probes.push_back({Probe::size, i, s});
        for (int i = 1; i <= census.ptrs; ++i) probes.push_back({Probe::null, i});
        for (int i = 1; i <= census.values; ++i)
            for (double v : {nan, inf, -inf}) probes.push_back({Probe::value, i, v});
        for (const Probe& p : probes) {
            forget();
            alarm(60);
            const double r = row.call(p);
            alarm(0);
            ++calls;
            Outcome o = outcome();
            if (p.worst.type > o.type) o = p.worst;
            std::string bad = judge(row, p, r, o);
            if (p.kind == Probe::size && p.bad >= 0 && (row.counts >> (p.which - 1) & 1) && bad.rfind("an ordinary", 0) == 0)
                bad.clear();
            EXPECT_EQ(bad, "") << row.name << ": probe " << p.kind << " #" << p.which << " = " << p.bad;
        }
    }
    set_size_cap(SIZE_MAX);
    std::printf("%ld calls of %zu routines with bad input\n", calls, rows().size());
}

}  // namespace
}  // namespace qnum::test::hard
