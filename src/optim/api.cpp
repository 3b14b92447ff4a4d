// Entry points of the optimization subsystem.
#include <cstdarg>
#include <cstdlib>

#include "frame/frame.hpp"
#include "optim/mps.hpp"

using namespace qnum;

extern "C" {

QNUM_API Qnum_d_mps* qnum_d_read_mps(const char* filename, ...) {
    va_list ap;
    va_start(ap, filename);
    Qnum_d_mps* r = frame::call<Qnum_d_mps*>("qnum_d_read_mps", [&] {
        return optim::read_mps(filename, frame::Options(ap, /*first_position=*/2));
    });
    va_end(ap);
    return r;
}

// The record and its arrays are one allocation.
QNUM_API void qnum_d_mps_free(Qnum_d_mps* problem) { std::free(problem); }

}  // extern "C"
