// The tuned inner kernels, written once over a small vector interface and compiled once per
// instruction set: tuned_avx2.cpp and tuned_avx512.cpp include this file inside a namespace
// of their own, with their own compiler flags.
//
// The kernels are bound by memory traffic for long vectors, so they aim at streaming each
// array exactly once: several independent accumulators hide the latency of the fused
// multiply-add, and the matrix-vector products keep their short vector in the first-level
// cache while the matrix streams past it.
#include <immintrin.h>

#include <cmath>

// GCC 12 reports the deliberately undefined registers inside its own AVX-512 reduction
// intrinsics as uninitialized; the warnings are about the compiler's header, not this code.
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

#include "kernels/tuned.hpp"

namespace {

// The vector interface at each width: V512 (AVX-512 only) and V256 (both instruction sets);
// V is the widest one of the file's instruction set.
template <class T>
struct V512;
template <class T>
struct V256;
template <>
struct V256<double> {
    using R = __m256d;
    static constexpr long w = 4;
    static R zero() { return _mm256_setzero_pd(); }
    static R set1(double a) { return _mm256_set1_pd(a); }
    static R load(const double* p) { return _mm256_loadu_pd(p); }
    static void store(double* p, R v) { _mm256_storeu_pd(p, v); }
    static R fma(R a, R b, R c) { return _mm256_fmadd_pd(a, b, c); }
    static R add(R a, R b) { return _mm256_add_pd(a, b); }
    static R mul(R a, R b) { return _mm256_mul_pd(a, b); }
    static R swap(R a) { return _mm256_permute_pd(a, 0x5); }
    static R max(R a, R b) { return _mm256_max_pd(a, b); }
    static R abs(R a) { return _mm256_andnot_pd(_mm256_set1_pd(-0.0), a); }
    static double sum(R a) {
        __m128d s = _mm_add_pd(_mm256_castpd256_pd128(a), _mm256_extractf128_pd(a, 1));
        return _mm_cvtsd_f64(_mm_add_sd(s, _mm_unpackhi_pd(s, s)));
    }
    static double hmax(R a) {
        __m128d s = _mm_max_pd(_mm256_castpd256_pd128(a), _mm256_extractf128_pd(a, 1));
        return _mm_cvtsd_f64(_mm_max_sd(s, _mm_unpackhi_pd(s, s)));
    }
    static R wide(const double* p) { return load(p); }
};

template <>
struct V256<float> {
    using R = __m256;
    static constexpr long w = 8;
    static R zero() { return _mm256_setzero_ps(); }
    static R set1(float a) { return _mm256_set1_ps(a); }
    static R load(const float* p) { return _mm256_loadu_ps(p); }
    static void store(float* p, R v) { _mm256_storeu_ps(p, v); }
    static R fma(R a, R b, R c) { return _mm256_fmadd_ps(a, b, c); }
    static R add(R a, R b) { return _mm256_add_ps(a, b); }
    static R mul(R a, R b) { return _mm256_mul_ps(a, b); }
    static R swap(R a) { return _mm256_permute_ps(a, 0xB1); }
    static R max(R a, R b) { return _mm256_max_ps(a, b); }
    static R abs(R a) { return _mm256_andnot_ps(_mm256_set1_ps(-0.0f), a); }
    static float sum(R a) {
        __m128 s = _mm_add_ps(_mm256_castps256_ps128(a), _mm256_extractf128_ps(a, 1));
        s = _mm_add_ps(s, _mm_movehl_ps(s, s));
        return _mm_cvtss_f32(_mm_add_ss(s, _mm_shuffle_ps(s, s, 1)));
    }
    static float hmax(R a) {
        __m128 s = _mm_max_ps(_mm256_castps256_ps128(a), _mm256_extractf128_ps(a, 1));
        s = _mm_max_ps(s, _mm_movehl_ps(s, s));
        return _mm_cvtss_f32(_mm_max_ss(s, _mm_shuffle_ps(s, s, 1)));
    }
    static __m256d wide(const float* p) { return _mm256_cvtps_pd(_mm_loadu_ps(p)); }
};

#if defined(__AVX512F__)
template <>
struct V512<double> {
    using R = __m512d;
    static constexpr long w = 8;
    static R zero() { return _mm512_setzero_pd(); }
    static R set1(double a) { return _mm512_set1_pd(a); }
    static R load(const double* p) { return _mm512_loadu_pd(p); }
    static void store(double* p, R v) { _mm512_storeu_pd(p, v); }
    static R fma(R a, R b, R c) { return _mm512_fmadd_pd(a, b, c); }
    static R add(R a, R b) { return _mm512_add_pd(a, b); }
    static R mul(R a, R b) { return _mm512_mul_pd(a, b); }
    static R swap(R a) { return _mm512_permute_pd(a, 0x55); }
    static R max(R a, R b) { return _mm512_max_pd(a, b); }
    static R abs(R a) { return _mm512_abs_pd(a); }
    static double sum(R a) { return _mm512_reduce_add_pd(a); }
    static double hmax(R a) { return _mm512_reduce_max_pd(a); }
    // The squares of the next w elements, widened to double (the identity here).
    static R wide(const double* p) { return load(p); }
};

template <>
struct V512<float> {
    using R = __m512;
    static constexpr long w = 16;
    static R zero() { return _mm512_setzero_ps(); }
    static R set1(float a) { return _mm512_set1_ps(a); }
    static R load(const float* p) { return _mm512_loadu_ps(p); }
    static void store(float* p, R v) { _mm512_storeu_ps(p, v); }
    static R fma(R a, R b, R c) { return _mm512_fmadd_ps(a, b, c); }
    static R add(R a, R b) { return _mm512_add_ps(a, b); }
    static R mul(R a, R b) { return _mm512_mul_ps(a, b); }
    static R swap(R a) { return _mm512_permute_ps(a, 0xB1); }
    static R max(R a, R b) { return _mm512_max_ps(a, b); }
    static R abs(R a) { return _mm512_abs_ps(a); }
    static float sum(R a) { return _mm512_reduce_add_ps(a); }
    static float hmax(R a) { return _mm512_reduce_max_ps(a); }
    static __m512d wide(const float* p) { return _mm512_cvtps_pd(_mm256_loadu_ps(p)); }
};
template <class T>
using V = V512<T>;
#else
template <class T>
using V = V256<T>;
#endif


template <class T>
T dot(long n, const T* x, const T* y) {
    using v = V<T>;
    constexpr long w = v::w;
    auto s0 = v::zero(), s1 = v::zero(), s2 = v::zero(), s3 = v::zero();
    long i = 0;
    for (; i + 4 * w <= n; i += 4 * w) {
        s0 = v::fma(v::load(x + i), v::load(y + i), s0);
        s1 = v::fma(v::load(x + i + w), v::load(y + i + w), s1);
        s2 = v::fma(v::load(x + i + 2 * w), v::load(y + i + 2 * w), s2);
        s3 = v::fma(v::load(x + i + 3 * w), v::load(y + i + 3 * w), s3);
    }
    for (; i + w <= n; i += w) s0 = v::fma(v::load(x + i), v::load(y + i), s0);
    T s = v::sum(v::add(v::add(s0, s1), v::add(s2, s3)));
    for (; i < n; ++i) s += x[i] * y[i];
    return s;
}

template <class T>
void axpy(long n, T a, const T* x, T* y) {
    using v = V<T>;
    constexpr long w = v::w;
    const auto va = v::set1(a);
    long i = 0;
    for (; i + 4 * w <= n; i += 4 * w) {
        auto y0 = v::fma(va, v::load(x + i), v::load(y + i));
        auto y1 = v::fma(va, v::load(x + i + w), v::load(y + i + w));
        auto y2 = v::fma(va, v::load(x + i + 2 * w), v::load(y + i + 2 * w));
        auto y3 = v::fma(va, v::load(x + i + 3 * w), v::load(y + i + 3 * w));
        v::store(y + i, y0);
        v::store(y + i + w, y1);
        v::store(y + i + 2 * w, y2);
        v::store(y + i + 3 * w, y3);
    }
    for (; i + w <= n; i += w) v::store(y + i, v::fma(va, v::load(x + i), v::load(y + i)));
    for (; i < n; ++i) y[i] += a * x[i];
}

template <class T>
double sumsq(long n, const T* x, T* amax) {
    using v = V<T>;
    using d = V<double>;
    constexpr long w = d::w;  // elements per double vector
    auto s0 = d::zero(), s1 = d::zero(), s2 = d::zero(), s3 = d::zero();
    auto m0 = d::zero(), m1 = d::zero();
    long i = 0;
    for (; i + 4 * w <= n; i += 4 * w) {
        auto a0 = v::wide(x + i), a1 = v::wide(x + i + w);
        auto a2 = v::wide(x + i + 2 * w), a3 = v::wide(x + i + 3 * w);
        s0 = d::fma(a0, a0, s0);
        s1 = d::fma(a1, a1, s1);
        s2 = d::fma(a2, a2, s2);
        s3 = d::fma(a3, a3, s3);
        m0 = d::max(m0, d::max(d::abs(a0), d::abs(a1)));
        m1 = d::max(m1, d::max(d::abs(a2), d::abs(a3)));
    }
    double s = d::sum(d::add(d::add(s0, s1), d::add(s2, s3)));
    double m = d::hmax(d::max(m0, m1));
    for (; i < n; ++i) {
        double a = x[i];
        s += a * a;
        m = std::fmax(m, std::fabs(a));
    }
    *amax = static_cast<T>(m);
    return s;
}

// Rows are taken in blocks that keep the block of y (32 KiB) in the first-level cache; within
// a block eight columns are added at a time, so y is loaded and stored once per eight columns
// while the eight column streams keep the memory system busy.
template <class T>
void gemv_n(long m, long n, T alpha, const T* a, long lda, const T* x, long incx, T* y) {
    using v = V<T>;
    constexpr long w = v::w;
    constexpr int group = 8;
    constexpr long block = 32768 / static_cast<long>(sizeof(T));
    for (long i0 = 0; i0 < m; i0 += block) {
        const long mb = m - i0 < block ? m - i0 : block;
        T* yb = y + i0;
        long j = 0;
        for (; j + group <= n; j += group) {
            T t[group];
            typename v::R vt[group];
            const T* c[group];
            for (int q = 0; q < group; ++q) {
                t[q] = alpha * x[(j + q) * incx];
                vt[q] = v::set1(t[q]);
                c[q] = a + (j + q) * lda + i0;
            }
            long i = 0;
            for (; i + 2 * w <= mb; i += 2 * w) {
                auto y0 = v::load(yb + i), y1 = v::load(yb + i + w);
                for (int q = 0; q < group; ++q) {
                    y0 = v::fma(v::load(c[q] + i), vt[q], y0);
                    y1 = v::fma(v::load(c[q] + i + w), vt[q], y1);
                }
                v::store(yb + i, y0);
                v::store(yb + i + w, y1);
            }
            for (; i < mb; ++i) {
                T s = yb[i];
                for (int q = 0; q < group; ++q) s = std::fma(c[q][i], t[q], s);
                yb[i] = s;
            }
        }
        for (; j < n; ++j) axpy(mb, alpha * x[j * incx], a + j * lda + i0, yb);
    }
}

// Four columns at a time, two accumulators per column: eight independent chains of fused
// multiply-adds, and x is loaded once for the four columns.
template <class T>
void gemv_t(long m, long n, T alpha, const T* a, long lda, const T* x, T* y, long incy) {
    using v = V<T>;
    constexpr long w = v::w;
    long j = 0;
    for (; j + 4 <= n; j += 4) {
        const T* a0 = a + j * lda;
        const T* a1 = a0 + lda;
        const T* a2 = a1 + lda;
        const T* a3 = a2 + lda;
        auto p0 = v::zero(), p1 = v::zero(), p2 = v::zero(), p3 = v::zero();
        auto q0 = v::zero(), q1 = v::zero(), q2 = v::zero(), q3 = v::zero();
        long i = 0;
        for (; i + 2 * w <= m; i += 2 * w) {
            const auto x0 = v::load(x + i), x1 = v::load(x + i + w);
            p0 = v::fma(v::load(a0 + i), x0, p0);
            q0 = v::fma(v::load(a0 + i + w), x1, q0);
            p1 = v::fma(v::load(a1 + i), x0, p1);
            q1 = v::fma(v::load(a1 + i + w), x1, q1);
            p2 = v::fma(v::load(a2 + i), x0, p2);
            q2 = v::fma(v::load(a2 + i + w), x1, q2);
            p3 = v::fma(v::load(a3 + i), x0, p3);
            q3 = v::fma(v::load(a3 + i + w), x1, q3);
        }
        T s0 = v::sum(v::add(p0, q0)), s1 = v::sum(v::add(p1, q1));
        T s2 = v::sum(v::add(p2, q2)), s3 = v::sum(v::add(p3, q3));
        for (; i < m; ++i) {
            s0 += a0[i] * x[i];
            s1 += a1[i] * x[i];
            s2 += a2[i] * x[i];
            s3 += a3[i] * x[i];
        }
        y[j * incy] += alpha * s0;
        y[(j + 1) * incy] += alpha * s1;
        y[(j + 2) * incy] += alpha * s2;
        y[(j + 3) * incy] += alpha * s3;
    }
    for (; j < n; ++j) y[j * incy] += alpha * dot(m, a + j * lda, x);
}

// ---- complex data ----
//
// A complex array is its interleaved pairs of reals, so a register holds w/2 complex numbers.
// A product t * z is t_re * z + (-t_im, t_im) * swap(z), swap exchanging the two parts of each
// pair: two multiply-adds per register. The sums of products keep two accumulators, z * u and
// z * swap(u), whose lanes are combined with signs once at the end.

// The register whose even lanes hold `even` and odd lanes `odd`.
template <class v>
using Elem = decltype(v::sum(v::zero()));

template <class v>
typename v::R pairs(Elem<v> even, Elem<v> odd) {
    alignas(64) Elem<v> p[v::w];
    for (long i = 0; i < v::w; i += 2) p[i] = even, p[i + 1] = odd;
    return v::load(p);
}

// sum(a) and sum(a * (1, -1)): the two ways a complex sum of products is read out of an
// accumulator of products of reals.
template <class v>
auto sum_all(typename v::R a) {
    return v::sum(a);
}
template <class v>
auto sum_diff(typename v::R a) {
    return v::sum(v::mul(a, pairs<v>(1, -1)));
}

// Complex elements at p before the next 64-byte boundary (at most n). Wide loads and stores
// that straddle two cache lines cost twice, and the caller's arrays are rarely aligned to
// more than 16 bytes, so the element-wise loops (axpy, scal) start at a boundary of the array
// they store to; their scalar steps make exactly the fused operations of a vector lane, so an
// element's bits do not depend on where the array lies. Sums start at element 0: a peel would
// change their order with the alignment.
template <class T>
long to_line(const T* p, long n) {
    const auto skip = static_cast<long>((64 - reinterpret_cast<unsigned long>(p) % 64) % 64);
    if (skip % static_cast<long>(2 * sizeof(T)) != 0) return 0;
    const long k = skip / static_cast<long>(2 * sizeof(T));
    return k < n ? k : n;
}
template <class T, class v = V<T>>
void cdot(long n, const T* x, const T* y, bool conj_x, T* out) {
    constexpr long w = v::w;
    const long len = 2 * n;
    const T s = conj_x ? -1 : 1;
    T re = 0, im = 0;
    auto one = [&](long i) {
        const T xr = x[i], xi = s * x[i + 1];
        re += xr * y[i] - xi * y[i + 1];
        im += xr * y[i + 1] + xi * y[i];
    };
    long i = 0;
    typename v::R p[4], q[4];
    for (int u = 0; u < 4; ++u) p[u] = q[u] = v::zero();
    for (; i + 4 * w <= len; i += 4 * w)
        for (int u = 0; u < 4; ++u) {
            const auto x0 = v::load(x + i + u * w), y0 = v::load(y + i + u * w);
            p[u] = v::fma(x0, y0, p[u]);
            q[u] = v::fma(x0, v::swap(y0), q[u]);
        }
    for (; i + w <= len; i += w) {
        const auto x0 = v::load(x + i), y0 = v::load(y + i);
        p[0] = v::fma(x0, y0, p[0]);
        q[0] = v::fma(x0, v::swap(y0), q[0]);
    }
    const auto ps = v::add(v::add(p[0], p[1]), v::add(p[2], p[3]));
    const auto qs = v::add(v::add(q[0], q[1]), v::add(q[2], q[3]));
    // ps's lanes: xr yr, xi yi; qs's: xr yi, xi yr
    re += conj_x ? sum_all<v>(ps) : sum_diff<v>(ps);
    im += conj_x ? sum_diff<v>(qs) : sum_all<v>(qs);
    for (; i < len; i += 2) one(i);
    out[0] = re;
    out[1] = im;
}

template <class T, class v = V<T>>
void caxpy(long n, const T* a, const T* x, T* y) {
    constexpr long w = v::w;
    const long len = 2 * n;
    const auto ar = v::set1(a[0]), ai = pairs<v>(-a[1], a[1]);
    auto one = [&](long i) {  // as a vector lane: fma(-ai, xi, fma(ar, xr, yr)), ...
        const T xr = x[i], xi = x[i + 1];
        y[i] = std::fma(-a[1], xi, std::fma(a[0], xr, y[i]));
        y[i + 1] = std::fma(a[1], xr, std::fma(a[0], xi, y[i + 1]));
    };
    long i = 0;
    for (const long h = 2 * to_line(y, n); i < h; i += 2) one(i);
    for (; i + 4 * w <= len; i += 4 * w)
        for (int u = 0; u < 4; ++u) {
            const auto x0 = v::load(x + i + u * w);
            v::store(y + i + u * w, v::fma(ai, v::swap(x0), v::fma(ar, x0, v::load(y + i + u * w))));
        }
    for (; i + w <= len; i += w) {
        const auto x0 = v::load(x + i);
        v::store(y + i, v::fma(ai, v::swap(x0), v::fma(ar, x0, v::load(y + i))));
    }
    for (; i < len; i += 2) one(i);
}

template <class T, class v = V<T>>
void cscal(long n, const T* a, T* x) {
    constexpr long w = v::w;
    const long len = 2 * n;
    const auto ar = v::set1(a[0]), ai = pairs<v>(-a[1], a[1]);
    auto one = [&](long i) {  // as a vector lane: fma(-ai, xi, ar * xr), ...
        const T xr = x[i], xi = x[i + 1];
        x[i] = std::fma(-a[1], xi, a[0] * xr);
        x[i + 1] = std::fma(a[1], xr, a[0] * xi);
    };
    long i = 0;
    for (const long h = 2 * to_line(x, n); i < h; i += 2) one(i);
    for (; i + 4 * w <= len; i += 4 * w)
        for (int u = 0; u < 4; ++u) {
            const auto x0 = v::load(x + i + u * w);
            v::store(x + i + u * w, v::fma(ai, v::swap(x0), v::mul(ar, x0)));
        }
    for (; i + w <= len; i += w) {
        const auto x0 = v::load(x + i);
        v::store(x + i, v::fma(ai, v::swap(x0), v::mul(ar, x0)));
    }
    for (; i < len; i += 2) one(i);
}

// As the real gemv_n: rows in blocks whose part of y stays in the first-level cache, four
// columns added per pass over it. Each column's multiple t = alpha x(j) is applied as
// t_re * col into y and t_im * col into a second accumulator, which joins y with one swap per
// four columns.
template <class T>
void cgemv_n(long m, long n, const T* alpha, const T* a, long lda, const T* x, long incx, T* y) {
    using v = V<T>;
    constexpr long w = v::w;
    constexpr int group = 4;
    constexpr long block = 16384 / static_cast<long>(sizeof(T));  // reals of y per block
    const auto sign = pairs<v>(-1, 1);
    for (long i0 = 0; i0 < 2 * m; i0 += block) {
        const long mb = 2 * m - i0 < block ? 2 * m - i0 : block;
        T* yb = y + i0;
        for (long j = 0; j < n; j += group) {
            const int cols = n - j < group ? static_cast<int>(n - j) : group;
            T tr[group], ti[group];
            typename v::R vr[group], vi[group];
            const T* c[group];
            for (int q = 0; q < group; ++q) {
                const int col = q < cols ? q : 0;  // the columns past n repeat one with t = 0
                const T* xj = x + 2 * (j + col) * incx;
                tr[q] = q < cols ? alpha[0] * xj[0] - alpha[1] * xj[1] : 0;
                ti[q] = q < cols ? alpha[0] * xj[1] + alpha[1] * xj[0] : 0;
                vr[q] = v::set1(tr[q]);
                vi[q] = v::set1(ti[q]);
                c[q] = a + 2 * ((j + col) * lda) + i0;
            }
            long i = 0;
            for (; i + 2 * w <= mb; i += 2 * w) {
                auto y0 = v::load(yb + i), y1 = v::load(yb + i + w);
                auto u0 = v::zero(), u1 = v::zero();
                for (int q = 0; q < group; ++q) {
                    const auto c0 = v::load(c[q] + i), c1 = v::load(c[q] + i + w);
                    y0 = v::fma(c0, vr[q], y0);
                    u0 = v::fma(c0, vi[q], u0);
                    y1 = v::fma(c1, vr[q], y1);
                    u1 = v::fma(c1, vi[q], u1);
                }
                v::store(yb + i, v::fma(sign, v::swap(u0), y0));
                v::store(yb + i + w, v::fma(sign, v::swap(u1), y1));
            }
            for (; i < mb; i += 2) {
                T re = yb[i], im = yb[i + 1];
                for (int q = 0; q < cols; ++q) {
                    const T cr = c[q][i], ci = c[q][i + 1];
                    re += tr[q] * cr - ti[q] * ci;
                    im += tr[q] * ci + ti[q] * cr;
                }
                yb[i] = re;
                yb[i + 1] = im;
            }
        }
    }
}

// As the real gemv_t: four columns against one pass over x, two accumulators per column
// (col * x and col * swap(x)); swap(x) is formed once for the four.
template <class T>
void cgemv_t(long m, long n, const T* alpha, const T* a, long lda, const T* x, T* y, long incy, bool conj_a) {
    using v = V<T>;
    constexpr long w = v::w;
    constexpr int group = 4;
    const long len = 2 * m;
    const T s = conj_a ? -1 : 1;
    for (long j = 0; j < n; j += group) {
        const int cols = n - j < group ? static_cast<int>(n - j) : group;
        const T* c[group];
        for (int q = 0; q < group; ++q) c[q] = a + 2 * (j + (q < cols ? q : 0)) * lda;
        typename v::R p[group], r[group];
        for (int q = 0; q < group; ++q) p[q] = r[q] = v::zero();
        long i = 0;
        for (; i + w <= len; i += w) {
            const auto x0 = v::load(x + i), xs = v::swap(x0);
            for (int q = 0; q < group; ++q) {
                const auto c0 = v::load(c[q] + i);
                p[q] = v::fma(c0, x0, p[q]);
                r[q] = v::fma(c0, xs, r[q]);
            }
        }
        for (int q = 0; q < cols; ++q) {
            // p's lanes: ar xr, ai xi; r's: ar xi, ai xr
            T re = conj_a ? sum_all<v>(p[q]) : sum_diff<v>(p[q]);
            T im = conj_a ? sum_diff<v>(r[q]) : sum_all<v>(r[q]);
            for (long k = i; k < len; k += 2) {
                const T ar = c[q][k], ai = s * c[q][k + 1];
                re += ar * x[k] - ai * x[k + 1];
                im += ar * x[k + 1] + ai * x[k];
            }
            T* yj = y + 2 * (j + q) * incy;
            yj[0] += alpha[0] * re - alpha[1] * im;
            yj[1] += alpha[0] * im + alpha[1] * re;
        }
    }
}


// Q columns of a Hermitian product over the same rows in one pass: y(i) += sum of t_q c_q(i),
// out_q := sum of conj(c_q(i)) * x(i). y and x are read once for all of them, and several
// column streams keep more memory requests in flight than one.
template <class T, int Q>
void caxpy_dotc_cols(long n, const T* t, const T* const* c, const T* x, T* y, T* out) {
    using v = V<T>;
    constexpr long w = v::w;
    const long len = 2 * n;
    typename v::R tr[Q], ti[Q], p[Q], r[Q];
    for (int q = 0; q < Q; ++q) {
        tr[q] = v::set1(t[2 * q]);
        ti[q] = pairs<v>(-t[2 * q + 1], t[2 * q + 1]);
        p[q] = r[q] = v::zero();
    }
    long i = 0;
    for (; i + w <= len; i += w) {
        const auto xv = v::load(x + i), xs = v::swap(xv);
        auto yv = v::load(y + i);
        for (int q = 0; q < Q; ++q) {
            const auto a = v::load(c[q] + i);
            yv = v::fma(ti[q], v::swap(a), v::fma(tr[q], a, yv));
            p[q] = v::fma(a, xv, p[q]);
            r[q] = v::fma(a, xs, r[q]);
        }
        v::store(y + i, yv);
    }
    // p's lanes: cr xr, ci xi; r's: cr xi, ci xr
    T re[Q], im[Q];
    for (int q = 0; q < Q; ++q) {
        re[q] = sum_all<v>(p[q]);
        im[q] = sum_diff<v>(r[q]);
    }
    for (; i < len; i += 2) {
        T yr = y[i], yi = y[i + 1];
        for (int q = 0; q < Q; ++q) {
            const T ar = c[q][i], ai = c[q][i + 1];
            yr += t[2 * q] * ar - t[2 * q + 1] * ai;
            yi += t[2 * q] * ai + t[2 * q + 1] * ar;
            re[q] += ar * x[i] + ai * x[i + 1];
            im[q] += ar * x[i + 1] - ai * x[i];
        }
        y[i] = yr;
        y[i + 1] = yi;
    }
    for (int q = 0; q < Q; ++q) {
        out[2 * q] = re[q];
        out[2 * q + 1] = im[q];
    }
}

// One column: the group of one.
template <class T>
void caxpy_dotc(long n, const T* t, const T* col, const T* x, T* y, T* out) {
    caxpy_dotc_cols<T, 1>(n, t, &col, x, y, out);
}

}  // namespace
