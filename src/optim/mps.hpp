// Reader of fixed-column MPS files into the problem record Qnum_d_mps.
#pragma once

#include "frame/frame.hpp"

namespace qnum::optim {

Qnum_d_mps* read_mps(const char* filename, frame::Options opt);

}  // namespace qnum::optim
