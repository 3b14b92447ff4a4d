// Time per integral of the quadrature battery (double precision, default tolerances): our
// public routine, frame included, beside the matching GSL routine with its workspace made
// once and its weight table (frequency and length, or exponents) made per integral, as our
// routine computes its moments per call. Both sides must agree on the number of integrand calls, or the comparison means
// nothing. Prints the ratio ours/GSL of CPU time (steadier than wall time on a shared
// machine) per case and per routine at the end.
#include <benchmark/benchmark.h>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_integration.h>
#include <unistd.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "battery.hpp"

namespace {

using qnum::test::Case;
using qnum::test::Kind;

struct Peer {
    gsl_integration_workspace* w = gsl_integration_workspace_alloc(500);
    gsl_integration_workspace* wc = gsl_integration_workspace_alloc(500);
    long calls = 0;
    double (*f)(double) = nullptr;
};

double through(double x, void* p) {
    Peer* peer = static_cast<Peer*>(p);
    ++peer->calls;
    return peer->f(x);
}

double run_peer(Peer& peer, const Case<double>& k) {
    const double tol = std::sqrt(DBL_EPSILON);
    gsl_function F = {through, &peer};
    peer.f = k.f;
    double r = 0, e = 0;
    size_t neval = 0;
    switch (k.kind) {
    case Kind::qag: gsl_integration_qag(&F, k.a, k.b, tol, tol, 500, k.code, peer.w, &r, &e); break;
    case Kind::qags: gsl_integration_qags(&F, k.a, k.b, tol, tol, 500, peer.w, &r, &e); break;
    case Kind::qagi:
        if (k.code == 2) gsl_integration_qagi(&F, tol, tol, 500, peer.w, &r, &e);
        else if (k.code == 1) gsl_integration_qagiu(&F, k.c, tol, tol, 500, peer.w, &r, &e);
        else gsl_integration_qagil(&F, k.c, tol, tol, 500, peer.w, &r, &e);
        break;
    case Kind::qawo: {
        // A table per integral: it holds the frequency and the interval length.
        gsl_integration_qawo_table* t =
            gsl_integration_qawo_table_alloc(k.c, k.b - k.a, k.code == 1 ? GSL_INTEG_COSINE : GSL_INTEG_SINE, 21);
        gsl_integration_qawo(&F, k.a, tol, tol, 500, peer.w, t, &r, &e);
        gsl_integration_qawo_table_free(t);
        break;
    }
    case Kind::qawf: {
        gsl_integration_qawo_table* t =
            gsl_integration_qawo_table_alloc(k.c, 1, k.code == 1 ? GSL_INTEG_COSINE : GSL_INTEG_SINE, 21);
        gsl_integration_qawf(&F, k.a, tol, 500, peer.w, peer.wc, t, &r, &e);
        gsl_integration_qawo_table_free(t);
        break;
    }
    case Kind::qawc: gsl_integration_qawc(&F, k.a, k.b, k.c, tol, tol, 500, peer.w, &r, &e); break;
    case Kind::qng: gsl_integration_qng(&F, k.a, k.b, tol, tol, &r, &e, &neval); break;
    case Kind::qagp: {
        double two[4] = {k.a, 1, std::sqrt(2.0), k.b}, one[3] = {k.a, 1.0 / 3, k.b};
        const bool is_two = k.f == qnum::test::b_qagp<double>;
        gsl_integration_qagp(&F, is_two ? two : one, is_two ? 4 : 3, tol, tol, 500, peer.w, &r, &e);
        break;
    }
    case Kind::qaws: {
        gsl_integration_qaws_table* t = gsl_integration_qaws_table_alloc(k.alpha, k.beta, k.code == 2 || k.code == 4,
                                                                         k.code == 3 || k.code == 4);
        gsl_integration_qaws(&F, k.a, k.b, t, tol, tol, 500, peer.w, &r, &e);
        gsl_integration_qaws_table_free(t);
        break;
    }
    }
    return r;
}

void bm_ours(benchmark::State& state, const Case<double>* k) {
    qnum::test::Counts<double> c;
    for (auto _ : state) benchmark::DoNotOptimize(qnum::test::run_case(*k, c));
}

void bm_peer(benchmark::State& state, const Case<double>* k) {
    static Peer peer;
    for (auto _ : state) benchmark::DoNotOptimize(run_peer(peer, *k));
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
    for (int type = 1; type <= 7; ++type) qnum_error_options(QNUM_SET_PRINT, type, 0, QNUM_SET_STOP, type, 0, 0);
    gsl_set_error_handler_off();
    static const std::vector<Case<double>> cases = qnum::test::battery<double>();
    for (const Case<double>& k : cases) {
        if (k.limit != 0) continue;  // runs cut short by a small limit test the end game, not speed
        qnum::test::Counts<double> c;
        qnum::test::run_case(k, c);
        Peer peer;
        run_peer(peer, k);
        if (c.n_evals != peer.calls)
            std::printf("%s: %d integrand calls against the peer's %ld\n", k.id, c.n_evals, peer.calls);
        benchmark::RegisterBenchmark((std::string("BM_quad/qnum/") + k.id).c_str(), bm_ours, &k);
        benchmark::RegisterBenchmark((std::string("BM_quad/gsl/") + k.id).c_str(), bm_peer, &k);
    }
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    std::printf("\ntime ratio ours/GSL per case:\n");
    std::map<std::string, std::vector<double>> by_kind;
    for (const Case<double>& k : cases) {
        const std::string ours = std::string("BM_quad/qnum/") + k.id, peer = std::string("BM_quad/gsl/") + k.id;
        if (!reporter.times.count(ours) || !reporter.times.count(peer)) continue;
        const double ratio = reporter.times[ours] / reporter.times[peer];
        std::printf("  %-20s %.3f\n", k.id, ratio);
        const std::string id = k.id;
        by_kind[id.substr(0, id.find('_'))].push_back(ratio);
    }
    std::printf("median ratio per routine:\n");
    for (auto& [kind, r] : by_kind) {
        std::sort(r.begin(), r.end());
        std::printf("  %-6s %.3f (range %.3f to %.3f, %zu cases)\n", kind.c_str(), r[r.size() / 2], r.front(),
                    r.back(), r.size());
    }
    return 0;
}
