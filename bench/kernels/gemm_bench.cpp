// Level 3 kernels beside OpenBLAS, both on one thread, through the public entry points:
// square dgemm and sgemm, zgemm and cgemm, and dtrsm (left, lower, no transpose, unit
// diagonal). Prints GFLOP/s per run and, at the end, the time ratio qnum / OpenBLAS per case.
#include <cstdlib>

#include "bench_common.hpp"

namespace {

using namespace kbench;

template <class T>
void bench_gemm(benchmark::State& state, bool ours) {
    const int n = static_cast<int>(state.range(0));
    const std::size_t nn = static_cast<std::size_t>(n) * n;
    const auto a = random_matrix<T>(nn, 1), b = random_matrix<T>(nn, 2);
    std::vector<T> c(nn);
    for (auto _ : state) {
        if (ours) qnum_gemm(n, a.data(), b.data(), c.data());
#ifdef QNUM_HAVE_OPENBLAS
        if (!ours) peer_gemm(n, a.data(), b.data(), c.data());
#endif
        benchmark::DoNotOptimize(c.data());
    }
    const double flops = (std::is_same_v<T, cf> || std::is_same_v<T, cd> ? 8.0 : 2.0) * nn * n;
    state.counters["GFLOP/s"] =
        benchmark::Counter(flops * 1e-9, benchmark::Counter::kIsIterationInvariantRate);
}

// op(A) X = B with A unit lower triangular, m = n: n^3 flops. The right-hand sides are
// restored outside the timing.
void bench_dtrsm(benchmark::State& state, bool ours) {
    const int n = static_cast<int>(state.range(0));
    const std::size_t nn = static_cast<std::size_t>(n) * n;
    const auto a = random_matrix<double>(nn, 3), b0 = random_matrix<double>(nn, 4);
    std::vector<double> b(nn);
    const double one = 1;
    for (auto _ : state) {
        state.PauseTiming();
        b = b0;
        state.ResumeTiming();
        if (ours) qnum_dtrsm("L", 1, "L", 1, "N", 1, "U", 1, &n, &n, &one, a.data(), &n, b.data(), &n);
#ifdef QNUM_HAVE_OPENBLAS
        if (!ours)
            cblas_dtrsm(CblasColMajor, CblasLeft, CblasLower, CblasNoTrans, CblasUnit, n, n, 1.0, a.data(), n,
                        b.data(), n);
#endif
        benchmark::DoNotOptimize(b.data());
    }
    state.counters["GFLOP/s"] =
        benchmark::Counter(1.0 * nn * n * 1e-9, benchmark::Counter::kIsIterationInvariantRate);
}

}  // namespace

int main(int argc, char** argv) {
    setenv("QNUM_NUM_THREADS", "1", 1);  // read at the first call: one thread on both sides
#ifdef QNUM_HAVE_OPENBLAS
    openblas_set_num_threads(1);
    const bool peer = true;
#else
    const bool peer = false;  // without OpenBLAS only our own times are measured
#endif
    qnum_skip_signal_handler();
    struct Case {
        const char* name;
        void (*fn)(benchmark::State&, bool);
        std::vector<int> sizes;
    };
    const Case cases[] = {
        {"BM_dgemm", bench_gemm<double>, {500, 1000, 2000}},
        {"BM_sgemm", bench_gemm<float>, {500, 1000, 2000}},
        {"BM_zgemm", bench_gemm<cd>, {1000}},
        {"BM_cgemm", bench_gemm<cf>, {1000}},
        {"BM_dtrsm", bench_dtrsm, {2000}},
    };
    const int rounds = 3;
    for (int round = 0; round < rounds; ++round)
        for (const Case& c : cases)
            for (int n : c.sizes)
                for (bool ours : {true, false}) {
                    if (!ours && !peer) continue;
                    const std::string name = std::string(c.name) + (ours ? "/qnum" : "/openblas");
                    benchmark::RegisterBenchmark(name.c_str(), c.fn, ours)
                        ->Arg(n)
                        ->Unit(benchmark::kMillisecond)
                        ->MinTime(n >= 2000 ? 1.0 : 0.3);
                }
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print_ratios();
    benchmark::Shutdown();
    return 0;
}
