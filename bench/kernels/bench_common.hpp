// What the kernel benchmarks share: random operands, the products through our public entry
// points and the peer's, and a reporter that prints time ratios per case at the end.
#pragma once

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

namespace kbench {

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

// Keeps the CPU time per call of every run, by name, to print qnum / OpenBLAS ratios at the
// end. Each case runs in several rounds, ours and the peer's alternating, and the ratio takes
// each side's best round: on a shared machine the slow rounds measure the neighbours. CPU
// time, not wall time, for the same reason, for one thread computing; runs on several threads
// are compared by wall time (`wall`).
class RatioReporter : public benchmark::ConsoleReporter {
public:
    explicit RatioReporter(bool wall = false) : wall_(wall) {}
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& r : runs)
            if (r.run_type == Run::RT_Iteration && !r.error_occurred) {
                const std::string key = r.run_name.function_name + "/" + r.run_name.args;
                auto it = best_.find(key);
                const double t = wall_ ? r.GetAdjustedRealTime() : r.GetAdjustedCPUTime();
                if (it == best_.end() || t < it->second) best_[key] = t;
            }
    }
    // Ratios of the runs named <case>/<top>/<size> to those named <case>/<bottom>/<size>.
    void print_ratios(const std::string& top = "qnum", const std::string& bottom = "openblas",
                      const char* title = "qnum / OpenBLAS") const {
        std::printf("\nratio %s (best time per call over the rounds, lower is better)\n", title);
        const std::string key = "/" + top + "/";
        for (const auto& [name, t] : best_) {
            const std::size_t at = name.find(key);
            if (at == std::string::npos) continue;
            const std::string rest = name.substr(at + key.size());
            const auto it = best_.find(name.substr(0, at) + "/" + bottom + "/" + rest);
            if (it == best_.end()) continue;
            std::printf("  %-28s %.3f\n", (name.substr(0, at) + "/" + rest).c_str(), t / it->second);
        }
    }

private:
    bool wall_;
    std::map<std::string, double> best_;
};

}  // namespace kbench
