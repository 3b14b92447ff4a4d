// The error stack's operations, behind the qnum_e1* entry points.
#pragma once

#include "frame/context.hpp"

namespace qnum::errors {

void push(const char* name);
void pop(const char* name);
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
