// The blocked product written once for every instruction set: packing, macro-kernel and the
// register-blocked micro-kernels, over a small table of vector operations that each
// instruction-set file supplies; and the small triangular products and solves at the bottom
// of trmm and trsm.
//
// The scheme is the one of K. Goto and R. van de Geijn, "Anatomy of high-performance matrix
// multiplication", ACM TOMS 34(3), 2008: B is packed kc by nc (L3), A mc by kc (L2), both in
// slivers as wide as the register block, and a micro-kernel keeps an mr by nr block of C in
// registers for a whole kc-long stretch of rank-1 updates, reading each packed sliver once.
//
// Complex products keep two sets of accumulators, A times the real parts and A times the
// imaginary parts of B, and combine them once at the end (one swap of real and imaginary
// lanes and an alternating add/subtract), so the inner loop has only multiply-adds.
//
// This header is included only by the files compiled for one instruction set each. Everything
// in it sits in an unnamed namespace, so every such file gets its own copy, compiled with its
// own instructions: a shared copy could run one instruction set's code on a machine that
// lacks it. For the same reason nothing here calls library templates that might be emitted out
// of line (std::min, std::complex operators): complex numbers are handled as pairs of reals.
#pragma once

#include <cstddef>
#include <cstring>

#include "kernels/gemm_engine.hpp"

namespace qnum::kern::gemm_impl {
namespace {

template <class T>
struct Elem {
    using R = T;
    static constexpr int cw = 1;  // reals per element
};
template <class R_>
struct Elem<std::complex<R_>> {
    using R = R_;
    static constexpr int cw = 2;
};

inline Index lesser(Index a, Index b) { return a < b ? a : b; }

// ---- micro-kernels ----
//
// V supplies: R (float or double), reg, w (reals per register), zero, load, bcast (one real
// to every lane), fma (a*b + c), mul, add, store, swap (exchange the two lanes of each
// pair) and addsub (a - b in even lanes, a + b in odd lanes).

// C (mv*w by nr) = alpha A B + beta C, from packed slivers a (mv*w per step) and b (nr per
// step). beta = 0 assigns.
template <class V, int MV, int NR>
void micro_real(Index kc, const typename V::R* a, const typename V::R* b, typename V::R* c, Index ldc,
                const typename V::R* alpha, const typename V::R* beta) {
    using reg = typename V::reg;
    constexpr int W = V::w;
    constexpr int PF_A = 8;  // steps ahead at which the A sliver is prefetched from L2
    reg acc[MV][NR];
#pragma GCC unroll 32
    for (int j = 0; j < NR; ++j) {
#pragma GCC unroll 8
        for (int v = 0; v < MV; ++v) acc[v][j] = V::zero();
    }

    // C is needed only after the loop: ask for it now, so that the loads at the end hit.
#pragma GCC unroll 32
    for (int j = 0; j < NR; ++j) {
        __builtin_prefetch(c + j * ldc, 1);
        __builtin_prefetch(c + j * ldc + MV * W - 1, 1);
    }
#pragma GCC unroll 4
    for (Index p = 0; p < kc; ++p) {
        reg av[MV];
#pragma GCC unroll 8
        for (int v = 0; v < MV; ++v) {
            __builtin_prefetch(a + (PF_A * MV + v) * W);
            av[v] = V::load(a + v * W);
        }
#pragma GCC unroll 32
        for (int j = 0; j < NR; ++j) {
            reg bj = V::bcast(b + j);
#pragma GCC unroll 8
            for (int v = 0; v < MV; ++v) acc[v][j] = V::fma(av[v], bj, acc[v][j]);
        }
        a += MV * W;
        b += NR;
    }
    const reg al = V::bcast(alpha);
    if (beta[0] == 0) {
#pragma GCC unroll 32
        for (int j = 0; j < NR; ++j)
#pragma GCC unroll 8
            for (int v = 0; v < MV; ++v) V::store(c + j * ldc + v * W, V::mul(acc[v][j], al));
    } else if (beta[0] == 1) {
#pragma GCC unroll 32
        for (int j = 0; j < NR; ++j)
#pragma GCC unroll 8
            for (int v = 0; v < MV; ++v) {
                typename V::R* cj = c + j * ldc + v * W;
                V::store(cj, V::fma(acc[v][j], al, V::load(cj)));
            }
    } else {
        const reg be = V::bcast(beta);
#pragma GCC unroll 32
        for (int j = 0; j < NR; ++j)
#pragma GCC unroll 8
            for (int v = 0; v < MV; ++v) {
                typename V::R* cj = c + j * ldc + v * W;
                V::store(cj, V::fma(acc[v][j], al, V::mul(V::load(cj), be)));
            }
    }
}

// x times the complex scalar (s[0], s[1]) in every pair of lanes.
template <class V>
inline typename V::reg cmul(typename V::reg x, typename V::reg sr, typename V::reg si) {
    return V::addsub(V::mul(x, sr), V::mul(V::swap(x), si));
}

// The complex micro-kernel: a holds mv*w/2 complex numbers per step, b nr; c, alpha and beta
// are complex, stored as pairs of reals, ldc counts complex elements.
template <class V, int MV, int NR>
void micro_complex(Index kc, const typename V::R* a, const typename V::R* b, typename V::R* c, Index ldc,
                   const typename V::R* alpha, const typename V::R* beta) {
    using reg = typename V::reg;
    constexpr int W = V::w;
    reg re[MV][NR], im[MV][NR];
#pragma GCC unroll 32
    for (int j = 0; j < NR; ++j) {
#pragma GCC unroll 8
        for (int v = 0; v < MV; ++v) re[v][j] = im[v][j] = V::zero();
    }
#pragma GCC unroll 32
    for (int j = 0; j < NR; ++j) {
        __builtin_prefetch(c + 2 * j * ldc, 1);
        __builtin_prefetch(c + 2 * j * ldc + MV * W - 1, 1);
    }
    for (Index p = 0; p < kc; ++p) {
        reg av[MV];
#pragma GCC unroll 8
        for (int v = 0; v < MV; ++v) av[v] = V::load(a + v * W);
#pragma GCC unroll 32
        for (int j = 0; j < NR; ++j) {
            reg br = V::bcast(b + 2 * j), bi = V::bcast(b + 2 * j + 1);
#pragma GCC unroll 8
            for (int v = 0; v < MV; ++v) {
                re[v][j] = V::fma(av[v], br, re[v][j]);
                im[v][j] = V::fma(av[v], bi, im[v][j]);
            }
        }
        a += MV * W;
        b += 2 * NR;
    }
    const reg ar = V::bcast(alpha), ai = V::bcast(alpha + 1);
    const int beta_kind = (beta[0] == 0 && beta[1] == 0) ? 0 : (beta[0] == 1 && beta[1] == 0) ? 1 : 2;
    const reg br = V::bcast(beta), bi = V::bcast(beta + 1);
#pragma GCC unroll 32
    for (int j = 0; j < NR; ++j)
#pragma GCC unroll 8
        for (int v = 0; v < MV; ++v) {
            typename V::R* cj = c + 2 * j * ldc + v * W;
            reg ab = V::addsub(re[v][j], V::swap(im[v][j]));
            reg r = cmul<V>(ab, ar, ai);
            if (beta_kind == 1)
                r = V::add(r, V::load(cj));
            else if (beta_kind == 2)
                r = V::add(r, cmul<V>(V::load(cj), br, bi));
            V::store(cj, r);
        }
}

// ---- packing ----

// Element (i, j) of the full symmetric or Hermitian matrix whose `shape` triangle is stored
// at x, copied to out. A Hermitian diagonal is read as real.
template <class T>
inline void structured_elem(const typename Elem<T>::R* x, Index ld, Shape shape, Index i, Index j,
                            typename Elem<T>::R* out) {
    constexpr int CW = Elem<T>::cw;
    const bool lower = shape == Shape::SymLower || shape == Shape::HermLower;
    const bool stored = lower ? i >= j : i <= j;
    const typename Elem<T>::R* s = stored ? x + (i + j * ld) * CW : x + (j + i * ld) * CW;
    out[0] = s[0];
    if constexpr (CW == 2) {
        const bool herm = shape == Shape::HermLower || shape == Shape::HermUpper;
        out[1] = !herm ? s[1] : i == j ? 0 : stored ? s[1] : -s[1];
    }
}

template <class T>
inline void copy_elem(const typename Elem<T>::R* s, typename Elem<T>::R* d, bool conj) {
    d[0] = s[0];
    if constexpr (Elem<T>::cw == 2) d[1] = conj ? -s[1] : s[1];
}

template <class T>
inline void zero_elem(typename Elem<T>::R* d) {
    d[0] = 0;
    if constexpr (Elem<T>::cw == 2) d[1] = 0;
}

// dst[p * S + j] = op(src[p + j * ld]) for p < kc and j < cols, zeros for cols <= j < S: the
// packing of a sliver whose source columns run along k (A transposed, B not). Real data go
// four columns by four steps at a time through a transpose in registers, so that both the
// reads down the columns and the writes along the sliver are whole vectors.
template <class T, int S>
void pack_across(const typename Elem<T>::R* src, Index ld, Index cols, Index kc, typename Elem<T>::R* dst,
                 bool conj) {
    using R = typename Elem<T>::R;
    constexpr int CW = Elem<T>::cw;
    Index j = 0;
    if constexpr (CW == 1) {
        using V4 [[gnu::vector_size(4 * sizeof(R))]] = R;
        // (vectors pass by reference: the portable build has no registers of this width)
        auto load = [](V4& v, const R* p) { std::memcpy(&v, p, sizeof v); };
        auto store = [](R* p, const V4& v) { std::memcpy(p, &v, sizeof v); };
        for (; j + 4 <= cols; j += 4) {
            const R* c0 = src + j * ld;
            const R *c1 = c0 + ld, *c2 = c1 + ld, *c3 = c2 + ld;
            R* d = dst + j;
            Index p = 0;
            for (; p + 4 <= kc; p += 4, d += 4 * S) {
                V4 r0, r1, r2, r3;
                load(r0, c0 + p), load(r1, c1 + p), load(r2, c2 + p), load(r3, c3 + p);
                const V4 t0 = __builtin_shufflevector(r0, r1, 0, 4, 2, 6), t1 = __builtin_shufflevector(r0, r1, 1, 5, 3, 7);
                const V4 t2 = __builtin_shufflevector(r2, r3, 0, 4, 2, 6), t3 = __builtin_shufflevector(r2, r3, 1, 5, 3, 7);
                const V4 o0 = __builtin_shufflevector(t0, t2, 0, 1, 4, 5), o1 = __builtin_shufflevector(t1, t3, 0, 1, 4, 5);
                const V4 o2 = __builtin_shufflevector(t0, t2, 2, 3, 6, 7), o3 = __builtin_shufflevector(t1, t3, 2, 3, 6, 7);
                store(d, o0), store(d + S, o1), store(d + 2 * S, o2), store(d + 3 * S, o3);
            }
            for (; p < kc; ++p, d += S) d[0] = c0[p], d[1] = c1[p], d[2] = c2[p], d[3] = c3[p];
        }
    }
    for (; j < S; ++j) {
        if (j < cols) {
            const R* c = src + j * ld * CW;
            for (Index p = 0; p < kc; ++p) copy_elem<T>(c + p * CW, dst + (p * S + j) * CW, conj);
        } else {
            for (Index p = 0; p < kc; ++p) zero_elem<T>(dst + (p * S + j) * CW);
        }
    }
}

// Packs rows i0.. i0+mc-1, columns p0.. p0+kc-1 of op(A) into slivers of MR rows: element
// (i, p) of a sliver lands at p*MR + i. The last sliver is padded with zeros.
template <class T, int MR>
void pack_a(const Operand<T>& A, Index i0, Index p0, Index mc, Index kc, typename Elem<T>::R* dst) {
    using R = typename Elem<T>::R;
    constexpr int CW = Elem<T>::cw;
    const R* x = reinterpret_cast<const R*>(A.p);
    const Index ld = A.ld;
    for (Index s = 0; s < mc; s += MR, dst += MR * kc * CW) {
        const Index r0 = i0 + s, rows = lesser(MR, mc - s);
        if (A.shape != Shape::General) {
            for (Index p = 0; p < kc; ++p)
                for (Index r = 0; r < MR; ++r) {
                    R* d = dst + (p * MR + r) * CW;
                    if (r < rows)
                        structured_elem<T>(x, ld, A.shape, r0 + r, p0 + p, d);
                    else
                        zero_elem<T>(d);
                }
        } else if (A.op == 'N') {
            const R* src = x + (r0 + p0 * ld) * CW;
            if (rows == MR) {
                for (Index p = 0; p < kc; ++p, src += ld * CW)
                    for (Index r = 0; r < MR * CW; ++r) dst[p * MR * CW + r] = src[r];
            } else {
                for (Index p = 0; p < kc; ++p, src += ld * CW)
                    for (Index r = 0; r < MR; ++r) {
                        R* d = dst + (p * MR + r) * CW;
                        if (r < rows)
                            copy_elem<T>(src + r * CW, d, false);
                        else
                            zero_elem<T>(d);
                    }
            }
        } else {
            pack_across<T, MR>(x + (p0 + r0 * ld) * CW, ld, rows, kc, dst, A.op == 'C');
        }
    }
}

// Packs rows p0.. p0+kc-1, columns j0.. j0+nc-1 of op(B) into slivers of NR columns:
// element (p, j) of a sliver lands at p*NR + j. The last sliver is padded with zeros.
template <class T, int NR>
void pack_b(const Operand<T>& B, Index p0, Index j0, Index kc, Index nc, typename Elem<T>::R* dst) {
    using R = typename Elem<T>::R;
    constexpr int CW = Elem<T>::cw;
    const R* x = reinterpret_cast<const R*>(B.p);
    const Index ld = B.ld;
    for (Index s = 0; s < nc; s += NR, dst += NR * kc * CW) {
        const Index c0 = j0 + s, cols = lesser(NR, nc - s);
        if (B.shape != Shape::General) {
            for (Index p = 0; p < kc; ++p)
                for (Index j = 0; j < NR; ++j) {
                    R* d = dst + (p * NR + j) * CW;
                    if (j < cols)
                        structured_elem<T>(x, ld, B.shape, p0 + p, c0 + j, d);
                    else
                        zero_elem<T>(d);
                }
        } else if (B.op == 'N') {
            pack_across<T, NR>(x + (p0 + c0 * ld) * CW, ld, cols, kc, dst, false);
        } else {
            const bool conj = B.op == 'C';
            const R* src = x + (c0 + p0 * ld) * CW;
            for (Index p = 0; p < kc; ++p, src += ld * CW)
                for (Index j = 0; j < NR; ++j) {
                    R* d = dst + (p * NR + j) * CW;
                    if (j < cols)
                        copy_elem<T>(src + j * CW, d, conj);
                    else
                        zero_elem<T>(d);
                }
        }
    }
}

// ---- the leaves of trmm and trsm ----
//
// A leaf multiplies or solves with a triangle of at most 32 rows and columns. Along one
// column of the left-side operation every step depends on the one before; across columns of
// B the steps are independent, so columns are taken 256 bytes' worth at a time and laid out
// row by row, and every step becomes one vector operation across them (the compiler
// vectorizes the loops over c). The right-side leaves work on B's columns directly, a block
// of 256 bytes of rows at a time, so their steps are vector operations down the columns.
// Complex numbers are split into real and imaginary rows for the same reason. The blocks are
// always full (padded with zeros), so every element of B sees the same operations wherever it
// falls in a block.

constexpr int leaf_side = 32;

// x := x * (tr, ti) on cb lanes of a split complex row (real data: xi unused, ti zero).
template <class R, int CW, int CB>
inline void scale_row(R* xr, R* xi, R tr, R ti) {
    if constexpr (CW == 1) {
        for (int c = 0; c < CB; ++c) xr[c] *= tr;
    } else {
        for (int c = 0; c < CB; ++c) {
            const R r = xr[c] * tr - xi[c] * ti, im = xr[c] * ti + xi[c] * tr;
            xr[c] = r, xi[c] = im;
        }
    }
}

// y := y + sign * x * (tr, ti) on CB lanes of split complex rows.
template <class R, int CW, int CB, bool Sub>
inline void axpy_row(R* yr, R* yi, const R* xr, const R* xi, R tr, R ti) {
    if constexpr (CW == 1) {
        for (int c = 0; c < CB; ++c) yr[c] = Sub ? yr[c] - tr * xr[c] : yr[c] + tr * xr[c];
    } else {
        for (int c = 0; c < CB; ++c) {
            const R pr = tr * xr[c] - ti * xi[c], pi = tr * xi[c] + ti * xr[c];
            yr[c] = Sub ? yr[c] - pr : yr[c] + pr;
            yi[c] = Sub ? yi[c] - pi : yi[c] + pi;
        }
    }
}

// xr[c] (and xi[c]) := alpha * s[c * step] for c < valid, zeros for valid <= c < N: one row of
// a leaf's block, split into real and imaginary parts.
template <class R, int CW, int N>
inline void load_split(R* xr, R* xi, const R* s, Index step, int valid, const R* alpha) {
    for (int c = 0; c < N; ++c) {
        if (c >= valid) {
            xr[c] = 0;
            if constexpr (CW == 2) xi[c] = 0;
            continue;
        }
        const R* e = s + c * step;
        if constexpr (CW == 1) {
            xr[c] = alpha[0] * e[0];
        } else {
            xr[c] = alpha[0] * e[0] - alpha[1] * e[1];
            xi[c] = alpha[0] * e[1] + alpha[1] * e[0];
        }
    }
}

// d[c * step] := element c of the split row, c < valid.
template <class R, int CW>
inline void store_split(R* d, Index step, int valid, const R* xr, const R* xi) {
    for (int c = 0; c < valid; ++c) {
        d[c * step] = xr[c];
        if constexpr (CW == 2) d[c * step + 1] = xi[c];
    }
}

// B := alpha op(A) B (solve false) or B := op(A)^-1 alpha B (solve true) for the m by m
// triangle t (column-major, leading dimension ldt, zeros outside the triangle; for a solve
// its diagonal already inverted), m <= 32, B m by n.
template <class T>
void left_leaf(const T* t_, Index ldt, bool lower, bool solve, int m, Index n, const T* alpha_, T* b_,
               Index ldb) {
    using R = typename Elem<T>::R;
    constexpr int CW = Elem<T>::cw;
    constexpr int CB = 256 / sizeof(R);  // columns per block
    const R* t = reinterpret_cast<const R*>(t_);
    const R* alpha = reinterpret_cast<const R*>(alpha_);
    R* b = reinterpret_cast<R*>(b_);
    alignas(64) R xr[leaf_side][CB], xi[CW == 2 ? leaf_side : 1][CB];
    R* xi_row = xi[0];
    auto im_row = [&](int i) { return CW == 2 ? xi[i] : xi_row; };
    for (Index j0 = 0; j0 < n; j0 += CB) {
        const int cols = static_cast<int>(lesser(CB, n - j0));
        for (int i = 0; i < m; ++i) load_split<R, CW, CB>(xr[i], im_row(i), b + (i + j0 * ldb) * CW, ldb * CW, cols, alpha);
        for (int step = 0; step < m; ++step) {
            // A solve finishes x(k) and subtracts it from the rows still to come; a product
            // adds the still unchanged x(k) to the rows it feeds, then scales it.
            const int k = lower == solve ? step : m - 1 - step;
            const R* tk = t + k * ldt * CW;
            const int lo = lower ? k + 1 : 0, hi = lower ? m : k;
            const R dr = tk[k * CW], di = CW == 2 ? tk[k * CW + 1] : 0;
            if (solve) {
                scale_row<R, CW, CB>(xr[k], im_row(k), dr, di);
                for (int i = lo; i < hi; ++i)
                    axpy_row<R, CW, CB, true>(xr[i], im_row(i), xr[k], im_row(k), tk[i * CW], CW == 2 ? tk[i * CW + 1] : 0);
            } else {
                for (int i = lo; i < hi; ++i)
                    axpy_row<R, CW, CB, false>(xr[i], im_row(i), xr[k], im_row(k), tk[i * CW], CW == 2 ? tk[i * CW + 1] : 0);
                scale_row<R, CW, CB>(xr[k], im_row(k), dr, di);
            }
        }
        for (int i = 0; i < m; ++i) store_split<R, CW>(b + (i + j0 * ldb) * CW, ldb * CW, cols, xr[i], im_row(i));
    }
}

// B := alpha B op(A) (solve false) or B := alpha B op(A)^-1 (solve true) for the n by n
// triangle t as in left_leaf, n <= 32, B m by n.
template <class T>
void right_leaf(const T* t_, Index ldt, bool lower, bool solve, int n, Index m, const T* alpha_, T* b_,
                Index ldb) {
    using R = typename Elem<T>::R;
    constexpr int CW = Elem<T>::cw;
    constexpr int RB = 256 / sizeof(R);  // rows per block
    const R* t = reinterpret_cast<const R*>(t_);
    const R* alpha = reinterpret_cast<const R*>(alpha_);
    R* b = reinterpret_cast<R*>(b_);
    alignas(64) R xr[leaf_side][RB], xi[CW == 2 ? leaf_side : 1][RB];
    R* xi_row = xi[0];
    auto im_row = [&](int j) { return CW == 2 ? xi[j] : xi_row; };
    for (Index i0 = 0; i0 < m; i0 += RB) {
        const int rows = static_cast<int>(lesser(RB, m - i0));
        for (int j = 0; j < n; ++j) load_split<R, CW, RB>(xr[j], im_row(j), b + (i0 + j * ldb) * CW, CW, rows, alpha);
        for (int step = 0; step < n; ++step) {
            // Column j of the result takes the columns k with t(k, j) nonzero: below the diagonal
            // for a lower triangle. A solve needs them finished, a product still unchanged.
            const int j = lower != solve ? step : n - 1 - step;
            const R* tj = t + j * ldt * CW;
            const int lo = lower ? j + 1 : 0, hi = lower ? n : j;
            const R dr = tj[j * CW], di = CW == 2 ? tj[j * CW + 1] : 0;
            if (solve) {
                for (int k = lo; k < hi; ++k)
                    axpy_row<R, CW, RB, true>(xr[j], im_row(j), xr[k], im_row(k), tj[k * CW], CW == 2 ? tj[k * CW + 1] : 0);
                scale_row<R, CW, RB>(xr[j], im_row(j), dr, di);
            } else {
                scale_row<R, CW, RB>(xr[j], im_row(j), dr, di);
                for (int k = lo; k < hi; ++k)
                    axpy_row<R, CW, RB, false>(xr[j], im_row(j), xr[k], im_row(k), tj[k * CW], CW == 2 ? tj[k * CW + 1] : 0);
            }
        }
        for (int j = 0; j < n; ++j) store_split<R, CW>(b + (i0 + j * ldb) * CW, CW, rows, xr[j], im_row(j));
    }
}

// ---- the driver ----

// K: the kernel of one instruction set and type: T, MR, NR, MC, KC, NC and
// micro(kc, a, b, c, ldc, alpha, beta) on reals.
template <class K>
void drive(const Problem<typename K::T>& pr, const Part& part, typename K::T* a_pack, typename K::T* b_pack) {
    using T = typename K::T;
    using R = typename Elem<T>::R;
    constexpr int CW = Elem<T>::cw;
    constexpr int MR = K::MR, NR = K::NR;
    R* ap = reinterpret_cast<R*>(a_pack);
    R* bp = reinterpret_cast<R*>(b_pack);
    R* c = reinterpret_cast<R*>(pr.c);
    const R* alpha = reinterpret_cast<const R*>(&pr.alpha);
    const R* beta0 = reinterpret_cast<const R*>(&pr.beta);
    const R one[2] = {1, 0}, zero[2] = {0, 0};
    alignas(64) R tile[MR * NR * CW];

    for (Index jc = part.j0; jc < part.j1; jc += K::NC) {
        const Index nc = lesser(K::NC, part.j1 - jc);
        for (Index pc = 0; pc < pr.k; pc += K::KC) {
            const Index kc = lesser(K::KC, pr.k - pc);
            // Later passes over k add to what the first one stored.
            const R* beta = pc == 0 ? beta0 : one;
            const bool beta_zero = beta[0] == 0 && (CW == 1 || beta[1] == 0);
            const bool beta_one = beta[0] == 1 && (CW == 1 || beta[1] == 0);
            pack_b<T, NR>(pr.b, pc, jc, kc, nc, bp);
            for (Index ic = part.i0; ic < part.i1; ic += K::MC) {
                if (part.stop != nullptr && part.stop->load(std::memory_order_relaxed) != 0) return;
                const Index mc = lesser(K::MC, part.i1 - ic);
                pack_a<T, MR>(pr.a, ic, pc, mc, kc, ap);
                for (Index jr = 0; jr < nc; jr += NR) {
                    const Index cols = lesser(NR, nc - jr);
                    const R* bs = bp + jr * kc * CW;
                    for (Index ir = 0; ir < mc; ir += MR) {
                        const Index rows = lesser(MR, mc - ir);
                        const R* as = ap + ir * kc * CW;
                        R* cij = c + ((ic + ir) + (jc + jr) * pr.ldc) * CW;
                        if (rows == MR && cols == NR) {
                            K::micro(kc, as, bs, cij, pr.ldc, alpha, beta);
                            continue;
                        }
                        // An edge block: compute the full block aside, store the part in C.
                        K::micro(kc, as, bs, tile, MR, alpha, zero);
                        for (Index j = 0; j < cols; ++j)
                            for (Index i = 0; i < rows; ++i) {
                                const R* t = tile + (i + j * MR) * CW;
                                R* d = cij + (i + j * pr.ldc) * CW;
                                if (beta_zero) {
                                    d[0] = t[0];
                                    if constexpr (CW == 2) d[1] = t[1];
                                } else if (beta_one) {
                                    d[0] += t[0];
                                    if constexpr (CW == 2) d[1] += t[1];
                                } else if constexpr (CW == 1) {
                                    d[0] = t[0] + beta[0] * d[0];
                                } else {
                                    const R re = beta[0] * d[0] - beta[1] * d[1];
                                    const R im = beta[0] * d[1] + beta[1] * d[0];
                                    d[0] = t[0] + re;
                                    d[1] = t[1] + im;
                                }
                            }
                    }
                }
            }
        }
    }
}

// A kernel: the micro-kernel of vector table V with MV registers per column and NR columns,
// and the cache blocks (MC a multiple of MR, NC of NR).
template <class T_, class V, int MV, int NR_, int MC_, int KC_, int NC_>
struct Kernel {
    using T = T_;
    static constexpr int MR = MV * V::w / Elem<T>::cw, NR = NR_, MC = MC_, KC = KC_, NC = NC_;
    static_assert(MC % MR == 0 && NC % NR == 0, "cache blocks must hold whole slivers");
    static void micro(Index kc, const typename V::R* a, const typename V::R* b, typename V::R* c, Index ldc,
                      const typename V::R* alpha, const typename V::R* beta) {
        if constexpr (Elem<T>::cw == 1)
            micro_real<V, MV, NR>(kc, a, b, c, ldc, alpha, beta);
        else
            micro_complex<V, MV, NR>(kc, a, b, c, ldc, alpha, beta);
    }
    static Engine<T> engine() { return Engine<T>{MR, NR, MC, KC, NC, &drive<Kernel>, &left_leaf<T>, &right_leaf<T>}; }
};

}  // namespace
}  // namespace qnum::kern::gemm_impl
