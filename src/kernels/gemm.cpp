// The general matrix product: the engine chosen by CPU detection, its per-thread packing
// workspace, the split of large products over a team of threads, and kern::gemm.
#include <cstdint>
#include <cstdlib>

#include "frame/frame.hpp"
#include "frame/registry.hpp"
#include "frame/cpu.hpp"
#include "frame/threads.hpp"
#include "kernels/gemm_engine.hpp"
#include "kernels/level3_util.hpp"
#include "kernels/team.hpp"

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

namespace {

// Below this many multiply-adds per thread, starting a team costs more than it saves.
constexpr double work_per_thread = 80.0 * 80 * 80;
// Parts per member where C is large enough: a member slowed down by the rest of the machine
// then holds back the others by less than a whole share.
constexpr int parts_per_member = 2;

// How the rows and columns of C are cut among the members: tm by tn parts, each made of
// whole register blocks (the last one may end at the edge of C).
struct Grid {
    int tm = 1, tn = 1;
    Index um = 1, un = 1;  // register blocks along the rows and the columns
    int mr = 1, nr = 1;

    Index cut(Index units, int parts, int k, int width, Index size) const {
        const Index at = units * k / parts * width;
        return at < size ? at : size;
    }
    template <class T>
    Part part(const Problem<T>& p, int index) const {
        const int a = index % tm, b = index / tm;
        return Part{cut(um, tm, a, mr, p.m), cut(um, tm, a + 1, mr, p.m), cut(un, tn, b, nr, p.n),
                    cut(un, tn, b + 1, nr, p.n)};
    }
};

// The most nearly square parts for `threads` members; fewer members when C has fewer
// register blocks than that.
template <class T>
Grid grid_for(const Problem<T>& p, const Engine<T>& e, int threads) {
    Grid g;
    g.mr = e.mr, g.nr = e.nr;
    g.um = (p.m + e.mr - 1) / e.mr, g.un = (p.n + e.nr - 1) / e.nr;
    for (int t = threads; t > 1; --t) {
        double best = 0;
        for (int tm = 1; tm <= t; ++tm) {
            if (t % tm != 0) continue;
            const int tn = t / tm;
            if (tm > g.um || tn > g.un) continue;
            const double h = static_cast<double>(p.m) / tm, w = static_cast<double>(p.n) / tn;
            const double skew = h > w ? h / w : w / h;
            if (best == 0 || skew < best) best = skew, g.tm = tm, g.tn = tn;
        }
        if (best != 0) break;
    }
    return g;
}

// The multiply-adds of a product, in real ones.
template <class T>
double work(const Problem<T>& p) {
    return static_cast<double>(p.m) * p.n * p.k * (is_complex_v<T> ? 4 : 1);
}

// How many threads a product deserves.
template <class T>
int team_size(const Problem<T>& p) {
    const int configured = threads::configured();
    if (configured <= 1) return 1;
    const double useful = work(p) / work_per_thread;
    return useful < configured ? static_cast<int>(useful) : configured;
}

template <class T>
struct Shared {
    const Problem<T>& p;
    const Engine<T>& e;
    Grid g;
};

// One part of C on the calling member, in its own workspace.
template <class T>
bool run_part(void* context, int index, const std::atomic<int>& stop) {
    const Shared<T>& s = *static_cast<const Shared<T>*>(context);
    const Layout<T> layout(s.e);
    char* w = static_cast<char*>(thread_workspace(layout.bytes));
    if (w == nullptr) return false;
    Part part = s.g.part(s.p, index);
    part.stop = &stop;
    s.e.run(s.p, part, reinterpret_cast<T*>(w), reinterpret_cast<T*>(w + layout.b_offset));
    return true;
}

}  // namespace

template <class T>
bool run(const Problem<T>& p) {
    const Engine<T> e = engine<T>();
    char* w = workspace_for(e, nullptr);
    if (w == nullptr) return false;
    const int wanted = team_size(p);
    threads::Claim claim(wanted);
    const int members = claim.count();
    Grid g;
    if (members > 1) {
        const bool more_parts = work(p) >= work_per_thread * members * parts_per_member;
        g = grid_for(p, e, more_parts ? members * parts_per_member : members);
    }
    const int parts = g.tm * g.tn;
    if (parts == 1) {
        e.run(p, Part{0, p.m, 0, p.n}, reinterpret_cast<T*>(w), reinterpret_cast<T*>(w + Layout<T>(e).b_offset));
        return true;
    }
    Shared<T> shared{p, e, g};
    team::run(parts < members ? parts : members, parts, &run_part<T>, &shared);
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
