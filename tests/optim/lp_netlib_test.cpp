// Linear programming on real problem files: every Netlib LP and the LP relaxation of every
// MIPLIB file of the shared test data, against the optimal objectives in its table.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "lp_test_util.hpp"
#include "qnum_test.hpp"

namespace qnum::test {
namespace {

// The LP and MIP rows of the table with their optimal LP objective, without the constant that
// the table's own reading of a right-hand side on the objective row adds (glpk_obj_const).
struct Case {
    std::string file;
    double objective;
};

std::vector<Case> file_cases() {
    std::vector<Case> out;
    for (auto& e : expected_table())
        if ((e["kind"] == "LP" || e["kind"] == "MIP") && e["glpk_lp_status"] == "OPTIMAL")
            out.push_back({e["file"], std::atof(e["glpk_lp_obj"].c_str()) - std::atof(e["glpk_obj_const"].c_str())});
    if (out.empty()) out.push_back({"", 0});  // the shared files are absent
    return out;
}

const std::map<std::string, int> kIterations = {
    {"afiro.mps", 14},    {"sc50a.mps", 51},     {"adlittle.mps", 74}, {"blend.mps", 99},
    {"share2b.mps", 122}, {"kb2.mps", 42},       {"boeing2.mps", 246}, {"stocfor1.mps", 111},
    {"e226.mps", 274},    {"vtpbase.mps", 119},  {"pilot4.mps", 764},  {"p0033.mps", 15},
    {"flugpl.mps", 12},   {"egout.mps", 57},     {"pp08a.mps", 142},   {"gesa3_o.mps", 519},
    {"dsbmip.mps", 1985}};

class LpFiles : public ::testing::TestWithParam<Case> {
protected:
    QuietErrors quiet;
};

TEST_P(LpFiles, OptimalWithCertificate) {
    const Case& c = GetParam();
    if (c.file.empty()) GTEST_SKIP() << "the shared problem files are absent";
    Qnum_d_mps* p = qnum_d_read_mps((mps_dir() + c.file).c_str(), 0);
    ASSERT_NE(p, nullptr) << c.file;
    std::vector<double> y(p->nrows + 1), d(p->ncolumns + 1), act(p->nrows + 1);
    std::vector<int> rs(p->nrows + 1), cs(p->ncolumns + 1);
    double obj = 0;
    int iters = -1;
    double* x = qnum_d_linear_programming(p, QNUM_LP_OBJ_VALUE, &obj, QNUM_LP_DUALS, y.data(),
                                          QNUM_LP_REDUCED_COSTS, d.data(), QNUM_LP_ROW_ACTIVITY,
                                          act.data(), QNUM_LP_BASIS, rs.data(), cs.data(),
                                          QNUM_LP_ITERATIONS, &iters, 0);
    ASSERT_NE(x, nullptr) << c.file << ": error " << last_code();
    EXPECT_EQ(last_type(), 0) << c.file;
    // The path is deterministic: pricing, ratio test, scaling, presolve and the timing of
    // refactorizations all show in the count even where the optimum does not move.
    EXPECT_EQ(iters, kIterations.count(c.file) ? kIterations.at(c.file) : iters) << c.file;
    EXPECT_NEAR(obj - p->objective_constant, c.objective, 1e-9 * std::fabs(c.objective)) << c.file;
    expect_optimal(p, x, y.data(), d.data(), 1.0, 1e-9, c.file);
    // One basic variable per row (the free N rows are reported basic).
    EXPECT_EQ(std::count(rs.begin(), rs.begin() + p->nrows, QNUM_LP_BASIC) +
                  std::count(cs.begin(), cs.begin() + p->ncolumns, QNUM_LP_BASIC), p->nrows) << c.file;
    // A warm start from the optimal basis is optimal at once.
    int again = -1;
    double obj2 = 0;
    const std::vector<int> rs0 = rs, cs0 = cs;
    double* x2 = qnum_d_linear_programming(p, QNUM_LP_WARM_START, rs0.data(), cs0.data(), QNUM_LP_BASIS, rs.data(),
                                           cs.data(), QNUM_LP_ITERATIONS, &again, QNUM_LP_OBJ_VALUE, &obj2, 0);
    ASSERT_NE(x2, nullptr) << c.file;
    EXPECT_EQ(again, 0) << c.file;
    EXPECT_TRUE(rs == rs0 && cs == cs0) << c.file << ": the basis given back is not the one given";
    EXPECT_NEAR(obj2 - p->objective_constant, c.objective, 1e-9 * std::fabs(c.objective)) << c.file;
    qnum_free_allocated_memory(x2);
    // Stopped half way, the point is the last basis's: every nonbasic row and column sits on
    // the bound its status names.
    if (iters >= 2) {
        double* x3 = qnum_d_linear_programming(p, QNUM_LP_MAX_ITERATIONS, iters / 2, QNUM_LP_ROW_ACTIVITY,
                                               act.data(), QNUM_LP_BASIS, rs.data(), cs.data(), 0);
        ASSERT_NE(x3, nullptr) << c.file;
        EXPECT_EQ(last_code(), 8132) << c.file;
        auto expect_on_bound = [&](int status, double v, double lo, double up, const char* what, int k) {
            double want = status == QNUM_LP_AT_UPPER ? up : lo;
            if (status == QNUM_LP_AT_LOWER || status == QNUM_LP_AT_UPPER || status == QNUM_LP_FIXED) {
                EXPECT_NEAR(v, want, 1e-7 * (1 + std::fabs(want))) << c.file << " " << what << " " << k;
            }
        };
        for (int i = 0; i < p->nrows; ++i) {
            double lo, up;
            row_bounds(p, i, lo, up);
            if (p->row_type[i] != 'N') expect_on_bound(rs[i], act[i], lo, up, "row", i);
        }
        for (int j = 0; j < p->ncolumns; ++j)
            expect_on_bound(cs[j], x3[j], col_lower(p, j), col_upper(p, j), "column", j);
        qnum_free_allocated_memory(x3);
    }
    qnum_free_allocated_memory(x);
    qnum_d_mps_free(p);
}

INSTANTIATE_TEST_SUITE_P(SharedData, LpFiles, ::testing::ValuesIn(file_cases()),
                         [](const ::testing::TestParamInfo<Case>& info) {
                             std::string s = info.param.file.empty() ? "absent" : info.param.file;
                             for (char& ch : s) if (!std::isalnum(static_cast<unsigned char>(ch))) ch = '_';
                             return s;
                         });

}  // namespace
}  // namespace qnum::test
