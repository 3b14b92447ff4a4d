// Linear programming beside GLPK's glp_simplex (default settings both, same process): the
// Netlib and MIPLIB problems of the shared data and the generated structured models
// (python3 tools/gen_lp_bench.py DIR, then QNUM_LP_BENCH_DIR=DIR). Prints the time ratio
// ours/GLPK per problem and over each set (the best thread CPU time of the repetitions).
#include <benchmark/benchmark.h>
#include <glpk.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <time.h>

#include "qnummath.h"

namespace {

struct Problem {
    std::string name, path, set;
};

std::map<std::string, double> g_ours, g_peer, g_obj_ours, g_obj_peer;

bool exists(const std::string& p) {
    struct stat st;
    return stat(p.c_str(), &st) == 0;
}

// CPU time of the calling thread: on a shared, loaded machine wall time measures the other
// programs as much as this one.
double cpu_now() {
    timespec ts;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &ts);
    return ts.tv_sec + 1e-9 * ts.tv_nsec;
}

void bm_ours(benchmark::State& state, Problem pr) {
    Qnum_d_mps* p = qnum_d_read_mps(pr.path.c_str(), 0);
    if (p == nullptr) {
        state.SkipWithError("cannot read");
        return;
    }
    double best = 1e300, obj = 0;
    for (auto _ : state) {
        double t0 = cpu_now();
        double* x = qnum_d_linear_programming(p, QNUM_LP_OBJ_VALUE, &obj, 0);
        best = std::fmin(best, cpu_now() - t0);
        benchmark::DoNotOptimize(x);
        qnum_free_allocated_memory(x);
    }
    g_ours[pr.name] = best;
    g_obj_ours[pr.name] = obj - p->objective_constant;
    qnum_d_mps_free(p);
}

void bm_glpk(benchmark::State& state, Problem pr) {
    glp_prob* orig = glp_create_prob();
    // Some files break the strict fixed layout GLPK's deck reader wants; its free reader
    // takes those.
    if (glp_read_mps(orig, GLP_MPS_DECK, nullptr, pr.path.c_str()) != 0 &&
        glp_read_mps(orig, GLP_MPS_FILE, nullptr, pr.path.c_str()) != 0) {
        state.SkipWithError("cannot read");
        glp_delete_prob(orig);
        return;
    }
    glp_smcp parm;
    glp_init_smcp(&parm);
    parm.msg_lev = GLP_MSG_OFF;
    double best = 1e300, obj = 0;
    for (auto _ : state) {
        state.PauseTiming();
        glp_prob* lp = glp_create_prob();
        glp_copy_prob(lp, orig, GLP_OFF);
        state.ResumeTiming();
        double t0 = cpu_now();
        glp_simplex(lp, &parm);
        best = std::fmin(best, cpu_now() - t0);
        state.PauseTiming();
        obj = glp_get_obj_val(lp) - glp_get_obj_coef(lp, 0);
        glp_delete_prob(lp);
        state.ResumeTiming();
    }
    g_peer[pr.name] = best;
    g_obj_peer[pr.name] = obj;
    glp_delete_prob(orig);
}

}  // namespace

int main(int argc, char** argv) {
    qnum_error_options(QNUM_SET_PRINT, 3, 0, QNUM_SET_PRINT, 4, 0, QNUM_SET_STOP, 4, 0, 0);
    glp_term_out(GLP_OFF);
    std::vector<Problem> problems;
    // The shared data lies beside the source tree: found from this file's path, or from the
    // folder the program runs in (the repository or a build folder inside it).
    std::string here = __FILE__;
    std::string shared = here.substr(0, here.rfind('/')) + "/../../../shared/data/mps/";
    for (const char* c : {"../shared/data/mps/", "../../shared/data/mps/", "../../../shared/data/mps/"})
        if (!exists(shared + "afiro.mps") && exists(std::string(c) + "afiro.mps")) shared = c;
    for (const char* f : {"afiro", "sc50a", "adlittle", "blend", "share2b", "kb2", "boeing2", "stocfor1",
                          "e226", "vtpbase", "pilot4", "p0033", "flugpl", "egout", "pp08a", "gesa3_o", "dsbmip"})
        if (exists(shared + f + ".mps")) problems.push_back({f, shared + f + ".mps", "netlib+miplib"});
    const char* dir = std::getenv("QNUM_LP_BENCH_DIR");
    std::string gen = dir ? dir : "lp_bench_models";
    for (const char* f : {"transp1", "transp2", "mcf1", "mcf2", "prod1", "prod2"})
        if (exists(gen + "/" + f + ".mps")) problems.push_back({f, gen + "/" + f + ".mps", "generated"});
    if (problems.size() < 20)
        std::fprintf(stderr, "note: set QNUM_LP_BENCH_DIR to the folder of tools/gen_lp_bench.py's models\n");
    for (const Problem& p : problems) {
        bool big = p.set == "generated";
        auto* a = benchmark::RegisterBenchmark(("BM_lp/qnum/" + p.name).c_str(), bm_ours, p);
        auto* b = benchmark::RegisterBenchmark(("BM_lp/glpk/" + p.name).c_str(), bm_glpk, p);
        for (auto* r : {a, b}) {
            r->Unit(benchmark::kMillisecond);
            if (big) r->Iterations(1);
        }
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    std::printf("\n%-10s %12s %12s %8s  %s\n", "problem", "qnum s", "glpk s", "ratio", "objectives agree");
    std::map<std::string, std::pair<double, double>> total;
    for (const Problem& p : problems) {
        if (!g_ours.count(p.name) || !g_peer.count(p.name)) continue;
        double o = g_ours[p.name], g = g_peer[p.name];
        double rel = std::fabs(g_obj_ours[p.name] - g_obj_peer[p.name]) / std::fmax(1.0, std::fabs(g_obj_peer[p.name]));
        std::printf("%-10s %12.4f %12.4f %8.3f  %s\n", p.name.c_str(), o, g, o / g, rel < 1e-9 ? "yes" : "NO");
        total[p.set].first += o;
        total[p.set].second += g;
    }
    for (auto& [set, t] : total)
        std::printf("total %-15s qnum %.3f s, glpk %.3f s, ratio %.3f\n", set.c_str(), t.first, t.second,
                    t.first / t.second);
    benchmark::Shutdown();
    return 0;
}
