// The general matrix product: the engine chosen by CPU detection, its per-thread packing
// workspace, and kern::gemm.
#include <cstdint>
#include <cstdlib>

#include "frame/frame.hpp"
#include "frame/registry.hpp"
#include "frame/cpu.hpp"
#include "kernels/gemm_engine.hpp"
#include "kernels/level3_util.hpp"

namespace qnum::kern {
namespace gemm_impl {
namespace {

// The packing buffers of one thread. They are kept from call to call: a fresh multi-megabyte
// allocation would cost a page fault per page on every call, as much as a small product.
struct Workspace {
    void* p;
    std::size_t bytes;
};

registry::OnceFlag key_once{0};
int key = 0;

void free_workspace(void* v) {
    Workspace* w = static_cast<Workspace*>(v);
    if (w != nullptr) std::free(w->p);
    std::free(w);
}

void make_key() {
    if (registry::key_create(&key, free_workspace) != registry::ok) key = 0;
}

constexpr std::size_t align = 64;

std::size_t round_up(std::size_t n) { return (n + align - 1) / align * align; }

// This thread's workspace of at least `bytes`, or null when memory or a key is lacking.
void* thread_workspace(std::size_t bytes) {
    registry::once(key_once, make_key);
    if (key == 0) return nullptr;
    Workspace* w = static_cast<Workspace*>(registry::get_value(key));
    if (w == nullptr) {
        w = static_cast<Workspace*>(std::calloc(1, sizeof(Workspace)));
        if (w == nullptr) return nullptr;
        if (registry::set_value(key, w) != registry::ok) {
            std::free(w);
            return nullptr;
        }
    }
    if (w->bytes < bytes) {
        std::free(w->p);
        w->p = std::aligned_alloc(align, round_up(bytes));
        w->bytes = w->p != nullptr ? bytes : 0;
    }
    return w->p;
}

}  // namespace

template <class T>
Engine<T> engine() {
    switch (cpu::active()) {
        case cpu::Path::Avx512: return engine_avx512<T>();
        case cpu::Path::Avx2: return engine_avx2<T>();
        default: return engine_portable<T>();
    }
}

namespace {

// The layout of the workspace for engine e: A's buffer, B's, the scratch square.
template <class T>
struct Layout {
    std::size_t b_offset, scratch_offset, bytes;
    explicit Layout(const Engine<T>& e)
        : b_offset(round_up(e.a_size() * sizeof(T))),
          scratch_offset(b_offset + round_up(e.b_size() * sizeof(T))),
          bytes(scratch_offset + round_up(sizeof(T) * scratch_side * scratch_side)) {}
};

// This thread's workspace laid out for e, or null with 201 raised (see reserve).
template <class T>
char* workspace_for(const Engine<T>& e, const char* name) {
    const Layout<T> layout(e);
    void* w = thread_workspace(layout.bytes);
    if (w == nullptr) {
        const frame::Str what{"workspace"};
        const frame::Int size{static_cast<int>(layout.bytes / sizeof(T))};
        if (name != nullptr)
            frame::raise_in(name, frame::Type::Terminal, err::no_memory, what, size);
        else
            frame::raise(frame::Type::Terminal, err::no_memory, what, size);
    }
    return static_cast<char*>(w);
}

}  // namespace

template <class T>
bool reserve(const char* name) {
    return workspace_for(engine<T>(), name) != nullptr;
}

template <class T>
T* scratch() {
    const Engine<T> e = engine<T>();
    return reinterpret_cast<T*>(workspace_for(e, nullptr) + Layout<T>(e).scratch_offset);
}

template <class T>
bool run(const Problem<T>& p) {
    const Engine<T> e = engine<T>();
    char* w = workspace_for(e, nullptr);
    if (w == nullptr) return false;
    e.run(p, reinterpret_cast<T*>(w), reinterpret_cast<T*>(w + Layout<T>(e).b_offset));
    return true;
}

template Engine<float> engine<float>();
template Engine<double> engine<double>();
template Engine<std::complex<float>> engine<std::complex<float>>();
template Engine<std::complex<double>> engine<std::complex<double>>();
template bool reserve<float>(const char*);
template bool reserve<double>(const char*);
template bool reserve<std::complex<float>>(const char*);
template bool reserve<std::complex<double>>(const char*);
template float* scratch<float>();
template double* scratch<double>();
template std::complex<float>* scratch<std::complex<float>>();
template std::complex<double>* scratch<std::complex<double>>();
template bool run<float>(const Problem<float>&);
template bool run<double>(const Problem<double>&);
template bool run<std::complex<float>>(const Problem<std::complex<float>>&);
template bool run<std::complex<double>>(const Problem<std::complex<double>>&);

}  // namespace gemm_impl

template <class T>
void gemm(char ta, char tb, int m, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, T beta,
          T* c, int ldc) {
    if (m == 0 || n == 0) return;
    if (alpha == T(0) || k == 0) {
        scale(m, n, beta, c, ldc);
        return;
    }
    using gemm_impl::Operand;
    gemm_impl::Problem<T> p{m, n, k, alpha, beta, Operand<T>{a, lda, ta}, Operand<T>{b, ldb, tb}, c, ldc};
    gemm_impl::run(p);
}

template void gemm<float>(char, char, int, int, int, float, const float*, int, const float*, int, float,
                          float*, int);
template void gemm<double>(char, char, int, int, int, double, const double*, int, const double*, int, double,
                           double*, int);
template void gemm<std::complex<float>>(char, char, int, int, int, std::complex<float>,
                                        const std::complex<float>*, int, const std::complex<float>*, int,
                                        std::complex<float>, std::complex<float>*, int);
template void gemm<std::complex<double>>(char, char, int, int, int, std::complex<double>,
                                         const std::complex<double>*, int, const std::complex<double>*, int,
                                         std::complex<double>, std::complex<double>*, int);

}  // namespace qnum::kern
