// Zero finding speed: our Mueller iteration (started from its default points) against the
// peer's Brent solver (given a bracket) on the same functions, to the same relative tolerance
// sqrt(eps), in one process. Prints the time per zero and the ratio ours/peer per function.
#include <benchmark/benchmark.h>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_roots.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "qnummath.h"

namespace {

struct Problem {
    const char* name;
    double (*f)(double);
    double lo, hi;  // the peer's bracket
};

const Problem problems[] = {
    {"cos_minus_x", [](double x) { return std::cos(x) - x; }, 0, 1},
    {"cubic", [](double x) { return (x * x - 2) * x - 5; }, 2, 3},
    {"exp_minus_2", [](double x) { return std::exp(x) - 2; }, 0, 1},
    {"atan_shifted", [](double x) { return std::atan(x - 5); }, 3.3, 7.1},
};

void bm_ours(benchmark::State& state, const Problem& p) {
    double z = 0;
    for (auto _ : state) {
        qnum_d_zeros_fcn(p.f, QNUM_RETURN_USER, &z, 0);
        benchmark::DoNotOptimize(z);
    }
    state.counters["zero"] = z;
}

double peer_call(double x, void* f) { return reinterpret_cast<double (*)(double)>(f)(x); }

void bm_peer(benchmark::State& state, const Problem& p) {
    gsl_root_fsolver* s = gsl_root_fsolver_alloc(gsl_root_fsolver_brent);
    gsl_function fn{peer_call, reinterpret_cast<void*>(p.f)};
    const double tol = std::sqrt(2.220446049250313e-16);
    double z = 0;
    for (auto _ : state) {
        gsl_root_fsolver_set(s, &fn, p.lo, p.hi);
        for (int it = 0; it < 100; ++it) {
            gsl_root_fsolver_iterate(s);
            if (gsl_root_test_interval(gsl_root_fsolver_x_lower(s), gsl_root_fsolver_x_upper(s), 0, tol) ==
                GSL_SUCCESS) {
                break;
            }
        }
        z = gsl_root_fsolver_root(s);
        benchmark::DoNotOptimize(z);
    }
    state.counters["zero"] = z;
    gsl_root_fsolver_free(s);
}

class RatioReporter : public benchmark::ConsoleReporter {
public:
    RatioReporter() : ConsoleReporter(isatty(fileno(stdout)) ? OO_ColorTabular : OO_Tabular) {}
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                auto& t = times[run.benchmark_name()];
                const double v = run.GetAdjustedCPUTime();
                t = (t == 0 || v < t) ? v : t;
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }
    std::map<std::string, double> times;
};

}  // namespace

int main(int argc, char** argv) {
    for (int type = 1; type <= 7; ++type) qnum_error_options(QNUM_SET_PRINT, type, 0, 0);
    gsl_set_error_handler_off();
    // Three alternating rounds; each side's best round counts.
    for (int round = 0; round < 3; ++round) {
        for (const Problem& p : problems) {
            const std::string base = std::string("BM_zero/") + p.name + "/";
            benchmark::RegisterBenchmark((base + "qnum").c_str(), bm_ours, p)->Unit(benchmark::kNanosecond);
            benchmark::RegisterBenchmark((base + "gsl_brent").c_str(), bm_peer, p)->Unit(benchmark::kNanosecond);
        }
    }
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    std::printf("\nratio ours/peer (cpu time per zero, best round; below 1 is faster)\n");
    for (const Problem& p : problems) {
        const std::string base = std::string("BM_zero/") + p.name + "/";
        const double ours = reporter.times[base + "qnum"], peer = reporter.times[base + "gsl_brent"];
        if (ours > 0 && peer > 0) std::printf("%-14s ours %8.1f ns  peer %8.1f ns  ratio %.3f\n", p.name, ours, peer, ours / peer);
    }
    return 0;
}
