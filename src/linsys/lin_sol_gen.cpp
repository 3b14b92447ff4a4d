// The general solver: options and checks, the caller's rows turned into working columns,
// factor, solve, inverse, and the results handed back in the caller's layout.
#include <algorithm>
#include <complex>

#include "linsys/common.hpp"
#include "linsys/lu.hpp"
#include "linsys/solvers.hpp"

namespace qnum::linsys {

using frame::Int;
using frame::Str;
using frame::Type;

namespace {

template <class T>
Real<T> condition_from(Real<T> rcond) {
    return rcond > Prec<T>::tiny() ? Real<T>(1) / rcond : Real<T>(qnum_dmach(7));
}

}  // namespace

template <class T>
T* lin_sol_gen(int n, T* a, T* b, frame::Options opt) {
    using R = Real<T>;
    int ipath = 1, lda = n, fcd = n, icd = n;
    bool factor_only = false, solve_only = false, inverse_only = false;
    int** p_pvt = nullptr;
    T** p_factor = nullptr;
    int* user_pvt = nullptr;
    T* user_factor = nullptr;
    T** p_inva = nullptr;
    T* user_inva = nullptr;
    T* user_x = nullptr;
    R* cond = nullptr;
    while (int code = opt.next()) {
        switch (code) {
        case QNUM_TRANSPOSE: ipath = 2; break;
        case QNUM_A_COL_DIM: lda = opt.get<int>(); break;
        case QNUM_FACTOR:
            // A null pivot pointer is reported alone, as 104; the factor pointer is read anyway.
            p_pvt = opt.ptr<int*>("ipvt", "QNUM_FACTOR");
            p_factor = p_pvt ? opt.ptr<T*>("factor", "QNUM_FACTOR", true) : opt.get<T**>();
            user_pvt = nullptr;
            user_factor = nullptr;
            break;
        case QNUM_FAC_COL_DIM: fcd = opt.get<int>(); break;
        case QNUM_FACTOR_ONLY: factor_only = true; break;
        case QNUM_SOLVE_ONLY: solve_only = true; break;
        case QNUM_FACTOR_USER:
            user_pvt = opt.ptr<int>("ipvt", "QNUM_FACTOR");
            user_factor = user_pvt ? opt.ptr<T>("factor", "QNUM_FACTOR", true) : opt.get<T*>();
            p_pvt = nullptr;
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
    if (a == nullptr && !solve_only) check::array(a, "a");
    if (b == nullptr && !factor_only && !inverse_only) check::array(b, "b");
    if (frame::pending()) return nullptr;

    const bool has_factor = p_factor != nullptr || user_factor != nullptr;
    const bool has_inverse = p_inva != nullptr || user_inva != nullptr;
    const bool factor_in_a = user_factor != nullptr && user_factor == a;
    if (!cross_check({n, lda, fcd, icd, has_factor, has_inverse, factor_in_a, factor_only, solve_only,
                      inverse_only, user_factor != nullptr, cond != nullptr}))
        return nullptr;
    if (factor_in_a) lda = fcd = std::max(lda, fcd);

    if (p_factor != nullptr) {
        *p_factor = nullptr;
        *p_pvt = nullptr;
    }
    if (p_inva != nullptr) *p_inva = nullptr;
    const long long nn = n;
    const bool want_solve = !factor_only && !inverse_only;

    // Working arrays: every matrix below is column-major with leading dimension n.
    Owned<T> own_factor, own_inva, work;
    Owned<int> own_pvt;
    Owned<R> scale;
    frame::Out<T> x;
    T* f = user_factor;
    int* ipvt = user_pvt;
    const bool factor_here = !inverse_only && !solve_only;
    if (factor_here && f == nullptr) {
        if (!own_factor.allocate(nn * fcd, n) || !own_pvt.allocate(nn, n)) return nullptr;
        f = own_factor.get();
        ipvt = own_pvt.get();
    }
    if (!solve_only && (!work.allocate(nn, n) || !scale.allocate(nn, n))) return nullptr;
    if (want_solve) {
        if (user_x != nullptr) x.borrow(user_x);
        if (!x.ensure(nn, "n")) return nullptr;
    }
    T* inva = user_inva;
    if (has_inverse && inva == nullptr) {
        if (!own_inva.allocate(nn * icd, n)) return nullptr;
        inva = own_inva.get();
    }
    if (inverse_only && ipvt == nullptr) {
        if (!own_pvt.allocate(nn, n)) return nullptr;
        ipvt = own_pvt.get();
    }

    R rcond(0);
    bool ok = true;
    // The caller's factor array keeps its padding columns: it is transposed whole.
    if (user_factor != nullptr && !inverse_only) rows_to_columns(n, fcd, f);
    if (factor_here) {
        if (!factor_in_a) copy_transposed(n, a, lda, f);
        if (want_solve || cond != nullptr) {
            l2crg(n, f, n, f, n, ipvt, &rcond, work.get(), scale.get());
            if (cond != nullptr) *cond = condition_from<T>(rcond);
        } else {
            l2trg(n, f, n, f, n, ipvt, scale.get());
        }
        ok = !frame::failed_below();
    }
    if (ok && want_solve) {
        lfsrg(n, f, n, ipvt, b, ipath, x.get());
        ok = !frame::failed_below();
    }
    if (ok && has_inverse) {
        const bool inva_is_a = inva == a;
        if (user_inva != nullptr) rows_to_columns(n, inva_is_a ? std::max(lda, icd) : icd, inva);
        if (inverse_only && !inva_is_a) copy_transposed(n, a, lda, inva);
        lu_inverse(n, f, n, ipvt, inverse_only, inva, n, &rcond, work.get(), scale.get());
        if (inverse_only && cond != nullptr) *cond = condition_from<T>(rcond);
        ok = !frame::failed_below();
        if (user_inva != nullptr) {
            columns_to_rows(n, inva_is_a ? std::max(lda, icd) : icd, inva);
        } else if (ok) {
            hand_back_rows(n, icd, inva);
            *p_inva = own_inva.release();
        }
    }
    if (user_factor != nullptr && !inverse_only) {
        columns_to_rows(n, fcd, f);
    } else if (ok && p_factor != nullptr && !inverse_only) {
        hand_back_rows(n, fcd, f);
        *p_factor = own_factor.release();
        *p_pvt = own_pvt.release();
    }
    if (!ok || !want_solve) return nullptr;
    return x.release();
}

template float* lin_sol_gen<float>(int, float*, float*, frame::Options);
template double* lin_sol_gen<double>(int, double*, double*, frame::Options);
template std::complex<float>* lin_sol_gen<std::complex<float>>(int, std::complex<float>*,
                                                               std::complex<float>*, frame::Options);
template std::complex<double>* lin_sol_gen<std::complex<double>>(int, std::complex<double>*,
                                                                 std::complex<double>*, frame::Options);

}  // namespace qnum::linsys
