// Entry points of the uniform random number generator.
#include <cstdarg>

#include "frame/frame.hpp"
#include "random/uniform.hpp"

using namespace qnum;

extern "C" {

QNUM_API void qnum_random_option(int generator_option) {
    frame::call<void>("qnum_random_option", [&] { random::random_option(generator_option); });
}

QNUM_API void qnum_random_seed_set(int seed) {
    frame::call<void>("qnum_random_seed_set", [&] { random::random_seed_set(seed); });
}

QNUM_API int qnum_random_seed_get(void) {
    return frame::call<int>("qnum_random_seed_get", [] { return random::random_seed_get(); });
}

QNUM_API void qnum_rnses(const float table[]) {
    frame::call<void>("qnum_rnses", [&] { random::rnses(table); });
}

QNUM_API void qnum_drnses(const double table[]) {
    frame::call<void>("qnum_drnses", [&] { random::rnses(table); });
}

QNUM_API float* qnum_f_random_uniform(int n, ...) {
    va_list ap;
    va_start(ap, n);
    float* r = frame::call<float*>("qnum_f_random_uniform", [&] {
        return random::random_uniform<float>(n, frame::Options(ap, /*first_position=*/2));
    });
    va_end(ap);
    return r;
}

QNUM_API double* qnum_d_random_uniform(int n, ...) {
    va_list ap;
    va_start(ap, n);
    double* r = frame::call<double*>("qnum_d_random_uniform", [&] {
        return random::random_uniform<double>(n, frame::Options(ap, /*first_position=*/2));
    });
    va_end(ap);
    return r;
}

QNUM_API void qnum_rnun(int n, float r[]) {
    frame::call<void>("qnum_rnun", [&] { random::rnun(n, r); });
}

QNUM_API void qnum_drnun(int n, double r[]) {
    frame::call<void>("qnum_drnun", [&] { random::rnun(n, r); });
}

}  // extern "C"
