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

// Run lengths around the vector and lane-group boundaries (8 and 32 lanes for AVX2, 16 and 64
// for AVX-512) and the dispatch threshold.
TEST(RandomKernels, TunedPathsMatchPortableBits) {
    for (cpu::Path path : {cpu::Path::Avx2, cpu::Path::Avx512}) {
        if (cpu::detected() < path) continue;
        const bool avx2 = path == cpu::Path::Avx2;
        auto uniform = [avx2](auto... v) { return avx2 ? kern::avx2::uniform(v...) : kern::avx512::uniform(v...); };
        auto seeds = [avx2](auto... v) { return avx2 ? kern::avx2::seeds(v...) : kern::avx512::seeds(v...); };
        for (std::uint32_t a : multipliers)
            for (std::uint32_t seed : {1u, 2147483646u, 123456789u})
                for (std::size_t n : {1, 7, 32, 33, 63, 64, 65, 255, 256, 257, 1000, 4099}) {
                    SCOPED_TRACE(::testing::Message() << avx2 << " a " << a << " seed " << seed << " n " << n);
                    std::vector<float> f(n), f0(n);
                    std::vector<double> d(n), d0(n);
                    std::vector<std::uint32_t> s(n), s0(n);
                    ASSERT_EQ(uniform(a, seed, scale, f.data(), n), kern::portable::uniform(a, seed, scale, f0.data(), n));
                    ASSERT_EQ(uniform(a, seed, double(scale), d.data(), n), kern::portable::uniform(a, seed, double(scale), d0.data(), n));
                    ASSERT_EQ(seeds(a, seed, s.data(), n), kern::portable::seeds(a, seed, s0.data(), n));
                    ASSERT_TRUE(f == f0 && d == d0 && s == s0);
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
