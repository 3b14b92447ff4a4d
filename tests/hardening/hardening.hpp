// Shared by the hardening tests: control of the library's allocations (the wrappers live in
// alloc_test.cpp), a caller that builds a kernel's arguments from its signature, and small
// helpers over the precisions.
#pragma once

#include <gtest/gtest.h>

#include <climits>
#include <cstdio>
#include <cmath>
#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <thread>
#include <tuple>
#include <type_traits>
#include <vector>

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
// Blocks allocated through the library's malloc family and not yet freed, in all threads.
long long live_blocks();
// Requests larger than `bytes` fail in every thread (SIZE_MAX: none do).
void set_size_cap(std::size_t bytes);

// A small linear programme in an MPS file, written once.
inline std::string mps_path() {
    static std::string path;
    if (!path.empty()) return path;
    path = ::testing::TempDir() + "hardening_tiny.mps";
    std::FILE* f = std::fopen(path.c_str(), "w");
    auto line = [f](const char* t, const char* a, const char* b, const char* v, const char* c = "",
                    const char* w = "") { std::fprintf(f, " %-2s %-8s  %-8s  %12s   %-8s  %12s\n", t, a, b, v, c, w); };
    std::fputs("NAME          TINY\nROWS\n N  COST\n L  LIM1\n G  LIM2\nCOLUMNS\n", f);
    line("", "X1", "COST", "1.0", "LIM1", "1.0");
    line("", "X1", "LIM2", "1.0");
    line("", "X2", "COST", "2.0", "LIM1", "1.0");
    line("", "X2", "LIM2", "1.0");
    std::fputs("RHS\n", f);
    line("", "RHS", "LIM1", "4.0", "LIM2", "1.0");
    std::fputs("BOUNDS\n", f);
    line("UP", "BND", "X1", "3.0");
    std::fputs("ENDATA\n", f);
    std::fclose(f);
    return path;
}
inline void in_thread(const std::function<void()>& fn) { std::thread(fn).join(); }

// Error state of the call made last.
struct Outcome {
    int type, code;
};
// Routines outside the frame (the kernels, qnum_umach) push no level when they succeed and
// raise at the caller's level: forget() clears both before a call, and outcome() reads both.
inline void forget() {
    qnum_e1mes(0, 0, nullptr);
    qnum_d_machine(1);
}
inline Outcome outcome() {
    if (int t = qnum_n1rty(0)) return {t, qnum_n1rcd(0)};
    return {qnum_n1rty(1), qnum_20305()};
}

// Precision helpers: T is float, double, qnum_f_complex or qnum_d_complex.
template <class T> struct RealOf { using type = T; };
template <> struct RealOf<qnum_f_complex> { using type = float; };
template <> struct RealOf<qnum_d_complex> { using type = double; };
template <class T> T num(double v) {
    if constexpr (std::is_arithmetic_v<T>) return static_cast<T>(v);
    else return T{static_cast<typename RealOf<T>::type>(v), 0};
}
template <class T> double re(T v) {
    if constexpr (std::is_arithmetic_v<T>) return v;
    else return v.re;
}

// One variant of a call. The row's body asks it for each size, pointer and value in turn;
// the one the probe picks (counting from 1) comes back bad.
struct Probe {
    enum Kind { none, size, null, value } kind = none;
    int which = 0;
    double bad = 0;
    mutable int sizes = 0, ptrs = 0, values = 0;
    int n(int good) const { return ++sizes == which && kind == size ? static_cast<int>(bad) : good; }
    // A size that the caller's arrays must match: probed with 0 and negatives only.
    int small(int good) const {
        if (kind == none) small_mask |= 1u << sizes;
        return kind == size && bad > 0 ? (++sizes, good) : n(good);
    }
    mutable unsigned small_mask = 0;
    // Rows that make several calls note each one's outcome: the worst one counts.
    mutable Outcome worst{0, 0};
    void after() const {
        const Outcome o = outcome();
        if (o.type > worst.type) worst = o;
    }
    template <class P> P* p(P* good) const { return ++ptrs == which && kind == null ? nullptr : good; }
    template <class T> T v(T good) const { return ++values == which && kind == value ? T(bad) : good; }
};

constexpr double nan = NAN, inf = INFINITY;
struct Row {
    std::string name;
    std::function<double(const Probe&)> call;  // NaN for a NaN or NULL result
    bool huge = true;          // sizes beyond any array are probed: the size is checked or allocated first
    double at_inf = nan, at_minus_inf = nan;  // the true limits, when the routine has them
    unsigned counts = 0;       // sizes (bit which-1) for which any value >= 0 is valid input
    std::set<int> oom = {};    // allocates per call: the codes of a failed allocation ({0}: it copes)
};
// The public routines other than the kernels, one representative call each (bad_input_test.cpp).
const std::vector<Row>& rows();


// ---- kernels called from their signatures ----
// Every int argument (by value or address) takes ints[i] in order, every option string
// strs[j], every other pointer an array of its own (outputs null with null_arrays) and every scalar
// by value 1. Arrays are filled with `fill` so that a write shows.
struct KernelArgs {
    int ints[20] = {};  // all 0 at first: a call that learns the counts touches nothing
    const char* strs[4] = {"N", "N", "N", "N"};
    bool null_arrays = false;
    alignas(64) double arrays[10][256];
    int n_ints = 0, n_strs = 0;
    void fill(double v) {
        for (auto& a : arrays)
            for (double& x : a) x = v;
    }
};

template <class A>
A kernel_arg(KernelArgs& k, int& ni, int& ns, int& na) {
    using P = std::remove_cv_t<std::remove_pointer_t<A>>;
    if constexpr (std::is_same_v<A, int>) {
        return k.ints[ni++];
    } else if constexpr (std::is_pointer_v<A> && std::is_same_v<P, int>) {
        return &k.ints[ni++];
    } else if constexpr (std::is_same_v<A, const char*>) {
        return k.strs[ns++];
    } else if constexpr (std::is_pointer_v<A>) {
        double* p = k.arrays[na++];
        // Only outputs are nulled: the scalars by address must be there whatever the sizes.
        return k.null_arrays && !std::is_const_v<std::remove_pointer_t<A>> ? nullptr : reinterpret_cast<A>(p);
    } else {
        return A(1);
    }
}

template <class R, class... A>
void call_kernel(R (*f)(A...), KernelArgs& k) {
    int ni = 0, ns = 0, na = 0;
    std::tuple<A...> args{kernel_arg<A>(k, ni, ns, na)...};  // braces: left to right
    k.n_ints = ni;
    k.n_strs = ns;
    forget();
    std::apply(f, args);
}

// A call of f that raises nothing: option strings from N, U, L and, when ones for every int
// do not do, some ints 0 (band widths). False when none is found.
template <class R, class... A>
bool kernel_baseline(R (*f)(A...), KernelArgs& k) {
    static const char* const choice[3] = {"N", "U", "L"};
    call_kernel(f, k);  // learns the counts
    const int ni = k.n_ints, ns = k.n_strs;
    int combos = 1;
    for (int j = 0; j < ns; ++j) combos *= 3;
    for (int zeros = 0; zeros <= 4; ++zeros) {
        for (int mask = 0; mask < (1 << ni); ++mask) {
            if (__builtin_popcount(mask) != zeros) continue;
            for (int s = 0; s < combos; ++s) {
                for (int i = 0; i < ni; ++i) k.ints[i] = (mask >> i) & 1 ? 0 : 1;
                for (int j = 0, c = s; j < ns; ++j, c /= 3) k.strs[j] = choice[c % 3];
                call_kernel(f, k);
                if (qnum_n1rty(1) == 0) return true;
            }
        }
    }
    return false;
}

}  // namespace qnum::test::hard
