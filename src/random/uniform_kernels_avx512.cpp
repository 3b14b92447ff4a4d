// AVX-512 kernels of the uniform generator: sixteen seeds per 512-bit vector, jumped ahead
// together.
// GCC 12's AVX-512 headers start several intrinsics from an undefined vector and then warn
// about it at every use (a known false positive of that compiler); silence it for this file.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>

#include "random/uniform_simd.hpp"

namespace qnum::random::kern::avx512 {
namespace {

struct V {
    using reg = __m512i;   // sixteen seeds, one per 32-bit lane
    using mult = __m512i;  // the multiplier in the low half of each 64-bit lane
    static constexpr std::size_t width = 16;
    static reg load(const std::uint32_t* p) { return _mm512_load_si512(p); }
    static void store(std::uint32_t* p, reg x) { _mm512_store_si512(p, x); }
    static mult multiplier(std::uint32_t a) { return _mm512_set1_epi64(a); }

    // hi + lo of a 62-bit product, then the one conditional subtraction of mulmod(): as
    // unsigned 32-bit numbers r - m wraps above r exactly when r < m, so min() selects.
    static __m512i reduce(__m512i p) {
        const __m512i mask = _mm512_set1_epi64(m);
        __m512i r = _mm512_add_epi64(_mm512_and_si512(p, mask), _mm512_srli_epi64(p, 31));
        return _mm512_min_epu32(r, _mm512_sub_epi32(r, mask));
    }
    // The multiply takes the even 32-bit lanes only; the odd ones are shifted down for a
    // second multiply and their results shifted back up.
    static reg mulmod(reg x, mult a) {
        __m512i even = reduce(_mm512_mul_epu32(x, a));
        __m512i odd = reduce(_mm512_mul_epu32(_mm512_srli_epi64(x, 32), a));
        return _mm512_mask_blend_epi32(0xAAAA, even, _mm512_slli_epi64(odd, 32));
    }
};

struct FloatOut : TailDeviates<float> {
    __m512 vscale;
    void put(__m512i x, std::size_t at) const {
        _mm512_storeu_ps(out + at, _mm512_mul_ps(_mm512_cvtepi32_ps(x), vscale));
    }
};

struct DoubleOut : TailDeviates<double> {
    __m512d vscale;
    void put(__m512i x, std::size_t at) const {
        __m512d lo = _mm512_cvtepi32_pd(_mm512_castsi512_si256(x));
        __m512d hi = _mm512_cvtepi32_pd(_mm512_extracti64x4_epi64(x, 1));
        _mm512_storeu_pd(out + at, _mm512_mul_pd(lo, vscale));
        _mm512_storeu_pd(out + at + 8, _mm512_mul_pd(hi, vscale));
    }
};

struct SeedOut : TailSeeds {
    void put(__m512i x, std::size_t at) const { _mm512_storeu_si512(out + at, x); }
};

}  // namespace

std::uint32_t uniform(std::uint32_t a, std::uint32_t seed, float scale, float* out, std::size_t n) {
    FloatOut e{{scale, out}, _mm512_set1_ps(scale)};
    return jump_ahead<V>(a, seed, n, e);
}

std::uint32_t uniform(std::uint32_t a, std::uint32_t seed, double scale, double* out, std::size_t n) {
    DoubleOut e{{scale, out}, _mm512_set1_pd(scale)};
    return jump_ahead<V>(a, seed, n, e);
}

std::uint32_t seeds(std::uint32_t a, std::uint32_t seed, std::uint32_t* out, std::size_t n) {
    SeedOut e{{out}};
    return jump_ahead<V>(a, seed, n, e);
}

}  // namespace qnum::random::kern::avx512
