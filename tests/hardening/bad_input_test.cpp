// Bad input over the whole public header: sizes 0, -1, INT_MIN, INT_MAX and ones whose
// products overflow, a null for each pointer argument, NaN and infinities for each value.
// Every call must end (a watchdog kills a hang) with a documented error, or with NaN or NULL
// where that is the documented answer; after an error of type FATAL or worse the result must
// be NaN or NULL, and a kernel that reports an error must have written nothing.
#include <csignal>
#include <cstring>
#include <fstream>
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

template <class T> T sq(T x) { return x * x; }
template <class T> T decay(T x) { return std::exp(-x); }
template <class T> T* xs() { static T x[6] = {1, 0, 0.5, 1.5, 2, 2.5}; return x; }  // unsorted
template <class T> T* fs() { static T f[6] = {1, 0, 0.25, 2.25, 4, 6.25}; return f; }
template <class P> double summary(P* p, double v) { return p == nullptr ? nan : v; }
// What a routine without a result answers: nothing after a failure.
double done() { return qnum_n1rty(1) >= 4 || qnum_n1rty(0) >= 4 ? nan : 0; }

// The solvers with a factor and an inverse handed back: after a failure none of them is.
template <class T, auto fn, int kind = 0>  // kind 0 general (pivots too), 1 definite
double solve(const Probe& p) {
    T a[9], b[3], *fac = nullptr, *inv = nullptr;
    int* pvt = nullptr;
    for (int i = 0; i < 9; ++i) a[i] = num<T>(i % 4 == 0 ? 4 : 1);
    for (int i = 0; i < 3; ++i) b[i] = num<T>(1);
    a[4] = num<T>(p.v(4.0));
    const int n = p.n(3);
    T *pa = p.p(a), *pb = p.p(b), **pf = p.p(&fac), **pi = p.p(&inv);
    T* x = kind == 0 ? fn(n, pa, pb, QNUM_FACTOR, p.p(&pvt), pf, QNUM_INVERSE, pi, 0)
                     : fn(n, pa, pb, QNUM_FACTOR, pf, QNUM_INVERSE, pi, 0);
    if (x == nullptr) EXPECT_TRUE(!fac && !inv && !pvt) << "results handed back after a failure";
    const double r = summary(x, x ? re(x[0]) : 0);
    for (void* q : {(void*)x, (void*)fac, (void*)inv, (void*)pvt}) qnum_free_allocated_memory(q);
    return r;
}
template <class T, auto fn>
double transpose(const Probe& p) {
    T a[6] = {};
    const int rows = p.small(2), cols = p.small(3);
    T* pa = p.p(a);
    fn(rows, cols, pa, p.p(a));  // in place: through a copy when there is memory for one
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

}  // namespace

#define PD(stem, ...) {"qnum_f_" #stem, __VA_ARGS__<float, qnum_f_##stem>, false, nan, nan, 0, {201}}, \
    {"qnum_d_" #stem, __VA_ARGS__<double, qnum_d_##stem>, false, nan, nan, 0, {201}}
const std::vector<Row>& rows() {
    static const std::vector<Row> t = {
        {"qnum_f_lin_sol_gen", solve<float, qnum_f_lin_sol_gen>, true, nan, nan, 0, {201}},
        {"qnum_d_lin_sol_gen", solve<double, qnum_d_lin_sol_gen>, true, nan, nan, 0, {201}},
        {"qnum_f_lin_sol_posdef", solve<float, qnum_f_lin_sol_posdef, 1>, true, nan, nan, 0, {201, 1035, 1036}},
        {"qnum_d_lin_sol_posdef", solve<double, qnum_d_lin_sol_posdef, 1>, true, nan, nan, 0, {201, 1035, 1036}},
        {"qnum_f_lin_sol_nonnegdef", solve<float, qnum_f_lin_sol_nonnegdef, 1>, true, nan, nan, 0, {201, 1047}},
        {"qnum_d_lin_sol_nonnegdef", solve<double, qnum_d_lin_sol_nonnegdef, 1>, true, nan, nan, 0, {201, 1047}},
        {"qnum_c_lin_sol_gen", solve<qnum_f_complex, qnum_c_lin_sol_gen>, true, nan, nan, 0, {201}},
        {"qnum_z_lin_sol_gen", solve<qnum_d_complex, qnum_z_lin_sol_gen>, true, nan, nan, 0, {201}},
        {"qnum_c_lin_sol_posdef", solve<qnum_f_complex, qnum_c_lin_sol_posdef, 1>, true, nan, nan, 0, {201, 1035, 1036}},
        {"qnum_z_lin_sol_posdef", solve<qnum_d_complex, qnum_z_lin_sol_posdef, 1>, true, nan, nan, 0, {201, 1035, 1036}},
        {"qnum_20000", solve<float, qnum_20000>, true, nan, nan, 0, {201}},
        {"qnum_20001", solve<double, qnum_20001>, true, nan, nan, 0, {201}},
        {"qnum_f_m1ran", transpose<float, qnum_f_m1ran>, false, nan, nan, 0, {0}}, {"qnum_d_m1ran", transpose<double, qnum_d_m1ran>, false, nan, nan, 0, {0}},
        {"qnum_c_m1ran", transpose<qnum_f_complex, qnum_c_m1ran>, false, nan, nan, 0, {0}},
        {"qnum_z_m1ran", transpose<qnum_d_complex, qnum_z_m1ran>, false, nan, nan, 0, {0}},
        PD(cub_spline_interp_e_cnd, build), PD(cub_spline_interp, build), PD(cub_spline_interp_shape, build),
        PD(cub_spline_smooth, build),
        {"qnum_f_ppoly_create", create<float, qnum_f_ppoly_create>, true, nan, nan, 2, {202}},
        {"qnum_d_ppoly_create", create<double, qnum_d_ppoly_create>, true, nan, nan, 2, {202}},
#define EV(p, T, P, what) evaluate<T, P, qnum_##p##_cub_spline_interp, qnum_##p##_cub_spline_value, qnum_##p##_cub_spline_integral, what>
        {"qnum_f_cub_spline_value", EV(f, float, Qnum_f_ppoly, 0), true, inf, inf, 1},
        {"qnum_d_cub_spline_value", EV(d, double, Qnum_d_ppoly, 0), true, inf, inf, 1},
        {"qnum_f_cub_spline_value", EV(f, float, Qnum_f_ppoly, 1), true, nan, nan, 0, {201}},
        {"qnum_d_cub_spline_value", EV(d, double, Qnum_d_ppoly, 1), true, nan, nan, 0, {201}},
        {"qnum_f_cub_spline_integral", EV(f, float, Qnum_f_ppoly, 2)}, {"qnum_d_cub_spline_integral", EV(d, double, Qnum_d_ppoly, 2)},
        {"qnum_f_int_fcn", quad<float, 0, qnum_f_int_fcn>, true, nan, nan, 1, {201}}, {"qnum_d_int_fcn", quad<double, 0, qnum_d_int_fcn>, true, nan, nan, 1, {201}},
        {"qnum_f_int_fcn_sing", quad<float, 0, qnum_f_int_fcn_sing>, true, nan, nan, 1, {201}}, {"qnum_d_int_fcn_sing", quad<double, 0, qnum_d_int_fcn_sing>, true, nan, nan, 1, {201}},
        {"qnum_f_int_fcn_smooth", quad<float, 7, qnum_f_int_fcn_smooth>}, {"qnum_d_int_fcn_smooth", quad<double, 7, qnum_d_int_fcn_smooth>},
        {"qnum_f_int_fcn_inf", quad<float, 1, qnum_f_int_fcn_inf>, true, 0, nan, 1, {201}}, {"qnum_d_int_fcn_inf", quad<double, 1, qnum_d_int_fcn_inf>, true, 0, nan, 1, {201}},
        {"qnum_f_int_fcn_trig", quad<float, 2, qnum_f_int_fcn_trig>, true, nan, nan, 1, {201}}, {"qnum_d_int_fcn_trig", quad<double, 2, qnum_d_int_fcn_trig>, true, nan, nan, 1, {201}},
        {"qnum_f_int_fcn_fourier", quad<float, 3, qnum_f_int_fcn_fourier>, true, nan, nan, 0, {201}}, {"qnum_d_int_fcn_fourier", quad<double, 3, qnum_d_int_fcn_fourier>, true, nan, nan, 0, {201}},
        {"qnum_f_int_fcn_cauchy", quad<float, 4, qnum_f_int_fcn_cauchy>, true, 0, 0, 1, {201}}, {"qnum_d_int_fcn_cauchy", quad<double, 4, qnum_d_int_fcn_cauchy>, true, 0, 0, 1, {201}},
        {"qnum_f_int_fcn_sing_pts", quad<float, 5, qnum_f_int_fcn_sing_pts>, true, nan, nan, 3, {201}},
        {"qnum_d_int_fcn_sing_pts", quad<double, 5, qnum_d_int_fcn_sing_pts>, true, nan, nan, 3, {201}},
        {"qnum_f_int_fcn_alg_log", quad<float, 6, qnum_f_int_fcn_alg_log>, true, nan, nan, 1, {201}}, {"qnum_d_int_fcn_alg_log", quad<double, 6, qnum_d_int_fcn_alg_log>, true, nan, nan, 1, {201}},
        {"qnum_f_zeros_fcn", zeros<float, qnum_f_zeros_fcn>, true, nan, nan, 2, {201}}, {"qnum_d_zeros_fcn", zeros<double, qnum_d_zeros_fcn>, true, nan, nan, 2, {201}}, {"qnum_f_linear_programming", lp<float, qnum_f_linear_programming>, true, 0, 0, 0, {201}},
        {"qnum_d_linear_programming", lp<double, qnum_d_linear_programming>, true, 0, 0, 0, {201}},
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
        {"qnum_d_machine", [](const Probe& p) { qnum_d_machine(p.n(1)); return done(); }},
        {"qnum_amach", [](const Probe& p) { forget(); qnum_amach(p.n(1)); return outcome().type >= 4 ? nan : 0; }},
        {"qnum_dmach", [](const Probe& p) { forget(); qnum_dmach(p.n(1)); return outcome().type >= 4 ? nan : 0; }},
        {"qnum_i_machine", [](const Probe& p) { qnum_i_machine(p.n(1)); return done(); }, true, nan, nan, 1},
        {"qnum_version", [](const Probe& p) { char* s = qnum_version(p.n(QNUM_OS_VERSION)); qnum_free_allocated_memory(s); return summary(s, 0); }, true, nan, nan, 0, {201}},
        {"qnum_umach", [](const Probe& p) {
             FILE* f = nullptr;
             const int u = p.n(3);
             qnum_umach(u, p.p(&f));
             return summary(f, 0);
         }},
        {"qnum_random_option", [](const Probe& p) { qnum_random_option(p.n(1)); return done(); }},
        {"qnum_error_options", [](const Probe& p) { int v = -1; const int t = p.n(3); qnum_error_options(QNUM_GET_PRINT, t, p.p(&v), 0); return v == -1 ? nan : v; }},
        {"qnum_d_read_mps", [](const Probe& p) { Qnum_d_mps* m = qnum_d_read_mps(p.p(mps_path().c_str()), 0); qnum_d_mps_free(m); return summary(m, 0); }, true, nan, nan, 0, {200, 201}},
    };
    return t;
}

namespace {

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

namespace qnum::test::hard {
namespace {

// ---- the kernels, whose arguments are built from their signatures ----
// From a call that raises nothing, each int argument in turn becomes 0, -1 and INT_MIN
// (larger values would describe arrays the caller does not have); then every int is 0 and
// every output array null, which a kernel must not touch. A kernel that reports an error has
// written nothing, and no kernel allocates.
template <auto f>
[[gnu::noinline]] long sweep_kernel(const char* name, std::set<std::string>& swept) {
    swept.insert(name);
    current = name;
    KernelArgs good;
    if (!kernel_baseline(f, good)) {
        ADD_FAILURE() << name << ": no call without an error";
        return 0;
    }
    long calls = 0;
    static KernelArgs k, before;
    auto run = [&](const char* what, int i, int bad) {
        k.fill(0.75);
        std::memcpy(before.arrays, k.arrays, sizeof k.arrays);
        alarm(60);
        AllocWatch watch;
        call_kernel(f, k);
        alarm(0);
        ++calls;
        EXPECT_EQ(watch.count(), 0) << name << " allocates";
        if (outcome().type != 0 && !k.null_arrays)
            EXPECT_EQ(std::memcmp(before.arrays, k.arrays, sizeof k.arrays), 0)
                << name << ": written after error " << outcome().code << " (" << what << " " << i << " = " << bad << ")";
    };
    for (int i = 0; i < good.n_ints; ++i)
        for (int bad : {0, -1, INT_MIN}) {
            k = good;
            k.ints[i] = bad;
            run("int argument", i, bad);
        }
    if (good.n_ints == 0) return calls;  // the rotation builders have no size to say "none"
    k = good;
    for (int& v : k.ints) v = 0;
    k.null_arrays = true;
    run("every size 0 and every output null", 0, 0);
    return calls;
}

#define K(f) +sweep_kernel<f>(#f, swept)
TEST(HardeningBadInput, EveryKernelChecksItsSizesAndTouchesNothingOnError) {
    QuietErrors quiet;
    signal(SIGALRM, hung);
    std::set<std::string> swept;
    const long calls = 0
        K(qnum_sdot) K(qnum_ddot) K(qnum_sdsdot) K(qnum_dsdot) K(qnum_saxpy) K(qnum_daxpy) K(qnum_sscal)
        K(qnum_dscal) K(qnum_scopy) K(qnum_dcopy) K(qnum_sswap) K(qnum_dswap) K(qnum_srot) K(qnum_drot)
        K(qnum_srotm) K(qnum_drotm) K(qnum_srotg) K(qnum_drotg) K(qnum_srotmg) K(qnum_drotmg) K(qnum_snrm2)
        K(qnum_dnrm2) K(qnum_sasum) K(qnum_dasum) K(qnum_isamax) K(qnum_idamax) K(qnum_caxpy) K(qnum_zaxpy)
        K(qnum_ccopy) K(qnum_zcopy) K(qnum_cscal) K(qnum_zscal) K(qnum_csscal) K(qnum_zdscal) K(qnum_cswap)
        K(qnum_zswap) K(qnum_csrot) K(qnum_zdrot) K(qnum_crotg) K(qnum_zrotg) K(qnum_cdotu) K(qnum_zdotu)
        K(qnum_cdotc) K(qnum_zdotc) K(qnum_icamax) K(qnum_izamax) K(qnum_scasum) K(qnum_dzasum) K(qnum_scnrm2)
        K(qnum_dznrm2) K(qnum_20731) K(qnum_20732) K(qnum_iset) K(qnum_20721) K(qnum_20722) K(qnum_20723)
        K(qnum_20724) K(qnum_20729) K(qnum_20730) K(qnum_20735) K(qnum_20736) K(qnum_20717) K(qnum_20718)
        K(qnum_20719) K(qnum_20720) K(qnum_20733) K(qnum_20734) K(qnum_svcal) K(qnum_sxyz) K(qnum_dxyz)
        K(qnum_icopy) K(qnum_cset) K(qnum_zset) K(qnum_cadd) K(qnum_zadd) K(qnum_ccgcg) K(qnum_dccgcg)
        K(qnum_ccbcb) K(qnum_dccbcb) K(qnum_sgemv) K(qnum_dgemv) K(qnum_cgemv) K(qnum_zgemv) K(qnum_sgbmv)
        K(qnum_dsgbmv) K(qnum_cgbmv) K(qnum_zgbmv) K(qnum_ssymv) K(qnum_dsymv) K(qnum_chemv) K(qnum_zhemv)
        K(qnum_20745) K(qnum_20746) K(qnum_ssbmv) K(qnum_dssbmv) K(qnum_chbmv) K(qnum_zhbmv) K(qnum_sspmv)
        K(qnum_dspmv) K(qnum_chpmv) K(qnum_zhpmv) K(qnum_strmv) K(qnum_dtrmv) K(qnum_ctrmv) K(qnum_ztrmv)
        K(qnum_stbmv) K(qnum_dtbmv) K(qnum_ctbmv) K(qnum_ztbmv) K(qnum_stpmv) K(qnum_dtpmv) K(qnum_ctpmv)
        K(qnum_ztpmv) K(qnum_strsv) K(qnum_dtrsv) K(qnum_ctrsv) K(qnum_ztrsv) K(qnum_stbsv) K(qnum_dtbsv)
        K(qnum_ctbsv) K(qnum_dctbsv) K(qnum_stpsv) K(qnum_dtpsv) K(qnum_ctpsv) K(qnum_ztpsv) K(qnum_sger)
        K(qnum_dger) K(qnum_cgeru) K(qnum_zgeru) K(qnum_cgerc) K(qnum_zgerc) K(qnum_ssyr) K(qnum_dsyr)
        K(qnum_20737) K(qnum_20738) K(qnum_cher) K(qnum_zher) K(qnum_20747) K(qnum_20748) K(qnum_sspr)
        K(qnum_dspr) K(qnum_chpr) K(qnum_zhpr) K(qnum_ssyr2) K(qnum_dsyr2) K(qnum_cher2) K(qnum_zher2)
        K(qnum_20749) K(qnum_20750) K(qnum_sspr2) K(qnum_dspr2) K(qnum_chpr2) K(qnum_zhpr2) K(qnum_sgemm)
        K(qnum_dgemm) K(qnum_cgemm) K(qnum_zgemm) K(qnum_ssymm) K(qnum_dsymm) K(qnum_csymm) K(qnum_zsymm)
        K(qnum_chemm) K(qnum_zhemm) K(qnum_ssyrk) K(qnum_dsyrk) K(qnum_csyrk) K(qnum_zsyrk) K(qnum_cherk)
        K(qnum_zherk) K(qnum_ssyr2k) K(qnum_dsyr2k) K(qnum_csyr2k) K(qnum_zsyr2k) K(qnum_cher2k) K(qnum_zher2k)
        K(qnum_strmm) K(qnum_dtrmm) K(qnum_ctrmm) K(qnum_ztrmm) K(qnum_strsm) K(qnum_dtrsm) K(qnum_ctrsm)
        K(qnum_ztrsm) K(qnum_20725) K(qnum_20726) K(qnum_20743) K(qnum_20744);
    std::printf("%ld calls of %zu kernels with bad sizes\n", calls, swept.size());
    // Every routine of the header is swept here or above, or is an error-stack primitive.
    for (const Row& row : rows()) swept.insert(row.name);
    for (const char* s : {"qnum_e1psh", "qnum_e1pop", "qnum_ermes", "qnum_e1mes", "qnum_e1sti", "qnum_e1str",
                          "qnum_e1std", "qnum_e1stc", "qnum_e1stz", "qnum_e1stl", "qnum_n1rty", "qnum_n1rcd",
                          "qnum_20305", "qnum_e1pos", "qnum_e1usr", "qnum_set_at_checksum", "qnum_skip_signal_handler",
                          "qnum_free_allocated_memory", "qnum_ifnan", "qnum_difnan", "qnum_tuned_path",
                          "qnum_random_seed_set", "qnum_random_seed_get", "qnum_d_mps_free", "qnum_rnses", "qnum_drnses",
                          "qnum_csevl", "qnum_dcsevl"})
        swept.insert(s);
    std::ifstream header(QNUM_HEADER);
    std::string line;
    int declared = 0;
    while (std::getline(header, line)) {
        const auto open = line.find('(');
        if (line.rfind("QNUM_API ", 0) != 0 || open == std::string::npos) continue;
        const auto start = line.rfind("qnum_", open);
        const std::string name = line.substr(start, open - start);
        ++declared;
        EXPECT_TRUE(swept.count(name)) << name << " is in the header but not swept";
    }
    EXPECT_GT(declared, 250);
}
#undef K

}  // namespace
}  // namespace qnum::test::hard
