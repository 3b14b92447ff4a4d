// The MPS reader's line reader and number converter.
#include "optim/mps_util.hpp"

#include <cmath>

namespace qnum::optim {

bool LineReader::fill() {
    if (eof_) return false;
    if (pos_ > 0) {
        std::memmove(buf_, buf_ + pos_, end_ - pos_);
        end_ -= pos_;
        pos_ = 0;
    }
    const std::size_t got = std::fread(buf_ + end_, 1, capacity - end_, f_);
    end_ += got;
    if (got == 0) eof_ = true;
    return got > 0;
}

bool LineReader::next(char* line) {
    std::memset(line, ' ', width);
    line[width] = '\0';
    if (pos_ == end_ && !fill()) return false;
    for (;;) {
        const char* start = buf_ + pos_;
        const char* nl = static_cast<const char*>(std::memchr(start, '\n', end_ - pos_));
        if (nl != nullptr || eof_) {
            std::size_t len = nl != nullptr ? static_cast<std::size_t>(nl - start) : end_ - pos_;
            pos_ = nl != nullptr ? static_cast<std::size_t>(nl - buf_) + 1 : end_;
            if (len > 0 && start[len - 1] == '\r') --len;
            std::memcpy(line, start, len < width ? len : width);
            return true;
        }
        if (pos_ == 0 && end_ == capacity) {
            // A line longer than the whole buffer: keep its head, drop the rest up to its end.
            std::memcpy(line, start, width);
            for (;;) {
                pos_ = end_ = 0;
                if (!fill()) return true;
                const char* q = static_cast<const char*>(std::memchr(buf_, '\n', end_));
                if (q != nullptr) {
                    pos_ = static_cast<std::size_t>(q - buf_) + 1;
                    return true;
                }
            }
        }
        fill();
    }
}

namespace {

// Exact powers of ten in double: every one up to 1e22 is representable.
constexpr double pow10_exact[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                  1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                  1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

}  // namespace

bool parse_number(const char* s, std::size_t n, double& value) {
    std::size_t i = 0;
    bool negative = false;
    if (i < n && (s[i] == '+' || s[i] == '-')) negative = s[i++] == '-';
    std::uint64_t mantissa = 0;
    int digits = 0;       // significant digits taken into the mantissa
    int scale = 0;        // decimal exponent of the mantissa's last digit
    bool any = false, dropped = false;
    for (; i < n && s[i] >= '0' && s[i] <= '9'; ++i) {
        any = true;
        if (digits < 19) {
            mantissa = mantissa * 10 + static_cast<unsigned>(s[i] - '0');
            if (mantissa != 0) ++digits;
        } else {
            ++scale;
            dropped |= s[i] != '0';
        }
    }
    if (i < n && s[i] == '.') {
        for (++i; i < n && s[i] >= '0' && s[i] <= '9'; ++i) {
            any = true;
            if (digits < 19) {
                mantissa = mantissa * 10 + static_cast<unsigned>(s[i] - '0');
                if (mantissa != 0) ++digits;
                --scale;
            } else {
                dropped |= s[i] != '0';
            }
        }
    }
    if (!any) return false;
    if (i < n && (s[i] == 'e' || s[i] == 'E' || s[i] == 'd' || s[i] == 'D')) {
        ++i;
        bool eneg = false;
        if (i < n && (s[i] == '+' || s[i] == '-')) eneg = s[i++] == '-';
        if (i == n || s[i] < '0' || s[i] > '9') return false;
        int e = 0;
        for (; i < n && s[i] >= '0' && s[i] <= '9'; ++i) {
            if (e < 100000) e = e * 10 + (s[i] - '0');
        }
        scale += eneg ? -e : e;
    }
    if (i != n) return false;
    // Fast path: the mantissa and the power of ten are both exact doubles, so one product or
    // quotient rounds correctly.
    if (!dropped && mantissa < (std::uint64_t{1} << 53) && scale >= -22 && scale <= 22) {
        double v = static_cast<double>(mantissa);
        v = scale >= 0 ? v * pow10_exact[scale] : v / pow10_exact[-scale];
        value = negative ? -v : v;
        return true;
    }
    if (mantissa == 0 && !dropped) {
        value = negative ? -0.0 : 0.0;
        return true;
    }
    // Otherwise the C library converts the same text, with D exponents made E.
    char text[64];
    if (n >= sizeof text) return false;
    for (std::size_t k = 0; k < n; ++k) text[k] = (s[k] == 'd' || s[k] == 'D') ? 'e' : s[k];
    text[n] = '\0';
    value = std::strtod(text, nullptr);
    return true;
}

}  // namespace qnum::optim
