// The optional-argument reader and the storage helpers shared by every routine.
#include <cstdint>
#include <cstdlib>

#include "frame/frame.hpp"

namespace qnum::frame {

Options::Options(va_list ap, int first_position)
    : position_(first_position), first_code_(0), has_first_(false) {
    va_copy(ap_, ap);
}

Options::Options(int first_code, va_list ap, int first_position)
    : position_(first_position), first_code_(first_code), has_first_(true) {
    va_copy(ap_, ap);
}

Options::Options(Options&& other) noexcept
    : position_(other.position_), code_position_(other.code_position_), first_code_(other.first_code_),
      has_first_(other.has_first_), done_(other.done_) {
    va_copy(ap_, other.ap_);
    other.done_ = true;
}

Options::~Options() { va_end(ap_); }

int Options::next() {
    if (done_) return 0;
    int code;
    code_position_ = position_;
    if (has_first_) {
        code = first_code_;
        has_first_ = false;
    } else {
        code = va_arg(ap_, int);
    }
    ++position_;
    if (code <= 0) {
        done_ = true;
        return 0;
    }
    return code;
}

void Options::unknown(int option_code, int error_code) {
    raise(Type::Terminal, error_code, Int{option_code}, Int{code_position_});
    done_ = true;
}

std::size_t checked_bytes(long long n, std::size_t size) {
    if (n < 0 || size == 0) return 0;
    if (static_cast<unsigned long long>(n) > SIZE_MAX / size) return 0;
    return static_cast<std::size_t>(n) * size;
}

void* allocate(long long n, std::size_t size, const char* size_name) {
    std::size_t bytes = checked_bytes(n, size);
    void* p = nullptr;
    if (bytes > 0 || n == 0) p = std::malloc(bytes > 0 ? bytes : 1);
    if (p == nullptr) {
        raise(Type::Terminal, err::no_memory, Str{size_name},
              Int{n > 2147483647LL ? 2147483647 : static_cast<int>(n)});
    }
    return p;
}

}  // namespace qnum::frame
