// Helpers of the cubic-spline tests: one name per routine over both precisions, an owning
// handle for results, the committed reference cases, a continuity measure and error tables.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>

#include "qnum_test.hpp"

namespace qnum::test {

template <class T> struct Api;
#define QNUM_SPLINE_API(T, P)                                                                                \
    template <>                                                                                              \
    struct Api<T> {                                                                                          \
        using Pp = Qnum_##P##_ppoly;                                                                         \
        template <class... A> static Pp* e_cnd(A... a) { return qnum_##P##_cub_spline_interp_e_cnd(a...); } \
        template <class... A> static Pp* interp(A... a) { return qnum_##P##_cub_spline_interp(a...); }       \
        template <class... A> static Pp* shape(A... a) { return qnum_##P##_cub_spline_interp_shape(a...); }  \
        template <class... A> static Pp* smooth(A... a) { return qnum_##P##_cub_spline_smooth(a...); }       \
        template <class... A> static T value(A... a) { return qnum_##P##_cub_spline_value(a...); }           \
        static T integral(T a, T b, Pp* p) { return qnum_##P##_cub_spline_integral(a, b, p); }               \
        template <class... A> static Pp* create(A... a) { return qnum_##P##_ppoly_create(a...); }            \
    };
QNUM_SPLINE_API(float, f)
QNUM_SPLINE_API(double, d)
#undef QNUM_SPLINE_API
template <class T> using Pp = typename Api<T>::Pp;

// A result freed with the C library's free, as callers may.
struct FreeDeleter { void operator()(void* p) const { std::free(p); } };
template <class T> using Spline = std::unique_ptr<Pp<T>, FreeDeleter>;
template <class T> T eps() { return std::numeric_limits<T>::epsilon(); }
template <class T> struct Quiet : ::testing::Test { QuietErrors quiet; };
using Precisions = ::testing::Types<float, double>;

// Value or derivative at x through the scalar entry.
template <class T> T at(Pp<T>* p, T x, int deriv = 0) { return Api<T>::value(x, p, QNUM_DERIV, deriv, 0); }

// The coefficients of a spline, and the largest of them: the scale of its rounding errors.
template <class T> std::vector<T> coefs(const Pp<T>* p) { return {p->coef[0], p->coef[0] + p->num_coef[0]}; }
template <class T>
T scale_of(const Pp<T>* p) {
    const auto c = coefs<T>(p);
    return std::abs(*std::max_element(c.begin(), c.end(), [](T a, T b) { return std::abs(a) < std::abs(b); }));
}

// One case of data/interp/*.txt: the words of its "case" line, the data, and the rows of
// numbers under "eval" and "integral".
struct RefCase { std::vector<std::string> head; std::vector<double> x, f; std::vector<std::vector<double>> eval, integral; };

inline std::vector<RefCase> load_cases(const std::string& file) {
    std::ifstream in(std::string(QNUM_TEST_DATA_DIR) + "/interp/" + file);
    std::vector<RefCase> cases;
    auto numbers = [](std::istream& s) { std::vector<double> v; for (double e; s >> e;) v.push_back(e); return v; };
    for (std::string line, word; std::getline(in, line);) {
        std::istringstream s(line);
        if (!(s >> word) || word[0] == '#') continue;
        if (word == "case") for (cases.emplace_back(); s >> word;) cases.back().head.push_back(word);
        if (word == "x" || word == "f") (word == "x" ? cases.back().x : cases.back().f) = numbers(s);
        int m = 0;
        if (word == "eval" || word == "integral") s >> m;
        for (auto& rows = word == "eval" ? cases.back().eval : cases.back().integral; m-- > 0 && std::getline(in, line);) {
            std::istringstream t(line);
            rows.push_back(numbers(t));
        }
    }
    return cases;
}

template <class T> std::vector<T> cast(const std::vector<double>& v) { return {v.begin(), v.end()}; }

// Largest jump of derivative k across the interior breakpoints, each side's piece evaluated
// from its own coefficients, relative to the size of that derivative.
template <class T>
double jump(const Pp<T>* p, int k) {
    const T *bp = p->breakpoints[0], *c = p->coef[0];
    double worst = 0, size = 0;
    for (int i = 0; i + 1 < p->num_breakpoints[0]; ++i) {
        size = std::max(size, std::abs(double(c[4 * i + k])));
        double left = 0, term = 1;
        for (int j = k; j < 4; ++j) left += c[4 * i + j] * term, term *= (double(bp[i + 1]) - bp[i]) / (j - k + 1);
        if (i + 2 < p->num_breakpoints[0]) worst = std::max(worst, std::abs(left - c[4 * (i + 1) + k]));
    }
    return size > 0 ? worst / size : worst;
}

// An error table: each call returns `bad` (NaN for values; 0 standing for a null pointer, see
// ptr) with its type, code and integer substitutions.
struct ErrorRow { const char* what; std::function<double()> call; int type, code; std::vector<int> ints; };
template <class F> std::function<double()> ptr(F f) { return [f] { return f() == nullptr ? 0.0 : 1.0; }; }

inline void check_errors(const std::vector<ErrorRow>& table, double bad) {
    for (const ErrorRow& c : table) {
        SCOPED_TRACE(c.what);
        const double r = c.call();
        EXPECT_TRUE(std::isnan(bad) ? std::isnan(r) : r == bad);
        EXPECT_EQ(std::vector<int>({last_type(), last_code()}), std::vector<int>({c.type, c.code}));
        for (std::size_t k = 0; k < c.ints.size(); ++k) EXPECT_EQ(int_slot(int(k) + 1), c.ints[k]) << k + 1;
    }
}

}  // namespace qnum::test
