// The team runner. Faults in members are caught by a handler of the kernels' own, installed
// in front of the routine frame's one when the first trapped team starts: a member that
// faults jumps back to the start of its share of the work, records the signal and stops the
// team; the calling thread then raises the same signal on itself, inside its own trap.
#include "kernels/team.hpp"

#include <csetjmp>
#include <csignal>
#include <cstring>
#include <pthread.h>

#include "frame/context.hpp"
#include "frame/frame.hpp"
#include "frame/platform.hpp"
#include "frame/threads.hpp"

namespace qnum::kern::team {
namespace {

struct Shared {
    Body body;
    void* context;
    int chunks;
    bool trap;
    std::atomic<int> next{0};
    std::atomic<int> finished{0};  // members that returned
    std::atomic<int> stop{0};
    std::atomic<int> signal{0};
    unsigned char done[threads::limit] = {};
};

// A member's way back from a fault.
struct Member {
    sigjmp_buf jump;
    Shared* shared;
};

__thread Member* armed __attribute__((tls_model("initial-exec"))) = nullptr;

constexpr int caught[] = {SIGILL, SIGSEGV};
struct sigaction previous[2];
platform::Mutex install_lock;
std::atomic<bool> installed{false};

// A fault outside a team member goes to the handler that was there before ours.
void chain(int sig, siginfo_t* info, void* uctx) {
    const struct sigaction* prev = nullptr;
    for (int i = 0; i < 2; ++i)
        if (caught[i] == sig) prev = &previous[i];
    if (prev == nullptr) return;
    if (prev->sa_flags & SA_SIGINFO) {
        if (prev->sa_sigaction) prev->sa_sigaction(sig, info, uctx);
        return;
    }
    if (prev->sa_handler == SIG_IGN) return;
    if (prev->sa_handler == SIG_DFL) {
        signal(sig, SIG_DFL);  // the faulting instruction runs again and ends the process
        return;
    }
    prev->sa_handler(sig);
}

void handler(int sig, siginfo_t* info, void* uctx) {
    Member* m = armed;
    if (m == nullptr) {
        chain(sig, info, uctx);
        return;
    }
    armed = nullptr;
    int none = 0;
    m->shared->signal.compare_exchange_strong(none, sig);
    m->shared->stop.store(1);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, sig);
    pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
    siglongjmp(m->jump, 1);
}

// Installed after the frame's handler, so that ours sees a member's fault first.
void install() {
    platform::Lock guard(install_lock);
    if (installed.load(std::memory_order_relaxed)) return;
    struct sigaction sa;
    std::memset(&sa, 0, sizeof sa);
    sa.sa_sigaction = handler;
    sa.sa_flags = SA_SIGINFO;
    sigemptyset(&sa.sa_mask);
    for (int i = 0; i < 2; ++i) sigaction(caught[i], &sa, &previous[i]);
    installed.store(true, std::memory_order_release);
}

// True when the calling thread is inside a trapped public routine.
bool caller_trapped() {
    if (!frame::trap::enabled()) return false;
    const Context* c = context_if_any();
    return c != nullptr && c->trap_depth > 0 && frame::trap::installed.load(std::memory_order_acquire);
}

// Members take the next chunk as they come free: on a busy machine a member that starts late
// leaves its share to the others instead of holding them all at the end.
void share(Shared& s) {
    for (int i; (i = s.next.fetch_add(1, std::memory_order_relaxed)) < s.chunks;) {
        if (s.stop.load(std::memory_order_relaxed)) return;
        if (s.body(s.context, i, s.stop)) s.done[i] = 1;
    }
}

// sigsetjmp needs a frame that outlives the work, and nothing in it that changes afterwards.
void trapped_share(Shared& s) {
    Member m;
    m.shared = &s;
    if (sigsetjmp(m.jump, 0) == 0) {
        armed = &m;
        share(s);
    }
    armed = nullptr;
}

// The team's work, handed over through atomics rather than through variables that the
// parallel region captures: the threading runtime synchronises those in ways that a race
// detector cannot see, and these edges it can. Only the holder of the team writes it.
std::atomic<Shared*> current{nullptr};

std::atomic<long> late{0};

}  // namespace

bool run(int threads, int chunks, Body body, void* context) {
    Shared s;
    s.body = body;
    s.context = context;
    s.chunks = chunks < threads::limit ? chunks : threads::limit;
    s.trap = caller_trapped();
    if (s.trap && !installed.load(std::memory_order_acquire)) install();
    current.store(&s, std::memory_order_release);
#pragma omp parallel num_threads(threads)
    {
        Shared& mine = *current.load(std::memory_order_acquire);
        if (mine.trap)
            trapped_share(mine);
        else
            share(mine);
        mine.finished.fetch_add(1, std::memory_order_release);
    }
    s.finished.load(std::memory_order_acquire);
    if (const int sig = s.signal.load()) {
        ::raise(sig);  // the routine's trap takes it from here
        return false;
    }
    bool all = true;
    for (int i = 0; i < s.chunks; ++i)
        if (!s.done[i]) {
            late.fetch_add(1, std::memory_order_relaxed);
            all = body(context, i, s.stop) && all;
        }
    return all;
}

long late_chunks() { return late.load(std::memory_order_relaxed); }

}  // namespace qnum::kern::team
