#!/usr/bin/env python3
"""Writes the structured linear programs of the linear programming benchmark as fixed MPS files.

usage: python3 tools/gen_lp_bench.py OUTDIR [--small]

Three families, each with a fixed seed so that the files are the same on every run:
  transportation  S sources with supplies, D sinks with demands, a cost per pair (S*D columns);
  multicommodity  K source-sink commodities routed over a grid network whose arcs have a shared
                  capacity (flow conservation per node and commodity, one capacity row per arc);
  production      P products over T periods on R resources: inventory balance per product and
                  period links each period to the next (a staircase), resource capacity with
                  bounded overtime, holding and overtime costs.
--small writes one small instance of each for a quick check.
"""
import os
import random
import sys


def name(prefix, k):
    digits = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"
    s = ""
    while True:
        s = digits[k % 36] + s
        k //= 36
        if k == 0:
            break
    return prefix + s


def num(v):
    s = repr(float(v))
    if s.endswith(".0"):
        s = s[:-2]
    if len(s) > 12:
        s = "%.6g" % v
    return s


class Writer:
    def __init__(self, path, title):
        self.f = open(path, "w")
        self.f.write("NAME          %s\n" % title)
        self.rows = []
        self.cols = []  # (name, [(row, value)])
        self.rhs = []
        self.bounds = []

    def row(self, kind, rname):
        self.rows.append((kind, rname))

    def close(self):
        f = self.f
        f.write("ROWS\n N  COST\n")
        for kind, r in self.rows:
            f.write(" %-2s %s\n" % (kind, r))
        f.write("COLUMNS\n")
        for c, entries in self.cols:
            for k in range(0, len(entries), 2):
                pair = entries[k:k + 2]
                line = "    %-8s  %-8s  %12s" % (c, pair[0][0], num(pair[0][1]))
                if len(pair) == 2:
                    line += "   %-8s  %12s" % (pair[1][0], num(pair[1][1]))
                f.write(line + "\n")
        f.write("RHS\n")
        for k in range(0, len(self.rhs), 2):
            pair = self.rhs[k:k + 2]
            line = "    RHS       %-8s  %12s" % (pair[0][0], num(pair[0][1]))
            if len(pair) == 2:
                line += "   %-8s  %12s" % (pair[1][0], num(pair[1][1]))
            f.write(line + "\n")
        if self.bounds:
            f.write("BOUNDS\n")
            for kind, c, v in self.bounds:
                f.write(" %-2s BND       %-8s  %12s\n" % (kind, c, num(v)))
        f.write("ENDATA\n")
        f.close()


def transportation(path, S, D, seed):
    rnd = random.Random(seed)
    w = Writer(path, "TRANSP")
    demand = [rnd.randint(10, 100) for _ in range(D)]
    total = sum(demand)
    supply = [rnd.randint(10, 100) for _ in range(S)]
    scale = 1.2 * total / sum(supply)
    supply = [int(s * scale) + 1 for s in supply]
    for i in range(S):
        w.row("L", name("S", i))
    for j in range(D):
        w.row("G", name("D", j))
    # Costs from positions in the plane, so that the problem has the structure of a real one.
    ps = [(rnd.random(), rnd.random()) for _ in range(S)]
    pd = [(rnd.random(), rnd.random()) for _ in range(D)]
    k = 0
    for i in range(S):
        for j in range(D):
            c = int(1000 * ((ps[i][0] - pd[j][0]) ** 2 + (ps[i][1] - pd[j][1]) ** 2) ** 0.5) + rnd.randint(1, 20)
            w.cols.append((name("X", k), [("COST", c), (name("S", i), 1), (name("D", j), 1)]))
            k += 1
    w.rhs = [(name("S", i), supply[i]) for i in range(S)] + [(name("D", j), demand[j]) for j in range(D)]
    w.close()


def multicommodity(path, N, K, seed):
    rnd = random.Random(seed)
    w = Writer(path, "MULTICOM")
    nodes = N * N
    arcs = []
    for r in range(N):
        for c in range(N):
            u = r * N + c
            if c + 1 < N:
                arcs += [(u, u + 1), (u + 1, u)]
            if r + 1 < N:
                arcs += [(u, u + N), (u + N, u)]
    cost = [rnd.randint(1, 30) for _ in arcs]
    cap = [rnd.randint(40, 120) for _ in arcs]
    pairs = []
    for k in range(K):
        s, t = rnd.randrange(nodes), rnd.randrange(nodes)
        while t == s:
            t = rnd.randrange(nodes)
        pairs.append((s, t, rnd.randint(5, 30)))
    for k in range(K):
        for v in range(nodes):
            w.row("E", name("N", k * nodes + v))
    for a in range(len(arcs)):
        w.row("L", name("A", a))
    col = 0
    for k in range(K):
        for a, (u, v) in enumerate(arcs):
            w.cols.append((name("F", col), [("COST", cost[a]), (name("N", k * nodes + u), -1),
                                            (name("N", k * nodes + v), 1), (name("A", a), 1)]))
            col += 1
        # An expensive direct link keeps every commodity feasible whatever the capacities.
        s, t, dem = pairs[k]
        w.cols.append((name("Z", k), [("COST", 5000), (name("N", k * nodes + s), -1), (name("N", k * nodes + t), 1)]))
    rhs = []
    for k, (s, t, dem) in enumerate(pairs):
        rhs += [(name("N", k * nodes + s), -dem), (name("N", k * nodes + t), dem)]
    w.rhs = rhs + [(name("A", a), cap[a]) for a in range(len(arcs))]
    w.close()


def production(path, P, T, R, seed):
    rnd = random.Random(seed)
    w = Writer(path, "PRODPLAN")
    use = [[rnd.choice([0, 0, 0, rnd.randint(1, 9)]) for _ in range(P)] for _ in range(R)]
    for p in range(P):
        if all(use[r][p] == 0 for r in range(R)):
            use[rnd.randrange(R)][p] = rnd.randint(1, 9)
    demand = [[rnd.randint(0, 60) for _ in range(T)] for _ in range(P)]
    need = [sum(use[r][p] * demand[p][t] for p in range(P)) for r in range(R) for t in range(T)]
    base = [int(0.8 * sum(need[r * T:(r + 1) * T]) / T) + 1 for r in range(R)]
    for t in range(T):
        for p in range(P):
            w.row("E", name("B", t * P + p))
        for r in range(R):
            w.row("L", name("C", t * R + r))
    for t in range(T):
        for p in range(P):
            entries = [("COST", rnd.randint(5, 50))]
            entries += [(name("C", t * R + r), use[r][p]) for r in range(R) if use[r][p]]
            entries.append((name("B", t * P + p), 1))
            w.cols.append((name("M", t * P + p), entries))
            inv = [("COST", rnd.randint(1, 4)), (name("B", t * P + p), -1)]
            if t + 1 < T:
                inv.append((name("B", (t + 1) * P + p), 1))
            w.cols.append((name("I", t * P + p), inv))
            # Unmet demand is allowed at a high price (so every instance is feasible).
            w.cols.append((name("U", t * P + p), [("COST", 400), (name("B", t * P + p), 1)]))
        for r in range(R):
            w.cols.append((name("O", t * R + r), [("COST", 30), (name("C", t * R + r), -1)]))
            w.bounds.append(("UP", name("O", t * R + r), base[r] // 3))
    w.rhs = [(name("B", t * P + p), demand[p][t]) for t in range(T) for p in range(P) if demand[p][t]]
    w.rhs += [(name("C", t * R + r), base[r]) for t in range(T) for r in range(R)]
    w.close()


def main():
    if len(sys.argv) < 2:
        print(__doc__)
        sys.exit(2)
    out = sys.argv[1]
    os.makedirs(out, exist_ok=True)
    if "--small" in sys.argv:
        transportation(os.path.join(out, "transp_s.mps"), 10, 20, 1)
        multicommodity(os.path.join(out, "mcf_s.mps"), 4, 3, 2)
        production(os.path.join(out, "prod_s.mps"), 8, 4, 3, 3)
        return
    transportation(os.path.join(out, "transp1.mps"), 40, 500, 11)
    transportation(os.path.join(out, "transp2.mps"), 60, 1000, 12)
    multicommodity(os.path.join(out, "mcf1.mps"), 10, 40, 21)
    multicommodity(os.path.join(out, "mcf2.mps"), 14, 60, 22)
    production(os.path.join(out, "prod1.mps"), 100, 16, 15, 31)
    production(os.path.join(out, "prod2.mps"), 120, 24, 16, 32)


if __name__ == "__main__":
    main()
