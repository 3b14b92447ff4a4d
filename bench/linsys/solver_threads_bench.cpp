// The dense solvers on every core the process may use, beside LAPACKE on OpenBLAS with the
// same number of threads, and beside themselves on one thread: qnum_d_lin_sol_gen against
// dgesv + dgecon and qnum_d_lin_sol_posdef against dposv + dpocon, n = 2000. Wall time, best
// of alternating rounds; at the end the ratios qnum / LAPACKE (all threads on both sides) and
// qnum all threads / qnum one thread, with the load average before and after.
#include <cstdio>
#include <cstdlib>

#include "../kernels/bench_common.hpp"

#ifdef QNUM_HAVE_LAPACKE
#include <lapacke.h>
#endif
#include "frame/threads.hpp"

namespace {

// Who runs: ours on all threads, ours on one, the peer on all.
enum Side { Ours = 0, OursOne = 1, Peer = 2 };
const char* const side_names[] = {"qnum", "qnum1", "lapacke"};

// A random n by n matrix; symmetric with a dominant diagonal when spd.
std::vector<double> random_matrix(int n, unsigned seed, bool spd) {
    std::mt19937 g(seed);
    std::uniform_real_distribution<double> d(-1, 1);
    std::vector<double> a(static_cast<std::size_t>(n) * n);
    for (auto& v : a) v = d(g);
    if (spd)
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < i; ++j) a[static_cast<std::size_t>(i) * n + j] = a[static_cast<std::size_t>(j) * n + i];
            a[static_cast<std::size_t>(i) * n + i] = n;
        }
    return a;
}

// A x = b with the condition estimate. Ours takes the row-major matrix; the peer factors its
// column-major view (A^T) and solves with the transpose, estimating the 1-norm condition of
// A^T by the infinity norm.
void bench_solve(benchmark::State& state, Side side, bool spd) {
    const int n = static_cast<int>(state.range(0));
    std::vector<double> a = random_matrix(n, spd ? 3 : 1, spd), b(n, 1.0);
    std::vector<double> work(a.size()), x(n), w(4 * static_cast<std::size_t>(n));
    std::vector<int> piv(n), iw(n);
    qnum::threads::set_for_tests(side == OursOne ? 1 : 0);
    for (auto _ : state) {
        if (side != Peer) {
            double cond;
            if (spd)
                qnum_d_lin_sol_posdef(n, a.data(), b.data(), QNUM_RETURN_USER, x.data(), QNUM_CONDITION, &cond, 0);
            else
                qnum_d_lin_sol_gen(n, a.data(), b.data(), QNUM_RETURN_USER, x.data(), QNUM_CONDITION, &cond, 0);
        }
#ifdef QNUM_HAVE_LAPACKE
        if (side == Peer) {
            work = a;
            x = b;
            double rcond;
            if (spd) {
                const double an = LAPACKE_dlansy_work(LAPACK_COL_MAJOR, '1', 'L', n, work.data(), n, w.data());
                LAPACKE_dposv_work(LAPACK_COL_MAJOR, 'L', n, 1, work.data(), n, x.data(), n);
                LAPACKE_dpocon_work(LAPACK_COL_MAJOR, 'L', n, work.data(), n, an, &rcond, w.data(), iw.data());
            } else {
                const double an = LAPACKE_dlange_work(LAPACK_COL_MAJOR, 'I', n, n, work.data(), n, w.data());
                LAPACKE_dgetrf_work(LAPACK_COL_MAJOR, n, n, work.data(), n, piv.data());
                LAPACKE_dgecon_work(LAPACK_COL_MAJOR, 'I', n, work.data(), n, an, &rcond, w.data(), iw.data());
                LAPACKE_dgetrs_work(LAPACK_COL_MAJOR, 'T', n, 1, work.data(), n, piv.data(), x.data(), n);
            }
            benchmark::DoNotOptimize(rcond);
        }
#endif
        benchmark::DoNotOptimize(x.data());
    }
    qnum::threads::set_for_tests(0);
    const double flops = (spd ? 1.0 / 3.0 : 2.0 / 3.0) * n * double(n) * n;
    state.counters["GFLOP/s"] = benchmark::Counter(flops * 1e-9, benchmark::Counter::kIsIterationInvariantRate);
}

void print_load(const char* when) {
    double l[3];
    if (getloadavg(l, 3) == 3) std::printf("load average %s: %.2f %.2f %.2f\n", when, l[0], l[1], l[2]);
}

}  // namespace

int main(int argc, char** argv) {
    const int threads = qnum::threads::configured();
#ifdef QNUM_HAVE_LAPACKE
    openblas_set_num_threads(threads);
    const bool peer = true;
#else
    const bool peer = false;
#endif
    std::printf("threads: %d, path: %s\n", threads, qnum_tuned_path());
    print_load("before");
    qnum_skip_signal_handler();
    qnum_error_options(QNUM_SET_PRINT, QNUM_WARNING, 0, 0);
    const int rounds = 3;
    for (int round = 0; round < rounds; ++round)
        for (bool spd : {false, true})
            for (Side side : {Ours, OursOne, Peer}) {
                if (side == Peer && !peer) continue;
                const std::string name = std::string(spd ? "BM_dposdef" : "BM_dgen") + "/" + side_names[side];
                benchmark::RegisterBenchmark(name.c_str(), [side, spd](benchmark::State& s) { bench_solve(s, side, spd); })
                    ->Arg(2000)
                    ->Unit(benchmark::kMillisecond)
                    ->UseRealTime()
                    ->MinTime(0.5);
            }
    benchmark::Initialize(&argc, argv);
    kbench::RatioReporter reporter(true);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print_ratios("qnum", "lapacke", "qnum / LAPACKE, all threads on both sides");
    reporter.print_ratios("qnum", "qnum1", "qnum all threads / qnum one thread");
    print_load("after");
    benchmark::Shutdown();
    return 0;
}
