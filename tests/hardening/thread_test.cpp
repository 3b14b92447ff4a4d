// Thread stress with trapping off: 8 threads make mixed calls (kernels, solvers, special
// functions, random numbers, quadrature whose integrand raises library errors itself) and
// compare every result and error state with the one the main thread computed alone. Twenty
// rounds create and join the threads; afterwards the library holds as many blocks as it did
// after the first round, so no thread's state is left behind.
#include <malloc.h>

#include <atomic>
#include <cstring>
#include <vector>

#include "frame/context.hpp"
#include "hardening.hpp"

namespace qnum::test::hard {
namespace {

// 10^5 calls per thread in all: about a minute under the thread sanitizer on two cores.
constexpr int threads = 8, rounds = 20, kinds = 8, calls_per_round = 5000;

// The integrand reports errors of its own through the library: a TERMINAL from gamma at a
// pole on part of the interval, while erf gives the value.
double noisy(double x) {
    if (x > 0.9) qnum_d_gamma(0.0);
    return qnum_d_erf(x);
}

struct Result {
    double v[4] = {};
    Outcome o{0, 0};
    bool operator==(const Result& r) const {
        return std::memcmp(v, r.v, sizeof v) == 0 && o.type == r.o.type && o.code == r.o.code;
    }
};

// Call number i of thread t; `draw` counts the random calls, whose stream the thread seeds.
Result call(int t, int kind, int i) {
    Result r;
    const double s = 1 + 0.125 * t + 0.001 * (i % 7);
    switch (kind) {
    case 0: {  // dot product and a Level 2 error
        const double x[3] = {s, 2, 3}, y[3] = {1, s, 1};
        r.v[0] = qnum_ddot(3, x, 1, y, 1);
        double a[4] = {1, 2, 3, 4}, yy[2] = {0, 0}, one = 1;
        int two = 2, inc = 1;
        forget();
        qnum_dgemv("Q", 1, &two, &two, &one, a, &two, x, &inc, &one, yy, &inc);
        break;
    }
    case 1: {  // matrix product: the per-thread packing workspace
        double a[16], b[16], c[16] = {}, one = 1, zero = 0;
        int n = 4;
        for (int k = 0; k < 16; ++k) a[k] = s + k, b[k] = 1.0 / (k + 1);
        qnum_dgemm("N", 1, "T", 1, &n, &n, &n, &one, a, &n, b, &n, &zero, c, &n);
        std::memcpy(r.v, c + 4, sizeof r.v);
        forget();
        break;
    }
    case 2: {  // a solve, and a singular one
        double a[9] = {4, 1, 0, 1, s, 1, 0, 1, 2}, b[3] = {1, 2, 3}, x[3];
        qnum_d_lin_sol_gen(3, a, b, QNUM_RETURN_USER, x, 0);
        std::memcpy(r.v, x, sizeof x);
        if (i % 2) {
            double z[9] = {1, 2, 3, 2, 4, 6, s, 1, 1};
            r.v[3] = qnum_d_lin_sol_gen(3, z, b, 0) == nullptr;
        }
        break;
    }
    case 3:  // special functions, one of them at a pole
        r.v[0] = qnum_d_erf(s / 4), r.v[1] = qnum_f_log_gamma(float(s));
        r.v[2] = qnum_d_gamma(-double(i % 3 + 1));
        break;
    case 4: {  // random numbers: the thread's own stream, seeded at the start of the round
        double* d = qnum_d_random_uniform(4, 0);
        std::memcpy(r.v, d, sizeof r.v);
        qnum_free_allocated_memory(d);
        break;
    }
    case 5:  // quadrature whose integrand raises errors
        r.v[0] = qnum_d_int_fcn(noisy, 0.0, s, 0);
        break;
    case 6:  // quadrature, plain, and a bad call of it
        r.v[0] = qnum_d_int_fcn_sing(qnum_d_erfc, 0.0, s, 0);
        r.v[1] = qnum_d_int_fcn(nullptr, 0.0, 1.0, 0);
        break;
    default: {  // spline through the thread's data
        double xd[5] = {0, 1, 2, 3, 4}, fd[5] = {0, s, 1, s, 0};
        Qnum_d_ppoly* pp = qnum_d_cub_spline_interp(5, xd, fd, 0);
        r.v[0] = qnum_d_cub_spline_value(1.5, pp, 0);
        qnum_free_allocated_memory(pp);
        break;
    }
    }
    if (r.o.type == 0) r.o = outcome();
    return r;
}

int seed(int t) { return 1000 + 37 * t; }

TEST(HardeningThreadStress, MixedCallsMatchTheSingleThreadedResults) {
    // What each thread must see: its first calls_per_round calls, made here one at a time.
    std::vector<std::vector<Result>> expected(threads);
    {
        QuietErrors quiet;
        for (int t = 0; t < threads; ++t) {
            qnum_random_seed_set(seed(t));
            for (int i = 0; i < calls_per_round; ++i) expected[t].push_back(call(t, i % kinds, i));
        }
    }
    std::atomic<long> mismatches{0}, made{0};
    long long live_after_first = 0;
    const int contexts = live_contexts();
    for (int round = 0; round < rounds; ++round) {
        std::vector<std::thread> pool;
        for (int t = 0; t < threads; ++t)
            pool.emplace_back([&, t] {
                QuietErrors quiet;
                qnum_random_seed_set(seed(t));
                for (int i = 0; i < calls_per_round; ++i)
                    if (!(call(t, i % kinds, i) == expected[t][i]) && mismatches++ < 5)
                        ADD_FAILURE() << "thread " << t << ", call " << i << " (kind " << i % kinds << ")";
                made += calls_per_round;
            });
        for (auto& th : pool) th.join();
        if (round == 0) live_after_first = live_blocks();
    }
    EXPECT_EQ(mismatches.load(), 0);
    EXPECT_EQ(made.load(), long(threads) * rounds * calls_per_round);
    EXPECT_EQ(live_blocks(), live_after_first) << "blocks left behind by threads that ended";
    EXPECT_EQ(live_contexts(), contexts);
    std::printf("%ld calls in %d threads; heap in use %zu bytes\n", made.load(), threads, mallinfo2().uordblks);
}

}  // namespace
}  // namespace qnum::test::hard
