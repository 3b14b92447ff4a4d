// Kernels of the uniform generator: runs of n consecutive seeds s_k = a^k * seed mod (2^31 - 1),
// written as deviates or as seeds. The portable kernel steps one seed at a time; the tuned
// ones jump ahead across SIMD lanes and give the same bits.
#pragma once

#include <cstddef>
#include <cstdint>

namespace qnum::random::kern {

inline constexpr std::uint32_t m = 2147483647u;

// (a * s) mod (2^31 - 1), exact for a, s < 2^31. Since 2^31 = 1 (mod m), the 62-bit product
// p = hi * 2^31 + lo reduces to hi + lo < 2m; one conditional subtraction finishes, and the
// result is never m itself because m is prime and divides neither factor.
inline std::uint32_t mulmod(std::uint32_t a, std::uint32_t s) {
    std::uint64_t p = static_cast<std::uint64_t>(a) * s;
    std::uint32_t r = static_cast<std::uint32_t>((p & m) + (p >> 31));
    return r >= m ? r - m : r;
}

// a^k mod (2^31 - 1) by squaring: the multiplier that jumps a stream k steps ahead.
inline std::uint32_t powmod(std::uint32_t a, std::uint64_t k) {
    std::uint32_t r = 1;
    for (; k != 0; k >>= 1, a = mulmod(a, a))
        if (k & 1) r = mulmod(r, a);
    return r;
}

// The deviate of a seed: the seed rounded to T, times scale, rounded to T.
template <class T>
inline T deviate(std::uint32_t s, T scale) {
    return static_cast<T>(static_cast<std::int32_t>(s)) * scale;
}

// out[k] = deviate(s_{k+1}) for k < n (n >= 1); returns s_n. Chooses the path that
// qnum::cpu::active() names.
std::uint32_t uniform(std::uint32_t a, std::uint32_t seed, float scale, float* out, std::size_t n);
std::uint32_t uniform(std::uint32_t a, std::uint32_t seed, double scale, double* out, std::size_t n);
// out[k] = s_{k+1} for k < n (n >= 1); returns s_n.
std::uint32_t seeds(std::uint32_t a, std::uint32_t seed, std::uint32_t* out, std::size_t n);

// The paths themselves, for the dispatcher and for tests.
namespace portable {
std::uint32_t uniform(std::uint32_t a, std::uint32_t seed, float scale, float* out, std::size_t n);
std::uint32_t uniform(std::uint32_t a, std::uint32_t seed, double scale, double* out, std::size_t n);
std::uint32_t seeds(std::uint32_t a, std::uint32_t seed, std::uint32_t* out, std::size_t n);
}  // namespace portable
namespace avx2 {
std::uint32_t uniform(std::uint32_t a, std::uint32_t seed, float scale, float* out, std::size_t n);
std::uint32_t uniform(std::uint32_t a, std::uint32_t seed, double scale, double* out, std::size_t n);
std::uint32_t seeds(std::uint32_t a, std::uint32_t seed, std::uint32_t* out, std::size_t n);
}  // namespace avx2
namespace avx512 {
std::uint32_t uniform(std::uint32_t a, std::uint32_t seed, float scale, float* out, std::size_t n);
std::uint32_t uniform(std::uint32_t a, std::uint32_t seed, double scale, double* out, std::size_t n);
std::uint32_t seeds(std::uint32_t a, std::uint32_t seed, std::uint32_t* out, std::size_t n);
}  // namespace avx512

}  // namespace qnum::random::kern
