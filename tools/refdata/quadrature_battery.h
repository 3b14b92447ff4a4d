/* The quadrature test battery, shared by the reference-data generators (C, double precision).
 * Each case: an id, the routine family, the integrand, and the arguments. The test suite
 * keeps its own copy of the integrands (tests/quadrature/battery.hpp) under the same ids. */
#ifndef QUADRATURE_BATTERY_H
#define QUADRATURE_BATTERY_H
#include <math.h>

static double b_exp(double x) { return exp(x); }
static double b_poly(double x) { return 3 * x * x - 2 * x + 1; }
static double b_peak(double x) { return 1 / ((x - 0.3) * (x - 0.3) + 0.001); }
static double b_xsin(double x) { return x * sin(30 * x); }
static double b_step(double x) { return x < 1.0 / 3 ? 1 : exp(x); }
static double b_x26log(double x) { return pow(x, 2.6) * log(1 / x); }
static double b_xm09log(double x) { return pow(x, -0.9) * log(1 / x); }
static double b_xm05log(double x) { return pow(x, -0.5) * log(1 / x); }
static double b_logsqrt(double x) { return log(x) / sqrt(x); }
static double b_lorentz(double x) { return 1 / (1 + x * x); }
static double b_x2exp(double x) { return x * x * exp(-x); }
static double b_log100(double x) { return log(x) / (1 + 100 * x * x); }
static double b_guardlog(double x) { return x == 0 ? 0 : log(x); }
static double b_log1m(double x) { return x == 1 ? 0 : log(1 - x); }
static double b_isqpk(double x) { return x == 0 ? 0 : exp(-x / 4) / sqrt(x) + 1 / ((x - 20) * (x - 20) + 0.01); }
static double b_isqpk2(double x) { return x == 0 ? 0 : 1 / (sqrt(x) * (1 + x)) + 1 / ((x - 30) * (x - 30) + 0.1); }
static double b_expm(double x) { return exp(-x); }
static double b_xlorentz(double x) { return x / (1 + x * x); }
static double b_cubic_c(double x) { return 1 / (5 * x * x * x + 6); }
static double b_gauss(double x) { return exp(-x * x); }
static double b_sqrt(double x) { return sqrt(x); }
static double b_sqrtshift(double x) { return sqrt(x + 0.01); }
static double b_qagp(double x) { return x * x * x * log(fabs((x * x - 1) * (x * x - 2))); }
static double b_one(double x) { (void)x; return 1; }
static double b_cos(double x) { return cos(x); }
static double b_xm099(double x) { return pow(x, -0.99); }
static double b_twoends(double x) { return 1 / sqrt(x) + 1 / sqrt(1 - x); }

#endif
