// The per-thread context and its accessor, the signal-trapping switch and the stream units.
#include "frame/context.hpp"

#include <cstdlib>
#include <cstring>
#include <new>

#include "frame/printers.hpp"
#include "frame/registry.hpp"

namespace qnum {

__thread Context* this_thread_context = nullptr;
std::atomic<int> multi_thread_fault{0};
std::atomic<int> signal_trapping{1};
std::atomic<Context*> first_context_created{nullptr};

namespace {

registry::OnceFlag context_key_once{0};
int context_key;  // zero until the key exists
platform::Mutex creation_lock;
platform::Mutex signal_lock;
std::atomic<int> live{0};
bool first_recorded = false;  // under creation_lock; stays set when the first thread ends

void destroy_context(void* p) {
    auto* c = static_cast<Context*>(p);
    if (c == nullptr) return;
    Context* expected = c;
    first_context_created.compare_exchange_strong(expected, nullptr);
    if (this_thread_context == c) this_thread_context = nullptr;
    live.fetch_sub(1, std::memory_order_relaxed);
    std::free(c->msg);
    std::free(c->catalogue.search_path);
    std::free(c->catalogue.owned_file_name);
    std::free(c->catalogue.message);
    c->~Context();
    std::free(c);
}

void create_context_key() { registry::key_create(&context_key, destroy_context); }

const char* const type_names[9] = {"INTERNAL", "NOTE    ", "ALERT   ", "WARNING ", "FATAL   ",
                                   "TERMINAL", "WARNING_IMMEDIATE", "FATAL_IMMEDIATE", "INTERNAL"};
// Per type: printed, stopping, traced back, reported as soon as raised.
constexpr bool no = false, yes = true;
const bool default_print[9] = {no, no, no, yes, yes, yes, yes, yes, yes};
const bool default_stop[9] = {no, no, no, no, yes, yes, no, no, yes};
const bool default_traceback[9] = {no, no, no, no, no, no, no, no, yes};
const bool default_immediate[9] = {no, no, no, no, no, yes, yes, yes, yes};

}  // namespace

Context* create_context() {
    registry::once(context_key_once, create_context_key);
    if (void* v = registry::get_value(context_key)) return this_thread_context = static_cast<Context*>(v);
    void* mem = std::malloc(sizeof(Context));
    if (mem == nullptr) std::abort();  // nothing can be reported without a context
    auto* c = new (mem) Context;
    live.fetch_add(1, std::memory_order_relaxed);
    {
        platform::Lock guard(creation_lock);
        if (!first_recorded) {
            first_recorded = true;
            first_context_created.store(c, std::memory_order_release);
        } else if (signal_trapping.load(std::memory_order_relaxed)) {
            multi_thread_fault.store(true, std::memory_order_relaxed);
        }
    }
    c->msg_cap = 2048;
    c->msg = static_cast<char*>(std::malloc(c->msg_cap));
    if (c->msg == nullptr) std::abort();
    c->msg[0] = '\0';
    c->stack[0] = StackEntry{0, 1, 0, "USER", "USER"};
    c->top = &c->stack[0];
    c->printer = frame::stream_printer;
    for (int t = 0; t < 9; ++t) {
        c->type_names[t] = type_names[t];
        c->print[t] = default_print[t];
        c->stop[t] = default_stop[t];
        c->traceback[t] = default_traceback[t];
        c->immediate[t] = default_immediate[t];
    }
    c->catalogue.file_name = "qnumerr.bin";
    registry::set_value(context_key, c);
    this_thread_context = c;
    return c;
}

int live_contexts() { return live.load(std::memory_order_relaxed); }


void set_signal_trapping(int value) {
    if (signal_trapping.load(std::memory_order_relaxed) == value) return;
    platform::Lock guard(signal_lock);
    signal_trapping.store(value, std::memory_order_relaxed);
}

// ---- stream units ----
namespace {
registry::OnceFlag units_once{0};
int units_key;
void free_units(void* p) { std::free(p); }
void create_units_key() { registry::key_create(&units_key, free_units); }
}  // namespace

std::FILE** stream_units() {
    registry::once(units_once, create_units_key);
    if (void* v = registry::get_value(units_key)) return static_cast<std::FILE**>(v);
    auto* units = static_cast<std::FILE**>(std::malloc(sizeof(std::FILE*[3])));
    if (units == nullptr) return nullptr;
    units[0] = stdin;
    units[1] = stdout;
    units[2] = stderr;
    if (registry::set_value(units_key, units) != registry::ok) {
        std::free(units);
        return nullptr;
    }
    return units;
}

}  // namespace qnum
