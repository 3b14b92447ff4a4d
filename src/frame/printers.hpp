// The error printers (stream, console, message box) and the traceback.
#pragma once

#include "frame/context.hpp"

namespace qnum::frame {

void stream_printer(int type, int code, const char* routine, const char* message);
void console_printer(int type, int code, const char* routine, const char* message);
void message_box_printer(int type, int code, const char* routine, const char* message);

// Writes the traceback of the calling thread's error stack to its error output stream.
void write_traceback(Context* c);

// The error output stream of the calling thread (unit 3), standard error as a fallback.
std::FILE* error_stream();

}  // namespace qnum::frame
