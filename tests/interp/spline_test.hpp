// Helpers of the cubic-spline tests: one name per routine over both precisions, an owning
// handle for results, and the reference cases made by tools/refdata/splines.py.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "frame/prec.hpp"
#include "qnum_test.hpp"

namespace qnum::test {

template <class T>
struct Api;

template <>
struct Api<float> {
    using Pp = Qnum_f_ppoly;
    template <class... A> static Pp* e_cnd(A... a) { return qnum_f_cub_spline_interp_e_cnd(a...); }
    template <class... A> static Pp* interp(A... a) { return qnum_f_cub_spline_interp(a...); }
    template <class... A> static Pp* shape(A... a) { return qnum_f_cub_spline_interp_shape(a...); }
    template <class... A> static Pp* smooth(A... a) { return qnum_f_cub_spline_smooth(a...); }
    template <class... A> static float value(A... a) { return qnum_f_cub_spline_value(a...); }
    static float integral(float a, float b, Pp* p) { return qnum_f_cub_spline_integral(a, b, p); }
    template <class... A> static Pp* create(A... a) { return qnum_f_ppoly_create(a...); }
};

template <>
struct Api<double> {
    using Pp = Qnum_d_ppoly;
    template <class... A> static Pp* e_cnd(A... a) { return qnum_d_cub_spline_interp_e_cnd(a...); }
    template <class... A> static Pp* interp(A... a) { return qnum_d_cub_spline_interp(a...); }
    template <class... A> static Pp* shape(A... a) { return qnum_d_cub_spline_interp_shape(a...); }
    template <class... A> static Pp* smooth(A... a) { return qnum_d_cub_spline_smooth(a...); }
    template <class... A> static double value(A... a) { return qnum_d_cub_spline_value(a...); }
    static double integral(double a, double b, Pp* p) { return qnum_d_cub_spline_integral(a, b, p); }
    template <class... A> static Pp* create(A... a) { return qnum_d_ppoly_create(a...); }
};

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
T at(Pp<T>* p, T x, int deriv = 0) {
    return Api<T>::value(x, p, QNUM_DERIV, deriv, 0);
}

// Largest |coefficient| of a spline: the scale of its rounding errors.
template <class T>
T scale_of(const Pp<T>* p) {
    T s = 0;
    for (int i = 0; i < p->num_coef[0]; ++i) s = std::max(s, std::abs(p->coef[0][i]));
    return s;
}

// One case of data/interp/splines.txt.
struct RefCase {
    std::string name, kind;
    int ileft = 0, iright = 0;
    double left = 0, right = 0;
    std::vector<double> x, f;
    struct Point { double x, d[4]; };
    std::vector<Point> points;
    struct Integral { double a, b, v; };
    std::vector<Integral> integrals;
};

inline std::vector<RefCase> load_cases() {
    std::ifstream in(std::string(QNUM_TEST_DATA_DIR) + "/interp/splines.txt");
    std::vector<RefCase> cases;
    std::string line, word;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream s(line);
        s >> word;
        if (word == "case") {
            RefCase c;
            int n;
            s >> c.name >> c.kind >> c.ileft >> c.left >> c.iright >> c.right >> n;
            c.x.resize(n), c.f.resize(n);
            for (auto* v : {&c.x, &c.f}) {
                std::getline(in, line);
                std::istringstream t(line);
                t >> word;
                for (double& e : *v) t >> e;
            }
            cases.push_back(c);
        } else if (word == "eval" || word == "integral") {
            int m;
            s >> m;
            for (int k = 0; k < m; ++k) {
                std::getline(in, line);
                std::istringstream t(line);
                if (word == "eval") {
                    RefCase::Point p;
                    t >> p.x >> p.d[0] >> p.d[1] >> p.d[2] >> p.d[3];
                    cases.back().points.push_back(p);
                } else {
                    RefCase::Integral q;
                    t >> q.a >> q.b >> q.v;
                    cases.back().integrals.push_back(q);
                }
            }
        }
    }
    return cases;
}

template <class T>
std::vector<T> cast(const std::vector<double>& v) {
    return std::vector<T>(v.begin(), v.end());
}

}  // namespace qnum::test

namespace qnum::test {

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

}  // namespace qnum::test
