// The matrix-product engine for AVX2 with FMA: 16 vector registers of 256 bits, so register
// blocks of 8 by 6 (double), 16 by 6 (float) and 4 by 3, 8 by 3 complex, each leaving room
// for the A sliver and the broadcast element of B.
#include <immintrin.h>

#include "kernels/gemm_driver.hpp"

namespace qnum::kern::gemm_impl {
namespace {

struct VD {
    using R = double;
    using reg = __m256d;
    static constexpr int w = 4;
    static reg zero() { return _mm256_setzero_pd(); }
    static reg load(const R* p) { return _mm256_loadu_pd(p); }
    static reg bcast(const R* p) { return _mm256_broadcast_sd(p); }
    static reg fma(reg a, reg b, reg c) { return _mm256_fmadd_pd(a, b, c); }
    static reg mul(reg a, reg b) { return _mm256_mul_pd(a, b); }
    static reg add(reg a, reg b) { return _mm256_add_pd(a, b); }
    static void store(R* p, reg a) { _mm256_storeu_pd(p, a); }
    static reg swap(reg a) { return _mm256_permute_pd(a, 0x5); }
    static reg addsub(reg a, reg b) { return _mm256_addsub_pd(a, b); }
};

struct VS {
    using R = float;
    using reg = __m256;
    static constexpr int w = 8;
    static reg zero() { return _mm256_setzero_ps(); }
    static reg load(const R* p) { return _mm256_loadu_ps(p); }
    static reg bcast(const R* p) { return _mm256_broadcast_ss(p); }
    static reg fma(reg a, reg b, reg c) { return _mm256_fmadd_ps(a, b, c); }
    static reg mul(reg a, reg b) { return _mm256_mul_ps(a, b); }
    static reg add(reg a, reg b) { return _mm256_add_ps(a, b); }
    static void store(R* p, reg a) { _mm256_storeu_ps(p, a); }
    static reg swap(reg a) { return _mm256_permute_ps(a, 0xB1); }
    static reg addsub(reg a, reg b) { return _mm256_addsub_ps(a, b); }
};

}  // namespace

template <>
Engine<float> engine_avx2<float>() {
    return Kernel<float, VS, 2, 6, 192, 256, 4032>::engine();
}
template <>
Engine<double> engine_avx2<double>() {
    return Kernel<double, VD, 2, 6, 96, 256, 4032>::engine();
}
template <>
Engine<std::complex<float>> engine_avx2<std::complex<float>>() {
    return Kernel<std::complex<float>, VS, 2, 3, 128, 256, 2016>::engine();
}
template <>
Engine<std::complex<double>> engine_avx2<std::complex<double>>() {
    return Kernel<std::complex<double>, VD, 2, 3, 64, 256, 2016>::engine();
}

}  // namespace qnum::kern::gemm_impl
