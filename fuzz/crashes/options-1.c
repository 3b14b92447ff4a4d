// QNUM_INFO together with QNUM_INFO_USER: the address given with QNUM_INFO receives the caller's
// own info array instead of a new one, so a caller that frees it as a result of the routine
// frees its own (here stack) memory. The fuzz input options-1 is the call that showed it (the
// target now leaves the caller's arrays alone, so that the search goes on).
// Build: g++ -Iinclude -x c fuzz/crashes/options-1.c -x none build/libqnummath.a -fopenmp
#include <stdio.h>
#include <stdlib.h>
#include "qnummath.h"
static double f(double x) { return (x - 1) * (x + 2); }
int main(void) {
    int info[1];
    int* fresh = NULL;
    double* z = qnum_d_zeros_fcn(f, QNUM_INFO_USER, info, QNUM_INFO, &fresh, 0);
    printf("info=%p fresh=%p same=%d\n", (void*)info, (void*)fresh, fresh == info);
    free(z);
    return 0;
}
