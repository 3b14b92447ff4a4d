// Layout changes between the caller's row-major arrays and the column-major working ones.
#include "linsys/common.hpp"

#include <algorithm>
#include <cstring>

#include "linsys/m1ran.hpp"

namespace qnum::linsys {

bool cross_check(const CallShape& s) {
    using frame::Int, frame::Str, frame::Type;
    const int n = s.n, fcd = s.factor_in_a ? std::max(s.lda, s.fcd) : s.fcd;
    auto fail = [](int code, auto... slots) {
        frame::raise(Type::Terminal, code, slots...);
        return false;
    };
    if (n < 1) return fail(err::order_not_positive, Int{n});
    if (n > s.lda) return fail(err::col_dim_below_n, Int{n}, Int{s.lda}, Str{"a"});
    if (n > fcd) return fail(err::col_dim_below_n, Int{n}, Int{fcd}, Str{"factor"});
    if (s.has_inverse && n > s.icd) return fail(err::col_dim_below_n, Int{n}, Int{s.icd}, Str{"inva"});
    if (int(s.factor_only) + int(s.solve_only) + int(s.inverse_only) > 1) return fail(err::only_options_conflict);
    if (s.solve_only && !s.user_factor) return fail(err::solve_only_without_factor);
    if (s.solve_only && s.cond) return fail(err::solve_only_with_condition);
    if (s.inverse_only && !s.has_inverse) return fail(err::inverse_only_without_inverse);
    if (s.factor_only && !s.has_factor) return fail(err::factor_only_without_factor);
    return true;
}

template <class T>
void rows_to_columns(int n, int cd, T* a) {
    m1ran(n, cd, a, a);
}

template <class T>
void columns_to_rows(int n, int cd, T* a) {
    m1ran(cd, n, a, a);
}

template <class T>
void hand_back_rows(int n, int cd, T* a) {
    m1ran(n, n, a, a);
    if (cd == n) return;
    const std::size_t sn = static_cast<std::size_t>(n), sc = static_cast<std::size_t>(cd);
    // Rows move to larger offsets, so the last one goes first.
    for (std::size_t i = sn; i-- > 0;) {
        std::memmove(static_cast<void*>(a + i * sc), a + i * sn, sn * sizeof(T));
        std::fill(a + i * sc + sn, a + (i + 1) * sc, T(0));
    }
}

template <class T>
void copy_transposed(int n, const T* a, int lda, T* f) {
    constexpr int tile = 32;
    for (int i0 = 0; i0 < n; i0 += tile) {
        const int i1 = std::min(n, i0 + tile);
        for (int j0 = 0; j0 < n; j0 += tile) {
            const int j1 = std::min(n, j0 + tile);
            for (int i = i0; i < i1; ++i) {
                const T* row = a + static_cast<std::size_t>(i) * static_cast<std::size_t>(lda);
                for (int j = j0; j < j1; ++j) f[at(i, j, n)] = row[j];
            }
        }
    }
}

#define QNUM_LINSYS_LAYOUT(T)                              \
    template void rows_to_columns<T>(int, int, T*);        \
    template void columns_to_rows<T>(int, int, T*);        \
    template void hand_back_rows<T>(int, int, T*);         \
    template void copy_transposed<T>(int, const T*, int, T*);
QNUM_LINSYS_LAYOUT(float)
QNUM_LINSYS_LAYOUT(double)
QNUM_LINSYS_LAYOUT(std::complex<float>)
QNUM_LINSYS_LAYOUT(std::complex<double>)
#undef QNUM_LINSYS_LAYOUT

}  // namespace qnum::linsys
