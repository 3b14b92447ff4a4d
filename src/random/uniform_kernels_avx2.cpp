// AVX2 kernels of the uniform generator: eight seeds per 256-bit vector, jumped ahead together.
#include <immintrin.h>

#include "random/uniform_simd.hpp"

namespace qnum::random::kern::avx2 {
namespace {

struct V {
    using reg = __m256i;   // eight seeds, one per 32-bit lane
    using mult = __m256i;  // the multiplier in the low half of each 64-bit lane
    static constexpr std::size_t width = 8;
    static reg load(const std::uint32_t* p) { return _mm256_load_si256(reinterpret_cast<const __m256i*>(p)); }
    static void store(std::uint32_t* p, reg x) { _mm256_store_si256(reinterpret_cast<__m256i*>(p), x); }
    static mult multiplier(std::uint32_t a) { return _mm256_set1_epi64x(a); }

    // hi + lo of a 62-bit product, then the one conditional subtraction of mulmod(): as
    // unsigned 32-bit numbers r - m wraps above r exactly when r < m, so min() selects.
    static __m256i reduce(__m256i p) {
        const __m256i mask = _mm256_set1_epi64x(m);
        __m256i r = _mm256_add_epi64(_mm256_and_si256(p, mask), _mm256_srli_epi64(p, 31));
        return _mm256_min_epu32(r, _mm256_sub_epi32(r, mask));
    }
    // The multiply takes the even 32-bit lanes only; the odd ones are shifted down for a
    // second multiply and their results shifted back up.
    static reg mulmod(reg x, mult a) {
        __m256i even = reduce(_mm256_mul_epu32(x, a));
        __m256i odd = reduce(_mm256_mul_epu32(_mm256_srli_epi64(x, 32), a));
        return _mm256_blend_epi32(even, _mm256_slli_epi64(odd, 32), 0xAA);
    }
};

struct FloatOut : TailDeviates<float> {
    __m256 vscale;
    void put(__m256i x, std::size_t at) const {
        _mm256_storeu_ps(out + at, _mm256_mul_ps(_mm256_cvtepi32_ps(x), vscale));
    }
};

struct DoubleOut : TailDeviates<double> {
    __m256d vscale;
    void put(__m256i x, std::size_t at) const {
        __m256d lo = _mm256_cvtepi32_pd(_mm256_castsi256_si128(x));
        __m256d hi = _mm256_cvtepi32_pd(_mm256_extracti128_si256(x, 1));
        _mm256_storeu_pd(out + at, _mm256_mul_pd(lo, vscale));
        _mm256_storeu_pd(out + at + 4, _mm256_mul_pd(hi, vscale));
    }
};

struct SeedOut : TailSeeds {
    void put(__m256i x, std::size_t at) const {
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + at), x);
    }
};

}  // namespace

std::uint32_t uniform(std::uint32_t a, std::uint32_t seed, float scale, float* out, std::size_t n) {
    FloatOut e{{scale, out}, _mm256_set1_ps(scale)};
    return jump_ahead<V>(a, seed, n, e);
}

std::uint32_t uniform(std::uint32_t a, std::uint32_t seed, double scale, double* out, std::size_t n) {
    DoubleOut e{{scale, out}, _mm256_set1_pd(scale)};
    return jump_ahead<V>(a, seed, n, e);
}

std::uint32_t seeds(std::uint32_t a, std::uint32_t seed, std::uint32_t* out, std::size_t n) {
    SeedOut e{{out}};
    return jump_ahead<V>(a, seed, n, e);
}

}  // namespace qnum::random::kern::avx2
