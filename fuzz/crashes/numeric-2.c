// The zero finder never returns: the second search starts within eps (1e300) of the first zero,
// and the iterate is pushed by eta (0.01) until it leaves that neighbourhood or stops moving,
// some 10^14 pushes. The fuzz input numeric-2 is the call that showed it (the target now keeps
// eps within 10^4 eta, so that the search goes on).
// Build: g++ -Iinclude -x c fuzz/crashes/numeric-2.c -x none build/libqnummath.a -fopenmp
#include <stdio.h>
#include <stdlib.h>
#include "qnummath.h"
static double f(double x) { return (x - 1) * (x + 2); }
int main(void) {
    double* z = qnum_d_zeros_fcn(f, QNUM_NUM_ROOTS, 2, QNUM_EPS, 1e300, 0);
    printf("%g %g\n", z ? z[0] : 0, z ? z[1] : 0);
    free(z);
    return 0;
}
