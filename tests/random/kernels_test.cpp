// Tests of the tuned generator kernels: every path this machine has gives the portable bits.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "frame/cpu.hpp"
#include "random/uniform_kernels.hpp"
#include "random_test.hpp"

namespace qnum::test {
namespace {

namespace kern = random::kern;

struct Path {
    cpu::Path path;
    const char* name;
    std::uint32_t (*f)(std::uint32_t, std::uint32_t, float, float*, std::size_t);
    std::uint32_t (*d)(std::uint32_t, std::uint32_t, double, double*, std::size_t);
    std::uint32_t (*s)(std::uint32_t, std::uint32_t, std::uint32_t*, std::size_t);
};

const Path tuned[] = {
    {cpu::Path::Avx2, "avx2", kern::avx2::uniform, kern::avx2::uniform, kern::avx2::seeds},
    {cpu::Path::Avx512, "avx512", kern::avx512::uniform, kern::avx512::uniform, kern::avx512::seeds},
};

template <class T, class F>
void expect_same(F tuned_kernel, F portable_kernel, std::uint32_t a, std::uint32_t seed, T scale,
                 std::size_t n) {
    std::vector<T> x(n), y(n);
    ASSERT_EQ(tuned_kernel(a, seed, scale, x.data(), n), portable_kernel(a, seed, scale, y.data(), n));
    ASSERT_EQ(std::memcmp(x.data(), y.data(), n * sizeof(T)), 0);
}

// Run lengths around the vector and lane-group boundaries (8 and 32 lanes for AVX2, 16 and 64
// for AVX-512) and the dispatch threshold.
TEST(RandomKernels, TunedPathsMatchPortableBits) {
    const std::size_t lengths[] = {1, 7, 32, 33, 63, 64, 65, 255, 256, 257, 1000, 4099};
    const std::uint32_t seeds[] = {1, 2147483646, 123456789};
    for (const Path& p : tuned) {
        if (cpu::detected() < p.path) continue;
        for (std::uint32_t a : multipliers) {
            for (std::uint32_t seed : seeds) {
                for (std::size_t n : lengths) {
                    SCOPED_TRACE(::testing::Message()
                                 << p.name << " a " << a << " seed " << seed << " n " << n);
                    using FF = std::uint32_t (*)(std::uint32_t, std::uint32_t, float, float*, std::size_t);
                    using FD = std::uint32_t (*)(std::uint32_t, std::uint32_t, double, double*, std::size_t);
                    expect_same<float, FF>(p.f, kern::portable::uniform, a, seed, scale, n);
                    expect_same<double, FD>(p.d, kern::portable::uniform, a, seed, double(scale), n);
                    std::vector<std::uint32_t> x(n), y(n);
                    ASSERT_EQ(p.s(a, seed, x.data(), n), kern::portable::seeds(a, seed, y.data(), n));
                    ASSERT_EQ(x, y);
                }
            }
        }
    }
}

// Through the public routines, with the path forced: the dispatch reaches every path and the
// shuffled draws (which take their seeds from the kernels) agree too.
TEST(RandomKernels, ForcedPathsGiveTheSameStreams) {
    for (int option = 1; option <= 6; ++option) {
        std::vector<float> f[3];
        std::vector<double> d[3];
        int last[3];
        for (cpu::Path path : {cpu::Path::Portable, cpu::Path::Avx2, cpu::Path::Avx512}) {
            const int k = static_cast<int>(path);
            in_fresh_thread([&] {
                cpu::force(path);
                qnum_random_option(option);
                qnum_random_seed_set(777);
                f[k] = draw<float>(5000);
                d[k] = draw<double>(3001);
                last[k] = qnum_random_seed_get();
                cpu::reset();
            });
        }
        for (int k = 1; k < 3; ++k) {
            EXPECT_EQ(f[k], f[0]) << "option " << option << " path " << k;
            EXPECT_EQ(d[k], d[0]) << "option " << option << " path " << k;
            EXPECT_EQ(last[k], last[0]);
        }
    }
}

}  // namespace
}  // namespace qnum::test
