// The nonnegative definite solver: R^T R with a rank decision, solutions of the consistent
// part of the system and a generalized inverse.
#include "linsys/nonnegdef.hpp"

#include <algorithm>
#include <cmath>

#include "kernels/level1.hpp"
#include "linsys/common.hpp"
#include "linsys/solvers.hpp"

namespace qnum::linsys {

using frame::Int;
using frame::Str;
using frame::Type;

namespace {

inline std::size_t rm(int i, int j, int ld) { return at(j, i, ld); }

}  // namespace

template <class T>
int chfac(int n, const T* a, int lda, double tol, T* r, int ldr) {
    frame::Level level("l_chfac");
    if (!(tol >= 0 && tol <= 1)) {
        frame::raise(Type::Terminal, err::bad_rank_tolerance, frame::Real{tol});
        return 0;
    }
    if (r != a) {
        for (int i = 0; i < n; ++i) {
            std::fill(r + rm(i, 0, ldr), r + rm(i, i, ldr), T(0));
            std::copy(a + rm(i, i, lda), a + rm(i, n, lda), r + rm(i, i, ldr));
        }
    }
    const T t_tol = static_cast<T>(tol);
    int rank = 0, failing = 0;
    for (int j = 0; j < n; ++j) {
        const T ajj = r[rm(j, j, ldr)];
        T s(0);
        for (int i = 0; i < j; ++i) {
            const T t = r[rm(i, j, ldr)] - kern::dot(i, r + rm(0, i, ldr), ldr, r + rm(0, j, ldr), ldr);
            const T rii = r[rm(i, i, ldr)];
            if (rii == T(0)) {
                // Column j must then be consistent with a zero row i, up to the tolerance
                // measured by the sizes of the two columns of R involved.
                const T bound = t_tol * std::sqrt(std::abs(ajj)) * kern::nrm2(i, r + rm(0, i, ldr), ldr);
                if (failing == 0 && std::abs(t) > bound) failing = j + 1;
                r[rm(i, j, ldr)] = T(0);
            } else {
                const T rij = t / rii;
                r[rm(i, j, ldr)] = rij;
                s += rij * rij;
            }
        }
        const T d = ajj - s;
        T rjj(0);
        if (std::abs(d) > t_tol * std::abs(ajj)) {
            if (d >= T(0)) {
                ++rank;
                rjj = std::sqrt(d);
            } else if (failing == 0) {
                failing = j + 1;
            }
        }
        r[rm(j, j, ldr)] = rjj;
    }
    if (failing != 0) frame::raise(Type::Warning, err::not_nonnegative_definite, Int{failing}, frame::Real{tol});
    return rank;
}

template <class T>
void girts(int n, const T* r, int ldr, const T* b, T* x, bool warn) {
    frame::Level level("l_girts");
    const T eps = Prec<T>::eps();
    bool reported = false;
    // R^T y = b, forward.
    for (int i = 0; i < n; ++i) {
        T t = b[i], size = std::abs(b[i]);
        for (int k = 0; k < i; ++k) {
            const T v = r[rm(k, i, ldr)] * x[k];
            t -= v;
            size += std::abs(v);
        }
        const T rii = r[rm(i, i, ldr)];
        if (rii != T(0)) {
            x[i] = t / rii;
            continue;
        }
        x[i] = T(0);
        if (warn && !reported && std::abs(t) > 200 * eps * size) {
            frame::raise(Type::Warning, err::inconsistent_system, Int{i + 1});
            reported = true;
        }
    }
    // R x = y, backward.
    for (int i = n - 1; i >= 0; --i) {
        T t = x[i] - kern::dot(n - i - 1, r + rm(i, i + 1, ldr), 1, x + i + 1, 1);
        const T rii = r[rm(i, i, ldr)];
        if (rii != T(0)) {
            x[i] = t / rii;
            continue;
        }
        if (warn && !reported && t != T(0)) {
            frame::raise(Type::Warning, err::inconsistent_reduced_rhs, Int{i + 1}, Int{1}, frame::Real{t});
            reported = true;
        }
        x[i] = T(0);
    }
}

template <class T>
T* lin_sol_nonnegdef(int n, T* a, T* b, frame::Options opt) {
    int fcd = n, icd = n;
    bool factor_only = false, solve_only = false, inverse_only = false;
    T** p_factor = nullptr;
    T* user_factor = nullptr;
    T** p_inva = nullptr;
    T* user_inva = nullptr;
    T* user_x = nullptr;
    double tol = 100.0 * Prec<T>::eps();
    while (int code = opt.next()) {
        switch (code) {
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
        case QNUM_TOLERANCE: tol = opt.get<double>(); break;
        default: opt.unknown(code, err::unknown_routine_option);
        }
    }
    if (frame::pending()) return nullptr;
    const bool has_factor = p_factor != nullptr || user_factor != nullptr;
    const bool has_inverse = p_inva != nullptr || user_inva != nullptr;
    auto fail = [](int code, auto... slots) {
        frame::raise(Type::Terminal, code, slots...);
        return nullptr;
    };
    if (n < 1) return fail(err::order_not_positive, Int{n});
    if (int(factor_only) + int(solve_only) + int(inverse_only) > 1) return fail(err::only_options_conflict);
    if (factor_only && !has_factor) return fail(err::factor_only_without_factor);
    if (factor_only && has_inverse) return fail(err::factor_only_with_inverse);
    if (inverse_only && !has_inverse) return fail(err::inverse_only_without_inverse);
    if (inverse_only && has_factor) return fail(err::inverse_only_with_factor);
    if (solve_only && user_factor == nullptr) return fail(err::solve_only_without_factor);
    if (solve_only && has_inverse) return fail(err::solve_only_with_inverse);
    if (has_inverse && icd < n) return fail(err::array_col_dim_below_n, Int{icd}, Str{"inva"}, Int{n}, Str{"n"});
    if (fcd < n) return fail(err::array_col_dim_below_n, Int{fcd}, Str{"factor"}, Int{n}, Str{"n"});
    if (a == nullptr && !solve_only) return fail(err::missing_array, Str{"a"});
    if (b == nullptr && !factor_only && !inverse_only) return fail(err::missing_array, Str{"b"});

    if (p_factor != nullptr) *p_factor = nullptr;
    if (p_inva != nullptr) *p_inva = nullptr;
    const long long nn = n;
    const bool want_solve = !factor_only && !inverse_only;
    // With the factor in a, both share the larger row spacing.
    int lda = n;
    if (user_factor != nullptr && user_factor == a) lda = fcd = std::max(n, fcd);
    Owned<T> own_factor, own_inva, own_x;
    T* f = user_factor;
    int ldf = fcd;
    if (f == nullptr) {
        if (inverse_only) ldf = n;
        if (!own_factor.allocate(nn * ldf, n, err::no_memory_nonneg)) return nullptr;
        f = own_factor.get();
    }
    T* x = user_x;
    if (want_solve && x == nullptr) {
        if (!own_x.allocate(nn, n, err::no_memory_nonneg)) return nullptr;
        x = own_x.get();
    }
    T* inva = user_inva;
    if (has_inverse && inva == nullptr) {
        if (!own_inva.allocate(nn * icd, n, err::no_memory_nonneg)) return nullptr;
        inva = own_inva.get();
    }

    if (!solve_only) {
        chfac(n, a, lda, tol, f, ldf);
        if (frame::failed_below()) return nullptr;
    }
    if (want_solve) girts(n, f, ldf, b, x, true);
    if (has_inverse) {
        // Column j of the generalized inverse solves with the unit vector e_j; it is
        // symmetric, so the column is stored as row j.
        Owned<T> e;
        if (!e.allocate(nn, n, err::no_memory_nonneg)) return nullptr;
        for (int j = 0; j < n; ++j) {
            std::fill(e.get(), e.get() + n, T(0));
            e.get()[j] = T(1);
            girts(n, f, ldf, e.get(), inva + rm(j, 0, icd), false);
        }
        if (own_inva.get() != nullptr) {
            for (int i = 0; i < n; ++i) std::fill(inva + rm(i, n, icd), inva + rm(i, icd, icd), T(0));
            *p_inva = own_inva.release();
        }
    }
    if (p_factor != nullptr) {
        for (int i = 0; i < n; ++i) std::fill(f + rm(i, n, ldf), f + rm(i, ldf, ldf), T(0));
        *p_factor = own_factor.release();
    }
    if (!want_solve) return nullptr;
    own_x.release();
    return x;
}

template int chfac<float>(int, const float*, int, double, float*, int);
template int chfac<double>(int, const double*, int, double, double*, int);
template void girts<float>(int, const float*, int, const float*, float*, bool);
template void girts<double>(int, const double*, int, const double*, double*, bool);
template float* lin_sol_nonnegdef<float>(int, float*, float*, frame::Options);
template double* lin_sol_nonnegdef<double>(int, double*, double*, frame::Options);

}  // namespace qnum::linsys
