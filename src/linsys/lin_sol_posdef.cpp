// The positive definite solver. The caller's row-major upper triangle, read as a
// column-major array, is the lower triangle of M = A^T (= conj(A) for Hermitian A), so the
// solver works on the caller's arrays where they lie: no transposes are needed. The factor
// L of M = L L^H, seen row by row, is the upper triangular R = L^T with A = R^H R.
#include <algorithm>
#include <complex>

#include "kernels/level1.hpp"
#include "linsys/cholesky.hpp"
#include "linsys/common.hpp"
#include "linsys/solvers.hpp"

namespace qnum::linsys {

using frame::Int;
using frame::Str;
using frame::Type;

namespace {

// Sets to zero, in each of the n columns, the strictly upper triangle (the caller's strictly
// lower one) with `upper`, and the padding rows n..ld-1 (the caller's padding columns) with
// `padding`.
template <class T>
void clear_outside(int n, T* f, int ld, bool upper, bool padding) {
    for (int j = 0; j < n; ++j) {
        T* col = f + at(0, j, ld);
        if (upper) std::fill(col, col + j, T(0));
        if (padding) std::fill(col + n, col + ld, T(0));
    }
}

}  // namespace

template <class T>
T* lin_sol_posdef(int n, T* a, T* b, frame::Options opt) {
    using R = Real<T>;
    int lda = n, fcd = n, icd = n;
    bool factor_only = false, solve_only = false, inverse_only = false;
    T** p_factor = nullptr;
    T* user_factor = nullptr;
    T** p_inva = nullptr;
    T* user_inva = nullptr;
    T* user_x = nullptr;
    R* cond = nullptr;
    while (int code = opt.next()) {
        switch (code) {
        case QNUM_A_COL_DIM: lda = opt.get<int>(); break;
        case QNUM_FACTOR:
            p_factor = opt.ptr<T*>("factor", "QNUM_FACTOR");
            user_factor = nullptr;
            break;
        case QNUM_FAC_COL_DIM: fcd = opt.get<int>(); break;
        case QNUM_FACTOR_ONLY: factor_only = true; break;
        case QNUM_SOLVE_ONLY: solve_only = true; break;
        case QNUM_FACTOR_USER:
            user_factor = opt.ptr<T>("factor", "QNUM_FACTOR_USER");
            p_factor = nullptr;
            break;
        case QNUM_INVERSE:
            p_inva = opt.ptr<T*>("inva", "QNUM_INVERSE");
            user_inva = nullptr;
            break;
        case QNUM_INVERSE_USER:
            user_inva = opt.ptr<T>("inva", "QNUM_INVERSE_USER");
            p_inva = nullptr;
            break;
        case QNUM_INV_COL_DIM: icd = opt.get<int>(); break;
        case QNUM_INVERSE_ONLY: inverse_only = true; break;
        case QNUM_RETURN_USER: user_x = opt.ptr<T>("x", "QNUM_RETURN_USER"); break;
        case QNUM_CONDITION: cond = opt.ptr<R>("cond", "QNUM_CONDITION"); break;
        default: opt.unknown(code);
        }
    }
    auto missing = [](const char* name) {
        frame::raise(Type::Terminal, err::null_required_argument, Str{name});
    };
    if (a == nullptr && !solve_only) missing("a");
    if (b == nullptr && !factor_only && !inverse_only) missing("b");
    if (frame::pending()) return nullptr;

    const bool has_factor = p_factor != nullptr || user_factor != nullptr;
    const bool has_inverse = p_inva != nullptr || user_inva != nullptr;
    const bool factor_in_a = user_factor != nullptr && user_factor == a;
    if (!cross_check({n, lda, fcd, icd, has_factor, has_inverse, factor_in_a, factor_only, solve_only,
                      inverse_only, user_factor != nullptr, cond != nullptr}))
        return nullptr;
    if (factor_in_a) lda = fcd = std::max(lda, fcd);

    if (p_factor != nullptr) *p_factor = nullptr;
    if (p_inva != nullptr) *p_inva = nullptr;
    const long long nn = n;
    const bool want_solve = !factor_only && !inverse_only;
    Owned<T> own_factor, own_inva, own_x, work;
    T* f = user_factor;
    int ldf = fcd;
    if (f == nullptr && !solve_only) {
        // Inverse-only calls keep the factor only as work.
        if (inverse_only) ldf = n;
        if (!own_factor.allocate(nn * ldf, n, err::no_memory_factor)) return nullptr;
        f = own_factor.get();
    }
    T* x = user_x;
    if (want_solve && x == nullptr) {
        if (!own_x.allocate(nn, n, err::no_memory_solution)) return nullptr;
        x = own_x.get();
    }
    T* inva = user_inva;
    if (has_inverse && inva == nullptr) {
        if (!own_inva.allocate(nn * icd, n)) return nullptr;
        inva = own_inva.get();
    }
    if (!solve_only && !work.allocate(nn, n)) return nullptr;

    bool ok = true;
    if (!solve_only) {
        if (want_solve || cond != nullptr || inverse_only) {
            R rcond(0);
            chol_condition(n, a, lda, f, ldf, &rcond, work.get());
            if (cond != nullptr) *cond = rcond > Prec<T>::tiny() ? R(1) / rcond : R(qnum_dmach(7));
        } else {
            chol_factor(n, a, lda, f, ldf);
        }
        ok = !frame::failed_below();
    }
    if (ok && want_solve) {
        // M = conj(A): A x = b is M conj(x) = conj(b).
        kern::copy(n, b, 1, x, 1);
        conj_all(static_cast<std::size_t>(n), x);
        chol_solve(n, f, ldf, x, x);
        conj_all(static_cast<std::size_t>(n), x);
    }
    if (ok && has_inverse) {
        chol_inverse(n, f, ldf, inva, icd);
        ok = !frame::failed_below();
        if (ok && own_inva.get() != nullptr) {
            clear_outside(n, inva, icd, false, true);
            *p_inva = own_inva.release();
        }
    }
    if (ok && !solve_only && !inverse_only && f != a) clear_outside(n, f, ldf, true, f == own_factor.get());
    if (ok && p_factor != nullptr && !inverse_only) {
        *p_factor = own_factor.release();
    }
    if (!ok || !want_solve) return nullptr;
    own_x.release();
    return x;
}

template float* lin_sol_posdef<float>(int, float*, float*, frame::Options);
template double* lin_sol_posdef<double>(int, double*, double*, frame::Options);
template std::complex<float>* lin_sol_posdef<std::complex<float>>(int, std::complex<float>*,
                                                                  std::complex<float>*, frame::Options);
template std::complex<double>* lin_sol_posdef<std::complex<double>>(int, std::complex<double>*,
                                                                    std::complex<double>*, frame::Options);

}  // namespace qnum::linsys
