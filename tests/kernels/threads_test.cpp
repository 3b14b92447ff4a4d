// Threaded Level 3 kernels: the same bits on 1, 2, 3 and 8 threads for every routine built on
// the product; one team at a time (concurrent callers, calls from inside a parallel region);
// faults in team members reported by the caller's trap; fork; the thread-count setting.
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "frame/frame.hpp"
#include "frame/threads.hpp"
#include "kernel_test.hpp"
#include "kernels/team.hpp"

namespace qnum::test {
namespace {

// Sets the library's thread count for one scope.
struct ThreadCount {
    explicit ThreadCount(int n) { threads::set_for_tests(n); }
    ~ThreadCount() { threads::set_for_tests(0); }
};

template <class T>
std::vector<T> random_values(std::size_t count, unsigned seed) {
    std::mt19937 g(seed);
    std::vector<T> v(count);
    for (T& x : v) x = random_value<T>(g);
    return v;
}

// One call of a routine on a fresh copy of C; returns it.
template <class T>
using Call = std::function<std::vector<T>()>;
template <class T>
Call<T> on_copy(const std::vector<T>& c, std::function<void(T*)> f) {
    return [c, f] {
        auto out = c;
        f(out.data());
        return out;
    };
}

template <class T>
std::vector<Call<T>> calls() {
    // Odd sizes: parts end inside register blocks and cache blocks.
    const int m = 203, n = 181, k = 157, ld = 211, kr = 401;
    const auto A = random_values<T>(ld * 211, 1), B = random_values<T>(ld * 211, 2), C = random_values<T>(ld * 211, 3);
    auto Lm = random_values<T>(ld * 211, 4), Ln = Lm;  // dominant diagonals: safe to solve with
    for (int i = 0; i < m; ++i) Lm[i + i * ld] += T(m), Ln[i + i * ld] += T(n);
    // The rank updates hand the product blocks of about half the order: a longer k keeps them
    // large enough for a team.
    const auto R = random_values<T>(kr * kr, 8), S = random_values<T>(kr * kr, 9);
    const auto wide = random_values<T>(400 * 1201, 6), c5 = random_values<T>(5 * 1201, 7);
    const T alpha = scalar<T>(0.75, -0.5), beta = scalar<T>(-1.25, 0.25);
    const Real<T> ralpha = 0.75, rbeta = -1.25;
    std::vector<Call<T>> list;
    for (char ta : {'N', 'T', 'C'})
        for (char tb : {'N', 'C'})
            list.push_back(on_copy<T>(C, [=](T* c) { kern::gemm(ta, tb, m, n, k, alpha, A.data(), ld, B.data(), ld, beta, c, ld); }));
    // A single row of register blocks: the columns are cut, 8 ways.
    list.push_back(on_copy<T>(c5, [=](T* c) { kern::gemm('N', 'N', 5, 1201, 400, alpha, A.data(), 5, wide.data(), 400, beta, c, 5); }));
    // One more than a multiple of every register block: each part ends in a single row and column.
    list.push_back(on_copy<T>(C, [=](T* c) { kern::gemm('N', 'N', 193, 193, 150, alpha, A.data(), ld, B.data(), ld, beta, c, ld); }));
    list.push_back(on_copy<T>(C, [=](T* c) { kern::gemm('T', 'N', n, m, k, alpha, A.data(), ld, B.data(), ld, T(0), c, ld); }));
    for (char side : {'L', 'R'})
        for (char uplo : {'L', 'U'}) {
            list.push_back(on_copy<T>(C, [=](T* c) { kern::symm(side, uplo, m, n, alpha, A.data(), ld, B.data(), ld, beta, c, ld); }));
            list.push_back(on_copy<T>(C, [=](T* c) { kern::hemm(side, uplo, m, n, alpha, A.data(), ld, B.data(), ld, beta, c, ld); }));
            for (char ta : {'N', 'C'}) {
                const auto& tri = side == 'L' ? Lm : Ln;
                list.push_back(on_copy<T>(C, [=](T* b) { kern::trmm(side, uplo, ta, 'N', m, n, alpha, tri.data(), ld, b, ld); }));
                const char diag = uplo == 'L' ? 'U' : 'N';
                list.push_back(on_copy<T>(C, [=](T* b) { kern::trsm(side, uplo, ta, diag, m, n, alpha, tri.data(), ld, b, ld); }));
            }
            const char trans = side == 'L' ? 'N' : 'T', ht = trans == 'N' ? 'N' : 'C';
            list.push_back(on_copy<T>(C, [=](T* c) { kern::syrk(uplo, trans, m, kr, alpha, R.data(), kr, beta, c, ld); }));
            list.push_back(on_copy<T>(C, [=](T* c) { kern::herk(uplo, ht, m, kr, ralpha, R.data(), kr, rbeta, c, ld); }));
            list.push_back(on_copy<T>(C, [=](T* c) { kern::syr2k(uplo, trans, m, kr, alpha, R.data(), kr, S.data(), kr, beta, c, ld); }));
            list.push_back(on_copy<T>(C, [=](T* c) { kern::her2k(uplo, ht, m, kr, alpha, R.data(), kr, S.data(), kr, rbeta, c, ld); }));
        }
    return list;
}

template <class T>
class ThreadsBitIdentical : public ::testing::Test {};
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
            EXPECT_TRUE(same_bits(list[i](), one)) << "call " << i << " on " << t << " threads";
            EXPECT_GT(threads::teams_granted(), before) << "call " << i << " stayed on one thread";
        }
    }
}

// Inside a trapped routine the members run under their own traps, do their share and give
// the one-thread bits.
TEST(ThreadsProduct, ATrappedCallerGetsItsTeam) {
    const int m = 157, n = 301, k = 233;
    const auto a = random_values<double>(m * k, 7), b = random_values<double>(k * n, 8), c0 = random_values<double>(m * n, 9);
    auto c = c0, one = c0;
    {
        ThreadCount count(1);
        kern::gemm('N', 'N', m, n, k, 2.0, a.data(), m, b.data(), k, -1.0, one.data(), m);
    }
    ThreadCount count(3);
    qnum_error_options(QNUM_SIGNAL_TRAPPING, 1, 0);
    const long teams = threads::teams_granted(), late = kern::team::late_chunks();
    const int ran = frame::call<int>("qnum_d_trapped_product", [&] {
        c = c0;
        kern::gemm('N', 'N', m, n, k, 2.0, a.data(), m, b.data(), k, -1.0, c.data(), m);
        return 1;
    });
    EXPECT_EQ(ran, 1);
    EXPECT_EQ(qnum_n1rty(1), 0);
    EXPECT_GT(threads::teams_granted(), teams);
    EXPECT_EQ(kern::team::late_chunks(), late);
    EXPECT_TRUE(same_bits(c, one));
}

// Every thread's packing buffers go when the thread ends.
TEST(ThreadsWorkspace, AThreadsBuffersAreFreedWhenItEnds) {
    auto in_use = [] {
        const struct mallinfo2 m = mallinfo2();
        return static_cast<long long>(m.uordblks + m.hblkhd);
    };
    const int n = 300;
    auto a = random_values<double>(n * n, 12), c = a;
    const long long before = in_use();
    std::thread([&] {
        ThreadCount one(1);
        kern::gemm('N', 'N', n, n, n, 1.0, a.data(), n, a.data(), n, 0.0, c.data(), n);
    }).join();
    EXPECT_LT(in_use() - before, 256 * 1024);  // the buffers are megabytes
}

// ---- the claim on the team ----

TEST(ThreadsClaim, OneCallerAtATimeNeverFromInsideAParallelRegionNorForSmallProducts) {
    {
        threads::Claim first(4);
        EXPECT_EQ(first.count(), 4);
        int second = 0;
        std::thread([&] { second = threads::Claim(4).count(); }).join();
        EXPECT_EQ(second, 1);  // another caller holds the team
        threads::Claim again(2);  // the holder itself, nested: one thread too
        EXPECT_EQ(again.count(), 1);
    }
    EXPECT_EQ(threads::Claim(3).count(), 3);  // released
    EXPECT_EQ(threads::Claim(1).count(), 1);
    // From inside a parallel region: one of our teams, whose members ask again.
    static std::atomic<int> inside{0};
    kern::team::run(2, 2, [](void*, int, const std::atomic<int>&) {
        inside += threads::Claim(4).count();
        return true;
    }, nullptr);
    EXPECT_EQ(inside.load(), 2);
    ThreadCount count(8);
    auto a = random_values<double>(40 * 40, 1), c = a;
    const long before = threads::teams_granted();
    kern::gemm('N', 'N', 40, 40, 40, 1.0, a.data(), 40, a.data(), 40, 0.0, c.data(), 40);
    EXPECT_EQ(threads::teams_granted(), before);
}

// One threaded product whose answer the caller knows; true when it came out right.
bool product_is_right() {
    const int n = 160;
    auto a = random_values<double>(n * n, 31), want = a, c = a;
    {
        ThreadCount one(1);
        kern::gemm('N', 'N', n, n, n, 1.0, a.data(), n, a.data(), n, 0.0, want.data(), n);
    }
    ThreadCount two(2);
    kern::gemm('N', 'N', n, n, n, 1.0, a.data(), n, a.data(), n, 0.0, c.data(), n);
    return same_bits(c, want);
}

TEST(ThreadsFork, AChildForkedAfterATeamRanCanStillCallTheLibrary) {
    ASSERT_TRUE(product_is_right());  // the parent's team exists now
    EXPECT_EQ(run_in_child([] { std::_Exit(product_is_right() ? 0 : 1); }), 0);
    EXPECT_TRUE(product_is_right());  // and the parent's still works
}

// ---- a fault inside a team member ----
//
// These run the routine frame's fault handler, which reports from inside the signal handler;
// the race detector rejects that, so their names keep them out of its run.

// A routine whose worker computes C = A B into a caller's array two pages too short: the part
// of C with the last columns runs into memory that faults. A tall C is cut across its rows,
// so every member, the caller among them, faults.
struct ShortOutput {
    int m, n;
    std::vector<double> a = random_values<double>(400 * 400, 41);
    double* c = nullptr;
    explicit ShortOutput(int rows = 200, int cols = 200) : m(rows), n(cols) {
        const long page = sysconf(_SC_PAGESIZE);
        const std::size_t bytes = (static_cast<std::size_t>(m) * n * sizeof(double) - 2 * page + page - 1) / page * page;
        char* p = static_cast<char*>(mmap(nullptr, bytes + page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
        mprotect(p + bytes, page, PROT_NONE);
        c = reinterpret_cast<double*>(p);
    }
    int call() {
        return frame::call<int>("qnum_d_short_product", [&] {
            kern::gemm('N', 'N', m, n, 200, 1.0, a.data(), m, a.data(), 200, 0.0, c, m);
            return 1;
        });
    }
};

TEST(WorkerFault, AFaultInAWorkerIsTerminal511Then102OnTheCallersStack) {
    std::string out;
    const int status = run_in_child([] {
        // Printed, but not stopped: an exit with the team's threads still alive would make
        // the leak checker of sanitized builds report their buffers.
        qnum_error_options(QNUM_SIGNAL_TRAPPING, 1, QNUM_SET_STOP, 5, 0, 0);
        ThreadCount two(2);
        ShortOutput().call();
        std::_Exit(qnum_n1rty(1) == 5 && qnum_20305() == 102 ? 0 : 1);
    }, &out);
    EXPECT_EQ(status, 0) << out;
    const std::size_t first = out.find("TERMINAL Error from qnum_d_short_product.  A segmentation violation");
    const std::size_t second = out.find("TERMINAL Error from qnum_d_short_product.  A hardware fault was trapped");
    EXPECT_NE(second, std::string::npos) << out;
    EXPECT_LT(first, second) << out;
    EXPECT_EQ(out.find("499"), std::string::npos) << out;
}

TEST(WorkerFault, AfterAWorkerFaultTheTeamStillWorksAndNoContextWasMade) {
    const int status = run_in_child([] {
        QuietErrors quiet;
        qnum_error_options(QNUM_SIGNAL_TRAPPING, 1, 0);
        ShortOutput wide, tall(400, 100);
        int bad = 0;
        for (int threads_now : {2, 3, 8})
            for (ShortOutput* s : {&wide, &tall}) {
                ThreadCount count(threads_now);
                if (s->call() != 0) bad |= 1;
                if (qnum_n1rty(1) != 5 || qnum_20305() != 102) bad |= 2;
                if (context()->top != context()->stack) bad |= 4;
            }
        // The members never made contexts of their own: no 499, only this thread's context.
        const int ok = frame::call<int>("qnum_d_after", [] { return product_is_right() ? 1 : 0; });
        if (ok != 1 || qnum_n1rty(1) != 0) bad |= 16;
        if (live_contexts() != 1) bad |= 32;
        std::_Exit(bad);
    });
    EXPECT_EQ(status, 0);
}

// ---- the thread-count setting ----

TEST(ThreadsSetting, CountsAreParsedStrictly) {
    const std::pair<const char*, int> table[] = {
        {"1", 1}, {"8", 8}, {"08", 8}, {" 3 ", 3}, {"1024", 1024}, {"1025", 0}, {"0", 0}, {"-2", 0}, {"+2", 0},
        {"2x", 0}, {"x2", 0}, {"", 0}, {"   ", 0}, {"2 3", 0}, {"99999999999999999999", 0}, {"0.5", 0}, {nullptr, 0}};
    for (auto [text, want] : table) EXPECT_EQ(threads::parse(text), want) << (text ? text : "null");
}

// Ours, then the runtime's, then the affinity mask; read once.
TEST(ThreadsSetting, OursThenTheRuntimesThenTheAffinityMask) {
    const int cpus = threads::available_cpus();
    EXPECT_GE(cpus, 1);
    if (std::getenv("QNUM_NUM_THREADS") == nullptr && std::getenv("OMP_NUM_THREADS") == nullptr) {
        EXPECT_EQ(threads::configured(), cpus);
    }
    const int first = threads::configured();
    const struct {
        const char *ours, *omp;
        int want;
    } table[] = {{"1", nullptr, 1},       {"64", nullptr, 64},   {"lots", nullptr, cpus}, {"0", nullptr, cpus},
                 {"-4", nullptr, cpus},   {nullptr, nullptr, cpus}, {"3", "5", 3},         {"junk", "5", 5},
                 {nullptr, "6,2", 6},     {nullptr, "none", cpus}, {nullptr, ",4", cpus}};
    auto set = [](const char* name, const char* value) { value ? setenv(name, value, 1) : unsetenv(name); };
    for (const auto& row : table) {
        set("QNUM_NUM_THREADS", row.ours);
        set("OMP_NUM_THREADS", row.omp);
        EXPECT_EQ(threads::from_environment(), row.want) << (row.ours ? row.ours : "unset") << " / " << (row.omp ? row.omp : "unset");
    }
    setenv("QNUM_NUM_THREADS", first == 5 ? "6" : "5", 1);
    EXPECT_EQ(threads::configured(), first);
    unsetenv("QNUM_NUM_THREADS");
    unsetenv("OMP_NUM_THREADS");
}

}  // namespace
}  // namespace qnum::test
