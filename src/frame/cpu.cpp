// Run-time CPU detection: tuned paths are compiled for their instruction sets in files
// of their own and chosen here, so the library runs on any x86-64 machine.
#include "frame/cpu.hpp"

#include <atomic>

namespace qnum::cpu {
namespace {

Path probe() {
#if defined(__x86_64__) || defined(__i386__)
    __builtin_cpu_init();
    if (__builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
        __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512bw"))
        return Path::Avx512;
    if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma")) return Path::Avx2;
#endif
    return Path::Portable;
}

}  // namespace

std::atomic<int> current{-1};

Path detected() {
    static const Path p = probe();
    return p;
}

Path first_active() {
    const Path p = detected();
    int unset = -1;
    current.compare_exchange_strong(unset, static_cast<int>(p), std::memory_order_relaxed);
    return static_cast<Path>(current.load(std::memory_order_relaxed));
}

void force(Path p) {
    int want = static_cast<int>(p), best = static_cast<int>(detected());
    current.store(want < best ? want : best, std::memory_order_relaxed);
}

void reset() { current.store(static_cast<int>(detected()), std::memory_order_relaxed); }

}  // namespace qnum::cpu
