// Machine constants from fixed tables of bit patterns, NaN tests and the stream units.
#include "frame/machine.hpp"

#include <cstdint>
#include <cstring>

#include "frame/context.hpp"
#include "frame/frame.hpp"

namespace qnum::machine {
namespace {

// IEEE single: 2^-126, largest finite, 2^-24, 2^-23, log10(2), quiet NaN, +inf, -inf.
constexpr std::uint32_t single_bits[8] = {0x00800000u, 0x7F7FFFFFu, 0x33800000u, 0x34000000u,
                                          0x3E9A209Bu, 0x7FFFFFFFu, 0x7F800000u, 0xFF800000u};
// IEEE double, in the same order. The log10(2) entry is 0x3FD344133FD34413, its upper half
// repeated, which is 0.30102998001990605 rather than the correctly rounded value; callers
// have always received this value, so it stays.
constexpr std::uint64_t double_bits[8] = {0x0010000000000000ull, 0x7FEFFFFFFFFFFFFFull,
                                          0x3CA0000000000000ull, 0x3CB0000000000000ull,
                                          0x3FD344133FD34413ull, 0x7FFFFFFFFFFFFFFFull,
                                          0x7FF0000000000000ull, 0xFFF0000000000000ull};
// Bases, digit counts, largest integers and exponent limits.
constexpr int integer_table[13] = {8, 2, 15, 32767, 31, 2147483647, 2, 24, -125, 128, 53, -1021, 1024};

float from_bits(std::uint32_t b) {
    float f;
    std::memcpy(&f, &b, sizeof f);
    return f;
}
double from_bits(std::uint64_t b) {
    double d;
    std::memcpy(&d, &b, sizeof d);
    return d;
}

}  // namespace

float amach(int i) {
    if (i < 1 || i > 8) {
        frame::raise_in("qnum_amach", frame::Type::Terminal, err::bad_machine_index, frame::Int{i});
        return 0.0f;
    }
    return from_bits(single_bits[i - 1]);
}

double dmach(int i) {
    if (i < 1 || i > 8) {
        frame::raise_in("qnum_dmach", frame::Type::Terminal, err::bad_machine_index, frame::Int{i});
        return 0.0;
    }
    return from_bits(double_bits[i - 1]);
}

template <class T>
T machine(int i) {
    if (i < 1 || i > 8) {
        frame::Level level("l_machine");
        check::range(i, 1, 8, "n");
        return T();
    }
    if constexpr (sizeof(T) == sizeof(float)) return amach(i);
    else return dmach(i);
}
template float machine<float>(int);
template double machine<double>(int);

int integer(int i) {
    if (i < 0 || i > 12) {
        frame::Level level("l_machine");
        check::range(i, 0, 12, "n");
        return 0;
    }
    return integer_table[i];
}

void umach(int n, std::FILE** p) {
    if (n < -3 || n > 3 || n == 0) {
        frame::raise(frame::Type::Terminal, err::bad_unit_number, frame::Int{n});
        return;
    }
    if (p == nullptr) {
        frame::raise(frame::Type::Terminal, err::missing_array, frame::Str{"p"});
        return;
    }
    const int unit = n < 0 ? -n : n;
    std::FILE** units = stream_units();
    if (units == nullptr) {
        frame::raise(frame::Type::Terminal, err::out_of_memory);
        return;
    }
    if (n > 0) {
        *p = units[unit - 1];
    } else {
        units[unit - 1] = *p;
        if (unit == 3) context()->error_stream = *p;
    }
}

int is_nan(float x) {
    std::uint32_t b;
    std::memcpy(&b, &x, sizeof b);
    return ((b >> 23) & 0xFF) == 0xFF && (b & 0x7FFFFF) != 0;
}

int is_nan(double x) {
    std::uint64_t b;
    std::memcpy(&b, &x, sizeof b);
    return ((b >> 52) & 0x7FF) == 0x7FF && (b & 0xFFFFFFFFFFFFFull) != 0;
}

}  // namespace qnum::machine
