// Cost of the public-routine frame: a routine that does nothing, called through the frame with
// fault trapping off and on, beside a plain function call.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

#include "frame/frame.hpp"

namespace {

__attribute__((noinline)) int plain(int x) {
    benchmark::DoNotOptimize(x);
    return x;
}

__attribute__((noinline)) int framed(int x) {
    return qnum::frame::call<int>("qnum_f_nothing", [&] {
        benchmark::DoNotOptimize(x);
        return x;
    });
}

// A routine that ends with a FATAL error nobody prints or reads, as a non-adaptive rule that
// misses its tolerance does.
__attribute__((noinline)) int failing(int x) {
    return qnum::frame::call<int>("qnum_f_failing", [&] {
        qnum::frame::raise(qnum::frame::Type::Fatal, qnum::err::smooth_not_converged);
        return x;
    });
}

void BM_plain_call(benchmark::State& state) {
    int i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(plain(i++));
}

void BM_frame(benchmark::State& state) {
    qnum_error_options(QNUM_SIGNAL_TRAPPING, static_cast<int>(state.range(0)), 0);
    int i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(framed(i++));
    qnum_error_options(QNUM_SIGNAL_TRAPPING, 1, 0);
}

void BM_public_machine(benchmark::State& state) {
    qnum_error_options(QNUM_SIGNAL_TRAPPING, static_cast<int>(state.range(0)), 0);
    for (auto _ : state) benchmark::DoNotOptimize(qnum_d_machine(4));
    qnum_error_options(QNUM_SIGNAL_TRAPPING, 1, 0);
}

void BM_raise(benchmark::State& state) {
    qnum_error_options(QNUM_SET_PRINT, 4, 0, QNUM_SET_STOP, 4, 0, 0);
    int i = 0;
    for (auto _ : state) benchmark::DoNotOptimize(failing(i++));
    qnum_error_options(QNUM_SET_PRINT, 4, 1, QNUM_SET_STOP, 4, 1, 0);
}

BENCHMARK(BM_plain_call);
BENCHMARK(BM_raise);
BENCHMARK(BM_frame)->Arg(0)->Arg(1)->ArgName("trapping");
BENCHMARK(BM_public_machine)->Arg(0)->Arg(1)->ArgName("trapping");

// Prints the frame's cost per call, each run's time less the plain call's.
class OverheadReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& r : runs) times_[r.benchmark_name()] = r.GetAdjustedCPUTime();
        ConsoleReporter::ReportRuns(runs);
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        double base = times_["BM_plain_call"];
        std::printf("\nframe overhead per call (ns, over a plain call of %.2f ns):\n", base);
        for (const char* name : {"BM_frame/trapping:0", "BM_frame/trapping:1", "BM_public_machine/trapping:0",
                                 "BM_public_machine/trapping:1", "BM_raise"})
            std::printf("  %-30s %6.2f\n", name, times_[name] - base);
    }

private:
    std::map<std::string, double> times_;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    OverheadReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
