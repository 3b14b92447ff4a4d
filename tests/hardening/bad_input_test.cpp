// Bad input over the whole public header: sizes 0, -1, INT_MIN, INT_MAX and ones whose
// products overflow, a null for each pointer argument, NaN and infinities for each value.
// Every call must end (a watchdog kills a hang) with a documented error, or with NaN or NULL
// where that is the documented answer; after an error of type FATAL or worse the result must
// be NaN or NULL, and a kernel that reports an error must have written nothing.
#include <dlfcn.h>

#include <csignal>
#include <cstring>
#include <fstream>
#include <algorithm>
#include <memory>
#include <iterator>
#include <sstream>

#include "hardening.hpp"

#ifndef __x86_64__
#error "the kernel caller places arguments as the x86-64 calling convention does"
#endif

namespace qnum::test::hard {

const std::vector<Proto>& prototypes() {
    static const std::vector<Proto> all = [] {
        std::vector<Proto> v;
        std::ifstream header(QNUM_HEADER);
        std::string line, prev, decl, section;
        while (std::getline(header, line)) {
            if (prev.rfind("/* -----", 0) == 0) section = line;  // a section heading
            prev = line;
            if (line.rfind("QNUM_API ", 0) == 0) decl = " ";
            if (decl.empty() || (decl += line).find(';') == std::string::npos) continue;
            const auto open = decl.find('('), close = decl.rfind(')');
            Proto p;
            p.name = decl.substr(decl.rfind("qnum_", open), open - decl.rfind("qnum_", open));
            p.kernel = section.find("kernels") != std::string::npos;
            std::stringstream list(decl.substr(open + 1, close - open - 1));
            for (std::string q; std::getline(list, q, ',');) {  // a function pointer or "..." is kind '?'
                if (q == "void") continue;
                const long stars = std::count(q.begin(), q.end(), '*') + (q.find('[') != std::string::npos);
                const bool known = q.find_first_of("(.") == std::string::npos && stars < 2, ptr = stars == 1;
                std::replace_if(q.begin(), q.end(), [](char c) { return c == '*' || c == '[' || c == ']'; }, ' ');
                std::istringstream words(q);
                const std::vector<std::string> w{std::istream_iterator<std::string>(words), {}};
                const std::string base = w.size() > 1 ? w[w.size() - 2] : "", name = w.empty() ? "" : w.back();
                p.kinds += !known ? '?' : ptr ? (base == "char" ? 's' : base == "int" && name != "x" && name != "y" ? 'n' : 'a')
                                 : base == "int" ? 'i' : base == "float" ? 'f' : base == "double" ? 'd' : '?';
                p.out.push_back(ptr && !w.empty() && w.front() != "const");
            }
            v.push_back(p);
            decl.clear();
        }
        return v;
    }();
    return all;
}

Kernel::Kernel(const Proto& p) : proto(&p), fn(dlsym(RTLD_DEFAULT, p.name.c_str())) {
    for (char c : p.kinds) n_ints += c == 'i' || c == 'n', n_strs += c == 's';
}
// Integer-class arguments fill six registers and then the stack in order; float and double
// scalars (never more than eight) take the vector registers, a float in the low half.
void Kernel::call() {
    using L = long;
    using D = double;
    L r[20] = {};
    D x[8] = {};
    int nr = 0, nx = 0, ni = 0, ns = 0, na = 0;
    const float one = 1;
    for (std::size_t j = 0; j < proto->kinds.size(); ++j) switch (proto->kinds[j]) {
        case 'i': r[nr++] = ints[ni++]; break;
        case 'n': r[nr++] = L(&ints[ni++]); break;
        case 's': r[nr++] = L(strs[ns++]); break;
        case 'a': r[nr++] = null_out && proto->out[j] ? 0 : L(arrays[na]), ++na; break;
        case 'f': std::memcpy(&x[nx++], &one, sizeof one); break;
        default: x[nx++] = 1;
        }
    forget();
    reinterpret_cast<void (*)(L, L, L, L, L, L, D, D, D, D, D, D, D, D, L, L, L, L, L, L, L, L, L, L, L, L, L, L)>(fn)(
        r[0], r[1], r[2], r[3], r[4], r[5], x[0], x[1], x[2], x[3], x[4], x[5], x[6], x[7], r[6], r[7], r[8], r[9],
        r[10], r[11], r[12], r[13], r[14], r[15], r[16], r[17], r[18], r[19]);
}
// Option strings from N, U and L and, when ones for every int do not do, some ints 0 (band widths).
bool Kernel::baseline() {
    static const char* const choice[3] = {"N", "U", "L"};
    int combos = 1;
    for (int j = 0; j < n_strs; ++j) combos *= 3;
    for (int zeros = 0; zeros <= 4; ++zeros)
        for (int mask = 0; mask < (1 << n_ints); ++mask)
            for (int s = 0; s < combos && __builtin_popcount(mask) == zeros; ++s) {
                for (int i = 0; i < n_ints; ++i) ints[i] = (mask >> i) & 1 ? 0 : 1;
                for (int j = 0, c = s; j < n_strs; ++j, c /= 3) strs[j] = choice[c % 3];
                call();
                if (qnum_n1rty(1) == 0) return true;
            }
    return false;
}

namespace {
template <class T> T sq(T x) { return x * x; }
template <class T> T decay(T x) { return std::exp(-x); }
template <class T> T wiggle(T x) { return std::cos(T(2000) * x) + T(2); }
template <class T> T wiggle_decay(T x) { return std::exp(-x) * (std::cos(T(30) * x) + T(2)); }
template <class T> T quadratic(T x) { return x * x - 2; }
template <class T> T* xs() { static T x[6] = {1, 0, 0.5, 1.5, 2, 2.5}; return x; }  // unsorted
template <class T> T* fs() { static T f[6] = {1, 0, 0.25, 2.25, 4, 6.25}; return f; }
// A result handed back: NaN for NULL, else v; freed.
template <class P> double summary(P* p, double v = 0) { return qnum_free_allocated_memory(p), p == nullptr ? nan : v; }
double done() { return qnum_n1rty(1) >= 4 || qnum_n1rty(0) >= 4 ? nan : 0; }  // nothing after a failure
template <class T> auto& re(T& v) {  // the real part
    if constexpr (std::is_arithmetic_v<T>) return v;
    else return v.re;
}
auto interp(float* x, float* f) { return qnum_f_cub_spline_interp(6, x, f, 0); }
auto interp(double* x, double* f) { return qnum_d_cub_spline_interp(6, x, f, 0); }
template <class T> auto* shared_spline() {  // made once, kept
    static auto* pp = interp(xs<T>(), fs<T>());
    return pp;
}
double integral(float a, float b, Qnum_f_ppoly* pp) { return qnum_f_cub_spline_integral(a, b, pp); }
double integral(double a, double b, Qnum_d_ppoly* pp) { return qnum_d_cub_spline_integral(a, b, pp); }

// The solvers with a factor and an inverse handed back: after a failure none of them is.
template <class T, auto fn, int definite>
double solve(const Probe& p) {
    T a[9] = {}, b[3] = {}, *fac = nullptr, *inv = nullptr;
    int* pvt = nullptr;
    for (int i = 0; i < 9; ++i) re(a[i]) = i == 4 ? p.v(4.0) : i % 4 == 0 ? 4 : 1, re(b[i % 3]) = 1;
    const int n = p.n(3);
    T *pa = p.p(a), *pb = p.p(b), **pf = p.p(&fac), **pi = p.p(&inv);
    T* x = definite ? fn(n, pa, pb, QNUM_FACTOR, pf, QNUM_INVERSE, pi, 0)
                    : fn(n, pa, pb, QNUM_FACTOR, p.p(&pvt), pf, QNUM_INVERSE, pi, 0);
    EXPECT_TRUE(x || (!fac && !inv && !pvt)) << "results handed back after a failure";
    for (void* q : {(void*)fac, (void*)inv, (void*)pvt}) qnum_free_allocated_memory(q);
    return summary(x, x ? re(x[0]) : 0);
}
template <class T, auto fn, int>
double transpose(const Probe& p) {  // in place: through a copy when there is memory for one
    T a[6] = {};
    const int rows = p.small(2), cols = p.small(3);
    T* pa = p.p(a);
    return fn(rows, cols, pa, p.p(a)), done();
}
// Spline builders (what -1), the value (0), a grid of values (1), the integral (2).
template <class T, auto fn, int what>
double spline(const Probe& p) {
    auto* pp = what >= 0 ? shared_spline<T>() : nullptr;
    T x[6], f[6], *out = nullptr;
    std::copy(xs<T>(), xs<T>() + 6, x), std::copy(fs<T>(), fs<T>() + 6, f);
    if constexpr (what == -1) {
        x[3] = p.v(x[3]), f[3] = p.v(f[3]);
        const int n = p.n(6);
        T* px = p.p(x);
        auto* q = fn(n, px, p.p(f), 0);
        return summary(q, q ? integral(T(0), T(2.5), q) : 0);
    } else if constexpr (what == 0) {
        const T at = p.v(T(1));
        return fn(at, p.p(pp), QNUM_DERIV, p.n(1), 0);
    } else if constexpr (what == 1) {
        T xv[3] = {0.5, p.v(T(1)), 2};
        const int n = p.small(3);
        auto* q = p.p(pp);
        T* px = p.p(xv);
        fn(T(0), q, QNUM_GRID, n, px, p.p(&out), 0);
        return summary(out, out ? out[1] : 0);
    } else {
        const T a = p.v(T(0)), b = p.v(T(2));
        return fn(a, b, p.p(pp));
    }
}
template <class T, auto fn, int>
double create(const Probe& p) {
    int order[1] = {4}, nbp[1] = {5};
    const int domain = p.small(1), target = p.n(1);
    int* po = p.p(order);
    return summary(fn(domain, target, po, p.p(nbp), 0));
}
// The quadrature members by their shapes: 0 [a, b], 1 a half line, 2 and 3 weighted by
// sin or cos, 4 Cauchy, 5 break points, 6 algebraic-logarithmic, 7 no options.
template <class T, auto fn, int shape>
double quad(const Probe& p) {
    const bool w1 = wiggly_integrands && shape != 2 && shape != 3;
    T (*f)(T) = p.p(shape == 1 || shape == 3 ? (w1 ? wiggle_decay<T> : decay<T>) : w1 ? wiggle<T> : sq<T>);
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
template <class T, auto fn, int>
double zeros(const Probe& p) {
    T guess[1] = {p.v(T(1))};
    const int roots = p.small(1), evals = p.n(100);
    T (*f)(T) = p.p(quadratic<T>);
    T* z = fn(f, QNUM_NUM_ROOTS, roots, QNUM_MAX_EVALS, evals, QNUM_XGUESS, p.p(guess), 0);
    return summary(z, z ? z[0] : 0);
}
template <class T, auto fn, int>
double lp(const Probe& p) {
    int rows[2] = {0, 0}, cols[2] = {0, 1}, type[1] = {'G'};
    double values[2] = {1, 1}, obj[2] = {p.v(1.0), 2}, rhs[1] = {p.v(1.0)};
    Qnum_d_mps m{};
    m.nrows = p.small(1), m.ncolumns = p.small(2), m.nonzeros = p.small(2);
    m.matrix_row = p.p(rows), m.matrix_column = p.p(cols), m.matrix_value = p.p(values);
    m.objective = p.p(obj), m.rhs = p.p(rhs), m.row_type = p.p(type);
    T* x = fn(p.p(&m), 0);
    return summary(x, x ? x[0] : 0);
}
// One, two or three arguments; k = 12 for the one-argument routines defined from 10 up.
template <class T, auto fn, int k>
double special(const Probe& p) {
    const T x = p.v(T(k == 12 ? 12 : k == 3 ? 0.5 : 0.75)), a = k == 2 || k == 3 ? p.v(T(1.5)) : T(0);
    if constexpr (k == 2) return fn(x, a);
    else if constexpr (k == 3) return fn(x, a, p.v(T(2)));
    else return fn(x);
}
template <class T, auto fn, int>
double erfe(const Probe& p) {
    const float x = p.v(0.5f);
    const T r = fn(T{x, p.v(0.25f)});
    return std::isnan(r.re) || std::isnan(r.im) ? nan : r.re;
}
template <class T, auto fn, int>  // the outcome only: some return a value after their error
double machine(const Probe& p) {
    forget();
    return fn(p.n(1)), outcome().type >= 4 ? nan : 0;
}
template <class T, auto init, int>  // the count, then the series: NaN after an error of either
double series(const Probe& p) {
    static const T cs[4] = {T(1), T(0.5), T(0.01), T(1e-9)};
    const int n = p.small(4), m = p.n(3);
    const int terms = init(p.p(cs), n, T(1e-6));
    p.after();
    const T x = p.v(T(0.5));
    double v;
    if constexpr (std::is_same_v<T, float>) v = qnum_csevl(x, p.p(cs), m);
    else v = qnum_dcsevl(x, p.p(cs), m);
    return outcome().type < 4 && p.worst.type >= 4 ? nan : v + terms;
}
template <class T, auto fn, int>
double draw(const Probe& p) {
    T r[4];
    const int n = p.n(4);  // the caller's array holds 4: larger requests are allocated
    T* x = n <= 4 ? fn(n, QNUM_RETURN_USER, p.p(r), 0) : fn(n, 0);
    return x == r ? 0 : summary(x);
}
template <class T, auto fill, int>  // the option, the table and the numbers: NaN after any error
double draw_into(const Probe& p) {
    T r[4], t[128];
    std::fill(t, t + 128, T(0.5));
    t[7] = p.v(T(0.25));
    qnum_random_option(p.n(2));
    p.after();
    if constexpr (std::is_same_v<T, float>) qnum_rnses(p.p(t));
    else qnum_drnses(p.p(t));
    p.after();
    const int n = p.small(4);
    fill(n, p.p(r));
    p.after();
    qnum_random_option(1);
    return p.worst.type >= 4 ? nan : r[0];
}
}  // namespace

bool wiggly_integrands = false;

#define PAIR(F, f, D, d, helper, k, ...) {#f, helper<F, f, k>, __VA_ARGS__}, {#d, helper<D, d, k>, __VA_ARGS__}
#define FD(stem, ...) PAIR(float, qnum_f_##stem, double, qnum_d_##stem, __VA_ARGS__)
#define CZ(stem, ...) PAIR(qnum_f_complex, qnum_c_##stem, qnum_d_complex, qnum_z_##stem, __VA_ARGS__)
const std::vector<Row>& rows() {
    static const std::vector<Row> t = {
        FD(lin_sol_gen, solve, 0, {201}), CZ(lin_sol_gen, solve, 0, {201}), PAIR(float, qnum_20000, double, qnum_20001, solve, 0, {201}),
        FD(lin_sol_posdef, solve, 1, {201, 1035, 1036}), CZ(lin_sol_posdef, solve, 1, {201, 1035, 1036}),
        FD(lin_sol_nonnegdef, solve, 1, {201, 1047}),
        FD(m1ran, transpose, 0, {0}, nan, nan, 0, false), CZ(m1ran, transpose, 0, {0}, nan, nan, 0, false),
        FD(cub_spline_interp_e_cnd, spline, -1, {201}, nan, nan, 0, false), FD(cub_spline_interp, spline, -1, {201}, nan, nan, 0, false),
        FD(cub_spline_interp_shape, spline, -1, {201}, nan, nan, 0, false), FD(cub_spline_smooth, spline, -1, {201}, nan, nan, 0, false),
        FD(ppoly_create, create, 0, {202}, nan, nan, 2),
        FD(cub_spline_value, spline, 0, {}, inf, inf, 1), FD(cub_spline_value, spline, 1, {201}), FD(cub_spline_integral, spline, 2),
        FD(int_fcn, quad, 0, {201}, nan, nan, 1), FD(int_fcn_sing, quad, 0, {201}, nan, nan, 1), FD(int_fcn_smooth, quad, 7),
        FD(int_fcn_inf, quad, 1, {201}, 0, nan, 1), FD(int_fcn_trig, quad, 2, {201}, nan, nan, 1), FD(int_fcn_fourier, quad, 3, {201}),
        FD(int_fcn_cauchy, quad, 4, {201}, 0, 0, 1), FD(int_fcn_sing_pts, quad, 5, {201}, nan, nan, 3),
        FD(int_fcn_alg_log, quad, 6, {201}, nan, nan, 1), FD(zeros_fcn, zeros, 0, {201}, nan, nan, 2),
        FD(linear_programming, lp, 0, {201}, 0, 0), FD(random_uniform, draw, 0, {}, nan, nan, 1),
        PAIR(float, qnum_rnun, double, qnum_drnun, draw_into, 0, {}, nan, nan, 0, false),
        PAIR(float, qnum_inits, double, qnum_initds, series, 0, {}, nan, nan, 0, false),
        FD(erf, special, 1, {200}, 1, -1), FD(erfc, special, 1, {200}, 0, 2), FD(erf_inverse, special, 1), FD(erfc_inverse, special, 1),
        FD(gamma, special, 1), FD(log_gamma, special, 1), PAIR(float, qnum_r9lgmc, double, qnum_d9lgmc, special, 12, {}, 0),
        FD(beta, special, 2, {}, 0), FD(log_beta, special, 2, {}, -inf), FD(gamma_incomplete, special, 2),
        FD(beta_incomplete, special, 3), CZ(erfe, erfe, 0), FD(machine, machine, 0), PAIR(int, qnum_amach, int, qnum_dmach, machine, 0),
        {"qnum_i_machine", machine<int, qnum_i_machine, 0>, {}, nan, nan, 1}, {"qnum_random_option", machine<int, qnum_random_option, 0>, {200}},
        {"qnum_version", [](const Probe& p) { return summary(qnum_version(p.n(QNUM_OS_VERSION))); }, {201}},
        {"qnum_umach", [](const Probe& p) { FILE* f = nullptr; const int u = p.n(3); qnum_umach(u, p.p(&f)); return f ? 0 : nan; }, {200}},
        {"qnum_error_options", [](const Probe& p) { int v = -1; const int t = p.n(3); qnum_error_options(QNUM_GET_PRINT, t, p.p(&v), 0); return v == -1 ? nan : v; }},
        {"qnum_d_read_mps", [](const Probe& p) {
             static const std::string path = [] {  // a small linear programme
                 const std::string name = ::testing::TempDir() + "hardening_tiny.mps";
                 std::ofstream(name) << "NAME          TINY\nROWS\n N  COST\n L  LIM1\n G  LIM2\nCOLUMNS\n"
                     "    X1        COST               1.0   LIM1               1.0\n    X1        LIM2               1.0\n"
                     "    X2        COST               2.0   LIM1               1.0\n    X2        LIM2               1.0\n"
                     "RHS\n    RHS       LIM1               4.0   LIM2               1.0\n"
                     "BOUNDS\n UP BND       X1                 3.0\nENDATA\n";
                 return name;
             }();
             Qnum_d_mps* m = qnum_d_read_mps(p.p(path.c_str()), 0);
             const double r = m ? 0 : nan;
             return qnum_d_mps_free(m), r;
         }, {200, 201}},
    };
    return t;
}

namespace {
// The trouble with one outcome of a routine's row, or "".
std::string judge(const Row& row, const Probe& p, double r, Outcome o) {
    if (o.type >= 4 && !std::isnan(r)) return "a result after error " + std::to_string(o.code);
    if (p.kind == Probe::none) return o.type || std::isnan(r) ? "fails on good input, code " + std::to_string(o.code) : "";
    if (o.type >= 1 || std::isnan(r) || std::isinf(r)) return "";
    if (p.kind == Probe::value && p.bad == inf && r == row.at_inf) return "";
    if (p.kind == Probe::value && p.bad == -inf && r == row.at_minus_inf) return "";
    if (p.kind == Probe::size && p.bad >= 0 && (row.counts >> (p.which - 1) & 1)) return "";
    return "an ordinary-looking answer " + std::to_string(r) + " without an error";
}

// A kernel from its clean call with int i set to `bad` (i < 0: every int 0 and every output
// null, which it must not touch). It must not allocate, and after an error it has written nothing.
Verdict kernel_call(const Kernel& good, int i, int bad) {
    thread_local auto k = std::make_unique<Kernel>(good), before = std::make_unique<Kernel>(good);
    *k = good;
    if (i >= 0) k->ints[i] = bad;
    else if (i == -1) std::fill(k->ints, k->ints + 20, 0), k->null_out = true;
    k->fill(0.75);
    std::memcpy(before->arrays, k->arrays, sizeof k->arrays);
    AllocWatch watch;
    k->call();
    Verdict v{0, outcome(), watch.count() ? "allocates" : ""};
    if (v.o.type && !k->null_out && std::memcmp(before->arrays, k->arrays, sizeof k->arrays))
        v.bad = "written after error " + std::to_string(v.o.code);
    for (const auto& a : k->arrays) v.r += a[0] + a[1];
    return v;
}
}  // namespace

// Each row's call with good input and then with each probe: sizes 0, -1, INT_MIN and (where
// the size is checked or allocated first) INT_MAX, 46341 and 2^30; a null for each pointer;
// NaN and infinities for each value. Each kernel from a clean call with each int argument in
// turn 0, -1 and INT_MIN (larger values would describe arrays the caller does not have).
const std::vector<SweepCall>& sweep() {
    static const std::vector<SweepCall> calls = [] {
        std::vector<SweepCall> v;
        for (const Row& row : rows()) {
            Probe census;
            forget();
            row.call(census);
            std::vector<Probe> probes(1);
            for (int i = 1; i <= census.sizes; ++i)
                for (double s : {0.0, -1.0, double(INT_MIN), double(INT_MAX), 46341.0, double(1 << 30)})
                    if ((row.huge && !(census.small_mask >> (i - 1) & 1)) || s <= 0) probes.push_back({Probe::size, i, s});
            for (int i = 1; i <= census.ptrs; ++i) probes.push_back({Probe::null, i});
            for (int i = 1; i <= census.values; ++i)
                for (double x : {nan, inf, -inf}) probes.push_back({Probe::value, i, x});
            for (const Probe& p : probes)
                v.push_back({row.name, "probe " + std::to_string(p.kind) + " #" + std::to_string(p.which) + " = " + std::to_string(p.bad), [&row, p] {
                    const Probe q = p;  // fresh counters
                    forget();
                    const double r = row.call(q);
                    const Outcome o = outcome();
                    return Verdict{r, q.worst.type > o.type ? q.worst : o, judge(row, q, r, q.worst.type > o.type ? q.worst : o)};
                }});
        }
        for (const Proto& pr : prototypes()) {
            if (!pr.kernel) continue;
            auto good = std::make_shared<Kernel>(pr);
            if (!good->fn || pr.kinds.find('?') != std::string::npos || !good->baseline()) {
                v.push_back({pr.name, "", [] { return Verdict{0, {0, 0}, "not callable from its prototype, or no call without an error"}; }});
                continue;
            }
            const int first = good->n_ints ? -1 : -2;  // the rotation builders have no size to say "none": as found
            for (int i = first; i < good->n_ints; ++i)
                for (int bad : {0, -1, INT_MIN})
                    if (i >= 0 || (bad == 0 && i == first)) v.push_back({pr.name, "int " + std::to_string(i) + " = " + std::to_string(bad), [good, i, bad] { return kernel_call(*good, i, bad); }});
        }
        return v;
    }();
    return calls;
}

namespace {
const char* current = "";
void hung(int) {
    const char msg[] = "bad-input sweep: a call did not end: ";
    (void)!write(2, msg, sizeof msg - 1);
    (void)!write(2, current, std::strlen(current));
    _exit(124);
}

TEST(HardeningBadInput, EveryCallEndsWithADocumentedOutcome) {
    QuietErrors quiet;
    signal(SIGALRM, hung);
    set_size_cap(std::size_t(1) << 28);  // bigger requests fail, as in a full process
    for (const SweepCall& c : sweep()) {
        current = c.name.c_str();
        alarm(60);
        EXPECT_EQ(c.run().bad, "") << c.name << ": " << c.what;
        alarm(0);
    }
    set_size_cap(SIZE_MAX);
    std::printf("%zu calls with bad input\n", sweep().size());
}

}  // namespace
}  // namespace qnum::test::hard
