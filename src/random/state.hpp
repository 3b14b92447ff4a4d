// Per-thread state of the uniform generator: the stream record, the shuffle blocks, clock
// seeds and the hooks that tests use to pin the clock and to make allocation fail.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>

namespace qnum::random {

inline constexpr std::uint32_t modulus = 2147483647u;  // 2^31 - 1, a prime
inline constexpr int table_size = 128;

// One stream per thread. The fields keep the order of the generator's state record.
struct State {
    std::int32_t needs_init;  // 1 while the constants below are unset
    std::int32_t seeded;      // 0 until the caller or the clock fixed a seed
    double modulus;
    double inv_modulus;
    double seed_d;        // the seed as a double, for the table fill
    float scale;          // deviate = float(seed) * scale
    std::int32_t seed;    // 1 <= seed <= 2^31 - 2 once seeded
    std::int32_t option;  // 1..6
    std::int32_t reserved;
    std::int32_t table_set;  // 1: the float shuffle table holds valid entries
};

// The shuffle table of one precision with its first-use flags.
template <class T>
struct Block {
    T table[table_size];
    std::int32_t first_call;   // 1 until the first draw of this precision
    std::int32_t table_stale;  // 1 until the first table fill of this precision
    // The double table's own validity flag; the float table's lives in State::table_set.
    std::int32_t double_table_set;
};

// The calling thread's stream, created and initialised on first use. Null after raising
// TERMINAL 200 when memory runs out.
State* state();
// The calling thread's shuffle block of precision T (float or double), created on first use;
// null after raising TERMINAL 200.
template <class T>
Block<T>* block();

// Whether the table of precision T holds valid entries: the float flag is part of the
// stream record, the double table keeps its own.
inline std::int32_t& table_set(State& s, Block<float>&) { return s.table_set; }
inline std::int32_t& table_set(State&, Block<double>& b) { return b.double_table_set; }

// The seed the clock gives now: (hour * 100 + minute) * 100 + second + 1 in UTC (local time
// when UTC cannot be had); exactly midnight, or no usable time at all, gives 123457.
std::int32_t clock_seed();
// Stores a clock seed in seed and seed_d; `mark` counts the stream as seeded.
void take_clock_seed(State& s, bool mark);

// Multiplier and shuffling of generator options 1..6.
std::uint32_t multiplier(int option);
inline bool shuffled(int option) { return option % 2 == 0; }

// ---- hooks (internal; tests use them, callers of the library cannot reach them) ----

// Source of the calendar time for clock seeds; null restores std::time. Returns the
// previous source (null for the default).
using Clock = std::time_t (*)();
Clock set_clock(Clock clock);

// Allocator of the per-thread records (the blocks are released with std::free at thread
// exit, so a replacement must hand out malloc-compatible memory); null restores std::malloc.
// Returns the previous allocator (null for the default).
using Allocator = void* (*)(std::size_t);
Allocator set_allocator(Allocator allocator);

}  // namespace qnum::random
