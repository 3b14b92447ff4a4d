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

std::atomic<int> forced{-1};

}  // namespace

Path detected() {
    static const Path p = probe();
    return p;
}

Path active() {
    int f = forced.load(std::memory_order_relaxed);
    return f < 0 ? detected() : static_cast<Path>(f);
}

void force(Path p) {
    int want = static_cast<int>(p), best = static_cast<int>(detected());
    forced.store(want < best ? want : best, std::memory_order_relaxed);
}

void reset() { forced.store(-1, std::memory_order_relaxed); }

}  // namespace qnum::cpu
