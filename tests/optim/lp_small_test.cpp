// Linear programming on small problems with known answers, the options and every error.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "lp_test_util.hpp"
#include "qnum_test.hpp"

namespace qnum::test {
namespace {

constexpr double kInf = 1e30;

class Lp : public ::testing::Test {
protected:
    QuietErrors quiet;
};

// Beale's example, on which the textbook simplex cycles: optimum -1/20 at x = (1/25, 0, 1, 0)
// (row 2 is tight there: 1/50 - 1/50 = 0).
void beale(LpRecord& r) {
    int x4 = r.add_column(-0.75, 0, kInf), x5 = r.add_column(150, 0, kInf);
    int x6 = r.add_column(-0.02, 0, kInf), x7 = r.add_column(6, 0, kInf);
    r.add_row('L', 0, {{x4, 0.25}, {x5, -60}, {x6, -0.04}, {x7, 9}});
    r.add_row('L', 0, {{x4, 0.5}, {x5, -90}, {x6, -0.02}, {x7, 3}});
    r.add_row('L', 1, {{x6, 1}});
}

struct Known {
    const char* name;
    void (*make)(LpRecord&);
    bool maximize;
    double objective;
    std::vector<double> x;  // empty: not unique
    int iterations;         // of the deterministic path
};

// Problems with answers worked out by hand (each comment gives the reasoning).
const Known kKnown[] = {
    {"beale", beale, false, -0.05, {0.04, 0, 1, 0}, 1},
    // Free x1 >= x2 - 3 with x2 in [0, 2]: min x1 = -3 at x2 = 0.
    {"free_variable", [](LpRecord& r) {
         int a = r.add_column(1, -kInf, kInf), b = r.add_column(0, 0, 2);
         r.add_row('G', -3, {{a, 1}, {b, -1}});
     }, false, -3, {-3, 0}, 0},
    // x1 + x2 + x3 = 6, x1 = x2 = x3: the only point is (2, 2, 2), cost 1 + 2 + 3 per unit.
    {"equality_only", [](LpRecord& r) {
         int a = r.add_column(1, 0, kInf), b = r.add_column(2, 0, kInf), c = r.add_column(3, 0, kInf);
         r.add_row('E', 6, {{a, 1}, {b, 1}, {c, 1}});
         r.add_row('E', 0, {{a, 1}, {b, -1}});
         r.add_row('E', 0, {{b, 1}, {c, -1}});
     }, false, 12, {2, 2, 2}, 3},
    // max 3x + 2y, x + y <= 4, x + 3y <= 6, x <= 3: the vertex (3, 1) gives 11.
    {"maximize", [](LpRecord& r) {
         int x = r.add_column(3, 0, 3), y = r.add_column(2, 0, kInf);
         r.add_row('L', 4, {{x, 1}, {y, 1}});
         r.add_row('L', 6, {{x, 1}, {y, 3}});
     }, true, 11, {3, 1}, 1},
    // Ranges: x in [3, 5] by an E row with range 2, y in [1, 4] by a G row with range 3,
    // z in [-2, 0] by an L row with range 2 and an E row with range -1 ties x + z to [2, 3]:
    // min -x + y + z: z = -2 forces x <= 5, so x = 5 needs x + z = 3 <= 3: -5 + 1 - 2 = -6.
    {"ranges", [](LpRecord& r) {
         int x = r.add_column(-1, -kInf, kInf), y = r.add_column(1, -kInf, kInf),
             z = r.add_column(1, -kInf, kInf);
         r.add_row('E', 3, {{x, 1}}, 2);
         r.add_row('G', 1, {{y, 1}}, 3);
         r.add_row('L', 0, {{z, 1}}, -2);
         r.add_row('E', 3, {{x, 1}, {z, 1}}, -1);
     }, false, -6, {5, 1, -2}, 0},
    // An N row with coefficients is free; coefficients named twice are summed (x + x <= 4).
    {"free_row_and_repeats", [](LpRecord& r) {
         int x = r.add_column(-1, 0, kInf), y = r.add_column(-1, 0, 1);
         r.add_row('N', 0, {{x, 100}, {y, -100}});
         r.add_row('L', 4, {{x, 1}, {x, 1}, {y, 1}});
     }, false, -2.5, {1.5, 1}, 1},
    // No rows: every column on the bound its cost asks for; the constant is added.
    {"columns_only", [](LpRecord& r) {
         r.add_column(2, -1, 4);
         r.add_column(-3, -1, 4);
         r.add_column(0, 0, 0);
         r.constant = 10;
     }, false, 10 - 2 - 12, {-1, 4, 0}, 0},
    // A degenerate vertex shared by three rows in two dimensions, and a fixed column.
    {"degenerate", [](LpRecord& r) {
         int x = r.add_column(-1, 0, kInf), y = r.add_column(-1, 0, kInf), f = r.add_column(5, 2, 2);
         r.add_row('L', 2, {{x, 1}, {y, 1}});
         r.add_row('L', 1, {{x, 1}});
         r.add_row('L', 3, {{x, 2}, {y, 1}});
         r.add_row('G', 1, {{f, 1}, {x, -1}});
     }, false, -2 + 10, {}, 1},
    // Nothing at all: the constant.
    {"empty", [](LpRecord& r) { r.constant = 2.5; }, false, 2.5, {}, 0},
    // A free column in one row and no cost takes no part: it rests at zero, the row is basic.
    {"free_singleton_without_cost", [](LpRecord& r) {
         int x = r.add_column(0, -kInf, kInf), y = r.add_column(-1, 0, 1);
         r.add_row('L', 4, {{x, 1}, {y, 1}});
     }, false, -1, {0, 1}, 0},
    // A free column enters the starting basis on its own largest entry, whatever its
    // neighbour's entries: that basis (x = 5 - 50 y, y = 0) is optimal at once.
    {"free_column_starts_basic", [](LpRecord& r) {
         int x = r.add_column(1, -kInf, kInf), y = r.add_column(200, 0, kInf), z = r.add_column(1, 0, kInf);
         r.add_row('E', 10, {{x, 2}, {y, 100}});
         r.add_row('L', 10, {{x, 1}, {z, -1}});
     }, false, 5, {5, 0, 0}, 1},
};

TEST_F(Lp, KnownAnswersBothPrecisions) {
    for (const Known& k : kKnown) {
        LpRecord r;
        k.make(r);
        const Qnum_d_mps* p = r.record();
        std::vector<double> y(p->nrows + 1), d(p->ncolumns + 1);
        double obj = 0;
        int it = -1;
        double* x = k.maximize ? qnum_d_linear_programming(p, QNUM_LP_MAXIMIZE, QNUM_LP_OBJ_VALUE, &obj,
                                                           QNUM_LP_DUALS, y.data(), QNUM_LP_REDUCED_COSTS,
                                                           d.data(), QNUM_LP_ITERATIONS, &it, 0)
                               : qnum_d_linear_programming(p, QNUM_LP_OBJ_VALUE, &obj, QNUM_LP_DUALS, y.data(),
                                                           QNUM_LP_REDUCED_COSTS, d.data(), QNUM_LP_ITERATIONS, &it, 0);
        EXPECT_EQ(it, k.iterations) << k.name;
        ASSERT_NE(x, nullptr) << k.name << ": error " << last_code();
        EXPECT_EQ(last_type(), 0) << k.name;
        EXPECT_NEAR(obj, k.objective, 1e-12 * (1 + std::fabs(k.objective))) << k.name;
        for (std::size_t j = 0; j < k.x.size(); ++j) EXPECT_NEAR(x[j], k.x[j], 1e-12) << k.name << " x" << j;
        expect_optimal(p, x, y.data(), d.data(), k.maximize ? -1.0 : 1.0, 1e-12, k.name);
        qnum_free_allocated_memory(x);

        float fobj = 0;
        std::vector<float> fx(p->ncolumns + 1);
        float* got = k.maximize ? qnum_f_linear_programming(p, QNUM_LP_MAXIMIZE, QNUM_LP_OBJ_VALUE, &fobj,
                                                            QNUM_RETURN_USER, fx.data(), 0)
                                : qnum_f_linear_programming(p, QNUM_LP_OBJ_VALUE, &fobj, QNUM_RETURN_USER,
                                                            fx.data(), 0);
        EXPECT_EQ(got, fx.data()) << k.name;
        EXPECT_FLOAT_EQ(fobj, static_cast<float>(k.objective)) << k.name;
        for (std::size_t j = 0; j < k.x.size(); ++j) EXPECT_FLOAT_EQ(fx[j], static_cast<float>(k.x[j])) << k.name;
    }
}

// Activities, duals, reduced costs and statuses of min -x - 2y + z over x + y <= 4, y <= 5 (a
// G row on -y) and a free N row: y = 4 at row 1's upper bound with dual -2, the rest at zero.
TEST_F(Lp, RowActivitiesAndStatuses) {
    LpRecord r;
    int x = r.add_column(-1, 0, 10), y = r.add_column(-2, 0, kInf), z = r.add_column(1, 0, kInf);
    r.add_row('L', 4, {{x, 1}, {y, 1}});
    r.add_row('N', 0, {{x, 1}, {z, 7}});
    r.add_row('G', -5, {{y, -1}});
    std::vector<double> act(3), dual(3), red(3);
    std::vector<int> rs(3, -1), cs(3, -1);
    double* sol = qnum_d_linear_programming(r.record(), QNUM_LP_ROW_ACTIVITY, act.data(), QNUM_LP_DUALS, dual.data(),
                                            QNUM_LP_REDUCED_COSTS, red.data(), QNUM_LP_BASIS, rs.data(), cs.data(), 0);
    ASSERT_NE(sol, nullptr);
    EXPECT_EQ(std::vector<double>(sol, sol + 3), (std::vector<double>{0, 4, 0}));
    EXPECT_EQ(act, (std::vector<double>{4, 0, -4}));
    EXPECT_EQ(dual, (std::vector<double>{-2, 0, 0}));
    EXPECT_EQ(red, (std::vector<double>{1, 0, 1}));
    EXPECT_EQ(rs, (std::vector<int>{QNUM_LP_AT_UPPER, QNUM_LP_BASIC, QNUM_LP_BASIC}));
    EXPECT_EQ(cs, (std::vector<int>{QNUM_LP_AT_LOWER, QNUM_LP_BASIC, QNUM_LP_AT_LOWER}));
    qnum_free_allocated_memory(sol);
}

// Warm starts (from an optimal basis on every shared file): from a basis that is not optimal the
// same answer, a fixed or free status counting as nonbasic; a moved nonbasic; an infeasible one.
TEST_F(Lp, WarmStart) {
    LpRecord r;
    beale(r);
    const Qnum_d_mps* p = r.record();
    int it = -1;
    double obj = 0;
    const int slack_rows[3] = {QNUM_LP_BASIC, QNUM_LP_BASIC, QNUM_LP_BASIC};
    const int lower_cols[4] = {QNUM_LP_AT_LOWER, QNUM_LP_FIXED, QNUM_LP_AT_LOWER, QNUM_LP_FREE};
    double* x = qnum_d_linear_programming(p, QNUM_LP_WARM_START, slack_rows, lower_cols, QNUM_LP_OBJ_VALUE, &obj,
                                          QNUM_LP_ITERATIONS, &it, 0);
    ASSERT_NE(x, nullptr);
    EXPECT_NEAR(obj, -0.05, 1e-15);
    EXPECT_EQ(it, 2);
    qnum_free_allocated_memory(x);
    // min x + y over x + 2y >= 2 in the box [0, 5]^2: the optimal basis (y basic) given with x
    // named at its upper bound, where its reduced cost 1/2 says lower: moved back, no pivot.
    LpRecord box;
    int bx = box.add_column(1, 0, 5), by = box.add_column(1, 0, 5);
    box.add_row('G', 2, {{bx, 1}, {by, 2}});
    const int row_at_lower[1] = {QNUM_LP_AT_LOWER}, x_at_upper[2] = {QNUM_LP_AT_UPPER, QNUM_LP_BASIC};
    x = qnum_d_linear_programming(box.record(), QNUM_LP_WARM_START, row_at_lower, x_at_upper,
                                  QNUM_LP_ITERATIONS, &it, QNUM_LP_OBJ_VALUE, &obj, 0);
    ASSERT_NE(x, nullptr);
    EXPECT_EQ(it, 0);
    EXPECT_DOUBLE_EQ(obj, 1);
    qnum_free_allocated_memory(x);
    // x = 3 with x in [0, 1], from the basis where x is basic: infeasible by 3 - 1 = 2.
    LpRecord over;
    over.add_row('E', 3, {{over.add_column(1, 0, 1), 1}});
    const int row_fixed[1] = {QNUM_LP_FIXED}, x_basic[1] = {QNUM_LP_BASIC};
    EXPECT_EQ(qnum_d_linear_programming(over.record(), QNUM_LP_WARM_START, row_fixed, x_basic, 0), nullptr);
    EXPECT_EQ(last_code(), 8130);
    EXPECT_DOUBLE_EQ(real_slot(1), 2);
}

// A transportation problem with every coefficient 1 (scaling leaves it as it is) and a fixed
// column for presolve to take out: the progress function sees every hundredth basis and the last,
// and the objective and infeasibility sum it reports are those of the point a stop there returns.
TEST_F(Lp, ProgressReportsTheCurrentBasis) {
    const int n = 100;
    LpRecord r;
    for (int i = 0; i < n * n; ++i) r.add_column((i * 7 + i / n * 13) % 29 + 1, 0, kInf);
    const int fixed = r.add_column(3, 2, 2);  // taken out by presolve: it and the constant count
    r.constant = 10;
    for (int k = 0; k < 2 * n; ++k) {
        std::vector<std::pair<int, double>> c(k == 0, {fixed, 1.0});
        for (int t = 0; t < n; ++t) c.push_back({k < n ? k * n + t : t * n + k - n, 1.0});
        r.add_row(k < n ? 'L' : 'G', k < n ? 10 + k % 5 : 8 + k % 3, c);
    }
    const Qnum_d_mps* p = r.record();
    struct Call { int iteration; double obj, pinf, dinf; };
    std::vector<Call> calls;
    qnum_lp_progress fn = [](int it, double obj, double pinf, double dinf, void* data) {
        static_cast<std::vector<Call>*>(data)->push_back({it, obj, pinf, dinf});
    };
    int iters = 0;
    double obj = 0;
    double* x = qnum_d_linear_programming(p, QNUM_LP_PROGRESS, fn, &calls, QNUM_LP_ITERATIONS, &iters,
                                          QNUM_LP_OBJ_VALUE, &obj, 0);
    ASSERT_NE(x, nullptr);
    qnum_free_allocated_memory(x);
    ASSERT_EQ(iters, 159);  // the path is deterministic
    ASSERT_EQ(calls.size(), static_cast<std::size_t>(iters / 100 + 1));
    for (std::size_t k = 0; k + 1 < calls.size(); ++k) EXPECT_EQ(calls[k].iteration, 100 * static_cast<int>(k + 1));
    EXPECT_EQ(calls.back().iteration, iters);
    EXPECT_NEAR(calls.back().obj, obj, 1e-12 * std::fabs(obj));
    EXPECT_LT(calls.back().pinf, 1e-9);
    EXPECT_LT(calls.back().dinf, 1e-9);
    std::vector<double> act(2 * n);
    x = qnum_d_linear_programming(p, QNUM_LP_MAX_ITERATIONS, 100, QNUM_LP_OBJ_VALUE, &obj,
                                  QNUM_LP_ROW_ACTIVITY, act.data(), QNUM_LP_ITERATIONS, &iters, 0);
    ASSERT_NE(x, nullptr);
    EXPECT_EQ(last_type(), 3);  // a WARNING naming the limit
    EXPECT_EQ(last_code(), 8132);
    EXPECT_EQ(int_slot(1), 100);
    EXPECT_EQ(iters, 100);
    double pinf = 0;
    for (int j = 0; j < n * n; ++j) pinf += std::fmax(0.0, -x[j]);
    for (int k = 0; k < 2 * n; ++k) pinf += std::fmax(0.0, k < n ? act[k] - r.rhs[k] : r.rhs[k] - act[k]);
    qnum_free_allocated_memory(x);
    EXPECT_NEAR(calls[0].obj, obj, 1e-9 * std::fabs(obj));
    EXPECT_NEAR(calls[0].pinf, pinf, 1e-9 * pinf);
    EXPECT_GT(pinf, 1);
}

struct Failure {
    const char* name;
    void (*make)(LpRecord&);
    int code;
    double infeasibility;  // 8130: the sum reported; 8131: unused
    const char* column;    // 8131: the column named (either of two on a ray of both)
};

const Failure kFailures[] = {
    // x + y <= 1 and x + y >= 3 can't both hold; the last basis misses by 2.
    {"crossing_rows", [](LpRecord& r) {
         int a = r.add_column(1, 0, kInf), b = r.add_column(1, 0, kInf);
         r.add_row('L', 1, {{a, 1}, {b, 1}});
         r.add_row('G', 3, {{a, 1}, {b, 1}});
     }, 8130, 2, nullptr},
    // Bounds that cross.
    {"crossing_bounds", [](LpRecord& r) { r.add_column(1, 2, 1.5); }, 8130, 0.5, nullptr},
    // A row with no coefficients that must equal 1.
    {"empty_row", [](LpRecord& r) { r.add_column(1, 0, 1); r.add_row('E', 1, {}); }, 8130, 1, nullptr},
    // A singleton row asking x >= 4 of x in [0, 3].
    {"singleton_row", [](LpRecord& r) {
         int a = r.add_column(1, 0, 3), b = r.add_column(1, 0, 3);
         r.add_row('G', 8, {{a, 2}});
         r.add_row('L', 5, {{a, 1}, {b, 1}});
     }, 8130, 2, nullptr},
    // min -x over x - y <= 1, x, y >= 0: x = 1 + y runs off along y's ray.
    {"unbounded_ray", [](LpRecord& r) {
         int a = r.add_column(-1, 0, kInf), b = r.add_column(0, 0, kInf);
         r.add_row('L', 1, {{a, 1}, {b, -1}});
         r.add_row('L', 10, {{a, 1}, {b, -1}});
     }, 8131, 0, "x1|x2"},
    // A column in no row with a negative cost and no upper bound.
    {"unbounded_empty_column", [](LpRecord& r) {
         int a = r.add_column(1, 0, 4);
         r.add_column(-1, 0, kInf);
         r.add_row('L', 3, {{a, 1}});
     }, 8131, 0, "x2"},
    // Free x with x + y <= 5 and x - y <= 3, y in [0, 1]: min x runs off as the rows' activities
    // fall without limit; the ray is named by a row.
    {"unbounded_by_rows", [](LpRecord& r) {
         int a = r.add_column(1, -kInf, kInf), b = r.add_column(0, 0, 1);
         r.add_row('L', 5, {{a, 1}, {b, 1}});
         r.add_row('L', 3, {{a, 1}, {b, -1}});
     }, 8131, 0, "r1|r2"},
};

TEST_F(Lp, InfeasibleAndUnbounded) {
    for (const Failure& f : kFailures) {
        LpRecord r;
        f.make(r);
        int it = -1;
        EXPECT_EQ(qnum_d_linear_programming(r.record(), QNUM_LP_ITERATIONS, &it, 0), nullptr) << f.name;
        EXPECT_EQ(last_type(), 4) << f.name;
        EXPECT_EQ(last_code(), f.code) << f.name;
        if (f.code == 8130) {
            EXPECT_NEAR(real_slot(1), f.infeasibility, 1e-12) << f.name;
        }
        if (f.column) {
            // The name and its index (of a column or of a row) agree.
            const std::string name = string_slot(1);
            EXPECT_NE((std::string("|") + f.column + "|").find("|" + name + "|"), std::string::npos) << f.name << " " << name;
            EXPECT_EQ(int_slot(1), std::atoi(name.c_str() + 1) - 1) << f.name;
        }
        EXPECT_EQ(qnum_f_linear_programming(r.record(), 0), nullptr) << f.name;
        EXPECT_EQ(last_code(), f.code) << f.name;
    }
}

// Bad arguments: each call with its TERMINAL code (or 132 / 150 / 103 of the frame).
TEST_F(Lp, ArgumentErrors) {
    int dummy[4] = {1, 1, 1, 1};
    double dv = 0;
    double nanv = std::nan("");
    struct Case {
        const char* name;
        std::function<double*(LpRecord&)> call;
        int code;
    };
    using R = LpRecord&;
    const Case cases[] = {
        {"null problem", [](R) { return qnum_d_linear_programming(nullptr, 0); }, 150},
        {"unknown option", [](R r) { return qnum_d_linear_programming(r.record(), 12345, 0); }, 103},
        {"null objective pointer", [](R r) { return qnum_d_linear_programming(r.record(), QNUM_LP_OBJ_VALUE, nullptr, 0); }, 104},
        {"null column status", [&](R r) { return qnum_d_linear_programming(r.record(), QNUM_LP_BASIS, dummy, nullptr, 0); }, 105},
        {"null return array", [](R r) { return qnum_d_linear_programming(r.record(), QNUM_RETURN_USER, nullptr, 0); }, 104},
        {"zero tolerance", [](R r) { return qnum_d_linear_programming(r.record(), QNUM_LP_FEASIBILITY_TOL, 0.0, 0); }, 8137},
        {"tolerance of 1", [](R r) { return qnum_d_linear_programming(r.record(), QNUM_LP_OPTIMALITY_TOL, 1.0, 0); }, 8137},
        {"negative iteration limit", [](R r) { return qnum_d_linear_programming(r.record(), QNUM_LP_MAX_ITERATIONS, -1, 0); }, 132},
        {"negative row count", [](R r) { r.record(); r.rec.nrows = -1; return qnum_d_linear_programming(&r.rec, 0); }, 132},
        {"null matrix", [](R r) { r.record(); r.rec.matrix_value = nullptr; return qnum_d_linear_programming(&r.rec, 0); }, 150},
        {"null objective", [](R r) { r.record(); r.rec.objective = nullptr; return qnum_d_linear_programming(&r.rec, 0); }, 150},
        {"null row types", [](R r) { r.record(); r.rec.row_type = nullptr; return qnum_d_linear_programming(&r.rec, 0); }, 150},
        {"row index", [](R r) { r.irow[1] = 2; return qnum_d_linear_programming(r.record(), 0); }, 8134},
        {"negative column index", [](R r) { r.jcol[0] = -1; return qnum_d_linear_programming(r.record(), 0); }, 8134},
        {"row type", [](R r) { r.row_type[1] = 'X'; return qnum_d_linear_programming(r.record(), 0); }, 8135},
        {"NaN coefficient", [&](R r) { r.value[0] = nanv; return qnum_d_linear_programming(r.record(), 0); }, 8136},
        {"NaN bound", [&](R r) { r.upper[1] = nanv; return qnum_d_linear_programming(r.record(), 0); }, 8136},
        {"NaN range", [&](R r) { r.ranges[0] = nanv; return qnum_d_linear_programming(r.record(), 0); }, 8136},
        {"bad status", [&](R r) {
             int rs[2] = {1, 6}, cs[2] = {2, 2};
             return qnum_d_linear_programming(r.record(), QNUM_LP_WARM_START, rs, cs, 0);
         }, 8138},
        {"basis size", [&](R r) {
             int rs[2] = {1, 1}, cs[2] = {1, 2};
             return qnum_d_linear_programming(r.record(), QNUM_LP_WARM_START, rs, cs, QNUM_LP_OBJ_VALUE, &dv, 0);
         }, 8139},
    };
    for (const Case& c : cases) {
        LpRecord r;
        int a = r.add_column(1, 0, 1), b = r.add_column(1, 0, 1);
        r.add_row('G', 1, {{a, 1}, {b, 1}});
        r.add_row('L', 2, {{a, 1}, {b, 2}});
        EXPECT_EQ(c.call(r), nullptr) << c.name;
        EXPECT_EQ(last_type(), 5) << c.name;
        EXPECT_EQ(last_code(), c.code) << c.name;
    }
}

}  // namespace
}  // namespace qnum::test
