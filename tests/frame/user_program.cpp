// A program linked against the shared library as a user's would be. The tests run it in
// fresh processes:
//   user_program exit        main returns 0 while three threads keep calling the library
//   user_program stop        main raises a stopping TERMINAL error instead (status 5)
//   user_program message     reports one TERMINAL error without stopping (its text shows
//                            whether the catalogue was found)

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

#include "qnummath.h"

namespace {

std::atomic<bool> keep_going{true};

void gemm_loop() {
    const int n = 200;
    std::vector<double> a(n * n, 0.5), b(n * n, 0.25), c(n * n, 0.0);
    const double one = 1.0, zero = 0.0;
    while (keep_going.load(std::memory_order_relaxed))
        qnum_dgemm("N", 1, "N", 1, &n, &n, &n, &one, a.data(), &n, b.data(), &n, &zero, c.data(), &n);
}

void random_loop() {
    while (keep_going.load(std::memory_order_relaxed)) {
        float* r = qnum_f_random_uniform(1000, 0);
        qnum_free_allocated_memory(r);
    }
}

void machine_loop() {
    volatile double sink = 0;
    while (keep_going.load(std::memory_order_relaxed)) sink = sink + qnum_d_machine(2);
}

int busy_exit(bool stop) {
    qnum_skip_signal_handler();
    std::thread t1(gemm_loop), t2(random_loop), t3(machine_loop);
    t1.detach();
    t2.detach();
    t3.detach();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    if (stop) {
        qnum_error_options(QNUM_SET_PRINT, QNUM_TERMINAL, 0, 0);
        qnum_i_machine(99);  // TERMINAL under the default policy: the process ends with 5
        return 1;
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc >= 2 && std::strcmp(argv[1], "exit") == 0) return busy_exit(false);
    if (argc >= 2 && std::strcmp(argv[1], "stop") == 0) return busy_exit(true);
    if (argc >= 2 && std::strcmp(argv[1], "message") == 0) {
        qnum_error_options(QNUM_SET_STOP, QNUM_TERMINAL, 0, 0);
        qnum_i_machine(13);
        return 0;
    }
    std::fprintf(stderr, "usage: user_program exit | stop | message\n");
    return 2;
}
