// Dense solvers beside LAPACKE on OpenBLAS, one thread each: LU solve with condition
// estimate, Cholesky solve with condition estimate, and the inverse. Our routines take the
// caller's row-major matrix; the peer gets it as the column-major transpose (no copy but
// the one its in-place factorization needs), which is the fastest way a C caller can use it.
// Prints GFLOP/s per run and, at the end, the time ratio qnum / LAPACKE per case.
#include <benchmark/benchmark.h>
#include <cblas.h>

#include <complex>
#include <cstdio>
#include <map>
#include <random>
#include <string>
#include <vector>

#ifdef QNUM_HAVE_LAPACKE
#include <lapacke.h>
#endif
#include "qnummath.h"

namespace {

using cd = std::complex<double>;

template <class T>
std::vector<T> random_matrix(int n, unsigned seed, bool spd) {
    std::mt19937 g(seed);
    std::uniform_real_distribution<double> d(-1, 1);
    std::vector<T> a(static_cast<std::size_t>(n) * n);
    for (auto& v : a) {
        if constexpr (std::is_same_v<T, cd>) {
            v = cd(d(g), d(g));
        } else {
            v = static_cast<T>(d(g));
        }
    }
    if (spd) {  // symmetric with a dominant diagonal
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < i; ++j) a[static_cast<std::size_t>(i) * n + j] = a[static_cast<std::size_t>(j) * n + i];
            a[static_cast<std::size_t>(i) * n + i] = static_cast<T>(n);
        }
    }
    return a;
}

// ---- ours ----
template <class T, class... A>
T* ours_gen(int n, T* a, T* b, A... args) {
    if constexpr (std::is_same_v<T, float>) return qnum_f_lin_sol_gen(n, a, b, args...);
    if constexpr (std::is_same_v<T, double>) return qnum_d_lin_sol_gen(n, a, b, args...);
    if constexpr (std::is_same_v<T, cd>)
        return reinterpret_cast<cd*>(qnum_z_lin_sol_gen(n, reinterpret_cast<qnum_d_complex*>(a),
                                                        reinterpret_cast<qnum_d_complex*>(b), args...));
}

#ifdef QNUM_HAVE_LAPACKE
lapack_complex_double* lc(cd* p) { return reinterpret_cast<lapack_complex_double*>(p); }
const lapack_complex_double* lc(const cd* p) { return reinterpret_cast<const lapack_complex_double*>(p); }
// ---- the peer, on the column-major view of our row-major matrix: that view is A^T ----
lapack_int getrf(int n, float* a, int* p) { return LAPACKE_sgetrf_work(LAPACK_COL_MAJOR, n, n, a, n, p); }
lapack_int getrf(int n, double* a, int* p) { return LAPACKE_dgetrf_work(LAPACK_COL_MAJOR, n, n, a, n, p); }
lapack_int getrf(int n, cd* a, int* p) { return LAPACKE_zgetrf_work(LAPACK_COL_MAJOR, n, n, lc(a), n, p); }
float lange_inf(int n, const float* a, float* w) { return LAPACKE_slange_work(LAPACK_COL_MAJOR, 'I', n, n, a, n, w); }
double lange_inf(int n, const double* a, double* w) { return LAPACKE_dlange_work(LAPACK_COL_MAJOR, 'I', n, n, a, n, w); }
double lange_inf(int n, const cd* a, double* w) { return LAPACKE_zlange_work(LAPACK_COL_MAJOR, 'I', n, n, lc(a), n, w); }
void gecon_inf(int n, const float* a, float an, float* rc, float* w, int* iw) {
    LAPACKE_sgecon_work(LAPACK_COL_MAJOR, 'I', n, a, n, an, rc, w, iw);
}
void gecon_inf(int n, const double* a, double an, double* rc, double* w, int* iw) {
    LAPACKE_dgecon_work(LAPACK_COL_MAJOR, 'I', n, a, n, an, rc, w, iw);
}
void gecon_inf(int n, const cd* a, double an, double* rc, cd* w, double* rw) {
    LAPACKE_zgecon_work(LAPACK_COL_MAJOR, 'I', n, lc(a), n, an, rc, lc(w), rw);
}
template <class T>
void getrs_t(int n, const T* a, const int* p, T* b) {
    if constexpr (std::is_same_v<T, float>) LAPACKE_sgetrs_work(LAPACK_COL_MAJOR, 'T', n, 1, a, n, p, b, n);
    if constexpr (std::is_same_v<T, double>) LAPACKE_dgetrs_work(LAPACK_COL_MAJOR, 'T', n, 1, a, n, p, b, n);
    if constexpr (std::is_same_v<T, cd>) LAPACKE_zgetrs_work(LAPACK_COL_MAJOR, 'T', n, 1, lc(a), n, p, lc(b), n);
}
#endif

template <class T>
double lu_flops(int n) {
    return (std::is_same_v<T, cd> ? 4.0 : 1.0) * (2.0 / 3.0) * n * double(n) * n;
}

// A x = b with a condition estimate: (2/3) n^3 flops.
template <class T>
void bench_gen(benchmark::State& state, bool ours) {
    using R = decltype(std::abs(T()));
    const int n = static_cast<int>(state.range(0));
    std::vector<T> a = random_matrix<T>(n, 1, false), b = random_matrix<T>(1, 2, false), work(a.size());
    b.resize(n, T(1));
    std::vector<T> x(n), w(4 * static_cast<std::size_t>(n));
    std::vector<int> p(n), iw(n);
    std::vector<R> rw(2 * static_cast<std::size_t>(n));
    R rcond = 0;
    for (auto _ : state) {
        if (ours) {
            R cond;
            ours_gen(n, a.data(), b.data(), QNUM_RETURN_USER, x.data(), QNUM_CONDITION, &cond, 0);
        }
#ifdef QNUM_HAVE_LAPACKE
        if (!ours) {
            work = a;
            x = b;
            const R an = lange_inf(n, work.data(), rw.data());
            getrf(n, work.data(), p.data());
            if constexpr (std::is_same_v<T, cd>) {
                gecon_inf(n, work.data(), an, &rcond, w.data(), rw.data());
            } else {
                gecon_inf(n, work.data(), an, &rcond, w.data(), iw.data());
            }
            getrs_t(n, work.data(), p.data(), x.data());
        }
#endif
        benchmark::DoNotOptimize(x.data());
    }
    state.counters["GFLOP/s"] = benchmark::Counter(lu_flops<T>(n) * 1e-9, benchmark::Counter::kIsIterationInvariantRate);
}

// Symmetric positive definite A x = b with a condition estimate: n^3 / 3 flops.
void bench_posdef(benchmark::State& state, bool ours) {
    const int n = static_cast<int>(state.range(0));
    std::vector<double> a = random_matrix<double>(n, 3, true), work(a.size()), x(n), b(n, 1.0), w(3 * static_cast<std::size_t>(n));
    std::vector<int> iw(n);
    double rcond = 0;
    for (auto _ : state) {
        if (ours) {
            double cond;
            qnum_d_lin_sol_posdef(n, a.data(), b.data(), QNUM_RETURN_USER, x.data(), QNUM_CONDITION, &cond, 0);
        }
#ifdef QNUM_HAVE_LAPACKE
        if (!ours) {
            work = a;
            x = b;
            // The column-major lower triangle is our caller's upper one.
            const double an = LAPACKE_dlansy_work(LAPACK_COL_MAJOR, '1', 'L', n, work.data(), n, w.data());
            LAPACKE_dpotrf_work(LAPACK_COL_MAJOR, 'L', n, work.data(), n);
            LAPACKE_dpocon_work(LAPACK_COL_MAJOR, 'L', n, work.data(), n, an, &rcond, w.data(), iw.data());
            LAPACKE_dpotrs_work(LAPACK_COL_MAJOR, 'L', n, 1, work.data(), n, x.data(), n);
        }
#endif
        benchmark::DoNotOptimize(x.data());
    }
    state.counters["GFLOP/s"] = benchmark::Counter(n * double(n) * n / 3 * 1e-9, benchmark::Counter::kIsIterationInvariantRate);
}

// The inverse: 2 n^3 flops.
void bench_inverse(benchmark::State& state, bool ours) {
    const int n = static_cast<int>(state.range(0));
    std::vector<double> a = random_matrix<double>(n, 4, false), inv(a.size()), w(64 * static_cast<std::size_t>(n));
    std::vector<int> p(n);
    for (auto _ : state) {
        if (ours)
            qnum_d_lin_sol_gen(n, a.data(), static_cast<double*>(nullptr), QNUM_INVERSE_ONLY, QNUM_INVERSE_USER, inv.data(), 0);
#ifdef QNUM_HAVE_LAPACKE
        if (!ours) {
            inv = a;
            LAPACKE_dgetrf_work(LAPACK_COL_MAJOR, n, n, inv.data(), n, p.data());
            LAPACKE_dgetri_work(LAPACK_COL_MAJOR, n, inv.data(), n, p.data(), w.data(), static_cast<int>(w.size()));
        }
#endif
        benchmark::DoNotOptimize(inv.data());
    }
    state.counters["GFLOP/s"] = benchmark::Counter(2.0 * n * double(n) * n * 1e-9, benchmark::Counter::kIsIterationInvariantRate);
}

// Best CPU time per call of every run, by name; ratios qnum / LAPACKE at the end. Each case
// runs in several rounds, ours and the peer's alternating, and each side keeps its best
// round: on a shared machine the slow rounds measure the neighbours.
class RatioReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& r : runs)
            if (r.run_type == Run::RT_Iteration && !r.error_occurred) {
                const std::string key = r.run_name.function_name + "/" + r.run_name.args;
                auto it = best_.find(key);
                const double t = r.GetAdjustedCPUTime();
                if (it == best_.end() || t < it->second) best_[key] = t;
            }
    }
    void print_ratios() const {
        std::printf("\nratio qnum / LAPACKE (best CPU time per call over the rounds, lower is better)\n");
        for (const auto& [name, t] : best_) {
            const std::size_t at = name.find("/qnum/");
            if (at == std::string::npos) continue;
            const auto it = best_.find(name.substr(0, at) + "/lapacke/" + name.substr(at + 6));
            if (it == best_.end()) continue;
            std::printf("  %-28s %.3f\n", (name.substr(0, at) + "/" + name.substr(at + 6)).c_str(), t / it->second);
        }
    }

private:
    std::map<std::string, double> best_;
};

}  // namespace

int main(int argc, char** argv) {
#ifdef QNUM_HAVE_LAPACKE
    openblas_set_num_threads(1);
    const bool peer = true;
#else
    const bool peer = false;
#endif
    qnum_skip_signal_handler();
    qnum_error_options(QNUM_SET_PRINT, QNUM_WARNING, 0, 0);
    struct Case {
        const char* name;
        void (*fn)(benchmark::State&, bool);
        std::vector<int> sizes;
    };
    const Case cases[] = {
        {"BM_dgen", bench_gen<double>, {100, 500, 1000, 2000}},
        {"BM_sgen", bench_gen<float>, {100, 500, 1000, 2000}},
        {"BM_zgen", bench_gen<cd>, {1000}},
        {"BM_dposdef", bench_posdef, {500, 1000, 2000}},
        {"BM_dinverse", bench_inverse, {1000}},
    };
    const int rounds = 3;
    for (int round = 0; round < rounds; ++round)
        for (const Case& c : cases)
            for (int n : c.sizes)
                for (bool ours : {true, false}) {
                    if (!ours && !peer) continue;
                    const std::string name = std::string(c.name) + (ours ? "/qnum" : "/lapacke");
                    benchmark::RegisterBenchmark(name.c_str(), c.fn, ours)->Arg(n)->Unit(benchmark::kMillisecond)->MinTime(0.3);
                }
    benchmark::Initialize(&argc, argv);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print_ratios();
    benchmark::Shutdown();
    return 0;
}
