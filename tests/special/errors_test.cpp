// Error paths of the special functions: type, code, substitutions and the value returned.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "qnum_test.hpp"
#include "qnummath.h"

namespace qnum::test {
namespace {

constexpr double nan_ = std::numeric_limits<double>::quiet_NaN();
enum Result { IsNan, IsZero, Finite };

struct ErrorCase {
    const char* what;
    std::function<double()> call;
    int type, code;
    Result result;
    std::vector<double> reals;  // expected real slots 1.. (NaN: not checked)
};

double f(float v) { return v; }

const std::vector<ErrorCase>& error_cases() {
    static const float erfcs_f[3] = {1.0f, 0.5f, 0.25f};
    static const double erfcs_d[3] = {1.0, 0.5, 0.25};
    static const std::vector<ErrorCase> cases = {
        {"csevl n = 0", [] { return f(qnum_csevl(0.5f, erfcs_f, 0)); }, 5, 9001, IsNan, {}},
        {"dcsevl n = 1001", [] { return qnum_dcsevl(0.5, erfcs_d, 1001); }, 5, 9002, IsNan, {}},
        {"csevl x = 1.2", [] { return f(qnum_csevl(1.2f, erfcs_f, 3)); }, 3, 9003, Finite, {f(1.2f)}},
        {"dcsevl x = -1.2", [] { return qnum_dcsevl(-1.2, erfcs_d, 3); }, 3, 9003, Finite, {-1.2}},
        {"dcsevl x = 1.1 is still inside", [] { return qnum_dcsevl(1.1, erfcs_d, 3); }, 0, 0, Finite, {}},
        {"csevl x = -1.1 is still inside", [] { return f(qnum_csevl(-1.1f, erfcs_f, 3)); }, 0, 0, Finite, {}},
        {"inits n = 0", [] { return double(qnum_inits(erfcs_f, 0, 1e-3f)); }, 5, 9004, IsZero, {}},
        {"initds last term too big", [] { return double(qnum_initds(erfcs_d, 3, 0.1)); }, 5, 9005, IsZero, {}},
        {"inits null table", [] { return double(qnum_inits(nullptr, 3, 0.1f)); }, 5, 150, IsZero, {}},
        {"csevl null table", [] { return f(qnum_csevl(0.5f, nullptr, 3)); }, 5, 150, IsNan, {}},
        {"dcsevl null table", [] { return qnum_dcsevl(0.5, nullptr, 3); }, 5, 150, IsNan, {}},
        {"r9lgmc x < 10", [] { return f(qnum_r9lgmc(5.0f)); }, 4, 60002, IsNan, {5.0, 10.0}},
        {"d9lgmc x < 10", [] { return qnum_d9lgmc(9.5); }, 4, 60002, IsNan, {9.5, 10.0}},
        {"r9lgmc underflow", [] { return f(qnum_r9lgmc(1e37f)); }, 2, 9015, IsZero, {f(1e37f), nan_}},
        {"erfc float underflow", [] { return f(qnum_f_erfc(10.1f)); }, 2, 9015, IsZero, {f(10.1f), nan_}},
        {"erfc double underflow", [] { return qnum_d_erfc(27.0); }, 2, 9015, IsZero, {27.0, nan_}},
        {"gamma(0)", [] { return f(qnum_f_gamma(0.0f)); }, 5, 9024, IsNan, {}},
        {"gamma(0) double", [] { return qnum_d_gamma(0.0); }, 5, 9024, IsNan, {}},
        {"gamma next to 0", [] { return f(qnum_f_gamma(1e-45f)); }, 4, 9011, IsNan, {f(1e-45f)}},
        {"gamma next to 0 double", [] { return qnum_d_gamma(1e-310); }, 4, 9011, IsNan, {1e-310}},
        {"gamma(-3)", [] { return f(qnum_f_gamma(-3.0f)); }, 5, 9006, IsNan, {-3.0}},
        {"gamma(-10) double", [] { return qnum_d_gamma(-10.0); }, 5, 9006, IsNan, {-10.0}},
        {"gamma(-3.0000002)", [] { return f(qnum_f_gamma(-3.0000002f)); }, 3, 9020, Finite, {f(-3.0000002f)}},
        {"gamma(-20)", [] { return f(qnum_f_gamma(-20.0f)); }, 4, 9021, IsNan, {-20.0}},
        {"gamma(-20) double", [] { return qnum_d_gamma(-20.0); }, 4, 9021, IsNan, {-20.0}},
        {"gamma(-20.000002)", [] { return f(qnum_f_gamma(-20.000002f)); }, 3, 9020, Finite, {f(-20.000002f)}},
        {"gamma overflow", [] { return f(qnum_f_gamma(36.0f)); }, 4, 9009, IsNan, {36.0, nan_}},
        {"gamma overflow double", [] { return qnum_d_gamma(172.0); }, 4, 9009, IsNan, {172.0, nan_}},
        {"gamma underflow", [] { return f(qnum_f_gamma(-40.5f)); }, 2, 9014, IsZero, {-40.5, nan_}},
        {"gamma underflow double", [] { return qnum_d_gamma(-180.5); }, 2, 9014, IsZero, {-180.5, nan_}},
        {"log_gamma(-20)", [] { return f(qnum_f_log_gamma(-20.0f)); }, 4, 9006, IsNan, {-20.0}},
        {"log_gamma(-5) through gamma", [] { return qnum_d_log_gamma(-5.0); }, 5, 9006, IsNan, {-5.0}},
        {"log_gamma(0)", [] { return f(qnum_f_log_gamma(0.0f)); }, 5, 9024, IsNan, {}},
        {"log_gamma overflow", [] { return f(qnum_f_log_gamma(1e37f)); }, 4, 9013, IsNan, {f(1e37f), nan_}},
        {"log_gamma overflow double", [] { return qnum_d_log_gamma(-1e306); }, 4, 9013, IsNan, {-1e306, nan_}},
        {"log_gamma near -20", [] { return f(qnum_f_log_gamma(-20.000002f)); }, 3, 9020, Finite, {f(-20.000002f)}},
        {"beta(0, 1)", [] { return f(qnum_f_beta(0.0f, 1.0f)); }, 5, 9031, IsNan, {0.0, 1.0}},
        {"beta(2, -1) double", [] { return qnum_d_beta(2.0, -1.0); }, 5, 9031, IsNan, {2.0, -1.0}},
        {"beta underflow", [] { return f(qnum_f_beta(100.0f, 100.0f)); }, 2, 9018, IsZero, {100.0, 100.0}},
        {"beta underflow double", [] { return qnum_d_beta(600.0, 700.0); }, 2, 9018, IsZero, {600.0, 700.0}},
        // An underflowing correction term is cleared only when it is a NOTE; the ALERT stays.
        {"log_beta correction underflows", [] { return f(qnum_f_log_beta(1.0f, 1e37f)); }, 2, 9015, Finite,
         {f(1e37f), nan_}},
        {"log_beta(0, 1)", [] { return f(qnum_f_log_beta(0.0f, 1.0f)); }, 5, 9038, IsNan, {}},
        {"log_beta(1, -2) double", [] { return qnum_d_log_beta(1.0, -2.0); }, 5, 9038, IsNan, {}},
        {"erf_inverse(1)", [] { return f(qnum_f_erf_inverse(1.0f)); }, 4, 120, IsNan, {-1.0, 1.0, 1.0}},
        {"erf_inverse(-1.5) double", [] { return qnum_d_erf_inverse(-1.5); }, 4, 120, IsNan, {-1.0, 1.0, -1.5}},
        {"erf_inverse(NaN)", [] { return qnum_d_erf_inverse(nan_); }, 4, 120, IsNan, {-1.0, 1.0, nan_}},
        {"erf_inverse near 1", [] { return f(qnum_f_erf_inverse(0.99999994f)); }, 3, 9025, Finite,
         {f(0.99999994f), nan_}},
        {"erf_inverse near -1 double", [] { return qnum_d_erf_inverse(-1 + 0x1p-40); }, 3, 9025, Finite,
         {-1 + 0x1p-40, nan_}},
        {"erfc_inverse(0)", [] { return f(qnum_f_erfc_inverse(0.0f)); }, 4, 120, IsNan, {0.0, 2.0, 0.0}},
        {"erfc_inverse(2) double", [] { return qnum_d_erfc_inverse(2.0); }, 4, 120, IsNan, {0.0, 2.0, 2.0}},
        {"erfc_inverse near 2", [] { return f(qnum_f_erfc_inverse(1.9999999f)); }, 3, 9029, Finite,
         {f(1.9999999f), nan_}},
        {"erfc_inverse near 2 double", [] { return qnum_d_erfc_inverse(2 - 0x1p-40); }, 3, 9029, Finite,
         {2 - 0x1p-40, nan_}},
        {"gamma_incomplete a = 0", [] { return f(qnum_f_gamma_incomplete(0.0f, 1.0f)); }, 5, 9032, IsNan, {0.0}},
        {"gamma_incomplete x < 0", [] { return qnum_d_gamma_incomplete(1.0, -1.0); }, 5, 9033, IsNan, {-1.0}},
        {"gamma_incomplete both bad", [] { return qnum_d_gamma_incomplete(-2.0, -1.0); }, 5, 9033, IsNan, {-1.0}},
        {"gamma_incomplete overflow", [] { return f(qnum_f_gamma_incomplete(40.0f, 40.0f)); }, 4, 9034, IsNan,
         {40.0, 40.0}},
        {"gamma_incomplete overflow double", [] { return qnum_d_gamma_incomplete(200.0, 300.0); }, 4, 9034, IsNan,
         {200.0, 300.0}},
        {"beta_incomplete x > 1", [] { return f(qnum_f_beta_incomplete(1.5f, 1.0f, 1.0f)); }, 4, 120, IsNan,
         {0.0, 1.0, 1.5}},
        // Parameters so large that the fraction and the series need far more terms than allowed.
        {"beta_incomplete no convergence", [] { return qnum_d_beta_incomplete(0.5, 1e12, 1e12); }, 4, 9039, IsNan, {}},
        {"gamma_incomplete no convergence", [] { return qnum_d_gamma_incomplete(1e12, 1e12); }, 4, 9039, IsNan, {}},
        {"beta_incomplete b = 0", [] { return qnum_d_beta_incomplete(0.5, 1.0, 0.0); }, 5, 9031, IsNan, {1.0, 0.0}},
        {"erfe far below the axis", [] { return f(qnum_c_erfe({0.0f, -10.0f}).re); }, 4, 9035, IsNan, {}},
        {"erfe far below the axis double", [] { return qnum_z_erfe({1.0, -30.0}).im; }, 4, 9035, IsNan, {}},
    };
    return cases;
}

TEST(SpecialErrors, TypeCodeSlotsAndResult) {
    QuietErrors quiet;
    for (const ErrorCase& c : error_cases()) {
        const double r = c.call();
        EXPECT_EQ(last_type(), c.type) << c.what;
        EXPECT_EQ(last_code(), c.code) << c.what;
        switch (c.result) {
        case IsNan: EXPECT_TRUE(std::isnan(r)) << c.what << ": " << r; break;
        case IsZero: EXPECT_EQ(r, 0.0) << c.what; break;
        case Finite: EXPECT_TRUE(std::isfinite(r)) << c.what << ": " << r; break;
        }
        for (std::size_t k = 0; k < c.reals.size(); ++k) {
            if (std::isnan(c.reals[k]) && c.code != 120) continue;
            if (std::isnan(c.reals[k])) EXPECT_TRUE(std::isnan(real_slot(int(k) + 1))) << c.what;
            else EXPECT_EQ(real_slot(int(k) + 1), c.reals[k]) << c.what << ", slot " << k + 1;
        }
        if (c.code == 120) { EXPECT_EQ(string_slot(1), "x") << c.what; }
        if (c.code == 9039) { EXPECT_EQ(int_slot(1), 10000) << c.what; }
        if (c.code == 9001 || c.code == 9002) { EXPECT_EQ(int_slot(1), c.code == 9001 ? 0 : 1001) << c.what; }
    }
}

// The limits that the error cases above only bracket: the second slot of each overflow and
// underflow report, and the values just inside.
TEST(SpecialErrors, LimitsSitAtTheEdgeOfTheRange) {
    QuietErrors quiet;
    qnum_f_gamma(36.0f);
    const float fxmax = float(real_slot(2));
    // The largest arguments whose gamma is finite (mpmath, 40 digits).
    EXPECT_EQ(fxmax, 35.040096282958984f);
    EXPECT_TRUE(std::isfinite(qnum_f_gamma(fxmax)));
    EXPECT_GT(qnum_f_gamma(fxmax), 1e38f);
    qnum_f_gamma(std::nextafter(fxmax, 100.0f));
    EXPECT_EQ(last_code(), 9009);
    qnum_d_gamma(172.0);
    const double dxmax = real_slot(2);
    EXPECT_EQ(dxmax, 171.6243769563027);
    EXPECT_TRUE(std::isfinite(qnum_d_gamma(dxmax)));
    EXPECT_GT(qnum_d_gamma(dxmax), 1e307);
    qnum_d_gamma(-180.5);
    const double dxmin = real_slot(2);
    EXPECT_LT(dxmin, -170.0);
    EXPECT_GT(dxmin, -172.0);
    EXPECT_NE(qnum_d_gamma(dxmin + 0.5), 0.0);
    EXPECT_EQ(last_type(), 0);
    qnum_f_erfc(10.1f);
    const float erfc_xmax = float(real_slot(2));
    EXPECT_GT(qnum_f_erfc(erfc_xmax), 0.0f);
    EXPECT_EQ(last_type(), 0);
    qnum_r9lgmc(1e37f);
    const float corr_xmax = float(real_slot(2));
    EXPECT_GT(qnum_r9lgmc(std::nextafter(corr_xmax, 0.0f)), 0.0f);
    qnum_r9lgmc(corr_xmax);
    EXPECT_EQ(last_code(), 9015);
    // 10 itself is inside the correction's range (mpmath value).
    EXPECT_NEAR(qnum_d9lgmc(10.0), 0.0083305634333628712565, 2e-18);
    EXPECT_EQ(last_type(), 0);
}

// A TERMINAL error stops the process at the return to the caller under the default policy.
TEST(SpecialErrors, TerminalStopsByDefault) {
    EXPECT_EQ(run_in_child([] { qnum_f_gamma(0.0f); }), 5);
    EXPECT_EQ(run_in_child([] { qnum_d_log_gamma(-20.0); }), 4);
}

// Term counts are kept per thread: threads that start at once get the same values as this one.
TEST(SpecialThreads, ErfAndErfcAgreeAcrossThreads) {
    qnum_skip_signal_handler();
    std::vector<double> xs;
    for (int i = -300; i <= 300; ++i) xs.push_back(i / 37.0);
    std::vector<double> want;
    for (double x : xs) want.push_back(qnum_d_erf(x) + qnum_d_erfc(x) + qnum_f_erf(float(x)) + qnum_f_erfc(float(x)));
    std::vector<std::vector<double>> got(4);
    std::vector<std::thread> threads;
    for (auto& g : got)
        threads.emplace_back([&xs, &g] {
            for (double x : xs)
                g.push_back(qnum_d_erf(x) + qnum_d_erfc(x) + qnum_f_erf(float(x)) + qnum_f_erfc(float(x)));
        });
    for (auto& t : threads) t.join();
    for (const auto& g : got) EXPECT_EQ(g, want);
}

}  // namespace
}  // namespace qnum::test
