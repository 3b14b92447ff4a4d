#!/usr/bin/env python3
"""Reference values of the special functions, from mpmath at 50 digits.

Usage: python3 tools/refdata/gen_functions_ref.py data/special

Writes one file per function, <name>.ref: a first text line naming this command and the record
layout, then little-endian binary records of nargs float64 arguments, the value rounded to
float64 (hi) and the relative rounding residue (value - hi)/hi as float32. Each file holds 10000 points
exact in float, then 2000 points that are exact only in double; the tests of the float routines
use the first kind only. Points spread over each domain: log-uniform magnitudes of both signs,
near zeros, poles and branch points, near the overflow and underflow limits of both precisions.
Values are computed from definitions independent of the library's series: erf and erfc through
the incomplete gamma function, the inverse functions by root finding, log-gamma through
mpmath's log-gamma, the beta functions through gamma quotients or hypergeometric sums.
"""
import os
import random
import struct
import sys

import mpmath as mp

mp.mp.dps = 50
N_FLOAT, N_DOUBLE = 10000, 2000


def f32(v):
    return struct.unpack("<f", struct.pack("<f", v))[0]


def loguni(rng, lo, hi):
    return 10 ** rng.uniform(lo, hi)


# ---- point generators: each returns one tuple of arguments; `exact` rounds them ----

def erf_pt(rng):
    k = rng.random()
    if k < 0.6:
        x = loguni(rng, -40, 0.8)
    elif k < 0.8:
        x = rng.uniform(0, 6.5)
    else:
        x = rng.choice([1.0, 5.9, 6.0, 1e-4, 1.5e-8, 3.5e-4]) * (1 + rng.uniform(-1e-3, 1e-3))
    return (x * rng.choice([-1, 1]),)


def erfc_pt(rng):
    k = rng.random()
    if k < 0.4:
        x = loguni(rng, -20, 1.43)
    elif k < 0.7:
        x = rng.uniform(-6.5, 27.3)
    elif k < 0.85:
        x = rng.choice([9.19, 10.0, 26.4, 26.5, 1.0, 2.0]) * (1 + rng.uniform(-5e-3, 5e-3))
    else:
        x = -loguni(rng, -20, 0.8)
    return (x,)


def erfinv_pt(rng):
    k = rng.random()
    if k < 0.4:
        x = rng.uniform(0, 1)
    elif k < 0.7:
        x = 1 - loguni(rng, -16, -0.3)
    elif k < 0.85:
        x = loguni(rng, -40, 0)
    else:
        x = rng.choice([0.75, 0.9375]) * (1 + rng.uniform(-1e-3, 1e-3))
    x = min(x, 1 - 2 ** -53)
    return (x * rng.choice([-1, 1]),)


def erfcinv_pt(rng):
    k = rng.random()
    if k < 0.35:
        x = loguni(rng, -300, 0)
    elif k < 0.7:
        x = rng.uniform(0, 2)
    elif k < 0.85:
        x = 2 - loguni(rng, -15, -0.3)
    else:
        x = rng.choice([0.25, 1.75, 0.0625]) * (1 + rng.uniform(-1e-3, 1e-3))
    return (min(max(x, 1e-300), 2 - 2 ** -52),)


def gamma_pt(rng):
    k = rng.random()
    if k < 0.35:
        x = loguni(rng, -37, 2.234) * rng.choice([-1, 1])
    elif k < 0.55:
        x = rng.uniform(-10, 10)
    elif k < 0.75:
        x = -rng.randint(1, 169) + rng.choice([-1, 1]) * loguni(rng, -6, -0.31)
    elif k < 0.9:
        x = rng.choice([35.04, 171.62, 10.0, -10.0, -34.0, -170.5, 11.0]) + rng.uniform(-0.5, 0.5)
    else:
        x = rng.uniform(-170, 171)
    if x == round(x) and x <= 0:
        x += 0.25
    return (x,)


def lgamma_pt(rng):
    k = rng.random()
    if k < 0.3:
        x = loguni(rng, -37, 36)
    elif k < 0.45:
        x = -loguni(rng, -10, 6)
    elif k < 0.65:
        # 1 and 2 and the first negative zeros of log |gamma|
        x = rng.choice([1.0, 2.0, -2.4570247382208005, -2.7476826467274127, -3.1435427569858867,
                        -3.9552942848585784, -4.039087315838, -4.999177]) + rng.uniform(-1e-2, 1e-2)
    elif k < 0.8:
        x = -rng.randint(1, 300) + rng.choice([-1, 1]) * loguni(rng, -6, -0.31)
    else:
        x = rng.uniform(-30, 30)
    if x == round(x) and x <= 0:
        x += 0.25
    return (x,)


def beta_pt(rng):
    return (loguni(rng, -3, 2.5), loguni(rng, -3, 2.5))


def lbeta_pt(rng):
    k = rng.random()
    if k < 0.5:
        return (loguni(rng, -3, 6), loguni(rng, -3, 6))
    return (loguni(rng, -3, 1), loguni(rng, 0.9, 6))


def gammainc_pt(rng):
    a = loguni(rng, -2, 2.2)
    k = rng.random()
    x = a * loguni(rng, -1, 0.6) if k < 0.6 else loguni(rng, -4, 2.5)
    return (a, x)


def betainc_pt(rng):
    a, b = loguni(rng, -2, 3), loguni(rng, -2, 3)
    k = rng.random()
    if k < 0.5:
        x = rng.uniform(0, 1)
    elif k < 0.8:
        m = a / (a + b)
        x = min(max(m * (1 + rng.uniform(-0.5, 0.5)), 1e-30), 1 - 1e-7)
    else:
        x = loguni(rng, -30, 0)
    return (x, a, b)


def erfe_pt(rng):
    k = rng.random()
    if k < 0.7:
        x, y = loguni(rng, -4, 3) * rng.choice([-1, 1]), loguni(rng, -4, 3) * rng.choice([-1, 1])
    elif k < 0.85:
        x, y = rng.uniform(-8, 8), rng.uniform(-1e-3, 1e-3)
    else:
        x, y = rng.uniform(-6, 6), rng.uniform(-6, 6)
    if y * y - x * x > 80:  # far below the axis w(z) overflows: the error tests cover that
        y = -y
    return (x, y)


def erfe_ref(x, y):
    z = mp.mpc(x, y)
    return mp.exp(-z * z) * mp.erfc(-1j * z)


def erfcinv_ref(x):
    x = mp.mpf(x)
    if x == 1:
        return mp.mpf(0)
    t = x if x < 1 else 2 - x
    r0 = mp.sqrt(-mp.log(t))
    r = mp.findroot(lambda r: mp.log(mp.erfc(r)) - mp.log(t), r0)
    return r if x < 1 else -r


def lgamma_ref(x):
    return mp.re(mp.loggamma(mp.mpf(x)))


FUNCTIONS = [
    ("erf", erf_pt, lambda x: mp.sign(x) * mp.gammainc(mp.mpf(0.5), 0, mp.mpf(x) ** 2) / mp.sqrt(mp.pi)),
    ("erfc", erfc_pt, lambda x: mp.gammainc(mp.mpf(0.5), mp.mpf(x) ** 2) / mp.sqrt(mp.pi) if x >= 0
     else 2 - mp.gammainc(mp.mpf(0.5), mp.mpf(x) ** 2) / mp.sqrt(mp.pi)),
    ("erf_inverse", erfinv_pt, lambda x: mp.erfinv(mp.mpf(x)) if abs(x) < 0.5 else erfcinv_ref(1 - mp.mpf(x))),
    ("erfc_inverse", erfcinv_pt, erfcinv_ref),
    ("gamma", gamma_pt, lambda x: mp.gamma(mp.mpf(x))),
    ("log_gamma", lgamma_pt, lgamma_ref),
    ("beta", beta_pt, lambda a, b: mp.beta(mp.mpf(a), mp.mpf(b))),
    ("log_beta", lbeta_pt, lambda a, b: lgamma_ref(a) + lgamma_ref(b) - lgamma_ref(mp.mpf(a) + mp.mpf(b))),
    ("gamma_incomplete", gammainc_pt, lambda a, x: mp.gammainc(mp.mpf(a), 0, mp.mpf(x))),
    ("beta_incomplete", betainc_pt,
     lambda x, a, b: mp.betainc(mp.mpf(a), mp.mpf(b), 0, mp.mpf(x), regularized=True)),
    # the two parts of w(z) = exp(-z^2) erfc(-iz) at the same points (same seed)
    ("erfe_re", erfe_pt, lambda x, y: mp.re(erfe_ref(x, y)), 2000),
    ("erfe_im", erfe_pt, lambda x, y: mp.im(erfe_ref(x, y)), 2000),
]


def main():
    out = sys.argv[1]
    os.makedirs(out, exist_ok=True)
    only = sys.argv[2:]  # optional: the names of the functions to regenerate
    for idx, (name, gen, ref, *seed) in enumerate(FUNCTIONS):
        if only and name not in only:
            continue
        rng = random.Random(seed[0] if seed else 1000 + idx)
        records = []
        seen = set()
        while len(records) < N_FLOAT + N_DOUBLE:
            args = gen(rng)
            if len(records) < N_FLOAT:
                args = tuple(f32(a) for a in args)
            if args in seen or any(a != a for a in args):
                continue
            seen.add(args)
            try:
                v = ref(*args)
            except ValueError:  # rounding the arguments landed on a pole
                continue
            hi = float(v)
            finite = hi not in (float("inf"), float("-inf")) and hi != 0
            lo = float((mp.mpf(v) - hi) / hi) if finite else 0.0
            records.append(struct.pack("<" + "d" * len(args) + "df", *args, hi, lo))
        with open(os.path.join(out, name + ".ref"), "wb") as f:
            f.write(("# Generated by: python3 tools/refdata/gen_functions_ref.py data/special; records: "
                     f"{len(args)} x float64 argument, float64 value, float32 relative residue (value - hi)/hi; "
                     f"{N_FLOAT} float-exact then {N_DOUBLE} double points\n").encode())
            for r in records:
                f.write(r)
        print(name, len(records), file=sys.stderr)


if __name__ == "__main__":
    main()
