// The error stack's operations, behind the qnum_e1* entry points.
#pragma once

#include <atomic>

#include "frame/context.hpp"

namespace qnum::errors {

// The out-of-line paths of push and pop: every case the inline ones below leave to them.
void push_slow(const char* name);
void pop_slow(const char* name);

// Enters the level `name`. Every public routine does this, so the common case (room on the
// stack, no fault flagged by another thread) is inlined; the rest goes the long way.
inline void push(Context* c, const char* name) {
    StackEntry* top = c->top;
    if (top >= &c->stack[stack_entries - 1] || multi_thread_fault.load(std::memory_order_relaxed))
        return push_slow(name);
    if (top == &c->stack[0]) {
        c->msg_len = 0;
        c->msg[0] = '\0';
        c->deferred.pending = false;
    }
    c->top = ++top;
    *top = StackEntry{0, 0, 0, name, name};
    c->status[0] = c->status[1] = c->status[2] = c->status[3] = 0;
}
inline void push(const char* name) { push(context(), name); }

// Leaves the level `name`. The inlined case is the level that ends without an error (type 0)
// and without a jump to unwind, under the name it was entered with: it passes its code on
// as any pop does and reports nothing, since type 0 neither prints nor stops.
inline void pop(Context* c, const char* name) {
    StackEntry* top = c->top;
    StackEntry* below = top - 1;
    if (top->type != 0 || c->unwind || top->name != name || top == &c->stack[0] ||
        (below->user && (below != &c->stack[0] || c->print[0] || c->stop[0])))
        return pop_slow(name);
    if (below->type == 0) {
        below->code = top->code;
        below->origin = top->origin;
        c->status[0] = 0;
        c->status[2] = top->code;
    }
    c->status[1] = 0;
    c->status[3] = top->code;
    c->top = below;
}
inline void pop(const char* name) { pop(context(), name); }
// The text of the thread's current error, formatted now if that was put off.
const char* current_text(Context* c);
void mes(int type, int code, const char* message_template);
void ermes(int type, int code);
int status_word(int level, bool code);
void set_policy(int type, int* print, int* stop);
void set_user_level(const char* on_off);
void set_notification(qnum_error_callback callback);
bool same_name(const char* a, const char* b);
// Ends the process with `status` after flushing the streams.
[[noreturn]] void end_process(int status);

}  // namespace qnum::errors
