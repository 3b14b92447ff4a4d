// The scaled complementary error function of a complex argument, w(z) = exp(-z^2) erfc(-iz).
#include <cmath>
#include <complex>

#include "frame/frame.hpp"
#include "special/functions.hpp"
#include "special/tables.hpp"

namespace qnum::special {
namespace {

// Complex arithmetic in the wide precision, spelled out: the library's own checks cover the
// infinite cases, and the plain formulas keep the polynomial loop fast.
template <class W>
struct Cx {
    W re, im;
};
template <class W>
Cx<W> mul(Cx<W> a, Cx<W> b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
template <class W>
Cx<W> div(Cx<W> a, Cx<W> b) {
    // Smith's algorithm keeps the quotient of large operands from overflowing.
    if (std::fabs(b.re) >= std::fabs(b.im)) {
        const W r = b.im / b.re, d = b.re + b.im * r;
        return {(a.re + a.im * r) / d, (a.im - a.re * r) / d};
    }
    const W r = b.re / b.im, d = b.im + b.re * r;
    return {(a.re * r + a.im) / d, (a.im * r - a.re) / d};
}

// Weideman's rational approximation (SIAM J. Numer. Anal. 31 (1994) 1497-1518) for Im z >= 0:
// w = 2 p(Z)/(L - iz)^2 + 1/(sqrt(pi)(L - iz)), Z = (L + iz)/(L - iz), with 40 coefficients
// computed by tools/refdata/gen_special_tables.py (relative error near 2e-16 on its test grid).
template <class W>
Cx<W> upper(W x, W y) {
    const W l = static_cast<W>(table::weideman_l);
    const Cx<W> lm{l + y, -x}, lp{l - y, x};
    const Cx<W> z = div(lp, lm);
    Cx<W> p{0, 0};
    for (int k = 39; k >= 0; --k) {
        p = mul(p, z);
        p.re += static_cast<W>(table::weideman[k]);
    }
    const Cx<W> first = div(Cx<W>{2 * p.re, 2 * p.im}, mul(lm, lm));
    const Cx<W> second = div(Cx<W>{W(0.5641895835477562869480794515607725858L), 0}, lm);  // 1/sqrt(pi)
    return {first.re + second.re, first.im + second.im};
}

}  // namespace

template <class T>
std::complex<T> erfe(std::complex<T> z) {
    using W = Wide<T>;
    frame::Level level("l_erfe");
    const W x = z.real(), y = z.imag();
    if (y >= 0) {
        const Cx<W> w = upper(x, y);
        return {static_cast<T>(w.re), static_cast<T>(w.im)};
    }
    // Below the real axis w(z) = 2 exp(-z^2) - w(-z), and exp(-z^2) grows like exp(y^2 - x^2).
    const W growth = (y - x) * (y + x);
    if (growth > std::log(W(Mach<T>::huge()))) {
        frame::raise(frame::Type::Fatal, err::erfe_overflow, frame::Cplx{{double(x), double(y)}});
        return {Mach<T>::nan(), Mach<T>::nan()};
    }
    const Cx<W> w = upper(-x, -y);
    const W e = 2 * std::exp(growth), angle = -2 * x * y;
    return {static_cast<T>(e * std::cos(angle) - w.re), static_cast<T>(e * std::sin(angle) - w.im)};
}

template std::complex<float> erfe<float>(std::complex<float>);
template std::complex<double> erfe<double>(std::complex<double>);

}  // namespace qnum::special
