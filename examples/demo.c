/* qnum_demo: what the library is for, from plain C: a matrix product timed, random numbers
 * drawn, and an error caught. */
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

#include "qnummath.h"

static double seconds(void) {
    struct timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return (double)t.tv_sec + 1e-9 * (double)t.tv_nsec;
}

int main(void) {
    const int n = 1000, count = 10000000;
    const double one = 1.0, zero = 0.0;
    double *a = malloc(sizeof(double) * n * n), *b = malloc(sizeof(double) * n * n);
    double *c = malloc(sizeof(double) * n * n);
    if (!a || !b || !c) return 1;

    printf("qnummath demo (tuned path: %s)\n\n", qnum_tuned_path());

    /* C = A B for two 1000 x 1000 matrices of uniform random numbers. */
    qnum_random_seed_set(20261123);
    qnum_drnun(n * n, a);
    qnum_drnun(n * n, b);
    qnum_dgemm("N", 1, "N", 1, &n, &n, &n, &one, a, &n, b, &n, &zero, c, &n); /* warm-up */
    double t0 = seconds();
    qnum_dgemm("N", 1, "N", 1, &n, &n, &n, &one, a, &n, b, &n, &zero, c, &n);
    double t = seconds() - t0;
    printf("dgemm %d x %d: %.3f s, %.1f GFLOP/s; C(1,1) = %.6f (expected about %d / 4)\n", n, n, t,
           2.0 * n * n * (double)n / t * 1e-9, c[0], n);

    /* Ten million uniform deviates in (0, 1): their mean is 1/2 to about 1e-4. */
    t0 = seconds();
    double* r = qnum_d_random_uniform(count, 0);
    t = seconds() - t0;
    double sum = 0.0;
    for (int i = 0; i < count; ++i) sum += r[i];
    printf("uniform draw of %d numbers: %.3f s, mean %.6f\n\n", count, t, sum / count);
    qnum_free_allocated_memory(r);

    /* Errors go on a per-thread stack: here a mistake is reported and the program goes on. */
    qnum_error_options(QNUM_SET_STOP, QNUM_TERMINAL, 0, 0);
    fflush(stdout);
    qnum_i_machine(13); /* there is no integer machine constant 13 */
    printf("qnum_i_machine(13) ended with error type %d, code %d; the program goes on\n", qnum_n1rty(1),
           qnum_20305());

    free(a);
    free(b);
    free(c);
    return 0;
}
