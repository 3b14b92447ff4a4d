// Fault trapping: a fault inside a routine becomes TERMINAL 511 then 102, works again after a
// first fault, leaves the program's own handlers alone outside library calls; the one-thread
// rule of trapping.
#include <gtest/gtest.h>

#include <csignal>
#include <string>
#include <sys/mman.h>
#include <thread>

#include "frame/frame.hpp"
#include "qnum_test.hpp"

namespace {

using qnum::test::run_in_child;

// Memory that faults on every access.
volatile int* forbidden_page() {
    static void* page = mmap(nullptr, 4096, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return static_cast<volatile int*>(page);
}

// A public routine whose worker, one level down, writes where it may not.
int faulting_routine() {
    return qnum::frame::call<int>("qnum_f_faulty", [] {
        qnum::frame::Level step("l_faulty_step");
        *forbidden_page() = 1;
        return 1;
    });
}

int quiet_routine() {
    return qnum::frame::call<int>("qnum_f_quiet", [] { return 7; });
}

TEST(Trap, SegmentationFaultPrints511Then102AndStopsWithStatus5) {
    std::string out;
    int status = run_in_child([] {
        qnum_error_options(QNUM_SIGNAL_TRAPPING, 1, 0);
        faulting_routine();
        std::_Exit(0);  // not reached: TERMINAL stops at the pop
    }, &out);
    EXPECT_EQ(status, 5);
    const std::size_t first = out.find("*** TERMINAL Error from qnum_f_faulty.  A segmentation violation (signal 11)");
    EXPECT_NE(first, std::string::npos) << out;
    EXPECT_LT(first, out.find("*** TERMINAL Error from qnum_f_faulty.  A hardware fault was trapped")) << out;
}

TEST(Trap, TrapsAgainAfterAFirstFaultAndTheStackUnwinds) {
    std::string out;
    int status = run_in_child([] {
        qnum::test::QuietErrors quiet;
        qnum_error_options(QNUM_SIGNAL_TRAPPING, 1, 0);
        for (int round = 0; round < 2; ++round) {
            EXPECT_EQ(faulting_routine(), 0);
            EXPECT_EQ(qnum_n1rty(1), 5);
            EXPECT_EQ(qnum_20305(), 102);
            EXPECT_EQ(qnum::context()->top, qnum::context()->stack);  // back at the user level
        }
        EXPECT_EQ(quiet_routine(), 7);
        EXPECT_EQ(qnum_n1rty(1), 0);
        // Reported at the pop instead of at once, the error carried out of the abandoned
        // levels names the routine that raised it, the one that faulted.
        static std::string routine;
        qnum_error_options(QNUM_SET_PRINT, 5, 1, QNUM_ERROR_PRINT_PROC,
                           +[](int, int code, const char* name, const char*) { routine += name + std::to_string(code); }, 0);
        qnum::context()->immediate[5] = 0;
        faulting_routine();
        EXPECT_EQ(routine, "l_faulty_step102");
        // An abandoned level already holding an error of the same type takes the newer one.
        routine.clear();
        qnum::frame::call<int>("qnum_f_faulty", [] {
            qnum::frame::Level outer("l_outer_step");
            qnum_e1mes(5, 77, "earlier");
            qnum::frame::Level step("l_faulty_step");
            *forbidden_page() = 1;
            return 1;
        });
        EXPECT_EQ(routine, "l_faulty_step102");
        std::_Exit(::testing::Test::HasFailure() ? 1 : 0);
    }, &out);
    EXPECT_EQ(status, 0) << out;
}

volatile sig_atomic_t own_handler_ran = 0;
sigjmp_buf own_jump;

// A fresh process: the program installs its handler before the library's first trapped call.
TEST(Trap, ProgramHandlersStillWorkOutsideLibraryCalls) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            struct sigaction sa = {};
            sa.sa_handler = [](int) {
                own_handler_ran = 1;
                siglongjmp(own_jump, 1);
            };
            sigaction(SIGSEGV, &sa, nullptr);
            qnum::test::QuietErrors quiet;
            qnum_error_options(QNUM_SIGNAL_TRAPPING, 1, 0);
            faulting_routine();  // trapped by the library
            if (qnum_20305() != 102) std::_Exit(2);
            if (sigsetjmp(own_jump, 1) == 0) *forbidden_page() = 1;  // the program's own fault
            std::_Exit(own_handler_ran ? 0 : 3);
        },
        ::testing::ExitedWithCode(0), "");
}

TEST(Trap, WithTrappingOffAFaultTakesTheDefaultAction) {
    int status = run_in_child([] {
        qnum_skip_signal_handler();
        faulting_routine();
        std::_Exit(0);
    });
    // The platform's default action (a sanitizer's own fault handler ends with status 1).
    EXPECT_TRUE(status == 128 + SIGSEGV || status == 1) << status;
}

// Once a second thread has called the library with trapping on, every routine is FATAL 499
// and does no work; by default that stops with status 4.
TEST(Trap, SecondThreadWithTrappingOnMakesEveryRoutineFatal499) {
    for (bool stop : {false, true}) {
        std::string out;
        const int status = run_in_child([stop] {
            qnum_error_options(QNUM_SIGNAL_TRAPPING, 1, 0);
            qnum::test::QuietErrors quiet;
            if (stop) qnum_error_options(QNUM_SET_PRINT, 4, 1, QNUM_SET_STOP, 4, 1, 0);
            EXPECT_EQ(quiet_routine(), 7);
            std::thread([] { qnum_e1sti(1, 0); }).join();  // a second thread's first call
            EXPECT_EQ(quiet_routine(), 0);  // the worker does not run
            EXPECT_EQ(std::make_pair(qnum_n1rty(1), qnum_20305()), std::make_pair(4, 499));
            std::_Exit(::testing::Test::HasFailure() ? 1 : 0);
        }, &out);
        EXPECT_EQ(status, stop ? 4 : 0) << out;
        EXPECT_EQ(out.find("FATAL    Error QNUM_TRAPPING_WITH_THREADS from qnum_f_quiet.") != std::string::npos, stop) << out;
    }
}

}  // namespace
