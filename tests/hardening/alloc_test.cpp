// Allocation failures: every public routine that allocates is run with its k-th allocation
// failing, for k = 1, 2, ... until the call succeeds. Each failing run must end with the
// routine's documented error, hand back nothing, leak nothing, and leave the thread able to
// make the same call again. The library's malloc family is wrapped at link time (extra.cmake),
// which also catches the allocations that do not go through the frame's helper.
#include <atomic>
#include <cstring>
#include <memory>
#include <optional>

#include "hardening.hpp"

namespace qnum::test::hard {
namespace {
thread_local bool t_armed = false;
thread_local long long t_count = 0, t_fail_at = 0;
std::atomic<long long> g_live{0};
std::atomic<std::size_t> g_cap{SIZE_MAX};
// The tests share threads with the library, so trapping is off from the start; the fault
// test turns it on in a child process.
[[maybe_unused]] const bool trapping_off = (qnum_skip_signal_handler(), true);
}  // namespace
bool refuse(std::size_t bytes) { return bytes > g_cap.load(std::memory_order_relaxed) || (t_armed && ++t_count == t_fail_at); }
void* note(void* p) { return p != nullptr ? (g_live.fetch_add(1, std::memory_order_relaxed), p) : p; }
AllocWatch::AllocWatch(long long fail_at) { t_armed = true, t_count = 0, t_fail_at = fail_at; }
AllocWatch::~AllocWatch() { t_armed = false; }
long long AllocWatch::count() const { return t_count; }
long long live_blocks() { return g_live.load(); }
void set_size_cap(std::size_t bytes) { g_cap.store(bytes); }
}  // namespace qnum::test::hard

using qnum::test::hard::note;
using qnum::test::hard::refuse;
extern "C" {
void* __real_malloc(std::size_t);
void* __real_calloc(std::size_t, std::size_t);
void* __real_realloc(void*, std::size_t);
void* __real_aligned_alloc(std::size_t, std::size_t);
void __real_free(void*);
void* __wrap_malloc(std::size_t n) { return refuse(n) ? nullptr : note(__real_malloc(n)); }
void* __wrap_calloc(std::size_t k, std::size_t n) {
    return refuse(n != 0 && k > SIZE_MAX / n ? SIZE_MAX : k * n) ? nullptr : note(__real_calloc(k, n));
}
void* __wrap_aligned_alloc(std::size_t a, std::size_t n) { return refuse(n) ? nullptr : note(__real_aligned_alloc(a, n)); }
void* __wrap_realloc(void* p, std::size_t n) { return refuse(n) ? nullptr : p ? __real_realloc(p, n) : note(__real_realloc(p, n)); }
void __wrap_free(void* p) {
    if (p != nullptr) qnum::test::hard::g_live.fetch_sub(1, std::memory_order_relaxed);
    __real_free(p);
}
}

namespace qnum::test::hard {
namespace {

struct Case {
    std::string name;
    Where where;  // thread: the state is per thread, made on first use
    std::function<bool()> call;
    std::set<int> codes = {201};
};

const std::vector<Case>& cases() {
    static const std::vector<Case> table = [] {
        std::vector<Case> t;
        for (const Row& row : rows())  // the public routines that allocate on every call or once per thread (200)
            if (!row.oom.empty())
                t.push_back({row.name, row.oom == std::set<int>{200} ? thread : here, [&row] { return !std::isnan(row.call(Probe{})); },
                             row.oom == std::set<int>{0} ? std::set<int>{} : row.oom});
        t.insert(t.end(), {
            {"qnum_error_options", here, [] { qnum_error_options(QNUM_SET_ERROR_PATH, "/nowhere", 0); return qnum_n1rty(1) == 0; }},
            {"qnum_ermes", child, [] { qnum_e1psh("probe"); qnum_ermes(3, 1003); qnum_e1pop("probe"); return qnum_n1rty(1) == 3; }, {}},
            {"qnum_random_seed_set", thread, [] { qnum_random_seed_set(7); return qnum_n1rty(1) == 0; }, {200}},
            {"qnum_random_seed_get", thread, [] { return qnum_random_seed_get() > 0; }, {200}},
            {"qnum_rnses", thread, [] { float t[128]; for (float& v : t) v = 0.5f; qnum_rnses(t); return qnum_n1rty(1) == 0; }, {200}},
            {"qnum_drnses", thread, [] { double t[128]; for (double& v : t) v = 0.5; qnum_drnses(t); return qnum_n1rty(1) == 0; }, {200}},
            {"qnum_rnun", thread, [] { float r[5]; qnum_rnun(5, r); return qnum_n1rty(1) == 0; }, {200}},
            {"qnum_drnun", thread, [] { double r[5]; qnum_drnun(5, r); return qnum_n1rty(1) == 0; }, {200}},
            {"qnum_f_random_uniform", thread, [] { float* r = qnum_f_random_uniform(5, 0); qnum_free_allocated_memory(r); return r != nullptr; }, {200, 201}},
            {"qnum_d_random_uniform", thread, [] { double* r = qnum_d_random_uniform(5, 0); qnum_free_allocated_memory(r); return r != nullptr; }, {200, 201}},
        });
        // The kernels of the header whose call in a fresh thread allocates; a failed call writes nothing.
        static std::vector<std::unique_ptr<Kernel>> kernels;
        for (const Proto& pr : prototypes()) {
            auto k = std::make_unique<Kernel>(pr);
            if (!pr.kernel || !k->fn || pr.kinds.find('?') != std::string::npos || !k->baseline()) continue;  // the sweep says why
            long long made = 0;
            isolated(thread, [&](std::string&) { QuietErrors q; AllocWatch w; k->call(); made = w.count(); return 0; });
            if (made == 0) continue;
            t.push_back({pr.name, thread, [kp = kernels.emplace_back(std::move(k)).get()] {
                static double before[sizeof kp->arrays / sizeof(double)];
                kp->fill(1);
                std::memcpy(before, kp->arrays, sizeof before);
                kp->call();
                if (outcome().type == 0) return true;
                EXPECT_EQ(std::memcmp(before, kp->arrays, sizeof before), 0) << kp->proto->name << " written after an error";
                return false;
            }});
        }
        return t;
    }();
    return table;
}

// Runs the case with its k-th allocation failing; 3 when no allocation was left to fail (the
// call succeeded). What went wrong lands in *bad.
int run_once(const Case& c, long long k, std::string* bad) {
    const long long live = live_blocks();
    const int r = isolated(c.where, [&](std::string& msg) {
        std::optional<QuietErrors> quiet;
        if (c.where != here) quiet.emplace();
        if (c.where != child) qnum_d_machine(0);  // the thread's catalogue buffer, made unwatched
        bool ok;
        long long seen;
        forget();
        {
            AllocWatch watch(k);
            ok = c.call();
            seen = watch.count();
        }
        const Outcome o = outcome();
        forget();
        const bool done = seen < k, copes = c.codes.empty();  // copes: works around the failure
        if (done || copes) {
            if (!ok || (copes ? o.type >= 4 : o.type != 0)) msg = "no failure injected, yet error " + std::to_string(o.code);
        } else if (ok || o.type < 4 || !c.codes.count(o.code)) {
            msg = std::string(ok ? "result returned" : "result withheld") + ", error " + std::to_string(o.type) + "/" + std::to_string(o.code);
        }
        if (!c.call()) msg += " / the next call failed";
        return done ? 3 : 0;
    }, bad);
    if (c.where != child && live_blocks() != live) *bad += " / " + std::to_string(live_blocks() - live) + " blocks leaked";
    return r;
}

TEST(HardeningAlloc, EveryFailurePointEndsCleanly) {
    QuietErrors quiet;
    qnum_d_machine(0);  // the thread's catalogue buffer, made unwatched
    wiggly_integrands = true;  // the adaptive members keep small lists inside the call
    long long points = 0;
    for (const Case& c : cases()) {
        // An unwatched call first makes the statics of the case and the thread's lasting state.
        if (c.where == here) EXPECT_TRUE(c.call()) << c.name;
        else isolated(thread, [&](std::string&) { QuietErrors q; EXPECT_TRUE(c.call()) << c.name; return 0; });
        long long k = 1;
        for (bool done = false; !done && k < 400; ++k) {
            std::string bad;
            done = run_once(c, k, &bad) != 0;
            EXPECT_EQ(bad, "") << c.name << ", allocation " << k;
        }
        EXPECT_GT(k, 2) << c.name << " allocated nothing: list it with the routines that do not allocate";
        points += k - 2;
    }
    wiggly_integrands = false;
    std::printf("%lld failure points in %zu routines\n", points, cases().size());
}

// The header declares what the library exports; every routine is swept with bad input (or an
// error-stack primitive), and is in the table above or allocates nothing: the kernels and the
// sweep's rows are seen to allocate nothing in a fresh thread, the primitives are known not to.
TEST(HardeningAlloc, EveryExportedRoutineIsDeclaredSweptAndInTheTableOrAllocatesNothing) {
    QuietErrors quiet;
    std::set<std::string> exported, declared, swept = primitives, listed, quiet_ones = primitives;
    std::FILE* p = popen("nm -D --defined-only " QNUM_SHARED_LIBRARY, "r");
    char line[512], name[400];
    while (p != nullptr && std::fgets(line, sizeof line, p))
        if (std::sscanf(line, "%*s %*s %399s", name) == 1 && std::strncmp(name, "qnum_", 5) == 0) exported.insert(name);
    if (p != nullptr) pclose(p);
    for (const Proto& pr : prototypes()) declared.insert(pr.name);
    for (const SweepCall& c : sweep()) swept.insert(c.name);
    for (const Case& c : cases()) listed.insert(c.name);
    for (const char* n : {"qnum_ermes", "qnum_rnses", "qnum_drnses", "qnum_random_seed_set", "qnum_random_seed_get"})
        quiet_ones.erase(n);  // the primitives that allocate
    for (const Proto& pr : prototypes())
        if (pr.kernel) quiet_ones.insert(pr.name);  // the allocating ones were found by cases()
    for (const Row& row : rows())
        isolated(thread, [&](std::string&) {
            QuietErrors q;
            qnum_d_machine(0);  // the thread's own state, made unwatched
            AllocWatch watch;
            row.call(Probe{});
            if (watch.count() == 0) quiet_ones.insert(row.name);
            return 0;
        });
    ASSERT_GT(exported.size(), 250u);
    EXPECT_EQ(exported, declared);
    for (const auto& n : declared) {
        EXPECT_TRUE(swept.count(n)) << n << " is in the header but not swept";
        EXPECT_TRUE(listed.count(n) || quiet_ones.count(n)) << n << " allocates but is not in the table";
    }
    for (const auto& n : listed) EXPECT_TRUE(declared.count(n)) << n << " is not declared";
}

}  // namespace
}  // namespace qnum::test::hard
