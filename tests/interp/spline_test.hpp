// Helpers of the cubic-spline tests: one name per routine over both precisions, an owning
// handle for results, the committed reference cases and a continuity measure.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "qnum_test.hpp"

namespace qnum::test {

template <class T>
struct Api;
#define QNUM_SPLINE_API(T, P)                                                                                  \
    template <>                                                                                                \
    struct Api<T> {                                                                                            \
        using Pp = Qnum_##P##_ppoly;                                                                           \
        template <class... A> static Pp* e_cnd(A... a) { return qnum_##P##_cub_spline_interp_e_cnd(a...); }   \
        template <class... A> static Pp* interp(A... a) { return qnum_##P##_cub_spline_interp(a...); }         \
        template <class... A> static Pp* shape(A... a) { return qnum_##P##_cub_spline_interp_shape(a...); }    \
        template <class... A> static Pp* smooth(A... a) { return qnum_##P##_cub_spline_smooth(a...); }         \
        template <class... A> static T value(A... a) { return qnum_##P##_cub_spline_value(a...); }             \
        static T integral(T a, T b, Pp* p) { return qnum_##P##_cub_spline_integral(a, b, p); }                 \
        template <class... A> static Pp* create(A... a) { return qnum_##P##_ppoly_create(a...); }              \
    };
QNUM_SPLINE_API(float, f)
QNUM_SPLINE_API(double, d)
#undef QNUM_SPLINE_API

template <class T>
using Pp = typename Api<T>::Pp;

// A result freed with the C library's free, as callers may.
struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};
template <class T>
using Spline = std::unique_ptr<Pp<T>, FreeDeleter>;

template <class T>
T eps() { return std::numeric_limits<T>::epsilon(); }

// Value or derivative at x through the scalar entry.
template <class T>
T at(Pp<T>* p, T x, int deriv = 0) { return Api<T>::value(x, p, QNUM_DERIV, deriv, 0); }

// Largest |coefficient| of a spline: the scale of its rounding errors.
template <class T>
T scale_of(const Pp<T>* p) {
    T s = 0;
    for (int i = 0; i < p->num_coef[0]; ++i) s = std::max(s, std::abs(p->coef[0][i]));
    return s;
}

template <class T>
struct Quiet : ::testing::Test {
    QuietErrors quiet;
};
using Precisions = ::testing::Types<float, double>;

// One case of data/interp/*.txt: the words of its "case" line, the data, and the rows of
// numbers under "eval" and "integral".
struct RefCase {
    std::vector<std::string> head;
    std::vector<double> x, f;
    std::vector<std::vector<double>> eval, integral;
};

inline std::vector<RefCase> load_cases(const std::string& file) {
    std::ifstream in(std::string(QNUM_TEST_DATA_DIR) + "/interp/" + file);
    std::vector<RefCase> cases;
    std::string line, word;
    auto numbers = [](std::istream& s) {
        std::vector<double> v;
        for (double e; s >> e;) v.push_back(e);
        return v;
    };
    while (std::getline(in, line)) {
        std::istringstream s(line);
        if (!(s >> word) || word[0] == '#') continue;
        if (word == "case") cases.emplace_back();
        if (word == "case") while (s >> word) cases.back().head.push_back(word);
        if (word == "x" || word == "f") (word == "x" ? cases.back().x : cases.back().f) = numbers(s);
        if (word != "eval" && word != "integral") continue;
        int m = 0;
        s >> m;
        for (auto& rows = word == "eval" ? cases.back().eval : cases.back().integral; m-- > 0;) {
            std::getline(in, line);
            std::istringstream t(line);
            rows.push_back(numbers(t));
        }
    }
    return cases;
}

template <class T>
std::vector<T> cast(const std::vector<double>& v) {
    return std::vector<T>(v.begin(), v.end());
}

// Largest jump of derivative k across the interior breakpoints, each side's piece evaluated
// from its own coefficients, relative to the size of that derivative.
template <class T>
double jump(const Pp<T>* p, int k) {
    const int nb = p->num_breakpoints[0];
    const T* bp = p->breakpoints[0];
    const T* c = p->coef[0];
    double worst = 0, size = 0;
    for (int i = 0; i + 1 < nb; ++i) size = std::max(size, std::abs(double(c[4 * i + k])));
    for (int i = 0; i + 2 < nb; ++i) {
        const double h = double(bp[i + 1]) - bp[i];
        double left = 0, term = 1;
        for (int j = k; j < 4; ++j) {
            left += c[4 * i + j] * term;
            term *= h / (j - k + 1);
        }
        worst = std::max(worst, std::abs(left - c[4 * (i + 1) + k]));
    }
    return size > 0 ? worst / size : worst;
}

// Checks one error table: each call returns `bad` (null, or NaN for values) with its type,
// code and integer substitutions.
struct ErrorRow {
    const char* what;
    std::function<double()> call;  // the result, as 0 for a null pointer and 1 otherwise
    int type, code;
    std::vector<int> ints;
};
template <class F>
std::function<double()> ptr(F f) { return [f] { return f() == nullptr ? 0.0 : 1.0; }; }

inline void check_errors(const std::vector<ErrorRow>& table, double bad) {
    for (const ErrorRow& c : table) {
        SCOPED_TRACE(c.what);
        const double r = c.call();
        EXPECT_TRUE(std::isnan(bad) ? std::isnan(r) : r == bad);
        EXPECT_EQ(last_type(), c.type);
        EXPECT_EQ(last_code(), c.code);
        for (std::size_t k = 0; k < c.ints.size(); ++k) EXPECT_EQ(int_slot(int(k) + 1), c.ints[k]) << "slot " << k + 1;
    }
}

}  // namespace qnum::test
