// Tests of the real zero finder: zeros and counts against committed reference data (true zeros
// from mpmath, counts from a model of the iteration), starting points, options and errors.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "frame/prec.hpp"
#include "qnum_test.hpp"

namespace qnum::test {
namespace {

// Every evaluation is recorded, so tests can see the points and count them.
template <class T>
struct Recorder {
    static inline std::vector<T> points;
    static inline T (*f)(T) = nullptr;
    static T call(T x) {
        points.push_back(x);
        return f(x);
    }
};

template <class T>
const std::map<std::string, T (*)(T)>& functions() {
    static const std::map<std::string, T (*)(T)> table = {
        {"cubic_wallis", [](T x) { return x * x * x - T(2) * x - T(5); }},
        {"cubic_123", [](T x) { return ((x - T(6)) * x + T(11)) * x - T(6); }},
        {"double_root", [](T x) { return (x * x - T(3)) * x + T(2); }},
        {"cos_minus_x", [](T x) { return std::cos(x) - x; }},
        {"exp_minus_2", [](T x) { return std::exp(x) - T(2); }},
        {"x2_plus_1", [](T x) { return x * x + T(1); }},
        {"sin", [](T x) { return std::sin(x); }},
        {"atan_shifted", [](T x) { return std::atan(x - T(5)); }},
        {"quartic", [](T x) { return (((x - T(10)) * x + T(35)) * x - T(50)) * x + T(24); }},
    };
    return table;
}

std::vector<double> numbers(const std::string& field) {
    std::vector<double> v;
    if (field == "-") return v;
    std::stringstream in(field);
    std::string item;
    while (std::getline(in, item, ',')) v.push_back(std::strtod(item.c_str(), nullptr));
    return v;
}

struct Case {
    std::string name;
    int itmax;
    std::vector<double> guesses, model_zeros, model_counts;
    int pushes;
    std::vector<double> true_zeros;
    std::vector<double> settings;  // err_abs, err_rel, eta, eps; NaN where the default holds
};

std::vector<Case> cases() {
    std::ifstream in(std::string(QNUM_TEST_DATA_DIR) + "/zeros/cases.tsv");
    std::vector<Case> out;
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::vector<std::string> f;
        std::stringstream row(line);
        std::string cell;
        while (std::getline(row, cell, '\t')) f.push_back(cell);
        Case c{f[0], std::stoi(f[1]), numbers(f[2]), numbers(f[3]), numbers(f[4]),
               std::stoi(f[7]), numbers(f[8]), {}};
        for (int k = 9; k < 13; ++k) c.settings.push_back(f[k] == "-" ? NAN : std::stod(f[k]));
        out.push_back(c);
    }
    return out;
}

// The routine of precision T.
template <class T, class... A>
T* zeros(T (*f)(T), A... a) {
    if constexpr (std::is_same_v<T, float>) {
        return qnum_f_zeros_fcn(f, a...);
    } else {
        return qnum_d_zeros_fcn(f, a...);
    }
}

template <class T>
class ZerosFcn : public ::testing::Test {
protected:
    QuietErrors quiet;
    void TearDown() override { Recorder<T>::points.clear(); }
};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(ZerosFcn, Precisions);

// Runs one table case through the public routine with its settings passed as options.
template <class T>
T* run_case(const Case& c, std::vector<int>& counts) {
    Recorder<T>::f = functions<T>().at(c.name);
    Recorder<T>::points.clear();
    std::vector<T> guesses(c.guesses.begin(), c.guesses.end());
    counts.assign(guesses.size(), -1);
    const double* s = c.settings.data();
    auto pick = [](double v, double fallback) { return std::isnan(v) ? fallback : v; };
    const double tol = std::sqrt(static_cast<double>(Prec<T>::eps()));
    const int n = static_cast<int>(guesses.size());
    return zeros<T>(Recorder<T>::call, QNUM_NUM_ROOTS, n, QNUM_XGUESS, guesses.data(),
                                QNUM_MAX_EVALS, c.itmax, QNUM_INFO_USER, counts.data(),
                                QNUM_ERR_ABS, pick(s[0], tol), QNUM_ERR_REL, pick(s[1], tol),
                                QNUM_ETA, pick(s[2], 0.01), QNUM_EPS, pick(s[3], tol), 0);
}

// Every true zero is found, to within a few times the tolerance; a failed zero carries the
// count itmax + 1 and raises warning 7001 naming it.
TYPED_TEST(ZerosFcn, TableZerosWarningsAndEvaluationCounts) {
    using T = TypeParam;
    const double tol = std::sqrt(static_cast<double>(Prec<T>::eps()));
    for (const Case& c : cases()) {
        SCOPED_TRACE(c.name + " itmax " + std::to_string(c.itmax));
        std::vector<int> counts;
        T* z = run_case<T>(c, counts);
        ASSERT_NE(z, nullptr);
        int last_failed = 0, evaluations = 0;
        for (std::size_t i = 0; i < c.guesses.size(); ++i) {
            ASSERT_GE(counts[i], 1);
            ASSERT_LE(counts[i], c.itmax + 1);
            if (counts[i] > c.itmax) last_failed = static_cast<int>(i) + 1;
            evaluations += counts[i] > c.itmax ? c.itmax - 1 : counts[i];
        }
        for (double t : c.true_zeros) {
            bool found = false;
            for (std::size_t i = 0; i < c.guesses.size(); ++i) {
                found |= counts[i] <= c.itmax &&
                         std::abs(z[i] - t) <= 20 * tol * std::max(1.0, std::abs(t));
            }
            EXPECT_TRUE(found) << "zero " << t;
        }
        if (last_failed > 0) {
            EXPECT_EQ(last_type(), 3);
            EXPECT_EQ(last_code(), 7001);
            EXPECT_EQ(int_slot(1), c.itmax);
            EXPECT_EQ(int_slot(2), last_failed);
        } else {
            EXPECT_EQ(last_type(), 0);
        }
        if constexpr (std::is_same_v<T, double>) {
            // The double routine follows the model of the iteration step for step: the same
            // counts, the same pushes away from earlier zeros and the same final iterates.
            for (std::size_t i = 0; i < c.guesses.size(); ++i) {
                EXPECT_EQ(counts[i], c.model_counts[i]) << "zero " << i;
                EXPECT_NEAR(z[i], c.model_zeros[i], 1e-13 * std::max(1.0, std::abs(c.model_zeros[i])))
                    << "zero " << i;
            }
            EXPECT_EQ(static_cast<int>(Recorder<T>::points.size()), evaluations + c.pushes);
        }
        qnum_free_allocated_memory(z);
    }
}

// The starting points: 0.9 g, 1.1 g and g for a guess g, -1, 1 and 0 for the default guess;
// with itmax = 1 nothing is evaluated and the first starting point is returned with count 2.
TYPED_TEST(ZerosFcn, StartingPoints) {
    using T = TypeParam;
    struct Row { T guess; T first, second, third; };
    const Row rows[] = {{0, -1, 1, 0}, {T(2), T(0.9) * 2, T(1.1) * 2, 2}, {T(-5), T(0.9) * -5, T(1.1) * -5, -5}};
    for (const Row& r : rows) {
        Recorder<T>::f = functions<T>().at("cubic_wallis");
        Recorder<T>::points.clear();
        T guess = r.guess;
        int count = 0;
        T z;
        zeros<T>(Recorder<T>::call, QNUM_XGUESS, &guess, QNUM_MAX_EVALS, 4,
                             QNUM_INFO_USER, &count, QNUM_RETURN_USER, &z, 0);
        ASSERT_EQ(Recorder<T>::points.size(), 3u) << r.guess;
        EXPECT_EQ(Recorder<T>::points[0], r.first);
        EXPECT_EQ(Recorder<T>::points[1], r.second);
        EXPECT_EQ(Recorder<T>::points[2], r.third);
        EXPECT_EQ(count, 5);

        Recorder<T>::points.clear();
        zeros<T>(Recorder<T>::call, QNUM_XGUESS, &guess, QNUM_MAX_EVALS, 1,
                             QNUM_INFO_USER, &count, QNUM_RETURN_USER, &z, 0);
        EXPECT_TRUE(Recorder<T>::points.empty());
        EXPECT_EQ(z, r.first);
        EXPECT_EQ(count, 2);
        EXPECT_EQ(last_code(), 7001);
    }
}

template <class T>
T shifted_t(T x, void* data) {
    return x - *static_cast<T*>(data);
}

// The default call, the tolerances by address, the counts handed over by address and the
// function that takes the caller's data.
TYPED_TEST(ZerosFcn, OptionsByAddressAndUserData) {
    using T = TypeParam;
    T (*cosx)(T) = functions<T>().at("cos_minus_x");
    T* z = nullptr;
    z = zeros<T>(cosx, 0);
    ASSERT_NE(z, nullptr);
    EXPECT_NEAR(z[0], 0.7390851332151607, 1e-3);
    qnum_free_allocated_memory(z);

    // A huge err_abs by address accepts the first point; the counts come back by address.
    T big = 10, tiny_eta = T(0.01), tiny_eps = T(1e-3), rel = T(1e-3);
    int* info = nullptr;
    z = zeros<T>(cosx, QNUM_ERR_ABS_ADR, &big, QNUM_ERR_REL_ADR, &rel, QNUM_ETA_ADR,
                             &tiny_eta, QNUM_EPS_ADR, &tiny_eps, QNUM_INFO, &info, 0);
    ASSERT_NE(z, nullptr);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(z[0], T(-1));
    EXPECT_EQ(info[0], 1);
    qnum_free_allocated_memory(z);
    qnum_free_allocated_memory(info);

    // err_rel by address: a loose one stops at the first Mueller step (count 3).
    T loose = T(0.5);
    int count = 0;
    z = zeros<T>(cosx, QNUM_ERR_REL_ADR, &loose, QNUM_INFO_USER, &count, 0);
    EXPECT_EQ(count, 4);
    qnum_free_allocated_memory(z);

    // Two zeros of x - a with eps and eta by address: the second search is pushed off the
    // first zero, and each push costs an evaluation that the count leaves out.
    T a = T(0.25), eps = T(0.5), eta = T(0.75);
    T guesses[2] = {0, 0};
    int counts[2] = {0, 0};
    z = zeros<T>(nullptr, QNUM_FCN_W_DATA, shifted_t<T>, &a, QNUM_NUM_ROOTS, 2,
                             QNUM_EPS_ADR, &eps, QNUM_ETA_ADR, &eta, QNUM_XGUESS, guesses,
                             QNUM_INFO_USER, counts, 0);
    ASSERT_NE(z, nullptr);
    EXPECT_NEAR(z[0], a, 1e-6);
    EXPECT_GE(std::abs(z[1] - z[0]), eps);
    qnum_free_allocated_memory(z);

    // An eps of 10^4 etas: the second search steps out of the first zero's neighbourhood
    // instead of being pushed 10^4 times one eta at a time.
    Recorder<T>::f = [](T x) { return x - T(0.25); };
    Recorder<T>::points.clear();
    z = zeros<T>(Recorder<T>::call, QNUM_NUM_ROOTS, 2, QNUM_EPS, 100.0, QNUM_MAX_EVALS, 10, 0);
    ASSERT_NE(z, nullptr);
    EXPECT_LT(Recorder<T>::points.size(), 1000u);
    EXPECT_GE(std::abs(z[1] - z[0]), T(100));
    qnum_free_allocated_memory(z);

    // Counts asked for twice go where the later option says, never both.
    int* fresh = nullptr;
    count = -1;
    z = zeros<T>(cosx, QNUM_INFO_USER, &count, QNUM_INFO, &fresh, 0);
    ASSERT_NE(fresh, nullptr);
    EXPECT_EQ(count, -1);
    EXPECT_GT(fresh[0], 0);
    qnum_free_allocated_memory(fresh);
    qnum_free_allocated_memory(z);
    fresh = nullptr;
    z = zeros<T>(cosx, QNUM_INFO, &fresh, QNUM_INFO_USER, &count, 0);
    EXPECT_EQ(fresh, nullptr);
    EXPECT_GT(count, 0);
    qnum_free_allocated_memory(z);
}

// Caller mistakes: TERMINAL errors and NULL, nothing evaluated.
TYPED_TEST(ZerosFcn, ArgumentErrors) {
    using T = TypeParam;
    Recorder<T>::f = functions<T>().at("cos_minus_x");
    Recorder<T>::points.clear();
    T (*f)(T) = Recorder<T>::call;
    struct Row { int code, i1, i2; std::string l1; };
    auto call = [&](int which) -> T* {
        T* none = nullptr;
        auto d = [&](auto fn) -> T* {
            switch (which) {
            case 0: return fn(f, 9999, 0);
            case 1: return fn(f, QNUM_NUM_ROOTS, 0, 0);
            case 2: return fn(f, QNUM_MAX_EVALS, 0, 0);
            case 3: return fn(nullptr, 0);
            case 4: return fn(f, QNUM_XGUESS, none, 0);
            case 5: return fn(f, QNUM_NUM_ROOTS, 2, QNUM_FCN_W_DATA, nullptr, nullptr, 0);
            default: return fn(f, QNUM_MAX_EVALS, 5, QNUM_ERR_ABS, 1e-3, 4242, 0);
            }
        };
        return d([](auto f, auto... a) { return zeros<T>(f, a...); });
    };
    const Row rows[] = {{103, 9999, 2, ""},   {132, 1, 2147483647, "num_roots"},
                        {132, 1, 2147483647, "itmax"}, {150, 0, 0, "fcn"},
                        {104, 0, 0, "xguess"}, {104, 0, 0, "fcn"}, {103, 4242, 6, ""}};
    for (int k = 0; k < 7; ++k) {
        SCOPED_TRACE(k);
        EXPECT_EQ(call(k), nullptr);
        EXPECT_EQ(last_type(), 5);
        EXPECT_EQ(last_code(), rows[k].code);
        if (rows[k].code != 104 && rows[k].code != 150) {
            EXPECT_EQ(int_slot(1), rows[k].i1);
            EXPECT_EQ(int_slot(2), rows[k].i2);
        }
        if (!rows[k].l1.empty()) {
            EXPECT_EQ(string_slot(1), rows[k].l1);
        }
    }
    EXPECT_TRUE(Recorder<T>::points.empty());
}

}  // namespace
}  // namespace qnum::test
