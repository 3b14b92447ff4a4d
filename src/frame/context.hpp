// The per-thread context: error stack, substitution slots, message buffer, policies, printers,
// jump buffers and the message-catalogue cache of one thread.
#pragma once

#include <atomic>
#include <csetjmp>
#include <cstdint>
#include <cstdio>

#include "qnummath.h"

namespace qnum {

inline constexpr int stack_entries = 200;
inline constexpr int jump_buffers = 100;
inline constexpr int slots = 9;

struct StackEntry {
    std::uint8_t type;
    std::uint8_t user;  // 1: the caller's level, where errors of deeper levels are reported
    std::int32_t code;
    const char* name;
    const char* origin;  // the routine that raised the error this level carries
};

struct CatalogueCache {
    char* search_path = nullptr;    // owned; null: the environment decides
    const char* file_name = nullptr;
    char* owned_file_name = nullptr;
    char* message = nullptr;        // the record read last (allocated on first use)
    std::size_t message_cap = 0;
    long cached_code = -1;
    int cached_index = -1;
    char fallback[512] = {};        // "Error code %ld." and read-error texts
    char code_name[64] = {};
    const char* reason = nullptr;
    char env_path[264] = {};        // QNUMERRPATH as read
};

// An error's text kept unformatted, with copies of the values it substitutes, until something
// prints it or hands it to the notification callback: most errors a program raises and clears
// are never read, and formatting numbers costs more than the rest of a raise.
struct DeferredText {
    bool pending = false;
    std::int32_t ints[slots];
    double reals[slots];
    double complexes[slots][2];
    const char* strings[slots];
    char text[768];  // the template, then the strings it substitutes
};

struct Context {
    std::int32_t jmp_depth = 0;     // used in the first context only
    std::int32_t unwind = 0;
    std::int32_t int_slots[slots] = {};
    double real_slots[slots] = {};
    double complex_slots[slots][2] = {};
    const char* string_slots[slots] = {};
    CatalogueCache catalogue;
    sigjmp_buf jmp[jump_buffers];
    // Level status: current type, popped type, current code, popped code.
    std::int32_t status[4] = {};
    char* msg = nullptr;
    std::size_t msg_len = 0;
    std::size_t msg_cap = 0;
    DeferredText deferred;
    StackEntry stack[stack_entries];
    StackEntry* top = nullptr;
    std::FILE* error_stream = nullptr;
    qnum_error_printer printer = nullptr;
    int printer_kind = QNUM_PRINTER_STREAM;
    int full_traceback = 0;
    const char* type_names[9];
    std::uint8_t print[9], stop[9], traceback[9], immediate[9];
    // Fault trapping: nesting depth of this thread's trapped calls.
    std::int32_t trap_depth = 0;
};

// The calling thread's context, cached in a plain thread-local pointer so that the frame of
// every public routine reaches it with one load; the registry stays its owner.
extern __thread Context* this_thread_context __attribute__((tls_model("initial-exec")));
Context* create_context();

// The calling thread's context, created on first use. Never null.
inline Context* context() {
    Context* c = this_thread_context;
    return c ? c : create_context();
}
// The context of this thread if it has one (for the fault handler), else null.
inline Context* context_if_any() { return this_thread_context; }
// For tests: how many contexts exist in the process now.
int live_contexts();
// The first context created in the process; its jump buffers serve every trapped call.
extern std::atomic<Context*> first_context_created;
inline Context* first_context() { return first_context_created.load(std::memory_order_acquire); }

// Set when a second thread created its context while signal trapping was on; never cleared.
extern std::atomic<int> multi_thread_fault;
// The process-wide signal-trapping switch, initially on.
extern std::atomic<int> signal_trapping;
void set_signal_trapping(int value);

// The stream units of the calling thread (1 input, 2 output, 3 error output); null when the
// record cannot be allocated.
std::FILE** stream_units();

}  // namespace qnum
