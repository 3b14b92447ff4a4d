// Tests of the real zero finder: zeros and counts against committed reference data (true zeros
// from mpmath, counts from a model of the iteration), starting points, options and errors.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <memory>
#include <sstream>

#include "frame/prec.hpp"
#include "qnum_test.hpp"

namespace qnum::test {
namespace {

// Every evaluation is recorded, so tests can see the points and count them.
template <class T>
struct Recorder {
    static inline std::vector<T> points;
    static inline T (*f)(T) = nullptr;
    static T call(T x) { return points.push_back(x), f(x); }
    static auto use(T (*g)(T)) { return points.clear(), f = g, call; }
};

template <class T>
T (*function(const std::string& name))(T) {
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
    return table.at(name);
}

// One row of data/zeros/cases.tsv: name, itmax, guesses, model zeros and counts, two unused
// columns, pushes, true zeros, then err_abs, err_rel, eta, eps ("-" where the default holds).
struct Case { std::string name; int itmax, pushes;
              std::vector<double> guesses, model_zeros, model_counts, true_zeros, settings; };

std::vector<Case> cases() {
    std::ifstream in(std::string(QNUM_TEST_DATA_DIR) + "/zeros/cases.tsv");
    std::vector<Case> out;
    std::string line, cell;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::vector<std::vector<double>> f;
        std::stringstream row(line);
        for (std::getline(row, cell, '\t'); std::getline(row, cell, '\t');) {
            f.emplace_back();
            std::stringstream items(cell == "-" ? "" : cell);
            for (std::string v; std::getline(items, v, ',');) f.back().push_back(std::stod(v));
        }
        auto setting = [&](int k) { return f[k].empty() ? NAN : f[k][0]; };
        out.push_back({line.substr(0, line.find('\t')), int(f[0][0]), int(f[6][0]), f[1], f[2], f[3], f[7],
                       {setting(8), setting(9), setting(10), setting(11)}});
    }
    return out;
}

template <class T, class... A>
T* zeros(T (*f)(T), A... a) {
    if constexpr (std::is_same_v<T, float>) return qnum_f_zeros_fcn(f, a...);
    else return qnum_d_zeros_fcn(f, a...);
}
struct Free { void operator()(void* p) const { qnum_free_allocated_memory(p); } };
template <class T> using Owned = std::unique_ptr<T[], Free>;
template <class T> struct ZerosFcn : ::testing::Test { QuietErrors quiet; };
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(ZerosFcn, Precisions);

// Every true zero is found, to within a few times the tolerance; a failed zero carries the
// count itmax + 1 and raises warning 7001 naming it. The double routine follows the model of
// the iteration step for step: the same counts, pushes and final iterates.
TYPED_TEST(ZerosFcn, TableZerosWarningsAndEvaluationCounts) {
    using T = TypeParam;
    const double tol = std::sqrt(double(Prec<T>::eps()));
    ASSERT_GE(cases().size(), 10u);
    for (const Case& c : cases()) {
        SCOPED_TRACE(c.name + " itmax " + std::to_string(c.itmax));
        std::vector<T> guesses(c.guesses.begin(), c.guesses.end());
        const int n = int(guesses.size());
        std::vector<int> counts(n, -1);
        auto pick = [&](int k, double fallback) { return std::isnan(c.settings[k]) ? fallback : c.settings[k]; };
        Owned<T> z(zeros<T>(Recorder<T>::use(function<T>(c.name)), QNUM_NUM_ROOTS, n, QNUM_XGUESS, guesses.data(),
                            QNUM_MAX_EVALS, c.itmax, QNUM_INFO_USER, counts.data(), QNUM_ERR_ABS, pick(0, tol),
                            QNUM_ERR_REL, pick(1, tol), QNUM_ETA, pick(2, 0.01), QNUM_EPS, pick(3, tol), 0));
        ASSERT_NE(z, nullptr);
        int last_failed = 0, evaluations = 0;
        for (int i = 0; i < n; ++i) {
            ASSERT_TRUE(counts[i] >= 1 && counts[i] <= c.itmax + 1) << counts[i];
            if (counts[i] > c.itmax) last_failed = i + 1;
            evaluations += counts[i] > c.itmax ? c.itmax - 1 : counts[i];
        }
        for (double t : c.true_zeros) {
            bool found = false;
            for (int i = 0; i < n; ++i)
                found |= counts[i] <= c.itmax && std::abs(z[i] - t) <= 20 * tol * std::max(1.0, std::abs(t));
            EXPECT_TRUE(found) << "zero " << t;
        }
        EXPECT_EQ(last_type(), last_failed > 0 ? 3 : 0);
        EXPECT_TRUE(last_failed == 0 || (last_code() == 7001 && int_slot(1) == c.itmax && int_slot(2) == last_failed));
        if constexpr (std::is_same_v<T, double>) {
            for (int i = 0; i < n; ++i) EXPECT_EQ(counts[i], c.model_counts[i]) << "zero " << i;
            for (int i = 0; i < n; ++i) EXPECT_NEAR(z[i], c.model_zeros[i], 1e-13 * std::max(1.0, std::abs(z[i]))) << i;
            EXPECT_EQ(int(Recorder<T>::points.size()), evaluations + c.pushes);
        }
    }
}

// The starting points: 0.9 g, 1.1 g and g for a guess g, -1, 1 and 0 for the default guess;
// with itmax = 1 nothing is evaluated and the first starting point is returned with count 2.
TYPED_TEST(ZerosFcn, StartingPoints) {
    using T = TypeParam;
    for (T g : {T(0), T(2), T(-5)}) {
        const std::vector<T> want = {g == 0 ? T(-1) : T(0.9) * g, g == 0 ? T(1) : T(1.1) * g, g};
        int count = 0;
        T z = 0;
        for (int itmax : {4, 1}) {
            zeros<T>(Recorder<T>::use(function<T>("cubic_wallis")), QNUM_XGUESS, &g, QNUM_MAX_EVALS, itmax,
                     QNUM_INFO_USER, &count, QNUM_RETURN_USER, &z, 0);
            EXPECT_EQ(Recorder<T>::points, itmax == 1 ? std::vector<T>{} : want) << g;
            EXPECT_EQ(count, itmax + 1);
        }
        EXPECT_EQ(z, want[0]);
        EXPECT_EQ(last_code(), 7001);
    }
}

template <class T> T shifted_t(T x, void* data) { return x - *static_cast<T*>(data); }

// The default call, the tolerances by address, the counts handed over by address and the
// function that takes the caller's data.
TYPED_TEST(ZerosFcn, OptionsByAddressAndUserData) {
    using T = TypeParam;
    T (*cosx)(T) = function<T>("cos_minus_x");
    // The default limit of 100 evaluations, here all in vain.
    int count = 0;
    T far = 30;
    Owned<T>(zeros<T>(function<T>("atan_shifted"), QNUM_XGUESS, &far, QNUM_INFO_USER, &count, 0));
    EXPECT_EQ(std::make_pair(count, int_slot(1)), std::make_pair(101, 100));

    // A huge err_abs by address accepts the first point; the counts come back by address.
    T big = 10, eta = T(0.01), eps = T(1e-3), rel = T(1e-3), loose = T(0.5);
    int* info = nullptr;
    Owned<T> z(zeros<T>(cosx, QNUM_ERR_ABS_ADR, &big, QNUM_ERR_REL_ADR, &rel, QNUM_ETA_ADR, &eta, QNUM_EPS_ADR, &eps,
                        QNUM_INFO, &info, 0));
    Owned<int> own_info(info);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(std::make_pair(z[0], info[0]), std::make_pair(T(-1), 1));

    // err_rel by address: a loose one stops at the first Mueller step.
    z.reset(zeros<T>(cosx, QNUM_ERR_REL_ADR, &loose, QNUM_INFO_USER, &count, 0));
    EXPECT_EQ(count, 4);

    // Two zeros of x - a with eps and eta by address: the second search is pushed off the first.
    T a = T(0.25), guesses[2] = {0, 0};
    eps = T(0.5), eta = T(0.75);
    z.reset(zeros<T>(nullptr, QNUM_FCN_W_DATA, shifted_t<T>, &a, QNUM_NUM_ROOTS, 2, QNUM_EPS_ADR, &eps, QNUM_ETA_ADR,
                     &eta, QNUM_XGUESS, guesses, 0));
    ASSERT_NE(z, nullptr);
    EXPECT_NEAR(z[0], a, 1e-6);
    EXPECT_GE(std::abs(z[1] - z[0]), eps);

    // An eps of 10^4 etas: the second search steps out of the first zero's neighbourhood
    // instead of being pushed 10^4 times one eta at a time.
    z.reset(zeros<T>(Recorder<T>::use([](T x) { return x - T(0.25); }), QNUM_NUM_ROOTS, 2, QNUM_EPS, 100.0,
                     QNUM_MAX_EVALS, 10, 0));
    ASSERT_NE(z, nullptr);
    EXPECT_LT(Recorder<T>::points.size(), 1000u);
    EXPECT_GE(std::abs(z[1] - z[0]), T(100));
    // Points exactly eps from an earlier zero lie outside its neighbourhood and are not pushed.
    z.reset(zeros<T>(Recorder<T>::use([](T x) { return x; }), QNUM_NUM_ROOTS, 2, QNUM_EPS, 1.0, 0));
    EXPECT_EQ(std::vector<T>(Recorder<T>::points.begin() + 3, Recorder<T>::points.begin() + 5), std::vector<T>({-1, 1}));

    // Counts asked for twice go where the later option says, never both.
    for (bool user_last : {false, true}) {
        int* fresh = nullptr;
        count = -1;
        z.reset(user_last ? zeros<T>(cosx, QNUM_INFO, &fresh, QNUM_INFO_USER, &count, 0)
                          : zeros<T>(cosx, QNUM_INFO_USER, &count, QNUM_INFO, &fresh, 0));
        Owned<int> own(fresh);
        EXPECT_TRUE(user_last ? fresh == nullptr && count > 0 : fresh != nullptr && fresh[0] > 0 && count == -1);
    }
}

// Caller mistakes: TERMINAL errors and NULL, nothing evaluated.
TYPED_TEST(ZerosFcn, ArgumentErrors) {
    using T = TypeParam;
    T (*f)(T) = Recorder<T>::use(function<T>("cos_minus_x"));
    struct Row { int code, i1, i2; std::string l1; std::function<T*()> call; };
    const Row rows[] = {
        {103, 9999, 2, "", [&] { return zeros<T>(f, 9999, 0); }},
        {132, 1, 2147483647, "num_roots", [&] { return zeros<T>(f, QNUM_NUM_ROOTS, 0, 0); }},
        {132, 1, 2147483647, "itmax", [&] { return zeros<T>(f, QNUM_MAX_EVALS, 0, 0); }},
        {150, 0, 0, "fcn", [&] { return zeros<T>(static_cast<T (*)(T)>(nullptr), 0); }},
        {104, 0, 0, "xguess", [&] { return zeros<T>(f, QNUM_XGUESS, (T*)nullptr, 0); }},
        {104, 0, 0, "fcn", [&] { return zeros<T>(f, QNUM_NUM_ROOTS, 2, QNUM_FCN_W_DATA, nullptr, nullptr, 0); }},
        {103, 4242, 6, "", [&] { return zeros<T>(f, QNUM_MAX_EVALS, 5, QNUM_ERR_ABS, 1e-3, 4242, 0); }},
    };
    for (const Row& r : rows) {
        SCOPED_TRACE(r.code);
        EXPECT_EQ(r.call(), nullptr);
        EXPECT_EQ(last_type(), 5);
        EXPECT_EQ(last_code(), r.code);
        EXPECT_TRUE(!r.i1 || int_slot(1) == r.i1);
        EXPECT_TRUE(!r.i2 || int_slot(2) == r.i2);
        EXPECT_TRUE(r.l1.empty() || string_slot(1) == r.l1);
    }
    EXPECT_TRUE(Recorder<T>::points.empty());
}

}  // namespace
}  // namespace qnum::test
