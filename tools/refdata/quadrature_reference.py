#!/usr/bin/env python3
"""Exact values of the quadrature battery (tools/refdata/quadrature_battery.h) with mpmath at
40 digits: closed forms where they exist, else mpmath's own tanh-sinh quadrature split at the
integrand's trouble spots (a different method from the routines under test).

usage: python3 tools/refdata/quadrature_reference.py > data/quadrature/reference.txt
       python3 tools/refdata/quadrature_reference.py --moments > data/quadrature/moments.txt

--moments writes the Chebyshev moments int_{-1}^{1} cos(p x) T_k(x) dx (k even) and
sin(p x) T_k(x) dx (k odd), k = 0..24, of the oscillatory rules, by quadrature in the angle
(x = cos t), for p on both sides of the switch between the two ways of computing them.
"""
import sys
import mpmath as mp

mp.mp.dps = 40
pi, e = mp.pi, mp.e
log, exp, sqrt, sin, cos, inf = mp.log, mp.exp, mp.sqrt, mp.sin, mp.cos, mp.inf
q = mp.quad


def pv(f, a, b, c):
    """Cauchy principal value of f(x)/(x-c) over [a, b] (a < b): the regular part plus f(c)
    times the logarithm; for c outside [a, b] the plain integral."""
    if not (a < c < b):
        return q(lambda x: f(x) / (x - c), [a, b])
    g = lambda x: (f(x) - f(c)) / (x - c)
    return q(g, [a, c, b]) + f(c) * log((b - c) / (c - a))


def alg_log(f, a, b, w, al, be):
    def g(x):
        v = f(x) * (x - a) ** al * (b - x) ** be
        if w in (2, 4):
            v *= log(x - a)
        if w in (3, 4):
            v *= log(b - x)
        return v
    return q(g, [a, (a + b) / 2, b])


step = mp.mpf(1) / 3
cases = [
    ("qag_exp", e - 1),
    ("qag_poly", mp.mpf(1)),
    ("qag_peak", (mp.atan(0.7 / sqrt(mp.mpf('0.001'))) + mp.atan(0.3 / sqrt(mp.mpf('0.001')))) / sqrt(mp.mpf('0.001'))),
    ("qag_xsin", -2 * pi / 30),
    ("qag_step", step + e - exp(step)),
    ("xm099", mp.mpf(100)),
    ("x26log", 1 / mp.mpf('3.6') ** 2),
    ("xm09log", 1 / mp.mpf('0.1') ** 2),
    ("xm05log", 1 / mp.mpf('0.5') ** 2),
    ("logsqrt", mp.mpf(-4)),
    ("twoends", mp.mpf(4)),  # 2 from each end
    ("qagi_lorentz_2", pi),
    ("qagi_x2exp_1", mp.mpf(2)),
    ("qagi_log100_1", -pi * log(10) / 20),
    ("qagi_lorentz_m1", 3 * pi / 4),
    ("qawo_log_sin", q(lambda x: log(x) * sin(10 * pi * x), mp.linspace(0, 1, 41))),
    ("qawo_log1m_sin", q(lambda x: log(1 - x) * sin(10 * pi * x), mp.linspace(-1, 1, 81))),
    ("qawo_exp_cos", q(lambda x: exp(-x) * cos(20 * x), mp.linspace(0, 2, 41))),
    ("qawo_lorentz_cos", q(lambda x: cos(3 * x) / (1 + x * x), [-1, 0, 1, 2, 3, 4])),
    ("qawo_peak_sym", q(lambda x: cos(3 * x) / ((x - 0.3) ** 2 + 0.001), [-1, 0.3, 1])),
    ("qawo_peak_sin", q(lambda x: sin(40 * x) / ((x - 0.3) ** 2 + 0.001), mp.linspace(0, 1, 41))),
    ("qawf_lorentz_cos", pi / (2 * e)),
    ("qawf_xlorentz_sin", pi / (2 * e)),
    ("qawf_expm_sin", mp.mpf(2) / 5),
    # x^(-1/2) e^(-x/4) cos x in closed form (Gamma(1/2) Re (1/4 - i)^(-1/2)); a Lorentzian peak
    # of half-width w at c over the whole line in closed form, less its smooth part on (-inf, 0].
    ("qawf_isqpk_cos", sqrt(pi) * mp.re((mp.mpf(1) / 4 - 1j) ** -0.5) + pi / mp.mpf("0.1") * exp(-mp.mpf("0.1")) * cos(20)
     - mp.quadosc(lambda y: cos(y) / ((y + 20) ** 2 + mp.mpf("0.01")), [0, inf], omega=1)),
    ("qawf_isqpk2_sin", q(lambda x: sin(x) / (sqrt(x) * (1 + x)), [0, 1])
     + mp.quadosc(lambda x: sin(x) / (sqrt(x) * (1 + x)), [1, inf], omega=1)
     + pi / sqrt(mp.mpf("0.1")) * exp(-sqrt(mp.mpf("0.1"))) * sin(30)
     + mp.quadosc(lambda y: sin(y) / ((y + 30) ** 2 + mp.mpf("0.1")), [0, inf], omega=1)),
    ("qawc_cubic", log(mp.mpf(125) / 631) / 18),
    ("qawc_exp_rev", -pv(exp, -1, 1, mp.mpf('0.5'))),
    ("qawc_far", pv(lambda x: 1 / (1 + x * x), 0, 1, 3)),
    ("qng_gauss", sqrt(pi) / 2 * mp.erf(3)),
    ("qng_sqrt", mp.mpf(2) / 3),
    ("qng_sqrtshift", (mp.mpf('3.01') ** 1.5 - mp.mpf('0.01') ** 1.5) * 2 / 3),
    ("qagp_cubiclog", q(lambda x: x ** 3 * log(abs((x * x - 1) * (x * x - 2))), [0, 1, sqrt(2), 3])),
    ("qaws_one_w1", pi),
    ("qaws_cos_w2", alg_log(cos, 0, 1, 2, 0, 0)),
    ("qaws_exp_w3", alg_log(lambda x: exp(-x), 0, 2, 3, mp.mpf('0.5'), mp.mpf('-0.3'))),
    ("qaws_exp_w4", alg_log(lambda x: exp(-x), 0, 1, 4, mp.mpf('-0.5'), mp.mpf('0.3'))),
    ("qaws_peak_w1", q(lambda x: x ** -0.5 / ((x - 0.3) ** 2 + 0.001), [0, 0.3, 1])),
    ("qaws_peak_right", q(lambda x: x ** -0.5 / ((x - 0.3) ** 2 + 0.001), [0, 0.3, 0.5])),
    ("qaws_peak_w4", q(lambda x: x ** 0.5 * (1 - x) ** -0.5 * log(x) * log(1 - x) / ((x - 0.3) ** 2 + 0.001),
                       [0, 0.3, 1])),
]


def moments():
    print("# made by tools/refdata/quadrature_reference.py --moments (mpmath %s, 40 digits): p k value"
          % mp.__version__)
    for p in (mp.mpf('2.5'), mp.mpf(7), mp.mpf(23.5), mp.mpf('24.5'), mp.mpf(60), mp.mpf(300)):
        for k in range(25):
            w = (lambda t: cos(p * cos(t))) if k % 2 == 0 else (lambda t: sin(p * cos(t)))
            v = q(lambda t: cos(k * t) * w(t) * sin(t), mp.linspace(0, pi, 4 + int(p)))
            print(mp.nstr(p, 6), k, mp.nstr(v, 30))


if len(sys.argv) > 1 and sys.argv[1] == '--moments':
    moments()
else:
    print("# made by tools/refdata/quadrature_reference.py (mpmath %s, 40 digits): id value" % mp.__version__)
    for name, v in cases:
        print(name, mp.nstr(v, 30))
