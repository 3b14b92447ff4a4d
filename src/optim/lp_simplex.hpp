// The simplex engine of the linear programming routines: a bounded dual simplex with dual
// steepest-edge pricing and a bound-flipping ratio test, and a bounded primal simplex for
// the clean-up after cost perturbation and for warm starts that are primal feasible.
#pragma once

#include "qnummath.h"
#include "optim/lp_lu.hpp"
#include "optim/lp_vec.hpp"

namespace qnum::optim {

enum class LpStatus { Optimal, Infeasible, Unbounded, IterationLimit, Numerical, NoMemory };

// Variable states. Variables 0..n-1 are the columns, n..n+m-1 the row activities.
enum VarState : int { kBasic = 0, kAtLower = 1, kAtUpper = 2, kFreeZero = 3 };

struct SimplexSettings {
    double primal_tol = 1e-7;  // bound violation allowed, on the scaled problem
    double dual_tol = 1e-7;    // reduced-cost sign violation allowed
    long long max_iterations = 1000000;
    qnum_lp_progress progress = nullptr;  // called every 100 iterations and at the end
    void* progress_data = nullptr;
    // The objective the progress function reports is sign * (cost^T x + offset) + constant: the
    // caller's objective, with what presolve took out and the sense of a maximisation.
    double objective_sign = 1, objective_offset = 0, objective_constant = 0;
};

// min cost^T x over A x - r = 0, lo <= (x, r) <= up, on a scaled problem.
class Simplex {
public:
    // Takes the matrix (m rows, n columns), n costs and n + m bounds (infinite ones as
    // +-HUGE_VAL). False when memory runs out.
    bool load(Csc&& a, const double* cost, const double* lo, const double* up);
    // Solves from the slack basis, or from `state` (n + m entries) when it is not null.
    LpStatus solve(const int* state, const SimplexSettings& settings);

    int m() const { return a_.m; }
    int n() const { return a_.n; }
    const double* x() const { return x_.data(); }      // n + m values
    const double* d() const { return d_.data(); }      // n + m reduced costs
    const double* y() const { return y_.data(); }      // m row duals
    const int* state() const { return state_.data(); }
    long long iterations() const { return iterations_; }
    int unbounded_variable() const { return unbounded_; }
    // Calls the progress function of the settings, if any, with the current basis's figures.
    void report();

private:
    void nonbasic_value(int j);
    bool refactor();
    // Primal and dual values from the current factors (true, for use in conditions).
    bool recompute();
    // Refactor and recompute; false when the basis could not be factored.
    bool refresh();
    LpStatus failure() const;  // the status after refresh() failed
    void compute_primal();
    void compute_dual();
    void pivot_row(const double* rho);
    bool primal_feasible() const;
    bool dual_feasible() const;
    // Sets boxed nonbasic variables to the bound their reduced cost asks for; true when
    // every nonbasic variable is then dual feasible.
    bool flip_to_dual_feasible();
    LpStatus dual_loop();
    LpStatus primal_loop();
    double step_to_bound(int k, double g, double slack) const;
    LpStatus dual_phase1();
    void crash_free_columns();
    LpStatus run(const int* state, const SimplexSettings& settings);
    void perturb_costs();
    bool change_basis(int p, int q);  // q replaces the variable at position p (alpha_ its column)
    void load_column(int j, double* v) const;  // v (by row, zeroed) = column j
    void ftran_column(int j);

    Csc a_, ar_;  // the matrix by columns and by rows
    Vec<double> cost_, cost0_, lo_, up_, x_, d_, y_, w_;
    Vec<int> head_, state_;
    Vec<double> rho_, alpha_, tau_, work_, arow_;
    Vec<int> arow_idx_;  // the entries of arow_ that the last pivot row touched
    Vec<int> alpha_idx_;  // the nonzeros of alpha_
    double rho_norm_ = 0;  // ||rho||^2 of the last pivot row
    Vec<char> arow_mark_;
    Vec<int> cand_;
    Vec<double> cand_a_;
    Vec<int> bad_pos_, bad_row_;
    BasisLu lu_;
    SimplexSettings set_;
    long long iterations_ = 0;
    int unbounded_ = -1;
    bool no_memory_ = false;
    bool numerical_ = false;
};

}  // namespace qnum::optim
