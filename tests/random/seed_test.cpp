// Tests of seeds and options: clock seeds, what marks a stream seeded, option changes.
#include <gtest/gtest.h>

#include <climits>
#include <limits>

#include "random_test.hpp"

namespace qnum::test {
namespace {

constexpr std::time_t day = 86400;

// The first deviate of option 1 from seed s.
float first_after(std::uint32_t s) { return expected_deviate<float>(RefStream{16807, s}.next()); }

TEST(ClockSeed, FollowsTheUniversalTimeOfDay) {
    const struct {
        std::time_t t;
        std::int32_t seed;
    } cases[] = {
        {0, 123457},                    // exactly midnight
        {1, 2},                         // one second later is no longer midnight
        {3723, 10204},                  // 01:02:03
        {20000 * day + 86399, 235960},  // 23:59:59
        {12345 * day + 12 * 3600 + 34 * 60 + 57, 123458},
        {std::numeric_limits<std::time_t>::max(), 123457},  // no calendar time at all
    };
    for (const auto& c : cases) {
        PinnedClock clock(c.t);
        EXPECT_EQ(random::clock_seed(), c.seed) << c.t;
        qnum_random_seed_set(0);
        EXPECT_EQ(qnum_random_seed_get(), c.seed) << c.t;
    }
}

// A fresh stream takes the clock on its first draw. Seeds of 0 or out of range are not
// errors: 0 takes a clock seed but leaves the stream unseeded, so the first draw takes its
// own; on a stream already seeded the clock seed is simply the new seed; an out-of-range
// seed leaves a seeded stream alone and seeds an unseeded one from the clock, for good.
TEST(Seed, FirstDrawZeroAndOutOfRangeSeeds) {
    const struct {
        int earlier, seed;
        std::uint32_t first;  // the seed that the first draw continues from
    } cases[] = {{-1, -1, 10204}, {-1, 0, 10204}, {555, 0, 2}, {-1, -5, 2}, {-1, INT_MIN, 2}, {-1, INT_MAX, 2},
                 {4711, -5, 4711}, {4711, INT_MIN, 4711}, {4711, INT_MAX, 4711}};
    for (const auto& c : cases)
        in_fresh_thread([c] {
            SCOPED_TRACE(::testing::Message() << c.earlier << " " << c.seed);
            PinnedClock clock(1);
            if (c.earlier >= 0) qnum_random_seed_set(c.earlier);
            if (c.seed != -1) qnum_random_seed_set(c.seed);
            EXPECT_EQ(last_type(), 0);
            clock.set(3723);
            EXPECT_EQ(draw<float>(1)[0], first_after(c.first));
        });
}

// Reading the seed of an unseeded stream seeds it, so the value can replay what follows.
TEST(Seed, GetSeedsAFreshStream) {
    in_fresh_thread([] {
        PinnedClock clock(3723);
        const int s = qnum_random_seed_get();
        EXPECT_EQ(s, 10204);
        clock.set(1);
        std::vector<float> r = draw<float>(50);
        qnum_random_seed_set(s);
        EXPECT_EQ(draw<float>(50), r);
    });
}

TEST(Option, ChangingItDoesNotReseed) {
    in_fresh_thread([] {
        qnum_random_seed_set(2024);
        RefStream ref{16807, 2024};
        draw<double>(5);
        for (int i = 0; i < 5; ++i) ref.next();
        qnum_random_option(3);
        ref.a = multipliers[1];
        std::vector<double> r = draw<double>(5);
        for (double u : r) EXPECT_EQ(u, expected_deviate<double>(ref.next()));
        EXPECT_EQ(last_type(), 0);
    });
}

}  // namespace
}  // namespace qnum::test
