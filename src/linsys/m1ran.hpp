// In-place rectangular transpose: a rows by cols array (row after row) becomes its cols by
// rows transpose.
#pragma once

namespace qnum::linsys {

// b := the transpose of a (rows by cols, row-major); a and b may be the same array. rows < 1
// raises TERMINAL 620 and cols < 1 TERMINAL 621 (i1 the bad value), and nothing is written.
// An in-place rectangular transpose uses a temporary copy when one can be allocated and
// otherwise follows the permutation's cycles, so it never fails for want of memory.
template <class T>
void m1ran(int rows, int cols, const T* a, T* b);

namespace testing {
// When set, the next in-place rectangular transposes of this thread behave as if the
// temporary copy could not be allocated (it stays set until cleared).
void force_cycle_path(bool on);
}  // namespace testing

}  // namespace qnum::linsys
