// Allocation failures: every public routine that allocates is run with its k-th allocation
// failing, for k = 1, 2, ... until the call succeeds. Each failing run must end with the
// routine's documented error, hand back nothing, leak nothing, and leave the thread able to
// make the same call again. The library's malloc family is wrapped at link time (extra.cmake),
// which also catches the allocations that do not go through the frame's helper.
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <unistd.h>
#include <set>
#include <vector>

#include "hardening.hpp"

namespace qnum::test::hard {
namespace {
thread_local bool t_armed = false;
thread_local long long t_count = 0, t_fail_at = 0;
std::atomic<long long> g_live{0};
std::atomic<std::size_t> g_cap{SIZE_MAX};

bool refuse(std::size_t bytes) {
    if (bytes > g_cap.load(std::memory_order_relaxed)) return true;
    return t_armed && ++t_count == t_fail_at;
}
void* note(void* p) {
    if (p != nullptr) g_live.fetch_add(1, std::memory_order_relaxed);
    return p;
}
// Every test of this program shares threads with the library, so trapping is off from the
// start; the fault tests turn it on in a child process.
[[maybe_unused]] const bool trapping_off = (qnum_skip_signal_handler(), true);
}  // namespace

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
void* __wrap_aligned_alloc(std::size_t a, std::size_t n) {
    return refuse(n) ? nullptr : note(__real_aligned_alloc(a, n));
}
void* __wrap_realloc(void* p, std::size_t n) {
    if (refuse(n)) return nullptr;
    void* q = __real_realloc(p, n);
    return p == nullptr ? note(q) : q;
}
void __wrap_free(void* p) {
    if (p != nullptr) qnum::test::hard::g_live.fetch_sub(1, std::memory_order_relaxed);
    __real_free(p);
}
}

namespace qnum::test::hard {
namespace {

// The kernel's first call (unwatched) finds its arguments; a failed call writes nothing.
template <auto f>
bool kernel() {
    static KernelArgs k;
    static const bool found = kernel_baseline(f, k);
    static KernelArgs before;
    EXPECT_TRUE(found);
    k.fill(1);
    std::memcpy(before.arrays, k.arrays, sizeof k.arrays);
    call_kernel(f, k);
    if (outcome().type == 0) return true;
    EXPECT_EQ(std::memcmp(before.arrays, k.arrays, sizeof k.arrays), 0) << "written after an error";
    return false;
}

// ---- the table ----
enum Where { here, thread, child };  // thread: the state is per thread, made on first use
struct Case {
    std::string name;
    Where where;
    std::function<bool()> call;
    std::set<int> codes = {201};
};

template <class T> T wiggle(T x) { return std::cos(T(2000) * x) + T(2); }
template <class T> T wiggle_decay(T x) { return std::exp(-x) * (std::cos(T(30) * x) + T(2)); }
bool ok(double r) { return !std::isnan(r) && qnum_n1rty(1) < 4; }
bool grows_lists(const std::string& name) {
    for (const char* m : {"int_fcn", "int_fcn_sing", "int_fcn_inf", "int_fcn_cauchy", "int_fcn_sing_pts", "int_fcn_alg_log"})
        if (name.substr(7) == m) return true;
    return false;
}

const std::vector<Case>& cases() {
    static const std::vector<Case> table = [] {
        std::vector<Case> t;
        for (const Row& row : rows())  // the public routines that allocate on every call
            if (!row.oom.empty() && !grows_lists(row.name))
                t.push_back({row.name, here, [&row] { return !std::isnan(row.call(Probe{})); },
                             row.oom == std::set<int>{0} ? std::set<int>{} : row.oom});
        t.insert(t.end(), {
            {"qnum_error_options", here, [] { qnum_error_options(QNUM_SET_ERROR_PATH, "/nowhere", 0); return qnum_n1rty(1) == 0; }},
            {"qnum_umach", thread, [] { FILE* f = nullptr; qnum_umach(3, &f); return f == stderr; }, {200}},
            {"qnum_ermes", child, [] { qnum_e1psh("probe"); qnum_ermes(3, 1003); qnum_e1pop("probe"); return qnum_n1rty(1) == 3; }, {}},
            {"qnum_random_option", thread, [] { qnum_random_option(2); return qnum_n1rty(1) == 0; }, {200}},
            {"qnum_random_seed_set", thread, [] { qnum_random_seed_set(7); return qnum_n1rty(1) == 0; }, {200}},
            {"qnum_random_seed_get", thread, [] { return qnum_random_seed_get() > 0; }, {200}},
            {"qnum_rnses", thread, [] { float t[128]; for (float& v : t) v = 0.5f; qnum_rnses(t); return qnum_n1rty(1) == 0; }, {200}},
            {"qnum_drnses", thread, [] { double t[128]; for (double& v : t) v = 0.5; qnum_drnses(t); return qnum_n1rty(1) == 0; }, {200}},
            {"qnum_rnun", thread, [] { float r[5]; qnum_rnun(5, r); return qnum_n1rty(1) == 0; }, {200}},
            {"qnum_drnun", thread, [] { double r[5]; qnum_drnun(5, r); return qnum_n1rty(1) == 0; }, {200}},
            {"qnum_f_random_uniform", thread, [] { float* r = qnum_f_random_uniform(5, 0); qnum_free_allocated_memory(r); return r != nullptr; }, {200, 201}},
            {"qnum_d_random_uniform", thread, [] { double* r = qnum_d_random_uniform(5, 0); qnum_free_allocated_memory(r); return r != nullptr; }, {200, 201}},
        });
        auto pair = [&t](const char* stem, Where w, auto ff, auto fd, std::set<int> codes) {
            t.push_back({std::string("qnum_f_") + stem, w, ff, codes});
            t.push_back({std::string("qnum_d_") + stem, w, fd, codes});
        };
        // The adaptive members keep their first subintervals inside the call and go to the heap
        // only when an integral needs more: a wiggly integrand makes them grow.
        pair("int_fcn", here, [] { return ok(qnum_f_int_fcn(wiggle<float>, 0.f, 1.f, 0)); },
             [] { return ok(qnum_d_int_fcn(wiggle<double>, 0., 1., 0)); }, {201});
        pair("int_fcn_sing", here, [] { return ok(qnum_f_int_fcn_sing(wiggle<float>, 0.f, 1.f, 0)); },
             [] { return ok(qnum_d_int_fcn_sing(wiggle<double>, 0., 1., 0)); }, {201});
        pair("int_fcn_inf", here, [] { return ok(qnum_f_int_fcn_inf(wiggle_decay<float>, 0.f, 1, 0)); },
             [] { return ok(qnum_d_int_fcn_inf(wiggle_decay<double>, 0., 1, 0)); }, {201});
        pair("int_fcn_cauchy", here, [] { return ok(qnum_f_int_fcn_cauchy(wiggle<float>, 0.f, 1.f, 0.5f, 0)); },
             [] { return ok(qnum_d_int_fcn_cauchy(wiggle<double>, 0., 1., 0.5, 0)); }, {201});
        pair("int_fcn_sing_pts", here, [] { const float p[1] = {0.5f}; return ok(qnum_f_int_fcn_sing_pts(wiggle<float>, 0.f, 1.f, 1, p, 0)); },
             [] { const double p[1] = {0.5}; return ok(qnum_d_int_fcn_sing_pts(wiggle<double>, 0., 1., 1, p, 0)); }, {201});
        pair("int_fcn_alg_log", here, [] { return ok(qnum_f_int_fcn_alg_log(wiggle<float>, 0.f, 1.f, 1, -0.5f, 0.5f, 0)); },
             [] { return ok(qnum_d_int_fcn_alg_log(wiggle<double>, 0., 1., 1, -0.5, 0.5, 0)); }, {201});
        pair("erf", thread, [] { return !std::isnan(qnum_f_erf(0.5f)); }, [] { return !std::isnan(qnum_d_erf(0.5)); }, {200});
        pair("erfc", thread, [] { return !std::isnan(qnum_f_erfc(0.5f)); }, [] { return !std::isnan(qnum_d_erfc(0.5)); }, {200});
#define K(f) t.push_back({#f, thread, [] { return kernel<f>(); }});
        K(qnum_sgemm) K(qnum_dgemm) K(qnum_cgemm) K(qnum_zgemm) K(qnum_20725) K(qnum_20726)
        K(qnum_ssymm) K(qnum_dsymm) K(qnum_csymm) K(qnum_zsymm) K(qnum_chemm) K(qnum_zhemm)
        K(qnum_ssyrk) K(qnum_dsyrk) K(qnum_csyrk) K(qnum_zsyrk) K(qnum_cherk) K(qnum_zherk)
        K(qnum_ssyr2k) K(qnum_dsyr2k) K(qnum_csyr2k) K(qnum_zsyr2k) K(qnum_cher2k) K(qnum_zher2k)
        K(qnum_strmm) K(qnum_dtrmm) K(qnum_ctrmm) K(qnum_ztrmm) K(qnum_strsm) K(qnum_dtrsm)
        K(qnum_ctrsm) K(qnum_ztrsm) K(qnum_20743) K(qnum_20744)
#undef K
        return t;
    }();
    return table;
}

// Runs the case with its k-th allocation failing; returns what went wrong ("" when all is well)
// and sets *done when no allocation was left to fail (the call succeeded).
std::string run_once(const Case& c, long long k, bool* done) {
    std::string bad;
    auto body = [&] {
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
        *done = seen < k;
        const bool failed_quietly = c.codes.empty();  // routines that work around the failure
        if (*done || failed_quietly) {
            if (!ok || (failed_quietly ? o.type >= 4 : o.type != 0))
                bad = "no failure injected, yet the call failed with code " + std::to_string(o.code);
        } else if (ok || o.type < 4 || !c.codes.count(o.code)) {
            bad = "allocation " + std::to_string(k) + " failed: result " + (ok ? "returned" : "withheld") +
                  ", error " + std::to_string(o.type) + "/" + std::to_string(o.code);
        }
        if (!c.call()) bad += " / the next call failed";
    };
    const long long live = live_blocks();
    if (c.where == here) body();
    else if (c.where == thread) in_thread(body);
    else {
        std::string out;
        const int status = run_in_child([&] {
            in_thread(body);
            std::fputs(bad.c_str(), stderr);
            std::fflush(stderr);
            _exit(bad.empty() ? (*done ? 3 : 0) : 1);
        }, &out);
        *done = status != 0;
        return status == 0 || status == 3 ? "" : out;
    }
    if (live_blocks() != live) bad += " / " + std::to_string(live_blocks() - live) + " blocks leaked";
    return bad;
}

TEST(HardeningAlloc, EveryFailurePointEndsCleanly) {
    QuietErrors quiet;
    qnum_d_machine(0);  // the thread's catalogue buffer, made unwatched
    for (const Case& c : cases()) {
        // An unwatched call first makes the statics of the case and the thread's lasting state.
        if (c.where == here) EXPECT_TRUE(c.call()) << c.name;
        else in_thread([&c] { QuietErrors q; EXPECT_TRUE(c.call()) << c.name; });
        long long k = 1;
        for (bool done = false; !done && k < 400; ++k) {
            const std::string bad = run_once(c, k, &done);
            EXPECT_EQ(bad, "") << c.name << ", allocation " << k;
        }
        EXPECT_GT(k, 2) << c.name << " allocated nothing: list it with the routines that do not allocate";
        std::printf("%-32s %lld failure points\n", c.name.c_str(), k - 2);
    }
}

// Every exported routine is either in the table above or known not to allocate.
std::set<std::string> expand(const std::string& pattern) {
    const auto open = pattern.find('{');
    if (open == std::string::npos) return {pattern};
    const auto close = pattern.find('}', open);
    std::set<std::string> out;
    std::string alts = pattern.substr(open + 1, close - open - 1) + ",";
    for (std::size_t a = 0, b; (b = alts.find(',', a)) != std::string::npos; a = b + 1)
        for (const auto& s : expand(pattern.substr(0, open) + alts.substr(a, b - a) + pattern.substr(close + 1)))
            out.insert(s);
    return out;
}

const char* const not_allocating[] = {
    "qnum_{s,d}{dot,axpy,scal,copy,swap,rot,rotm,rotg,rotmg,nrm2,asum}", "qnum_i{s,d,c,z}amax",
    "qnum_{sdsdot,dsdot,svcal,sxyz,dxyz,iset,icopy,scasum,dzasum,scnrm2,dznrm2,cset,zset,cadd,zadd}",
    "qnum_{c,z}{axpy,copy,scal,swap,rotg,dotu,dotc}", "qnum_{csscal,zdscal,csrot,zdrot,ccgcg,dccgcg,ccbcb,dccbcb}",
    "qnum_207{17,18,19,20,21,22,23,24,29,30,31,32,33,34,35,36,37,38,45,46,47,48,49,50}",
    "qnum_{s,d,c,z}{gemv,trmv,tbmv,tpmv,trsv,tpsv}", "qnum_{s,d}{symv,spmv,spr,spr2,syr,syr2,ger}", "qnum_{c,z}{geru,gerc}",
    "qnum_{sgbmv,dsgbmv,cgbmv,zgbmv,ssbmv,dssbmv,stbsv,dtbsv,ctbsv,dctbsv}",
    "qnum_{c,z}{hemv,hbmv,hpmv,her,her2,hpr,hpr2}",
    "qnum_{e1psh,e1pop,e1mes,e1sti,e1str,e1std,e1stc,e1stz,e1stl,e1pos,e1usr,n1rty,n1rcd,20305}",
    "qnum_{amach,dmach,f_machine,d_machine,i_machine,ifnan,difnan,tuned_path,skip_signal_handler}",
    "qnum_{set_at_checksum,free_allocated_memory,d_mps_free,inits,initds,csevl,dcsevl,r9lgmc,d9lgmc}",
    "qnum_{f,d}_{cub_spline_integral,erf_inverse,erfc_inverse,gamma,log_gamma,beta,log_beta}",
    "qnum_{f,d}_{gamma_incomplete,beta_incomplete,int_fcn_smooth}", "qnum_{c,z}_erfe",
};

std::set<std::string> exported() {
    std::set<std::string> names;
    std::FILE* p = popen("nm -D --defined-only " QNUM_SHARED_LIBRARY, "r");
    char line[512], name[400];
    while (p != nullptr && std::fgets(line, sizeof line, p))
        if (std::sscanf(line, "%*s %*s %399s", name) == 1 && std::strncmp(name, "qnum_", 5) == 0) names.insert(name);
    if (p != nullptr) pclose(p);
    return names;
}

TEST(HardeningAlloc, TableCoversEveryExportedRoutine) {
    std::set<std::string> listed;
    for (const Case& c : cases()) listed.insert(c.name);
    std::set<std::string> quiet_ones;
    for (const char* pattern : not_allocating)
        for (const auto& s : expand(pattern)) quiet_ones.insert(s);
    const std::set<std::string> names = exported();
    ASSERT_GT(names.size(), 250u);
    for (const auto& n : names)
        EXPECT_TRUE(listed.count(n) + quiet_ones.count(n) == 1) << n << ": allocating or not?";
    for (const auto& n : listed) EXPECT_TRUE(names.count(n)) << n << " is not exported";
    for (const auto& n : quiet_ones) EXPECT_TRUE(names.count(n)) << n << " is not exported";
}

}  // namespace
}  // namespace qnum::test::hard
