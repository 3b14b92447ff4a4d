// Linear programming on the MPS problem record: the worker behind the public routines.
#pragma once

#include "frame/frame.hpp"

namespace qnum::optim {

// Minimises (or maximises) the record's objective over its rows, ranges and bounds; T is
// the precision of the results (the computation is in double).
template <class T>
T* linear_programming(const Qnum_d_mps* problem, frame::Options opt);

}  // namespace qnum::optim
