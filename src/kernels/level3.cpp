// The Level 3 kernels other than gemm, built on the blocked product: symmetric and Hermitian
// products, rank-k and rank-2k updates, triangular products and solves.
//
// The triangular and rank-k kernels recurse on halves (E. Elmroth, F. Gustavson, I. Jonsson,
// B. Kågström, "Recursive blocked algorithms and hybrid data structures for dense matrix
// library software", SIAM Review 46(1), 2004): each level hands a rectangular block, which
// holds most of the work, to the blocked product, and only blocks of at most `leaf` rows or
// columns are done by plain loops. No workspace is needed beyond the product's own.
#include "kernels/level3.hpp"

#include "kernels/gemm_engine.hpp"
#include "kernels/level3_util.hpp"

namespace qnum::kern {
namespace {

// Largest triangle done by plain loops (or, for the rank updates, by a product into the
// workspace's scratch square). The leaves carry about leaf/n of the work at a fraction of the
// product's speed, while blocks much smaller than this make the product spend its time
// packing.
constexpr int leaf = gemm_impl::scratch_side;

// Splits n > leaf into a first part that is a multiple of 16 (whole micro-kernel slivers)
// and the rest.
inline int split(int n) { return (n / 2 + 15) / 16 * 16; }

// ---- symmetric and Hermitian products ----

template <class T>
void symmetric_product(char side, char uplo, bool herm, int m, int n, T alpha, const T* a, int lda,
                       const T* b, int ldb, T beta, T* c, int ldc) {
    using gemm_impl::Operand;
    using gemm_impl::Shape;
    if (m == 0 || n == 0) return;
    if (alpha == T(0)) {
        scale(m, n, beta, c, ldc);
        return;
    }
    const Shape shape = uplo == 'L' ? (herm ? Shape::HermLower : Shape::SymLower)
                                    : (herm ? Shape::HermUpper : Shape::SymUpper);
    const Operand<T> sym{a, lda, 'N', shape}, gen{b, ldb, 'N', Shape::General};
    const gemm_impl::Problem<T> p{
        m, n, side == 'L' ? m : n, alpha, beta, side == 'L' ? sym : gen, side == 'L' ? gen : sym, c, ldc};
    gemm_impl::run(p);
}

// ---- rank-k and rank-2k updates ----

// One term alpha op(X) op'(Y) of an update of the n by n triangle, where op(X) is n by k.
// trans N: X and Y are n by k and the term is alpha X Y^T (Y^H when Hermitian); otherwise
// they are k by n and the term is alpha X^T Y (X^H Y).
template <class T>
struct Term {
    const T* x;
    int ldx;
    const T* y;
    int ldy;
    T alpha;
};

template <class T>
struct Update {
    char uplo;
    char trans;  // N, or T for symmetric and C for Hermitian updates
    bool herm;
    int k;
    Term<T> terms[2];
    int nterms;
    T beta;
    T* c;
    int ldc;
    T* tile;  // leaf by leaf scratch
};

// C(rows, cols) = sum of the terms restricted to those rows and columns + beta C, through
// the blocked product (the first term applies beta, the second adds).
template <class T>
void update_block(const Update<T>& u, Index r0, int rows, Index c0, int cols, T* c, int ldc, T beta) {
    const bool n = u.trans == 'N';
    const char left = n ? 'N' : u.trans, right = n ? (u.herm ? 'C' : 'T') : 'N';
    for (int t = 0; t < u.nterms; ++t) {
        const Term<T>& term = u.terms[t];
        const T* x = n ? term.x + r0 : term.x + r0 * term.ldx;
        const T* y = n ? term.y + c0 : term.y + c0 * term.ldy;
        gemm(left, right, rows, cols, u.k, term.alpha, x, term.ldx, y, term.ldy, t == 0 ? beta : T(1), c,
             ldc);
    }
}

// The diagonal block of C that starts at r0 and is nb wide.
template <class T>
void update_triangle(const Update<T>& u, Index r0, int nb) {
    T* c = u.c + r0 + r0 * u.ldc;
    if (nb > leaf) {
        const int n1 = split(nb), n2 = nb - n1;
        update_triangle(u, r0, n1);
        if (u.uplo == 'L')
            update_block(u, r0 + n1, n2, r0, n1, c + n1, u.ldc, u.beta);
        else
            update_block(u, r0, n1, r0 + n1, n2, c + n1 * static_cast<Index>(u.ldc), u.ldc, u.beta);
        update_triangle(u, r0 + n1, n2);
        return;
    }
    // The whole square goes to the product; only its triangle is kept.
    update_block(u, r0, nb, r0, nb, u.tile, nb, T(0));
    for (Index j = 0; j < nb; ++j) {
        const Index lo = u.uplo == 'L' ? j : 0, hi = u.uplo == 'L' ? nb : j + 1;
        T* cj = c + j * u.ldc;
        const T* tj = u.tile + j * nb;
        const T diag = cj[j];
        for (Index i = lo; i < hi; ++i) cj[i] = u.beta == T(0) ? tj[i] : tj[i] + u.beta * cj[i];
        if (u.herm) cj[j] = std::real(u.beta == T(0) ? tj[j] : tj[j] + u.beta * std::real(diag));
    }
}

// beta times the uplo triangle of C; a Hermitian diagonal keeps only beta times its real part.
template <class T>
void scale_triangle(char uplo, bool herm, int n, T beta, T* c, int ldc) {
    for (Index j = 0; j < n; ++j) {
        const Index lo = uplo == 'L' ? j : 0, hi = uplo == 'L' ? n : j + 1;
        T* cj = c + j * ldc;
        const T diag = cj[j];
        for (Index i = lo; i < hi; ++i) cj[i] = beta == T(0) ? T(0) : beta * cj[i];
        if (herm) cj[j] = beta == T(0) ? T(0) : beta * std::real(diag);
    }
}

template <class T>
void rank_update(Update<T>& u, int n) {
    if (n == 0) return;
    const bool no_terms =
        u.k == 0 || (u.terms[0].alpha == T(0) && (u.nterms == 1 || u.terms[1].alpha == T(0)));
    if (no_terms) {
        if (u.beta != T(1)) scale_triangle(u.uplo, u.herm, n, u.beta, u.c, u.ldc);
        return;
    }
    if (!gemm_impl::reserve<T>()) return;
    u.tile = gemm_impl::scratch<T>();
    update_triangle(u, 0, n);
}

// ---- triangular products and solves ----

// op(A)'s leading nb by nb triangle, copied into a dense column-major square t (leaf by
// leaf, zeros outside the triangle) so that the leaf loops read it down columns. A unit
// diagonal becomes 1 without being read; otherwise the diagonal is copied, or its reciprocal
// for the solves (`inverse`).
template <class T>
void dense_triangle(char uplo, char ta, char diag, int nb, const T* a, int lda, bool inverse, T* t) {
    const bool lower = (uplo == 'L') == (ta == 'N');
    for (Index j = 0; j < nb; ++j)
        for (Index i = 0; i < nb; ++i) {
            T v = T(0);
            if (i == j) {
                v = diag == 'U' ? T(1) : ta == 'C' ? conjugate(a[i + i * lda]) : a[i + i * lda];
                if (inverse && diag != 'U') v = T(1) / v;
            } else if (lower ? i > j : i < j) {
                v = ta == 'N' ? a[i + j * lda] : a[j + i * lda];
                if (ta == 'C') v = conjugate(v);
            }
            t[i + j * leaf] = v;
        }
}

template <class T>
struct Tri {
    char uplo;
    char ta;
    char diag;
    const T* a;
    int lda;
    bool lower;  // op(A) is lower triangular
};

// The leaves of the recursions run in the engine of the active instruction set on a dense
// copy of the diagonal block; they are kept out of the recursive functions so that the
// recursions' frames stay small.
template <class T>
[[gnu::noinline]] void leaf_op(const Tri<T>& A, Index d, bool left, bool solve, int m, int n, T alpha, T* b,
                               int ldb) {
    T t[leaf * leaf];
    const int nt = left ? m : n;
    dense_triangle(A.uplo, A.ta, A.diag, nt, A.a + d + d * A.lda, A.lda, solve, t);
    const gemm_impl::Engine<T> e = gemm_impl::engine<T>();
    (left ? e.left_leaf : e.right_leaf)(t, leaf, A.lower, solve, nt, left ? n : m, &alpha, b, ldb);
}

// B (m by n) = alpha op(A) B, op(A) the m by m block of the triangle that starts at (d, d).
template <class T>
void trmm_left(const Tri<T>& A, Index d, int m, int n, T alpha, T* b, int ldb) {
    if (m > leaf) {
        const int m1 = split(m), m2 = m - m1;
        T* b2 = b + m1;
        if (A.lower) {  // B2 = L21 B1 + L22 B2 needs B1 as it was: B2 first
            trmm_left(A, d + m1, m2, n, alpha, b2, ldb);
            gemm(A.ta, 'N', m2, n, m1, alpha, op_block(A.a, A.lda, A.ta, d + m1, d), A.lda, b, ldb, T(1), b2,
                 ldb);
            trmm_left(A, d, m1, n, alpha, b, ldb);
        } else {
            trmm_left(A, d, m1, n, alpha, b, ldb);
            gemm(A.ta, 'N', m1, n, m2, alpha, op_block(A.a, A.lda, A.ta, d, d + m1), A.lda, b2, ldb, T(1), b,
                 ldb);
            trmm_left(A, d + m1, m2, n, alpha, b2, ldb);
        }
        return;
    }
    leaf_op(A, d, true, false, m, n, alpha, b, ldb);
}

// B (m by n) = alpha B op(A), op(A) the n by n block of the triangle that starts at (d, d).
template <class T>
void trmm_right(const Tri<T>& A, Index d, int m, int n, T alpha, T* b, int ldb) {
    if (n > leaf) {
        const int n1 = split(n), n2 = n - n1;
        T* b2 = b + n1 * static_cast<Index>(ldb);
        if (A.lower) {  // B1 = B1 L11 + B2 L21 needs B2 as it was: B1 first
            trmm_right(A, d, m, n1, alpha, b, ldb);
            gemm('N', A.ta, m, n1, n2, alpha, b2, ldb, op_block(A.a, A.lda, A.ta, d + n1, d), A.lda, T(1), b,
                 ldb);
            trmm_right(A, d + n1, m, n2, alpha, b2, ldb);
        } else {
            trmm_right(A, d + n1, m, n2, alpha, b2, ldb);
            gemm('N', A.ta, m, n2, n1, alpha, b, ldb, op_block(A.a, A.lda, A.ta, d, d + n1), A.lda, T(1), b2,
                 ldb);
            trmm_right(A, d, m, n1, alpha, b, ldb);
        }
        return;
    }
    leaf_op(A, d, false, false, m, n, alpha, b, ldb);
}

// Solves op(A) X = alpha B (m by n) for the m by m diagonal block at (d, d); X overwrites B.
template <class T>
void trsm_left(const Tri<T>& A, Index d, int m, int n, T alpha, T* b, int ldb) {
    if (m > leaf) {
        const int m1 = split(m), m2 = m - m1;
        T* b2 = b + m1;
        if (A.lower) {  // X1 from the top block, then B2 = alpha B2 - L21 X1
            trsm_left(A, d, m1, n, alpha, b, ldb);
            gemm(A.ta, 'N', m2, n, m1, T(-1), op_block(A.a, A.lda, A.ta, d + m1, d), A.lda, b, ldb, alpha, b2,
                 ldb);
            trsm_left(A, d + m1, m2, n, T(1), b2, ldb);
        } else {
            trsm_left(A, d + m1, m2, n, alpha, b2, ldb);
            gemm(A.ta, 'N', m1, n, m2, T(-1), op_block(A.a, A.lda, A.ta, d, d + m1), A.lda, b2, ldb, alpha, b,
                 ldb);
            trsm_left(A, d, m1, n, T(1), b, ldb);
        }
        return;
    }
    leaf_op(A, d, true, true, m, n, alpha, b, ldb);
}

// Solves X op(A) = alpha B (m by n) for the n by n diagonal block at (d, d).
template <class T>
void trsm_right(const Tri<T>& A, Index d, int m, int n, T alpha, T* b, int ldb) {
    if (n > leaf) {
        const int n1 = split(n), n2 = n - n1;
        T* b2 = b + n1 * static_cast<Index>(ldb);
        if (A.lower) {  // X2 from the last block, then B1 = alpha B1 - X2 L21
            trsm_right(A, d + n1, m, n2, alpha, b2, ldb);
            gemm('N', A.ta, m, n1, n2, T(-1), b2, ldb, op_block(A.a, A.lda, A.ta, d + n1, d), A.lda, alpha, b,
                 ldb);
            trsm_right(A, d, m, n1, T(1), b, ldb);
        } else {
            trsm_right(A, d, m, n1, alpha, b, ldb);
            gemm('N', A.ta, m, n2, n1, T(-1), b, ldb, op_block(A.a, A.lda, A.ta, d, d + n1), A.lda, alpha, b2,
                 ldb);
            trsm_right(A, d + n1, m, n2, T(1), b2, ldb);
        }
        return;
    }
    leaf_op(A, d, false, true, m, n, alpha, b, ldb);
}

}  // namespace

template <class T>
void symm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta, T* c,
          int ldc) {
    symmetric_product(side, uplo, false, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
}

template <class T>
void hemm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta, T* c,
          int ldc) {
    symmetric_product(side, uplo, is_complex_v<T>, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
}

template <class T>
void syrk(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, T beta, T* c, int ldc) {
    Update<T> u{uplo,   trans == 'N' ? 'N' : 'T', false, k, {{a, lda, a, lda, alpha}, {}}, 1, beta, c, ldc,
                nullptr};
    rank_update(u, n);
}

template <class T>
void herk(char uplo, char trans, int n, int k, Real<T> alpha, const T* a, int lda, Real<T> beta, T* c,
          int ldc) {
    const bool herm = is_complex_v<T>;
    Update<T> u{uplo,
                trans == 'N' ? 'N' : herm ? 'C' : 'T',
                herm,
                k,
                {{a, lda, a, lda, T(alpha)}, {}},
                1,
                T(beta),
                c,
                ldc,
                nullptr};
    rank_update(u, n);
}

template <class T>
void syr2k(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, T beta,
           T* c, int ldc) {
    Update<T> u{uplo,
                trans == 'N' ? 'N' : 'T',
                false,
                k,
                {{a, lda, b, ldb, alpha}, {b, ldb, a, lda, alpha}},
                2,
                beta,
                c,
                ldc,
                nullptr};
    rank_update(u, n);
}

template <class T>
void her2k(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb,
           Real<T> beta, T* c, int ldc) {
    const bool herm = is_complex_v<T>;
    Update<T> u{uplo,
                trans == 'N' ? 'N'
                : herm       ? 'C'
                             : 'T',
                herm,
                k,
                {{a, lda, b, ldb, alpha}, {b, ldb, a, lda, conjugate(alpha)}},
                2,
                T(beta),
                c,
                ldc,
                nullptr};
    rank_update(u, n);
}

// What trmm and trsm share: quick returns, the triangle's description and the workspace; then
// the recursion on the side that applies.
template <class T>
void triangular_op(char side, char uplo, char ta, char diag, int m, int n, T alpha, const T* a, int lda, T* b,
                   int ldb, void (*left)(const Tri<T>&, Index, int, int, T, T*, int),
                   void (*right)(const Tri<T>&, Index, int, int, T, T*, int)) {
    if (m == 0 || n == 0) return;
    if (alpha == T(0)) {
        scale(m, n, T(0), b, ldb);
        return;
    }
    if (!is_complex_v<T> && ta == 'C') ta = 'T';
    const bool lower = (uplo == 'L') == (ta == 'N');
    const Tri<T> A{uplo, ta, diag, a, lda, lower};
    if (!gemm_impl::reserve<T>()) return;
    (side == 'L' ? left : right)(A, 0, m, n, alpha, b, ldb);
}

template <class T>
void trmm(char side, char uplo, char ta, char diag, int m, int n, T alpha, const T* a, int lda, T* b,
          int ldb) {
    triangular_op<T>(side, uplo, ta, diag, m, n, alpha, a, lda, b, ldb, trmm_left<T>, trmm_right<T>);
}

template <class T>
void trsm(char side, char uplo, char ta, char diag, int m, int n, T alpha, const T* a, int lda, T* b,
          int ldb) {
    triangular_op<T>(side, uplo, ta, diag, m, n, alpha, a, lda, b, ldb, trsm_left<T>, trsm_right<T>);
}

#define QNUM_LEVEL3_INSTANTIATE(T)                                                                   \
    template void symm<T>(char, char, int, int, T, const T*, int, const T*, int, T, T*, int);        \
    template void hemm<T>(char, char, int, int, T, const T*, int, const T*, int, T, T*, int);        \
    template void syrk<T>(char, char, int, int, T, const T*, int, T, T*, int);                       \
    template void herk<T>(char, char, int, int, Real<T>, const T*, int, Real<T>, T*, int);           \
    template void syr2k<T>(char, char, int, int, T, const T*, int, const T*, int, T, T*, int);       \
    template void her2k<T>(char, char, int, int, T, const T*, int, const T*, int, Real<T>, T*, int); \
    template void trmm<T>(char, char, char, char, int, int, T, const T*, int, T*, int);              \
    template void trsm<T>(char, char, char, char, int, int, T, const T*, int, T*, int);

QNUM_LEVEL3_INSTANTIATE(float)
QNUM_LEVEL3_INSTANTIATE(double)
QNUM_LEVEL3_INSTANTIATE(std::complex<float>)
QNUM_LEVEL3_INSTANTIATE(std::complex<double>)
#undef QNUM_LEVEL3_INSTANTIATE

}  // namespace qnum::kern
