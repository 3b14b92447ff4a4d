// Cubic splines beside GSL's: building a not-a-knot interpolant against GSL's natural cubic
// spline, Akima against GSL's Akima, and 10^6 sorted evaluations through QNUM_GRID against
// GSL's evaluation with its lookup accelerator; cross-validated smoothing at n = 10^5 on its
// own. Prints the time ratio ours/peer per size at the end.
#include <benchmark/benchmark.h>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_spline.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "qnummath.h"

namespace {

const int sizes[] = {1000, 100000, 1000000};
constexpr int npoints = 1000000;

struct Data {
    std::vector<double> x, f;
    explicit Data(int n) : x(n), f(n) {
        for (int i = 0; i < n; ++i) {
            x[i] = i + 0.25 * std::sin(1.7 * i);
            f[i] = std::sin(x[i] / 40) + 0.01 * std::cos(7.3 * i);
        }
    }
};

// Sorted evaluation points spread over the data's range.
std::vector<double> points(const Data& d) {
    std::vector<double> p(npoints);
    const double a = d.x.front(), b = d.x.back();
    for (int i = 0; i < npoints; ++i) p[i] = a + (b - a) * (i + 0.5) / npoints;
    return p;
}

void bm_build_ours(benchmark::State& state, bool akima) {
    Data d(int(state.range(0)));
    const int n = int(d.x.size());
    for (auto _ : state) {
        Qnum_d_ppoly* p = akima ? qnum_d_cub_spline_interp_shape(n, d.x.data(), d.f.data(), 0)
                                : qnum_d_cub_spline_interp(n, d.x.data(), d.f.data(), 0);
        benchmark::DoNotOptimize(p);
        std::free(p);
    }
    state.counters["points/s"] = benchmark::Counter(double(n), benchmark::Counter::kIsIterationInvariantRate);
}

void bm_build_gsl(benchmark::State& state, bool akima) {
    Data d(int(state.range(0)));
    const int n = int(d.x.size());
    for (auto _ : state) {
        gsl_spline* s = gsl_spline_alloc(akima ? gsl_interp_akima : gsl_interp_cspline, n);
        gsl_spline_init(s, d.x.data(), d.f.data(), n);
        benchmark::DoNotOptimize(s);
        gsl_spline_free(s);
    }
    state.counters["points/s"] = benchmark::Counter(double(n), benchmark::Counter::kIsIterationInvariantRate);
}

void bm_eval_ours(benchmark::State& state) {
    Data d(int(state.range(0)));
    const std::vector<double> p = points(d);
    Qnum_d_ppoly* s = qnum_d_cub_spline_interp(int(d.x.size()), d.x.data(), d.f.data(), 0);
    for (auto _ : state) {
        double* v = nullptr;
        qnum_d_cub_spline_value(0.0, s, QNUM_GRID, npoints, p.data(), &v, 0);
        benchmark::DoNotOptimize(v);
        std::free(v);
    }
    std::free(s);
    state.counters["points/s"] = benchmark::Counter(double(npoints), benchmark::Counter::kIsIterationInvariantRate);
}

void bm_eval_gsl(benchmark::State& state) {
    Data d(int(state.range(0)));
    const std::vector<double> p = points(d);
    const int n = int(d.x.size());
    gsl_spline* s = gsl_spline_alloc(gsl_interp_cspline, n);
    gsl_spline_init(s, d.x.data(), d.f.data(), n);
    gsl_interp_accel* acc = gsl_interp_accel_alloc();
    for (auto _ : state) {
        // A new result array per call, as QNUM_GRID hands one back.
        double* v = static_cast<double*>(std::malloc(sizeof(double) * npoints));
        for (int i = 0; i < npoints; ++i) v[i] = gsl_spline_eval(s, p[i], acc);
        benchmark::DoNotOptimize(v);
        std::free(v);
    }
    gsl_interp_accel_free(acc);
    gsl_spline_free(s);
    state.counters["points/s"] = benchmark::Counter(double(npoints), benchmark::Counter::kIsIterationInvariantRate);
}

void bm_smooth_cv(benchmark::State& state) {
    Data d(int(state.range(0)));
    const int n = int(d.x.size());
    for (auto _ : state) {
        Qnum_d_ppoly* p = qnum_d_cub_spline_smooth(n, d.x.data(), d.f.data(), 0);
        benchmark::DoNotOptimize(p);
        std::free(p);
    }
}

class RatioReporter : public benchmark::ConsoleReporter {
public:
    RatioReporter() : ConsoleReporter(isatty(fileno(stdout)) ? OO_ColorTabular : OO_Tabular) {}
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Iteration && !run.error_occurred)
                times[run.benchmark_name()] = run.GetAdjustedRealTime();
        ConsoleReporter::ReportRuns(runs);
    }
    std::map<std::string, double> times;
};

struct Pair {
    const char* name;
    void (*ours)(benchmark::State&);
    void (*peer)(benchmark::State&);
};

}  // namespace

int main(int argc, char** argv) {
    for (int type = 1; type <= 7; ++type) qnum_error_options(QNUM_SET_PRINT, type, 0, 0);
    gsl_set_error_handler_off();
    const Pair pairs[] = {
        {"BM_build_notaknot", [](benchmark::State& s) { bm_build_ours(s, false); },
         [](benchmark::State& s) { bm_build_gsl(s, false); }},
        {"BM_build_akima", [](benchmark::State& s) { bm_build_ours(s, true); },
         [](benchmark::State& s) { bm_build_gsl(s, true); }},
        {"BM_eval_grid", bm_eval_ours, bm_eval_gsl},
    };
    for (int n : sizes) {
        for (const Pair& p : pairs) {
            benchmark::RegisterBenchmark((std::string(p.name) + "/qnum").c_str(), p.ours)
                ->Arg(n)->Unit(benchmark::kMicrosecond)->UseRealTime();
            benchmark::RegisterBenchmark((std::string(p.name) + "/gsl").c_str(), p.peer)
                ->Arg(n)->Unit(benchmark::kMicrosecond)->UseRealTime();
        }
    }
    benchmark::RegisterBenchmark("BM_smooth_cv/qnum", bm_smooth_cv)->Arg(100000)->Unit(benchmark::kMillisecond)->UseRealTime();
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    std::printf("\nratio ours/peer (time; below 1 is faster)\n");
    for (const Pair& p : pairs) {
        for (int n : sizes) {
            auto find = [&](const char* who) {
                auto it = reporter.times.find(std::string(p.name) + "/" + who + "/" + std::to_string(n) + "/real_time");
                return it == reporter.times.end() ? 0.0 : it->second;
            };
            const double o = find("qnum"), g = find("gsl");
            if (o > 0 && g > 0) std::printf("%-18s n=%-8d %.3f\n", p.name, n, o / g);
        }
    }
    auto cv = reporter.times.find("BM_smooth_cv/qnum/100000/real_time");
    if (cv != reporter.times.end()) std::printf("cross-validated smoothing, n=100000: %.0f ms\n", cv->second);
    return 0;
}
