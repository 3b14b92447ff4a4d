// Tests of per-thread streams: the same seed in two threads gives the same sequence, and one
// thread's option and seed leave the other's stream alone.
#include <gtest/gtest.h>

#include <thread>

#include "random_test.hpp"

namespace qnum::test {
namespace {

TEST(RandomThreads, SameSeedSameSequence) {
    qnum_skip_signal_handler();
    constexpr int n = 20000;
    std::vector<double> a, b;
    std::vector<float> c;
    auto worker = [](int option, std::vector<double>* out) {
        QuietErrors quiet;
        qnum_random_option(option);
        qnum_random_seed_set(8675309);
        // Many short draws so that the threads interleave.
        while (out->size() < n) {
            std::vector<double> r = draw<double>(97);
            out->insert(out->end(), r.begin(), r.end());
        }
    };
    std::thread t1(worker, 3, &a), t2(worker, 3, &b);
    std::thread t3([&c] {
        QuietErrors quiet;
        qnum_random_option(2);
        qnum_random_seed_set(1);
        for (int i = 0; i < 200; ++i) draw<float>(100);
        qnum_random_seed_set(0);
    });
    t1.join();
    t2.join();
    t3.join();
    EXPECT_EQ(a, b);
    RefStream ref{multipliers[1], 8675309};
    for (int i = 0; i < n; ++i) ASSERT_EQ(a[i], expected_deviate<double>(ref.next())) << i;
}

}  // namespace
}  // namespace qnum::test
