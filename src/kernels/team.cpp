// The team runner. Faults in members are caught by a handler of the kernels' own, installed
// in front of the routine frame's one when the first trapped team starts: a member that
// faults jumps back to the start of its share of the work, records the signal and stops the
// team; the calling thread then raises the same signal on itself, inside its own trap.
#include "kernels/team.hpp"

#include <condition_variable>
#include <csetjmp>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <new>
#include <pthread.h>
#include <sched.h>

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
    std::atomic<int> finished{0};  // members that joined and returned
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

// The team's own threads, started when a team first needs them and kept until the process
// ends. A caller never waits for a member that has not started: on a busy machine a member may
// wait milliseconds for a CPU, and a fixed team would hold the caller at the end of every call
// until the last one came (a factorization makes hundreds of calls). Members join the job
// through `gate` while it is open; the caller closes it when every chunk is taken and waits
// only for those that joined, which are already running.
class Pool {
public:
    // Publishes the job to `wanted` members (starting threads as needed) and returns how many
    // may take part.
    void open(Shared* job, int wanted) {
        std::unique_lock<std::mutex> hold(lock_);
        while (started_ < wanted && start_one()) {
        }
        job_ = job;
        members_ = wanted < started_ ? wanted : started_;
        ++generation_;
        gate_.store(static_cast<std::uint64_t>(generation_) << 32, std::memory_order_release);
        hold.unlock();
        wake_.notify_all();
    }

    // No member joins after this; returns once those that joined have finished.
    void close(Shared& job) {
        const std::uint64_t g = gate_.fetch_or(closed, std::memory_order_acq_rel);
        const int joined = static_cast<int>(g & count_mask);
        for (int spins = 0; job.finished.load(std::memory_order_acquire) < joined; ++spins)
            if (spins > 64) sched_yield();
    }

    // A forked child has none of the parent's threads.
    void forget() {
        new (&lock_) std::mutex;
        new (&wake_) std::condition_variable;
        started_ = 0;
        members_ = 0;
    }

private:
    static constexpr std::uint64_t closed = std::uint64_t{1} << 31;
    static constexpr std::uint64_t count_mask = closed - 1;

    bool start_one() {
        Start* start = &starts_[started_];
        start->pool = this;
        start->index = started_;
        pthread_t id;
        if (pthread_create(&id, nullptr, &Pool::main, start) != 0) return false;
        pthread_detach(id);
        ++started_;
        return true;
    }

    struct Start {
        Pool* pool;
        int index;
    };

    static void* main(void* arg) {
        const Start& start = *static_cast<Start*>(arg);
        start.pool->serve(start.index);
        return nullptr;
    }

    [[noreturn]] void serve(int index) {
        unsigned seen = 0;
        for (;;) {
            Shared* job;
            unsigned generation;
            {
                std::unique_lock<std::mutex> hold(lock_);
                wake_.wait(hold, [&] { return generation_ != seen; });
                seen = generation = generation_;
                job = index < members_ ? job_ : nullptr;
            }
            if (job != nullptr && join(generation)) {
                threads::TeamWork working;
                if (job->trap)
                    trapped_share(*job);
                else
                    share(*job);
                job->finished.fetch_add(1, std::memory_order_release);
            }
        }
    }

    bool join(unsigned generation) {
        std::uint64_t g = gate_.load(std::memory_order_acquire);
        do {
            if ((g >> 32) != generation || (g & closed) != 0) return false;
        } while (!gate_.compare_exchange_weak(g, g + 1, std::memory_order_acq_rel));
        return true;
    }

    std::mutex lock_;
    std::condition_variable wake_;
    unsigned generation_ = 0;
    Shared* job_ = nullptr;
    int members_ = 0;
    int started_ = 0;
    std::atomic<std::uint64_t> gate_{0};
    Start starts_[threads::limit];
};

// Built in place on first use and never destroyed: its threads wait on it until the process ends.
alignas(Pool) unsigned char pool_storage[sizeof(Pool)];
std::once_flag pool_once;

void forget_pool();

Pool& pool() {
    std::call_once(pool_once, [] {
        new (pool_storage) Pool;
        pthread_atfork(nullptr, nullptr, forget_pool);
    });
    return *std::launder(reinterpret_cast<Pool*>(pool_storage));
}

void forget_pool() { std::launder(reinterpret_cast<Pool*>(pool_storage))->forget(); }

std::atomic<long> late{0};

}  // namespace

bool run(int threads, int chunks, Body body, void* context) {
    Shared s;
    s.body = body;
    s.context = context;
    s.chunks = chunks < threads::limit ? chunks : threads::limit;
    s.trap = caller_trapped();
    if (s.trap && !installed.load(std::memory_order_acquire)) install();
    Pool& members = pool();
    members.open(&s, threads - 1);
    {
        threads::TeamWork working;
        if (s.trap)
            trapped_share(s);
        else
            share(s);
    }
    members.close(s);
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
