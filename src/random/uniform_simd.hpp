// The jump-ahead driver shared by the SIMD kernels of the uniform generator. Included only by
// the files compiled for an instruction set, which supply the vector operations.
#pragma once

#include <cstddef>
#include <cstdint>

#include "random/uniform_kernels.hpp"

namespace qnum::random::kern {

// Number of independent vectors kept in flight. One lane update is a chain of about a dozen
// dependent instructions (multiply, reduce, select); four vectors give the processor enough
// independent work to keep its vector units busy instead of waiting on that chain.
inline constexpr std::size_t vectors_in_flight = 4;

// Writes the run s_1..s_n through `emit`, L = width * vectors_in_flight seeds at a time. The
// lanes start at s_1..s_L, stepped one by one from the seed, and then all move L steps per
// round with the multiplier a^L mod m: s_{k+L} = a^L * s_k mod m, the same numbers the
// one-step recurrence gives. The last run of 1..L seeds is taken from the lanes after the
// vector rounds, so the final seed s_n is always at hand. Requires n >= 1.
//
// V supplies: reg, mult, width, load, store, multiplier(a) and mulmod(reg, mult).
// Emit supplies: put(reg, index) for a full vector, tail(seeds, index, count) for the rest.
template <class V, class Emit>
std::uint32_t jump_ahead(std::uint32_t a, std::uint32_t seed, std::size_t n, Emit& emit) {
    constexpr std::size_t w = V::width;
    constexpr std::size_t lanes = w * vectors_in_flight;
    alignas(64) std::uint32_t s[lanes];
    std::uint32_t x = seed;
    for (std::size_t k = 0; k < lanes; ++k) s[k] = x = mulmod(a, x);

    typename V::reg v[vectors_in_flight];
    for (std::size_t r = 0; r < vectors_in_flight; ++r) v[r] = V::load(s + r * w);
    const typename V::mult jump = V::multiplier(powmod(a, lanes));
    const std::size_t rounds = (n - 1) / lanes;
    for (std::size_t round = 0; round < rounds; ++round) {
        for (std::size_t r = 0; r < vectors_in_flight; ++r) emit.put(v[r], round * lanes + r * w);
        for (std::size_t r = 0; r < vectors_in_flight; ++r) v[r] = V::mulmod(v[r], jump);
    }
    for (std::size_t r = 0; r < vectors_in_flight; ++r) V::store(s + r * w, v[r]);
    const std::size_t done = rounds * lanes, rest = n - done;
    emit.tail(s, done, rest);
    return s[rest - 1];
}

// Emit halves shared by every instruction set: the scalar tail.
template <class T>
struct TailDeviates {
    T scale;
    T* out;
    void tail(const std::uint32_t* s, std::size_t at, std::size_t count) const {
        for (std::size_t k = 0; k < count; ++k) out[at + k] = deviate(s[k], scale);
    }
};

struct TailSeeds {
    std::uint32_t* out;
    void tail(const std::uint32_t* s, std::size_t at, std::size_t count) const {
        for (std::size_t k = 0; k < count; ++k) out[at + k] = s[k];
    }
};

}  // namespace qnum::random::kern
