// Linear programming on the MPS problem record: options, checks, the model the simplex
// engine solves (scaled, after presolve), and the results in the record's terms.
#include "optim/lp.hpp"

#include <cmath>
#include <climits>

#include "optim/lp_presolve.hpp"
#include "optim/lp_simplex.hpp"

namespace qnum::optim {
namespace {

using frame::Int;
using frame::Real;
using frame::Str;
using frame::Type;
constexpr double kInf = HUGE_VAL;

// Geometric-mean scaling of rows and columns (a few alternating passes), rounded to powers
// of 2 so that scaling adds no rounding error (J. A. Tomlin, "On scaling linear programming
// problems", Math. Programming Study 4, 1975).
bool scale(Csc& a, Vec<double>& rs, Vec<double>& cs) {
    if (!rs.assign(a.m, 1.0) || !cs.assign(a.n, 1.0)) return false;
    Vec<double> lo, hi;
    if (!lo.resize(a.m) || !hi.resize(a.m)) return false;
    for (int pass = 0; pass < 6; ++pass) {
        for (int i = 0; i < a.m; ++i) { lo[i] = kInf; hi[i] = 0; }
        for (int j = 0; j < a.n; ++j)
            for (int q = a.start[j]; q < a.start[j + 1]; ++q) {
                double v = std::fabs(a.value[q]) * rs[a.index[q]] * cs[j];
                if (v == 0) continue;
                int i = a.index[q];
                if (v < lo[i]) lo[i] = v;
                if (v > hi[i]) hi[i] = v;
            }
        for (int i = 0; i < a.m; ++i)
            if (hi[i] > 0) rs[i] /= std::sqrt(lo[i] * hi[i]);
        for (int j = 0; j < a.n; ++j) {
            double l = kInf, h = 0;
            for (int q = a.start[j]; q < a.start[j + 1]; ++q) {
                double v = std::fabs(a.value[q]) * rs[a.index[q]] * cs[j];
                if (v == 0) continue;
                if (v < l) l = v;
                if (v > h) h = v;
            }
            if (h > 0) cs[j] /= std::sqrt(l * h);
        }
    }
    for (int i = 0; i < a.m; ++i) rs[i] = std::exp2(std::round(std::log2(rs[i])));
    for (int j = 0; j < a.n; ++j) cs[j] = std::exp2(std::round(std::log2(cs[j])));
    for (int j = 0; j < a.n; ++j)
        for (int q = a.start[j]; q < a.start[j + 1]; ++q) a.value[q] *= rs[a.index[q]] * cs[j];
    return true;
}

bool finite_or_inf(double v) { return !std::isnan(v); }

// The engine's state for a public status code (a fixed variable rests on its lower bound).
int from_public(int s) {
    switch (s) {
    case QNUM_LP_BASIC: return kBasic;
    case QNUM_LP_AT_UPPER: return kAtUpper;
    case QNUM_LP_FREE: return kFreeZero;
    default: return kAtLower;
    }
}
bool valid_status(int s) { return s >= QNUM_LP_BASIC && s <= QNUM_LP_FIXED; }

struct Outputs {
    void* obj = nullptr;
    void* activity = nullptr;
    void* dual = nullptr;
    void* reduced = nullptr;
    int* row_status = nullptr;
    int* column_status = nullptr;
    int* iterations = nullptr;
};

// Checks the record: TERMINAL errors for counts, arrays, indices, types and NaNs.
void check_record(const Qnum_d_mps* p) {
    if (!check::range(p->nrows, 0, INT_MAX, "problem->nrows") ||
        !check::range(p->ncolumns, 0, INT_MAX, "problem->ncolumns") ||
        !check::range(p->nonzeros, 0, INT_MAX, "problem->nonzeros"))
        return;
    if (p->nonzeros > 0 && (!check::array(p->matrix_row, "problem->matrix_row") ||
                            !check::array(p->matrix_column, "problem->matrix_column") ||
                            !check::array(p->matrix_value, "problem->matrix_value")))
        return;
    if (p->ncolumns > 0 && !check::array(p->objective, "problem->objective")) return;
    if (p->nrows > 0 && (!check::array(p->rhs, "problem->rhs") ||
                         !check::array(p->row_type, "problem->row_type")))
        return;
    for (int k = 0; k < p->nonzeros; ++k) {
        int i = p->matrix_row[k], j = p->matrix_column[k];
        if (i < 0 || i >= p->nrows || j < 0 || j >= p->ncolumns) {
            frame::raise(Type::Terminal, err::lp_bad_index, Int{k}, Int{i}, Int{j}, Int{p->nrows},
                         Int{p->ncolumns});
            return;
        }
        if (std::isnan(p->matrix_value[k])) {
            frame::raise(Type::Terminal, err::lp_not_a_number, Str{"matrix_value"}, Int{k});
            return;
        }
    }
    for (int i = 0; i < p->nrows; ++i) {
        int t = p->row_type[i];
        if (t != 'E' && t != 'L' && t != 'G' && t != 'N') {
            frame::raise(Type::Terminal, err::lp_bad_row_type, Int{i}, Int{t});
            return;
        }
        if (!finite_or_inf(p->rhs[i]) || (p->ranges && !finite_or_inf(p->ranges[i]))) {
            frame::raise(Type::Terminal, err::lp_not_a_number,
                         Str{std::isnan(p->rhs[i]) ? "rhs" : "ranges"}, Int{i});
            return;
        }
    }
    for (int j = 0; j < p->ncolumns; ++j) {
        const char* bad = std::isnan(p->objective[j]) ? "objective"
                          : p->lower_bound && std::isnan(p->lower_bound[j]) ? "lower_bound"
                          : p->upper_bound && std::isnan(p->upper_bound[j]) ? "upper_bound"
                                                                            : nullptr;
        if (bad) {
            frame::raise(Type::Terminal, err::lp_not_a_number, Str{bad}, Int{j});
            return;
        }
    }
}

}  // namespace

template <class T>
T* linear_programming(const Qnum_d_mps* p, frame::Options opt) {
    frame::Out<T> x;
    Outputs out;
    const int* warm_row = nullptr;
    const int* warm_col = nullptr;
    SimplexSettings set;
    int max_iterations = INT_MAX;
    double ftol = 1e-7, otol = 1e-7;
    bool maximize = false;
    while (int code = opt.next()) {
        switch (code) {
        case QNUM_RETURN_USER: x.borrow(opt.ptr<T>("x", "QNUM_RETURN_USER")); break;
        case QNUM_LP_OBJ_VALUE: out.obj = opt.ptr<T>("obj_value", "QNUM_LP_OBJ_VALUE"); break;
        case QNUM_LP_ROW_ACTIVITY: out.activity = opt.ptr<T>("activity", "QNUM_LP_ROW_ACTIVITY"); break;
        case QNUM_LP_DUALS: out.dual = opt.ptr<T>("duals", "QNUM_LP_DUALS"); break;
        case QNUM_LP_REDUCED_COSTS: out.reduced = opt.ptr<T>("reduced_costs", "QNUM_LP_REDUCED_COSTS"); break;
        case QNUM_LP_BASIS:
            out.row_status = opt.ptr<int>("row_status", "QNUM_LP_BASIS");
            out.column_status = opt.ptr<int>("column_status", "QNUM_LP_BASIS", true);
            break;
        case QNUM_LP_ITERATIONS: out.iterations = opt.ptr<int>("iterations", "QNUM_LP_ITERATIONS"); break;
        case QNUM_LP_MAX_ITERATIONS:
            max_iterations = opt.get<int>();
            check::range(max_iterations, 0, INT_MAX, "max_iterations");
            break;
        case QNUM_LP_FEASIBILITY_TOL:
        case QNUM_LP_OPTIMALITY_TOL: {
            double v = static_cast<double>(opt.get<T>());
            if (!(v > 0 && v < 1))
                frame::raise(Type::Terminal, err::lp_bad_tolerance,
                             Str{code == QNUM_LP_FEASIBILITY_TOL ? "feasibility" : "optimality"}, Real{v});
            (code == QNUM_LP_FEASIBILITY_TOL ? ftol : otol) = v;
            break;
        }
        case QNUM_LP_MAXIMIZE: maximize = true; break;
        case QNUM_LP_PROGRESS:
            set.progress = opt.get<qnum_lp_progress>();
            set.progress_data = opt.get<void*>();
            break;
        case QNUM_LP_WARM_START:
            warm_row = opt.ptr<const int>("row_status", "QNUM_LP_WARM_START");
            warm_col = opt.ptr<const int>("column_status", "QNUM_LP_WARM_START", true);
            break;
        default: opt.unknown(code);
        }
    }
    if (frame::pending()) return nullptr;
    if (!check::array(p, "problem")) return nullptr;
    check_record(p);
    if (frame::pending()) return nullptr;
    const int nr = p->nrows, nc = p->ncolumns;
    if (warm_row != nullptr) {
        for (int k = 0; k < nr + nc; ++k) {
            int s = k < nr ? warm_row[k] : warm_col[k - nr];
            if (!valid_status(s)) {
                frame::raise(Type::Terminal, err::lp_bad_status, Str{k < nr ? "row" : "column"},
                             Int{k < nr ? k : k - nr}, Int{s});
                return nullptr;
            }
        }
    }

    // The model: rows other than N rows, infinities of the record made infinite.
    Model model;
    if (!model.build(p, maximize)) {
        frame::raise(Type::Terminal, err::no_memory, Str{"problem->nonzeros"}, Int{p->nonzeros});
        return nullptr;
    }
    if (warm_row != nullptr) {
        int basic = 0;
        for (int i = 0; i < nr; ++i)
            if (model.row_map[i] >= 0) basic += warm_row[i] == QNUM_LP_BASIC;
        for (int j = 0; j < nc; ++j) basic += warm_col[j] == QNUM_LP_BASIC;
        if (basic != model.m) {
            frame::raise(Type::Terminal, err::lp_bad_basis_size, Int{basic}, Int{model.m});
            return nullptr;
        }
    }
    if (!x.ensure(nc > 0 ? nc : 1, "problem->ncolumns")) return nullptr;

    Solution sol;
    LpStatus st = LpStatus::Optimal;
    long long iterations = 0;
    int unbounded = -1;
    set.primal_tol = ftol;
    set.dual_tol = otol;
    set.max_iterations = max_iterations;
    set.objective_sign = maximize ? -1 : 1;
    set.objective_constant = p->objective_constant;
    if (!sol.allocate(model, nr, nc)) {
        frame::raise(Type::Terminal, err::no_memory, Str{"problem->ncolumns"}, Int{nc});
        return nullptr;
    }
    // Presolve unless a basis is given (the basis names the full problem's variables).
    Presolve pre;
    PresolveResult pr = warm_row ? PresolveResult::Reduced : pre.run(model);
    if (pr == PresolveResult::NoMemory) {
        frame::raise(Type::Terminal, err::no_memory, Str{"problem->nonzeros"}, Int{p->nonzeros});
        return nullptr;
    }
    if (pr == PresolveResult::Infeasible) st = LpStatus::Infeasible;
    const Model& red = warm_row ? model : pre.reduced();
    set.objective_offset = red.offset;
    if (pr == PresolveResult::Reduced) {
        const int m = red.m, n = red.n;
        Csc a;
        Vec<double> rs, cs, cost, lo, up;
        Vec<int> state;
        bool ok = a.start.resize(n + 1) && a.index.resize(red.a.start[n]) &&
                  a.value.resize(red.a.start[n]) && cost.resize(n) && lo.resize(n + m) &&
                  up.resize(n + m);
        if (ok) {
            a.m = m;
            a.n = n;
            for (int j = 0; j <= n; ++j) a.start[j] = red.a.start[j];
            for (int q = 0; q < red.a.start[n]; ++q) {
                a.index[q] = red.a.index[q];
                a.value[q] = red.a.value[q];
            }
            ok = scale(a, rs, cs);
        }
        if (ok) {
            for (int j = 0; j < n; ++j) {
                cost[j] = red.cost[j] * cs[j];
                lo[j] = red.lo[j] / cs[j];
                up[j] = red.up[j] / cs[j];
            }
            for (int i = 0; i < m; ++i) {
                lo[n + i] = red.rlo[i] * rs[i];
                up[n + i] = red.rup[i] * rs[i];
            }
        }
        if (ok && warm_row) {
            ok = state.resize(n + m);
            if (ok) {
                for (int j = 0; j < n; ++j) state[j] = from_public(warm_col[j]);
                for (int i = 0; i < nr; ++i)
                    if (model.row_map[i] >= 0) state[n + model.row_map[i]] = from_public(warm_row[i]);
            }
        }
        Simplex sx;
        ok = ok && sx.load(static_cast<Csc&&>(a), cost.data(), lo.data(), up.data());
        if (!ok) {
            frame::raise(Type::Terminal, err::no_memory, Str{"problem->nonzeros"}, Int{p->nonzeros});
            return nullptr;
        }
        st = sx.solve(warm_row ? state.data() : nullptr, set);
        iterations = sx.iterations();
        sx.report();
        if (st == LpStatus::NoMemory) {
            frame::raise(Type::Terminal, err::no_memory, Str{"problem->nonzeros"}, Int{p->nonzeros});
            return nullptr;
        }
        if (st == LpStatus::Unbounded) {
            int v = sx.unbounded_variable();
            unbounded = v < 0 ? 0 : v < n ? red.col_orig[v] : -1 - red.row_orig[v - n];
        }
        // Unscale into the reduced model's terms.
        Vec<double> rx, rd, ry;
        Vec<int> rst;
        if (!rx.resize(n) || !rd.resize(n + m) || !ry.resize(m) || !rst.resize(n + m)) {
            frame::raise(Type::Terminal, err::no_memory, Str{"problem->nonzeros"}, Int{p->nonzeros});
            return nullptr;
        }
        for (int j = 0; j < n; ++j) {
            rx[j] = sx.x()[j] * cs[j];
            rd[j] = sx.d()[j] / cs[j];
            rst[j] = sx.state()[j];
        }
        for (int i = 0; i < m; ++i) {
            ry[i] = sx.y()[i] * rs[i];
            rd[n + i] = sx.d()[n + i] * rs[i];
            rst[n + i] = sx.state()[n + i];
        }
        if (warm_row) {
            for (int j = 0; j < n; ++j) { sol.xm[j] = rx[j]; sol.stm[j] = rst[j]; }
            for (int i = 0; i < m; ++i) { sol.ym[i] = ry[i]; sol.stm[n + i] = rst[n + i]; }
        } else {
            pre.postsolve(rx.data(), ry.data(), rst.data(), sol);
        }
    }

    // Results in the record's terms.
    if (st == LpStatus::Optimal || st == LpStatus::IterationLimit) {
        sol.finish(p, model, maximize);
    }
    if (out.iterations) *out.iterations = static_cast<int>(iterations < INT_MAX ? iterations : INT_MAX);
    switch (st) {
    case LpStatus::Optimal: break;
    case LpStatus::IterationLimit:
        frame::raise(Type::Warning, err::lp_iteration_limit, Int{max_iterations});
        break;
    case LpStatus::Infeasible:
        frame::raise(Type::Fatal, err::lp_infeasible, Real{pre.infeasibility() > 0 ? pre.infeasibility() : model.infeasibility(sol.xm.data())});
        return nullptr;
    case LpStatus::Unbounded: {
        const char* name = nullptr;
        if (unbounded >= 0 && p->column_name) name = p->column_name[unbounded];
        if (unbounded < 0 && p->row_name) name = p->row_name[-1 - unbounded];
        frame::raise(Type::Fatal, err::lp_unbounded, Str{name ? name : "(unnamed)"},
                     Int{unbounded >= 0 ? unbounded : -1 - unbounded});
        return nullptr;
    }
    default:
        frame::raise(Type::Fatal, err::lp_numerical, Int{static_cast<int>(iterations)});
        return nullptr;
    }
    for (int j = 0; j < nc; ++j) x[j] = static_cast<T>(sol.x[j]);
    if (out.obj) *static_cast<T*>(out.obj) = static_cast<T>(sol.objective);
    for (int i = 0; i < nr; ++i) {
        if (out.activity) static_cast<T*>(out.activity)[i] = static_cast<T>(sol.activity[i]);
        if (out.dual) static_cast<T*>(out.dual)[i] = static_cast<T>(sol.y[i]);
        if (out.row_status) out.row_status[i] = sol.row_status[i];
    }
    for (int j = 0; j < nc; ++j) {
        if (out.reduced) static_cast<T*>(out.reduced)[j] = static_cast<T>(sol.d[j]);
        if (out.column_status) out.column_status[j] = sol.column_status[j];
    }
    return x.release();
}

template float* linear_programming<float>(const Qnum_d_mps*, frame::Options);
template double* linear_programming<double>(const Qnum_d_mps*, frame::Options);

}  // namespace qnum::optim
