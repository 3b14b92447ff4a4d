// In-place rectangular transpose: copies through a temporary, or follows the cycles of the
// index permutation when no temporary can be had.
#include "linsys/m1ran.hpp"

#include <algorithm>
#include <complex>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "frame/frame.hpp"

namespace qnum::linsys {
namespace {

thread_local bool force_cycles = false;

constexpr std::size_t tile = 32;

// b (cols by rows) := transpose of a (rows by cols), a and b distinct; tiled so that both
// sides are walked in cache-sized pieces.
template <class T>
void transpose_copy(std::size_t rows, std::size_t cols, const T* a, T* b) {
    for (std::size_t r0 = 0; r0 < rows; r0 += tile) {
        const std::size_t r1 = std::min(rows, r0 + tile);
        for (std::size_t c0 = 0; c0 < cols; c0 += tile) {
            const std::size_t c1 = std::min(cols, c0 + tile);
            for (std::size_t r = r0; r < r1; ++r) {
                for (std::size_t c = c0; c < c1; ++c) b[c * rows + r] = a[r * cols + c];
            }
        }
    }
}

template <class T>
void transpose_square(std::size_t n, T* b) {
    for (std::size_t i0 = 0; i0 < n; i0 += tile) {
        const std::size_t i1 = std::min(n, i0 + tile);
        for (std::size_t j0 = i0; j0 < n; j0 += tile) {
            const std::size_t j1 = std::min(n, j0 + tile);
            for (std::size_t i = i0; i < i1; ++i) {
                for (std::size_t j = std::max(j0, i + 1); j < j1; ++j) std::swap(b[i * n + j], b[j * n + i]);
            }
        }
    }
}

// The element at index i of the rows by cols array goes to index dest(i) of its transpose.
struct Permutation {
    std::size_t rows, cols;
    std::size_t dest(std::size_t i) const { return (i % cols) * rows + i / cols; }
};

// Every cycle of the permutation is rotated once, from its smallest index: an index starts
// a rotation only when walking its cycle meets no smaller index. No storage beyond a few
// scalars; the walks cost more time than the copy, which is why this is the fallback.
template <class T>
void transpose_cycles(std::size_t rows, std::size_t cols, T* b) {
    const Permutation p{rows, cols};
    const std::size_t count = rows * cols;
    for (std::size_t s = 1; s + 1 < count; ++s) {
        std::size_t j = p.dest(s);
        while (j > s) j = p.dest(j);
        if (j != s) continue;
        T carried = b[s];
        for (j = p.dest(s); j != s; j = p.dest(j)) std::swap(carried, b[j]);
        b[s] = carried;
    }
}

}  // namespace

namespace testing {
void force_cycle_path(bool on) { force_cycles = on; }
}  // namespace testing

template <class T>
void m1ran(int rows, int cols, const T* a, T* b) {
    if (rows < 1) {
        frame::raise(frame::Type::Terminal, err::transpose_rows, frame::Int{rows});
        return;
    }
    if (cols < 1) {
        frame::raise(frame::Type::Terminal, err::transpose_columns, frame::Int{cols});
        return;
    }
    if (!check::array(a, "a") || !check::array(b, "b")) return;
    const std::size_t r = static_cast<std::size_t>(rows), c = static_cast<std::size_t>(cols);
    if (a != b) {
        transpose_copy(r, c, a, b);
        return;
    }
    if (r == c) {
        transpose_square(r, b);
        return;
    }
    const std::size_t bytes = frame::checked_bytes(static_cast<long long>(r * c), sizeof(T));
    T* tmp = force_cycles || bytes == 0 ? nullptr : static_cast<T*>(std::malloc(bytes));
    if (tmp == nullptr) {
        transpose_cycles(r, c, b);
        return;
    }
    std::memcpy(static_cast<void*>(tmp), a, bytes);
    transpose_copy(r, c, tmp, b);
    std::free(tmp);
}

template void m1ran<float>(int, int, const float*, float*);
template void m1ran<double>(int, int, const double*, double*);
template void m1ran<std::complex<float>>(int, int, const std::complex<float>*, std::complex<float>*);
template void m1ran<std::complex<double>>(int, int, const std::complex<double>*, std::complex<double>*);

}  // namespace qnum::linsys
