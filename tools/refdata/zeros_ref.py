#!/usr/bin/env python3
"""Reference data for the zero finder tests: data/zeros/cases.tsv.

Two independent sources per case:
  * the true zeros, from mpmath (findroot polished at 50 digits, each started at a known
    bracket), for the accuracy checks;
  * the evaluation counts, the returned zeros and the paths taken (tenfold back-offs, steps
    with a negative discriminant, eta pushes), from a plain Python model of the stated
    iteration in IEEE double, for the exact-count checks of the double routine.

Run: python3 tools/refdata/zeros_ref.py > data/zeros/cases.tsv
"""
import math
import mpmath

mpmath.mp.dps = 50

def exp(x):
    """exp with C's overflow to infinity."""
    try:
        return math.exp(x)
    except OverflowError:
        return math.inf


# name -> (python double function, mpmath function)
FUNCS = {
    "cubic_wallis": (lambda x: x * x * x - 2.0 * x - 5.0, lambda x: x**3 - 2 * x - 5),
    "cubic_123": (lambda x: ((x - 6.0) * x + 11.0) * x - 6.0, lambda x: ((x - 6) * x + 11) * x - 6),
    "double_root": (lambda x: (x * x - 3.0) * x + 2.0, lambda x: (x**2 - 3) * x + 2),
    "cos_minus_x": (lambda x: math.cos(x) - x, lambda x: mpmath.cos(x) - x),
    "exp_minus_2": (lambda x: exp(x) - 2.0, lambda x: mpmath.exp(x) - 2),
    "x2_plus_1": (lambda x: x * x + 1.0, lambda x: x**2 + 1),
    "sin": (lambda x: math.sin(x), lambda x: mpmath.sin(x)),
    "atan_shifted": (lambda x: math.atan(x - 5.0), lambda x: mpmath.atan(x - 5)),
    "quartic": (lambda x: (((x - 10.0) * x + 35.0) * x - 50.0) * x + 24.0,
                lambda x: (((x - 10) * x + 35) * x - 50) * x + 24),
}

# name, guesses, itmax, true zeros (mpmath brackets, empty when none is expected), and
# optional settings {err_abs, err_rel, eta, eps} passed as options
CASES = [
    ("cubic_wallis", [0.0], 100, [(2, 3)]),
    ("cubic_wallis", [2.0], 100, [(2, 3)]),
    ("cubic_123", [0.0, 0.0, 0.0], 100, [(0.5, 1.5), (1.5, 2.5), (2.5, 3.5)]),
    ("quartic", [0.0, 0.0, 0.0, 0.0], 100, [(0.5, 1.5), (1.5, 2.5), (2.5, 3.5), (3.5, 4.5)]),
    ("double_root", [0.0, 0.0, 0.0], 100, [(-2.5, -1.5)]),
    ("cos_minus_x", [0.0], 100, [(0, 1)]),
    ("cos_minus_x", [0.0], 1, []),
    ("cos_minus_x", [-3.0, 5.0], 1, []),
    ("cos_minus_x", [0.0], 4, []),
    ("exp_minus_2", [0.0, 0.0], 100, [(0, 1)]),
    ("x2_plus_1", [0.0], 100, []),
    ("x2_plus_1", [3.0], 30, []),
    ("sin", [3.0, 6.0, 9.5], 100, [(3, 3.3), (6, 6.5), (9, 9.8)]),
    ("sin", [3.0, 6.0, 9.5, 12.5, 15.5, 19.0, 22.0, 25.0, 28.5], 100,
     [(k * 3.14159 - 0.1, k * 3.14159 + 0.1) for k in range(1, 10)]),
    ("atan_shifted", [0.0], 100, [(4.5, 5.5)]),
    ("atan_shifted", [30.0], 100, []),
    ("cos_minus_x", [0.0], 100, [], {"err_abs": 10.0}),
    ("cos_minus_x", [0.0], 100, [], {"err_rel": 0.5}),
    ("cubic_123", [0.0, 0.0, 0.0], 100, [(0.5, 1.5), (1.5, 2.5), (2.5, 3.5)], {"eps": 0.3, "eta": 0.125}),
    ("exp_minus_2", [0.0, 0.0], 100, [(0, 1)], {"eps": 2.0, "eta": 0.5}),
]
SETTINGS = ("err_abs", "err_rel", "eta", "eps")

TOL = math.sqrt(2.0**-52)


def model(f, guesses, itmax, err_abs=TOL, err_rel=TOL, eta=0.01, eps=TOL):
    """The iteration as stated, in Python doubles. Returns zeros, counts and path counters."""
    zeros, counts = [], []
    paths = {"backoff": 0, "negdisc": 0, "push": 0}
    for i, g in enumerate(guesses):
        start = [0.9 * g, 1.1 * g, g] if g != 0.0 else [-1.0, 1.0, 0.0]
        x = start[0]
        f1 = f2 = f3 = lam = h = 0.0
        count = itmax + 1
        k = 1
        while k < itmax:
            while True:
                fx = f(x)
                fd = fx
                pushed = False
                for z in zeros:
                    if abs(x - z) < eps:
                        pushed = True
                        break
                    fd /= x - z
                if not pushed or x + eta == x:
                    break
                paths["push"] += 1
                x += eta
            if abs(fx) < err_abs and abs(fd) < err_abs:
                count = k
                break
            if k == 1:
                f1 = fd
                x = start[1]
                k += 1
                continue
            if k == 2:
                f2 = fd
                x = start[2]
                k += 1
                continue
            if k == 3:
                lam = -0.5
                h = -0.1 * g if g != 0.0 else -1.0
            elif 10.0 * abs(f3) <= abs(fd):
                paths["backoff"] += 1
                lam /= 2
                h /= 2
                x -= h
                k += 1
                continue
            else:
                f1 = f2
                f2 = f3
            f3 = fd
            delta = lam + 1.0
            gg = (delta + lam) * f3 + lam * lam * f1 - delta * delta * f2
            disc = gg * gg - 4.0 * f3 * delta * lam * (f3 + lam * f1 - delta * f2)
            if disc <= 0:
                paths["negdisc"] += 1
            s = math.sqrt(disc) if disc > 0 else 0.0
            den = gg + s
            if abs(gg + s) <= abs(gg - s):
                den = gg - s
            if den == 0:
                den = 1.0
            lam = -2.0 * f3 * delta / den
            h = lam * h
            x = x + h
            if abs(h) < abs(x) * err_rel:
                count = k
                break
            k += 1
        zeros.append(x)
        counts.append(count)
    return zeros, counts, paths


def main():
    print("# made by: python3 tools/refdata/zeros_ref.py > data/zeros/cases.tsv")
    print("# name\titmax\tguesses\tmodel_zeros\tmodel_counts\tbackoffs\tnegdisc\tpushes\ttrue_zeros"
          "\t" + "\t".join(SETTINGS))
    for name, guesses, itmax, brackets, *extra in CASES:
        settings = extra[0] if extra else {}
        f, fm = FUNCS[name]
        zeros, counts, paths = model(f, guesses, itmax, **settings)
        true = [mpmath.findroot(fm, (mpmath.mpf(a), mpmath.mpf(b)), solver="anderson") for a, b in brackets]
        fmt = lambda v: ",".join(repr(float(t)) for t in v) or "-"
        print("\t".join([name, str(itmax), fmt(guesses), fmt(zeros), ",".join(map(str, counts)),
                         str(paths["backoff"]), str(paths["negdisc"]), str(paths["push"]),
                         ",".join(mpmath.nstr(t, 25) for t in true) or "-"]
                        + [repr(settings[k]) if k in settings else "-" for k in SETTINGS]))


if __name__ == "__main__":
    main()
