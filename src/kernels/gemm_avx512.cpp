// The matrix-product engine for AVX-512: 32 vector registers of 512 bits. Register blocks:
// 24 by 8 for double and 48 by 8 for float (24 accumulators, three registers for the A
// sliver), 8 by 6 and 16 by 6 complex (24 accumulators, two for A); the elements of B are
// broadcast straight from memory. The tall blocks measured faster here than 16 by 14 and
// 32 by 14: their B sliver (kc by 8) leaves more of L1 to the A sliver streaming past it.
#include <immintrin.h>

#include "kernels/gemm_driver.hpp"

namespace qnum::kern::gemm_impl {
namespace {

struct VD {
    using R = double;
    using reg = __m512d;
    static constexpr int w = 8;
    static reg zero() { return _mm512_setzero_pd(); }
    static reg load(const R* p) { return _mm512_loadu_pd(p); }
    static reg bcast(const R* p) { return _mm512_set1_pd(*p); }
    static reg fma(reg a, reg b, reg c) { return _mm512_fmadd_pd(a, b, c); }
    static reg mul(reg a, reg b) { return _mm512_mul_pd(a, b); }
    static reg add(reg a, reg b) { return _mm512_add_pd(a, b); }
    static void store(R* p, reg a) { _mm512_storeu_pd(p, a); }
    static reg swap(reg a) { return _mm512_shuffle_pd(a, a, 0x55); }
    static reg addsub(reg a, reg b) { return _mm512_fmaddsub_pd(a, _mm512_set1_pd(1.0), b); }
};

struct VS {
    using R = float;
    using reg = __m512;
    static constexpr int w = 16;
    static reg zero() { return _mm512_setzero_ps(); }
    static reg load(const R* p) { return _mm512_loadu_ps(p); }
    static reg bcast(const R* p) { return _mm512_set1_ps(*p); }
    static reg fma(reg a, reg b, reg c) { return _mm512_fmadd_ps(a, b, c); }
    static reg mul(reg a, reg b) { return _mm512_mul_ps(a, b); }
    static reg add(reg a, reg b) { return _mm512_add_ps(a, b); }
    static void store(R* p, reg a) { _mm512_storeu_ps(p, a); }
    static reg swap(reg a) { return _mm512_shuffle_ps(a, a, 0xB1); }
    static reg addsub(reg a, reg b) { return _mm512_fmaddsub_ps(a, _mm512_set1_ps(1.0f), b); }
};

}  // namespace

template <>
Engine<float> engine_avx512<float>() {
    return Kernel<float, VS, 3, 8, 288, 256, 4032>::engine();
}
template <>
Engine<double> engine_avx512<double>() {
    return Kernel<double, VD, 3, 8, 192, 256, 4032>::engine();
}
template <>
Engine<std::complex<float>> engine_avx512<std::complex<float>>() {
    return Kernel<std::complex<float>, VS, 2, 6, 128, 256, 2016>::engine();
}
template <>
Engine<std::complex<double>> engine_avx512<std::complex<double>>() {
    return Kernel<std::complex<double>, VD, 2, 6, 96, 192, 2016>::engine();
}

}  // namespace qnum::kern::gemm_impl
