// The packed, cache-blocked matrix product shared by every Level 3 kernel: the problem it
// solves, and the engines (one per instruction set) that solve it.
#pragma once

#include <atomic>
#include <cstddef>

#include "kernels/level3.hpp"

namespace qnum::kern::gemm_impl {

using Index = std::ptrdiff_t;

// How an operand is stored. General operands are read through their op (N, T or C); the
// symmetric and Hermitian ones through the stored triangle, mirrored (and conjugated) into
// the other one, whatever op says.
enum class Shape : char { General, SymLower, SymUpper, HermLower, HermUpper };

template <class T>
struct Operand {
    const T* p;
    Index ld;
    char op = 'N';
    Shape shape = Shape::General;
};

// C = alpha op(A) op(B) + beta C with m, n, k >= 1 and alpha != 0. beta = 0 assigns C.
template <class T>
struct Problem {
    Index m, n, k;
    T alpha, beta;
    Operand<T> a, b;
    T* c;
    Index ldc;
};

// The part of C that one run of a driver computes: rows i0 .. i1-1, columns j0 .. j1-1. A
// part starts on a multiple of the register block (mr rows, nr columns) and ends on one or at
// the edge of C, so each mr by nr block of C is computed by the same operations whatever the
// cut: the product is bit-identical on any number of threads. A driver given `stop` returns
// early once it becomes nonzero.
struct Part {
    Index i0, i1, j0, j1;
    const std::atomic<int>* stop = nullptr;
};

// One instruction set's product: its blocking and its driver. The driver needs two
// workspace arrays of `a_size()` and `b_size()` elements, aligned to 64 bytes.
template <class T>
struct Engine {
    int mr, nr;      // register block: the micro-kernel computes mr by nr of C
    int mc, kc, nc;  // cache blocks: mc by kc of A stays in L2, kc by nc of B in L3
    void (*run)(const Problem<T>& p, const Part& part, T* a_pack, T* b_pack);
    // The leaves of trmm and trsm, for the triangle t (column-major with leading dimension
    // ldt, zeros outside the triangle, its diagonal inverted for a solve) of order nt <= 32
    // and B (rows by cols, overwritten): left, B := alpha op(A) B or op(A)^-1 alpha B (nt =
    // rows); right, B := alpha B op(A) or alpha B op(A)^-1 (nt = cols).
    void (*left_leaf)(const T* t, Index ldt, bool lower, bool solve, int nt, Index cols, const T* alpha, T* b,
                      Index ldb);
    void (*right_leaf)(const T* t, Index ldt, bool lower, bool solve, int nt, Index rows, const T* alpha, T* b,
                       Index ldb);
    std::size_t a_size() const { return static_cast<std::size_t>(mc) * kc; }
    std::size_t b_size() const { return static_cast<std::size_t>(kc) * nc; }
};

// The engines, each defined in the file compiled for its instruction set.
template <class T>
Engine<T> engine_portable();
template <class T>
Engine<T> engine_avx2();
template <class T>
Engine<T> engine_avx512();
template <>
Engine<float> engine_portable<float>();
template <>
Engine<double> engine_portable<double>();
template <>
Engine<std::complex<float>> engine_portable<std::complex<float>>();
template <>
Engine<std::complex<double>> engine_portable<std::complex<double>>();
template <>
Engine<float> engine_avx2<float>();
template <>
Engine<double> engine_avx2<double>();
template <>
Engine<std::complex<float>> engine_avx2<std::complex<float>>();
template <>
Engine<std::complex<double>> engine_avx2<std::complex<double>>();
template <>
Engine<float> engine_avx512<float>();
template <>
Engine<double> engine_avx512<double>();
template <>
Engine<std::complex<float>> engine_avx512<std::complex<float>>();
template <>
Engine<std::complex<double>> engine_avx512<std::complex<double>>();

// The engine of the path that cpu::active() names.
template <class T>
Engine<T> engine();

// Every thread keeps one workspace between calls (freed at thread exit): the packing buffers
// of engine<T>() and, after them, a scratch square of scratch_side by scratch_side elements
// that kernels built on the product may use between products.
inline constexpr int scratch_side = 32;

// Makes sure this thread's workspace is large enough. Returns false when it cannot be
// allocated, with TERMINAL 201 raised: under a level named `name`, pushed for the occasion,
// or at the current level when name is null. Kernels that run several products call it
// before they write anything, so that a failure leaves their outputs untouched; after it
// succeeds, run() cannot fail.
template <class T>
bool reserve(const char* name = nullptr);

// The scratch square of this thread's workspace; valid after reserve<T>() succeeded.
template <class T>
T* scratch();

// Runs a product on this thread's workspace; false, with 201 raised, as reserve().
template <class T>
bool run(const Problem<T>& p);

}  // namespace qnum::kern::gemm_impl
