#!/usr/bin/env python3
"""Writes a large fixed-column MPS file for the reader's benchmark (about 75 MB).

    python3 tools/gen_mps_big.py [path, default build-bench/bench/big.mps]

50,000 rows (E, L and G, after one N row), 200,000 columns with 10 coefficients each (2,000,000
in all, two per line, and an objective coefficient on every other column), every fifth column integer between 'MARKER' lines, a right-hand side
for every row, ranges on every tenth row and bounds (UP, LO, FX, MI, BV) on 80,000 columns.
The values are fixed by a seed, so every run writes the same bytes. Keep the file out of the
repository; it lives in a build directory.
"""
import os
import random
import sys

ROWS, COLUMNS, PER_COLUMN = 50_000, 200_000, 10


def fmt(v):
    return ("%.6g" % v)[:12]


def line(n1, n2, v1, n3="", v2=""):
    s = "    %-8s  %-8s  %12s" % (n1, n2, v1)
    if n3:
        s += "   %-8s  %12s" % (n3, v2)
    return s + "\n"


def main():
    path = sys.argv[1] if len(sys.argv) > 1 else "build-bench/bench/big.mps"
    os.makedirs(os.path.dirname(path) or ".", exist_ok=True)
    rnd = random.Random(20261123)
    out = []
    out.append("NAME          BIGBENCH\nROWS\n N  COST\n")
    kinds = "ELG"
    for i in range(ROWS):
        out.append(" %s  R%07d\n" % (kinds[i % 3], i))
    out.append("COLUMNS\n")
    in_int = False
    for j in range(COLUMNS):
        want_int = j % 5 == 0
        if want_int != in_int:
            out.append(line("MARKER", "'MARKER'", "", "'INTORG'" if want_int else "'INTEND'", "")
                       .replace("              \n", "\n"))
            in_int = want_int
        name = "C%07d" % j
        rows = ["COST"] * (j % 2 == 0) + ["R%07d" % r for r in rnd.sample(range(ROWS), PER_COLUMN)]
        for k in range(0, len(rows), 2):
            if k + 1 < len(rows):
                out.append(line(name, rows[k], fmt(rnd.uniform(-100, 100)),
                                rows[k + 1], fmt(rnd.uniform(-100, 100))))
            else:
                out.append(line(name, rows[k], fmt(rnd.uniform(-100, 100))))
    if in_int:
        out.append("    MARKER    'MARKER'                 'INTEND'\n")
    out.append("RHS\n")
    for i in range(0, ROWS, 2):
        out.append(line("RHS", "R%07d" % i, fmt(rnd.uniform(-1e3, 1e3)),
                        "R%07d" % (i + 1), fmt(rnd.uniform(-1e3, 1e3))))
    out.append("RANGES\n")
    for i in range(0, ROWS, 20):
        out.append(line("RNG", "R%07d" % i, fmt(rnd.uniform(1, 50)),
                        "R%07d" % (i + 10), fmt(rnd.uniform(1, 50))))
    out.append("BOUNDS\n")
    types = ["UP", "LO", "FX", "MI", "BV"]
    for j in range(0, COLUMNS, 5):
        for t in range(2):
            kind = types[(j // 5 + t) % 5]
            value = "" if kind in ("MI", "BV") else fmt(rnd.uniform(-10, 100))
            out.append((" %s BND       C%07d  %12s" % (kind, j + t, value)).rstrip() + "\n")
    out.append("ENDATA\n")
    with open(path, "w") as f:
        f.writelines(out)
    print("%s: %d bytes" % (path, os.path.getsize(path)))


if __name__ == "__main__":
    main()
