// Accuracy of the special functions against 50-digit reference values (tools/refdata).
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "frame/cpu.hpp"
#include "qnum_test.hpp"
#include "qnummath.h"
#include "functions_test.hpp"

namespace qnum::test {
namespace {

struct Point {
    double arg[3];
    long double ref;  // value, to about 77 bits
};

// The records of data/special/<name>.ref: a text line, then nargs doubles, the value as a
// double and its relative rounding residue as a float.
std::vector<Point> load(const std::string& name, int nargs, bool float_exact_only) {
    std::vector<Point> pts;
    std::FILE* f = std::fopen((std::string(QNUM_TEST_DATA_DIR) + "/special/" + name + ".ref").c_str(), "rb");
    if (f == nullptr) return pts;
    int c;
    while ((c = std::fgetc(f)) != EOF && c != '\n') {}
    unsigned char rec[40];
    const std::size_t size = 8 * nargs + 12;
    while (std::fread(rec, 1, size, f) == size) {
        Point p{};
        std::memcpy(p.arg, rec, 8 * nargs);
        double hi;
        float lo;
        std::memcpy(&hi, rec + 8 * nargs, 8);
        std::memcpy(&lo, rec + 8 * nargs + 8, 4);
        p.ref = static_cast<long double>(hi) + static_cast<long double>(hi) * lo;
        bool exact = true;
        for (int i = 0; i < nargs; ++i) exact = exact && double(float(p.arg[i])) == p.arg[i];
        if (exact || !float_exact_only) pts.push_back(p);
    }
    std::fclose(f);
    return pts;
}

template <class T>
struct Target {
    const char* name;
    int nargs;
    std::function<T(const double*)> fn;
    double ulps_double, ulps_float;
    bool absolute_near_zero;  // a function with zeros: an absolute error of `ulps` eps also passes
};

template <class T>
std::vector<Target<T>> targets() {
    using F = Api<T>;
    return {
        {"erf", 1, [](const double* v) { return F::erf(T(v[0])); }, 1, 2, false},
        {"erfc", 1, [](const double* v) { return F::erfc(T(v[0])); }, 1, 2, false},
        {"erf_inverse", 1, [](const double* v) { return F::erf_inverse(T(v[0])); }, 2, 2, false},
        {"erfc_inverse", 1, [](const double* v) { return F::erfc_inverse(T(v[0])); }, 2, 2, false},
        {"gamma", 1, [](const double* v) { return F::gamma(T(v[0])); }, 4, 2, false},
        {"log_gamma", 1, [](const double* v) { return F::log_gamma(T(v[0])); }, 2, 2, true},
        {"beta", 2, [](const double* v) { return F::beta(T(v[0]), T(v[1])); }, 4, 2, false},
        {"log_beta", 2, [](const double* v) { return F::log_beta(T(v[0]), T(v[1])); }, 4, 2, true},
        {"gamma_incomplete", 2, [](const double* v) { return F::gamma_incomplete(T(v[0]), T(v[1])); }, 16, 2, false},
        {"beta_incomplete", 3, [](const double* v) { return F::beta_incomplete(T(v[0]), T(v[1]), T(v[2])); }, 16, 2,
         false},
    };
}

// |got - ref| in units of the last place of ref in precision T (subnormal spacing at the bottom).
template <class T>
long double ulp_error(T got, long double ref) {
    int e;
    std::frexp(ref, &e);
    const int bottom = std::numeric_limits<T>::min_exponent - std::numeric_limits<T>::digits;
    const long double ulp = std::ldexp(1.0L, std::max(e - std::numeric_limits<T>::digits, bottom));
    return std::fabs(static_cast<long double>(got) - ref) / ulp;
}

void report(const std::string& line) {
    std::printf("%s\n", line.c_str());
    if (const char* path = std::getenv("QNUM_ACCURACY_REPORT")) {
        if (std::FILE* f = std::fopen(path, "a")) {
            std::fprintf(f, "%s\n", line.c_str());
            std::fclose(f);
        }
    }
}

template <class T>
class Accuracy : public ::testing::Test {};
using Precisions = ::testing::Types<float, double>;
TYPED_TEST_SUITE(Accuracy, Precisions);

// Every point whose value lies in T's normal range is checked, except where the routine
// declares an underflow (its limit lies a little inside the range); values that overflow or
// fall below the normal range are the business of the error tests. The double routines run
// on the machine's path and on the portable one.
TYPED_TEST(Accuracy, WithinTheStatedUlpsOfTheReference) {
    using T = TypeParam;
    constexpr bool is_float = std::is_same_v<T, float>;
    QuietErrors quiet;
    for (const cpu::Path path : {cpu::detected(), cpu::Path::Portable})
    for (const Target<T>& t : targets<T>()) {
        if (path == cpu::Path::Portable && (is_float || cpu::detected() == path)) continue;
        cpu::force(path);
        const std::vector<Point> pts = load(t.name, t.nargs, is_float);
        ASSERT_GE(pts.size(), 10000u) << t.name << ": reference data missing";
        const double tol = is_float ? t.ulps_float : t.ulps_double;
        const long double eps = std::numeric_limits<T>::epsilon();
        long double worst = 0;
        const Point* worst_at = nullptr;
        T worst_got = 0;
        int checked = 0, failures = 0;
        for (const Point& p : pts) {
            if (!(std::fabs(p.ref) >= std::numeric_limits<T>::min() && std::fabs(p.ref) <= std::numeric_limits<T>::max()))
                continue;
            const T got = t.fn(p.arg);
            if (got == 0 && last_type() == 2) continue;  // a documented underflow (ALERT, result 0)
            ++checked;
            long double err = ulp_error<T>(got, p.ref);
            if (t.absolute_near_zero) err = std::min(err, std::fabs(got - p.ref) / eps);
            if (std::isnan(static_cast<double>(err))) err = HUGE_VALL;
            if (worst_at == nullptr || err > worst) {
                worst = err;
                worst_at = &p;
                worst_got = got;
            }
            if (err > tol && ++failures <= 5)
                ADD_FAILURE() << t.name << (is_float ? " float" : " double") << " at (" << p.arg[0] << ", " << p.arg[1]
                              << ", " << p.arg[2] << "): got " << double(got) << ", reference " << double(p.ref)
                              << ", error " << double(err) << " ulps";
        }
        cpu::reset();
        char line[256];
        std::snprintf(line, sizeof line, "%-7s %-17s %6d points  worst %7.3f ulps (bound %g) at (%.9g, %.9g, %.9g): %.17g",
                      is_float ? "float" : path == cpu::Path::Portable ? "double (portable path)" : "double", t.name, checked, double(worst), tol,
                      worst_at ? worst_at->arg[0] : 0.0, worst_at ? worst_at->arg[1] : 0.0,
                      worst_at ? worst_at->arg[2] : 0.0, double(worst_got));
        report(line);
        EXPECT_EQ(failures, 0) << t.name;
    }
}

}  // namespace
}  // namespace qnum::test

namespace qnum::test {
namespace {

// w(z) has no useful componentwise bound next to the real axis (its real part exp(-x^2) is far
// below its size there), so it is held to a bound relative to |w|.
TYPED_TEST(Accuracy, ErfeWithinAFewEpsRelativeToItsSize) {
    using T = TypeParam;
    constexpr bool is_float = std::is_same_v<T, float>;
    QuietErrors quiet;
    const std::vector<Point> re = load("erfe_re", 2, is_float), im = load("erfe_im", 2, is_float);
    ASSERT_EQ(re.size(), im.size());
    ASSERT_GE(re.size(), 10000u);
    const long double eps = std::numeric_limits<T>::epsilon();
    long double worst = 0;
    std::size_t at = 0;
    for (std::size_t i = 0; i < re.size(); ++i) {
        const T x = T(re[i].arg[0]), y = T(re[i].arg[1]);
        const std::complex<T> w = Api<T>::erfe(x, y);
        const long double gr = w.real(), gi = w.imag();
        const long double size = std::hypot(re[i].ref, im[i].ref);
        if (!(size <= std::numeric_limits<T>::max() / 4)) continue;
        const long double err = std::hypot(gr - re[i].ref, gi - im[i].ref) / size / eps;
        if (!(err <= worst)) {
            worst = std::isnan(double(err)) ? HUGE_VALL : err;
            at = i;
        }
    }
    char line[200];
    std::snprintf(line, sizeof line, "%-7s %-17s %6zu points  worst %7.3f eps relative to |w| (bound 4) at (%.9g, %.9g)",
                  is_float ? "float" : "double", "erfe", re.size(), double(worst), re[at].arg[0], re[at].arg[1]);
    report(line);
    EXPECT_LE(worst, 4.0);
}

}  // namespace
}  // namespace qnum::test
