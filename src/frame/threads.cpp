// The thread count and the team claim.
#include "frame/threads.hpp"

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <mutex>
#include <omp.h>
#include <pthread.h>
#include <sched.h>

#include "frame/platform.hpp"

namespace qnum::threads {
namespace {

std::atomic<int> override_count{0};
std::atomic<int> team_busy{0};
// Set once a team of more than one thread ran. The runtime's worker threads do not survive a
// fork, and a child that asked for them would wait for them forever.
std::atomic<int> team_started{0};
std::atomic<int> forked_child{0};

bool blank(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

void on_fork_child() {
    if (team_started.load(std::memory_order_relaxed)) forked_child.store(1, std::memory_order_relaxed);
    team_busy.store(0, std::memory_order_relaxed);
}

std::atomic<long> granted{0};

__thread int team_work __attribute__((tls_model("initial-exec"))) = 0;

int read_configuration() {
    pthread_atfork(nullptr, nullptr, on_fork_child);
    return from_environment();
}

}  // namespace

int parse(const char* text) {
    if (text == nullptr) return 0;
    while (blank(*text)) ++text;
    if (*text < '0' || *text > '9') return 0;
    long long v = 0;
    for (; *text >= '0' && *text <= '9'; ++text) {
        v = v * 10 + (*text - '0');
        if (v > limit) return 0;
    }
    while (blank(*text)) ++text;
    return *text == '\0' && v > 0 ? static_cast<int>(v) : 0;
}

int available_cpus() {
    cpu_set_t set;
    CPU_ZERO(&set);
    if (sched_getaffinity(0, sizeof set, &set) == 0) {
        const int n = CPU_COUNT(&set);
        if (n > 0) return n;
    }
    return 1;
}

int from_environment() {
    char text[64];
    if (platform::get_env("QNUM_NUM_THREADS", text, sizeof text) > 0) {
        if (const int n = parse(text)) return n;
    }
    // The runtime's own variable, its first level when it lists several.
    if (platform::get_env("OMP_NUM_THREADS", text, sizeof text) > 0) {
        for (char* c = text; *c != '\0'; ++c)
            if (*c == ',') *c = '\0';
        if (const int n = parse(text)) return n;
    }
    return available_cpus();
}

int configured() {
    static const int count = read_configuration();  // also registers the fork hook
    const int forced = override_count.load(std::memory_order_relaxed);
    return forced > 0 ? forced : count;
}

void set_for_tests(int count) { override_count.store(count > 0 ? count : 0, std::memory_order_relaxed); }

long teams_granted() { return granted.load(std::memory_order_relaxed); }

TeamWork::TeamWork() { ++team_work; }
TeamWork::~TeamWork() { --team_work; }

Claim::Claim(int wanted) {
    configured();  // the fork hook is in place before any team starts
    if (wanted <= 1 || team_work > 0 || omp_get_level() > 0 || forked_child.load(std::memory_order_relaxed)) return;
    int expected = 0;
    if (!team_busy.compare_exchange_strong(expected, 1, std::memory_order_acquire)) return;
    held_ = true;
    count_ = wanted;
    team_started.store(1, std::memory_order_relaxed);
    granted.fetch_add(1, std::memory_order_relaxed);
}

Claim::~Claim() {
    if (held_) team_busy.store(0, std::memory_order_release);
}

}  // namespace qnum::threads
