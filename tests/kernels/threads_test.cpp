// Threaded Level 3 kernels: the same bits on 1, 2, 3 and 8 threads for every routine built on
// the product; one team at a time (concurrent callers, calls from inside a parallel region);
// faults in team members reported by the caller's trap; fork; the thread-count setting.
#include <gtest/gtest.h>

#include <atomic>
#include <complex>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <malloc.h>
#include <random>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <thread>
#include <type_traits>
#include <unistd.h>
#include <vector>

#include "frame/context.hpp"
#include "frame/frame.hpp"
#include "frame/threads.hpp"
#include "kernels/level3.hpp"
#include "kernels/team.hpp"
#include "qnummath.h"

namespace {

using cf = std::complex<float>;
using cd = std::complex<double>;
namespace kern = qnum::kern;
namespace threads = qnum::threads;

template <class T>
using Real = qnum::Real<T>;

// Sets the library's thread count for one scope.
struct ThreadCount {
    explicit ThreadCount(int n) { threads::set_for_tests(n); }
    ~ThreadCount() { threads::set_for_tests(0); }
};

template <class T>
std::vector<T> random_matrix(std::size_t count, unsigned seed) {
    std::mt19937 gen(seed);
    std::uniform_real_distribution<double> u(-1, 1);
    std::vector<T> v(count);
    for (T& x : v) {
        if constexpr (qnum::is_complex_v<T>)
            x = T(static_cast<Real<T>>(u(gen)), static_cast<Real<T>>(u(gen)));
        else
            x = static_cast<T>(u(gen));
    }
    return v;
}

// A triangle that is safe to solve with: a dominant diagonal.
template <class T>
std::vector<T> triangle(int n, int ld, unsigned seed) {
    std::vector<T> a = random_matrix<T>(static_cast<std::size_t>(ld) * n, seed);
    for (int i = 0; i < n; ++i) a[i + static_cast<std::size_t>(i) * ld] += T(static_cast<Real<T>>(n));
    return a;
}

template <class T>
T scalar(double re, double im) {
    if constexpr (qnum::is_complex_v<T>)
        return T(static_cast<Real<T>>(re), static_cast<Real<T>>(im));
    else
        return static_cast<T>(re);
}

// One call of a routine on fresh copies of the same inputs; returns its output array.
template <class T>
using Call = std::function<std::vector<T>()>;

template <class T>
std::vector<Call<T>> calls() {
    // Odd sizes: parts end inside register blocks and cache blocks.
    const int m = 203, n = 181, k = 157, ld = 211;
    const auto A = random_matrix<T>(static_cast<std::size_t>(ld) * 211, 1);
    const auto B = random_matrix<T>(static_cast<std::size_t>(ld) * 211, 2);
    const auto C = random_matrix<T>(static_cast<std::size_t>(ld) * 211, 3);
    const auto Lm = triangle<T>(m, ld, 4), Ln = triangle<T>(n, ld, 5);
    const T alpha = scalar<T>(0.75, -0.5), beta = scalar<T>(-1.25, 0.25);
    const Real<T> ralpha = 0.75, rbeta = -1.25;
    std::vector<Call<T>> list;
    for (char ta : {'N', 'T', 'C'})
        for (char tb : {'N', 'C'})
            list.push_back([=] {
                auto c = C;
                kern::gemm(ta, tb, m, n, k, alpha, A.data(), ld, B.data(), ld, beta, c.data(), ld);
                return c;
            });
    // A single row of register blocks: the columns are cut, 8 ways.
    const auto wide = random_matrix<T>(400 * 1201, 6);
    list.push_back([=] {
        auto c = random_matrix<T>(5 * 1201, 7);
        kern::gemm('N', 'N', 5, 1201, 400, alpha, A.data(), 5, wide.data(), 400, beta, c.data(), 5);
        return c;
    });
    // One more than a multiple of every register block: the last block of each part is a
    // single row and column.
    list.push_back([=] {
        auto c = C;
        kern::gemm('N', 'N', 193, 193, 150, alpha, A.data(), ld, B.data(), ld, beta, c.data(), ld);
        return c;
    });
    // beta = 0 assigns.
    list.push_back([=] {
        auto c = C;
        kern::gemm('T', 'N', n, m, k, alpha, A.data(), ld, B.data(), ld, T(0), c.data(), ld);
        return c;
    });
    for (char side : {'L', 'R'})
        for (char uplo : {'L', 'U'}) {
            list.push_back([=] {
                auto c = C;
                kern::symm(side, uplo, m, n, alpha, A.data(), ld, B.data(), ld, beta, c.data(), ld);
                return c;
            });
            list.push_back([=] {
                auto c = C;
                kern::hemm(side, uplo, m, n, alpha, A.data(), ld, B.data(), ld, beta, c.data(), ld);
                return c;
            });
        }
    // The rank updates hand the product blocks of about half the order: a longer k keeps them
    // large enough for a team.
    const int kr = 401;
    const auto R = random_matrix<T>(static_cast<std::size_t>(kr) * kr, 8);
    const auto S = random_matrix<T>(static_cast<std::size_t>(kr) * kr, 9);
    for (char uplo : {'L', 'U'})
        for (char trans : {'N', 'T'}) {
            const char htrans = trans == 'N' ? 'N' : 'C';
            list.push_back([=] {
                auto c = C;
                kern::syrk(uplo, trans, m, kr, alpha, R.data(), kr, beta, c.data(), ld);
                return c;
            });
            list.push_back([=] {
                auto c = C;
                kern::herk(uplo, htrans, m, kr, ralpha, R.data(), kr, rbeta, c.data(), ld);
                return c;
            });
            list.push_back([=] {
                auto c = C;
                kern::syr2k(uplo, trans, m, kr, alpha, R.data(), kr, S.data(), kr, beta, c.data(), ld);
                return c;
            });
            list.push_back([=] {
                auto c = C;
                kern::her2k(uplo, htrans, m, kr, alpha, R.data(), kr, S.data(), kr, rbeta, c.data(), ld);
                return c;
            });
        }
    for (char side : {'L', 'R'})
        for (char uplo : {'L', 'U'})
            for (char ta : {'N', 'C'}) {
                const auto tri = side == 'L' ? Lm : Ln;
                list.push_back([=] {
                    auto b = C;
                    kern::trmm(side, uplo, ta, 'N', m, n, alpha, tri.data(), ld, b.data(), ld);
                    return b;
                });
                list.push_back([=] {
                    auto b = C;
                    kern::trsm(side, uplo, ta, uplo == 'L' ? 'U' : 'N', m, n, alpha, tri.data(), ld, b.data(), ld);
                    return b;
                });
            }
    return list;
}

template <class T>
class ThreadsBitIdentical : public ::testing::Test {};
using Types = ::testing::Types<float, double, cf, cd>;
TYPED_TEST_SUITE(ThreadsBitIdentical, Types);

TYPED_TEST(ThreadsBitIdentical, EveryRoutineGivesTheSameBitsOnOneTwoThreeAndEightThreads) {
    using T = TypeParam;
    const auto list = calls<T>();
    for (std::size_t i = 0; i < list.size(); ++i) {
        std::vector<T> one;
        {
            ThreadCount count(1);
            one = list[i]();
        }
        for (int t : {2, 3, 8}) {
            ThreadCount count(t);
            const long before = threads::teams_granted();
            const std::vector<T> many = list[i]();
            EXPECT_GT(threads::teams_granted(), before) << "call " << i << " stayed on one thread";
            ASSERT_EQ(many.size(), one.size());
            EXPECT_EQ(std::memcmp(many.data(), one.data(), one.size() * sizeof(T)), 0)
                << "call " << i << " on " << t << " threads";
        }
    }
}

// The threaded product against a plain loop in long double, so that a part left out or
// computed twice cannot hide behind the one-thread path.
TEST(ThreadsProduct, ThreadedProductMatchesAPlainLoop) {
    const int m = 157, n = 301, k = 233;
    auto a = random_matrix<double>(static_cast<std::size_t>(m) * k, 7);
    auto b = random_matrix<double>(static_cast<std::size_t>(k) * n, 8);
    auto c = random_matrix<double>(static_cast<std::size_t>(m) * n, 9);
    const auto c0 = c;
    ThreadCount count(3);
    kern::gemm('N', 'N', m, n, k, 2.0, a.data(), m, b.data(), k, -1.0, c.data(), m);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i) {
            long double s = 0;
            for (int p = 0; p < k; ++p) s += static_cast<long double>(a[i + p * m]) * b[p + j * k];
            const double want = static_cast<double>(2 * s - c0[i + j * m]);
            ASSERT_NEAR(c[i + j * m], want, 1e-12 * k) << i << "," << j;
        }
}

// Inside a trapped routine the members run under their own traps, and do their share.
TEST(ThreadsTrapped, TrappedRoutinesSpreadTheWorkToo) {
    qnum_error_options(QNUM_SIGNAL_TRAPPING, 1, 0);
    const int n = 190;
    auto a = random_matrix<double>(n * n, 11);
    std::vector<double> one(n * n), many(n * n);
    {
        ThreadCount count(1);
        kern::gemm('N', 'N', n, n, n, 1.0, a.data(), n, a.data(), n, 0.0, one.data(), n);
    }
    ThreadCount count(3);
    const long teams = threads::teams_granted(), late = qnum::kern::team::late_chunks();
    const int ran = qnum::frame::call<int>("qnum_d_trapped_product", [&] {
        kern::gemm('N', 'N', n, n, n, 1.0, a.data(), n, a.data(), n, 0.0, many.data(), n);
        return 1;
    });
    EXPECT_EQ(ran, 1);
    EXPECT_EQ(qnum_n1rty(1), 0);
    EXPECT_GT(threads::teams_granted(), teams);
    EXPECT_EQ(qnum::kern::team::late_chunks(), late);
    EXPECT_EQ(std::memcmp(many.data(), one.data(), one.size() * sizeof(double)), 0);
}

// Every thread's packing buffers go when the thread ends.
TEST(ThreadsWorkspace, AThreadsBuffersAreFreedWhenItEnds) {
    auto in_use = [] {
        const struct mallinfo2 m = mallinfo2();
        return static_cast<long long>(m.uordblks + m.hblkhd);
    };
    const int n = 300;
    auto a = random_matrix<double>(n * n, 12);
    std::vector<double> c(n * n);
    const long long before = in_use();
    std::thread([&] {
        ThreadCount one(1);
        kern::gemm('N', 'N', n, n, n, 1.0, a.data(), n, a.data(), n, 0.0, c.data(), n);
    }).join();
    EXPECT_LT(in_use() - before, 256 * 1024);  // the buffers are megabytes
}

// ---- the claim on the team ----

TEST(ThreadsClaim, OneCallerAtATimeAndNeverFromInsideAParallelRegion) {
    {
        threads::Claim first(4);
        EXPECT_EQ(first.count(), 4);
        int second = 0;
        std::thread([&] { second = threads::Claim(4).count(); }).join();
        EXPECT_EQ(second, 1);  // another caller holds the team
    }
    EXPECT_EQ(threads::Claim(3).count(), 3);  // released
    EXPECT_EQ(threads::Claim(1).count(), 1);
    // From inside a parallel region: one of our teams, whose members ask again.
    static std::atomic<int> inside{0};
    qnum::kern::team::run(2, 2, [](void*, int, const std::atomic<int>&) {
        inside += threads::Claim(4).count();
        return true;
    }, nullptr);
    EXPECT_EQ(inside.load(), 2);
    int nested = 0;
    {
        threads::Claim held(2);
        threads::Claim again(2);  // the holder itself, nested: one thread too
        nested = again.count();
    }
    EXPECT_EQ(nested, 1);
}

// Small products are not worth a team.
TEST(ThreadsClaim, SmallProductsStayOnOneThread) {
    ThreadCount count(8);
    auto a = random_matrix<double>(40 * 40, 1);
    auto c = a;
    const long before = threads::teams_granted();
    kern::gemm('N', 'N', 40, 40, 40, 1.0, a.data(), 40, a.data(), 40, 0.0, c.data(), 40);
    EXPECT_EQ(threads::teams_granted(), before);
}

// Several caller threads at once (trapping off, as the library requires), each with
// products large enough for a team: every answer equals the one-thread answer.
TEST(ThreadsConcurrent, CallersInSeveralThreadsGetOneThreadAnswers) {
    qnum_error_options(QNUM_SIGNAL_TRAPPING, 0, 0);
    const int n = 150, callers = 4, rounds = 3;
    std::vector<std::vector<double>> a(callers), want(callers);
    for (int t = 0; t < callers; ++t) {
        a[t] = random_matrix<double>(n * n, 20 + t);
        want[t].assign(n * n, 0);
        ThreadCount one(1);
        kern::gemm('N', 'T', n, n, n, 1.0, a[t].data(), n, a[t].data(), n, 0.0, want[t].data(), n);
    }
    ThreadCount count(2);
    std::vector<int> mismatches(callers, 0);
    std::vector<std::thread> pool;
    for (int t = 0; t < callers; ++t)
        pool.emplace_back([&, t] {
            std::vector<double> c(n * n);
            const int nn = n, ld = n;
            const double one = 1, zero = 0;
            for (int r = 0; r < rounds; ++r) {
                qnum_dgemm("N", 1, "T", 1, &nn, &nn, &nn, &one, a[t].data(), &ld, a[t].data(), &ld, &zero,
                           c.data(), &ld);
                if (std::memcmp(c.data(), want[t].data(), c.size() * sizeof(double)) != 0) ++mismatches[t];
            }
        });
    for (auto& th : pool) th.join();
    qnum_error_options(QNUM_SIGNAL_TRAPPING, 1, 0);
    for (int t = 0; t < callers; ++t) EXPECT_EQ(mismatches[t], 0) << "caller " << t;
}

// ---- child processes ----

// Runs fn in a forked child with its standard error captured; returns the exit status (128 +
// signal when it was killed) and, through out, what it wrote.
int in_child(const std::function<void()>& fn, std::string* out = nullptr) {
    int fd[2];
    if (pipe(fd) != 0) return -1;
    std::fflush(nullptr);
    const pid_t pid = fork();
    if (pid == 0) {
        close(fd[0]);
        dup2(fd[1], 2);
        alarm(60);  // a hang fails the test instead of stalling the suite
        fn();
        std::_Exit(0);
    }
    close(fd[1]);
    std::string text;
    char buf[512];
    ssize_t got;
    while ((got = read(fd[0], buf, sizeof buf)) > 0) text.append(buf, static_cast<std::size_t>(got));
    close(fd[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    if (out != nullptr) *out = text;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// One threaded product whose answer the caller knows; true when it came out right.
bool product_is_right() {
    const int n = 160;
    auto a = random_matrix<double>(n * n, 31);
    std::vector<double> want(n * n), c(n * n);
    {
        ThreadCount one(1);
        kern::gemm('N', 'N', n, n, n, 1.0, a.data(), n, a.data(), n, 0.0, want.data(), n);
    }
    ThreadCount two(2);
    kern::gemm('N', 'N', n, n, n, 1.0, a.data(), n, a.data(), n, 0.0, c.data(), n);
    return std::memcmp(c.data(), want.data(), c.size() * sizeof(double)) == 0;
}

TEST(ThreadsFork, AChildForkedAfterATeamRanCanStillCallTheLibrary) {
    ASSERT_TRUE(product_is_right());  // the parent's team exists now
    const int status = in_child([] { std::_Exit(product_is_right() ? 0 : 1); });
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(product_is_right());  // and the parent's still works
}

// ---- a fault inside a team member ----
//
// These run the routine frame's fault handler, which reports from inside the signal handler;
// the race detector rejects that, so their names keep them out of its run.

// A routine whose worker computes C = A B into a caller's array that is `short_by` elements
// too short: the part of C with the last columns runs into memory that faults.
// A tall C is cut across its rows, so every member, the caller among them, faults.
struct ShortOutput {
    int m, n;
    std::vector<double> a = random_matrix<double>(400 * 400, 41);
    double* c = nullptr;
    std::size_t bytes = 0;
    explicit ShortOutput(int rows = 200, int cols = 200) : m(rows), n(cols) {
        const long page = sysconf(_SC_PAGESIZE);
        const std::size_t need = static_cast<std::size_t>(m) * n * sizeof(double) - 2 * page;
        bytes = (need + page - 1) / page * page;
        char* p = static_cast<char*>(
            mmap(nullptr, bytes + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(p + bytes, page, PROT_NONE);
        c = reinterpret_cast<double*>(p);
    }
    int call() {
        return qnum::frame::call<int>("qnum_d_short_product", [&] {
            kern::gemm('N', 'N', m, n, 200, 1.0, a.data(), m, a.data(), 200, 0.0, c, m);
            return 1;
        });
    }
};

TEST(WorkerFault, AFaultInAWorkerIsTerminal511Then102OnTheCallersStack) {
    std::string out;
    const int status = in_child([] {
        // Printed, but not stopped: an exit with the team's threads still alive would make
        // the leak checker of sanitized builds report their buffers.
        qnum_error_options(QNUM_SIGNAL_TRAPPING, 1, QNUM_SET_STOP, 5, 0, 0);
        ThreadCount two(2);
        ShortOutput s;
        s.call();
        std::_Exit(qnum_n1rty(1) == 5 && qnum_20305() == 102 ? 0 : 1);
    }, &out);
    EXPECT_EQ(status, 0) << out;
    const std::size_t first = out.find("TERMINAL Error from qnum_d_short_product.  A segmentation violation");
    const std::size_t second = out.find("TERMINAL Error from qnum_d_short_product.  A hardware fault was trapped");
    EXPECT_NE(first, std::string::npos) << out;
    EXPECT_NE(second, std::string::npos) << out;
    EXPECT_LT(first, second) << out;
    EXPECT_EQ(out.find("499"), std::string::npos) << out;
}

TEST(WorkerFault, AfterAWorkerFaultTheTeamStillWorksAndNoContextWasMade) {
    const int status = in_child([] {
        for (int type = 1; type <= 7; ++type)
            qnum_error_options(QNUM_SET_PRINT, type, 0, QNUM_SET_STOP, type, 0, 0);
        qnum_error_options(QNUM_SIGNAL_TRAPPING, 1, 0);
        ShortOutput wide, tall(400, 100);
        int bad = 0;
        for (int threads_now : {2, 3, 8})
            for (ShortOutput* s : {&wide, &tall}) {
                ThreadCount count(threads_now);
                if (s->call() != 0) bad |= 1;
                if (qnum_n1rty(1) != 5 || qnum_20305() != 102) bad |= 2;
                if (qnum::context()->top != qnum::context()->stack) bad |= 4;
            }
        if (!product_is_right()) bad |= 8;
        // The members never made contexts of their own: no 499, only this thread's context.
        const int ok = qnum::frame::call<int>("qnum_d_after", [] { return product_is_right() ? 1 : 0; });
        if (ok != 1 || qnum_n1rty(1) != 0) bad |= 16;
        if (qnum::live_contexts() != 1) bad |= 32;
        std::_Exit(bad);
    });
    EXPECT_EQ(status, 0);
}

// ---- the thread-count setting ----

TEST(ThreadsSetting, CountsAreParsedStrictly) {
    const struct {
        const char* text;
        int want;
    } table[] = {{"1", 1},       {"8", 8},      {"08", 8},    {" 3 ", 3},   {"1024", 1024}, {"1025", 0}, {"0", 0},
                 {"-2", 0},      {"+2", 0},     {"2x", 0},    {"x2", 0},      {"", 0},     {"   ", 0},
                 {"2 3", 0},     {"99999999999999999999", 0}, {"0.5", 0},     {nullptr, 0}};
    for (const auto& row : table) EXPECT_EQ(threads::parse(row.text), row.want) << (row.text ? row.text : "null");
}

TEST(ThreadsSetting, OursThenTheRuntimesThenTheAffinityMask) {
    const int cpus = threads::available_cpus();
    EXPECT_GE(cpus, 1);
    const struct {
        const char* ours;
        const char* omp;
        int want;
    } table[] = {{"1", nullptr, 1},       {"64", nullptr, 64},      {"lots", nullptr, cpus},
                 {"0", nullptr, cpus},    {"-4", nullptr, cpus},    {nullptr, nullptr, cpus},
                 {"3", "5", 3},           {"junk", "5", 5},         {nullptr, "6,2", 6},
                 {nullptr, "none", cpus}, {nullptr, ",4", cpus}};
    auto set = [](const char* name, const char* value) {
        if (value != nullptr)
            setenv(name, value, 1);
        else
            unsetenv(name);
    };
    for (const auto& row : table) {
        set("QNUM_NUM_THREADS", row.ours);
        set("OMP_NUM_THREADS", row.omp);
        EXPECT_EQ(threads::from_environment(), row.want)
            << (row.ours ? row.ours : "unset") << " / " << (row.omp ? row.omp : "unset");
    }
    unsetenv("QNUM_NUM_THREADS");
    unsetenv("OMP_NUM_THREADS");
}

TEST(ThreadsSetting, WithoutSettingsEveryCpuOfTheAffinityMaskIsUsed) {
    if (std::getenv("QNUM_NUM_THREADS") != nullptr || std::getenv("OMP_NUM_THREADS") != nullptr)
        GTEST_SKIP() << "the environment sets a count";
    EXPECT_EQ(threads::configured(), threads::available_cpus());
}

TEST(ThreadsSetting, TheVariableIsReadOnce) {
    const int first = threads::configured();
    setenv("QNUM_NUM_THREADS", first == 5 ? "6" : "5", 1);
    EXPECT_EQ(threads::configured(), first);
    unsetenv("QNUM_NUM_THREADS");
}

}  // namespace
