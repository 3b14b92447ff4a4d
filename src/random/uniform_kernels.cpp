// The portable kernels of the uniform generator, one seed after the other, and the dispatch
// to the tuned ones.
#include "random/uniform_kernels.hpp"

#include "frame/cpu.hpp"

namespace qnum::random::kern {

namespace portable {

template <class T>
std::uint32_t run(std::uint32_t a, std::uint32_t s, T scale, T* out, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) {
        s = mulmod(a, s);
        out[k] = deviate(s, scale);
    }
    return s;
}

std::uint32_t uniform(std::uint32_t a, std::uint32_t seed, float scale, float* out, std::size_t n) {
    return run(a, seed, scale, out, n);
}

std::uint32_t uniform(std::uint32_t a, std::uint32_t seed, double scale, double* out, std::size_t n) {
    return run(a, seed, scale, out, n);
}

std::uint32_t seeds(std::uint32_t a, std::uint32_t seed, std::uint32_t* out, std::size_t n) {
    for (std::size_t k = 0; k < n; ++k) out[k] = seed = mulmod(a, seed);
    return seed;
}

}  // namespace portable

namespace {

// Below this many seeds the tuned kernels would spend most of their time stepping their
// lanes into place one seed at a time, so short runs stay portable.
constexpr std::size_t tuned_from = 256;

cpu::Path path(std::size_t n) { return n >= tuned_from ? cpu::active() : cpu::Path::Portable; }

template <class T>
std::uint32_t dispatch(std::uint32_t a, std::uint32_t seed, T scale, T* out, std::size_t n) {
    switch (path(n)) {
        case cpu::Path::Avx512: return avx512::uniform(a, seed, scale, out, n);
        case cpu::Path::Avx2: return avx2::uniform(a, seed, scale, out, n);
        default: return portable::uniform(a, seed, scale, out, n);
    }
}

}  // namespace

std::uint32_t uniform(std::uint32_t a, std::uint32_t seed, float scale, float* out, std::size_t n) {
    return dispatch(a, seed, scale, out, n);
}

std::uint32_t uniform(std::uint32_t a, std::uint32_t seed, double scale, double* out, std::size_t n) {
    return dispatch(a, seed, scale, out, n);
}

std::uint32_t seeds(std::uint32_t a, std::uint32_t seed, std::uint32_t* out, std::size_t n) {
    switch (path(n)) {
        case cpu::Path::Avx512: return avx512::seeds(a, seed, out, n);
        case cpu::Path::Avx2: return avx2::seeds(a, seed, out, n);
        default: return portable::seeds(a, seed, out, n);
    }
}

}  // namespace qnum::random::kern
