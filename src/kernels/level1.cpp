// Vector kernels (BLAS Level 1): portable loops, with the long unit-stride loops handed to
// the tuned tables of the processor.
#include "kernels/level1.hpp"

#include <cmath>
#include <cstring>

#include "kernels/scalar.hpp"
#include "kernels/tuned.hpp"

namespace qnum::kern {
namespace {

template <class T>
T dot_any(int n, const T* x, int incx, const T* y, int incy, bool conj_x) {
    if (n < 1) return T(0);
    if (incx == 1 && incy == 1) return dot_unit<T>(n, x, y, conj_x);
    idx ix = first(n, incx), iy = first(n, incy);
    T s{};
    for (int i = 0; i < n; ++i, ix += incx, iy += incy) s += mul(conj_if(conj_x, x[ix]), y[iy]);
    return s;
}

// Sum of squares and largest magnitude of the real numbers x[0], x[inc], ... (n of them),
// the sum accumulated in double.
template <class R>
double sumsq(idx n, const R* x, idx inc, R* amax) {
    if (inc == 1) {
        if (auto* t = tuned::ops<R>()) return t->sumsq(n, x, amax);
    }
    double s0 = 0, s1 = 0, m = 0;
    idx i = 0, p = 0;
    for (; i + 2 <= n; i += 2, p += 2 * inc) {
        double a = x[p], b = x[p + inc];
        s0 += a * a;
        s1 += b * b;
        m = std::fmax(m, std::fmax(std::fabs(a), std::fabs(b)));
    }
    if (i < n) {
        double a = x[p];
        s0 += a * a;
        m = std::fmax(m, std::fabs(a));
    }
    *amax = static_cast<R>(m);
    return s0 + s1;
}

// The norm of the reals x[0], x[inc], ... A float's square cannot overflow or underflow in
// double, so float data need no scaling. For double data the plain sum is kept when it is
// finite and the largest element is at least sqrt(tiny/eps): the squares lost to underflow
// then add up to less than n * 2^-1074 against a sum of at least 2^-970, far below the
// rounding error. Otherwise a second pass scales by the power of two that brings the largest
// element into [1, 2); scaling by a power of two is exact, and elements that underflow after
// it lie below 2^-1022 relative to the largest.
template <class R>
R norm_of(idx n, const R* x, idx inc) {
    R amax = 0;
    double s = sumsq(n, x, inc, &amax);
    if constexpr (std::is_same_v<R, float>) {
        return static_cast<float>(std::sqrt(s));
    } else {
        if (std::isnan(s)) return s;
        const double small = std::sqrt(Prec<double>::tiny() / Prec<double>::eps());
        if (std::isfinite(s) && amax >= small) return std::sqrt(s);
        if (amax == 0 || std::isinf(amax)) return amax;
        // 2^-e itself overflows when amax is subnormal, so it is applied as two exact factors.
        const int e = std::ilogb(amax), e1 = -e / 2;
        const double s1 = std::ldexp(1.0, e1), s2 = std::ldexp(1.0, -e - e1);
        double t = 0;
        for (idx i = 0, p = 0; i < n; ++i, p += inc) {
            double a = x[p] * s1 * s2;
            t += a * a;
        }
        return std::ldexp(std::sqrt(t), e);
    }
}

}  // namespace

template <class T>
T dot(int n, const T* x, int incx, const T* y, int incy) {
    return dot_any(n, x, incx, y, incy, false);
}

template <class T>
T dotc(int n, const T* x, int incx, const T* y, int incy) {
    return dot_any(n, x, incx, y, incy, true);
}

template <class T>
void axpy(int n, T a, const T* x, int incx, T* y, int incy) {
    if (n < 1 || a == T(0)) return;
    if (incx == 1 && incy == 1) return axpy_unit<T>(n, a, x, y, false);
    idx ix = first(n, incx), iy = first(n, incy);
    for (int i = 0; i < n; ++i, ix += incx, iy += incy) y[iy] += mul(a, x[ix]);
}

template <class T>
void scal(int n, T a, T* x, int incx) {
    if (n < 1) return;
    if constexpr (is_complex_v<T>) {
        auto* t = tuned::complex_ops<Real<T>>();
        if (t && (incx == 1 || incx == -1)) return t->scal(n, reals(&a), reals(x));
    }
    idx ix = first(n, incx);
    for (int i = 0; i < n; ++i, ix += incx) x[ix] = mul(a, x[ix]);
}

template <class T>
void rscal(int n, Real<T> a, T* x, int incx) {
    if (n < 1) return;
    idx ix = first(n, incx);
    for (int i = 0; i < n; ++i, ix += incx) x[ix] *= a;
}

template <class T>
void copy(int n, const T* x, int incx, T* y, int incy) {
    if (n < 1) return;
    // Equal unit increments make the copy one block move. Where callers overlap the two
    // arrays (the whole-matrix copies), they choose the walk direction that memmove takes, so
    // the block move and the element walk agree.
    if (incx == incy && (incx == 1 || incx == -1)) {
        std::memmove(static_cast<void*>(y), static_cast<const void*>(x), sizeof(T) * n);
        return;
    }
    idx ix = first(n, incx), iy = first(n, incy);
    for (int i = 0; i < n; ++i, ix += incx, iy += incy) y[iy] = x[ix];
}

template <class T>
void swap(int n, T* x, int incx, T* y, int incy) {
    if (n < 1) return;
    idx ix = first(n, incx), iy = first(n, incy);
    for (int i = 0; i < n; ++i, ix += incx, iy += incy) {
        T t = x[ix];
        x[ix] = y[iy];
        y[iy] = t;
    }
}

template <class T>
void rot(int n, T* x, int incx, T* y, int incy, Real<T> c, Real<T> s) {
    if (n < 1) return;
    idx ix = first(n, incx), iy = first(n, incy);
    for (int i = 0; i < n; ++i, ix += incx, iy += incy) {
        T u = x[ix], v = y[iy];
        x[ix] = c * u + s * v;
        y[iy] = c * v - s * u;
    }
}

template <class T>
void rotm(int n, T* x, int incx, T* y, int incy, const T* param) {
    const T flag = param[0];
    if (n < 1 || flag == T(-2)) return;
    const T h11 = param[1], h21 = param[2], h12 = param[3], h22 = param[4];
    idx ix = first(n, incx), iy = first(n, incy);
    for (int i = 0; i < n; ++i, ix += incx, iy += incy) {
        T w = x[ix], z = y[iy];
        if (flag < 0) {
            x[ix] = w * h11 + z * h12;
            y[iy] = w * h21 + z * h22;
        } else if (flag == 0) {
            x[ix] = w + z * h12;
            y[iy] = w * h21 + z;
        } else {
            x[ix] = w * h11 + z;
            y[iy] = -w + h22 * z;
        }
    }
}

// Real data: r = ±sqrt(a² + b²) with the sign of the larger of a and b, computed as
// scale·sqrt((a/scale)² + (b/scale)²), scale = |a| + |b|, so no square overflows; z codes the
// rotation in one number (s if |a| > |b|, 1/c otherwise, 1 when c = 0). Complex data: c real,
// s = (a/|a|)·conj(b)/norm, a := (a/|a|)·norm; a = 0 gives c = 0, s = 1, a := b.
template <class T>
void rotg(T* a, T* b, Real<T>* c, T* s) {
    using R = Real<T>;
    if constexpr (is_complex_v<T>) {
        const R aa = std::abs(*a);
        if (aa == 0) {
            *c = 0;
            *s = T(1);
            *a = *b;
            return;
        }
        const R scale = aa + std::abs(*b);
        const R ra = aa / scale, rb = std::abs(*b) / scale;
        const R norm = scale * std::sqrt(ra * ra + rb * rb);
        const T alpha = *a / aa;
        *c = aa / norm;
        *s = mul(alpha, conj(*b)) / norm;
        *a = alpha * norm;
    } else {
        const R roe = std::fabs(*a) > std::fabs(*b) ? *a : *b;
        const R scale = std::fabs(*a) + std::fabs(*b);
        if (scale == 0) {
            *c = 1;
            *s = 0;
            *a = 0;
            *b = 0;
            return;
        }
        const R ra = *a / scale, rb = *b / scale;
        R r = scale * std::sqrt(ra * ra + rb * rb);
        if (roe < 0) r = -r;
        *c = *a / r;
        *s = *b / r;
        R z = 1;
        if (std::fabs(*a) > std::fabs(*b)) z = *s;
        if (std::fabs(*b) >= std::fabs(*a) && *c != 0) z = 1 / *c;
        *a = r;
        *b = z;
    }
}

// The modified rotation of Hammarling and of Lawson, Hanson, Kincaid and Krogh (ACM TOMS 5,
// 1979, pp. 308-323): H maps (sqrt(d1) x1, sqrt(d2) y1) to (sqrt(d1') x1', 0). The weights are
// kept within [1/gamma^2, gamma^2], gamma = 4096, by rescaling H's rows; every rescaling turns
// H into the full form (flag -1). A negative d1, or an update that would make a weight
// negative, sets everything to zero with flag -1 (Hopkins, ACM TOMS 23, 1997, pp. 71-76).
template <class T>
void rotmg(T* d1, T* d2, T* x1, T y1, T* param) {
    const T gam = 4096, gamsq = gam * gam, rgamsq = 1 / gamsq;
    T flag, h11 = 0, h12 = 0, h21 = 0, h22 = 0;
    auto zero_all = [&] {
        flag = -1;
        h11 = h12 = h21 = h22 = 0;
        *d1 = *d2 = *x1 = 0;
    };
    if (*d1 < 0) {
        zero_all();
    } else {
        const T p2 = *d2 * y1;
        if (p2 == 0) {
            param[0] = -2;
            return;
        }
        const T p1 = *d1 * *x1, q2 = p2 * y1, q1 = p1 * *x1;
        if (std::fabs(q1) > std::fabs(q2)) {
            h21 = -y1 / *x1;
            h12 = p2 / p1;
            const T u = 1 - h12 * h21;
            if (u > 0) {
                flag = 0;
                *d1 /= u;
                *d2 /= u;
                *x1 *= u;
            } else {
                zero_all();
            }
        } else if (q2 < 0) {
            zero_all();
        } else {
            flag = 1;
            h11 = p1 / p2;
            h22 = *x1 / y1;
            const T u = 1 + h11 * h22, t = *d2 / u;
            *d2 = *d1 / u;
            *d1 = t;
            *x1 = y1 * u;
        }
        // The implicit ones of the short forms become explicit before the first rescaling;
        // a matrix already in full form keeps the entries that earlier rescalings made.
        auto full_form = [&] {
            if (flag == 0) {
                h11 = h22 = 1;
            } else if (flag == 1) {
                h21 = -1;
                h12 = 1;
            }
            flag = -1;
        };
        if (*d1 != 0) {
            while (*d1 <= rgamsq || *d1 >= gamsq) {
                full_form();
                if (*d1 <= rgamsq) {
                    *d1 *= gamsq;
                    *x1 /= gam;
                    h11 /= gam;
                    h12 /= gam;
                } else {
                    *d1 /= gamsq;
                    *x1 *= gam;
                    h11 *= gam;
                    h12 *= gam;
                }
            }
        }
        if (*d2 != 0) {
            while (std::fabs(*d2) <= rgamsq || std::fabs(*d2) >= gamsq) {
                full_form();
                if (std::fabs(*d2) <= rgamsq) {
                    *d2 *= gamsq;
                    h21 /= gam;
                    h22 /= gam;
                } else {
                    *d2 /= gamsq;
                    h21 *= gam;
                    h22 *= gam;
                }
            }
        }
    }
    if (flag < 0) {
        param[1] = h11;
        param[2] = h21;
        param[3] = h12;
        param[4] = h22;
    } else if (flag == 0) {
        param[2] = h21;
        param[3] = h12;
    } else {
        param[1] = h11;
        param[4] = h22;
    }
    param[0] = flag;
}

template <class T>
Real<T> nrm2(int n, const T* x, int incx) {
    using R = Real<T>;
    if (n < 1) return 0;
    const R* r = reinterpret_cast<const R*>(x);
    const idx start = first(n, incx);
    if constexpr (is_complex_v<T>) {
        // A complex vector is a vector of 2n reals: with unit stride one contiguous run,
        // otherwise the two parts of each element are summed in one pass.
        if (incx == 1 || incx == -1) return norm_of<R>(2 * static_cast<idx>(n), r, 1);
        R re = norm_of<R>(n, r + 2 * start, 2 * static_cast<idx>(incx));
        R im = norm_of<R>(n, r + 2 * start + 1, 2 * static_cast<idx>(incx));
        return std::hypot(re, im);
    } else {
        if (incx == -1) return norm_of<R>(n, r, 1);
        return norm_of<R>(n, r + start, incx);
    }
}

template <class T>
Real<T> asum(int n, const T* x, int incx) {
    using R = Real<T>;
    if (n < 1) return 0;
    R s0 = 0, s1 = 0;
    idx ix = first(n, incx);
    int i = 0;
    for (; i + 2 <= n; i += 2, ix += 2 * static_cast<idx>(incx)) {
        s0 += abs1(x[ix]);
        s1 += abs1(x[ix + incx]);
    }
    if (i < n) s0 += abs1(x[ix]);
    return s0 + s1;
}

template <class T>
int iamax(int n, const T* x, int incx) {
    if (n < 1) return 0;
    idx ix = first(n, incx);
    int best = 1;
    Real<T> big = abs1(x[ix]);
    ix += incx;
    for (int i = 2; i <= n; ++i, ix += incx) {
        Real<T> v = abs1(x[ix]);
        if (v > big) {
            big = v;
            best = i;
        }
    }
    return best;
}

#define QNUM_KERN_LEVEL1(T)                                        \
    template T dot<T>(int, const T*, int, const T*, int);          \
    template T dotc<T>(int, const T*, int, const T*, int);         \
    template void axpy<T>(int, T, const T*, int, T*, int);         \
    template void scal<T>(int, T, T*, int);                        \
    template void rscal<T>(int, Real<T>, T*, int);                 \
    template void copy<T>(int, const T*, int, T*, int);            \
    template void swap<T>(int, T*, int, T*, int);                  \
    template void rot<T>(int, T*, int, T*, int, Real<T>, Real<T>); \
    template void rotg<T>(T*, T*, Real<T>*, T*);                   \
    template Real<T> nrm2<T>(int, const T*, int);                  \
    template Real<T> asum<T>(int, const T*, int);                  \
    template int iamax<T>(int, const T*, int);
QNUM_KERN_LEVEL1(float)
QNUM_KERN_LEVEL1(double)
QNUM_KERN_LEVEL1(std::complex<float>)
QNUM_KERN_LEVEL1(std::complex<double>)
#undef QNUM_KERN_LEVEL1
template void rotm<float>(int, float*, int, float*, int, const float*);
template void rotm<double>(int, double*, int, double*, int, const double*);
template void rotmg<float>(float*, float*, float*, float, float*);
template void rotmg<double>(double*, double*, double*, double, double*);

}  // namespace qnum::kern
