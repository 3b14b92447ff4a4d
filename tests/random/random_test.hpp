// Helpers of the uniform-generator tests: an independent reference stream, fresh threads
// (each with a stream of its own) and a pinned clock.
#pragma once

#include <cstdint>
#include <ctime>
#include <thread>
#include <type_traits>
#include <vector>

#include "qnum_test.hpp"
#include "random/state.hpp"

namespace qnum::test {

inline constexpr std::uint64_t m = 2147483647u;
inline constexpr std::uint32_t multipliers[3] = {16807u, 397204094u, 950706376u};
// The deviate scale: 2^-31 shrunk by one float step, written out as a constant.
inline constexpr float scale = 0x1.fffffep-32f;

// The stream in plain 64-bit modular arithmetic.
struct RefStream {
    std::uint64_t a, s;
    std::uint32_t next() { return static_cast<std::uint32_t>(s = a * s % m); }
};

inline std::uint64_t powmod(std::uint64_t a, std::uint64_t k) {
    std::uint64_t r = 1;
    for (; k; k >>= 1, a = a * a % m)
        if (k & 1) r = r * a % m;
    return r;
}
// The seed whose successor under multiplier a is `target`.
inline std::uint32_t predecessor(std::uint64_t a, std::uint64_t target) {
    return static_cast<std::uint32_t>(target * powmod(a, m - 2) % m);
}

template <class T>
T expected_deviate(std::uint32_t s) {
    return static_cast<T>(static_cast<std::int32_t>(s)) * static_cast<T>(scale);
}

// The routines of precision T: the array routine with its options, the plain one, and the
// caller's shuffle table.
template <class T, class... Options>
T* uniform(int n, Options... options) {
    if constexpr (std::is_same_v<T, float>) {
        return qnum_f_random_uniform(n, options...);
    } else {
        return qnum_d_random_uniform(n, options...);
    }
}
template <class T>
void plain_uniform(int n, T* r) {
    std::is_same_v<T, float> ? qnum_rnun(n, reinterpret_cast<float*>(r)) : qnum_drnun(n, reinterpret_cast<double*>(r));
}
template <class T>
void set_table(const T* t) {
    std::is_same_v<T, float> ? qnum_rnses(reinterpret_cast<const float*>(t)) : qnum_drnses(reinterpret_cast<const double*>(t));
}
// Draws n deviates of precision T through the array routine.
template <class T>
std::vector<T> draw(int n) {
    std::vector<T> r(n);
    uniform<T>(n, QNUM_RETURN_USER, r.data(), 0);
    return r;
}

// Runs fn in a new thread, whose stream has never been used, with errors quiet there.
template <class F>
void in_fresh_thread(F fn) {
    qnum_skip_signal_handler();
    std::thread t([&] {
        QuietErrors quiet;
        fn();
    });
    t.join();
}

// A clock pinned to `pinned_time` while a PinnedClock lives.
inline std::time_t pinned_time = 0;
class PinnedClock {
public:
    explicit PinnedClock(std::time_t t) : old_(random::set_clock([] { return pinned_time; })) {
        pinned_time = t;
    }
    void set(std::time_t t) { pinned_time = t; }
    ~PinnedClock() { random::set_clock(old_); }

private:
    random::Clock old_;
};

}  // namespace qnum::test
