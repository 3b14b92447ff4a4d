// The linear programming model built from the MPS record, presolve and postsolve.
#include "optim/lp_presolve.hpp"

#include <cmath>

#include "optim/lp_simplex.hpp"

namespace qnum::optim {
namespace {

constexpr double kInf = HUGE_VAL;
// Bounds that cross by less than this (relative) are taken as equal, not as infeasible.
constexpr double kBoundTol = 1e-9;

enum OpKind { kEmptyRow, kFixedCol, kEmptyCol, kSingletonRow, kFreeColSingleton };
enum OpFlags { kLowerFromRow = 1, kUpperFromRow = 2 };

int to_public(int st, double lo, double up) {
    if (st == kBasic) return QNUM_LP_BASIC;
    if (lo == up) return QNUM_LP_FIXED;
    return st == kAtLower ? QNUM_LP_AT_LOWER : st == kAtUpper ? QNUM_LP_AT_UPPER : QNUM_LP_FREE;
}

bool crossed(double lo, double up) { return lo > up + kBoundTol * (1 + std::fmax(std::fabs(lo), std::fabs(up))); }

}  // namespace

bool Model::build(const Qnum_d_mps* p, bool maximize) {
    const double pinf = p->positive_infinity > 0 ? p->positive_infinity : kInf;
    const double ninf = p->negative_infinity < 0 ? p->negative_infinity : -kInf;
    auto clip = [&](double v) { return v >= pinf ? kInf : v <= ninf ? -kInf : v; };
    const int nr = p->nrows, nc = p->ncolumns;
    if (!row_map.assign(nr, -1)) return false;
    m = 0;
    for (int i = 0; i < nr; ++i)
        if (p->row_type[i] != 'N') row_map[i] = m++;
    n = nc;
    if (!row_orig.resize(m) || !col_orig.resize(n) || !cost.resize(n) || !lo.resize(n) ||
        !up.resize(n) || !rlo.resize(m) || !rup.resize(m))
        return false;
    for (int i = 0; i < nr; ++i) {
        int r = row_map[i];
        if (r < 0) continue;
        row_orig[r] = i;
        double b = clip(p->rhs[i]), range = p->ranges ? p->ranges[i] : 0.0, ar = std::fabs(range);
        switch (p->row_type[i]) {
        case 'E':
            rlo[r] = range < 0 ? b + range : b;
            rup[r] = range > 0 ? b + range : b;
            break;
        case 'L':
            rlo[r] = range != 0 ? b - ar : -kInf;
            rup[r] = b;
            break;
        default:
            rlo[r] = b;
            rup[r] = range != 0 ? b + ar : kInf;
            break;
        }
    }
    for (int j = 0; j < n; ++j) {
        col_orig[j] = j;
        cost[j] = maximize ? -p->objective[j] : p->objective[j];
        lo[j] = p->lower_bound ? clip(p->lower_bound[j]) : 0.0;
        up[j] = p->upper_bound ? clip(p->upper_bound[j]) : kInf;
    }
    offset = 0;
    // The matrix by columns, repeated entries summed.
    a.m = m;
    a.n = n;
    if (!a.start.assign(n + 1, 0)) return false;
    for (int k = 0; k < p->nonzeros; ++k)
        if (row_map[p->matrix_row[k]] >= 0) ++a.start[p->matrix_column[k] + 1];
    for (int j = 0; j < n; ++j) a.start[j + 1] += a.start[j];
    Vec<int> next, mark;
    if (!a.index.resize(a.start[n]) || !a.value.resize(a.start[n]) || !next.resize(n + 1) ||
        !mark.assign(m, -1))
        return false;
    for (int j = 0; j <= n; ++j) next[j] = a.start[j];
    for (int k = 0; k < p->nonzeros; ++k) {
        int r = row_map[p->matrix_row[k]];
        if (r < 0) continue;
        int q = next[p->matrix_column[k]]++;
        a.index[q] = r;
        a.value[q] = p->matrix_value[k];
    }
    int at = 0;
    for (int j = 0; j < n; ++j) {
        int begin = at;
        for (int q = a.start[j]; q < a.start[j + 1]; ++q) {
            int r = a.index[q];
            if (mark[r] >= begin) {
                a.value[mark[r]] += a.value[q];
            } else {
                mark[r] = at;
                a.index[at] = r;
                a.value[at++] = a.value[q];
            }
        }
        a.start[j] = begin;
    }
    a.start[n] = at;
    // Entries that sum to zero are dropped.
    at = 0;
    for (int j = 0; j < n; ++j) {
        int begin = at;
        for (int q = a.start[j]; q < a.start[j + 1]; ++q)
            if (a.value[q] != 0) {
                a.index[at] = a.index[q];
                a.value[at++] = a.value[q];
            }
        a.start[j] = begin;
    }
    a.start[n] = at;
    return true;
}

double Model::infeasibility(const double* x) const {
    double sum = 0;
    Vec<double> act;
    if (!act.assign(m, 0.0)) return 0;
    for (int j = 0; j < n; ++j) {
        if (x[j] < lo[j]) sum += lo[j] - x[j];
        if (x[j] > up[j]) sum += x[j] - up[j];
        for (int q = a.start[j]; q < a.start[j + 1]; ++q) act[a.index[q]] += a.value[q] * x[j];
    }
    for (int i = 0; i < m; ++i) {
        if (act[i] < rlo[i]) sum += rlo[i] - act[i];
        if (act[i] > rup[i]) sum += act[i] - rup[i];
    }
    return sum;
}

bool Solution::allocate(const Model& model, int nrows, int ncolumns) {
    return xm.assign(model.n, 0.0) && ym.assign(model.m, 0.0) &&
           stm.assign(model.n + model.m, kBasic) && x.assign(ncolumns, 0.0) && d.assign(ncolumns, 0.0) &&
           y.assign(nrows, 0.0) && activity.assign(nrows, 0.0) && row_status.assign(nrows, 0) &&
           column_status.assign(ncolumns, 0);
}

void Solution::finish(const Qnum_d_mps* p, const Model& model, bool maximize) {
    const int nr = p->nrows, nc = p->ncolumns;
    objective = p->objective_constant;
    for (int j = 0; j < nc; ++j) {
        x[j] = xm[j];
        objective += p->objective[j] * x[j];
        d[j] = p->objective[j];
        column_status[j] = to_public(stm[j], model.lo[j], model.up[j]);
    }
    for (int i = 0; i < nr; ++i) {
        int r = model.row_map[i];
        activity[i] = 0;
        y[i] = r < 0 ? 0.0 : maximize ? -ym[r] : ym[r];
        row_status[i] = r < 0 ? QNUM_LP_BASIC : to_public(stm[model.n + r], model.rlo[r], model.rup[r]);
    }
    for (int k = 0; k < p->nonzeros; ++k) {
        int i = p->matrix_row[k], j = p->matrix_column[k];
        activity[i] += p->matrix_value[k] * x[j];
        d[j] -= p->matrix_value[k] * y[i];
    }
}

PresolveResult Presolve::run(const Model& model) {
    model_ = &model;
    const int m = model.m, n = model.n;
    if (!transpose(model.a, ar_) || !lo_.resize(n) || !up_.resize(n) || !cost_.resize(n) ||
        !rlo_.resize(m) || !rup_.resize(m) || !fixed_x_.assign(n, 0.0) ||
        !fixed_y_.assign(m, 0.0) || !row_on_.assign(m, 1) || !col_on_.assign(n, 1) ||
        !row_count_.assign(m, 0) || !col_count_.assign(n, 0))
        return PresolveResult::NoMemory;
    for (int j = 0; j < n; ++j) {
        lo_[j] = model.lo[j];
        up_[j] = model.up[j];
        cost_[j] = model.cost[j];
        col_count_[j] = model.a.start[j + 1] - model.a.start[j];
        if (lo_[j] == kInf || up_[j] == -kInf || crossed(lo_[j], up_[j])) {
            infeasibility_ = lo_[j] == kInf || up_[j] == -kInf ? kInf : lo_[j] - up_[j];
            return PresolveResult::Infeasible;
        }
        if (lo_[j] > up_[j]) up_[j] = lo_[j];
    }
    for (int i = 0; i < m; ++i) {
        rlo_[i] = model.rlo[i];
        rup_[i] = model.rup[i];
        row_count_[i] = ar_.start[i + 1] - ar_.start[i];
        if (rlo_[i] == kInf || rup_[i] == -kInf || crossed(rlo_[i], rup_[i])) {
            infeasibility_ = rlo_[i] == kInf || rup_[i] == -kInf ? kInf : rlo_[i] - rup_[i];
            return PresolveResult::Infeasible;
        }
        if (rlo_[i] > rup_[i]) rup_[i] = rlo_[i];
    }
    double offset = model.offset;
    auto push = [&](int kind, int row, int col, double value, double aux, double lo, double up,
                    int flags) { return ops_.push(Op{kind, row, col, value, aux, lo, up, flags}); };
    auto drop_row = [&](int i) {
        row_on_[i] = 0;
        for (int q = ar_.start[i]; q < ar_.start[i + 1]; ++q)
            if (col_on_[ar_.index[q]]) --col_count_[ar_.index[q]];
    };
    auto drop_col = [&](int j) {
        col_on_[j] = 0;
        for (int q = model.a.start[j]; q < model.a.start[j + 1]; ++q)
            if (row_on_[model.a.index[q]]) --row_count_[model.a.index[q]];
    };
    for (bool changed = true; changed;) {
        changed = false;
        for (int i = 0; i < m; ++i) {
            if (!row_on_[i] || row_count_[i] > 1) continue;
            if (row_count_[i] == 0) {
                if (rlo_[i] > kBoundTol * (1 + std::fabs(rlo_[i])) || rup_[i] < -kBoundTol * (1 + std::fabs(rup_[i]))) {
                    infeasibility_ = rlo_[i] > 0 ? rlo_[i] : -rup_[i];
                    return PresolveResult::Infeasible;
                }
                if (!push(kEmptyRow, i, -1, 0, 0, 0, 0, 0)) return PresolveResult::NoMemory;
                drop_row(i);
                changed = true;
                continue;
            }
            // A singleton row is a bound on its column.
            int at = ar_.start[i];
            while (!col_on_[ar_.index[at]]) ++at;
            const int j = ar_.index[at];
            const double a = ar_.value[at];
            double il = a > 0 ? rlo_[i] / a : rup_[i] / a;
            double iu = a > 0 ? rup_[i] / a : rlo_[i] / a;
            int flags = 0;
            if (il > lo_[j]) { lo_[j] = il; flags |= kLowerFromRow; }
            if (iu < up_[j]) { up_[j] = iu; flags |= kUpperFromRow; }
            if (crossed(lo_[j], up_[j])) {
                infeasibility_ = (lo_[j] - up_[j]) * std::fabs(a);
                return PresolveResult::Infeasible;
            }
            if (lo_[j] > up_[j]) {
                if (flags & kLowerFromRow) lo_[j] = up_[j]; else up_[j] = lo_[j];
            }
            if (!push(kSingletonRow, i, j, a, 0, lo_[j], up_[j], flags)) return PresolveResult::NoMemory;
            drop_row(i);
            changed = true;
        }
        for (int j = 0; j < n; ++j) {
            if (!col_on_[j]) continue;
            if (lo_[j] == up_[j]) {
                double v = lo_[j];
                for (int q = model.a.start[j]; q < model.a.start[j + 1]; ++q) {
                    int i = model.a.index[q];
                    if (!row_on_[i]) continue;
                    rlo_[i] -= model.a.value[q] * v;
                    rup_[i] -= model.a.value[q] * v;
                }
                offset += cost_[j] * v;
                fixed_x_[j] = v;
                if (!push(kFixedCol, -1, j, v, 0, v, v, 0)) return PresolveResult::NoMemory;
                drop_col(j);
                changed = true;
            } else if (col_count_[j] == 0) {
                // An empty column sits on the bound its cost asks for; one that would run to
                // infinity stays for the simplex, which tells unbounded from infeasible.
                double c = cost_[j], v;
                int st;
                if (c > 0 || (c == 0 && lo_[j] > -kInf)) {
                    if (lo_[j] == -kInf) continue;
                    v = lo_[j];
                    st = kAtLower;
                } else if (c < 0 || up_[j] < kInf) {
                    if (up_[j] == kInf) continue;
                    v = up_[j];
                    st = kAtUpper;
                } else {
                    v = 0;
                    st = kFreeZero;
                }
                offset += c * v;
                fixed_x_[j] = v;
                if (!push(kEmptyCol, -1, j, v, 0, 0, 0, st)) return PresolveResult::NoMemory;
                drop_col(j);
                changed = true;
            } else if (col_count_[j] == 1 && lo_[j] == -kInf && up_[j] == kInf) {
                // A free column singleton: its row can take any activity, and the row's dual
                // is fixed by the column's cost.
                int at = model.a.start[j];
                while (!row_on_[model.a.index[at]]) ++at;
                const int i = model.a.index[at];
                const double a = model.a.value[at];
                double y = cost_[j] / a;
                double target = y > 0 ? rlo_[i] : y < 0 ? rup_[i] : 0.0;
                if (std::fabs(target) == kInf) continue;
                for (int q = ar_.start[i]; q < ar_.start[i + 1]; ++q) {
                    int k = ar_.index[q];
                    if (k != j && col_on_[k]) cost_[k] -= y * ar_.value[q];
                }
                offset += y * target;
                fixed_y_[i] = y;
                if (!push(kFreeColSingleton, i, j, a, y, model.rlo[i], model.rup[i], 0))
                    return PresolveResult::NoMemory;
                drop_row(i);
                drop_col(j);
                changed = true;
            }
        }
    }
    // The reduced model.
    int rm = 0, rn = 0;
    if (!rmap_.resize(m) || !cmap_.resize(n)) return PresolveResult::NoMemory;
    Vec<int> newrow;
    if (!newrow.assign(m, -1)) return PresolveResult::NoMemory;
    for (int i = 0; i < m; ++i)
        if (row_on_[i]) { newrow[i] = rm; rmap_[rm++] = i; }
    for (int j = 0; j < n; ++j)
        if (col_on_[j]) cmap_[rn++] = j;
    red_.m = rm;
    red_.n = rn;
    red_.offset = offset;
    red_.a.m = rm;
    red_.a.n = rn;
    if (!red_.cost.resize(rn) || !red_.lo.resize(rn) || !red_.up.resize(rn) || !red_.rlo.resize(rm) ||
        !red_.rup.resize(rm) || !red_.row_orig.resize(rm) || !red_.col_orig.resize(rn) ||
        !red_.a.start.resize(rn + 1) || !red_.a.index.reserve(model.a.start[n]) ||
        !red_.a.value.reserve(model.a.start[n]))
        return PresolveResult::NoMemory;
    red_.a.start[0] = 0;
    for (int k = 0; k < rn; ++k) {
        int j = cmap_[k];
        red_.cost[k] = cost_[j];
        red_.lo[k] = lo_[j];
        red_.up[k] = up_[j];
        red_.col_orig[k] = model.col_orig[j];
        for (int q = model.a.start[j]; q < model.a.start[j + 1]; ++q) {
            int i = model.a.index[q];
            if (!row_on_[i]) continue;
            red_.a.index.push(newrow[i]);
            red_.a.value.push(model.a.value[q]);
        }
        red_.a.start[k + 1] = static_cast<int>(red_.a.index.size());
    }
    for (int r = 0; r < rm; ++r) {
        red_.rlo[r] = rlo_[rmap_[r]];
        red_.rup[r] = rup_[rmap_[r]];
        red_.row_orig[r] = model.row_orig[rmap_[r]];
    }
    return PresolveResult::Reduced;
}

void Presolve::postsolve(const double* x, const double* y, const int* state, Solution& sol) const {
    const Model& model = *model_;
    const int n = model.n;
    for (int j = 0; j < n; ++j) sol.xm[j] = fixed_x_[j];
    for (int i = 0; i < model.m; ++i) sol.ym[i] = fixed_y_[i];
    for (int k = 0; k < red_.n; ++k) {
        sol.xm[cmap_[k]] = x[k];
        sol.stm[cmap_[k]] = state[k];
    }
    for (int r = 0; r < red_.m; ++r) {
        sol.ym[rmap_[r]] = y[r];
        sol.stm[n + rmap_[r]] = state[red_.n + r];
    }
    for (std::size_t k = ops_.size(); k-- > 0;) {
        const Op& op = ops_[k];
        const int i = op.row, j = op.col;
        switch (op.kind) {
        case kEmptyRow:
            sol.ym[i] = 0;
            sol.stm[n + i] = kBasic;
            break;
        case kFixedCol:
            sol.xm[j] = op.value;
            sol.stm[j] = kAtLower;
            break;
        case kEmptyCol:
            sol.xm[j] = op.value;
            sol.stm[j] = op.flags;
            break;
        case kSingletonRow: {
            double dj = model.cost[j];
            for (int q = model.a.start[j]; q < model.a.start[j + 1]; ++q)
                dj -= model.a.value[q] * sol.ym[model.a.index[q]];
            int st = sol.stm[j];
            int side = 0;  // 1: the column rests on its lower bound, 2: on its upper
            if (st != kBasic && st != kFreeZero) {
                if (op.lo == op.up) side = dj >= 0 ? 1 : 2;
                else side = st == kAtLower ? 1 : 2;
            }
            if ((side == 1 && (op.flags & kLowerFromRow)) || (side == 2 && (op.flags & kUpperFromRow))) {
                sol.ym[i] = dj / op.value;
                sol.stm[j] = kBasic;
                sol.stm[n + i] = (side == 1) == (op.value > 0) ? kAtLower : kAtUpper;
            } else {
                sol.ym[i] = 0;
                sol.stm[n + i] = kBasic;
            }
            break;
        }
        case kFreeColSingleton: {
            double s = 0;
            for (int q = ar_.start[i]; q < ar_.start[i + 1]; ++q)
                if (ar_.index[q] != j) s += ar_.value[q] * sol.xm[ar_.index[q]];
            double yi = op.aux, target;
            sol.ym[i] = yi;
            if (yi == 0 && s >= op.lo && s <= op.up) {
                sol.xm[j] = 0;
                sol.stm[j] = kFreeZero;
                sol.stm[n + i] = kBasic;
                break;
            }
            if (yi > 0) target = op.lo;
            else if (yi < 0) target = op.up;
            else target = s < op.lo ? op.lo : op.up;
            sol.xm[j] = (target - s) / op.value;
            sol.stm[j] = kBasic;
            sol.stm[n + i] = target == op.lo ? kAtLower : kAtUpper;
            break;
        }
        }
    }
}

}  // namespace qnum::optim
