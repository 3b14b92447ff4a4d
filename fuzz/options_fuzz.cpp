// Fuzz target: the optional-argument readers of the routines with many options. The input
// picks a routine and is decoded into its option list: codes the routine takes, each with
// values of the right kinds (ints, doubles, pointers to caller buffers of the size the
// routine may write, addresses that receive new arrays, functions with data), codes it does
// not take and arbitrary integers, in any order and repetition. Every call must come back
// with a result or an error; whatever it handed back is freed.
//
// Building a variadic call at run time: on x86-64 Linux, integer and pointer arguments of a
// variadic call travel in the general registers and then on the stack, in order, and doubles
// in the vector registers, independently of how the two kinds interleave, as long as the
// doubles all fit in the vector registers. Each call below therefore passes a fixed number of
// integer-class slots (ints widened to long, pointers) followed by a fixed number of double
// slots; the reader takes each kind in the order the decoded list defines.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <vector>

#include "fuzz_util.hpp"

// fuzz-sources: src/frame src/kernels src/linsys src/interp src/quadrature src/zeros src/optim
// fuzz-options: -max_len=512

namespace {

constexpr int gp_slots = 32;  // integer-class slots after the fixed arguments
constexpr int fp_slots = 4;   // double slots: the fixed doubles of every routine here leave 4

#define QF_GP(g)                                                                                                \
    g[0], g[1], g[2], g[3], g[4], g[5], g[6], g[7], g[8], g[9], g[10], g[11], g[12], g[13], g[14], g[15], g[16], \
        g[17], g[18], g[19], g[20], g[21], g[22], g[23], g[24], g[25], g[26], g[27], g[28], g[29], g[30], g[31]
#define QF_FP(d) d[0], d[1], d[2], d[3]

// Value kinds of an option, one letter per value:
//   i any int        k small count (-2..12)   m list length (-2..600)   d any double
//   s T* one value   j int* one value         A T** new array           B int** new array
//   f function       v data pointer
//   T arrays: p [n1]  q [n2]  F [n1 * fac_col_dim]  G [n1 * inv_col_dim]  M [max_subinter]
//             R [num_roots]  X [grid points]
//   int arrays: P [n1]  Q [n2]  O [max_subinter]  I [num_roots]
struct Opt {
    int code;
    const char* kinds;
};

// Every option code of the header's option-taking routines: a routine meets the others as
// codes it does not take.
constexpr int all_codes[] = {
    QNUM_TRANSPOSE,       QNUM_A_COL_DIM,      QNUM_FACTOR,           QNUM_FAC_COL_DIM,     QNUM_FACTOR_ONLY,
    QNUM_SOLVE_ONLY,      QNUM_TOLERANCE,      QNUM_FACTOR_USER,      QNUM_INVERSE,         QNUM_INVERSE_USER,
    QNUM_INV_COL_DIM,     QNUM_INVERSE_ONLY,   QNUM_CONDITION,        QNUM_RETURN_USER,     QNUM_FCN_W_DATA,
    QNUM_BREAKPOINTS,     QNUM_COEFFICIENTS,   QNUM_DERIV,            QNUM_CONCAVE,         QNUM_PERIODIC,
    QNUM_LEFT,            QNUM_RIGHT,          QNUM_LEFT_ADR,         QNUM_RIGHT_ADR,       QNUM_WEIGHTS,
    QNUM_SMOOTHING_PAR,   QNUM_CONCAVE_ITMAX,  QNUM_SMOOTHING_PAR_ADR, QNUM_GRID,           QNUM_GRID_USER,
    QNUM_ERR_ABS,         QNUM_ERR_REL,        QNUM_ERR_ABS_ADR,      QNUM_ERR_REL_ADR,     QNUM_RULE,
    QNUM_ERR_EST,         QNUM_MAX_SUBINTER,   QNUM_N_SUBINTER,       QNUM_N_EVALS,         QNUM_ERR_LIST_USER,
    QNUM_ORDER_LIST_USER, QNUM_MAX_MOMENTS,    QNUM_MAX_CYCLES,       QNUM_ETA,             QNUM_EPS,
    QNUM_ETA_ADR,         QNUM_EPS_ADR,        QNUM_NUM_ROOTS,        QNUM_MAX_EVALS,       QNUM_XGUESS,
    QNUM_INFO_USER,       QNUM_INFO,           QNUM_MPS_FILE,         QNUM_LP_OBJ_VALUE,    QNUM_LP_ROW_ACTIVITY,
    QNUM_LP_DUALS,        QNUM_LP_REDUCED_COSTS, QNUM_LP_BASIS,       QNUM_LP_ITERATIONS,   QNUM_LP_MAX_ITERATIONS,
    QNUM_LP_FEASIBILITY_TOL, QNUM_LP_OPTIMALITY_TOL, QNUM_LP_MAXIMIZE, QNUM_LP_WARM_START,  QNUM_LP_PROGRESS};

// ---- the routines' own options ----

const std::vector<Opt> quad_shared = {{QNUM_ERR_ABS, "d"},     {QNUM_ERR_REL, "d"}, {QNUM_ERR_ABS_ADR, "s"},
                                      {QNUM_ERR_REL_ADR, "s"}, {QNUM_ERR_EST, "s"}, {QNUM_N_EVALS, "j"},
                                      {QNUM_FCN_W_DATA, "fv"}};
const std::vector<Opt> quad_lists = {{QNUM_MAX_SUBINTER, "m"},
                                     {QNUM_N_SUBINTER, "j"},
                                     {QNUM_ERR_LIST_USER, "M"},
                                     {QNUM_ORDER_LIST_USER, "O"}};
const std::vector<Opt> linsys_shared = {
    {QNUM_A_COL_DIM, "k"}, {QNUM_FAC_COL_DIM, "k"},    {QNUM_FACTOR_ONLY, ""},    {QNUM_SOLVE_ONLY, ""},
    {QNUM_INVERSE, "A"},   {QNUM_INVERSE_USER, "G"},   {QNUM_INV_COL_DIM, "k"},   {QNUM_INVERSE_ONLY, ""},
    {QNUM_RETURN_USER, "p"}};
const std::vector<Opt> zeros_options = {
    {QNUM_ERR_ABS, "d"},   {QNUM_ERR_REL, "d"},    {QNUM_ETA, "e"},       {QNUM_EPS, "e"},
    {QNUM_ERR_ABS_ADR, "s"}, {QNUM_ERR_REL_ADR, "s"}, {QNUM_ETA_ADR, "t"}, {QNUM_EPS_ADR, "t"},
    {QNUM_NUM_ROOTS, "k"}, {QNUM_MAX_EVALS, "m"},  {QNUM_XGUESS, "R"},    {QNUM_INFO_USER, "I"},
    {QNUM_INFO, "B"},      {QNUM_RETURN_USER, "R"}, {QNUM_FCN_W_DATA, "fv"}};
const std::vector<Opt> lp_options = {
    {QNUM_RETURN_USER, "q"},        {QNUM_LP_OBJ_VALUE, "s"},      {QNUM_LP_ROW_ACTIVITY, "p"},
    {QNUM_LP_DUALS, "p"},           {QNUM_LP_REDUCED_COSTS, "q"},  {QNUM_LP_BASIS, "PQ"},
    {QNUM_LP_ITERATIONS, "j"},      {QNUM_LP_MAX_ITERATIONS, "i"}, {QNUM_LP_FEASIBILITY_TOL, "d"},
    {QNUM_LP_OPTIMALITY_TOL, "d"},  {QNUM_LP_MAXIMIZE, ""},        {QNUM_LP_WARM_START, "PQ"},
    {QNUM_LP_PROGRESS, "fv"}};

std::vector<Opt> join(std::initializer_list<std::vector<Opt>> parts) {
    std::vector<Opt> all;
    for (const auto& p : parts) all.insert(all.end(), p.begin(), p.end());
    return all;
}

// ---- decoding ----

// The sizes that caller arrays depend on: n1 and n2 are the routine's own (matrix order,
// number of data, rows and columns), the rest the largest value any option gave.
struct Dims {
    int n1 = 1, n2 = 1;
    std::map<int, int> given;
    int largest(int code, int fallback) const {
        auto it = given.find(code);
        return it == given.end() ? fallback : std::max(fallback, it->second);
    }
};

// An option list under construction, with the buffers its pointers point to.
template <class T>
struct Call {
    long g[gp_slots] = {};
    double d[fp_slots] = {};
    int ng = 0, nd = 0;
    bool tame = false;  // doubles for the zero finder's eta and eps stay moderate
    std::vector<std::vector<T>> reals;
    std::vector<std::vector<int>> ints;
    std::vector<void*> fresh;  // addresses of pointers that may receive new arrays
    struct Pending {
        int slot;
        char kind;
        int code;
    };
    std::vector<Pending> pending;  // pointer slots filled once every size is known
    std::uint8_t seed = 0;
    T* fresh_real[8] = {};
    int* fresh_int[8] = {};
    int nfresh_real = 0, nfresh_int = 0;
};

// The integer and double slots an option's values take.
void count(const char* kinds, int& gp, int& fp) {
    gp = 1;  // the code
    fp = 0;
    for (const char* k = kinds; *k; ++k) (*k == 'd' || *k == 'e') ? ++fp : ++gp;
}

double tame_double(FuzzedDataProvider& in) {
    static const double values[] = {0.0, 1e-3, 0.01, -0.01, 1e-6, std::numeric_limits<double>::quiet_NaN()};
    return values[in.ConsumeIntegralInRange<int>(0, 5)];
}

double user_function_data = 2.0;

template <class T>
T quad_with_data(T x, void* data) {
    return data ? x * static_cast<T>(*static_cast<double*>(data)) : x * x;
}
template <class T>
T zero_with_data(T x, void* data) {
    return (x - T(1)) * (x + (data ? static_cast<T>(*static_cast<double*>(data)) : T(3)));
}
void progress(int, double, double, double, void* data) {
    if (data) *static_cast<double*>(data) += 1;
}

enum class Family { quad, linsys, spline_build, spline_value, zeros, lp };

template <class T>
void decode(FuzzedDataProvider& in, const std::vector<Opt>& own, Family family, Call<T>& c, Dims& dims) {
    const int room = gp_slots - 1;  // the last slot stays 0: the list always ends
    while (in.remaining_bytes() > 0) {
        const int pick = in.ConsumeIntegralInRange<int>(0, static_cast<int>(own.size()) + 2);
        if (pick == static_cast<int>(own.size())) break;  // end of the list
        if (pick == static_cast<int>(own.size()) + 1) {
            // A code the routine does not take, or any integer (0 and below end the list).
            // An integer that happens to be one of the routine's own codes is moved off it: its
            // values would not follow.
            if (c.ng >= room) break;
            int code = in.ConsumeBool() ? all_codes[in.ConsumeIntegralInRange<std::size_t>(0, std::size(all_codes) - 1)]
                                        : in.ConsumeIntegral<int>();
            for (const Opt& o : own)
                if (o.code == code) code ^= 0x40000000;
            c.g[c.ng++] = code;
            continue;
        }
        const Opt& o = own[static_cast<std::size_t>(pick > static_cast<int>(own.size()) ? 0 : pick)];
        int gp, fp;
        count(o.kinds, gp, fp);
        if (c.ng + gp > room || c.nd + fp > fp_slots) break;
        c.g[c.ng++] = o.code;
        for (const char* k = o.kinds; *k; ++k) {
            switch (*k) {
            case 'i': c.g[c.ng++] = in.ConsumeIntegral<int>(); break;
            case 'k':
            case 'm': {
                const int v = *k == 'k' ? in.ConsumeIntegralInRange<int>(-2, 12) : in.ConsumeIntegralInRange<int>(-2, 600);
                int key = o.code == QNUM_GRID_USER ? QNUM_GRID : o.code;
                auto it = dims.given.find(key);
                dims.given[key] = it == dims.given.end() ? v : std::max(it->second, v);
                c.g[c.ng++] = v;
                break;
            }
            case 'd': c.d[c.nd++] = fuzz::number(in); break;
            case 'e': c.d[c.nd++] = tame_double(in); break;
            case 'f': {
                const bool null = in.ConsumeIntegralInRange<int>(0, 7) == 0;
                void* fn = nullptr;
                if (!null) {
                    if (family == Family::quad) fn = reinterpret_cast<void*>(quad_with_data<T>);
                    else if (family == Family::zeros) fn = reinterpret_cast<void*>(zero_with_data<T>);
                    else fn = reinterpret_cast<void*>(progress);
                }
                c.g[c.ng++] = reinterpret_cast<long>(fn);
                break;
            }
            case 'v': c.g[c.ng++] = in.ConsumeBool() ? reinterpret_cast<long>(&user_function_data) : 0; break;
            default:
                // A pointer: null now and then, else filled in once all sizes are known.
                if (in.ConsumeIntegralInRange<int>(0, 9) == 0) {
                    c.g[c.ng++] = 0;
                } else {
                    c.pending.push_back({c.ng, *k, o.code});
                    c.g[c.ng++] = 0;
                }
            }
        }
    }
    c.seed = in.ConsumeIntegral<std::uint8_t>();
}

template <class T>
T* real_buffer(Call<T>& c, std::size_t n) {
    c.reals.emplace_back(std::max<std::size_t>(n, 1));
    auto& v = c.reals.back();
    for (std::size_t i = 0; i < v.size(); ++i) {
        v[i] = c.tame ? T(0.01) : static_cast<T>(static_cast<double>((c.seed + 3 * i) % 11) * 0.25 - 1.0);
    }
    return v.data();
}

template <class T>
int* int_buffer(Call<T>& c, std::size_t n, int range) {
    c.ints.emplace_back(std::max<std::size_t>(n, 1));
    auto& v = c.ints.back();
    for (std::size_t i = 0; i < v.size(); ++i) v[i] = static_cast<int>((c.seed + 5 * i) % static_cast<std::size_t>(range + 3)) - 1;
    return v.data();
}

// Points every pending pointer slot at a buffer of its size.
template <class T>
void resolve(Call<T>& c, const Dims& dims) {
    const auto n1 = static_cast<std::size_t>(dims.n1), n2 = static_cast<std::size_t>(dims.n2);
    const auto sub = static_cast<std::size_t>(std::max(dims.largest(QNUM_MAX_SUBINTER, 500), 1));
    const auto roots = static_cast<std::size_t>(std::max(dims.largest(QNUM_NUM_ROOTS, 1), 1));
    const auto grid = static_cast<std::size_t>(std::max(dims.largest(QNUM_GRID, 1), 1));
    const auto fcd = static_cast<std::size_t>(std::max(dims.largest(QNUM_FAC_COL_DIM, dims.n1), 1));
    const auto icd = static_cast<std::size_t>(std::max(dims.largest(QNUM_INV_COL_DIM, dims.n1), 1));
    for (const auto& p : c.pending) {
        void* ptr = nullptr;
        switch (p.kind) {
        case 's': ptr = real_buffer(c, 1); break;
        case 't': ptr = real_buffer(c, 1); break;
        case 'j': ptr = int_buffer(c, 1, 3); break;
        case 'p': ptr = real_buffer(c, n1); break;
        case 'q': ptr = real_buffer(c, n2); break;
        case 'F': ptr = real_buffer(c, n1 * fcd); break;
        case 'G': ptr = real_buffer(c, n1 * icd); break;
        case 'M': ptr = real_buffer(c, sub); break;
        case 'R': ptr = real_buffer(c, roots); break;
        case 'X': ptr = real_buffer(c, grid); break;
        case 'P': ptr = int_buffer(c, n1, dims.n1 + 3); break;
        case 'Q': ptr = int_buffer(c, n2, dims.n2 + 3); break;
        case 'O': ptr = int_buffer(c, sub, 3); break;
        case 'I': ptr = int_buffer(c, roots, 3); break;
        case 'A':
            if (c.nfresh_real < 8) ptr = &c.fresh_real[c.nfresh_real++];
            break;
        case 'B':
            if (c.nfresh_int < 8) ptr = &c.fresh_int[c.nfresh_int++];
            break;
        default: break;
        }
        c.g[p.slot] = reinterpret_cast<long>(ptr);
    }
}

// Frees what a call handed back: its result and every array stored through an address
// option, unless it is one of the caller's arrays (a routine given both an address for a new
// array and the caller's array hands back the caller's).
template <class T>
bool callers(const Call<T>& c, const void* p) {
    for (auto& v : c.reals)
        if (static_cast<const void*>(v.data()) == p) return true;
    for (auto& v : c.ints)
        if (static_cast<const void*>(v.data()) == p) return true;
    return false;
}

template <class T, class R>
void release(Call<T>& c, R* result) {
    if (!callers(c, result)) qnum_free_allocated_memory(result);
    for (int i = 0; i < c.nfresh_real; ++i)
        if (!callers(c, c.fresh_real[i])) qnum_free_allocated_memory(c.fresh_real[i]);
    for (int i = 0; i < c.nfresh_int; ++i)
        if (!callers(c, c.fresh_int[i])) qnum_free_allocated_memory(c.fresh_int[i]);
}

// ---- the routines ----

volatile double sink;

template <class T>
T poly(T x) {
    return (x - T(0.25)) * x;
}
template <class T>
T cubic(T x) {
    return (x - T(1)) * (x + T(2)) * (x - T(0.5));
}

template <class T>
struct Api;
template <>
struct Api<double> {
    static constexpr auto int_fcn = qnum_d_int_fcn;
    static constexpr auto int_fcn_sing = qnum_d_int_fcn_sing;
    static constexpr auto int_fcn_trig = qnum_d_int_fcn_trig;
    static constexpr auto int_fcn_fourier = qnum_d_int_fcn_fourier;
    static constexpr auto int_fcn_smooth = qnum_d_int_fcn_smooth;
    static constexpr auto int_fcn_sing_pts = qnum_d_int_fcn_sing_pts;
    static constexpr auto int_fcn_alg_log = qnum_d_int_fcn_alg_log;
    static constexpr auto zeros_fcn = qnum_d_zeros_fcn;
    static constexpr auto linear_programming = qnum_d_linear_programming;
};
template <>
struct Api<float> {
    static constexpr auto int_fcn = qnum_f_int_fcn;
    static constexpr auto int_fcn_sing = qnum_f_int_fcn_sing;
    static constexpr auto int_fcn_trig = qnum_f_int_fcn_trig;
    static constexpr auto int_fcn_fourier = qnum_f_int_fcn_fourier;
    static constexpr auto int_fcn_smooth = qnum_f_int_fcn_smooth;
    static constexpr auto int_fcn_sing_pts = qnum_f_int_fcn_sing_pts;
    static constexpr auto int_fcn_alg_log = qnum_f_int_fcn_alg_log;
    static constexpr auto zeros_fcn = qnum_f_zeros_fcn;
    static constexpr auto linear_programming = qnum_f_linear_programming;
};

template <class T>
void quadrature(FuzzedDataProvider& in) {
    using A = Api<T>;
    static const auto adaptive = join({quad_shared, quad_lists});
    static const auto general = join({adaptive, {{QNUM_RULE, "i"}}});
    static const auto trig = join({adaptive, {{QNUM_MAX_MOMENTS, "i"}}});
    static const auto fourier = join({adaptive, {{QNUM_MAX_MOMENTS, "i"}, {QNUM_MAX_CYCLES, "i"}}});
    const int which = in.ConsumeIntegralInRange<int>(0, 6);
    const std::vector<Opt>* own[] = {&general, &adaptive, &trig, &fourier, &quad_shared, &adaptive, &adaptive};
    Call<T> c;
    Dims dims;
    decode(in, *own[which], Family::quad, c, dims);
    resolve(c, dims);
    const T points[] = {T(0.25), T(0.5)};
    T r = 0;
    switch (which) {
    case 0: r = A::int_fcn(poly<T>, T(0), T(1), QF_GP(c.g), QF_FP(c.d)); break;
    case 1: r = A::int_fcn_sing(poly<T>, T(0), T(1), QF_GP(c.g), QF_FP(c.d)); break;
    case 2: r = A::int_fcn_trig(poly<T>, T(3), 1, T(0), T(1), QF_GP(c.g), QF_FP(c.d)); break;
    case 3: r = A::int_fcn_fourier(poly<T>, T(3), 2, T(0), QF_GP(c.g), QF_FP(c.d)); break;
    case 4: r = A::int_fcn_smooth(poly<T>, T(0), T(1), QF_GP(c.g), QF_FP(c.d)); break;
    case 5: r = A::int_fcn_sing_pts(poly<T>, T(0), T(1), 2, points, QF_GP(c.g), QF_FP(c.d)); break;
    default: r = A::int_fcn_alg_log(poly<T>, T(0), T(1), 2, T(-0.5), T(0.5), QF_GP(c.g), QF_FP(c.d));
    }
    sink = r;
}

void linsys(FuzzedDataProvider& in) {
    static const auto gen = join({linsys_shared,
                                  {{QNUM_TRANSPOSE, ""}, {QNUM_FACTOR, "BA"}, {QNUM_FACTOR_USER, "PF"}, {QNUM_CONDITION, "s"}}});
    static const auto posdef = join({linsys_shared, {{QNUM_FACTOR, "A"}, {QNUM_FACTOR_USER, "F"}, {QNUM_CONDITION, "s"}}});
    static const auto nonnegdef = join({linsys_shared, {{QNUM_FACTOR, "A"}, {QNUM_FACTOR_USER, "F"}, {QNUM_TOLERANCE, "d"}}});
    const int which = in.ConsumeIntegralInRange<int>(0, 2);
    const std::vector<Opt>* own[] = {&gen, &posdef, &nonnegdef};
    Call<double> c;
    Dims dims;
    dims.n1 = dims.n2 = in.ConsumeIntegralInRange<int>(1, 5);
    decode(in, *own[which], Family::linsys, c, dims);
    resolve(c, dims);
    // A diagonally dominant matrix (so positive definite) or, now and then, a singular one.
    const int n = dims.n1, lda = std::max(dims.largest(QNUM_A_COL_DIM, n), 1);
    std::vector<double> a(static_cast<std::size_t>(n * lda)), b(static_cast<std::size_t>(n), 1.0);
    const bool singular = c.seed % 5 == 0;
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < lda; ++j) a[static_cast<std::size_t>(i * lda + j)] = singular ? 1.0 : (i == j ? n + 1.0 : 0.5);
    double* r = nullptr;
    switch (which) {
    case 0: r = qnum_d_lin_sol_gen(n, a.data(), b.data(), QF_GP(c.g), QF_FP(c.d)); break;
    case 1: r = qnum_d_lin_sol_posdef(n, a.data(), b.data(), QF_GP(c.g), QF_FP(c.d)); break;
    default: r = qnum_d_lin_sol_nonnegdef(n, a.data(), b.data(), QF_GP(c.g), QF_FP(c.d));
    }
    release(c, r);
}

void splines(FuzzedDataProvider& in) {
    static const std::vector<Opt> e_cnd = {{QNUM_PERIODIC, ""},  {QNUM_LEFT, "id"},     {QNUM_RIGHT, "id"},
                                           {QNUM_LEFT_ADR, "js"}, {QNUM_RIGHT_ADR, "js"}};
    static const std::vector<Opt> shape = {{QNUM_CONCAVE, ""}, {QNUM_CONCAVE_ITMAX, "i"}};
    static const std::vector<Opt> smooth = {{QNUM_WEIGHTS, "p"}, {QNUM_SMOOTHING_PAR, "d"}, {QNUM_SMOOTHING_PAR_ADR, "s"}};
    static const std::vector<Opt> value = {{QNUM_DERIV, "i"}, {QNUM_GRID, "kXA"}, {QNUM_GRID_USER, "kXX"}};
    const int which = in.ConsumeIntegralInRange<int>(0, 3);
    const std::vector<Opt>* own[] = {&e_cnd, &shape, &smooth, &value};
    Call<double> c;
    Dims dims;
    dims.n1 = dims.n2 = in.ConsumeIntegralInRange<int>(1, 9);
    decode(in, *own[which], which == 3 ? Family::spline_value : Family::spline_build, c, dims);
    resolve(c, dims);
    const int n = dims.n1;
    std::vector<double> x(static_cast<std::size_t>(n)), f(x.size());
    for (int i = 0; i < n; ++i) {
        x[static_cast<std::size_t>(i)] = i * 0.5;
        f[static_cast<std::size_t>(i)] = (i * 7 + c.seed) % 5;
    }
    Qnum_d_ppoly* pp = nullptr;
    switch (which) {
    case 0: pp = qnum_d_cub_spline_interp_e_cnd(n, x.data(), f.data(), QF_GP(c.g), QF_FP(c.d)); break;
    case 1: pp = qnum_d_cub_spline_interp_shape(n, x.data(), f.data(), QF_GP(c.g), QF_FP(c.d)); break;
    case 2: pp = qnum_d_cub_spline_smooth(n, x.data(), f.data(), QF_GP(c.g), QF_FP(c.d)); break;
    default: {
        static Qnum_d_ppoly* fixed = [] {
            double xs[] = {0, 1, 2, 3, 4}, fs[] = {1, 0, 2, 1, 3};
            return qnum_d_cub_spline_interp(5, xs, fs, 0);
        }();
        sink = qnum_d_cub_spline_value(0.5, fixed, QF_GP(c.g), QF_FP(c.d));
    }
    }
    release(c, pp);
}

template <class T>
void zeros(FuzzedDataProvider& in) {
    Call<T> c;
    c.tame = true;
    Dims dims;
    decode(in, zeros_options, Family::zeros, c, dims);
    resolve(c, dims);
    T* r = Api<T>::zeros_fcn(cubic<T>, QF_GP(c.g), QF_FP(c.d));
    release(c, r);
}

// min -x0 - x1 subject to x0 + x1 <= 4 (row 0), x0 - x1 >= -2 (row 1), 0 <= x <= 3.
template <class T>
void linear_programming(FuzzedDataProvider& in) {
    Call<T> c;
    Dims dims;
    dims.n1 = 2;  // rows
    dims.n2 = 2;  // columns
    decode(in, lp_options, Family::lp, c, dims);
    resolve(c, dims);
    static int rows[] = {0, 1, 0, 1}, cols[] = {0, 0, 1, 1}, types[] = {'L', 'G'};
    static double values[] = {1, 1, 1, -1}, obj[] = {-1, -1}, rhs[] = {4, -2}, lo[] = {0, 0}, up[] = {3, 3};
    Qnum_d_mps p{};
    p.nrows = 2;
    p.ncolumns = 2;
    p.nonzeros = 4;
    p.matrix_row = rows;
    p.matrix_column = cols;
    p.matrix_value = values;
    p.objective = obj;
    p.rhs = rhs;
    p.row_type = types;
    p.lower_bound = lo;
    p.upper_bound = up;
    p.positive_infinity = 1e30;
    p.negative_infinity = -1e30;
    T* r = Api<T>::linear_programming(&p, QF_GP(c.g), QF_FP(c.d));
    release(c, r);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::quiet_errors();
    FuzzedDataProvider in(data, size);
    switch (in.ConsumeIntegralInRange<int>(0, 7)) {
    case 0: quadrature<double>(in); break;
    case 1: quadrature<float>(in); break;
    case 2: linsys(in); break;
    case 3: splines(in); break;
    case 4: zeros<double>(in); break;
    case 5: zeros<float>(in); break;
    case 6: linear_programming<double>(in); break;
    default: linear_programming<float>(in);
    }
    return 0;
}
