// Bounded dual and primal simplex on a sparse LU of the basis.
//
// The dual simplex follows A. Koberstein, "The dual simplex method, techniques for a fast and
// stable implementation", PhD thesis, Paderborn 2005: dual steepest-edge pricing with the
// update of J. J. Forrest and D. Goldfarb ("Steepest-edge simplex algorithms for linear
// programming", Math. Programming 57, 1992), the bound-flipping ratio test with Harris'
// tolerance (P. M. J. Harris, "Pivot selection methods of the Devex LP code", Math.
// Programming 5, 1973), cost shifting, cost perturbation and the auxiliary-problem dual
// phase 1 of R. Fourer ("Notes on the dual simplex method", 1994).
#include "optim/lp_simplex.hpp"

#include <climits>
#include <cmath>
#include <cstring>

#include "frame/frame.hpp"

namespace qnum::optim {
namespace {

constexpr double kInf = HUGE_VAL;
// A pivot-row or pivot-column entry below this takes no part in a ratio test.
constexpr double kPivotTol = 1e-7;
// A pivot below this is numerical trouble; the pivot's two computations (from the pivot row
// and from the pivot column) must agree to this relative accuracy, else the factors are renewed.
constexpr double kTinyPivot = 1e-11;
constexpr double kAgreement = 1e-7;
// Steepest-edge weights are kept above this.
constexpr double kMinWeight = 1e-12;

}  // namespace

bool Simplex::load(Csc&& a, const double* cost, const double* lo, const double* up) {
    a_ = static_cast<Csc&&>(a);
    const int m = a_.m, n = a_.n, nm = m + n;
    if (!transpose(a_, ar_)) return false;
    if (!cost_.assign(nm, 0.0) || !cost0_.assign(nm, 0.0) || !lo_.resize(nm) || !up_.resize(nm) ||
        !x_.assign(nm, 0.0) || !d_.assign(nm, 0.0) || !y_.assign(m, 0.0) || !w_.assign(m, 1.0) ||
        !head_.assign(m, 0) || !state_.assign(nm, kAtLower) ||
        !rho_.assign(m, 0.0) || !alpha_.assign(m, 0.0) || !alpha_idx_.reserve(m) || !tau_.assign(m, 0.0) ||
        !work_.assign(m, 0.0) || !arow_.assign(nm, 0.0) || !arow_idx_.reserve(nm) ||
        !arow_mark_.assign(nm, 0) || !cand_.reserve(nm) ||
        !cand_a_.reserve(nm))
        return false;
    for (int j = 0; j < n; ++j) cost_[j] = cost0_[j] = cost[j];
    for (int j = 0; j < nm; ++j) {
        lo_[j] = lo[j];
        up_[j] = up[j];
    }
    return true;
}

// Places nonbasic j on the bound its state names, repairing a state that names an infinite bound.
void Simplex::nonbasic_value(int j) {
    int s = state_[j];
    if (s == kAtLower && lo_[j] == -kInf) s = up_[j] < kInf ? kAtUpper : kFreeZero;
    if (s == kAtUpper && up_[j] == kInf) s = lo_[j] > -kInf ? kAtLower : kFreeZero;
    if (s == kFreeZero && lo_[j] > -kInf) s = kAtLower;
    if (s == kFreeZero && up_[j] < kInf) s = kAtUpper;
    state_[j] = s;
    x_[j] = s == kAtLower ? lo_[j] : s == kAtUpper ? up_[j] : 0.0;
}

// alpha_ = B^-1 times column j of [A -I], and alpha_idx_ its nonzeros.
void Simplex::ftran_column(int j) {
    const int m = a_.m;
    double* al = alpha_.data();
    std::memset(al, 0, sizeof(double) * m);
    load_column(j, al);
    lu_.ftran(al);
    alpha_idx_.clear();
    for (int k = 0; k < m; ++k)
        if (al[k] != 0) alpha_idx_.push(k);
}

void Simplex::load_column(int j, double* v) const {
    if (j < a_.n) {
        for (int q = a_.start[j]; q < a_.start[j + 1]; ++q) v[a_.index[q]] += a_.value[q];
    } else {
        v[j - a_.n] -= 1.0;
    }
}

// Factors the basis; columns that leave it singular are replaced by logicals of the rows
// that found no pivot, and their variables become nonbasic.
bool Simplex::refactor() {
    for (int round = 0; round < 3; ++round) {
        if (!lu_.factor(head_.data(), a_, bad_pos_, bad_row_)) {
            no_memory_ = true;
            return false;
        }
        if (bad_pos_.size() == 0) return true;
        for (std::size_t k = 0; k < bad_pos_.size(); ++k) {
            int p = bad_pos_[k], old = head_[p], nw = a_.n + bad_row_[k];
            state_[old] = kAtLower;
            nonbasic_value(old);
            head_[p] = nw;
            state_[nw] = kBasic;
            w_[p] = 1.0;
        }
    }
    numerical_ = true;
    return false;
}

bool Simplex::recompute() {
    compute_primal();
    compute_dual();
    return true;
}

bool Simplex::refresh() { return refactor() && recompute(); }

LpStatus Simplex::failure() const { return no_memory_ ? LpStatus::NoMemory : LpStatus::Numerical; }

void Simplex::compute_primal() {
    const int m = a_.m, nm = m + a_.n;
    double* r = work_.data();
    std::memset(r, 0, sizeof(double) * m);
    for (int j = 0; j < nm; ++j) {
        if (state_[j] == kBasic || x_[j] == 0) continue;
        if (j < a_.n) {
            for (int q = a_.start[j]; q < a_.start[j + 1]; ++q) r[a_.index[q]] -= a_.value[q] * x_[j];
        } else {
            r[j - a_.n] += x_[j];
        }
    }
    lu_.ftran(r);
    for (int k = 0; k < m; ++k) x_[head_[k]] = r[k];
}

void Simplex::compute_dual() {
    const int m = a_.m, n = a_.n;
    for (int k = 0; k < m; ++k) y_[k] = cost_[head_[k]];
    lu_.btran(y_.data());
    for (int j = 0; j < n; ++j) {
        if (state_[j] == kBasic) { d_[j] = 0; continue; }
        double s = cost_[j];
        for (int q = a_.start[j]; q < a_.start[j + 1]; ++q) s -= a_.value[q] * y_[a_.index[q]];
        d_[j] = s;
    }
    for (int i = 0; i < m; ++i) d_[n + i] = state_[n + i] == kBasic ? 0.0 : cost_[n + i] + y_[i];
}

// arow_ = rho^T [A -I] (entries of basic variables are left as they come: no reader looks at
// them), built by rows from
// the nonzeros of rho; arow_idx_ lists the entries touched, so that the loops over the row
// and its clearing cost what the row holds, not n + m.
void Simplex::pivot_row(const double* rho) {
    const int m = a_.m, n = a_.n;
    double* ar = arow_.data();
    char* mark = arow_mark_.data();
    for (std::size_t k = 0; k < arow_idx_.size(); ++k) {
        ar[arow_idx_[k]] = 0;
        mark[arow_idx_[k]] = 0;
    }
    arow_idx_.clear();
    double norm = 0;
    for (int i = 0; i < m; ++i) {
        double r = rho[i];
        if (r == 0) continue;
        norm += r * r;
        for (int q = ar_.start[i]; q < ar_.start[i + 1]; ++q) {
            int j = ar_.index[q];
            ar[j] += r * ar_.value[q];
            if (!mark[j]) { mark[j] = 1; arow_idx_.push(j); }
        }
        ar[n + i] = -r;
        mark[n + i] = 1;
        arow_idx_.push(n + i);
    }
    rho_norm_ = norm;
}

bool Simplex::primal_feasible() const {
    for (int k = 0; k < a_.m; ++k) {
        int j = head_[k];
        if (x_[j] < lo_[j] - set_.primal_tol || x_[j] > up_[j] + set_.primal_tol) return false;
    }
    return true;
}

bool Simplex::dual_feasible() const {
    const int nm = a_.m + a_.n;
    for (int j = 0; j < nm; ++j) {
        int s = state_[j];
        if (s == kBasic || lo_[j] == up_[j]) continue;
        if ((s == kAtLower || s == kFreeZero) && d_[j] < -set_.dual_tol) return false;
        if ((s == kAtUpper || s == kFreeZero) && d_[j] > set_.dual_tol) return false;
    }
    return true;
}

bool Simplex::flip_to_dual_feasible() {
    const int nm = a_.m + a_.n;
    bool moved = false, feasible = true;
    for (int j = 0; j < nm; ++j) {
        int s = state_[j];
        if (s == kBasic || lo_[j] == up_[j]) continue;
        if (d_[j] < -set_.dual_tol && s != kAtUpper) {
            if (up_[j] < kInf) { state_[j] = kAtUpper; moved = true; } else feasible = false;
        } else if (d_[j] > set_.dual_tol && s != kAtLower) {
            if (lo_[j] > -kInf) { state_[j] = kAtLower; moved = true; } else feasible = false;
        }
        if (moved) nonbasic_value(j);
    }
    if (moved) compute_primal();
    return feasible;
}

// Small cost changes in the direction of dual feasibility break the ties that make the dual
// simplex stall on degenerate vertices; they are removed before the end.
void Simplex::perturb_costs() {
    const int nm = a_.m + a_.n;
    unsigned state = 12345u;
    for (int j = 0; j < nm; ++j) {
        if (state_[j] == kBasic || lo_[j] == up_[j] || state_[j] == kFreeZero) continue;
        state = state * 1664525u + 1013904223u;
        double r = 0.5 + (state >> 8) * (1.0 / 16777216.0);
        double delta = 5e-7 * (1.0 + std::fabs(cost_[j])) * r;
        if (state_[j] == kAtLower) { cost_[j] += delta; d_[j] += delta; }
        else { cost_[j] -= delta; d_[j] -= delta; }
    }
}

// Objective and infeasibility sums of the current basis for the caller's progress function.
void Simplex::report() {
    if (set_.progress == nullptr) return;
    const int nm = a_.m + a_.n;
    double obj = 0, pinf = 0, dinf = 0;
    for (int j = 0; j < nm; ++j) {
        obj += cost0_[j] * x_[j];
        if (x_[j] < lo_[j]) pinf += lo_[j] - x_[j];
        if (x_[j] > up_[j]) pinf += x_[j] - up_[j];
        int s = state_[j];
        if (s == kBasic || lo_[j] == up_[j]) continue;
        if (s != kAtUpper && d_[j] < 0) dinf -= d_[j];
        if (s != kAtLower && d_[j] > 0) dinf += d_[j];
    }
    frame::UserCall user;
    obj = set_.objective_sign * (obj + set_.objective_offset) + set_.objective_constant;
    set_.progress(static_cast<int>(iterations_ < INT_MAX ? iterations_ : INT_MAX), obj, pinf, dinf,
                  set_.progress_data);
}

bool Simplex::change_basis(int p, int q) {
    head_[p] = q;
    state_[q] = kBasic;
    d_[q] = 0;
    if (++iterations_ % 100 == 0) report();
    if (lu_.full()) return refactor();
    if (!lu_.update(p, alpha_.data(), alpha_idx_)) { no_memory_ = true; return false; }
    return true;
}

LpStatus Simplex::dual_loop() {
    const int m = a_.m, n = a_.n;
    const double tp = set_.primal_tol, td = set_.dual_tol;
    bool fresh = true;  // the factors and values were just recomputed
    for (;;) {
        if (no_memory_) return LpStatus::NoMemory;
        if (numerical_) return LpStatus::Numerical;
        if (iterations_ >= set_.max_iterations) return LpStatus::IterationLimit;
        // Pricing: the largest infeasibility relative to its steepest-edge weight.
        int p = -1;
        double best = 0;
        for (int k = 0; k < m; ++k) {
            int j = head_[k];
            double v = x_[j], inf;
            if (v < lo_[j] - tp) inf = lo_[j] - v;
            else if (v > up_[j] + tp) inf = v - up_[j];
            else continue;
            double score = inf * inf / w_[k];
            if (score > best) { best = score; p = k; }
        }
        if (p < 0) return LpStatus::Optimal;
        const int jp = head_[p];
        const double s = x_[jp] > up_[jp] ? 1.0 : -1.0;  // leaves at its upper (+1) or lower bound
        const double bound = s > 0 ? up_[jp] : lo_[jp];

        std::memset(rho_.data(), 0, sizeof(double) * m);
        rho_[p] = 1.0;
        lu_.btran(rho_.data());
        pivot_row(rho_.data());

        // Bound-flipping ratio test with Harris' tolerance.
        cand_.clear();
        cand_a_.clear();
        for (std::size_t t = 0; t < arow_idx_.size(); ++t) {
            int j = arow_idx_[t];
            int st = state_[j];
            if (st == kBasic || lo_[j] == up_[j]) continue;
            double at = s * arow_[j];
            if (std::fabs(at) < kPivotTol) continue;
            if ((at > 0 && (st == kAtLower || st == kFreeZero)) ||
                (at < 0 && (st == kAtUpper || st == kFreeZero))) {
                cand_.push(j);
                cand_a_.push(at);
            }
        }
        double slope = std::fabs(x_[jp] - bound);
        int q = -1;
        std::size_t nc = cand_.size();
        int nflip_begin = 0;  // candidates [0, nflip_begin) flip their bounds
        while (static_cast<std::size_t>(nflip_begin) < nc) {
            double hb = kInf;
            for (std::size_t k = nflip_begin; k < nc; ++k) {
                int j = cand_[k];
                double r = (d_[j] / cand_a_[k] * std::fabs(cand_a_[k]) + td) / std::fabs(cand_a_[k]);
                if (r < hb) hb = r;
            }
            double drop = 0, amax = 0;
            int qk = -1;
            for (std::size_t k = nflip_begin; k < nc; ++k) {
                int j = cand_[k];
                double r = d_[j] / cand_a_[k];
                if (r > hb) continue;
                double aa = std::fabs(cand_a_[k]);
                drop += aa * (up_[j] - lo_[j]);  // infinite, so no flips, if a bound is
                if (aa > amax) { amax = aa; qk = static_cast<int>(k); }
            }
            if (slope - drop > tp) {
                // Every candidate up to the Harris bound flips; move them to the front.
                for (std::size_t k = nflip_begin; k < nc; ++k) {
                    if (d_[cand_[k]] / cand_a_[k] > hb) continue;
                    int tj = cand_[k]; cand_[k] = cand_[nflip_begin]; cand_[nflip_begin] = tj;
                    double ta = cand_a_[k]; cand_a_[k] = cand_a_[nflip_begin]; cand_a_[nflip_begin] = ta;
                    ++nflip_begin;
                }
                slope -= drop;
                continue;
            }
            q = cand_[qk];
            break;
        }
        if (q < 0) {
            if (!fresh) {
                fresh = refresh();
                continue;
            }
            return LpStatus::Infeasible;
        }

        ftran_column(q);
        const double apq = alpha_[p];
        if (std::fabs(apq - arow_[q]) > kAgreement * (1.0 + std::fabs(apq)) || std::fabs(apq) < kTinyPivot) {
            if (!fresh) {
                fresh = refresh();
                continue;
            }
            if (std::fabs(apq) < kTinyPivot) return LpStatus::Numerical;
        }

        // Bound flips, then the primal step.
        if (nflip_begin > 0) {
            double* v = work_.data();
            std::memset(v, 0, sizeof(double) * m);
            for (int k = 0; k < nflip_begin; ++k) {
                int j = cand_[k];
                if (j == q) continue;
                double old = x_[j];
                state_[j] = state_[j] == kAtLower ? kAtUpper : kAtLower;
                nonbasic_value(j);
                double dx = x_[j] - old;
                if (j < n) {
                    for (int t = a_.start[j]; t < a_.start[j + 1]; ++t) v[a_.index[t]] += a_.value[t] * dx;
                } else {
                    v[j - n] -= dx;
                }
            }
            lu_.ftran(v);
            for (int k = 0; k < m; ++k) x_[head_[k]] -= v[k];
        }
        std::memcpy(tau_.data(), rho_.data(), sizeof(double) * m);
        lu_.ftran(tau_.data());

        const double theta_p = (x_[jp] - bound) / apq;
        for (std::size_t t = 0; t < alpha_idx_.size(); ++t) {
            const int k = alpha_idx_[t];
            x_[head_[k]] -= theta_p * alpha_[k];
        }
        x_[q] += theta_p;
        x_[jp] = bound;

        // Dual step; a reduced cost of the wrong sign is shifted to zero.
        double theta_d = d_[q] / arow_[q];
        if (s * theta_d < 0) {
            cost_[q] -= d_[q];
            d_[q] = 0;
            theta_d = 0;
        }
        if (theta_d != 0) {
            for (std::size_t t = 0; t < arow_idx_.size(); ++t) {
                int j = arow_idx_[t];
                if (state_[j] == kBasic || arow_[j] == 0) continue;
                d_[j] -= theta_d * arow_[j];
                int st = state_[j];
                if (lo_[j] == up_[j]) continue;
                if ((st == kAtLower && d_[j] < -td) || (st == kAtUpper && d_[j] > td) ||
                    (st == kFreeZero && std::fabs(d_[j]) > td)) {
                    cost_[j] -= d_[j];
                    d_[j] = 0;
                }
            }
        }
        d_[jp] = -theta_d;

        // Dual steepest-edge weights.
        const double wp = rho_norm_;
        for (std::size_t t = 0; t < alpha_idx_.size(); ++t) {
            const int k = alpha_idx_[t];
            if (k == p) continue;
            double r = alpha_[k] / apq;
            double wk = w_[k] + r * (r * wp - 2.0 * tau_[k]);
            w_[k] = wk > r * r ? wk : r * r;
            if (w_[k] < kMinWeight) w_[k] = kMinWeight;
        }
        w_[p] = wp / (apq * apq);
        if (w_[p] < kMinWeight) w_[p] = kMinWeight;

        state_[jp] = s > 0 ? kAtUpper : kAtLower;
        bool refac = lu_.full();
        if (!change_basis(p, q)) continue;
        fresh = false;
        if (refac) fresh = recompute();
    }
}

// The step at which basic variable k, changing at rate g, meets the bound it moves towards,
// widened by `slack`; infinite when that bound is.
double Simplex::step_to_bound(int k, double g, double slack) const {
    int j = head_[k];
    if (g < 0) return lo_[j] == -kInf ? kInf : (x_[j] - lo_[j] + slack) / -g;
    return up_[j] == kInf ? kInf : (up_[j] - x_[j] + slack) / g;
}

LpStatus Simplex::primal_loop() {
    const int m = a_.m, n = a_.n, nm = m + n;
    const double tp = set_.primal_tol, td = set_.dual_tol;
    bool fresh = true;
    for (;;) {
        if (no_memory_) return LpStatus::NoMemory;
        if (numerical_) return LpStatus::Numerical;
        if (iterations_ >= set_.max_iterations) return LpStatus::IterationLimit;
        int q = -1;
        double best = td;
        for (int j = 0; j < nm; ++j) {
            int st = state_[j];
            if (st == kBasic || lo_[j] == up_[j]) continue;
            double v = d_[j], score = 0;
            if (v < 0 && st != kAtUpper) score = -v;
            else if (v > 0 && st != kAtLower) score = v;
            if (score > best) { best = score; q = j; }
        }
        if (q < 0) return LpStatus::Optimal;
        const double dir = d_[q] < 0 ? 1.0 : -1.0;
        ftran_column(q);
        // Harris' two passes over x_B(t) = x_B - dir t alpha.
        double tmax = up_[q] - lo_[q];
        for (int k = 0; k < m; ++k) {
            double g = -dir * alpha_[k];
            if (std::fabs(g) < kPivotTol) continue;
            double t = step_to_bound(k, g, tp);
            if (t < tmax) tmax = t;
        }
        if (tmax == kInf) {
            if (!fresh) {
                fresh = refresh();
                continue;
            }
            unbounded_ = q;
            return LpStatus::Unbounded;
        }
        int p = -1;
        double amax = 0, step = 0;
        for (int k = 0; k < m; ++k) {
            double g = -dir * alpha_[k];
            if (std::fabs(g) < kPivotTol) continue;
            double t = step_to_bound(k, g, 0.0);
            if (t <= tmax && std::fabs(g) > amax) { amax = std::fabs(g); p = k; step = t; }
        }
        if (step < 0) step = 0;
        const double range = up_[q] - lo_[q];
        if (p < 0 || range <= step) {
            // The entering variable reaches its other bound first.
            for (std::size_t t = 0; t < alpha_idx_.size(); ++t) {
            const int k = alpha_idx_[t];
            x_[head_[k]] -= dir * range * alpha_[k];
        }
            state_[q] = state_[q] == kAtLower ? kAtUpper : kAtLower;
            nonbasic_value(q);
            ++iterations_;
            continue;
        }
        const int jp = head_[p];
        const bool to_lower = -dir * alpha_[p] < 0;
        for (std::size_t t = 0; t < alpha_idx_.size(); ++t) {
            const int k = alpha_idx_[t];
            x_[head_[k]] -= dir * step * alpha_[k];
        }
        x_[q] += dir * step;
        x_[jp] = to_lower ? lo_[jp] : up_[jp];

        std::memset(rho_.data(), 0, sizeof(double) * m);
        rho_[p] = 1.0;
        lu_.btran(rho_.data());
        pivot_row(rho_.data());
        const double apq = alpha_[p];
        if (std::fabs(apq - arow_[q]) > kAgreement * (1.0 + std::fabs(apq)) && !fresh) {
            fresh = refresh();
            continue;
        }
        const double theta_d = d_[q] / arow_[q];
        for (std::size_t t = 0; t < arow_idx_.size(); ++t) {
            int j = arow_idx_[t];
            if (state_[j] != kBasic && arow_[j] != 0) d_[j] -= theta_d * arow_[j];
        }
        d_[jp] = -theta_d;
        state_[jp] = to_lower ? kAtLower : kAtUpper;
        bool refac = lu_.full();
        if (!change_basis(p, q)) continue;
        fresh = false;
        if (refac) fresh = recompute();
    }
}

// Dual phase 1: the dual simplex on the same matrix with every variable boxed in [-1, 1]
// or a half of it (a boxed variable fixed at 0) minimises the sum of dual infeasibilities.
LpStatus Simplex::dual_phase1() {
    const int nm = a_.m + a_.n;
    Vec<double> lo, up;
    if (!lo.resize(nm) || !up.resize(nm)) return LpStatus::NoMemory;
    for (int j = 0; j < nm; ++j) {
        lo[j] = lo_[j];
        up[j] = up_[j];
        bool fl = lo_[j] > -kInf, fu = up_[j] < kInf;
        lo_[j] = fl ? 0.0 : -1.0;
        up_[j] = fu ? 0.0 : 1.0;
    }
    for (int j = 0; j < nm; ++j)
        if (state_[j] != kBasic) {
            state_[j] = d_[j] < 0 ? kAtUpper : kAtLower;
            nonbasic_value(j);
        }
    compute_primal();
    LpStatus st = dual_loop();
    for (int j = 0; j < nm; ++j) {
        lo_[j] = lo[j];
        up_[j] = up[j];
    }
    for (int j = 0; j < nm; ++j)
        if (state_[j] != kBasic) {
            state_[j] = d_[j] < 0 ? kAtUpper : kAtLower;
            nonbasic_value(j);
        }
    if (st == LpStatus::Optimal || st == LpStatus::Infeasible) st = LpStatus::Optimal;
    if (st == LpStatus::Optimal) {
        if (!refresh()) return failure();
    }
    for (int k = 0; k < a_.m; ++k) w_[k] = 1.0;
    return st;
}

// Free columns enter the slack basis in place of the logicals of rows where they have a large
// entry: a basic free variable never leaves, and a nonbasic one is dual infeasible unless its
// reduced cost is zero. Each chosen row must be free of the columns chosen before it, so that
// the basis stays triangular and nonsingular (a triangular crash after R. E. Bixby,
// "Implementing the simplex method: the initial basis", ORSA J. on Computing 4, 1992).
void Simplex::crash_free_columns() {
    const int n = a_.n;
    Vec<char> touched;
    if (!touched.assign(a_.m, 0)) {
        no_memory_ = true;
        return;
    }
    for (int j = 0; j < n; ++j) {
        if (lo_[j] > -kInf || up_[j] < kInf) continue;
        double cmax = 0;
        for (int q = a_.start[j]; q < a_.start[j + 1]; ++q) cmax = std::fmax(cmax, std::fabs(a_.value[q]));
        int r = -1;
        double best = 0.1 * cmax;
        for (int q = a_.start[j]; q < a_.start[j + 1]; ++q) {
            int i = a_.index[q];
            double v = std::fabs(a_.value[q]);
            if (touched[i] || (lo_[n + i] == -kInf && up_[n + i] == kInf)) continue;
            if (v >= best && v > 0) { best = v; r = i; }
        }
        if (r < 0) continue;
        for (int q = a_.start[j]; q < a_.start[j + 1]; ++q) touched[a_.index[q]] = 1;
        head_[r] = j;
        state_[j] = kBasic;
        state_[n + r] = kAtLower;
    }
}

LpStatus Simplex::solve(const int* state, const SimplexSettings& settings) {
    LpStatus st = run(state, settings);
    if (st == LpStatus::IterationLimit) {
        // The point and duals of the last basis, with the true costs and bounds (a stop inside
        // the dual phase 1 or after cost shifts leaves other values behind).
        const int nm = a_.m + a_.n;
        for (int j = 0; j < nm; ++j) cost_[j] = cost0_[j];
        recompute();
    }
    return st;
}

LpStatus Simplex::run(const int* state, const SimplexSettings& settings) {
    set_ = settings;
    const int m = a_.m, n = a_.n, nm = m + n;
    iterations_ = 0;
    unbounded_ = -1;
    // Starting basis: the caller's when it has m basic variables, else the slack basis.
    int nb = 0;
    if (state != nullptr)
        for (int j = 0; j < nm; ++j) nb += state[j] == kBasic;
    if (state != nullptr && nb == m) {
        int k = 0;
        for (int j = 0; j < nm; ++j) {
            state_[j] = state[j];
            if (state[j] == kBasic) head_[k++] = j;
        }
    } else {
        for (int j = 0; j < n; ++j) {
            state_[j] = cost_[j] < 0 && up_[j] < kInf ? kAtUpper : kAtLower;
        }
        for (int i = 0; i < m; ++i) {
            state_[n + i] = kBasic;
            head_[i] = n + i;
        }
        crash_free_columns();
        if (no_memory_) return LpStatus::NoMemory;
    }
    for (int j = 0; j < nm; ++j)
        if (state_[j] != kBasic) nonbasic_value(j);
    if (!refresh()) return failure();
    if (primal_feasible() && dual_feasible()) return LpStatus::Optimal;

    bool perturbed = false;
    for (int round = 0; round < 8; ++round) {
        LpStatus st;
        bool dual_ok = flip_to_dual_feasible();
        if (!dual_ok && primal_feasible()) {
            st = primal_loop();
        } else {
            if (!dual_ok) {
                st = dual_phase1();
                if (st != LpStatus::Optimal) return st;
                if (!flip_to_dual_feasible()) {
                    // No dual feasible basis: the problem is unbounded if it has a feasible
                    // point. Zero costs find one; the primal simplex then finds the ray.
                    for (int j = 0; j < nm; ++j) cost_[j] = 0;
                    compute_dual();
                    st = dual_loop();
                    for (int j = 0; j < nm; ++j) cost_[j] = cost0_[j];
                    if (st != LpStatus::Optimal) return st;
                    compute_dual();
                    st = primal_loop();
                    if (st != LpStatus::Optimal) return st;
                    continue;
                }
            }
            if (!perturbed) {
                perturb_costs();
                perturbed = true;
            }
            st = dual_loop();
        }
        if (st != LpStatus::Optimal) return st;
        // Remove perturbations and shifts, then clean up with the primal simplex.
        for (int j = 0; j < nm; ++j) cost_[j] = cost0_[j];
        if (!refresh()) return failure();
        if (!dual_feasible() && primal_feasible()) {
            st = primal_loop();
            if (st != LpStatus::Optimal) return st;
            if (!refresh()) return failure();
        }
        if (primal_feasible() && dual_feasible()) return LpStatus::Optimal;
        for (int k = 0; k < m; ++k) w_[k] = 1.0;
    }
    return LpStatus::Numerical;
}

}  // namespace qnum::optim
