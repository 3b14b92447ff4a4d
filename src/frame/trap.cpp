// Fault trapping around public routines. The fault handler is installed once, at the first
// trapped call, rather than around every call: entering a trapped routine then costs a
// sigsetjmp that saves no signal mask and two counters, and no system call. A fault that
// arrives while no trapped routine runs on the thread goes on to the handler that was in place
// before ours, so a program's own SIGSEGV and SIGILL handlers keep working outside library
// calls.
#include <atomic>
#include <csignal>
#include <cstring>
#include <pthread.h>

#include "frame/context.hpp"
#include "frame/error_stack.hpp"
#include "frame/frame.hpp"
#include "frame/platform.hpp"

namespace qnum::frame::trap {

std::atomic<bool> installed{false};

namespace {

constexpr int trapped_signals[] = {SIGILL, SIGSEGV};
struct sigaction previous[2];
platform::Mutex install_lock;

int error_code_for(int sig) {
    switch (sig) {
    case SIGINT: return err::signal_sigint;
    case SIGILL: return err::signal_sigill;
    case SIGABRT: return err::signal_sigabrt;
    case SIGFPE: return err::signal_sigfpe;
    case SIGSEGV: return err::signal_sigsegv;
    default: return 0;
    }
}

// Hands a fault that is not ours to the handler that was installed before.
void chain(int sig, siginfo_t* info, void* uctx) {
    const struct sigaction* prev = nullptr;
    for (int i = 0; i < 2; ++i)
        if (trapped_signals[i] == sig) prev = &previous[i];
    if (prev == nullptr) return;
    if (prev->sa_flags & SA_SIGINFO) {
        if (prev->sa_sigaction) prev->sa_sigaction(sig, info, uctx);
        return;
    }
    if (prev->sa_handler == SIG_IGN) return;
    if (prev->sa_handler == SIG_DFL) {
        // Restore the default action; returning re-executes the faulting instruction, which
        // then ends the process as if we had never been there.
        signal(sig, SIG_DFL);
        return;
    }
    prev->sa_handler(sig);
}

void handler(int sig, siginfo_t* info, void* uctx) {
    Context* c = context_if_any();
    Context* first = first_context();
    if (c == nullptr || c->trap_depth <= 0 || first == nullptr || first->jmp_depth <= 0) {
        chain(sig, info, uctx);
        return;
    }
    c->unwind = 1;
    qnum_e1sti(1, sig);
    if (int code = error_code_for(sig)) qnum_ermes(5, code);
    // The signal stays blocked inside a handler; unblock it so that it traps again.
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, sig);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    --c->trap_depth;
    --first->jmp_depth;
    siglongjmp(first->jmp[first->jmp_depth], 1);
}

}  // namespace

void install() {
    platform::Lock guard(install_lock);
    if (installed.load(std::memory_order_relaxed)) return;
    struct sigaction sa;
    std::memset(&sa, 0, sizeof sa);
    sa.sa_sigaction = handler;
    sa.sa_flags = SA_SIGINFO;
    sigemptyset(&sa.sa_mask);
    for (int i = 0; i < 2; ++i) sigaction(trapped_signals[i], &sa, &previous[i]);
    installed.store(true, std::memory_order_release);
}

void after_fault() {
    // The handler has already given back the jump buffer and the nesting level.
    qnum_ermes(5, err::fault_trapped);
}

}  // namespace qnum::frame::trap
