// Test helpers shared by every test program: quiet error policy, captured error output,
// substitution slots, child processes.
#pragma once

#include <functional>
#include <string>

#include "frame/context.hpp"
#include "qnummath.h"

namespace qnum::test {

// Turns printing and stopping off for error types 1..7 in the calling thread; the destructor
// restores the defaults. Type 8 (INTERNAL) still stops.
class QuietErrors {
public:
    QuietErrors();
    ~QuietErrors();
    QuietErrors(const QuietErrors&) = delete;
    QuietErrors& operator=(const QuietErrors&) = delete;
};

// The outcome of the last public routine called in this thread.
inline int last_type() { return qnum_n1rty(1); }
inline int last_code() { return qnum_20305(); }

// Substitution slots as the last raise left them (k = 1..9).
inline int int_slot(int k) { return qnum::context()->int_slots[k - 1]; }
inline double real_slot(int k) { return qnum::context()->real_slots[k - 1]; }
inline std::string string_slot(int k) {
    const char* s = qnum::context()->string_slots[k - 1];
    return s ? s : "(null)";
}

// Raises `type`/`code` with `text` inside a level `name`, itself inside `outer` when given.
void raise_in(const char* name, int type, int code, const char* text, const char* outer = nullptr);

// Runs fn with the calling thread's error output (unit 3) sent to a temporary file and
// returns what was written there.
std::string capture_errors(const std::function<void()>& fn);

// Runs fn in a forked child with standard error captured; returns the child's exit status
// (or 128 + signal) and, through `output`, what it wrote to standard error.
int run_in_child(const std::function<void()>& fn, std::string* output = nullptr);

}  // namespace qnum::test
