// Sparse LU of a simplex basis by Markowitz pivoting with a threshold, and product-form updates.
#include "optim/lp_lu.hpp"

#include <cmath>
#include <cstring>

namespace qnum::optim {
namespace {

// A pivot must be at least this fraction of the largest entry of its column: 0.1 trades a
// little sparsity for multipliers bounded by 10 (Suhl and Suhl use 0.01 to 0.1).
constexpr double kThreshold = 0.1;
// Entries below this are not pivots (the matrix is scaled so that its entries are near 1).
constexpr double kAbsPivot = 1e-11;
// Markowitz candidates examined before the best one is taken.
constexpr int kCandidates = 4;

// The active submatrix during elimination: values by row, patterns by column, both in pools
// where a list that must grow is moved to the end.
struct Active {
    int m = 0;
    Vec<int> rstart, rlen, rcap, ridx;  // row i: columns ridx[rstart..+rlen)
    Vec<double> rval;
    Vec<int> cstart, clen, ccap, cidx;  // column j: rows cidx[cstart..+clen)
    Vec<double> cmax;                   // largest |entry| of a column, < 0 when stale
    // Count buckets (doubly linked) for rows and columns.
    Vec<int> rhead, rnext, rprev, chead, cnext, cprev;

    bool grow_row(int i, int extra) {
        if (rlen[i] + extra <= rcap[i]) return true;
        int cap = 2 * (rlen[i] + extra);
        std::size_t at = ridx.size();
        if (!ridx.resize(at + cap) || !rval.resize(at + cap)) return false;
        for (int k = 0; k < rlen[i]; ++k) {
            ridx[at + k] = ridx[rstart[i] + k];
            rval[at + k] = rval[rstart[i] + k];
        }
        rstart[i] = static_cast<int>(at);
        rcap[i] = cap;
        return true;
    }
    bool grow_col(int j, int extra) {
        if (clen[j] + extra <= ccap[j]) return true;
        int cap = 2 * (clen[j] + extra);
        std::size_t at = cidx.size();
        if (!cidx.resize(at + cap)) return false;
        for (int k = 0; k < clen[j]; ++k) cidx[at + k] = cidx[cstart[j] + k];
        cstart[j] = static_cast<int>(at);
        ccap[j] = cap;
        return true;
    }
    // Position of column j in row i, or -1.
    int find(int i, int j) const {
        for (int k = rstart[i]; k < rstart[i] + rlen[i]; ++k)
            if (ridx[k] == j) return k;
        return -1;
    }
    double col_max(int j) {
        if (cmax[j] < 0) {
            double mx = 0;
            for (int k = cstart[j]; k < cstart[j] + clen[j]; ++k) {
                int q = find(cidx[k], j);
                if (q >= 0) mx = std::fmax(mx, std::fabs(rval[q]));
            }
            cmax[j] = mx;
        }
        return cmax[j];
    }
    void link(Vec<int>& head, Vec<int>& next, Vec<int>& prev, int v, int count) {
        prev[v] = -1;
        next[v] = head[count];
        if (head[count] >= 0) prev[head[count]] = v;
        head[count] = v;
    }
    void unlink(Vec<int>& head, Vec<int>& next, Vec<int>& prev, int v, int count) {
        if (prev[v] >= 0) next[prev[v]] = next[v]; else head[count] = next[v];
        if (next[v] >= 0) prev[next[v]] = prev[v];
    }
};

}  // namespace

bool BasisLu::factor(const int* head, const Csc& a, Vec<int>& bad_position, Vec<int>& bad_row) {
    const int m = a.m;
    m_ = m;
    bad_position.clear();
    bad_row.clear();
    prow_.clear(); pcol_.clear(); diag_.clear();
    lstart_.clear(); lidx_.clear(); lval_.clear();
    ustart_.clear(); uidx_.clear(); uval_.clear();
    eta_pos_.clear(); eta_start_.clear(); eta_idx_.clear(); eta_piv_.clear(); eta_val_.clear();
    if (!work_.assign(m, 0.0) || !lstart_.push(0) || !ustart_.push(0) || !eta_start_.push(0))
        return false;

    Active s;
    s.m = m;
    // Starts, capacities and bucket links are all set before they are read.
    if (!s.rstart.resize(m) || !s.rlen.assign(m, 0) || !s.rcap.resize(m) || !s.cstart.resize(m) ||
        !s.clen.assign(m, 0) || !s.ccap.resize(m) || !s.cmax.assign(m, -1.0) ||
        !s.rhead.assign(m + 1, -1) || !s.rnext.resize(m) || !s.rprev.resize(m) ||
        !s.chead.assign(m + 1, -1) || !s.cnext.resize(m) || !s.cprev.resize(m))
        return false;
    // Column patterns and row counts.
    std::size_t nz = 0;
    for (int k = 0; k < m; ++k) {
        int v = head[k];
        if (v < a.n) {
            for (int q = a.start[v]; q < a.start[v + 1]; ++q) ++s.rlen[a.index[q]];
            s.clen[k] = a.start[v + 1] - a.start[v];
        } else {
            ++s.rlen[v - a.n];
            s.clen[k] = 1;
        }
        nz += s.clen[k];
    }
    // Each list starts with room to double before it has to move.
    if (!s.ridx.resize(2 * nz) || !s.rval.resize(2 * nz) || !s.cidx.resize(2 * nz)) return false;
    for (int i = 0, at = 0; i < m; ++i) {
        s.rstart[i] = at;
        s.rcap[i] = 2 * s.rlen[i];
        at += s.rcap[i];
        s.rlen[i] = 0;
    }
    for (int k = 0, at = 0; k < m; ++k) {
        s.cstart[k] = at;
        s.ccap[k] = 2 * s.clen[k];
        at += s.ccap[k];
        s.clen[k] = 0;
    }
    for (int k = 0; k < m; ++k) {
        int v = head[k];
        auto add = [&](int i, double x) {
            int q = s.rstart[i] + s.rlen[i]++;
            s.ridx[q] = k;
            s.rval[q] = x;
            s.cidx[s.cstart[k] + s.clen[k]++] = i;
        };
        if (v < a.n) {
            for (int q = a.start[v]; q < a.start[v + 1]; ++q)
                if (a.value[q] != 0) add(a.index[q], a.value[q]);
        } else {
            add(v - a.n, -1.0);
        }
    }
    // Duplicate row indices in one column would break the patterns; the caller's matrix has
    // none (its duplicates are summed when it is built).
    for (int i = 0; i < m; ++i) s.link(s.rhead, s.rnext, s.rprev, i, s.rlen[i]);
    for (int k = 0; k < m; ++k) s.link(s.chead, s.cnext, s.cprev, k, s.clen[k]);

    Vec<int> mark;
    Vec<char> row_done, col_done;
    if (!mark.assign(m, -1) || !row_done.assign(m, 0) || !col_done.assign(m, 0)) return false;

    for (int step = 0; step < m; ++step) {
        // Markowitz search: columns and rows of count 1, 2, ... until enough candidates.
        int br = -1, bc = -1;
        long long best = -1;
        int found = 0;
        for (int cnt = 1; cnt <= m && found < kCandidates; ++cnt) {
            for (int c = s.chead[cnt]; c >= 0 && found < kCandidates; c = s.cnext[c]) {
                double cm = s.col_max(c);
                for (int q = s.cstart[c]; q < s.cstart[c] + s.clen[c]; ++q) {
                    int i = s.cidx[q];
                    int at = s.find(i, c);
                    double v = std::fabs(s.rval[at]);
                    if (v < kAbsPivot || v < kThreshold * cm) continue;
                    long long cost = static_cast<long long>(cnt - 1) * (s.rlen[i] - 1);
                    if (best < 0 || cost < best) { best = cost; br = i; bc = c; }
                    ++found;
                }
            }
            for (int i = s.rhead[cnt]; i >= 0 && found < kCandidates; i = s.rnext[i]) {
                for (int q = s.rstart[i]; q < s.rstart[i] + s.rlen[i]; ++q) {
                    int c = s.ridx[q];
                    double v = std::fabs(s.rval[q]);
                    if (v < kAbsPivot || v < kThreshold * s.col_max(c)) continue;
                    long long cost = static_cast<long long>(cnt - 1) * (s.clen[c] - 1);
                    if (best < 0 || cost < best) { best = cost; br = i; bc = c; }
                    ++found;
                }
            }
            if (best >= 0 && best <= static_cast<long long>(cnt - 1) * (cnt - 1)) break;
        }
        if (br < 0) break;  // no acceptable pivot left: singular

        const int r = br, c = bc;
        int at = s.find(r, c);
        const double pv = s.rval[at];
        if (!prow_.push(r) || !pcol_.push(c) || !diag_.push(pv)) return false;
        // The pivot row without its pivot becomes a row of U.
        s.unlink(s.rhead, s.rnext, s.rprev, r, s.rlen[r]);
        s.unlink(s.chead, s.cnext, s.cprev, c, s.clen[c]);
        row_done[r] = 1;
        col_done[c] = 1;
        const int ubeg = static_cast<int>(uidx_.size());
        for (int q = s.rstart[r]; q < s.rstart[r] + s.rlen[r]; ++q) {
            int j = s.ridx[q];
            if (j == c) continue;
            if (!uidx_.push(j) || !uval_.push(s.rval[q])) return false;
            // Row r leaves column j's pattern.
            s.unlink(s.chead, s.cnext, s.cprev, j, s.clen[j]);
            for (int t = s.cstart[j]; t < s.cstart[j] + s.clen[j]; ++t)
                if (s.cidx[t] == r) {
                    s.cidx[t] = s.cidx[s.cstart[j] + --s.clen[j]];
                    break;
                }
            s.cmax[j] = -1;
        }
        const int uend = static_cast<int>(uidx_.size());
        if (!ustart_.push(uend)) return false;
        // Eliminate column c from the other rows.
        for (int q = s.cstart[c]; q < s.cstart[c] + s.clen[c]; ++q) {
            int i = s.cidx[q];
            if (i == r) continue;
            s.unlink(s.rhead, s.rnext, s.rprev, i, s.rlen[i]);
            int ai = s.find(i, c);
            double l = s.rval[ai] / pv;
            --s.rlen[i];
            s.ridx[ai] = s.ridx[s.rstart[i] + s.rlen[i]];
            s.rval[ai] = s.rval[s.rstart[i] + s.rlen[i]];
            if (!lidx_.push(i) || !lval_.push(l)) return false;
            if (!s.grow_row(i, uend - ubeg)) return false;
            for (int t = s.rstart[i]; t < s.rstart[i] + s.rlen[i]; ++t) mark[s.ridx[t]] = t;
            for (int u = ubeg; u < uend; ++u) {
                int j = uidx_[u];
                if (mark[j] >= 0) {
                    s.rval[mark[j]] -= l * uval_[u];
                } else {
                    if (!s.grow_col(j, 1)) return false;
                    int t = s.rstart[i] + s.rlen[i]++;
                    s.ridx[t] = j;
                    s.rval[t] = -l * uval_[u];
                    s.cidx[s.cstart[j] + s.clen[j]++] = i;
                }
            }
            for (int t = s.rstart[i]; t < s.rstart[i] + s.rlen[i]; ++t) mark[s.ridx[t]] = -1;
            s.link(s.rhead, s.rnext, s.rprev, i, s.rlen[i]);
        }
        for (int u = ubeg; u < uend; ++u) s.link(s.chead, s.cnext, s.cprev, uidx_[u], s.clen[uidx_[u]]);
        if (!lstart_.push(static_cast<int>(lidx_.size()))) return false;
    }
    if (static_cast<int>(prow_.size()) < m) {
        for (int k = 0; k < m; ++k)
            if (!col_done[k] && !bad_position.push(k)) return false;
        for (int i = 0; i < m; ++i)
            if (!row_done[i] && !bad_row.push(i)) return false;
        return true;
    }
    lsteps_.clear();
    for (int k = 0; k < m; ++k)
        if (lstart_[k + 1] > lstart_[k] && !lsteps_.push(k)) return false;
    // U by columns.
    const std::size_t unz = uidx_.size();
    if (!ucstart_.assign(m + 1, 0) || !ucrow_.resize(unz) || !ucval_.resize(unz)) return false;
    for (std::size_t q = 0; q < unz; ++q) ++ucstart_[uidx_[q] + 1];
    for (int k = 0; k < m; ++k) ucstart_[k + 1] += ucstart_[k];
    for (int k = 0; k < m; ++k) mark[k] = ucstart_[k];
    for (int k = 0; k < m; ++k)
        for (int q = ustart_[k]; q < ustart_[k + 1]; ++q) {
            int at = mark[uidx_[q]]++;
            ucrow_[at] = prow_[k];
            ucval_[at] = uval_[q];
        }
    return true;
}

void BasisLu::ftran(double* x) {
    const int steps = static_cast<int>(prow_.size());
    for (std::size_t t = 0; t < lsteps_.size(); ++t) {
        const int k = lsteps_[t];
        double xr = x[prow_[k]];
        if (xr == 0) continue;
        for (int q = lstart_[k]; q < lstart_[k + 1]; ++q) x[lidx_[q]] -= lval_[q] * xr;
    }
    double* w = work_.data();
    for (int k = steps - 1; k >= 0; --k) {
        const int c = pcol_[k];
        const double xr = x[prow_[k]];
        if (xr == 0) { w[c] = 0; continue; }  // most entries are zero: no division for them
        const double v = xr / diag_[k];
        w[c] = v;
        for (int q = ucstart_[c]; q < ucstart_[c + 1]; ++q) x[ucrow_[q]] -= ucval_[q] * v;
    }
    std::memcpy(x, w, sizeof(double) * m_);
    for (std::size_t e = 0; e < eta_pos_.size(); ++e) {
        const int p = eta_pos_[e];
        if (x[p] == 0) continue;
        const double xp = x[p] / eta_piv_[e];
        x[p] = xp;
        for (int q = eta_start_[e]; q < eta_start_[e + 1]; ++q) x[eta_idx_[q]] -= eta_val_[q] * xp;
    }
}

void BasisLu::btran(double* y) {
    for (std::size_t e = eta_pos_.size(); e-- > 0;) {
        int p = eta_pos_[e];
        double s = y[p];
        for (int q = eta_start_[e]; q < eta_start_[e + 1]; ++q) s -= eta_val_[q] * y[eta_idx_[q]];
        y[p] = s / eta_piv_[e];
    }
    const int steps = static_cast<int>(prow_.size());
    double* w = work_.data();
    for (int k = 0; k < steps; ++k) {
        const double yc = y[pcol_[k]];
        if (yc == 0) { w[prow_[k]] = 0; continue; }
        const double v = yc / diag_[k];
        w[prow_[k]] = v;
        for (int q = ustart_[k]; q < ustart_[k + 1]; ++q) y[uidx_[q]] -= uval_[q] * v;
    }
    for (std::size_t t = lsteps_.size(); t-- > 0;) {
        const int k = lsteps_[t];
        double s = w[prow_[k]];
        for (int q = lstart_[k]; q < lstart_[k + 1]; ++q) s -= lval_[q] * w[lidx_[q]];
        w[prow_[k]] = s;
    }
    std::memcpy(y, w, sizeof(double) * m_);
}

bool BasisLu::update(int p, const double* alpha, const Vec<int>& nz) {
    if (!eta_pos_.push(p) || !eta_piv_.push(alpha[p])) return false;
    for (std::size_t t = 0; t < nz.size(); ++t) {
        const int i = nz[t];
        if (i == p) continue;
        if (!eta_idx_.push(i) || !eta_val_.push(alpha[i])) return false;
    }
    return eta_start_.push(static_cast<int>(eta_idx_.size()));
}

}  // namespace qnum::optim
