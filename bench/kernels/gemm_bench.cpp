// Level 3 kernels beside OpenBLAS, both on one thread, through the public entry points:
// square dgemm and sgemm, zgemm and cgemm, and dtrsm (left, lower, no transpose, unit
// diagonal). Prints GFLOP/s per run and, at the end, the time ratio qnum / OpenBLAS per case.
#include <benchmark/benchmark.h>
#ifdef QNUM_HAVE_OPENBLAS
#include <cblas.h>
#endif

#include <complex>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "qnummath.h"

namespace {

using cf = std::complex<float>;
using cd = std::complex<double>;

template <class T>
std::vector<T> random_matrix(std::size_t n, unsigned seed) {
    std::mt19937 g(seed);
    std::uniform_real_distribution<double> u(-1, 1);
    std::vector<T> v(n);
    for (auto& x : v) {
        if constexpr (std::is_same_v<T, cf> || std::is_same_v<T, cd>)
            x = T(u(g), u(g));
        else
            x = static_cast<T>(u(g));
    }
    return v;
}

void qnum_gemm(int n, const float* a, const float* b, float* c) {
    const float one = 1, zero = 0;
    qnum_sgemm("N", 1, "N", 1, &n, &n, &n, &one, a, &n, b, &n, &zero, c, &n);
}
void qnum_gemm(int n, const double* a, const double* b, double* c) {
    const double one = 1, zero = 0;
    qnum_dgemm("N", 1, "N", 1, &n, &n, &n, &one, a, &n, b, &n, &zero, c, &n);
}
void qnum_gemm(int n, const cf* a, const cf* b, cf* c) {
    const cf one = 1, zero = 0;
    auto p = [](const cf* x) { return reinterpret_cast<const qnum_f_complex*>(x); };
    qnum_cgemm("N", 1, "N", 1, &n, &n, &n, p(&one), p(a), &n, p(b), &n, p(&zero),
               reinterpret_cast<qnum_f_complex*>(c), &n);
}
void qnum_gemm(int n, const cd* a, const cd* b, cd* c) {
    const cd one = 1, zero = 0;
    auto p = [](const cd* x) { return reinterpret_cast<const qnum_d_complex*>(x); };
    qnum_zgemm("N", 1, "N", 1, &n, &n, &n, p(&one), p(a), &n, p(b), &n, p(&zero),
               reinterpret_cast<qnum_d_complex*>(c), &n);
}

#ifdef QNUM_HAVE_OPENBLAS
void peer_gemm(int n, const float* a, const float* b, float* c) {
    cblas_sgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, n, n, n, 1.0f, a, n, b, n, 0.0f, c, n);
}
void peer_gemm(int n, const double* a, const double* b, double* c) {
    cblas_dgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, n, n, n, 1.0, a, n, b, n, 0.0, c, n);
}
void peer_gemm(int n, const cf* a, const cf* b, cf* c) {
    const cf one = 1, zero = 0;
    cblas_cgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, n, n, n, &one, a, n, b, n, &zero, c, n);
}
void peer_gemm(int n, const cd* a, const cd* b, cd* c) {
    const cd one = 1, zero = 0;
    cblas_zgemm(CblasColMajor, CblasNoTrans, CblasNoTrans, n, n, n, &one, a, n, b, n, &zero, c, n);
}

#endif

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

// Keeps the CPU time per call of every run, by name, to print qnum / OpenBLAS ratios at the
// end. Each case runs in several rounds, ours and the peer's alternating, and the ratio takes
// each side's best round: on a shared machine the slow rounds measure the neighbours. CPU
// time, not wall time, for the same reason; for one thread computing they are the same thing.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& r : runs)
            if (r.run_type == Run::RT_Iteration && !r.error_occurred) {
                const std::string key = r.run_name.function_name + "/" + r.run_name.args;
                auto it = best_.find(key);
                const double t = r.GetAdjustedCPUTime();
                if (it == best_.end() || t < it->second) best_[key] = t;
            }
    }
    void print_ratios() const {
        std::printf("\nratio qnum / OpenBLAS (best CPU time per call over the rounds, lower is better)\n");
        for (const auto& [name, t] : best_) {
            const std::size_t at = name.find("/qnum/");
            if (at == std::string::npos) continue;
            const auto it = best_.find(name.substr(0, at) + "/openblas/" + name.substr(at + 6));
            if (it == best_.end()) continue;
            std::printf("  %-28s %.3f\n", (name.substr(0, at) + "/" + name.substr(at + 6)).c_str(),
                        t / it->second);
        }
    }

private:
    std::map<std::string, double> best_;
};

}  // namespace

int main(int argc, char** argv) {
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
