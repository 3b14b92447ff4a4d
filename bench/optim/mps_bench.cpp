// MPS reading speed: our reader against the peer's fixed-MPS reader on the same large file
// (tools/gen_mps_big.py writes it), in one process. Prints MB/s and the time ratio ours/peer.
//   qnum_mps_bench [benchmark flags]; the file is $QNUM_MPS_BIG or big.mps
//   beside this program.
#include <benchmark/benchmark.h>
#include <glpk.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "qnummath.h"

namespace {

std::string path;
double bytes = 0;

void bm_ours(benchmark::State& state) {
    for (auto _ : state) {
        Qnum_d_mps* p = qnum_d_read_mps(path.c_str(), 0);
        if (p == nullptr) {
            state.SkipWithError("read failed");
            return;
        }
        benchmark::DoNotOptimize(p->nonzeros);
        qnum_d_mps_free(p);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

int quiet_glpk(void*, const char*) { return 1; }

void bm_glpk(benchmark::State& state) {
    glp_term_hook(quiet_glpk, nullptr);
    for (auto _ : state) {
        glp_prob* p = glp_create_prob();
        if (glp_read_mps(p, GLP_MPS_DECK, nullptr, path.c_str()) != 0) {
            glp_delete_prob(p);
            state.SkipWithError("peer read failed");
            return;
        }
        benchmark::DoNotOptimize(glp_get_num_nz(p));
        glp_delete_prob(p);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * bytes));
}

class RatioReporter : public benchmark::ConsoleReporter {
public:
    RatioReporter() : ConsoleReporter(isatty(fileno(stdout)) ? OO_ColorTabular : OO_Tabular) {}
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration && !run.error_occurred) {
                cpu[run.benchmark_name()].push_back(run.GetAdjustedCPUTime());
                real[run.benchmark_name()].push_back(run.GetAdjustedRealTime());
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }
    std::map<std::string, std::vector<double>> cpu, real;
};

double best(const std::vector<double>& v) {
    double b = 0;
    for (double x : v) b = (b == 0 || x < b) ? x : b;
    return b;
}

}  // namespace

int main(int argc, char** argv) {
    for (int type = 1; type <= 7; ++type) qnum_error_options(QNUM_SET_PRINT, type, 0, 0);
    const char* env = std::getenv("QNUM_MPS_BIG");
    if (env != nullptr) {
        path = env;
    } else {
        std::string self = argv[0];
        path = self.substr(0, self.find_last_of('/') + 1) + "big.mps";
    }
    struct stat st;
    if (stat(path.c_str(), &st) != 0) {
        std::printf("no file %s: make it with python3 tools/gen_mps_big.py %s\n", path.c_str(), path.c_str());
        return 1;
    }
    bytes = static_cast<double>(st.st_size);
    std::printf("file %s, %.1f MB\n", path.c_str(), bytes / 1e6);
    // Alternating rounds, so that a noisy neighbour slows both sides alike.
    for (int round = 0; round < 3; ++round) {
        benchmark::RegisterBenchmark("BM_read_mps/qnum", bm_ours)->Unit(benchmark::kMillisecond)->Iterations(3);
        benchmark::RegisterBenchmark("BM_read_mps/glpk", bm_glpk)->Unit(benchmark::kMillisecond)->Iterations(1);
    }
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    for (auto* times : {&reporter.cpu, &reporter.real}) {
        const double ours = best((*times)["BM_read_mps/qnum/iterations:3"]);
        const double peer = best((*times)["BM_read_mps/glpk/iterations:1"]);
        if (ours > 0 && peer > 0) {
            std::printf("%s time, best round: ours %.1f MB/s, peer %.1f MB/s, ratio ours/peer %.3f (peer %.1fx slower)\n",
                        times == &reporter.cpu ? "cpu" : "real", bytes / 1e3 / ours, bytes / 1e3 / peer,
                        ours / peer, peer / ours);
        }
    }
    return 0;
}
