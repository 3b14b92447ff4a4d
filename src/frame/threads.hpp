// How many threads the library's threaded routines may use, and whether the calling thread
// may start a team of its own now.
#pragma once

namespace qnum::threads {

// A thread count written as text: a positive decimal integer, blanks around it allowed, at
// most `limit`; 0 for anything else (empty, signs, letters, zero, overflow).
inline constexpr int limit = 1024;
int parse(const char* text);

// The CPUs this process may run on, from its affinity mask (at least 1).
int available_cpus();

// QNUM_NUM_THREADS when it holds a valid count, else OMP_NUM_THREADS's first level when that
// is valid, else the affinity mask's CPU count; read now.
int from_environment();

// The number of threads the library uses: from_environment() as it was at the first call.
int configured();

// Replaces configured() until called again with 0 (tests only).
void set_for_tests(int count);

// How many claims were granted more than one thread since the process started (tests only).
long teams_granted();

// The calling thread's claim on a team of worker threads. At most one caller holds the team
// at a time: a second caller thread that enters while the first is inside, a call made from
// inside any parallel region (the caller's own or one of ours), and every call in a child
// process forked after the library had started threads get a single thread.
// Marks the calling thread as working for a team while it lives: claims made meanwhile get a
// single thread.
class TeamWork {
public:
    TeamWork();
    ~TeamWork();
    TeamWork(const TeamWork&) = delete;
    TeamWork& operator=(const TeamWork&) = delete;
};

class Claim {
public:
    // Asks for up to `wanted` threads; count() says how many were granted (at least 1).
    explicit Claim(int wanted);
    ~Claim();
    Claim(const Claim&) = delete;
    Claim& operator=(const Claim&) = delete;
    int count() const { return count_; }

private:
    int count_ = 1;
    bool held_ = false;
};

}  // namespace qnum::threads
