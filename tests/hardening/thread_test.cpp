// Thread stress with trapping off: 8 threads each run the whole bad-input sweep (every routine
// and kernel, good and bad input, the thread's own random stream) and a quadrature whose
// integrand raises library errors itself, and must see every result and error state the
// sweep gives in a thread alone. The threads are made and joined round after round;
// afterwards the library holds as many blocks as after the first round.
#include <malloc.h>

#include <atomic>
#include <chrono>
#include <cstring>

#include "frame/context.hpp"
#include "hardening.hpp"

namespace qnum::test::hard {
namespace {

constexpr int threads = 8, rounds = 20;

double noisy(double x) {  // a TERMINAL from gamma at a pole on part of the interval
    if (x > 0.9) qnum_d_gamma(0.0);
    return qnum_d_erf(x);
}

// The sweep's calls that `pick` names (all when empty), and after every 64th the noisy
// integral; picks the calls that take under a millisecond.
std::vector<Verdict> run_all(int t, std::vector<std::size_t>& pick) {
    QuietErrors quiet;
    qnum_random_seed_set(1000 + 37 * t);
    const bool choose = pick.empty();
    std::vector<Verdict> out;
    for (std::size_t i = 0; i < (choose ? sweep().size() : pick.size()); ++i) {
        const auto start = std::chrono::steady_clock::now();
        out.push_back(sweep()[choose ? i : pick[i]].run());
        if (choose && std::chrono::steady_clock::now() - start < std::chrono::milliseconds(1)) pick.push_back(i);
        if (i % 64 == 63) out.push_back({qnum_d_int_fcn(noisy, 0.0, 1 + 0.125 * t, 0), outcome(), ""});
    }
    return out;
}

TEST(HardeningThreadStress, TheSweepInEightThreadsMatchesTheSweepAlone) {
    QuietErrors quiet;
    set_size_cap(std::size_t(1) << 28);
    std::vector<std::vector<Verdict>> expected(threads);
    std::vector<std::size_t> pick;
    std::thread([&] { run_all(0, pick); }).join();  // what each thread then makes, alone
    for (int t = 0; t < threads; ++t) std::thread([&, t] { expected[t] = run_all(t, pick); }).join();
    std::atomic<long> mismatches{0}, made{0};
    long long live_after_first = 0;
    const int contexts = live_contexts();
    for (int round = 0; round < rounds; ++round) {
        std::vector<std::thread> pool;
        for (int t = 0; t < threads; ++t)
            pool.emplace_back([&, t] {
                const std::vector<Verdict> got = run_all(t, pick);
                made += got.size();
                for (std::size_t i = 0; i < got.size(); ++i) {
                    const Verdict &a = got[i], &b = expected[t][i];
                    if ((std::memcmp(&a.r, &b.r, sizeof a.r) || a.o.type != b.o.type || a.o.code != b.o.code) && mismatches++ < 5)
                        ADD_FAILURE() << "thread " << t << ", call " << i << ": " << a.r << " " << a.o.code << " vs " << b.r << " " << b.o.code;
                }
            });
        for (auto& th : pool) th.join();
        if (round == 0) live_after_first = live_blocks();
    }
    set_size_cap(SIZE_MAX);
    EXPECT_EQ(mismatches.load(), 0);
    EXPECT_EQ(live_blocks(), live_after_first) << "blocks left behind by threads that ended";
    EXPECT_EQ(live_contexts(), contexts);
    std::printf("%ld calls in %d threads; heap in use %zu bytes\n", made.load(), threads, mallinfo2().uordblks);
}

}  // namespace
}  // namespace qnum::test::hard
