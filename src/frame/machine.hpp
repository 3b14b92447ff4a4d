// Machine constants, IEEE tests and the per-thread stream units.
#pragma once

#include <cstdio>

namespace qnum::machine {

float amach(int i);
double dmach(int i);
// The public-frame versions: an index out of range raises TERMINAL 132 inside "l_machine".
template <class T>
T machine(int i);
int integer(int i);
void umach(int n, std::FILE** p);
int is_nan(float x);
int is_nan(double x);

}  // namespace qnum::machine
