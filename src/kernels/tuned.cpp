// Choice of the tuned kernel table for the path that the CPU detection names.
#include "kernels/tuned.hpp"

#include "frame/cpu.hpp"

namespace qnum::kern::tuned {

template <>
const Ops<float>* ops<float>() {
    switch (cpu::active()) {
        case cpu::Path::Avx512: return &avx512::ops_float;
        case cpu::Path::Avx2: return &avx2::ops_float;
        default: return nullptr;
    }
}

template <>
const Ops<double>* ops<double>() {
    switch (cpu::active()) {
        case cpu::Path::Avx512: return &avx512::ops_double;
        case cpu::Path::Avx2: return &avx2::ops_double;
        default: return nullptr;
    }
}

template <>
const ComplexOps<float>* complex_ops<float>() {
    switch (cpu::active()) {
        case cpu::Path::Avx512: return &avx512::ops_complex_float;
        case cpu::Path::Avx2: return &avx2::ops_complex_float;
        default: return nullptr;
    }
}

template <>
const ComplexOps<double>* complex_ops<double>() {
    switch (cpu::active()) {
        case cpu::Path::Avx512: return &avx512::ops_complex_double;
        case cpu::Path::Avx2: return &avx2::ops_complex_double;
        default: return nullptr;
    }
}

}  // namespace qnum::kern::tuned
