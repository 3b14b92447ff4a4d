// Uniform deviates from the calling thread's stream, and the caller's shuffle tables.
#pragma once

#include "frame/frame.hpp"

namespace qnum::random {

// Draws n >= 1 deviates of precision T into r: one step of the generator per deviate, through
// the shuffle table for the even options. Returns false after raising an error (TERMINAL 200
// when the thread's records cannot be allocated; nothing is drawn then).
template <class T>
bool draw(int n, T* r);

// Worker of qnum_f_random_uniform / qnum_d_random_uniform.
template <class T>
T* random_uniform(int n, frame::Options opt);

// Worker of qnum_rnun / qnum_drnun.
template <class T>
void rnun(int n, T* r);

// Worker of qnum_rnses / qnum_drnses.
template <class T>
void rnses(const T* table);

// Workers of the seed and option routines.
void random_option(int generator_option);
void random_seed_set(int seed);
int random_seed_get();

}  // namespace qnum::random
