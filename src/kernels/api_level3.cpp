// The exported matrix-matrix kernels: every argument by address, each option string followed
// by its length (accepted, not used). The wrappers check the arguments and call the kernels
// of level3.hpp.
//
// Checks run in this order and stop at the first failure: the sizes (M, N, K), the options
// (SIDE, UPLO, TRANS, DIAG), then the leading dimensions, which depend on the options. A
// failure is a TERMINAL error raised under the kernel's own name, pushed for the occasion,
// and nothing is written; so is a failure to allocate the packing workspace (201), which is
// reserved before any output is touched. A call that succeeds pushes nothing.
#include <cctype>
#include <complex>

#include "frame/frame.hpp"
#include "kernels/gemm_engine.hpp"
#include "kernels/level3.hpp"

namespace qnum::kern {
namespace {

using frame::Int;
using frame::Str;

// The first character of an option, upper case; 0 for a null or empty string.
char letter(const char* s) {
    return s == nullptr ? 0 : static_cast<char>(std::toupper(static_cast<unsigned char>(s[0])));
}
const char* shown(const char* s) { return s == nullptr ? "" : s; }

// The checks of one call: the first failure raises, later ones are not reported.
class Checks {
public:
    explicit Checks(const char* name) : name_(name) {}
    template <class... Slots>
    void require(bool good, int code, Slots... slots) {
        if (good || failed_) return;
        frame::raise_in(name_, frame::Type::Terminal, code, slots...);
        failed_ = true;
    }
    void size(int v, int code) { require(v >= 0, code, Int{v}); }
    void option(const char* s, const char* allowed, int code) {
        const char c = letter(s);
        bool good = false;
        for (const char* p = allowed; *p && !good; ++p) good = c == *p;
        require(good, code, Str{shown(s)});
    }
    // ld >= max(1, rows)
    void leading(int ld, int rows, int code) { require(ld >= 1 && ld >= rows, code, Int{ld}, Int{rows}); }
    bool failed() const { return failed_; }

private:
    const char* name_;
    bool failed_ = false;
};

template <class T>
void gemm_checked(const char* name, const char* transa, const char* transb, const int* m, const int* n,
                  const int* k, const T* alpha, const T* a, const int* lda, const T* b, const int* ldb,
                  const T* beta, T* c, const int* ldc) {
    Checks ck(name);
    ck.size(*m, err::negative_rows);
    ck.size(*n, err::negative_order);
    ck.size(*k, err::negative_inner_size);
    ck.option(transa, "NTC", err::bad_trans_option);
    ck.option(transb, "NTC", err::bad_trans_option);
    if (ck.failed()) return;
    const char ta = letter(transa), tb = letter(transb);
    ck.leading(*lda, ta == 'N' ? *m : *k, err::lda_too_small);
    ck.leading(*ldb, tb == 'N' ? *k : *n, err::ldb_too_small);
    ck.leading(*ldc, *m, err::ldc_too_small);
    if (ck.failed() || !gemm_impl::reserve<T>(name)) return;
    gemm(ta, tb, *m, *n, *k, *alpha, a, *lda, b, *ldb, *beta, c, *ldc);
}

template <class T>
void symm_checked(const char* name, bool herm, const char* side, const char* uplo, const int* m, const int* n,
                  const T* alpha, const T* a, const int* lda, const T* b, const int* ldb, const T* beta, T* c,
                  const int* ldc) {
    Checks ck(name);
    ck.size(*m, err::negative_rows);
    ck.size(*n, err::negative_order);
    ck.option(side, "LR", err::bad_side_option);
    ck.option(uplo, "UL", err::bad_uplo_option);
    if (ck.failed()) return;
    const char sd = letter(side), ul = letter(uplo);
    ck.leading(*lda, sd == 'L' ? *m : *n, err::lda_too_small);
    ck.leading(*ldb, *m, err::ldb_too_small);
    ck.leading(*ldc, *m, err::ldc_too_small);
    if (ck.failed() || !gemm_impl::reserve<T>(name)) return;
    if (herm)
        hemm(sd, ul, *m, *n, *alpha, a, *lda, b, *ldb, *beta, c, *ldc);
    else
        symm(sd, ul, *m, *n, *alpha, a, *lda, b, *ldb, *beta, c, *ldc);
}

// The transposes a rank-k update accepts: all three for real data, N and T for complex
// symmetric updates, N and C for Hermitian ones.
template <class T>
void update_trans(Checks& ck, const char* trans, bool herm) {
    if (!is_complex_v<T>)  // for real data T and C are the same transpose
        ck.option(trans, "NTC", err::bad_trans_option);
    else if (herm)
        ck.option(trans, "NC", err::trans_not_n_or_c);
    else
        ck.option(trans, "NT", err::trans_not_n_or_t);
}

// syrk (herm false, S = T) and herk (herm true, S = Real<T>).
template <class T, class S>
void rank_k_checked(const char* name, bool herm, const char* uplo, const char* trans, const int* n,
                    const int* k, const S* alpha, const T* a, const int* lda, const S* beta, T* c,
                    const int* ldc) {
    Checks ck(name);
    ck.size(*n, err::negative_order);
    ck.size(*k, err::negative_inner_size);
    ck.option(uplo, "UL", err::bad_uplo_option);
    update_trans<T>(ck, trans, herm);
    if (ck.failed()) return;
    const char ul = letter(uplo), tr = letter(trans);
    ck.leading(*lda, tr == 'N' ? *n : *k, err::lda_too_small);
    ck.leading(*ldc, *n, err::ldc_too_small);
    if (ck.failed() || !gemm_impl::reserve<T>(name)) return;
    if constexpr (std::is_same_v<S, T>)
        syrk(ul, tr, *n, *k, *alpha, a, *lda, *beta, c, *ldc);
    else
        herk(ul, tr, *n, *k, *alpha, a, *lda, *beta, c, *ldc);
}

// syr2k (herm false, S = T) and her2k (herm true, S = Real<T>).
template <class T, class S>
void rank_2k_checked(const char* name, bool herm, const char* uplo, const char* trans, const int* n,
                     const int* k, const T* alpha, const T* a, const int* lda, const T* b, const int* ldb,
                     const S* beta, T* c, const int* ldc) {
    Checks ck(name);
    ck.size(*n, err::negative_order);
    ck.size(*k, err::negative_inner_size);
    ck.option(uplo, "UL", err::bad_uplo_option);
    update_trans<T>(ck, trans, herm);
    if (ck.failed()) return;
    const char ul = letter(uplo), tr = letter(trans);
    ck.leading(*lda, tr == 'N' ? *n : *k, err::lda_too_small);
    ck.leading(*ldb, tr == 'N' ? *n : *k, err::ldb_too_small);
    ck.leading(*ldc, *n, err::ldc_too_small);
    if (ck.failed() || !gemm_impl::reserve<T>(name)) return;
    if constexpr (std::is_same_v<S, T>)
        syr2k(ul, tr, *n, *k, *alpha, a, *lda, b, *ldb, *beta, c, *ldc);
    else
        her2k(ul, tr, *n, *k, *alpha, a, *lda, b, *ldb, *beta, c, *ldc);
}

// trmm (solve false) and trsm (solve true).
template <class T>
void triangular_checked(const char* name, bool solve, const char* side, const char* uplo, const char* transa,
                        const char* diag, const int* m, const int* n, const T* alpha, const T* a,
                        const int* lda, T* b, const int* ldb) {
    Checks ck(name);
    ck.size(*m, err::negative_rows);
    ck.size(*n, err::negative_order);
    ck.option(side, "LR", err::bad_side_option);
    ck.option(uplo, "UL", err::bad_uplo_option);
    ck.option(transa, "NTC", err::bad_trans_option);
    ck.option(diag, "UN", err::bad_diag_option);
    if (ck.failed()) return;
    const char sd = letter(side), ul = letter(uplo), ta = letter(transa), dg = letter(diag);
    ck.leading(*lda, sd == 'L' ? *m : *n, err::lda_too_small);
    ck.leading(*ldb, *m, err::ldb_too_small);
    if (ck.failed() || !gemm_impl::reserve<T>(name)) return;
    if (solve)
        trsm(sd, ul, ta, dg, *m, *n, *alpha, a, *lda, b, *ldb);
    else
        trmm(sd, ul, ta, dg, *m, *n, *alpha, a, *lda, b, *ldb);
}

using cf = std::complex<float>;
using cd = std::complex<double>;

// C complex values and arrays as the library's complex types: the layouts agree.
inline const cf* cx(const qnum_f_complex* p) { return reinterpret_cast<const cf*>(p); }
inline cf* cx(qnum_f_complex* p) { return reinterpret_cast<cf*>(p); }
inline const cd* cx(const qnum_d_complex* p) { return reinterpret_cast<const cd*>(p); }
inline cd* cx(qnum_d_complex* p) { return reinterpret_cast<cd*>(p); }

}  // namespace
}  // namespace qnum::kern

using namespace qnum::kern;

// ---- gemm ----

extern "C" void qnum_sgemm(const char* transa, int, const char* transb, int, const int* m, const int* n,
                           const int* k, const float* alpha, const float* a, const int* lda, const float* b,
                           const int* ldb, const float* beta, float* c, const int* ldc) {
    gemm_checked("qnum_sgemm", transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
extern "C" void qnum_dgemm(const char* transa, int, const char* transb, int, const int* m, const int* n,
                           const int* k, const double* alpha, const double* a, const int* lda,
                           const double* b, const int* ldb, const double* beta, double* c,
                           const int* ldc) {
    gemm_checked("qnum_dgemm", transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
extern "C" void qnum_cgemm(const char* transa, int, const char* transb, int, const int* m, const int* n,
                           const int* k, const qnum_f_complex* alpha, const qnum_f_complex* a, const int* lda,
                           const qnum_f_complex* b, const int* ldb, const qnum_f_complex* beta,
                           qnum_f_complex* c, const int* ldc) {
    gemm_checked("qnum_cgemm", transa, transb, m, n, k, cx(alpha), cx(a), lda, cx(b), ldb, cx(beta), cx(c),
                 ldc);
}
extern "C" void qnum_zgemm(const char* transa, int, const char* transb, int, const int* m, const int* n,
                           const int* k, const qnum_d_complex* alpha, const qnum_d_complex* a, const int* lda,
                           const qnum_d_complex* b, const int* ldb, const qnum_d_complex* beta,
                           qnum_d_complex* c, const int* ldc) {
    gemm_checked("qnum_zgemm", transa, transb, m, n, k, cx(alpha), cx(a), lda, cx(b), ldb, cx(beta), cx(c),
                 ldc);
}

// ---- symm, hemm ----

extern "C" void qnum_ssymm(const char* side, int, const char* uplo, int, const int* m, const int* n,
                           const float* alpha, const float* a, const int* lda, const float* b, const int* ldb,
                           const float* beta, float* c, const int* ldc) {
    symm_checked("qnum_ssymm", false, side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
}
extern "C" void qnum_dsymm(const char* side, int, const char* uplo, int, const int* m, const int* n,
                           const double* alpha, const double* a, const int* lda, const double* b,
                           const int* ldb, const double* beta, double* c, const int* ldc) {
    symm_checked("qnum_dsymm", false, side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
}
extern "C" void qnum_csymm(const char* side, int, const char* uplo, int, const int* m, const int* n,
                           const qnum_f_complex* alpha, const qnum_f_complex* a, const int* lda,
                           const qnum_f_complex* b, const int* ldb, const qnum_f_complex* beta,
                           qnum_f_complex* c, const int* ldc) {
    symm_checked("qnum_csymm", false, side, uplo, m, n, cx(alpha), cx(a), lda, cx(b), ldb, cx(beta), cx(c),
                 ldc);
}
extern "C" void qnum_zsymm(const char* side, int, const char* uplo, int, const int* m, const int* n,
                           const qnum_d_complex* alpha, const qnum_d_complex* a, const int* lda,
                           const qnum_d_complex* b, const int* ldb, const qnum_d_complex* beta,
                           qnum_d_complex* c, const int* ldc) {
    symm_checked("qnum_zsymm", false, side, uplo, m, n, cx(alpha), cx(a), lda, cx(b), ldb, cx(beta), cx(c),
                 ldc);
}
extern "C" void qnum_chemm(const char* side, int, const char* uplo, int, const int* m, const int* n,
                           const qnum_f_complex* alpha, const qnum_f_complex* a, const int* lda,
                           const qnum_f_complex* b, const int* ldb, const qnum_f_complex* beta,
                           qnum_f_complex* c, const int* ldc) {
    symm_checked("qnum_chemm", true, side, uplo, m, n, cx(alpha), cx(a), lda, cx(b), ldb, cx(beta), cx(c),
                 ldc);
}
extern "C" void qnum_zhemm(const char* side, int, const char* uplo, int, const int* m, const int* n,
                           const qnum_d_complex* alpha, const qnum_d_complex* a, const int* lda,
                           const qnum_d_complex* b, const int* ldb, const qnum_d_complex* beta,
                           qnum_d_complex* c, const int* ldc) {
    symm_checked("qnum_zhemm", true, side, uplo, m, n, cx(alpha), cx(a), lda, cx(b), ldb, cx(beta), cx(c),
                 ldc);
}

// ---- syrk, herk ----

extern "C" void qnum_ssyrk(const char* uplo, int, const char* trans, int, const int* n, const int* k,
                           const float* alpha, const float* a, const int* lda, const float* beta, float* c,
                           const int* ldc) {
    rank_k_checked("qnum_ssyrk", false, uplo, trans, n, k, alpha, a, lda, beta, c, ldc);
}
extern "C" void qnum_dsyrk(const char* uplo, int, const char* trans, int, const int* n, const int* k,
                           const double* alpha, const double* a, const int* lda, const double* beta,
                           double* c, const int* ldc) {
    rank_k_checked("qnum_dsyrk", false, uplo, trans, n, k, alpha, a, lda, beta, c, ldc);
}
extern "C" void qnum_csyrk(const char* uplo, int, const char* trans, int, const int* n, const int* k,
                           const qnum_f_complex* alpha, const qnum_f_complex* a, const int* lda,
                           const qnum_f_complex* beta, qnum_f_complex* c, const int* ldc) {
    rank_k_checked("qnum_csyrk", false, uplo, trans, n, k, cx(alpha), cx(a), lda, cx(beta), cx(c), ldc);
}
extern "C" void qnum_zsyrk(const char* uplo, int, const char* trans, int, const int* n, const int* k,
                           const qnum_d_complex* alpha, const qnum_d_complex* a, const int* lda,
                           const qnum_d_complex* beta, qnum_d_complex* c, const int* ldc) {
    rank_k_checked("qnum_zsyrk", false, uplo, trans, n, k, cx(alpha), cx(a), lda, cx(beta), cx(c), ldc);
}
extern "C" void qnum_cherk(const char* uplo, int, const char* trans, int, const int* n, const int* k,
                           const float* alpha, const qnum_f_complex* a, const int* lda, const float* beta,
                           qnum_f_complex* c, const int* ldc) {
    rank_k_checked("qnum_cherk", true, uplo, trans, n, k, alpha, cx(a), lda, beta, cx(c), ldc);
}
extern "C" void qnum_zherk(const char* uplo, int, const char* trans, int, const int* n, const int* k,
                           const double* alpha, const qnum_d_complex* a, const int* lda, const double* beta,
                           qnum_d_complex* c, const int* ldc) {
    rank_k_checked("qnum_zherk", true, uplo, trans, n, k, alpha, cx(a), lda, beta, cx(c), ldc);
}

// ---- syr2k, her2k ----

extern "C" void qnum_ssyr2k(const char* uplo, int, const char* trans, int, const int* n, const int* k,
                            const float* alpha, const float* a, const int* lda, const float* b,
                            const int* ldb, const float* beta, float* c, const int* ldc) {
    rank_2k_checked("qnum_ssyr2k", false, uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
extern "C" void qnum_dsyr2k(const char* uplo, int, const char* trans, int, const int* n, const int* k,
                            const double* alpha, const double* a, const int* lda, const double* b,
                            const int* ldb, const double* beta, double* c, const int* ldc) {
    rank_2k_checked("qnum_dsyr2k", false, uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
extern "C" void qnum_csyr2k(const char* uplo, int, const char* trans, int, const int* n, const int* k,
                            const qnum_f_complex* alpha, const qnum_f_complex* a, const int* lda,
                            const qnum_f_complex* b, const int* ldb, const qnum_f_complex* beta,
                            qnum_f_complex* c, const int* ldc) {
    rank_2k_checked("qnum_csyr2k", false, uplo, trans, n, k, cx(alpha), cx(a), lda, cx(b), ldb, cx(beta),
                    cx(c), ldc);
}
extern "C" void qnum_zsyr2k(const char* uplo, int, const char* trans, int, const int* n, const int* k,
                            const qnum_d_complex* alpha, const qnum_d_complex* a, const int* lda,
                            const qnum_d_complex* b, const int* ldb, const qnum_d_complex* beta,
                            qnum_d_complex* c, const int* ldc) {
    rank_2k_checked("qnum_zsyr2k", false, uplo, trans, n, k, cx(alpha), cx(a), lda, cx(b), ldb, cx(beta),
                    cx(c), ldc);
}
extern "C" void qnum_cher2k(const char* uplo, int, const char* trans, int, const int* n, const int* k,
                            const qnum_f_complex* alpha, const qnum_f_complex* a, const int* lda,
                            const qnum_f_complex* b, const int* ldb, const float* beta, qnum_f_complex* c,
                            const int* ldc) {
    rank_2k_checked("qnum_cher2k", true, uplo, trans, n, k, cx(alpha), cx(a), lda, cx(b), ldb, beta, cx(c),
                    ldc);
}
extern "C" void qnum_zher2k(const char* uplo, int, const char* trans, int, const int* n, const int* k,
                            const qnum_d_complex* alpha, const qnum_d_complex* a, const int* lda,
                            const qnum_d_complex* b, const int* ldb, const double* beta, qnum_d_complex* c,
                            const int* ldc) {
    rank_2k_checked("qnum_zher2k", true, uplo, trans, n, k, cx(alpha), cx(a), lda, cx(b), ldb, beta, cx(c),
                    ldc);
}

// ---- trmm, trsm ----

extern "C" void qnum_strmm(const char* side, int, const char* uplo, int, const char* transa, int,
                           const char* diag, int, const int* m, const int* n, const float* alpha,
                           const float* a, const int* lda, float* b, const int* ldb) {
    triangular_checked("qnum_strmm", false, side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}
extern "C" void qnum_dtrmm(const char* side, int, const char* uplo, int, const char* transa, int,
                           const char* diag, int, const int* m, const int* n, const double* alpha,
                           const double* a, const int* lda, double* b, const int* ldb) {
    triangular_checked("qnum_dtrmm", false, side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}
extern "C" void qnum_ctrmm(const char* side, int, const char* uplo, int, const char* transa, int,
                           const char* diag, int, const int* m, const int* n, const qnum_f_complex* alpha,
                           const qnum_f_complex* a, const int* lda, qnum_f_complex* b,
                           const int* ldb) {
    triangular_checked("qnum_ctrmm", false, side, uplo, transa, diag, m, n, cx(alpha), cx(a), lda, cx(b),
                       ldb);
}
extern "C" void qnum_ztrmm(const char* side, int, const char* uplo, int, const char* transa, int,
                           const char* diag, int, const int* m, const int* n, const qnum_d_complex* alpha,
                           const qnum_d_complex* a, const int* lda, qnum_d_complex* b,
                           const int* ldb) {
    triangular_checked("qnum_ztrmm", false, side, uplo, transa, diag, m, n, cx(alpha), cx(a), lda, cx(b),
                       ldb);
}
extern "C" void qnum_strsm(const char* side, int, const char* uplo, int, const char* transa, int,
                           const char* diag, int, const int* m, const int* n, const float* alpha,
                           const float* a, const int* lda, float* b, const int* ldb) {
    triangular_checked("qnum_strsm", true, side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}
extern "C" void qnum_dtrsm(const char* side, int, const char* uplo, int, const char* transa, int,
                           const char* diag, int, const int* m, const int* n, const double* alpha,
                           const double* a, const int* lda, double* b, const int* ldb) {
    triangular_checked("qnum_dtrsm", true, side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}
extern "C" void qnum_ctrsm(const char* side, int, const char* uplo, int, const char* transa, int,
                           const char* diag, int, const int* m, const int* n, const qnum_f_complex* alpha,
                           const qnum_f_complex* a, const int* lda, qnum_f_complex* b,
                           const int* ldb) {
    triangular_checked("qnum_ctrsm", true, side, uplo, transa, diag, m, n, cx(alpha), cx(a), lda, cx(b), ldb);
}
extern "C" void qnum_ztrsm(const char* side, int, const char* uplo, int, const char* transa, int,
                           const char* diag, int, const int* m, const int* n, const qnum_d_complex* alpha,
                           const qnum_d_complex* a, const int* lda, qnum_d_complex* b,
                           const int* ldb) {
    triangular_checked("qnum_ztrsm", true, side, uplo, transa, diag, m, n, cx(alpha), cx(a), lda, cx(b), ldb);
}

// ---- numbered exports: 20725/20726 are sgemm/dgemm, 20743/20744 strsm/dtrsm ----

extern "C" void qnum_20725(const char* transa, int transa_len, const char* transb, int transb_len,
                           const int* m, const int* n, const int* k, const float* alpha, const float* a,
                           const int* lda, const float* b, const int* ldb, const float* beta, float* c,
                           const int* ldc) {
    qnum_sgemm(transa, transa_len, transb, transb_len, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
extern "C" void qnum_20726(const char* transa, int transa_len, const char* transb, int transb_len,
                           const int* m, const int* n, const int* k, const double* alpha, const double* a,
                           const int* lda, const double* b, const int* ldb, const double* beta, double* c,
                           const int* ldc) {
    qnum_dgemm(transa, transa_len, transb, transb_len, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}
extern "C" void qnum_20743(const char* side, int side_len, const char* uplo, int uplo_len, const char* transa,
                           int transa_len, const char* diag, int diag_len, const int* m, const int* n,
                           const float* alpha, const float* a, const int* lda, float* b,
                           const int* ldb) {
    qnum_strsm(side, side_len, uplo, uplo_len, transa, transa_len, diag, diag_len, m, n, alpha, a, lda, b,
               ldb);
}
extern "C" void qnum_20744(const char* side, int side_len, const char* uplo, int uplo_len, const char* transa,
                           int transa_len, const char* diag, int diag_len, const int* m, const int* n,
                           const double* alpha, const double* a, const int* lda, double* b,
                           const int* ldb) {
    qnum_dtrsm(side, side_len, uplo, uplo_len, transa, transa_len, diag, diag_len, m, n, alpha, a, lda, b,
               ldb);
}
