// Fuzz target: the MPS reader on arbitrary bytes, read through an in-memory stream. Errors are
// reported quietly and never stop the process; whatever is returned is walked and freed.
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "qnummath.h"

// fuzz-sources: src/frame src/optim
// Small inputs reach every rule of the format; big ones only slow the search down.
// fuzz-options: -max_len=2048

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool quiet = [] {
        for (int type = 1; type <= 7; ++type) {
            qnum_error_options(QNUM_SET_PRINT, type, 0, QNUM_SET_STOP, type, 0, 0);
        }
        return true;
    }();
    (void)quiet;
    if (size == 0) return 0;
    std::FILE* f = fmemopen(const_cast<std::uint8_t*>(data), size, "rb");
    if (f == nullptr) return 0;
    Qnum_d_mps* p = qnum_d_read_mps(nullptr, QNUM_MPS_FILE, f, 0);
    std::fclose(f);
    if (p != nullptr) {
        // Every index must stay inside its array.
        volatile double sink = 0;
        for (int k = 0; k < p->nonzeros; ++k) {
            if (p->matrix_row[k] < 0 || p->matrix_row[k] >= p->nrows || p->matrix_column[k] < 0 ||
                p->matrix_column[k] >= p->ncolumns) {
                __builtin_trap();
            }
            sink = sink + p->matrix_value[k] + p->rhs[p->matrix_row[k]] + p->objective[p->matrix_column[k]];
        }
        for (int k = 0; k < p->quadratic_nonzeros; ++k) {
            if (p->quadratic_row[k] < 0 || p->quadratic_row[k] >= p->ncolumns ||
                p->quadratic_column[k] < 0 || p->quadratic_column[k] >= p->ncolumns) {
                __builtin_trap();
            }
        }
        for (int j = 0; j < p->ncolumns; ++j) {
            sink = sink + p->lower_bound[j] + p->upper_bound[j] + p->variable_type[j] + p->column_name[j][0];
        }
        for (int i = 0; i < p->nrows; ++i) sink = sink + p->ranges[i] + p->row_type[i] + p->row_name[i][0];
        qnum_d_mps_free(p);
    }
    return 0;
}
