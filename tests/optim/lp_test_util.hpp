// Helpers of the linear programming tests: problem records made by hand, and an independent
// check of a returned solution (feasibility, reduced costs, dual signs, complementarity).
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "qnummath.h"

namespace qnum::test {

// The shared problem files, and their table (expected.tsv) as rows of cells by column name:
// empty when the files are absent.
inline std::string mps_dir() { return std::string(QNUM_TEST_DATA_DIR) + "/../../shared/data/mps/"; }
inline std::vector<std::map<std::string, std::string>> expected_table() {
    std::ifstream in(mps_dir() + "expected.tsv");
    std::vector<std::map<std::string, std::string>> rows;
    std::vector<std::string> header;
    for (std::string line; std::getline(in, line);) {
        std::vector<std::string> cells;
        std::stringstream ss(line);
        for (std::string cell; std::getline(ss, cell, '\t');) cells.push_back(cell);
        cells.resize(std::max(cells.size(), header.size()));
        if (header.empty()) { header = cells; continue; }
        rows.emplace_back();
        for (std::size_t k = 0; k < header.size(); ++k) rows.back()[header[k]] = cells[k];
    }
    return rows;
}

// A problem record over vectors that it owns; record() points a Qnum_d_mps at them.
struct LpRecord {
    std::vector<int> row_type;
    std::vector<double> rhs, ranges, objective, lower, upper, value;
    std::vector<int> irow, jcol;
    std::vector<std::string> rnames, cnames;
    std::vector<char*> rname_ptr, cname_ptr;
    double constant = 0;
    Qnum_d_mps rec{};

    int add_column(double c, double lo, double up) {
        objective.push_back(c);
        lower.push_back(lo);
        upper.push_back(up);
        cnames.push_back("x" + std::to_string(objective.size()));
        return static_cast<int>(objective.size()) - 1;
    }
    // A row with coefficients on the given columns.
    int add_row(char type, double b, std::vector<std::pair<int, double>> coef, double range = 0) {
        int i = static_cast<int>(row_type.size());
        row_type.push_back(type);
        rhs.push_back(b);
        ranges.push_back(range);
        rnames.push_back("r" + std::to_string(i + 1));
        for (auto& [j, v] : coef) {
            irow.push_back(i);
            jcol.push_back(j);
            value.push_back(v);
        }
        return i;
    }
    const Qnum_d_mps* record() {
        rec = Qnum_d_mps{};
        rec.nrows = static_cast<int>(row_type.size());
        rec.ncolumns = static_cast<int>(objective.size());
        rec.nonzeros = static_cast<int>(value.size());
        rec.matrix_row = irow.data();
        rec.matrix_column = jcol.data();
        rec.matrix_value = value.data();
        rec.objective = objective.data();
        rec.rhs = rhs.data();
        rec.ranges = ranges.data();
        rec.row_type = row_type.data();
        rec.lower_bound = lower.data();
        rec.upper_bound = upper.data();
        rname_ptr.clear(), cname_ptr.clear();
        for (auto& s : rnames) rname_ptr.push_back(s.data());
        for (auto& s : cnames) cname_ptr.push_back(s.data());
        rec.row_name = rname_ptr.data();
        rec.column_name = cname_ptr.data();
        rec.positive_infinity = 1e30;
        rec.negative_infinity = -1e30;
        rec.objective_constant = constant;
        return &rec;
    }
};

// Row bounds of a record's row, in the MPS meaning of type, right-hand side and range.
inline void row_bounds(const Qnum_d_mps* p, int i, double& lo, double& up) {
    double b = p->rhs[i], r = p->ranges ? p->ranges[i] : 0.0;
    lo = -HUGE_VAL;
    up = HUGE_VAL;
    switch (p->row_type[i]) {
    case 'E': lo = r < 0 ? b + r : b; up = r > 0 ? b + r : b; break;
    case 'L': up = b; if (r != 0) lo = b - std::fabs(r); break;
    case 'G': lo = b; if (r != 0) up = b + std::fabs(r); break;
    default: break;
    }
}
inline double col_lower(const Qnum_d_mps* p, int j) {
    return p->lower_bound[j] <= p->negative_infinity ? -HUGE_VAL : p->lower_bound[j];
}
inline double col_upper(const Qnum_d_mps* p, int j) {
    return p->upper_bound[j] >= p->positive_infinity ? HUGE_VAL : p->upper_bound[j];
}

// The optimality conditions of (x, y, d) for the record, minimising (sense +1) or
// maximising (-1), with tolerances relative to the data's size.
inline void expect_optimal(const Qnum_d_mps* p, const double* x, const double* y,
                           const double* d, double sense, double tol, const std::string& what) {
    const int nr = p->nrows, nc = p->ncolumns;
    std::vector<long double> act(nr, 0.0L), red(nc);
    double cmax = 1;
    for (int j = 0; j < nc; ++j) {
        red[j] = p->objective[j];
        cmax = std::fmax(cmax, std::fabs(p->objective[j]));
    }
    for (int k = 0; k < p->nonzeros; ++k) {
        act[p->matrix_row[k]] += static_cast<long double>(p->matrix_value[k]) * x[p->matrix_column[k]];
        red[p->matrix_column[k]] -= static_cast<long double>(p->matrix_value[k]) * y[p->matrix_row[k]];
    }
    double ymax = 1;
    for (int i = 0; i < nr; ++i) ymax = std::fmax(ymax, std::fabs(y[i]));
    const double dtol = tol * (cmax + ymax);
    int bad = 0;
    for (int j = 0; j < nc && bad < 5; ++j) {
        double lo = col_lower(p, j), up = col_upper(p, j), ptol = tol * (1 + std::fabs(x[j]));
        if (x[j] < lo - ptol || x[j] > up + ptol) { ++bad; ADD_FAILURE() << what << ": column " << j << " = " << x[j] << " outside [" << lo << ", " << up << "]"; }
        if (std::fabs(static_cast<double>(red[j]) - d[j]) > dtol) { ++bad; ADD_FAILURE() << what << ": reduced cost " << j << " is " << d[j] << ", c - A^T y gives " << static_cast<double>(red[j]); }
        double ds = sense * d[j];
        if (x[j] > lo + ptol && ds > dtol) { ++bad; ADD_FAILURE() << what << ": column " << j << " above its lower bound with reduced cost " << d[j]; }
        if (x[j] < up - ptol && ds < -dtol) { ++bad; ADD_FAILURE() << what << ": column " << j << " below its upper bound with reduced cost " << d[j]; }
    }
    for (int i = 0; i < nr && bad < 5; ++i) {
        double lo, up, a = static_cast<double>(act[i]), ptol = tol * (1 + std::fabs(a));
        row_bounds(p, i, lo, up);
        if (a < lo - ptol || a > up + ptol) { ++bad; ADD_FAILURE() << what << ": row " << i << " activity " << a << " outside [" << lo << ", " << up << "]"; }
        double ys = sense * y[i];
        if (a > lo + ptol && ys > dtol) { ++bad; ADD_FAILURE() << what << ": row " << i << " above its lower bound with dual " << y[i]; }
        if (a < up - ptol && ys < -dtol) { ++bad; ADD_FAILURE() << what << ": row " << i << " below its upper bound with dual " << y[i]; }
    }
}

}  // namespace qnum::test
