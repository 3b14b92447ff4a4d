// Helpers shared by the fuzz targets: a quiet error policy and numbers drawn from the input
// that reach the awkward corners of floating point.
#pragma once

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include <fuzzer/FuzzedDataProvider.h>

#include "qnummath.h"

namespace fuzz {

// Errors of every type are reported silently and never stop the process: each input must
// come back from the library, whatever it reported.
inline void quiet_errors() {
    static const bool done = [] {
        for (int type = 1; type <= 7; ++type) qnum_error_options(QNUM_SET_PRINT, type, 0, QNUM_SET_STOP, type, 0, 0);
        return true;
    }();
    (void)done;
}

// A double: one of the values that trouble numerical code (zeros, infinities, NaN,
// subnormals, the extremes, integers and half-integers where functions have poles or
// branch points), such a value scaled by a small power of two, or any bit pattern.
inline double number(FuzzedDataProvider& in) {
    static const double special[] = {0.0,
                                      -0.0,
                                      1.0,
                                      -1.0,
                                      0.5,
                                      -0.5,
                                      2.0,
                                      3.0,
                                      -3.0,
                                      10.0,
                                      -10.0,
                                      -10.5,
                                      -11.0,
                                      35.0,
                                      171.6,
                                      1e-300,
                                      1e300,
                                      -1e300,
                                      DBL_EPSILON,
                                      DBL_MIN,
                                      DBL_TRUE_MIN,
                                      -DBL_TRUE_MIN,
                                      DBL_MAX,
                                      -DBL_MAX,
                                      FLT_MIN,
                                      FLT_TRUE_MIN,
                                      FLT_MAX,
                                      FLT_EPSILON,
                                      std::numeric_limits<double>::infinity(),
                                      -std::numeric_limits<double>::infinity(),
                                      std::numeric_limits<double>::quiet_NaN(),
                                      -std::numeric_limits<double>::quiet_NaN(),
                                      1.0 - DBL_EPSILON / 2,
                                      1.0 + DBL_EPSILON,
                                      0.9999999,
                                      1.9999999,
                                      1e-8,
                                      1e8,
                                      709.78,
                                      -745.2,
                                      26.6,
                                      1e-20};
    constexpr unsigned count = sizeof special / sizeof special[0];
    const auto mode = in.ConsumeIntegral<std::uint8_t>();
    if (mode < 2 * count) {
        double v = special[mode % count];
        return mode < count ? v : std::ldexp(v, in.ConsumeIntegralInRange<int>(-8, 8));
    }
    if (mode < 240) return in.ConsumeFloatingPointInRange<double>(-64.0, 64.0);
    const auto bits = in.ConsumeIntegral<std::uint64_t>();
    double v;
    std::memcpy(&v, &bits, sizeof v);
    return v;
}

// Returns the value as T (float narrowing keeps NaN and rounds to infinity or zero).
template <class T>
T value(FuzzedDataProvider& in) {
    return static_cast<T>(number(in));
}

}  // namespace fuzz
