// Workers of the frame's own public routines: the error options and the version query.
#pragma once

#include "frame/frame.hpp"

namespace qnum::frame {

void error_options(Options opt);
char* version(int code);

}  // namespace qnum::frame
