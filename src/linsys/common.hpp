// Shared pieces of the dense solvers: magnitudes, conjugation, allocation with the solvers'
// error codes, and the layout changes between the caller's rows and the kernels' columns.
#pragma once

#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "frame/frame.hpp"
#include "frame/prec.hpp"

namespace qnum::linsys {

// What the general and positive definite solvers know about a call once its options are read.
struct CallShape {
    int n, lda, fcd, icd;
    bool has_factor, has_inverse, factor_in_a, factor_only, solve_only, inverse_only, user_factor, cond;
};
// The cross-checks both solvers make, in their order: false after raising the first failure.
// A caller's factor that is `a` itself is one array, checked against the larger of the two
// column dimensions.
bool cross_check(const CallShape& s);

// |Re| + |Im|: the magnitude the kernels' iamax and asum use, and the one pivoting and the
// condition estimator compare (cheaper than the modulus, within a factor sqrt(2) of it).
template <class T>
inline Real<T> abs1(T v) {
    if constexpr (is_complex_v<T>) {
        return std::abs(v.real()) + std::abs(v.imag());
    } else {
        return std::abs(v);
    }
}

template <class T>
inline T conj_if(T v) {
    if constexpr (is_complex_v<T>) {
        return std::conj(v);
    } else {
        return v;
    }
}

// x := conj(x) on n elements; nothing for real data.
template <class T>
inline void conj_all(std::size_t n, T* x) {
    if constexpr (is_complex_v<T>) {
        for (std::size_t i = 0; i < n; ++i) x[i] = std::conj(x[i]);
    }
}

inline std::size_t at(int i, int j, int ld) {
    return static_cast<std::size_t>(i) + static_cast<std::size_t>(j) * static_cast<std::size_t>(ld);
}

// An array of `count` elements owned here, freed on every path out unless release()d. A
// failed allocation (or a count whose byte size overflows) raises TERMINAL `code` with the
// substitutions the solvers report: the string "n" and the order for 201, the order alone
// for the solvers' own codes.
template <class T>
class Owned {
public:
    Owned() = default;
    ~Owned() { std::free(p_); }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;

    bool allocate(long long count, int n, int code = err::no_memory) {
        std::free(p_);
        // No object may be larger than the largest pointer difference.
        const std::size_t bytes = frame::checked_bytes(count, sizeof(T));
        const bool possible = bytes > 0 && bytes <= static_cast<std::size_t>(PTRDIFF_MAX);
        p_ = possible ? static_cast<T*>(std::malloc(bytes)) : nullptr;
        if (p_ == nullptr) {
            if (code == err::no_memory) {
                frame::raise(frame::Type::Terminal, code, frame::Str{"n"}, frame::Int{n});
            } else {
                frame::raise(frame::Type::Terminal, code, frame::Int{n});
            }
        }
        return p_ != nullptr;
    }
    T* get() const { return p_; }
    T* release() {
        T* p = p_;
        p_ = nullptr;
        return p;
    }

private:
    T* p_ = nullptr;
};

// The caller's n rows of cd elements (row-major, cd >= n) become column-major with leading
// dimension n, the padding columns n..cd-1 following as extra columns; rows_back() undoes it.
template <class T>
void rows_to_columns(int n, int cd, T* a);
template <class T>
void columns_to_rows(int n, int cd, T* a);

// A column-major n by n matrix (leading dimension n) at the start of an array of n*cd
// elements becomes the caller's row-major layout with rows cd apart; the padding columns
// n..cd-1 are set to zero.
template <class T>
void hand_back_rows(int n, int cd, T* a);

// f (column-major, leading dimension n) := the caller's row-major a (rows lda apart).
template <class T>
void copy_transposed(int n, const T* a, int lda, T* f);

}  // namespace qnum::linsys
