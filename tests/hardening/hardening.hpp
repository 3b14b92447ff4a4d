// Shared by the hardening tests: control of the library's allocations (the wrappers live in
// alloc_test.cpp), error outcomes, the bad-input probe and its routine table, and the kernels
// of the public header called from their parsed prototypes.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <functional>
#include <set>
#include <thread>

#include "qnum_test.hpp"

namespace qnum::test::hard {

// Counts the allocations the calling thread makes while it lives, and fails the fail_at-th
// (1-based; 0 fails none).
class AllocWatch {
public:
    explicit AllocWatch(long long fail_at = 0);
    ~AllocWatch();
    long long count() const;
};
long long live_blocks();  // blocks allocated by the library's malloc family and not yet freed
void set_size_cap(std::size_t bytes);  // larger requests fail in every thread (SIZE_MAX: none)

// Runs fn here, in a fresh thread, or in a fresh thread of a child process, and returns what
// fn returns (0-99); fn's complaints land in *msg, a child's (status >= 100) with its stderr.
enum Where { here, thread, child };
inline int isolated(Where w, const std::function<int(std::string&)>& fn, std::string* msg = nullptr) {
    std::string ignored;
    int r = 0;
    if (msg == nullptr) msg = &ignored;
    auto body = [&] { r = fn(*msg); };
    if (w == here) body();
    if (w == thread) std::thread(body).join();
    if (w != child) return r;
    const int status = run_in_child([&] {
        std::thread(body).join();
        std::fputs(msg->c_str(), stderr);
        std::fflush(stderr);
        _exit(msg->empty() ? r : 100);
    }, msg);
    if (status < 100) msg->clear();
    else *msg = "child status " + std::to_string(status) + ": " + *msg;
    return status;
}

// Error state of the call made last. Routines outside the frame (the kernels, qnum_umach)
// push no level when they succeed and raise at the caller's level: forget() clears both
// before a call, and outcome() reads both.
struct Outcome { int type, code; };
inline void forget() {
    qnum_e1mes(0, 0, nullptr);
    qnum_d_machine(1);
}
inline Outcome outcome() {
    if (int t = qnum_n1rty(0)) return {t, qnum_n1rcd(0)};
    return {qnum_n1rty(1), qnum_20305()};
}

// One variant of a call. The row's body asks it for each size, pointer and value in turn;
// the one the probe picks (counting from 1) comes back bad.
struct Probe {
    enum Kind { none, size, null, value } kind = none;
    int which = 0;
    double bad = 0;
    mutable int sizes = 0, ptrs = 0, values = 0;
    mutable unsigned small_mask = 0;
    mutable Outcome worst{0, 0};  // rows that make several calls note each one's outcome
    int n(int good) const { return ++sizes == which && kind == size ? static_cast<int>(bad) : good; }
    // A size that the caller's arrays must match: probed with 0 and negatives only.
    int small(int good) const {
        if (kind == none) small_mask |= 1u << sizes;
        return kind == size && bad > 0 ? (++sizes, good) : n(good);
    }
    void after() const { worst = outcome().type > worst.type ? outcome() : worst; }
    template <class P> P* p(P* good) const { return ++ptrs == which && kind == null ? nullptr : good; }
    template <class T> T v(T good) const { return ++values == which && kind == value ? T(bad) : good; }
};

constexpr double nan = NAN, inf = INFINITY;
struct Row {
    std::string name;
    std::function<double(const Probe&)> call;  // NaN for a NaN or NULL result
    std::set<int> oom = {};  // allocates: the codes of a failed allocation ({0}: copes; {200}: once per thread)
    double at_inf = nan, at_minus_inf = nan;  // the true limits, when the routine has them
    unsigned counts = 0;  // sizes (bit which-1) for which any value >= 0 is valid input
    bool huge = true;     // sizes beyond any array are probed: the size is checked or allocated first
};
const std::vector<Row>& rows();  // the public routines other than the kernels (bad_input_test.cpp)
extern bool wiggly_integrands;   // the quadrature rows integrate enough wiggles to need the heap
// The bad-input sweep: every row's and kernel's call, each judged ("" when it behaved).
struct Verdict { double r; Outcome o; std::string bad; };
struct SweepCall { std::string name, what; std::function<Verdict()> run; };
const std::vector<SweepCall>& sweep();
// The error-stack primitives and helpers that no sweep row calls.
inline const std::set<std::string> primitives = {
    "qnum_e1psh", "qnum_e1pop", "qnum_ermes", "qnum_e1mes", "qnum_e1sti", "qnum_e1str", "qnum_e1std", "qnum_e1stc",
    "qnum_e1stz", "qnum_e1stl", "qnum_n1rty", "qnum_n1rcd", "qnum_20305", "qnum_e1pos", "qnum_e1usr", "qnum_set_at_checksum",
    "qnum_skip_signal_handler", "qnum_free_allocated_memory", "qnum_ifnan", "qnum_difnan", "qnum_tuned_path",
    "qnum_random_seed_set", "qnum_random_seed_get", "qnum_d_mps_free", "qnum_rnses", "qnum_drnses", "qnum_csevl", "qnum_dcsevl"};

// ---- the kernels, called from the prototypes of the header's kernel sections ----
// Parameter kinds: i int, n int by address (a size), f float, d double, s option string,
// a array (x and y are arrays even of ints), ? anything else.
struct Proto {
    std::string name, kinds;
    std::vector<bool> out;  // the array is written (not const)
    bool kernel = false;
};
const std::vector<Proto>& prototypes();
// A kernel's call: every int (by value or address) takes ints[i] in order, every option string
// strs[j], every array one of `arrays` (outputs null with null_out), every scalar 1.
struct Kernel {
    const Proto* proto;
    void* fn;
    int ints[20] = {}, n_ints = 0, n_strs = 0;
    const char* strs[4] = {"N", "N", "N", "N"};
    bool null_out = false;
    alignas(64) double arrays[10][256];
    explicit Kernel(const Proto& p);
    void fill(double v) { std::fill(&arrays[0][0], &arrays[0][0] + sizeof arrays / sizeof(double), v); }
    void call();
    bool baseline();  // finds ints and strings that raise nothing; false when none do
};

}  // namespace qnum::test::hard
