// The error printers and the traceback. Reports are word-wrapped at column 77; continuation
// lines start with "***" and nine blanks, so a report stands out in a program's output.
#include "frame/printers.hpp"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "frame/catalogue.hpp"
#include "frame/platform.hpp"
#include "frame/registry.hpp"

namespace qnum::frame {
namespace {

constexpr int width = 77;
constexpr const char* continuation = "***         ";
constexpr int continuation_column = 12;

// Collects the text of one report, so that each printer writes it in one piece.
class Text {
public:
    ~Text() { std::free(p_); }
    void add(const char* s, std::size_t n) {
        if (!grow(n)) return;
        std::memcpy(p_ + len_, s, n);
        len_ += n;
        p_[len_] = '\0';
    }
    void add(const char* s) { add(s, std::strlen(s)); }
    void addf(const char* fmt, ...) __attribute__((format(printf, 2, 3))) {
        va_list ap;
        va_start(ap, fmt);
        va_list ap2;
        va_copy(ap2, ap);
        int n = std::vsnprintf(nullptr, 0, fmt, ap);
        va_end(ap);
        if (n > 0 && grow(static_cast<std::size_t>(n))) {
            std::vsnprintf(p_ + len_, cap_ - len_, fmt, ap2);
            len_ += static_cast<std::size_t>(n);
        }
        va_end(ap2);
    }
    const char* str() const { return p_ ? p_ : ""; }
    std::size_t size() const { return len_; }

private:
    bool grow(std::size_t n) {
        if (len_ + n + 1 <= cap_) return true;
        std::size_t cap = cap_ ? cap_ : 256;
        while (cap < len_ + n + 1) cap *= 2;
        char* q = static_cast<char*>(std::realloc(p_, cap));
        if (!q) return false;
        p_ = q;
        cap_ = cap;
        return true;
    }
    char* p_ = nullptr;
    std::size_t len_ = 0, cap_ = 0;
};

StackEntry* user_level(Context* c) {
    StackEntry* e = c->top;
    while (e > &c->stack[0] && !e->user) --e;
    return e;
}

// The routine that the user's level called: the entry just above the user level.
const char* called_routine(Context* c) {
    StackEntry* u = user_level(c);
    const char* name = u < c->top ? (u + 1)->name : c->top->name;
    return name ? name : "";
}

const char* or_empty(const char* s) { return s ? s : ""; }

// The report of the stream and console printers; nl is "\n" or "\r\n".
void render(Text& out, int type, int code, const char* routine, const char* message, const char* nl) {
    Context* c = context();
    const char* tname = c->type_names[type];
    std::size_t before = out.size();
    if (type < 5)
        out.addf("%s*** %s Error %s from %s.  ", nl, tname, catalogue::code_name(code), routine ? routine : "");
    else
        out.addf("%s*** %s Error from %s.  ", nl, tname, called_routine(c));
    int col = static_cast<int>(out.size() - before - std::strlen(nl));
    bool line_start = false;  // nothing but a continuation prefix on the line yet
    // "\n***          " leaves the text one blank further in than a line that continues at
    // a broken blank; counting that blank keeps every line within the margin.
    auto fresh_line = [&] {
        out.addf("%s%s ", nl, continuation);
        col = continuation_column + 1;
        line_start = true;
    };
    if (col > width) fresh_line();
    const char* rest = message;
    while (true) {
        int len = static_cast<int>(std::strlen(rest));
        const char* newline = std::strchr(rest, '\n');
        if (col + len <= width && newline == nullptr) break;
        int limit = width - col;  // the break character may stand at most here
        int brk = -1;
        if (newline != nullptr && newline - rest <= limit) {
            brk = static_cast<int>(newline - rest);
        } else {
            for (int p = limit < len - 1 ? limit : len - 1; p >= 1; --p)
                if (rest[p] == ' ') { brk = p; break; }
        }
        if (brk < 0 && !line_start) {
            fresh_line();
            continue;
        }
        if (brk < 0) {
            // A run without blanks longer than a whole line: break it hard at the margin.
            out.add(rest, static_cast<std::size_t>(limit));
            rest += limit;
            fresh_line();
            continue;
        }
        out.add(rest, static_cast<std::size_t>(brk));
        out.add(nl);
        out.add(continuation);
        rest += brk;
        line_start = false;
        if (*rest == '\n') {
            out.add(" ");
            ++rest;
            col = continuation_column + 1;
        } else {
            col = continuation_column;
        }
    }
    out.add(rest);
    out.add(nl);
    out.add(nl);
}

}  // namespace

std::FILE* error_stream() {
    std::FILE** units = stream_units();
    std::FILE* f = units ? units[2] : nullptr;
    return f ? f : stderr;
}

void stream_printer(int type, int code, const char* routine, const char* message) {
    if (message == nullptr || message[0] == '\0' || type < 0 || type > 8) return;
    Text text;
    render(text, type, code, routine, message, "\n");
    std::FILE* f = error_stream();
    context()->error_stream = f;
    registry::output_lock(f);
    std::fwrite(text.str(), 1, text.size(), f);
    std::fflush(f);
    registry::output_unlock(f);
}

void console_printer(int type, int code, const char* routine, const char* message) {
    if (message == nullptr || message[0] == '\0' || type < 0 || type > 8) return;
    Text text;
    render(text, type, code, routine, message, "\r\n");
    registry::output_lock(nullptr);
    platform::write_console(text.str(), text.size());
    registry::output_unlock(nullptr);
}

void message_box_printer(int type, int code, const char* routine, const char* message) {
    if (message == nullptr || type < 0 || type > 8) return;
    Context* c = context();
    char tname[32];
    std::snprintf(tname, sizeof tname, "%s", c->type_names[type]);
    if (char* blank = std::strchr(tname, ' ')) *blank = '\0';
    Text text;
    if (type < 5)
        text.addf("%s Error %s from %s.  %s", tname, catalogue::code_name(code), routine ? routine : "", message);
    else
        text.addf("%s Error from %s.  %s", tname, called_routine(c), message);
    char caption[256];
    platform::host_executable_name(caption, sizeof caption);
    std::FILE* f = error_stream();
    registry::output_lock(f);
    platform::message_box(f, caption, text.str(), c->stop[type] != 0);
    registry::output_unlock(f);
}

void write_traceback(Context* c) {
    Text text;
    text.addf("%s\n%s\n%s\n", "Here is a traceback of the calls in reverse order.",
              "  Error Type        Error Code              Routine",
              "  ----------        ----------              -------");
    const StackEntry* remembered = nullptr;
    for (const StackEntry* e = c->top; e >= &c->stack[0]; --e) {
        if (e->type != 0) remembered = e;
        bool listed = e == &c->stack[0] || (e - 1)->user || c->full_traceback;
        if (!listed) continue;
        if (remembered && !e->user)
            text.addf(" %5s%-9s   %-25s %s\n", "QNUM_", c->type_names[remembered->type],
                      catalogue::code_name(remembered->code), or_empty(e->name));
        else
            text.addf(" %5s%-9s   %-25s %s\n", "", "", "", or_empty(e->name));
        remembered = nullptr;
    }
    std::FILE* f = error_stream();
    registry::output_lock(f);
    std::fwrite(text.str(), 1, text.size(), f);
    std::fflush(f);
    registry::output_unlock(f);
}

}  // namespace qnum::frame
