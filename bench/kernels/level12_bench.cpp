// Vector and matrix-vector kernels beside OpenBLAS (one thread each) on the same data:
// ddot, daxpy and dnrm2 on 10^6 elements, dgemv and sgemv of order 4000 in both transposes.
// Each pair is timed through the public entry points; the ratio ours / OpenBLAS is printed
// per benchmark at the end, from the fastest of the rounds (the machine is shared).
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "qnummath.h"

#ifdef QNUM_HAVE_OPENBLAS
#include <cblas.h>
#endif

namespace {

template <class T>
std::vector<T> random_vector(std::size_t n, unsigned seed) {
    std::mt19937 g(seed);
    std::uniform_real_distribution<double> d(-1, 1);
    std::vector<T> v(n);
    for (auto& x : v) x = static_cast<T>(d(g));
    return v;
}

enum class Lib { Qnum, OpenBlas };
const char* lib_name(Lib l) { return l == Lib::Qnum ? "qnum" : "openblas"; }

void level1(benchmark::State& state, const std::string& op, Lib lib) {
    const int n = static_cast<int>(state.range(0));
    auto x = random_vector<double>(n, 1), y = random_vector<double>(n, 2);
    double sink = 0;
    for (auto _ : state) {
        if (op == "ddot") {
            sink += lib == Lib::Qnum ? qnum_ddot(n, x.data(), 1, y.data(), 1)
#ifdef QNUM_HAVE_OPENBLAS
                                     : cblas_ddot(n, x.data(), 1, y.data(), 1);
#else
                                     : 0;
#endif
        } else if (op == "daxpy") {
            // alternating signs keep y bounded over millions of iterations
            const double a = (state.iterations() & 1) ? 1e-3 : -1e-3;
            if (lib == Lib::Qnum) qnum_daxpy(n, a, x.data(), 1, y.data(), 1);
#ifdef QNUM_HAVE_OPENBLAS
            else
                cblas_daxpy(n, a, x.data(), 1, y.data(), 1);
#endif
        } else {
            sink += lib == Lib::Qnum ? qnum_dnrm2(n, x.data(), 1)
#ifdef QNUM_HAVE_OPENBLAS
                                     : cblas_dnrm2(n, x.data(), 1);
#else
                                     : 0;
#endif
        }
        benchmark::ClobberMemory();
    }
    benchmark::DoNotOptimize(sink);
    state.counters["GFLOP/s"] =
        benchmark::Counter(2.0 * n * 1e-9, benchmark::Counter::kIsIterationInvariantRate);
}

template <class T>
void gemv(benchmark::State& state, bool trans, Lib lib) {
    const int n = static_cast<int>(state.range(0));
    auto a = random_vector<T>(static_cast<std::size_t>(n) * n, 3);
    auto x = random_vector<T>(n, 4), y = random_vector<T>(n, 5);
    const T alpha = 1, beta = 0.5;
    const int inc = 1;
    const char* t = trans ? "T" : "N";
    for (auto _ : state) {
        if (lib == Lib::Qnum) {
            if constexpr (sizeof(T) == 8) {
                qnum_dgemv(t, 1, &n, &n, &alpha, a.data(), &n, x.data(), &inc, &beta, y.data(), &inc);
            } else {
                qnum_sgemv(t, 1, &n, &n, &alpha, a.data(), &n, x.data(), &inc, &beta, y.data(), &inc);
            }
        } else {
#ifdef QNUM_HAVE_OPENBLAS
            const auto op = trans ? CblasTrans : CblasNoTrans;
            if constexpr (sizeof(T) == 8) {
                cblas_dgemv(CblasColMajor, op, n, n, alpha, a.data(), n, x.data(), 1, beta, y.data(), 1);
            } else {
                cblas_sgemv(CblasColMajor, op, n, n, alpha, a.data(), n, x.data(), 1, beta, y.data(), 1);
            }
#endif
        }
        benchmark::ClobberMemory();
    }
    state.counters["GFLOP/s"] =
        benchmark::Counter(2.0 * n * n * 1e-9, benchmark::Counter::kIsIterationInvariantRate);
}

// Keeps the fastest run of each benchmark and prints ours / OpenBLAS per pair.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    RatioReporter() : ConsoleReporter(OO_Tabular) {}
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& r : runs) {
            if (r.run_type != Run::RT_Iteration) continue;
            const std::string name = r.run_name.str();
            const double t = r.GetAdjustedRealTime();
            auto it = best_.find(name);
            if (it == best_.end() || t < it->second) best_[name] = t;
        }
        ConsoleReporter::ReportRuns(runs);
    }
    void Finalize() override {
        ConsoleReporter::Finalize();
        std::printf("\nratio qnum / openblas (fastest round of each):\n");
        for (const auto& [name, t] : best_) {
            const auto at = name.find("/qnum/");
            if (at == std::string::npos) continue;
            std::string peer = name;
            peer.replace(at, 6, "/openblas/");
            auto it = best_.find(peer);
            if (it == best_.end()) continue;
            std::string label = name;
            label.erase(at, 5);
            std::printf("  %-28s %6.3f\n", label.c_str(), t / it->second);
        }
    }

private:
    std::map<std::string, double> best_;
};

}  // namespace

int main(int argc, char** argv) {
#ifdef QNUM_HAVE_OPENBLAS
    openblas_set_num_threads(1);
    std::printf("%s, core %s\n", openblas_get_config(), openblas_get_corename());
#endif
    qnum_skip_signal_handler();
    std::vector<Lib> libs = {Lib::Qnum};
#ifdef QNUM_HAVE_OPENBLAS
    libs.push_back(Lib::OpenBlas);
#endif
    // Each pair is registered several times, ours and the peer's in turn, so that both see the
    // same load on a shared machine; the reporter keeps the fastest run of each name.
    const int rounds = 5;
    for (int round = 0; round < rounds; ++round) {
        for (const char* op : {"ddot", "daxpy", "dnrm2"})
            for (Lib lib : libs)
                benchmark::RegisterBenchmark((std::string("BM_") + op + "/" + lib_name(lib)).c_str(),
                                             [op, lib](benchmark::State& s) { level1(s, op, lib); })
                    ->Arg(1000000)
                    ->MinTime(0.2);
        for (bool trans : {false, true})
            for (Lib lib : libs) {
                const std::string t = trans ? "T" : "N";
                benchmark::RegisterBenchmark(
                    ("BM_dgemv_" + t + "/" + lib_name(lib)).c_str(),
                    [trans, lib](benchmark::State& s) { gemv<double>(s, trans, lib); })
                    ->Arg(4000)
                    ->MinTime(0.2);
                benchmark::RegisterBenchmark(
                    ("BM_sgemv_" + t + "/" + lib_name(lib)).c_str(),
                    [trans, lib](benchmark::State& s) { gemv<float>(s, trans, lib); })
                    ->Arg(4000)
                    ->MinTime(0.2);
            }
    }
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
