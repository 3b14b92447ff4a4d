// Complex vector and matrix-vector kernels beside OpenBLAS (one thread each) on the same data:
// dotu, dotc, axpy, scal and nrm2 on 10^6 elements; gemv (N, T, C), hemv and geru of order
// 4000; c and z. Ours runs on the detected path (qnum) and on the AVX2 path forced
// (qnum_avx2) when the machine has AVX-512. The ratios ours / OpenBLAS are printed per case at
// the end from the best CPU time of alternating rounds.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <functional>
#include <string>

#include "bench_common.hpp"
#include "frame/cpu.hpp"

namespace {

using kbench::cd;
using kbench::cf;

template <class T>
using Q = std::conditional_t<std::is_same_v<T, cf>, qnum_f_complex, qnum_d_complex>;
template <class T>
const Q<T>* q(const T* p) {
    return reinterpret_cast<const Q<T>*>(p);
}
template <class T>
Q<T>* q(T* p) {
    return reinterpret_cast<Q<T>*>(p);
}
template <class T>
constexpr bool single = std::is_same_v<T, cf>;

// Every case on the same operands: x, y of length n (n*n for the matrix a).
template <class T>
struct Data {
    int n;
    std::vector<T> x, y, a;
    Data(int n_, bool matrix)
        : n(n_), x(kbench::random_matrix<T>(n_, 1)), y(kbench::random_matrix<T>(n_, 2)),
          a(matrix ? kbench::random_matrix<T>(static_cast<std::size_t>(n_) * n_, 3) : std::vector<T>{}) {}
};

template <class T>
void ours(const std::string& op, Data<T>& d, T& sink) {
    const int n = d.n, one = 1;
    const T alpha(0.5, -0.25), beta(0.5, 0), shrink(0.999, 0.001), grow(1.0 / 0.999, 0);
    T* x = d.x.data();
    T* y = d.y.data();
    T* a = d.a.data();
    if (op == "dotu") {
        if constexpr (single<T>) {
            auto v = qnum_cdotu(&n, q(x), &one, q(y), &one);
            sink += T(v.re, v.im);
        } else {
            auto v = qnum_zdotu(&n, q(x), &one, q(y), &one);
            sink += T(v.re, v.im);
        }
    } else if (op == "dotc") {
        if constexpr (single<T>) {
            auto v = qnum_cdotc(&n, q(x), &one, q(y), &one);
            sink += T(v.re, v.im);
        } else {
            auto v = qnum_zdotc(&n, q(x), &one, q(y), &one);
            sink += T(v.re, v.im);
        }
    } else if (op == "axpy") {
        const T s = sink.real() > 0 ? T(1e-3) : T(-1e-3);  // keeps y bounded
        sink = -sink + T(1);
        if constexpr (single<T>) qnum_caxpy(&n, q(&s), q(x), &one, q(y), &one);
        else qnum_zaxpy(&n, q(&s), q(x), &one, q(y), &one);
    } else if (op == "scal") {
        const T& s = sink.real() > 0 ? shrink : grow;
        sink = -sink + T(1);
        if constexpr (single<T>) qnum_cscal(&n, q(&s), q(y), &one);
        else qnum_zscal(&n, q(&s), q(y), &one);
    } else if (op == "nrm2") {
        if constexpr (single<T>) sink += qnum_scnrm2(&n, q(x), &one);
        else sink += qnum_dznrm2(&n, q(x), &one);
    } else if (op == "gemvN" || op == "gemvT" || op == "gemvC") {
        const char* t = op == "gemvN" ? "N" : op == "gemvT" ? "T" : "C";
        if constexpr (single<T>) qnum_cgemv(t, 1, &n, &n, q(&alpha), q(a), &n, q(x), &one, q(&beta), q(y), &one);
        else qnum_zgemv(t, 1, &n, &n, q(&alpha), q(a), &n, q(x), &one, q(&beta), q(y), &one);
    } else if (op == "hemv") {
        if constexpr (single<T>) qnum_chemv("U", 1, &n, q(&alpha), q(a), &n, q(x), &one, q(&beta), q(y), &one);
        else qnum_zhemv("U", 1, &n, q(&alpha), q(a), &n, q(x), &one, q(&beta), q(y), &one);
    } else if (op == "geru") {
        const T s = sink.real() > 0 ? T(1e-3) : T(-1e-3);
        sink = -sink + T(1);
        if constexpr (single<T>) qnum_cgeru(&n, &n, q(&s), q(x), &one, q(y), &one, q(a), &n);
        else qnum_zgeru(&n, &n, q(&s), q(x), &one, q(y), &one, q(a), &n);
    }
}

#ifdef QNUM_HAVE_OPENBLAS
template <class T>
void peer(const std::string& op, Data<T>& d, T& sink) {
    const int n = d.n;
    const T alpha(0.5, -0.25), beta(0.5, 0), shrink(0.999, 0.001), grow(1.0 / 0.999, 0);
    T* x = d.x.data();
    T* y = d.y.data();
    T* a = d.a.data();
    T r;
    if (op == "dotu") {
        if constexpr (single<T>) cblas_cdotu_sub(n, x, 1, y, 1, &r);
        else cblas_zdotu_sub(n, x, 1, y, 1, &r);
        sink += r;
    } else if (op == "dotc") {
        if constexpr (single<T>) cblas_cdotc_sub(n, x, 1, y, 1, &r);
        else cblas_zdotc_sub(n, x, 1, y, 1, &r);
        sink += r;
    } else if (op == "axpy") {
        const T s = sink.real() > 0 ? T(1e-3) : T(-1e-3);
        sink = -sink + T(1);
        if constexpr (single<T>) cblas_caxpy(n, &s, x, 1, y, 1);
        else cblas_zaxpy(n, &s, x, 1, y, 1);
    } else if (op == "scal") {
        const T& s = sink.real() > 0 ? shrink : grow;
        sink = -sink + T(1);
        if constexpr (single<T>) cblas_cscal(n, &s, y, 1);
        else cblas_zscal(n, &s, y, 1);
    } else if (op == "nrm2") {
        if constexpr (single<T>) sink += cblas_scnrm2(n, x, 1);
        else sink += cblas_dznrm2(n, x, 1);
    } else if (op == "gemvN" || op == "gemvT" || op == "gemvC") {
        const auto t = op == "gemvN" ? CblasNoTrans : op == "gemvT" ? CblasTrans : CblasConjTrans;
        if constexpr (single<T>) cblas_cgemv(CblasColMajor, t, n, n, &alpha, a, n, x, 1, &beta, y, 1);
        else cblas_zgemv(CblasColMajor, t, n, n, &alpha, a, n, x, 1, &beta, y, 1);
    } else if (op == "hemv") {
        if constexpr (single<T>) cblas_chemv(CblasColMajor, CblasUpper, n, &alpha, a, n, x, 1, &beta, y, 1);
        else cblas_zhemv(CblasColMajor, CblasUpper, n, &alpha, a, n, x, 1, &beta, y, 1);
    } else if (op == "geru") {
        const T s = sink.real() > 0 ? T(1e-3) : T(-1e-3);
        sink = -sink + T(1);
        if constexpr (single<T>) cblas_cgeru(CblasColMajor, n, n, &s, x, 1, y, 1, a, n);
        else cblas_zgeru(CblasColMajor, n, n, &s, x, 1, y, 1, a, n);
    }
}
#endif

// Who runs: ours on the detected path, ours on the AVX2 path, the peer.
enum Side { Ours, OursAvx2, Peer };
const char* const side_names[] = {"qnum", "qnum_avx2", "openblas"};

template <class T>
void run(benchmark::State& state, const std::string& op, Side side) {
    const bool matrix = op.rfind("gemv", 0) == 0 || op == "hemv" || op == "geru";
    const bool mine = side != Peer;
    Data<T> d(matrix ? 4000 : 1000000, matrix);
    T sink(1);
    if (side == OursAvx2) qnum::cpu::force(qnum::cpu::Path::Avx2);
    for (auto _ : state) {
        if (mine) ours(op, d, sink);
#ifdef QNUM_HAVE_OPENBLAS
        else peer(op, d, sink);
#endif
        benchmark::ClobberMemory();
    }
    qnum::cpu::reset();
    benchmark::DoNotOptimize(sink);
}

}  // namespace

int main(int argc, char** argv) {
#ifdef QNUM_HAVE_OPENBLAS
    openblas_set_num_threads(1);
    std::printf("%s, core %s\n", openblas_get_config(), openblas_get_corename());
#endif
    std::printf("qnum path: %s\n", qnum_tuned_path());
    qnum_skip_signal_handler();
    std::vector<Side> sides = {Ours};
    if (qnum::cpu::detected() == qnum::cpu::Path::Avx512) sides.push_back(OursAvx2);
#ifdef QNUM_HAVE_OPENBLAS
    sides.push_back(Peer);
#endif
    const int rounds = 3;
    for (int round = 0; round < rounds; ++round)
        for (const char* op : {"dotu", "dotc", "axpy", "scal", "nrm2", "gemvN", "gemvT", "gemvC", "hemv", "geru"})
            for (bool dbl : {false, true})
                for (Side side : sides) {
                    const std::string name = std::string("BM_") + (dbl ? "z" : "c") + op + "/" + side_names[side];
                    std::string o = op;
                    benchmark::RegisterBenchmark(name.c_str(), [o, side, dbl](benchmark::State& s) {
                        if (dbl) run<cd>(s, o, side);
                        else run<cf>(s, o, side);
                    })->MinTime(0.2);
                }
    benchmark::Initialize(&argc, argv);
    kbench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.print_ratios("qnum", "openblas", "qnum (detected path) / OpenBLAS");
    if (sides.size() == 3) reporter.print_ratios("qnum_avx2", "openblas", "qnum (AVX2 path) / OpenBLAS");
    benchmark::Shutdown();
    return 0;
}
