// The model the linear programming routines solve, its presolve and postsolve, and the
// solution in the terms of the MPS record.
#pragma once

#include "frame/frame.hpp"
#include "optim/lp_vec.hpp"

namespace qnum::optim {

// min cost^T x + offset over rlo <= A x <= rup, lo <= x <= up; infinite bounds are +-HUGE_VAL.
struct Model {
    int m = 0, n = 0;
    Csc a;  // m by n, by columns, repeated entries summed
    Vec<double> cost, lo, up, rlo, rup;
    Vec<int> row_map;   // record row -> model row, -1 for free (N) rows (full model only)
    Vec<int> row_orig;  // model row -> record row
    Vec<int> col_orig;  // model column -> record column
    double offset = 0;

    // The model of the record's rows other than N rows, with the objective negated when
    // maximising. False when memory runs out.
    bool build(const Qnum_d_mps* p, bool maximize);
    // Sum of the row and column bound violations of x.
    double infeasibility(const double* x) const;
};

// A solution of the full model, then in the record's terms.
struct Solution {
    Vec<double> xm, ym;  // per model column and row
    Vec<int> stm;        // engine states of the model's columns, then rows
    Vec<double> x, y, d, activity;
    Vec<int> row_status, column_status;
    double objective = 0;

    bool allocate(const Model& model, int nrows, int ncolumns);
    // The record's results from xm, ym, stm: activities, objective, duals (0 for N rows),
    // reduced costs c - A^T y and public status codes (N rows are basic).
    void finish(const Qnum_d_mps* p, const Model& model, bool maximize);
};

enum class PresolveResult { Reduced, Infeasible, NoMemory };

// Removes empty rows, fixed and empty columns, singleton rows (as column bounds) and free
// column singletons, repeatedly, and puts them back into a solution with its duals and
// basis (the reductions of E. D. Andersen and K. D. Andersen, "Presolving in linear
// programming", Math. Programming 71, 1995, restricted to those whose postsolve is exact).
class Presolve {
public:
    PresolveResult run(const Model& model);
    const Model& reduced() const { return red_; }
    // Sum of the bound violations that proved infeasibility (0 when none did).
    double infeasibility() const { return infeasibility_; }
    // From the reduced model's x, y and engine states to the full model's, in `sol`.
    void postsolve(const double* x, const double* y, const int* state, Solution& sol) const;

private:
    struct Op {
        int kind, row, col;
        double value, aux;  // the coefficient, the row dual or the column value
        double lo, up;      // bounds at the time of the reduction
        int flags;
    };
    const Model* model_ = nullptr;
    Model red_;
    Csc ar_;  // the full model by rows
    Vec<int> rmap_, cmap_;  // reduced row and column -> model row and column
    Vec<Op> ops_;
    Vec<double> lo_, up_, rlo_, rup_, cost_, fixed_x_, fixed_y_;
    Vec<char> row_on_, col_on_;
    Vec<int> row_count_, col_count_;
    double infeasibility_ = 0;
};

}  // namespace qnum::optim
