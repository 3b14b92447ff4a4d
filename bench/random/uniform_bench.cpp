// Uniform deviates: qnum_f/d_random_uniform beside a plain loop over the standard library's
// minimal-standard engine (the same multiplier 16807, so the same seeds) converted to the
// same floats. Prints the time ratio ours/peer per precision and size at the end.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "frame/cpu.hpp"
#include "qnummath.h"

namespace {

constexpr int seed = 20240601;
const int sizes[] = {1000000, 10000000};
// The library's deviate scale: 2^-31 shrunk by one float step.
constexpr float scale = 0x1.fffffep-32f;

template <class T>
T* ours(int n, T* r) {
    if constexpr (sizeof(T) == sizeof(float))
        return qnum_f_random_uniform(n, QNUM_RETURN_USER, r, 0);
    else
        return qnum_d_random_uniform(n, QNUM_RETURN_USER, r, 0);
}

template <class T>
void peer(std::minstd_rand0& e, int n, T* r) {
    const T s = scale;
    for (int i = 0; i < n; ++i) r[i] = static_cast<T>(static_cast<std::int32_t>(e())) * s;
}

template <class T>
void bm_ours(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    std::vector<T> r(n);
    qnum_random_option(1);
    qnum_random_seed_set(seed);
    for (auto _ : state) {
        benchmark::DoNotOptimize(ours(n, r.data()));
        benchmark::ClobberMemory();
    }
    state.counters["items/s"] = benchmark::Counter(double(n), benchmark::Counter::kIsIterationInvariantRate);
}

// The one-seed-at-a-time kernel, to show what the SIMD lanes add.
template <class T>
void bm_ours_portable(benchmark::State& state) {
    qnum::cpu::force(qnum::cpu::Path::Portable);
    bm_ours<T>(state);
    qnum::cpu::reset();
}

template <class T>
void bm_ours_allocating(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    qnum_random_option(1);
    qnum_random_seed_set(seed);
    for (auto _ : state) {
        T* r;
        if constexpr (sizeof(T) == sizeof(float))
            r = qnum_f_random_uniform(n, 0);
        else
            r = qnum_d_random_uniform(n, 0);
        benchmark::DoNotOptimize(r);
        qnum_free_allocated_memory(r);
    }
    state.counters["items/s"] = benchmark::Counter(double(n), benchmark::Counter::kIsIterationInvariantRate);
}

template <class T>
void bm_peer(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    std::vector<T> r(n);
    std::minstd_rand0 e(seed);
    for (auto _ : state) {
        peer(e, n, r.data());
        benchmark::DoNotOptimize(r.data());
        benchmark::ClobberMemory();
    }
    state.counters["items/s"] = benchmark::Counter(double(n), benchmark::Counter::kIsIterationInvariantRate);
}

// The peer with a fresh array per call, as the routine allocates one: at 10^7 deviates the
// page faults of a new mapping cost as much as the numbers themselves.
template <class T>
void bm_peer_allocating(benchmark::State& state) {
    const int n = static_cast<int>(state.range(0));
    std::minstd_rand0 e(seed);
    for (auto _ : state) {
        T* r = static_cast<T*>(std::malloc(sizeof(T) * n));
        peer(e, n, r);
        benchmark::DoNotOptimize(r);
        std::free(r);
    }
    state.counters["items/s"] = benchmark::Counter(double(n), benchmark::Counter::kIsIterationInvariantRate);
}

// Both sides must produce the same numbers, or the comparison means nothing.
template <class T>
bool same_output() {
    const int n = 100000;
    std::vector<T> a(n), b(n);
    qnum_random_option(1);
    qnum_random_seed_set(seed);
    ours(n, a.data());
    std::minstd_rand0 e(seed);
    peer(e, n, b.data());
    return a == b;
}

class RatioReporter : public benchmark::ConsoleReporter {
public:
    // Colour only on a terminal, so that saved output stays readable.
    RatioReporter() : ConsoleReporter(isatty(fileno(stdout)) ? OO_ColorTabular : OO_Tabular) {}
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Iteration && !run.error_occurred)
                times[run.benchmark_name()] = run.GetAdjustedRealTime();
        ConsoleReporter::ReportRuns(runs);
    }
    std::map<std::string, double> times;
};

}  // namespace

int main(int argc, char** argv) {
    for (int type = 1; type <= 7; ++type) qnum_error_options(QNUM_SET_PRINT, type, 0, 0);
    const bool f_ok = same_output<float>(), d_ok = same_output<double>();
    std::printf("same deviates as the peer: float %s, double %s\n", f_ok ? "yes" : "NO", d_ok ? "yes" : "NO");

    const char* precisions[] = {"f", "d"};
    for (int n : sizes) {
        for (const char* p : precisions) {
            const std::string base = std::string("BM_") + p + "_uniform/";
            const bool f = p[0] == 'f';
            benchmark::RegisterBenchmark((base + "qnum").c_str(), f ? bm_ours<float> : bm_ours<double>)
                ->Arg(n)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
            benchmark::RegisterBenchmark((base + "qnum_portable").c_str(),
                                         f ? bm_ours_portable<float> : bm_ours_portable<double>)
                ->Arg(n)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
            benchmark::RegisterBenchmark((base + "qnum_alloc").c_str(),
                                         f ? bm_ours_allocating<float> : bm_ours_allocating<double>)
                ->Arg(n)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
            benchmark::RegisterBenchmark((base + "minstd").c_str(), f ? bm_peer<float> : bm_peer<double>)
                ->Arg(n)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
            benchmark::RegisterBenchmark((base + "minstd_alloc").c_str(),
                                         f ? bm_peer_allocating<float> : bm_peer_allocating<double>)
                ->Arg(n)
                ->Unit(benchmark::kMillisecond)
                ->UseRealTime();
        }
    }
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    std::printf("\nratio ours/peer (time; below 1 is faster)\n");
    for (int n : sizes) {
        for (const char* p : precisions) {
            const std::string base = std::string("BM_") + p + "_uniform/", suffix = "/" + std::to_string(n);
            auto find = [&](const char* who) {
                auto it = reporter.times.find(base + who + suffix + "/real_time");
                return it == reporter.times.end() ? 0.0 : it->second;
            };
            double peer_t = find("minstd"), ours_t = find("qnum"), portable_t = find("qnum_portable"),
                   alloc_t = find("qnum_alloc"), peer_alloc_t = find("minstd_alloc");
            if (peer_t > 0 && peer_alloc_t > 0)
                std::printf("%s n=%-9d caller's array %.3f (portable path %.3f)   new array %.3f\n", p, n,
                            ours_t / peer_t, portable_t / peer_t, alloc_t / peer_alloc_t);
        }
    }
    return f_ok && d_ok ? 0 : 1;
}
