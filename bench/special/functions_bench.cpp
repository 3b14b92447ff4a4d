// Special functions per call, through the public entry points (frame and fault trapping
// included), beside glibc (erf, erfc, lgamma, tgamma) and Boost.Math (erf_inv, beta, the lower
// incomplete gamma integral) on the same arguments. Prints the time ratio ours/peer at the end.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <cmath>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "qnummath.h"

namespace {

constexpr int n_args = 1024;

struct Args {
    std::vector<double> a, b;
};

// Arguments spread over the range each function is mostly called on.
Args make_args(double lo_a, double hi_a, double lo_b, double hi_b) {
    std::mt19937_64 rng(20261123);
    std::uniform_real_distribution<double> ua(lo_a, hi_a), ub(lo_b, hi_b);
    Args r;
    for (int i = 0; i < n_args; ++i) {
        r.a.push_back(ua(rng));
        r.b.push_back(ub(rng));
    }
    return r;
}

struct Pair {
    const char* name;
    Args args;
    double (*ours)(double, double);
    double (*peer)(double, double);
};

const std::vector<Pair>& pairs() {
    static const std::vector<Pair> p = {
        {"erf", make_args(-3, 3, 0, 0), [](double x, double) { return qnum_d_erf(x); },
         [](double x, double) { return std::erf(x); }},
        {"erfc", make_args(-2, 8, 0, 0), [](double x, double) { return qnum_d_erfc(x); },
         [](double x, double) { return std::erfc(x); }},
        {"lgamma", make_args(0.1, 50, 0, 0), [](double x, double) { return qnum_d_log_gamma(x); },
         [](double x, double) { return std::lgamma(x); }},
        {"tgamma", make_args(0.1, 50, 0, 0), [](double x, double) { return qnum_d_gamma(x); },
         [](double x, double) { return std::tgamma(x); }},
        {"erf_inv", make_args(-0.999, 0.999, 0, 0), [](double x, double) { return qnum_d_erf_inverse(x); },
         [](double x, double) { return boost::math::erf_inv(x); }},
        {"beta", make_args(0.5, 40, 0.5, 40), [](double a, double b) { return qnum_d_beta(a, b); },
         [](double a, double b) { return boost::math::beta(a, b); }},
        {"gamma_incomplete", make_args(0.5, 30, 0.1, 40),
         [](double a, double x) { return qnum_d_gamma_incomplete(a, x); },
         [](double a, double x) { return boost::math::tgamma_lower(a, x); }},
    };
    return p;
}

void run(benchmark::State& state, const Pair& p, bool ours) {
    double (*f)(double, double) = ours ? p.ours : p.peer;
    for (auto _ : state) {
        double s = 0;
        for (int i = 0; i < n_args; ++i) s += f(p.args.a[i], p.args.b[i]);
        benchmark::DoNotOptimize(s);
    }
    state.counters["calls/s"] = benchmark::Counter(double(n_args), benchmark::Counter::kIsIterationInvariantRate);
}

class RatioReporter : public benchmark::ConsoleReporter {
public:
    RatioReporter() : ConsoleReporter(isatty(fileno(stdout)) ? OO_ColorTabular : OO_Tabular) {}
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Iteration && !run.error_occurred)
                times[run.benchmark_name()] = run.GetAdjustedCPUTime();
        ConsoleReporter::ReportRuns(runs);
    }
    std::map<std::string, double> times;
};

}  // namespace

int main(int argc, char** argv) {
    for (int type = 1; type <= 7; ++type) qnum_error_options(QNUM_SET_PRINT, type, 0, 0);
    // Both sides must agree, or the comparison means nothing.
    for (const Pair& p : pairs()) {
        double worst = 0;
        for (int i = 0; i < n_args; ++i) {
            const double o = p.ours(p.args.a[i], p.args.b[i]), q = p.peer(p.args.a[i], p.args.b[i]);
            worst = std::max(worst, std::fabs(o - q) / std::fabs(q));
        }
        std::printf("%-17s largest relative difference from the peer %.2e\n", p.name, worst);
    }
    for (const Pair& p : pairs()) {
        for (bool ours : {true, false}) {
            const std::string name = std::string("BM_") + p.name + (ours ? "/qnum" : "/peer");
            benchmark::RegisterBenchmark(name.c_str(), [&p, ours](benchmark::State& s) { run(s, p, ours); })
                ->Unit(benchmark::kMicrosecond);
        }
    }
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    // CPU time: on a shared machine the wall clock also counts the time other processes hold the core.
    std::printf("\nper call, ours/peer (CPU time; below 1 is faster), %d arguments per iteration\n", n_args);
    for (const Pair& p : pairs()) {
        const std::string base = std::string("BM_") + p.name;
        auto find = [&](const char* who) {
            auto it = reporter.times.find(base + who);
            return it == reporter.times.end() ? 0.0 : it->second;
        };
        const double o = find("/qnum"), q = find("/peer");
        if (o > 0 && q > 0)
            std::printf("%-17s %7.1f ns  %7.1f ns  ratio %.2f\n", p.name, o * 1e3 / n_args, q * 1e3 / n_args, o / q);
    }
    return 0;
}
