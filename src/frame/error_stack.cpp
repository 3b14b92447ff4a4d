// The error stack: routine levels, raising and formatting errors, reporting and propagating
// them when levels are popped, and the per-type print and stop policy.
#include "frame/error_stack.hpp"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "frame/catalogue.hpp"
#include "frame/printers.hpp"
#include "frame/registry.hpp"

namespace qnum::errors {
namespace {

qnum_error_callback notification = nullptr;

const char out_of_memory_text[] = "Out of memory in error handler.";

void clear_status(Context* c) {
    c->status[0] = c->status[1] = c->status[2] = c->status[3] = 0;
}

void set_current(Context* c, int type, int code) {
    c->status[0] = type;
    c->status[2] = code;
}

// The substitution values a template is formatted with: the thread's slots, or the copies
// taken when the formatting was deferred.
struct SlotView {
    const std::int32_t* ints;
    const double* reals;
    const double (*complexes)[2];
    const char* const* strings;
};

SlotView live_slots(const Context* c) {
    return {c->int_slots, c->real_slots, c->complex_slots, c->string_slots};
}

// Ensures room for `more` bytes plus a NUL. The buffer is doubled while fewer than 512 bytes
// (or fewer than needed) remain; a failed growth ends the process with INTERNAL 200.
void reserve(Context* c, std::size_t more) {
    while (c->msg_cap - c->msg_len < 512 || c->msg_cap - c->msg_len <= more + 1) {
        std::size_t cap = c->msg_cap * 2;
        char* grown = static_cast<char*>(std::realloc(c->msg, cap));
        if (grown == nullptr) {
            c->printer(8, 200, c->top->name, out_of_memory_text);
            if (c->traceback[8]) frame::write_traceback(c);
            end_process(c->top->type);
        }
        c->msg = grown;
        c->msg_cap = cap;
    }
}

void append(Context* c, const char* s, std::size_t n) {
    reserve(c, n);
    std::memcpy(c->msg + c->msg_len, s, n);
    c->msg_len += n;
    c->msg[c->msg_len] = '\0';
}

template <class... A>
void append_format(Context* c, const char* fmt, A... args) {
    int n = std::snprintf(nullptr, 0, fmt, args...);
    if (n <= 0) return;
    reserve(c, static_cast<std::size_t>(n));
    std::snprintf(c->msg + c->msg_len, c->msg_cap - c->msg_len, fmt, args...);
    c->msg_len += static_cast<std::size_t>(n);
}

// A user format must hold exactly one conversion of the kind the slot needs; anything else
// (a %n, a second conversion, a width given by '*') falls back to the kind's default, so a
// template can never read arguments that were not passed. Widths and precisions of more
// than three digits fall back too: a damaged catalogue must not make a message of millions
// of characters.
bool safe_format(const char* fmt, const char* allowed, int conversions) {
    int seen = 0;
    for (const char* p = fmt; *p; ++p) {
        if (*p != '%') continue;
        ++p;
        if (*p == '%') continue;
        for (int digits = 0; *p && std::strchr("-+ #0123456789.lhLqjzt", *p); ++p) {
            digits = std::isdigit(static_cast<unsigned char>(*p)) ? digits + 1 : 0;
            if (digits > 3) return false;
        }
        if (!*p || !std::strchr(allowed, *p)) return false;
        ++seen;
    }
    return seen == conversions;
}

// Replaces one %(kN...) placeholder; returns the number of template characters consumed,
// or 0 when the text at t is not a placeholder (the '%' is then copied as it stands).
std::size_t substitute(Context* c, const SlotView& v, const char* t) {
    // t points at "%(": kind letter, digit, then ")" or a format up to ")".
    char kind = t[2];
    if (kind == '\0' || !std::isdigit(static_cast<unsigned char>(t[3]))) return 0;
    int k = t[3] - '0';
    const char* fmt_begin = t + 4;
    const char* close = std::strchr(fmt_begin, ')');
    if (close == nullptr || (close != fmt_begin && *fmt_begin != '%')) return 0;
    std::size_t consumed = static_cast<std::size_t>(close - t) + 1;
    char fmt[64];
    std::size_t flen = static_cast<std::size_t>(close - fmt_begin);
    bool custom = flen > 0 && flen < sizeof fmt;
    if (custom) {
        std::memcpy(fmt, fmt_begin, flen);
        fmt[flen] = '\0';
    }
    if (k < 1 || k > slots) {
        append_format(c, "%%(%c%c)", kind, t[3]);
        return consumed;
    }
    switch (kind) {
    case 'i': case 'I':
        append_format(c, custom && safe_format(fmt, "dixXuoc", 1) ? fmt : "%d", v.ints[k - 1]);
        break;
    case 'r': case 'R': case 'f': case 'F': case 'd': case 'D':
        append_format(c, custom && safe_format(fmt, "eEfFgGaA", 1) ? fmt : "%e", v.reals[k - 1]);
        break;
    case 'c': case 'C': case 'z': case 'Z':
        append_format(c, custom && safe_format(fmt, "eEfFgGaA", 2) ? fmt : "(%e,%e)",
                      v.complexes[k - 1][0], v.complexes[k - 1][1]);
        break;
    case 'l': case 'L': case 's': case 'S': {
        const char* s = v.strings[k - 1] ? v.strings[k - 1] : "(null)";
        append_format(c, custom && safe_format(fmt, "s", 1) ? fmt : "%s", s);
        break;
    }
    default:
        append_format(c, "%%(%c%c)", kind, t[3]);
        break;
    }
    return consumed;
}

void format_template(Context* c, const char* t, const SlotView& v) {
    c->msg_len = 0;
    c->msg[0] = '\0';
    while (*t) {
        if (t[0] == '%' && t[1] == '/') {
            append(c, "\n", 1);
            t += 2;
            continue;
        }
        if (t[0] == '%' && t[1] == '(') {
            if (std::size_t used = substitute(c, v, t)) {
                t += used;
                continue;
            }
        }
        // Plain text up to the next '%' (this one included) goes in one piece.
        const char* next = std::strchr(t + 1, '%');
        const std::size_t n = next ? static_cast<std::size_t>(next - t) : std::strlen(t);
        append(c, t, n);
        t += n;
    }
}

void empty_buffer(Context* c) {
    c->msg_len = 0;
    c->msg[0] = '\0';
    c->deferred.pending = false;
}

// Keeps the template and the values it substitutes instead of formatting it now; false (the
// text is formatted at once) when they do not fit the space kept for them.
bool defer(Context* c, const char* t) {
    DeferredText& d = c->deferred;
    std::size_t used = std::strlen(t) + 1;
    if (used > sizeof d.text) return false;
    std::memcpy(d.text, t, used);
    for (int k = 0; k < slots; ++k) d.strings[k] = nullptr;
    // Only the strings the template names are read: other slots may hold stale pointers.
    for (const char* p = std::strstr(t, "%("); p != nullptr; p = std::strstr(p + 2, "%(")) {
        if (!std::strchr("lLsS", p[2]) || p[2] == '\0' || p[3] < '1' || p[3] > '0' + slots) continue;
        const int k = p[3] - '1';
        const char* s = c->string_slots[k];
        if (s == nullptr || d.strings[k] != nullptr) continue;
        const std::size_t n = std::strlen(s) + 1;
        if (n > sizeof d.text - used) return false;
        d.strings[k] = static_cast<char*>(std::memcpy(d.text + used, s, n));
        used += n;
    }
    std::memcpy(d.ints, c->int_slots, sizeof d.ints);
    std::memcpy(d.reals, c->real_slots, sizeof d.reals);
    std::memcpy(d.complexes, c->complex_slots, sizeof d.complexes);
    c->msg_len = 0;
    c->msg[0] = '\0';
    d.pending = true;
    return true;
}

// Formats a deferred text into the message buffer.
void materialize(Context* c) {
    DeferredText& d = c->deferred;
    if (!d.pending) return;
    d.pending = false;
    format_template(c, d.text, SlotView{d.ints, d.reals, d.complexes, d.strings});
}

void report(Context* c, int type, int code, const char* routine) {
    const bool notify = notification && type != 0;
    const bool print = type >= 0 && type <= 8 && c->print[type];
    if (notify || print) materialize(c);
    if (notify) notification(type, code, c->msg);
    if (c->msg[0] != '\0' && print) {
        c->printer(type, code, routine, c->msg);
        if (c->traceback[type]) frame::write_traceback(c);
    }
}

}  // namespace

[[noreturn]] void end_process(int status) {
    std::fflush(nullptr);
    std::exit(status);
}

void push_slow(const char* name) {
    Context* c = context();
    if (c->top == &c->stack[0]) empty_buffer(c);
    ++c->top;
    if (c->top > &c->stack[stack_entries - 1]) {
        // The overflowing level is not kept: report on the last real entry and stop.
        c->top = &c->stack[stack_entries - 1];
        mes(8, 60000, catalogue::message_template(60000));
        end_process(c->top->type);
    }
    *c->top = StackEntry{0, 0, 0, name, name};
    clear_status(c);
    if (multi_thread_fault.load(std::memory_order_relaxed)) ermes(4, 499);
}

void pop_slow(const char* name) {
    Context* c = context();
    if (c->unwind) {
        c->unwind = 0;
        if (!same_name(c->top->name, name)) {
            StackEntry* e = c->top;
            while (e > &c->stack[0] && !same_name(e->name, name)) --e;
            if (e > &c->stack[0]) {
                // The levels the jump abandoned pass their error on as a pop would.
                for (StackEntry* d = c->top; d > e; --d) {
                    if ((d - 1)->type <= d->type) {
                        (d - 1)->type = d->type;
                        (d - 1)->code = d->code;
                        (d - 1)->origin = d->origin;
                    }
                }
                c->top = e;
            }
        }
    }
    if (!same_name(c->top->name, name)) {
        qnum_e1stl(1, name);
        qnum_e1stl(2, c->top->name);
        ermes(8, 60001);
        end_process(8);
    }
    StackEntry* top = c->top;
    StackEntry* below = top - 1;
    if (top == &c->stack[0]) return;  // nothing to pop: the base level stays
    if (below->user) {
        // Reports name the routine that raised the error, which may lie deeper than this one.
        report(c, top->type, top->code, top->origin);
        if (top->type <= 8 && c->stop[top->type]) end_process(top->type);
        // A level marked as the user's inside the library has now reported the error; the
        // text is kept only at the caller's own level, so it is not printed a second time.
        // A level that ended cleanly reported nothing, and a text still pending stays.
        if (below != &c->stack[0] && top->type != 0) empty_buffer(c);
    }
    if (below->type <= top->type) {
        below->type = top->type;
        below->code = top->code;
        below->origin = top->origin;
        set_current(c, top->type, top->code);
    }
    c->status[1] = top->type;
    c->status[3] = top->code;
    --c->top;
}

bool same_name(const char* a, const char* b) {
    return a == b || (a != nullptr && b != nullptr && std::strcmp(a, b) == 0);
}

namespace {

void raise_text(int type, int code, const char* message_template, bool deferrable) {
    Context* c = context();
    if (type < -1 || type > 8) {
        push("qnum_e1mes");
        empty_buffer(c);
        append_format(c, "Error type must be -1,...,8, but type = %d.  Message = \"%s\"", type,
                      message_template ? message_template : "");
        c->printer(8, 160, c->top->name, c->msg);
        if (c->traceback[8]) frame::write_traceback(c);
        end_process(8);
    }
    if (type == -1 && code == -1) {
        type = c->top->type;
        code = c->top->code;
        if (type == -1) return;
    } else if (type == -1) {
        c->top->code = code;
        set_current(c, c->top->type, c->top->code);
        return;
    }
    if (type == 0 && code == 0) {
        empty_buffer(c);
        c->top->type = 0;
        c->top->code = 0;
        set_current(c, 0, 0);
        return;
    }
    c->top->type = static_cast<std::uint8_t>(type);
    c->top->code = code;
    c->top->origin = c->top->name;
    if (message_template == nullptr || std::strcmp(message_template, " ") == 0)
        empty_buffer(c);
    else if (!deferrable || type == 8 || c->immediate[type] || !defer(c, message_template))
        format_template(c, message_template, live_slots(c));
    if (c->immediate[type]) {
        report(c, type, code, c->top->name);
        empty_buffer(c);
    }
    if (type == 8) end_process(8);
    set_current(c, c->top->type, c->top->code);
}

}  // namespace

const char* current_text(Context* c) {
    materialize(c);
    return c->msg ? c->msg : "";
}

void mes(int type, int code, const char* message_template) { raise_text(type, code, message_template, false); }

void ermes(int type, int code) {
    // The template is read before the slots could change; it lives in a per-thread buffer, which
    // a deferred text copies.
    raise_text(type, code, catalogue::message_template(code), true);
}

void set_notification(qnum_error_callback callback) { notification = callback; }

int status_word(int level, bool code) {
    Context* c = context();
    if (level != 0 && level != 1) {
        qnum_e1sti(1, 0);
        qnum_e1sti(2, 1);
        qnum_e1sti(3, level);
        qnum_e1stl(1, "level");
        ermes(8, 122);
        return 0;
    }
    return c->status[(code ? 2 : 0) + level];
}

void set_policy(int type, int* print, int* stop) {
    Context* c = context();
    if (type < -8 || type > 8) {
        push("qnum_e1pos");
        qnum_e1sti(1, -8);
        qnum_e1sti(2, 8);
        qnum_e1sti(3, type);
        qnum_e1stl(1, "type");
        ermes(5, 132);
        pop("qnum_e1pos");
        return;
    }
    if (type < 0) {
        if (print) *print = c->print[-type];
        if (stop) *stop = c->stop[-type];
        return;
    }
    if (type > 0) {
        if (print && *print > 0) c->print[type] = static_cast<std::uint8_t>(*print);
        if (stop && *stop > 0) c->stop[type] = static_cast<std::uint8_t>(*stop);
        return;
    }
    for (int t = 1; t <= 7; ++t) {
        if (print && *print >= 0) c->print[t] = static_cast<std::uint8_t>(*print);
        if (stop && *stop >= 0) c->stop[t] = static_cast<std::uint8_t>(*stop);
    }
}

void set_user_level(const char* on_off) {
    Context* c = context();
    bool on = on_off != nullptr && on_off[0] != '\0' && (on_off[1] == 'N' || on_off[1] == 'n');
    c->top->user = on ? 1 : 0;
}

}  // namespace qnum::errors
