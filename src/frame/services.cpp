// The error options and the version query.
#include "frame/services.hpp"

#include <cstdlib>
#include <cstring>

#include "frame/context.hpp"
#include "frame/platform.hpp"
#include "frame/printers.hpp"

namespace qnum::frame {
namespace {

char* copy_string(const char* s) {
    if (s == nullptr) return nullptr;
    std::size_t n = std::strlen(s) + 1;
    char* p = static_cast<char*>(allocate(static_cast<long long>(n), 1, "string"));
    if (p) std::memcpy(p, s, n);
    return p;
}

// Types are checked against 1..7, but the message has always stated the range as 1..5;
// programs and their logs rely on that text, so it stays.
bool valid_type(int type) {
    if (type >= 1 && type <= 7) return true;
    raise(Type::Terminal, err::out_of_range, Int{1}, Int{5}, Int{type}, Str{"type"});
    return false;
}

}  // namespace

void error_options(Options opt) {
    Context* c = context();
    while (int code = opt.next()) {
        switch (code) {
        case QNUM_SET_PRINT:
        case QNUM_SET_STOP:
        case QNUM_SET_TRACEBACK: {
            int type = opt.get<int>();
            int setting = opt.get<int>();
            if (!valid_type(type)) break;
            auto byte = static_cast<std::uint8_t>(setting);
            if (code == QNUM_SET_PRINT) c->print[type] = byte;
            else if (code == QNUM_SET_STOP) c->stop[type] = byte;
            else c->traceback[type] = byte;
            break;
        }
        case QNUM_GET_PRINT:
        case QNUM_GET_STOP:
        case QNUM_GET_TRACEBACK: {
            int type = opt.get<int>();
            int* out = opt.ptr<int>("setting", code == QNUM_GET_PRINT ? "QNUM_GET_PRINT"
                                               : code == QNUM_GET_STOP ? "QNUM_GET_STOP"
                                                                       : "QNUM_GET_TRACEBACK");
            if (!valid_type(type) || out == nullptr) break;
            *out = code == QNUM_GET_PRINT ? c->print[type] : code == QNUM_GET_STOP ? c->stop[type] : c->traceback[type];
            break;
        }
        case QNUM_SET_ERROR_FILE: {
            std::FILE* f = opt.get<std::FILE*>();
            if (f == nullptr) f = stderr;
            qnum_umach(-3, &f);
            break;
        }
        case QNUM_ERROR_PRINT_PROC: {
            auto printer = opt.get<qnum_error_printer>();
            c->printer = printer ? printer : stream_printer;
            if (printer == nullptr) c->printer_kind = QNUM_PRINTER_STREAM;
            break;
        }
        case QNUM_SET_ERROR_PATH: {
            const char* path = opt.get<const char*>();
            std::free(c->catalogue.search_path);
            c->catalogue.search_path = copy_string(path);
            break;
        }
        case QNUM_SET_ERROR_FILE_NAME: {
            const char* name = opt.get<const char*>();
            char* copy = copy_string(name);
            if (copy == nullptr) break;
            std::free(c->catalogue.owned_file_name);
            c->catalogue.owned_file_name = copy;
            c->catalogue.file_name = copy;
            break;
        }
        case QNUM_GET_ERROR_FILE: {
            std::FILE** out = opt.ptr<std::FILE*>("file", "QNUM_GET_ERROR_FILE");
            if (out) qnum_umach(3, out);
            break;
        }
        case QNUM_FULL_TRACEBACK:
            c->full_traceback = opt.get<int>();
            break;
        case QNUM_GET_ERROR_PRINTER: {
            int* out = opt.ptr<int>("kind", "QNUM_GET_ERROR_PRINTER");
            if (out) *out = c->printer_kind;
            break;
        }
        case QNUM_SET_ERROR_PRINTER: {
            int kind = opt.get<int>();
            if (kind == QNUM_PRINTER_MESSAGE_BOX) {
                c->printer = message_box_printer;
            } else if (kind == QNUM_PRINTER_CONSOLE) {
                c->printer = console_printer;
            } else {
                kind = QNUM_PRINTER_STREAM;
                c->printer = stream_printer;
            }
            c->printer_kind = kind;
            break;
        }
        case QNUM_SIGNAL_TRAPPING:
            set_signal_trapping(opt.get<int>());
            break;
        default:
            opt.unknown(code);
        }
    }
}

char* version(int code) {
    const char* variable = nullptr;
    switch (code) {
    case QNUM_OS_VERSION: variable = "QNL_OS_VERSION"; break;
    case QNUM_COMPILER_VERSION: variable = "QNL_COMPILER_VERSION"; break;
    case QNUM_LIBRARY_VERSION: variable = "QNL_VERSION"; break;
    case QNUM_LICENSE_NUMBER: variable = "QNL_LICENSE_NUMBER"; break;
    default: {
        Level level("l_version");
        raise(Type::Terminal, err::unknown_option, Int{code}, Int{1});
        return nullptr;
    }
    }
    char value[261];
    platform::get_env(variable, value, sizeof value);
    const char* prefix = code == QNUM_LIBRARY_VERSION ? "QNUM C/Math/Library Version " : "";
    std::size_t n = std::strlen(prefix) + std::strlen(value) + 1;
    char* text = static_cast<char*>(allocate(static_cast<long long>(n), 1, "length"));
    if (text == nullptr) return nullptr;
    std::strcpy(text, prefix);
    std::strcat(text, value);
    return text;
}

}  // namespace qnum::frame
