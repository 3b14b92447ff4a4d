// Run-time CPU detection for the tuned paths of every subsystem, with a switch that tests
// use to force a path.
#pragma once

#include <atomic>

namespace qnum::cpu {

enum class Path { Portable = 0, Avx2 = 1, Avx512 = 2 };

// The best path this machine supports.
Path detected();
// The path in use, once known: -1 until the first question, which looks at the machine.
extern std::atomic<int> current;
Path first_active();
// The path kernels use now: the detected one unless a test forced a lower one. Inline: the
// scalar routines ask on every call.
inline Path active() {
    const int p = current.load(std::memory_order_relaxed);
    return p >= 0 ? static_cast<Path>(p) : first_active();
}
// Forces a path (clamped to what the machine supports); tests only.
void force(Path p);
// Back to the detected path.
void reset();

}  // namespace qnum::cpu
