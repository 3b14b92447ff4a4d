// The threaded Level 3 kernels on every core the process may use, beside OpenBLAS on the same
// number of threads, and beside themselves on one thread: dgemm and sgemm n = 1000, 2000,
// zgemm n = 1000, dtrsm n = 2000. Wall time, best of several alternating rounds. At the end
// it prints the ratios qnum / OpenBLAS (all threads both) and qnum all threads / qnum one.
#include "bench_common.hpp"
#include "frame/cpu.hpp"
#include "frame/threads.hpp"

namespace {

using namespace kbench;

// Who runs: ours on all threads, ours on one, the peer on all.
enum Side { Ours = 0, OursOne = 1, Peer = 2 };
const char* const side_names[] = {"qnum", "qnum1", "openblas"};

template <class T>
void bench_gemm(benchmark::State& state, Side side) {
    const int n = static_cast<int>(state.range(0));
    const std::size_t nn = static_cast<std::size_t>(n) * n;
    const auto a = random_matrix<T>(nn, 1), b = random_matrix<T>(nn, 2);
    std::vector<T> c(nn);
    qnum::threads::set_for_tests(side == OursOne ? 1 : 0);
    for (auto _ : state) {
        if (side != Peer) qnum_gemm(n, a.data(), b.data(), c.data());
#ifdef QNUM_HAVE_OPENBLAS
        if (side == Peer) peer_gemm(n, a.data(), b.data(), c.data());
#endif
        benchmark::DoNotOptimize(c.data());
    }
    qnum::threads::set_for_tests(0);
    const double flops = (std::is_same_v<T, cf> || std::is_same_v<T, cd> ? 8.0 : 2.0) * nn * n;
    state.counters["GFLOP/s"] =
        benchmark::Counter(flops * 1e-9, benchmark::Counter::kIsIterationInvariantRate);
}

void bench_dtrsm(benchmark::State& state, Side side) {
    const int n = static_cast<int>(state.range(0));
    const std::size_t nn = static_cast<std::size_t>(n) * n;
    const auto a = random_matrix<double>(nn, 3), b0 = random_matrix<double>(nn, 4);
    std::vector<double> b(nn);
    const double one = 1;
    qnum::threads::set_for_tests(side == OursOne ? 1 : 0);
    for (auto _ : state) {
        state.PauseTiming();
        b = b0;
        state.ResumeTiming();
        if (side != Peer) qnum_dtrsm("L", 1, "L", 1, "N", 1, "U", 1, &n, &n, &one, a.data(), &n, b.data(), &n);
#ifdef QNUM_HAVE_OPENBLAS
        if (side == Peer)
            cblas_dtrsm(CblasColMajor, CblasLeft, CblasLower, CblasNoTrans, CblasUnit, n, n, 1.0, a.data(), n,
                        b.data(), n);
#endif
        benchmark::DoNotOptimize(b.data());
    }
    qnum::threads::set_for_tests(0);
    state.counters["GFLOP/s"] =
        benchmark::Counter(1.0 * nn * n * 1e-9, benchmark::Counter::kIsIterationInvariantRate);
}

}  // namespace

int main(int argc, char** argv) {
    const int threads = qnum::threads::configured();
#ifdef QNUM_HAVE_OPENBLAS
    openblas_set_num_threads(threads);
    const bool peer = true;
#else
    const bool peer = false;
#endif
    static const char* const paths[] = {"portable", "AVX2", "AVX-512"};
    std::printf("threads: %d, path: %s\n", threads, paths[static_cast<int>(qnum::cpu::active())]);
    qnum_skip_signal_handler();
    struct Case {
        const char* name;
        void (*fn)(benchmark::State&, Side);
        std::vector<int> sizes;
    };
    const Case cases[] = {
        {"BM_dgemm", bench_gemm<double>, {1000, 2000}},
        {"BM_sgemm", bench_gemm<float>, {1000, 2000}},
        {"BM_zgemm", bench_gemm<cd>, {1000}},
        {"BM_dtrsm", bench_dtrsm, {2000}},
    };
    const int rounds = 3;
    for (int round = 0; round < rounds; ++round)
        for (const Case& c : cases)
            for (int n : c.sizes)
                for (Side side : {Ours, OursOne, Peer}) {
                    if (side == Peer && !peer) continue;
                    const std::string name = std::string(c.name) + "/" + side_names[side];
                    benchmark::RegisterBenchmark(name.c_str(), c.fn, side)
                        ->Arg(n)
                        ->Unit(benchmark::kMillisecond)
                        ->UseRealTime()
                        ->MinTime(0.5);
                }
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter(true);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print_ratios("qnum", "openblas", "qnum / OpenBLAS, all threads on both sides");
    reporter.print_ratios("qnum", "qnum1", "qnum all threads / qnum one thread");
    benchmark::Shutdown();
    return 0;
}
