// The C entry points of the vector and matrix-vector kernels: argument checks under each
// kernel's routine tag, then the templates of level1, helpers and level2.
#include <cctype>
#include <complex>
#include <cstring>

#include "frame/frame.hpp"
#include "kernels/helpers.hpp"
#include "kernels/level1.hpp"
#include "kernels/level2.hpp"
#include "kernels/scalar.hpp"

using namespace qnum;
using frame::Int;
using frame::Str;

namespace {

using C = std::complex<float>;
using Z = std::complex<double>;

// C complex values and arrays have the layout of std::complex: two reals, real part first.
inline C* cx(qnum_f_complex* p) { return reinterpret_cast<C*>(p); }
inline const C* cx(const qnum_f_complex* p) { return reinterpret_cast<const C*>(p); }
inline Z* cx(qnum_d_complex* p) { return reinterpret_cast<Z*>(p); }
inline const Z* cx(const qnum_d_complex* p) { return reinterpret_cast<const Z*>(p); }
inline qnum_f_complex out(C v) { return {v.real(), v.imag()}; }
inline qnum_d_complex out(Z v) { return {v.real(), v.imag()}; }

// The first character of an option string, upper-cased (0 for a null or empty string).
char opt(const char* s) { return s ? static_cast<char>(std::toupper(static_cast<unsigned char>(*s))) : 0; }
bool bad_trans(char c) { return c != 'N' && c != 'T' && c != 'C'; }
bool bad_uplo(char c) { return c != 'U' && c != 'L'; }
bool bad_diag(char c) { return c != 'U' && c != 'N'; }
// An option string as a substitution value; a null pointer is shown empty.
Str shown(const char* s) { return Str{s ? s : ""}; }

// The argument checks of one kernel, made in order. A failed check pushes the kernel's tag,
// raises its TERMINAL error with the substitution values and pops the tag. Normally the first
// failure ends the checking; with `every` set each failing check is reported in turn.
class Checks {
public:
    explicit Checks(const char* tag, bool every = false) : tag_(tag), every_(every) {}
    template <class... Slots>
    Checks& operator()(bool bad, int code, Slots... slots) {
        if (bad && (ok_ || every_)) {
            frame::raise_in(tag_, frame::Type::Terminal, code, slots...);
            ok_ = false;
        }
        return *this;
    }
    bool ok() const { return ok_; }

private:
    const char* tag_;
    bool every_;
    bool ok_ = true;
};

// ---- Level 2 families: checks, then the kernel ----

template <class T>
void gemv(const char* tag, const char* trans, int m, int n, T alpha, const T* a, int lda, const T* x,
          int incx, T beta, T* y, int incy) {
    const char t = opt(trans);
    Checks ck(tag);
    ck(m < 0, err::negative_rows, Int{m})(n < 0, err::negative_order, Int{n})(
        lda < m || lda == 0, err::lda_below_rows, Int{lda}, Int{m})(incx == 0, err::zero_incx, Int{incx})(
        incy == 0, err::zero_incy, Int{incy})(bad_trans(t), err::bad_trans_option, shown(trans));
    if (ck.ok()) kern::gemv(t, m, n, alpha, a, lda, x, incx, beta, y, incy);
}

template <class T>
void gbmv(const char* tag, const char* trans, int m, int n, int kl, int ku, T alpha, const T* a, int lda,
          const T* x, int incx, T beta, T* y, int incy) {
    const char t = opt(trans);
    Checks ck(tag);
    ck(m < 0, err::negative_rows, Int{m})(n < 0, err::negative_order, Int{n})(
        kl < 0 || (m > 0 && kl > m - 1), err::bad_lower_band_width, Int{kl}, Int{m})(
        ku < 0 || (n > 0 && ku > n - 1), err::bad_upper_band_width, Int{ku}, Int{n})(
        static_cast<long long>(lda) < static_cast<long long>(kl) + ku + 1, err::lda_below_bands, Int{lda},
        Int{kl}, Int{ku})(incx == 0, err::zero_incx, Int{incx})(incy == 0, err::zero_incy, Int{incy})(
        bad_trans(t), err::bad_trans_option, shown(trans));
    if (ck.ok()) kern::gbmv(t, m, n, kl, ku, alpha, a, lda, x, incx, beta, y, incy);
}

template <class T>
void hemv(const char* tag, const char* uplo, int n, T alpha, const T* a, int lda, const T* x, int incx,
          T beta, T* y, int incy) {
    const char u = opt(uplo);
    Checks ck(tag);
    ck(n < 0, err::negative_order, Int{n})(lda < n || lda == 0, err::lda_below_order, Int{lda}, Int{n})(
        incx == 0, err::zero_incx, Int{incx})(incy == 0, err::zero_incy, Int{incy})(
        bad_uplo(u), err::bad_uplo_option, shown(uplo));
    if (ck.ok()) kern::hemv(u, n, alpha, a, lda, x, incx, beta, y, incy);
}

template <class T>
void hbmv(const char* tag, const char* uplo, int n, int k, T alpha, const T* a, int lda, const T* x, int incx,
          T beta, T* y, int incy) {
    const char u = opt(uplo);
    Checks ck(tag);
    ck(n < 0, err::negative_order, Int{n})(k < 0, err::negative_band_width, Int{k})(
        static_cast<long long>(lda) < k + 1LL, err::lda_below_band, Int{lda}, Int{k})(
        incx == 0, err::zero_incx, Int{incx})(incy == 0, err::zero_incy, Int{incy})(
        bad_uplo(u), err::bad_uplo_option, shown(uplo));
    if (ck.ok()) kern::hbmv(u, n, k, alpha, a, lda, x, incx, beta, y, incy);
}

template <class T>
void hpmv(const char* tag, const char* uplo, int n, T alpha, const T* ap, const T* x, int incx, T beta, T* y,
          int incy) {
    const char u = opt(uplo);
    Checks ck(tag);
    ck(n < 0, err::negative_order, Int{n})(incx == 0, err::zero_incx, Int{incx})(
        incy == 0, err::zero_incy, Int{incy})(bad_uplo(u), err::bad_uplo_option, shown(uplo));
    if (ck.ok()) kern::hpmv(u, n, alpha, ap, x, incx, beta, y, incy);
}

// The option checks shared by the triangular kernels, after their size checks.
void triangle_options(Checks& ck, int incx, const char* uplo, const char* trans, const char* diag) {
    ck(incx == 0, err::zero_incx, Int{incx})(bad_uplo(opt(uplo)), err::bad_uplo_option, shown(uplo))(
        bad_trans(opt(trans)), err::bad_trans_option, shown(trans))(bad_diag(opt(diag)), err::bad_diag_option,
                                                                    shown(diag));
}

enum class Tri { Mv, Sv };

template <class T>
void trxv(Tri op, const char* tag, const char* uplo, const char* trans, const char* diag, int n, const T* a,
          int lda, T* x, int incx) {
    Checks ck(tag);
    ck(n < 0, err::negative_order, Int{n})(lda < n || lda == 0, err::lda_below_order, Int{lda}, Int{n});
    triangle_options(ck, incx, uplo, trans, diag);
    if (!ck.ok()) return;
    if (op == Tri::Mv) {
        kern::trmv(opt(uplo), opt(trans), opt(diag), n, a, lda, x, incx);
    } else {
        kern::trsv(opt(uplo), opt(trans), opt(diag), n, a, lda, x, incx);
    }
}

template <class T>
void tbxv(Tri op, const char* tag, const char* uplo, const char* trans, const char* diag, int n, int k,
          const T* a, int lda, T* x, int incx) {
    Checks ck(tag);
    ck(n < 0, err::negative_order, Int{n})(k < 0, err::negative_band_width, Int{k})(
        static_cast<long long>(lda) < k + 1LL, err::lda_below_band, Int{lda}, Int{k});
    triangle_options(ck, incx, uplo, trans, diag);
    if (!ck.ok()) return;
    if (op == Tri::Mv) {
        kern::tbmv(opt(uplo), opt(trans), opt(diag), n, k, a, lda, x, incx);
    } else {
        kern::tbsv(opt(uplo), opt(trans), opt(diag), n, k, a, lda, x, incx);
    }
}

template <class T>
void tpxv(Tri op, const char* tag, const char* uplo, const char* trans, const char* diag, int n, const T* ap,
          T* x, int incx) {
    Checks ck(tag);
    ck(n < 0, err::negative_order, Int{n});
    triangle_options(ck, incx, uplo, trans, diag);
    if (!ck.ok()) return;
    if (op == Tri::Mv) {
        kern::tpmv(opt(uplo), opt(trans), opt(diag), n, ap, x, incx);
    } else {
        kern::tpsv(opt(uplo), opt(trans), opt(diag), n, ap, x, incx);
    }
}

// The complex band solves check everything and report each failure under "CTBSV ".
template <class T>
void complex_tbsv(const char* uplo, const char* trans, const char* diag, int n, int k, const T* a, int lda,
                  T* x, int incx) {
    Checks ck("CTBSV ", /*every=*/true);
    ck(n < 0, err::band_solve_order, Int{n})(n >= 1 && k < 0, err::band_solve_width, Int{k})(
        static_cast<long long>(lda) < k + 1LL, err::band_solve_lda, Int{lda}, Int{k})(
        incx == 0, err::band_solve_incx, Int{incx})(bad_trans(opt(trans)), err::band_solve_trans,
                                                    shown(trans))(
        bad_uplo(opt(uplo)), err::band_solve_uplo, shown(uplo))(bad_diag(opt(diag)), err::band_solve_diag,
                                                                shown(diag));
    if (ck.ok()) kern::tbsv(opt(uplo), opt(trans), opt(diag), n, k, a, lda, x, incx);
}

// The real full triangular solves make no checks: anything they cannot do returns at once.
template <class T>
void plain_trsv(const char* uplo, const char* trans, const char* diag, int n, const T* a, int lda, T* x,
                int incx) {
    const char u = opt(uplo), t = opt(trans), d = opt(diag);
    if (n < 1 || incx == 0 || lda < n || bad_uplo(u) || bad_trans(t) || bad_diag(d)) return;
    kern::trsv(u, t, d, n, a, lda, x, incx);
}

template <class T>
void ger(const char* tag, bool conj_y, int m, int n, T alpha, const T* x, int incx, const T* y, int incy,
         T* a, int lda) {
    Checks ck(tag);
    ck(m < 0, err::negative_rows, Int{m})(n < 0, err::negative_order, Int{n})(
        lda < m || lda == 0, err::lda_below_rows, Int{lda}, Int{m})(incx == 0, err::zero_incx, Int{incx})(
        incy == 0, err::zero_incy, Int{incy});
    if (!ck.ok()) return;
    if (conj_y) {
        kern::gerc(m, n, alpha, x, incx, y, incy, a, lda);
    } else {
        kern::ger(m, n, alpha, x, incx, y, incy, a, lda);
    }
}

template <class T>
void her(const char* tag, const char* uplo, int n, Real<T> alpha, const T* x, int incx, T* a, int lda) {
    const char u = opt(uplo);
    Checks ck(tag);
    ck(n < 0, err::negative_order, Int{n})(lda < n || lda == 0, err::lda_below_order, Int{lda}, Int{n})(
        incx == 0, err::zero_incx, Int{incx})(bad_uplo(u), err::bad_uplo_option, shown(uplo));
    if (ck.ok()) kern::her(u, n, alpha, x, incx, a, lda);
}

template <class T>
void hpr(const char* tag, const char* uplo, int n, Real<T> alpha, const T* x, int incx, T* ap) {
    const char u = opt(uplo);
    Checks ck(tag);
    ck(n < 0, err::negative_order, Int{n})(incx == 0, err::zero_incx, Int{incx})(
        bad_uplo(u), err::bad_uplo_option, shown(uplo));
    if (ck.ok()) kern::hpr(u, n, alpha, x, incx, ap);
}

template <class T>
void her2(const char* tag, const char* uplo, int n, T alpha, const T* x, int incx, const T* y, int incy, T* a,
          int lda) {
    const char u = opt(uplo);
    Checks ck(tag);
    ck(n < 0, err::negative_order, Int{n})(lda < n || lda == 0, err::lda_below_order, Int{lda}, Int{n})(
        incx == 0, err::zero_incx, Int{incx})(incy == 0, err::zero_incy, Int{incy})(
        bad_uplo(u), err::bad_uplo_option, shown(uplo));
    if (ck.ok()) kern::her2(u, n, alpha, x, incx, y, incy, a, lda);
}

template <class T>
void hpr2(const char* tag, const char* uplo, int n, T alpha, const T* x, int incx, const T* y, int incy,
          T* ap) {
    const char u = opt(uplo);
    Checks ck(tag);
    ck(n < 0, err::negative_order, Int{n})(incx == 0, err::zero_incx, Int{incx})(
        incy == 0, err::zero_incy, Int{incy})(bad_uplo(u), err::bad_uplo_option, shown(uplo));
    if (ck.ok()) kern::hpr2(u, n, alpha, x, incx, y, incy, ap);
}

// ---- whole-matrix and band copies ----

template <class T>
void copy_matrix(const char* tag, int n, const T* a, int lda, T* b, int ldb) {
    Checks ck(tag);
    ck(n < 1, err::copy_order_not_positive, Int{n})(lda < n, err::copy_lda_too_small, Int{lda}, Int{n})(
        ldb < n, err::copy_ldb_too_small, Int{ldb}, Int{n});
    if (ck.ok()) kern::copy_matrix(n, a, lda, b, ldb);
}

template <class T>
void copy_band(const char* tag, int n, const T* a, int lda, int nla, int nua, T* b, int ldb, int nlb,
               int nub) {
    Checks ck(tag);
    ck(n < 1, err::band_copy_order, Int{n})(nla < 0, err::band_copy_nlca, Int{nla})(
        nua < 0, err::band_copy_nuca, Int{nua})(static_cast<long long>(lda) < nla + 1LL + nua,
                                                err::band_copy_lda, Int{lda}, Int{nla},
                                                Int{nua})(nlb < nla, err::band_copy_nlcb, Int{nlb}, Int{nla})(
        nub < nua, err::band_copy_nucb, Int{nub}, Int{nua})(static_cast<long long>(ldb) < nlb + 1LL + nub,
                                                            err::band_copy_ldb, Int{ldb}, Int{nlb}, Int{nub});
    if (ck.ok()) kern::copy_band(n, a, lda, nla, nua, b, ldb, nlb, nub);
}

// ---- Level 1 conventions of the published definitions ----

// scal, asum and the index of the largest magnitude do nothing for a non-positive increment.
template <class T>
void scal_pos(int n, T a, T* x, int incx) {
    if (incx > 0) kern::scal(n, a, x, incx);
}
template <class T>
Real<T> asum_pos(int n, const T* x, int incx) {
    return incx > 0 ? kern::asum(n, x, incx) : Real<T>(0);
}
template <class T>
int iamax_pos(int n, const T* x, int incx) {
    return incx > 0 ? kern::iamax(n, x, incx) : 0;
}

}  // namespace

extern "C" {

// ---- Level 1, real (convention 1) ----

QNUM_API float qnum_sdot(int n, const float* x, int incx, const float* y, int incy) {
    return kern::dot(n, x, incx, y, incy);
}
QNUM_API double qnum_ddot(int n, const double* x, int incx, const double* y, int incy) {
    return kern::dot(n, x, incx, y, incy);
}
QNUM_API float qnum_sdsdot(int n, float sb, const float* x, int incx, const float* y, int incy) {
    double s = sb;
    kern::idx ix = kern::first(n, incx), iy = kern::first(n, incy);
    for (int i = 0; i < n; ++i, ix += incx, iy += incy) s += static_cast<double>(x[ix]) * y[iy];
    return static_cast<float>(s);
}
QNUM_API double qnum_dsdot(int n, const float* x, int incx, const float* y, int incy) {
    double s = 0;
    kern::idx ix = kern::first(n, incx), iy = kern::first(n, incy);
    for (int i = 0; i < n; ++i, ix += incx, iy += incy) s += static_cast<double>(x[ix]) * y[iy];
    return s;
}
QNUM_API void qnum_saxpy(int n, float a, const float* x, int incx, float* y, int incy) {
    kern::axpy(n, a, x, incx, y, incy);
}
QNUM_API void qnum_daxpy(int n, double a, const double* x, int incx, double* y, int incy) {
    kern::axpy(n, a, x, incx, y, incy);
}
QNUM_API void qnum_sscal(int n, float a, float* x, int incx) { scal_pos(n, a, x, incx); }
QNUM_API void qnum_dscal(int n, double a, double* x, int incx) { scal_pos(n, a, x, incx); }
QNUM_API void qnum_scopy(int n, const float* x, int incx, float* y, int incy) {
    kern::copy(n, x, incx, y, incy);
}
QNUM_API void qnum_dcopy(int n, const double* x, int incx, double* y, int incy) {
    kern::copy(n, x, incx, y, incy);
}
QNUM_API void qnum_sswap(int n, float* x, int incx, float* y, int incy) { kern::swap(n, x, incx, y, incy); }
QNUM_API void qnum_dswap(int n, double* x, int incx, double* y, int incy) { kern::swap(n, x, incx, y, incy); }
QNUM_API void qnum_srot(int n, float* x, int incx, float* y, int incy, float c, float s) {
    kern::rot(n, x, incx, y, incy, c, s);
}
QNUM_API void qnum_drot(int n, double* x, int incx, double* y, int incy, double c, double s) {
    kern::rot(n, x, incx, y, incy, c, s);
}
QNUM_API void qnum_srotm(int n, float* x, int incx, float* y, int incy, const float* param) {
    kern::rotm(n, x, incx, y, incy, param);
}
QNUM_API void qnum_drotm(int n, double* x, int incx, double* y, int incy, const double* param) {
    kern::rotm(n, x, incx, y, incy, param);
}
QNUM_API void qnum_srotg(float* a, float* b, float* c, float* s) { kern::rotg(a, b, c, s); }
QNUM_API void qnum_drotg(double* a, double* b, double* c, double* s) { kern::rotg(a, b, c, s); }
QNUM_API void qnum_srotmg(float* d1, float* d2, float* x1, const float* y1, float* param) {
    kern::rotmg(d1, d2, x1, *y1, param);
}
QNUM_API void qnum_drotmg(double* d1, double* d2, double* x1, const double* y1, double* param) {
    kern::rotmg(d1, d2, x1, *y1, param);
}
QNUM_API float qnum_snrm2(int n, const float* x, int incx) { return kern::nrm2(n, x, incx); }
QNUM_API double qnum_dnrm2(int n, const double* x, int incx) { return kern::nrm2(n, x, incx); }
QNUM_API float qnum_sasum(int n, const float* x, int incx) { return asum_pos(n, x, incx); }
QNUM_API double qnum_dasum(int n, const double* x, int incx) { return asum_pos(n, x, incx); }
QNUM_API int qnum_isamax(int n, const float* x, int incx) { return iamax_pos(n, x, incx); }
QNUM_API int qnum_idamax(int n, const double* x, int incx) { return iamax_pos(n, x, incx); }

// ---- Level 1, complex (convention 2) ----

QNUM_API void qnum_caxpy(const int* n, const qnum_f_complex* a, const qnum_f_complex* x, const int* incx,
                         qnum_f_complex* y, const int* incy) {
    kern::axpy(*n, *cx(a), cx(x), *incx, cx(y), *incy);
}
QNUM_API void qnum_zaxpy(const int* n, const qnum_d_complex* a, const qnum_d_complex* x, const int* incx,
                         qnum_d_complex* y, const int* incy) {
    kern::axpy(*n, *cx(a), cx(x), *incx, cx(y), *incy);
}
QNUM_API void qnum_ccopy(const int* n, const qnum_f_complex* x, const int* incx, qnum_f_complex* y,
                         const int* incy) {
    kern::copy(*n, cx(x), *incx, cx(y), *incy);
}
QNUM_API void qnum_zcopy(const int* n, const qnum_d_complex* x, const int* incx, qnum_d_complex* y,
                         const int* incy) {
    kern::copy(*n, cx(x), *incx, cx(y), *incy);
}
QNUM_API void qnum_cscal(const int* n, const qnum_f_complex* a, qnum_f_complex* x, const int* incx) {
    scal_pos(*n, *cx(a), cx(x), *incx);
}
QNUM_API void qnum_zscal(const int* n, const qnum_d_complex* a, qnum_d_complex* x, const int* incx) {
    scal_pos(*n, *cx(a), cx(x), *incx);
}
QNUM_API void qnum_csscal(const int* n, const float* a, qnum_f_complex* x, const int* incx) {
    if (*incx > 0) kern::rscal(*n, *a, cx(x), *incx);
}
QNUM_API void qnum_zdscal(const int* n, const double* a, qnum_d_complex* x, const int* incx) {
    if (*incx > 0) kern::rscal(*n, *a, cx(x), *incx);
}
QNUM_API void qnum_cswap(const int* n, qnum_f_complex* x, const int* incx, qnum_f_complex* y,
                         const int* incy) {
    kern::swap(*n, cx(x), *incx, cx(y), *incy);
}
QNUM_API void qnum_zswap(const int* n, qnum_d_complex* x, const int* incx, qnum_d_complex* y,
                         const int* incy) {
    kern::swap(*n, cx(x), *incx, cx(y), *incy);
}
QNUM_API void qnum_csrot(const int* n, qnum_f_complex* x, const int* incx, qnum_f_complex* y, const int* incy,
                         const float* c, const float* s) {
    kern::rot(*n, cx(x), *incx, cx(y), *incy, *c, *s);
}
QNUM_API void qnum_zdrot(const int* n, qnum_d_complex* x, const int* incx, qnum_d_complex* y, const int* incy,
                         const double* c, const double* s) {
    kern::rot(*n, cx(x), *incx, cx(y), *incy, *c, *s);
}
QNUM_API void qnum_crotg(qnum_f_complex* a, const qnum_f_complex* b, float* c, qnum_f_complex* s) {
    C bb = *cx(b);
    kern::rotg(cx(a), &bb, c, cx(s));
}
QNUM_API void qnum_zrotg(qnum_d_complex* a, const qnum_d_complex* b, double* c, qnum_d_complex* s) {
    Z bb = *cx(b);
    kern::rotg(cx(a), &bb, c, cx(s));
}
QNUM_API qnum_f_complex qnum_cdotu(const int* n, const qnum_f_complex* x, const int* incx,
                                   const qnum_f_complex* y, const int* incy) {
    return out(kern::dot(*n, cx(x), *incx, cx(y), *incy));
}
QNUM_API qnum_d_complex qnum_zdotu(const int* n, const qnum_d_complex* x, const int* incx,
                                   const qnum_d_complex* y, const int* incy) {
    return out(kern::dot(*n, cx(x), *incx, cx(y), *incy));
}
QNUM_API qnum_f_complex qnum_cdotc(const int* n, const qnum_f_complex* x, const int* incx,
                                   const qnum_f_complex* y, const int* incy) {
    return out(kern::dotc(*n, cx(x), *incx, cx(y), *incy));
}
QNUM_API qnum_d_complex qnum_zdotc(const int* n, const qnum_d_complex* x, const int* incx,
                                   const qnum_d_complex* y, const int* incy) {
    return out(kern::dotc(*n, cx(x), *incx, cx(y), *incy));
}
QNUM_API int qnum_icamax(const int* n, const qnum_f_complex* x, const int* incx) {
    return iamax_pos(*n, cx(x), *incx);
}
QNUM_API int qnum_izamax(const int* n, const qnum_d_complex* x, const int* incx) {
    return iamax_pos(*n, cx(x), *incx);
}
QNUM_API float qnum_scasum(const int* n, const qnum_f_complex* x, const int* incx) {
    return asum_pos(*n, cx(x), *incx);
}
QNUM_API double qnum_dzasum(const int* n, const qnum_d_complex* x, const int* incx) {
    return asum_pos(*n, cx(x), *incx);
}
QNUM_API float qnum_scnrm2(const int* n, const qnum_f_complex* x, const int* incx) {
    return kern::nrm2(*n, cx(x), *incx);
}
QNUM_API double qnum_dznrm2(const int* n, const qnum_d_complex* x, const int* incx) {
    return kern::nrm2(*n, cx(x), *incx);
}

// ---- the library's own helpers ----

QNUM_API void qnum_20731(int n, float a, float* x, int incx) { kern::fill(n, a, x, incx); }
QNUM_API void qnum_20732(int n, double a, double* x, int incx) { kern::fill(n, a, x, incx); }
QNUM_API void qnum_iset(int n, int a, int* x, int incx) { kern::fill(n, a, x, incx); }
QNUM_API void qnum_20721(int n, float a, float* x, int incx) { kern::add(n, a, x, incx); }
QNUM_API void qnum_20722(int n, double a, double* x, int incx) { kern::add(n, a, x, incx); }
QNUM_API int qnum_20717(int n, const float* x, int incx) { return kern::imax(n, x, incx); }
QNUM_API int qnum_20718(int n, const double* x, int incx) { return kern::imax(n, x, incx); }
QNUM_API int qnum_20719(int n, const float* x, int incx) { return kern::imin(n, x, incx); }
QNUM_API int qnum_20720(int n, const double* x, int incx) { return kern::imin(n, x, incx); }
QNUM_API float qnum_20733(int n, const float* x, int incx) { return kern::sum(n, x, incx); }
QNUM_API double qnum_20734(int n, const double* x, int incx) { return kern::sum(n, x, incx); }
QNUM_API void qnum_svcal(int n, float a, const float* x, int incx, float* y, int incy) {
    kern::svcal(n, a, x, incx, y, incy);
}
QNUM_API float qnum_sxyz(int n, const float* x, int incx, const float* y, int incy, const float* z,
                         int incz) {
    return kern::xyz(n, x, incx, y, incy, z, incz);
}
QNUM_API double qnum_dxyz(int n, const double* x, int incx, const double* y, int incy, const double* z,
                          int incz) {
    return kern::xyz(n, x, incx, y, incy, z, incz);
}
// Unit increments copy the block at once; otherwise element by element.
QNUM_API void qnum_icopy(int n, const int* x, int incx, int* y, int incy) {
    if (n < 1) return;
    if (incx == 1 && incy == 1) {
        std::memmove(y, x, sizeof(int) * static_cast<std::size_t>(n));
        return;
    }
    kern::idx ix = kern::first(n, incx), iy = kern::first(n, incy);
    for (int i = 0; i < n; ++i, ix += incx, iy += incy) y[iy] = x[ix];
}
QNUM_API void qnum_cset(const int* n, const qnum_f_complex* a, qnum_f_complex* x, const int* incx) {
    kern::fill(*n, *cx(a), cx(x), *incx);
}
QNUM_API void qnum_zset(const int* n, const qnum_d_complex* a, qnum_d_complex* x, const int* incx) {
    kern::fill(*n, *cx(a), cx(x), *incx);
}
QNUM_API void qnum_cadd(const int* n, const qnum_f_complex* a, qnum_f_complex* x, const int* incx) {
    if (kern::abs1(*cx(a)) != 0) kern::add(*n, *cx(a), cx(x), *incx);
}
QNUM_API void qnum_zadd(const int* n, const qnum_d_complex* a, qnum_d_complex* x, const int* incx) {
    if (kern::abs1(*cx(a)) != 0) kern::add(*n, *cx(a), cx(x), *incx);
}
QNUM_API void qnum_ccgcg(const int* n, const qnum_f_complex* a, const int* lda, qnum_f_complex* b,
                         const int* ldb) {
    copy_matrix("qnum_ccgcg", *n, cx(a), *lda, cx(b), *ldb);
}
QNUM_API void qnum_dccgcg(const int* n, const qnum_d_complex* a, const int* lda, qnum_d_complex* b,
                          const int* ldb) {
    copy_matrix("qnum_dcgcg", *n, cx(a), *lda, cx(b), *ldb);
}
QNUM_API void qnum_ccbcb(const int* n, const qnum_f_complex* a, const int* lda, const int* nlca,
                         const int* nuca, qnum_f_complex* b, const int* ldb, const int* nlcb,
                         const int* nucb) {
    copy_band("CCBCB ", *n, cx(a), *lda, *nlca, *nuca, cx(b), *ldb, *nlcb, *nucb);
}
QNUM_API void qnum_dccbcb(const int* n, const qnum_d_complex* a, const int* lda, const int* nlca,
                          const int* nuca, qnum_d_complex* b, const int* ldb, const int* nlcb,
                          const int* nucb) {
    copy_band("DCCBCB", *n, cx(a), *lda, *nlca, *nuca, cx(b), *ldb, *nlcb, *nucb);
}

// ---- Level 2: general products ----

QNUM_API void qnum_sgemv(const char* trans, int, const int* m, const int* n, const float* alpha,
                         const float* a, const int* lda, const float* x, const int* incx, const float* beta,
                         float* y, const int* incy) {
    gemv("SGEMV ", trans, *m, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}
QNUM_API void qnum_dgemv(const char* trans, int, const int* m, const int* n, const double* alpha,
                         const double* a, const int* lda, const double* x, const int* incx,
                         const double* beta, double* y, const int* incy) {
    gemv("DGEMV ", trans, *m, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}
QNUM_API void qnum_cgemv(const char* trans, int, const int* m, const int* n, const qnum_f_complex* alpha,
                         const qnum_f_complex* a, const int* lda, const qnum_f_complex* x, const int* incx,
                         const qnum_f_complex* beta, qnum_f_complex* y, const int* incy) {
    gemv("CGEMV ", trans, *m, *n, *cx(alpha), cx(a), *lda, cx(x), *incx, *cx(beta), cx(y), *incy);
}
QNUM_API void qnum_zgemv(const char* trans, int, const int* m, const int* n, const qnum_d_complex* alpha,
                         const qnum_d_complex* a, const int* lda, const qnum_d_complex* x, const int* incx,
                         const qnum_d_complex* beta, qnum_d_complex* y, const int* incy) {
    gemv("ZGEMV ", trans, *m, *n, *cx(alpha), cx(a), *lda, cx(x), *incx, *cx(beta), cx(y), *incy);
}
QNUM_API void qnum_sgbmv(const char* trans, int, const int* m, const int* n, const int* kl, const int* ku,
                         const float* alpha, const float* a, const int* lda, const float* x, const int* incx,
                         const float* beta, float* y, const int* incy) {
    gbmv("SGBMV ", trans, *m, *n, *kl, *ku, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}
QNUM_API void qnum_dsgbmv(const char* trans, int, const int* m, const int* n, const int* kl, const int* ku,
                          const double* alpha, const double* a, const int* lda, const double* x,
                          const int* incx, const double* beta, double* y, const int* incy) {
    gbmv("SGBMV ", trans, *m, *n, *kl, *ku, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}
QNUM_API void qnum_cgbmv(const char* trans, int, const int* m, const int* n, const int* kl, const int* ku,
                         const qnum_f_complex* alpha, const qnum_f_complex* a, const int* lda,
                         const qnum_f_complex* x, const int* incx, const qnum_f_complex* beta,
                         qnum_f_complex* y, const int* incy) {
    gbmv("CGBMV ", trans, *m, *n, *kl, *ku, *cx(alpha), cx(a), *lda, cx(x), *incx, *cx(beta), cx(y), *incy);
}
QNUM_API void qnum_zgbmv(const char* trans, int, const int* m, const int* n, const int* kl, const int* ku,
                         const qnum_d_complex* alpha, const qnum_d_complex* a, const int* lda,
                         const qnum_d_complex* x, const int* incx, const qnum_d_complex* beta,
                         qnum_d_complex* y, const int* incy) {
    gbmv("ZGBMV ", trans, *m, *n, *kl, *ku, *cx(alpha), cx(a), *lda, cx(x), *incx, *cx(beta), cx(y), *incy);
}

// ---- Level 2: symmetric and Hermitian products ----

QNUM_API void qnum_ssymv(const char* uplo, int, const int* n, const float* alpha, const float* a,
                         const int* lda, const float* x, const int* incx, const float* beta, float* y,
                         const int* incy) {
    hemv("SSYMV ", uplo, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}
QNUM_API void qnum_dsymv(const char* uplo, int, const int* n, const double* alpha, const double* a,
                         const int* lda, const double* x, const int* incx, const double* beta, double* y,
                         const int* incy) {
    hemv("DSYMV ", uplo, *n, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}
QNUM_API void qnum_chemv(const char* uplo, int, const int* n, const qnum_f_complex* alpha,
                         const qnum_f_complex* a, const int* lda, const qnum_f_complex* x, const int* incx,
                         const qnum_f_complex* beta, qnum_f_complex* y, const int* incy) {
    hemv("qnum_chemv", uplo, *n, *cx(alpha), cx(a), *lda, cx(x), *incx, *cx(beta), cx(y), *incy);
}
QNUM_API void qnum_zhemv(const char* uplo, int, const int* n, const qnum_d_complex* alpha,
                         const qnum_d_complex* a, const int* lda, const qnum_d_complex* x, const int* incx,
                         const qnum_d_complex* beta, qnum_d_complex* y, const int* incy) {
    hemv("qnum_zhemv", uplo, *n, *cx(alpha), cx(a), *lda, cx(x), *incx, *cx(beta), cx(y), *incy);
}
QNUM_API void qnum_ssbmv(const char* uplo, int, const int* n, const int* k, const float* alpha,
                         const float* a, const int* lda, const float* x, const int* incx, const float* beta,
                         float* y, const int* incy) {
    hbmv("qnum_ssbmv", uplo, *n, *k, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}
QNUM_API void qnum_dssbmv(const char* uplo, int, const int* n, const int* k, const double* alpha,
                          const double* a, const int* lda, const double* x, const int* incx,
                          const double* beta, double* y, const int* incy) {
    hbmv("qnum_dssbmv", uplo, *n, *k, *alpha, a, *lda, x, *incx, *beta, y, *incy);
}
QNUM_API void qnum_chbmv(const char* uplo, int, const int* n, const int* k, const qnum_f_complex* alpha,
                         const qnum_f_complex* a, const int* lda, const qnum_f_complex* x, const int* incx,
                         const qnum_f_complex* beta, qnum_f_complex* y, const int* incy) {
    hbmv("qnum_chbmv", uplo, *n, *k, *cx(alpha), cx(a), *lda, cx(x), *incx, *cx(beta), cx(y), *incy);
}
QNUM_API void qnum_zhbmv(const char* uplo, int, const int* n, const int* k, const qnum_d_complex* alpha,
                         const qnum_d_complex* a, const int* lda, const qnum_d_complex* x, const int* incx,
                         const qnum_d_complex* beta, qnum_d_complex* y, const int* incy) {
    hbmv("qnum_zhbmv", uplo, *n, *k, *cx(alpha), cx(a), *lda, cx(x), *incx, *cx(beta), cx(y), *incy);
}
QNUM_API void qnum_sspmv(const char* uplo, int, const int* n, const float* alpha, const float* ap,
                         const float* x, const int* incx, const float* beta, float* y, const int* incy) {
    hpmv("qnum_sspmv", uplo, *n, *alpha, ap, x, *incx, *beta, y, *incy);
}
QNUM_API void qnum_dspmv(const char* uplo, int, const int* n, const double* alpha, const double* ap,
                         const double* x, const int* incx, const double* beta, double* y, const int* incy) {
    hpmv("qnum_dspmv", uplo, *n, *alpha, ap, x, *incx, *beta, y, *incy);
}
QNUM_API void qnum_chpmv(const char* uplo, int, const int* n, const qnum_f_complex* alpha,
                         const qnum_f_complex* ap, const qnum_f_complex* x, const int* incx,
                         const qnum_f_complex* beta, qnum_f_complex* y, const int* incy) {
    hpmv("qnum_chpmv", uplo, *n, *cx(alpha), cx(ap), cx(x), *incx, *cx(beta), cx(y), *incy);
}
QNUM_API void qnum_zhpmv(const char* uplo, int, const int* n, const qnum_d_complex* alpha,
                         const qnum_d_complex* ap, const qnum_d_complex* x, const int* incx,
                         const qnum_d_complex* beta, qnum_d_complex* y, const int* incy) {
    hpmv("qnum_zhpmv", uplo, *n, *cx(alpha), cx(ap), cx(x), *incx, *cx(beta), cx(y), *incy);
}

// ---- Level 2: triangular products and solves ----

QNUM_API void qnum_strmv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const float* a, const int* lda, float* x, const int* incx) {
    trxv(Tri::Mv, "qnum_strmv", uplo, trans, diag, *n, a, *lda, x, *incx);
}
QNUM_API void qnum_dtrmv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const double* a, const int* lda, double* x, const int* incx) {
    trxv(Tri::Mv, "qnum_dtrmv", uplo, trans, diag, *n, a, *lda, x, *incx);
}
QNUM_API void qnum_ctrmv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const qnum_f_complex* a, const int* lda, qnum_f_complex* x, const int* incx) {
    trxv(Tri::Mv, "qnum_ctrmv", uplo, trans, diag, *n, cx(a), *lda, cx(x), *incx);
}
QNUM_API void qnum_ztrmv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const qnum_d_complex* a, const int* lda, qnum_d_complex* x, const int* incx) {
    trxv(Tri::Mv, "qnum_ztrmv", uplo, trans, diag, *n, cx(a), *lda, cx(x), *incx);
}
QNUM_API void qnum_stbmv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const int* k, const float* a, const int* lda, float* x, const int* incx) {
    tbxv(Tri::Mv, "qnum_stbmv", uplo, trans, diag, *n, *k, a, *lda, x, *incx);
}
QNUM_API void qnum_dtbmv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const int* k, const double* a, const int* lda, double* x, const int* incx) {
    tbxv(Tri::Mv, "qnum_dtbmv", uplo, trans, diag, *n, *k, a, *lda, x, *incx);
}
QNUM_API void qnum_ctbmv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const int* k, const qnum_f_complex* a, const int* lda, qnum_f_complex* x,
                         const int* incx) {
    tbxv(Tri::Mv, "qnum_ctbmv", uplo, trans, diag, *n, *k, cx(a), *lda, cx(x), *incx);
}
QNUM_API void qnum_ztbmv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const int* k, const qnum_d_complex* a, const int* lda, qnum_d_complex* x,
                         const int* incx) {
    tbxv(Tri::Mv, "qnum_ztbmv", uplo, trans, diag, *n, *k, cx(a), *lda, cx(x), *incx);
}
QNUM_API void qnum_stpmv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const float* ap, float* x, const int* incx) {
    tpxv(Tri::Mv, "qnum_stpmv", uplo, trans, diag, *n, ap, x, *incx);
}
QNUM_API void qnum_dtpmv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const double* ap, double* x, const int* incx) {
    tpxv(Tri::Mv, "qnum_dtpmv", uplo, trans, diag, *n, ap, x, *incx);
}
QNUM_API void qnum_ctpmv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const qnum_f_complex* ap, qnum_f_complex* x, const int* incx) {
    tpxv(Tri::Mv, "qnum_ctpmv", uplo, trans, diag, *n, cx(ap), cx(x), *incx);
}
QNUM_API void qnum_ztpmv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const qnum_d_complex* ap, qnum_d_complex* x, const int* incx) {
    tpxv(Tri::Mv, "qnum_ztpmv", uplo, trans, diag, *n, cx(ap), cx(x), *incx);
}
QNUM_API void qnum_strsv(const char* uplo, const char* trans, const char* diag, int n, const float* a,
                         int lda, float* x, int incx) {
    plain_trsv(uplo, trans, diag, n, a, lda, x, incx);
}
QNUM_API void qnum_dtrsv(const char* uplo, const char* trans, const char* diag, int n, const double* a,
                         int lda, double* x, int incx) {
    plain_trsv(uplo, trans, diag, n, a, lda, x, incx);
}
QNUM_API void qnum_ctrsv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const qnum_f_complex* a, const int* lda, qnum_f_complex* x, const int* incx) {
    trxv(Tri::Sv, "qnum_ctrsv", uplo, trans, diag, *n, cx(a), *lda, cx(x), *incx);
}
QNUM_API void qnum_ztrsv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const qnum_d_complex* a, const int* lda, qnum_d_complex* x, const int* incx) {
    trxv(Tri::Sv, "qnum_ztrsv", uplo, trans, diag, *n, cx(a), *lda, cx(x), *incx);
}
QNUM_API void qnum_stbsv(const char* uplo, const char* trans, const char* diag, const int* n, const int* k,
                         const float* a, const int* lda, float* x, const int* incx) {
    tbxv(Tri::Sv, "STBSV ", uplo, trans, diag, *n, *k, a, *lda, x, *incx);
}
QNUM_API void qnum_dtbsv(const char* uplo, const char* trans, const char* diag, const int* n, const int* k,
                         const double* a, const int* lda, double* x, const int* incx) {
    tbxv(Tri::Sv, "DTBSV ", uplo, trans, diag, *n, *k, a, *lda, x, *incx);
}
QNUM_API void qnum_ctbsv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const int* k, const qnum_f_complex* a, const int* lda, qnum_f_complex* x,
                         const int* incx) {
    complex_tbsv(uplo, trans, diag, *n, *k, cx(a), *lda, cx(x), *incx);
}
QNUM_API void qnum_dctbsv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                          const int* k, const qnum_d_complex* a, const int* lda, qnum_d_complex* x,
                          const int* incx) {
    complex_tbsv(uplo, trans, diag, *n, *k, cx(a), *lda, cx(x), *incx);
}
QNUM_API void qnum_stpsv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const float* ap, float* x, const int* incx) {
    tpxv(Tri::Sv, "qnum_stpsv", uplo, trans, diag, *n, ap, x, *incx);
}
QNUM_API void qnum_dtpsv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const double* ap, double* x, const int* incx) {
    tpxv(Tri::Sv, "qnum_dtpsv", uplo, trans, diag, *n, ap, x, *incx);
}
QNUM_API void qnum_ctpsv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const qnum_f_complex* ap, qnum_f_complex* x, const int* incx) {
    tpxv(Tri::Sv, "qnum_ctpsv", uplo, trans, diag, *n, cx(ap), cx(x), *incx);
}
QNUM_API void qnum_ztpsv(const char* uplo, int, const char* trans, int, const char* diag, int, const int* n,
                         const qnum_d_complex* ap, qnum_d_complex* x, const int* incx) {
    tpxv(Tri::Sv, "qnum_ztpsv", uplo, trans, diag, *n, cx(ap), cx(x), *incx);
}

// ---- Level 2: rank updates ----

QNUM_API void qnum_sger(int m, int n, float alpha, const float* x, int incx, const float* y, int incy,
                        float* a, int lda) {
    ger("qnum_sger", false, m, n, alpha, x, incx, y, incy, a, lda);
}
QNUM_API void qnum_dger(int m, int n, double alpha, const double* x, int incx, const double* y, int incy,
                        double* a, int lda) {
    ger("qnum_dger", false, m, n, alpha, x, incx, y, incy, a, lda);
}
QNUM_API void qnum_cgeru(const int* m, const int* n, const qnum_f_complex* alpha, const qnum_f_complex* x,
                         const int* incx, const qnum_f_complex* y, const int* incy, qnum_f_complex* a,
                         const int* lda) {
    ger("qnum_cgeru", false, *m, *n, *cx(alpha), cx(x), *incx, cx(y), *incy, cx(a), *lda);
}
QNUM_API void qnum_zgeru(const int* m, const int* n, const qnum_d_complex* alpha, const qnum_d_complex* x,
                         const int* incx, const qnum_d_complex* y, const int* incy, qnum_d_complex* a,
                         const int* lda) {
    ger("qnum_zgeru", false, *m, *n, *cx(alpha), cx(x), *incx, cx(y), *incy, cx(a), *lda);
}
QNUM_API void qnum_cgerc(const int* m, const int* n, const qnum_f_complex* alpha, const qnum_f_complex* x,
                         const int* incx, const qnum_f_complex* y, const int* incy, qnum_f_complex* a,
                         const int* lda) {
    ger("CGERC ", true, *m, *n, *cx(alpha), cx(x), *incx, cx(y), *incy, cx(a), *lda);
}
QNUM_API void qnum_zgerc(const int* m, const int* n, const qnum_d_complex* alpha, const qnum_d_complex* x,
                         const int* incx, const qnum_d_complex* y, const int* incy, qnum_d_complex* a,
                         const int* lda) {
    ger("ZGERC ", true, *m, *n, *cx(alpha), cx(x), *incx, cx(y), *incy, cx(a), *lda);
}
QNUM_API void qnum_ssyr(const char* uplo, int, const int* n, const float* alpha, const float* x,
                        const int* incx, float* a, const int* lda) {
    her("qnum_ssyr", uplo, *n, *alpha, x, *incx, a, *lda);
}
QNUM_API void qnum_dsyr(const char* uplo, int, const int* n, const double* alpha, const double* x,
                        const int* incx, double* a, const int* lda) {
    her("qnum_dsyr", uplo, *n, *alpha, x, *incx, a, *lda);
}
QNUM_API void qnum_cher(const char* uplo, int, const int* n, const float* alpha, const qnum_f_complex* x,
                        const int* incx, qnum_f_complex* a, const int* lda) {
    her("qnum_cher", uplo, *n, *alpha, cx(x), *incx, cx(a), *lda);
}
QNUM_API void qnum_zher(const char* uplo, int, const int* n, const double* alpha, const qnum_d_complex* x,
                        const int* incx, qnum_d_complex* a, const int* lda) {
    her("qnum_zher", uplo, *n, *alpha, cx(x), *incx, cx(a), *lda);
}
QNUM_API void qnum_sspr(const char* uplo, int, const int* n, const float* alpha, const float* x,
                        const int* incx, float* ap) {
    hpr("qnum_sspr", uplo, *n, *alpha, x, *incx, ap);
}
QNUM_API void qnum_dspr(const char* uplo, int, const int* n, const double* alpha, const double* x,
                        const int* incx, double* ap) {
    hpr("qnum_dspr", uplo, *n, *alpha, x, *incx, ap);
}
QNUM_API void qnum_chpr(const char* uplo, int, const int* n, const float* alpha, const qnum_f_complex* x,
                        const int* incx, qnum_f_complex* ap) {
    hpr("qnum_chpr", uplo, *n, *alpha, cx(x), *incx, cx(ap));
}
QNUM_API void qnum_zhpr(const char* uplo, int, const int* n, const double* alpha, const qnum_d_complex* x,
                        const int* incx, qnum_d_complex* ap) {
    hpr("qnum_zhpr", uplo, *n, *alpha, cx(x), *incx, cx(ap));
}
QNUM_API void qnum_ssyr2(const char* uplo, int, const int* n, const float* alpha, const float* x,
                         const int* incx, const float* y, const int* incy, float* a, const int* lda) {
    her2("qnum_ssyr2", uplo, *n, *alpha, x, *incx, y, *incy, a, *lda);
}
QNUM_API void qnum_dsyr2(const char* uplo, int, const int* n, const double* alpha, const double* x,
                         const int* incx, const double* y, const int* incy, double* a, const int* lda) {
    her2("qnum_dsyr2", uplo, *n, *alpha, x, *incx, y, *incy, a, *lda);
}
QNUM_API void qnum_cher2(const char* uplo, int, const int* n, const qnum_f_complex* alpha,
                         const qnum_f_complex* x, const int* incx, const qnum_f_complex* y, const int* incy,
                         qnum_f_complex* a, const int* lda) {
    her2("qnum_cher2", uplo, *n, *cx(alpha), cx(x), *incx, cx(y), *incy, cx(a), *lda);
}
QNUM_API void qnum_zher2(const char* uplo, int, const int* n, const qnum_d_complex* alpha,
                         const qnum_d_complex* x, const int* incx, const qnum_d_complex* y, const int* incy,
                         qnum_d_complex* a, const int* lda) {
    her2("qnum_zher2", uplo, *n, *cx(alpha), cx(x), *incx, cx(y), *incy, cx(a), *lda);
}
QNUM_API void qnum_sspr2(const char* uplo, int, const int* n, const float* alpha, const float* x,
                         const int* incx, const float* y, const int* incy, float* ap) {
    hpr2("qnum_sspr2", uplo, *n, *alpha, x, *incx, y, *incy, ap);
}
QNUM_API void qnum_dspr2(const char* uplo, int, const int* n, const double* alpha, const double* x,
                         const int* incx, const double* y, const int* incy, double* ap) {
    hpr2("qnum_dspr2", uplo, *n, *alpha, x, *incx, y, *incy, ap);
}
QNUM_API void qnum_chpr2(const char* uplo, int, const int* n, const qnum_f_complex* alpha,
                         const qnum_f_complex* x, const int* incx, const qnum_f_complex* y, const int* incy,
                         qnum_f_complex* ap) {
    hpr2("qnum_chpr2", uplo, *n, *cx(alpha), cx(x), *incx, cx(y), *incy, cx(ap));
}
QNUM_API void qnum_zhpr2(const char* uplo, int, const int* n, const qnum_d_complex* alpha,
                         const qnum_d_complex* x, const int* incx, const qnum_d_complex* y, const int* incy,
                         qnum_d_complex* ap) {
    hpr2("qnum_zhpr2", uplo, *n, *cx(alpha), cx(x), *incx, cx(y), *incy, cx(ap));
}

// ---- numbered exports: the same code under a second name ----

QNUM_API void qnum_20723(int, float, const float*, int, float*, int) __attribute__((alias("qnum_saxpy")));
QNUM_API void qnum_20724(int, double, const double*, int, double*, int) __attribute__((alias("qnum_daxpy")));
QNUM_API void qnum_20729(int, float, float*, int) __attribute__((alias("qnum_sscal")));
QNUM_API void qnum_20730(int, double, double*, int) __attribute__((alias("qnum_dscal")));
QNUM_API void qnum_20735(int, float*, int, float*, int) __attribute__((alias("qnum_sswap")));
QNUM_API void qnum_20736(int, double*, int, double*, int) __attribute__((alias("qnum_dswap")));
QNUM_API void qnum_20737(const char*, int, const int*, const float*, const float*, const int*, float*,
                         const int*) __attribute__((alias("qnum_ssyr")));
QNUM_API void qnum_20738(const char*, int, const int*, const double*, const double*, const int*, double*,
                         const int*) __attribute__((alias("qnum_dsyr")));
QNUM_API void qnum_20745(const char*, int, const int*, const qnum_f_complex*, const qnum_f_complex*,
                         const int*, const qnum_f_complex*, const int*, const qnum_f_complex*,
                         qnum_f_complex*, const int*) __attribute__((alias("qnum_chemv")));
QNUM_API void qnum_20746(const char*, int, const int*, const qnum_d_complex*, const qnum_d_complex*,
                         const int*, const qnum_d_complex*, const int*, const qnum_d_complex*,
                         qnum_d_complex*, const int*) __attribute__((alias("qnum_zhemv")));
QNUM_API void qnum_20747(const char*, int, const int*, const float*, const qnum_f_complex*, const int*,
                         qnum_f_complex*, const int*) __attribute__((alias("qnum_cher")));
QNUM_API void qnum_20748(const char*, int, const int*, const double*, const qnum_d_complex*, const int*,
                         qnum_d_complex*, const int*) __attribute__((alias("qnum_zher")));
QNUM_API void qnum_20749(const char*, int, const int*, const qnum_f_complex*, const qnum_f_complex*,
                         const int*, const qnum_f_complex*, const int*, qnum_f_complex*, const int*)
    __attribute__((alias("qnum_cher2")));
QNUM_API void qnum_20750(const char*, int, const int*, const qnum_d_complex*, const qnum_d_complex*,
                         const int*, const qnum_d_complex*, const int*, qnum_d_complex*, const int*)
    __attribute__((alias("qnum_zher2")));

}  // extern "C"
