// Faults in user code: an integrand and a zeros function that read through a null pointer,
// with trapping on. Each call must report TERMINAL 511 and then 102 and come back with the
// error stack and the jump buffers as they were, call after call. In a child process, which
// turns trapping on (and for the first test TERMINAL's stop off, so that it lives to count).
#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

#include "frame/context.hpp"
#include "hardening.hpp"

namespace qnum::test::hard {
namespace {

int* volatile nowhere = nullptr;
template <class T> __attribute__((no_sanitize("undefined"))) T faulting(T x) { return x + static_cast<T>(*nowhere); }
template <class T> T shifted(T x) { return x - T(0.25); }
std::vector<int> reported;  // codes of every error reported, in order
void record(int type, int code, const char*) {
    if (type != 0) reported.push_back(code);
}

// One faulting call: quadrature or zeros, float or double, by `which`; "" when it behaved.
std::string fault_once(int which) {
    reported.clear();
    if (which < 2) which ? (void)qnum_f_int_fcn(faulting<float>, 0.0f, 1.0f, 0) : (void)qnum_d_int_fcn(faulting<double>, 0.0, 1.0, 0);
    else which == 2 ? (void)qnum_d_zeros_fcn(faulting<double>, 0) : (void)qnum_f_zeros_fcn(faulting<float>, 0);
    const Outcome o = outcome();
    Context* c = context();
    std::string bad;
    if (o.type != 5 || o.code != 102) bad += " outcome " + std::to_string(o.type) + "/" + std::to_string(o.code);
    if (reported.size() < 2 || reported[0] != 511 || reported[1] != 102) bad += " reports not 511, 102";
    if (c->top != &c->stack[0]) bad += " stack levels left: " + std::to_string(c->top - &c->stack[0]);
    if (first_context()->jmp_depth != 0 || c->trap_depth != 0) bad += " jump buffer lost";
    return bad;
}

TEST(HardeningUserFault, HundredFaultsInARowLoseNothingAndTheDefaultStops) {
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the fault handler prints and jumps, as it must; the thread sanitizer calls that unsafe";
#endif
    std::string out;
    const int status = run_in_child([] {
        qnum_error_options(QNUM_SIGNAL_TRAPPING, 1, QNUM_SET_STOP, 5, 0, 0);
        qnum_set_at_checksum(record);
        std::string bad;  // 101 faults of each kind: a jump buffer lost per fault would leave none for the last
        for (int i = 0; i < 101 * 4 && bad.empty(); ++i)
            if (!(bad = fault_once(i % 4)).empty()) bad = "call " + std::to_string(i) + ":" + bad;
        qnum_set_at_checksum(nullptr);
        if (std::abs(qnum_d_int_fcn(shifted<double>, 0.0, 1.0, 0) - 0.25) > 1e-12 || qnum_n1rty(1) != 0) bad += " the integral failed";
        double* z = qnum_d_zeros_fcn(shifted<double>, 0);
        if (z == nullptr || std::abs(*z - 0.25) > 1e-6 || qnum_n1rty(1) != 0) bad += " the zero failed";
        qnum_free_allocated_memory(z);
        std::fputs(bad.c_str(), stderr);
        std::fflush(stderr);
        _exit(bad.empty() ? 0 : 1);
    }, &out);
    EXPECT_EQ(status, 0) << out.substr(out.size() > 2000 ? out.size() - 2000 : 0);
    std::size_t signals = 0, traps = 0, last_signal = 0, last_trap = 0;  // each fault printed: signal, then trap
    for (std::size_t p = 0; (p = out.find("segmentation violation", p)) != std::string::npos; ++p) ++signals, last_signal = p;
    for (std::size_t p = 0; (p = out.find("hardware fault was", p)) != std::string::npos; ++p) ++traps, last_trap = p;
    EXPECT_EQ(signals, 404u);
    EXPECT_EQ(traps, 404u);
    EXPECT_LT(last_signal, last_trap);
    for (int which : {0, 2})  // with the default policy the first fault stops the process with status 5
        EXPECT_EQ(run_in_child([which] {
#if defined(__SANITIZE_ADDRESS__)
            __lsan_disable();  // the jump out of the fault skips the worker's destructors as the process stops
#endif
            qnum_error_options(QNUM_SIGNAL_TRAPPING, 1, 0);
            fault_once(which);
            _exit(0);
        }), 5) << which;
}

}  // namespace
}  // namespace qnum::test::hard
