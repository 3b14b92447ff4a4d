// The solvers keep no shared state: threads solving at once get what one thread gets.
#include <thread>

#include "linsys_test.hpp"

namespace qnum::test {
namespace {

TEST(LinsysThreads, ConcurrentSolvesMatchSerialOnes) {
    qnum_skip_signal_handler();
    constexpr int threads = 4, n = 70;
    std::vector<std::vector<double>> want(threads), got(threads);
    auto solve = [](int t) {
        QuietErrors quiet;
        std::vector<double> a = make_matrix<double>(Kind::Random, n, n, 40 + t), b = make_vector<double>(n, 50 + t);
        double* inv = nullptr;
        double* x = qnum_d_lin_sol_gen(n, a.data(), b.data(), QNUM_INVERSE, &inv, 0);
        double* y = qnum_d_lin_sol_posdef(n, inv, b.data(), 0);  // any matrix will do: only the outcome is compared
        std::vector<double> out(x, x + n);
        out.push_back(qnum_n1rty(1));
        if (y != nullptr) out.insert(out.end(), y, y + n);
        qnum_free_allocated_memory(x);
        qnum_free_allocated_memory(y);
        qnum_free_allocated_memory(inv);
        return out;
    };
    for (int t = 0; t < threads; ++t) want[t] = solve(t);
    std::vector<std::thread> pool;
    for (int t = 0; t < threads; ++t) pool.emplace_back([&, t] { got[t] = solve(t); });
    for (auto& th : pool) th.join();
    for (int t = 0; t < threads; ++t) EXPECT_TRUE(same_bits(want[t], got[t])) << t;
}

}  // namespace
}  // namespace qnum::test
