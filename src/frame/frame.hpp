// The public-routine frame: error-stack levels, raising, fault trapping, option lists, storage.
#pragma once

#include <atomic>
#include <complex>
#include <csetjmp>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <type_traits>

#include "qnummath.h"
#include "frame/context.hpp"
#include "frame/error_stack.hpp"
#include "frame/errors.hpp"  // generated from data/messages/*.msg: qnum::err::<name> = code

namespace qnum::frame {

enum class Type : int {
    None = 0,
    Note = 1,
    Alert = 2,
    Warning = 3,
    Fatal = 4,
    Terminal = 5,
    WarningImmediate = 6,
    FatalImmediate = 7,
    Internal = 8,
};

// Substitution values for raise(): each kind is numbered in the order it is passed, so
// raise(Type::Terminal, err::x, Str{"n"}, Int{n}, Int{m}) sets l1, i1 and i2.
struct Int { int v; };
struct Real { double v; };
struct Cplx { std::complex<double> v; };
struct Str { const char* v; };

struct SlotCounter {
    int i = 0, r = 0, c = 0, l = 0;
    void set(Int s) { qnum_e1sti(++i, s.v); }
    void set(Real s) { qnum_e1std(++r, s.v); }
    void set(Cplx s) { qnum_e1stz(++c, qnum_d_complex{s.v.real(), s.v.imag()}); }
    void set(Str s) { qnum_e1stl(++l, s.v); }
};

template <class... Slots>
inline void raise(Type type, int code, Slots... slots) {
    SlotCounter counter;
    (counter.set(slots), ...);
    qnum_ermes(static_cast<int>(type), code);
}

// Raise inside a level of its own, as argument checks that report under a routine tag do.
template <class... Slots>
void raise_in(const char* name, Type type, int code, Slots... slots);

// True when an error has been raised at the current level (workers test this once, after
// all their checks).
inline bool pending() { return context()->status[0] != 0; }
// True when the routine called last ended with an error of type FATAL or worse.
inline bool failed_below() { return context()->status[1] >= 4; }

// One error-stack level: pushes its name on construction and pops it on destruction.
class Level {
public:
    explicit Level(const char* name) : name_(name) { errors::push(name); }
    ~Level() { errors::pop(name_); }
    Level(const Level&) = delete;
    Level& operator=(const Level&) = delete;

private:
    const char* name_;
};

template <class... Slots>
void raise_in(const char* name, Type type, int code, Slots... slots) {
    Level level(name);
    raise(type, code, slots...);
}

// Marks the current level as the user's around a call into user code, so that errors the
// user's function raises through the library are reported to it. The flag is set in place,
// as qnum_e1usr("ON") and ("OFF") would set it: user functions are called millions of times,
// and a cheap one costs less than a call through the exported marker.
class UserCall {
public:
    UserCall() : level_(context()->top) { level_->user = 1; }
    ~UserCall() { level_->user = 0; }
    UserCall(const UserCall&) = delete;
    UserCall& operator=(const UserCall&) = delete;

private:
    StackEntry* level_;
};

// ---- fault trapping (trap.cpp) ----
namespace trap {
extern std::atomic<bool> installed;
void install();                 // the fault handler, once per process
void after_fault();             // a fault jumped back: TERMINAL 102, disarm

// The process-wide switch, read without a lock.
inline bool enabled() { return signal_trapping.load(std::memory_order_relaxed) != 0; }

// The next jump buffer of `first` (the first context, or c itself while no first one is
// recorded), armed for the thread of context c; null when none is left.
inline sigjmp_buf* enter(Context* c, Context* first) {
    if (first->jmp_depth >= jump_buffers) return nullptr;
    ++c->trap_depth;
    c->unwind = 0;
    return &first->jmp[first->jmp_depth++];
}

// The worker returned normally.
inline void leave(Context* c, Context* first) {
    --first->jmp_depth;
    --c->trap_depth;
}
}  // namespace trap

// Runs `worker` as the body of the public routine `name`: push, skip the work if an error is
// already pending, trap faults when trapping is on, pop. Returns the worker's result, or a
// value-initialised R when the worker did not run or faulted. The thread's context is looked
// up once for the whole call. (No local is written after sigsetjmp, so none can be lost to the
// jump; the compiler cannot see that through the inlined context lookup.)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wclobbered"
template <class R, class F>
R call(const char* name, F&& worker) noexcept {
    Context* const c = context();
    struct Frame {
        Context* c;
        const char* name;
        ~Frame() { errors::pop(c, name); }
    } level{c, name};
    errors::push(c, name);
    if (c->status[0] != 0) return R();  // only a push the long way can leave one pending
    if (!trap::enabled()) return worker();
    if (!trap::installed.load(std::memory_order_acquire)) trap::install();
    Context* first = first_context();
    if (first == nullptr) first = c;
    sigjmp_buf* jump = trap::enter(c, first);
    if (jump == nullptr) return worker();  // all jump buffers in use: run without a trap
    // sigsetjmp must run in this frame, which stays alive while the worker runs; the mask is
    // not saved (no system call), the handler unblocks the signal itself before jumping.
    if (sigsetjmp(*jump, 0) != 0) {
        trap::after_fault();
        return R();
    }
    if constexpr (std::is_void_v<R>) {
        worker();
        trap::leave(c, first);
    } else {
        R result = worker();
        trap::leave(c, first);
        return result;
    }
}
#pragma GCC diagnostic pop

// ---- optional-argument lists (options.cpp) ----

// Reads an option list: codes, each followed by its values, ended by 0 (or any code <= 0).
// Positions count every argument, the required ones included, for error 103.
class Options {
public:
    // The list starts in `ap` (copied); its first entry is argument `first_position`.
    Options(va_list ap, int first_position);
    // The first code was a named parameter (`qnum_error_options(int option, ...)`).
    Options(int first_code, va_list ap, int first_position);
    ~Options();
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;
    Options(Options&& other) noexcept;

    // Next option code, or 0 at the end of the list (also after unknown() or an error).
    int next();
    // Position of the code that next() returned last.
    int code_position() const { return code_position_; }
    // The next value. float options are read as double: that is how `...` passes them.
    template <class V>
    V get();
    // A pointer value that must not be null: a null one raises TERMINAL 104 naming the
    // argument and the option (105 for the second pointer of a pair, `second`).
    template <class P>
    P* ptr(const char* arg_name, const char* option_name, bool second = false);
    // An unknown code: TERMINAL 103 (or `code` of the routine's own choice) with the code and
    // its position; parsing ends.
    void unknown(int option_code, int error_code = err::unknown_option);

private:
    va_list ap_;
    int position_;       // position of the next argument to be read
    int code_position_ = 0;
    int first_code_;     // a code the caller already read (a named parameter)
    bool has_first_;
    bool done_ = false;
};

template <class V>
V Options::get() {
    ++position_;
    if constexpr (std::is_same_v<V, float>) {
        return static_cast<float>(va_arg(ap_, double));
    } else if constexpr (std::is_integral_v<V> && sizeof(V) < sizeof(int)) {
        return static_cast<V>(va_arg(ap_, int));
    } else {
        return va_arg(ap_, V);
    }
}

template <class P>
P* Options::ptr(const char* arg_name, const char* option_name, bool second) {
    P* p = get<P*>();
    if (p == nullptr) {
        raise(Type::Terminal, second ? err::null_second_pointer : err::null_option_pointer,
              Str{arg_name}, Str{option_name});
    }
    return p;
}

// ---- storage (storage.cpp) ----

// n * size bytes, or 0 when that overflows size_t (or n is negative).
std::size_t checked_bytes(long long n, std::size_t size);

// Allocation through the library's malloc. A failure raises TERMINAL 201 with the size
// argument's name and value (l1, i1) and returns null.
void* allocate(long long n, std::size_t size, const char* size_name);

// Workspace of n elements, freed on every path out unless release()d.
template <class T>
class Buffer {
public:
    Buffer() = default;
    Buffer(long long n, const char* size_name)
        : p_(static_cast<T*>(allocate(n, sizeof(T), size_name))), n_(p_ ? n : 0) {}
    ~Buffer() { std::free(p_); }
    Buffer(Buffer&& o) noexcept : p_(o.p_), n_(o.n_) { o.p_ = nullptr; o.n_ = 0; }
    Buffer& operator=(Buffer&& o) noexcept {
        if (this != &o) { std::free(p_); p_ = o.p_; n_ = o.n_; o.p_ = nullptr; o.n_ = 0; }
        return *this;
    }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;

    explicit operator bool() const { return p_ != nullptr; }
    T* get() const { return p_; }
    T& operator[](std::size_t i) const { return p_[i]; }
    long long size() const { return n_; }
    T* release() { T* p = p_; p_ = nullptr; n_ = 0; return p; }

private:
    T* p_ = nullptr;
    long long n_ = 0;
};

// The result array of a routine: the caller's (a *_USER option) or one allocated here.
// An owned array is freed on every path out unless release()d to the caller.
template <class T>
class Out {
public:
    Out() = default;
    ~Out() { if (owned_) std::free(p_); }
    Out(const Out&) = delete;
    Out& operator=(const Out&) = delete;

    void borrow(T* user) { if (owned_) std::free(p_); p_ = user; owned_ = false; }
    bool is_user() const { return p_ != nullptr && !owned_; }
    // Allocates n elements unless the caller supplied the array; false on failure (201 raised).
    bool ensure(long long n, const char* size_name) {
        if (p_ != nullptr) return true;
        p_ = static_cast<T*>(allocate(n, sizeof(T), size_name));
        owned_ = p_ != nullptr;
        return p_ != nullptr;
    }
    T* get() const { return p_; }
    T& operator[](std::size_t i) const { return p_[i]; }
    // Hands the array to the caller: the caller's own, or the allocated one (now the caller's).
    T* release() { owned_ = false; return p_; }

private:
    T* p_ = nullptr;
    bool owned_ = false;
};

}  // namespace qnum::frame

// ---- common argument checks (TERMINAL errors at the current level) ----
namespace qnum::check {

// lo <= v <= hi, else TERMINAL 132 with (lo, hi, v, name) in i1, i2, i3, l1. Returns v's
// validity.
inline bool range(long long v, int lo, int hi, const char* name) {
    if (v >= lo && v <= hi) return true;
    frame::raise(frame::Type::Terminal, err::out_of_range, frame::Int{lo}, frame::Int{hi},
                 frame::Int{static_cast<int>(v)}, frame::Str{name});
    return false;
}
// v >= 1, through the same range check.
inline bool positive(long long v, const char* name) { return range(v, 1, 2147483647, name); }
// A required array must not be null: TERMINAL 150 naming it.
inline bool array(const void* p, const char* name) {
    if (p != nullptr) return true;
    frame::raise(frame::Type::Terminal, err::missing_array, frame::Str{name});
    return false;
}

}  // namespace qnum::check
