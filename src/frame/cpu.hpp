// Run-time CPU detection for the tuned paths of every subsystem, with a switch that tests
// use to force a path.
#pragma once

namespace qnum::cpu {

enum class Path { Portable = 0, Avx2 = 1, Avx512 = 2 };

// The best path this machine supports.
Path detected();
// The path kernels use now: the detected one unless a test forced a lower one.
Path active();
// Forces a path (clamped to what the machine supports); tests only.
void force(Path p);
// Back to the detected path.
void reset();

}  // namespace qnum::cpu
