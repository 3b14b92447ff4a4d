// The portable matrix-product engine: the shared driver over a vector table of plain arrays,
// which the compiler maps to whatever vector unit the baseline target has.
#include "kernels/gemm_driver.hpp"

namespace qnum::kern::gemm_impl {
namespace {

template <class R_, int W>
struct PlainVec {
    using R = R_;
    static constexpr int w = W;
    struct reg {
        R x[W];
    };
    static reg zero() {
        reg r;
        for (int i = 0; i < W; ++i) r.x[i] = 0;
        return r;
    }
    static reg load(const R* p) {
        reg r;
        for (int i = 0; i < W; ++i) r.x[i] = p[i];
        return r;
    }
    static reg bcast(const R* p) {
        reg r;
        for (int i = 0; i < W; ++i) r.x[i] = *p;
        return r;
    }
    static reg fma(reg a, reg b, reg c) {
        for (int i = 0; i < W; ++i) c.x[i] += a.x[i] * b.x[i];
        return c;
    }
    static reg mul(reg a, reg b) {
        for (int i = 0; i < W; ++i) a.x[i] *= b.x[i];
        return a;
    }
    static reg add(reg a, reg b) {
        for (int i = 0; i < W; ++i) a.x[i] += b.x[i];
        return a;
    }
    static void store(R* p, reg a) {
        for (int i = 0; i < W; ++i) p[i] = a.x[i];
    }
    static reg swap(reg a) {
        reg r;
        for (int i = 0; i < W; i += 2) {
            r.x[i] = a.x[i + 1];
            r.x[i + 1] = a.x[i];
        }
        return r;
    }
    static reg addsub(reg a, reg b) {
        for (int i = 0; i < W; i += 2) {
            a.x[i] -= b.x[i];
            a.x[i + 1] += b.x[i + 1];
        }
        return a;
    }
};

using VS = PlainVec<float, 4>;
using VD = PlainVec<double, 2>;

}  // namespace

template <>
Engine<float> engine_portable<float>() {
    return Kernel<float, VS, 2, 4, 128, 256, 2048>::engine();
}
template <>
Engine<double> engine_portable<double>() {
    return Kernel<double, VD, 2, 4, 128, 256, 2048>::engine();
}
template <>
Engine<std::complex<float>> engine_portable<std::complex<float>>() {
    return Kernel<std::complex<float>, VS, 2, 4, 64, 256, 1024>::engine();
}
template <>
Engine<std::complex<double>> engine_portable<std::complex<double>>() {
    return Kernel<std::complex<double>, VD, 2, 4, 64, 256, 1024>::engine();
}

}  // namespace qnum::kern::gemm_impl
