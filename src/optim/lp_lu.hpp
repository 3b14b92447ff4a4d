// Sparse LU factors of a simplex basis, with product-form updates between refactorizations.
#pragma once

#include "optim/lp_vec.hpp"

namespace qnum::optim {

// The basis matrix B has m columns; column k is variable head[k]: a structural column of `a`
// when head[k] < a.n, else the logical column -e_i of row i = head[k] - a.n.
//
// factor() eliminates by Markowitz's rule with threshold pivoting over the active submatrix
// (H. M. Markowitz, "The elimination form of the inverse and its application to linear
// programming", Management Science 3, 1957; the count buckets and candidate search follow
// U. H. Suhl and L. M. Suhl, "Computing sparse LU factorizations for large-scale linear
// programming bases", ORSA J. on Computing 2, 1990). Later basis changes append eta columns
// (the product form of the inverse, G. B. Dantzig and W. Orchard-Hays, 1954).
class BasisLu {
public:
    // Factors B. Returns false when memory runs out. When B is singular, the positions whose
    // columns found no pivot are listed in `bad_position` and the rows left without a pivot in
    // `bad_row` (same length); the caller replaces those columns by the rows' logicals.
    bool factor(const int* head, const Csc& a, Vec<int>& bad_position, Vec<int>& bad_row);
    // x: right-hand side by row on entry, B^-1 x by basis position on exit.
    void ftran(double* x);
    // y: right-hand side by basis position on entry, B^-T y by row on exit.
    void btran(double* y);
    // Column `p` of the basis was replaced by a column whose ftran image is `alpha`, with
    // nonzeros at the positions `nz` lists.
    bool update(int p, const double* alpha, const Vec<int>& nz);
    int updates() const { return static_cast<int>(eta_pos_.size()); }
    // True when the next basis change should refactor instead of adding an eta: after 100
    // updates, or once the etas hold twice as many nonzeros as the factors (then each solve
    // costs about three times what a fresh factorization's would).
    bool full() const {
        return updates() >= 100 || eta_idx_.size() > 2 * (lval_.size() + uval_.size() + std::size_t(m_));
    }
    // Nonzeros of L and U after the last factor(), for choosing when to refactor.
    std::size_t factor_size() const { return lval_.size() + uval_.size(); }

private:
    int m_ = 0;
    // Pivot step k: row prow_[k], basis position pcol_[k], pivot diag_[k].
    Vec<int> prow_, pcol_;
    Vec<double> diag_;
    // L: step k eliminates lidx_[lstart_[k]..lstart_[k+1]) with multipliers lval_.
    Vec<int> lstart_, lidx_;
    Vec<int> lsteps_;  // the steps whose L column has entries (most have none)
    Vec<double> lval_;
    // U: the pivot row of step k without its pivot, by basis position.
    Vec<int> ustart_, uidx_;
    Vec<double> uval_;
    // U again by basis position: the rows (pivot rows of earlier steps) that hold an entry there,
    // so that back substitution can skip the zeros of the solution.
    Vec<int> ucstart_, ucrow_;
    Vec<double> ucval_;
    // Etas: position, pivot and the off-pivot entries of the ftran image.
    Vec<int> eta_pos_, eta_start_, eta_idx_;
    Vec<double> eta_piv_, eta_val_;
    Vec<double> work_;
};

}  // namespace qnum::optim
