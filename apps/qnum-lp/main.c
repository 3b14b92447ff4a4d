/* qnum-lp: reads a linear program from a fixed-column MPS file, solves it and prints the status,
 * objective, iteration count and time; --solution also prints the nonzero columns. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include "qnummath.h"

static double now(void) {
    struct timespec t;
    clock_gettime(CLOCK_MONOTONIC, &t);
    return (double)t.tv_sec + 1e-9 * (double)t.tv_nsec;
}

struct progress {
    double start;
    int shown;
};

/* After the first second, one line refreshed in place (only on a terminal). */
static void show_progress(int iteration, double objective, double pinf, double dinf, void* data) {
    struct progress* p = (struct progress*)data;
    if (now() - p->start < 1.0) return;
    fprintf(stderr, "\r%10d  objective %-22.12g  primal inf %-11.3e  dual inf %-11.3e", iteration,
            objective, pinf, dinf);
    fflush(stderr);
    p->shown = 1;
}

static void usage(const char* argv0) {
    fprintf(stderr, "usage: %s [--solution] [--max] FILE.mps\n", argv0);
}

int main(int argc, char** argv) {
    const char* file = NULL;
    int solution = 0, maximize = 0;
    for (int k = 1; k < argc; ++k) {
        if (strcmp(argv[k], "--solution") == 0) solution = 1;
        else if (strcmp(argv[k], "--max") == 0) maximize = 1;
        else if (argv[k][0] == '-' || file != NULL) { usage(argv[0]); return 2; }
        else file = argv[k];
    }
    if (file == NULL) { usage(argv[0]); return 2; }
    /* Infeasible, unbounded and the like are reported here, not stopped on. */
    qnum_error_options(QNUM_SET_STOP, QNUM_FATAL, 0, QNUM_SET_PRINT, QNUM_FATAL, 0,
                       QNUM_SET_PRINT, QNUM_WARNING, 0, 0);
    double t0 = now();
    Qnum_d_mps* p = qnum_d_read_mps(file, 0);
    double t1 = now();
    if (p == NULL) {
        fprintf(stderr, "%s: cannot read %s (error %d)\n", argv[0], file, qnum_20305());
        return 1;
    }
    struct progress prog = {now(), 0};
    qnum_lp_progress fcn = show_progress;
    if (!isatty(fileno(stderr))) fcn = NULL;
    double obj = 0;
    int iterations = 0;
    double* x = maximize ? qnum_d_linear_programming(p, QNUM_LP_MAXIMIZE, QNUM_LP_OBJ_VALUE, &obj,
                                                     QNUM_LP_ITERATIONS, &iterations, QNUM_LP_PROGRESS,
                                                     fcn, (void*)&prog, 0)
                         : qnum_d_linear_programming(p, QNUM_LP_OBJ_VALUE, &obj, QNUM_LP_ITERATIONS,
                                                     &iterations, QNUM_LP_PROGRESS, fcn, (void*)&prog, 0);
    double t2 = now();
    if (prog.shown) fprintf(stderr, "\r%*s\r", 100, "");
    int code = qnum_n1rty(1) ? qnum_20305() : 0;
    const char* status = code == 0 ? "optimal" : code == 8130 ? "infeasible" : code == 8131 ? "unbounded"
                         : code == 8132 ? "iteration limit" : code == 8133 ? "numerical trouble" : "error";
    printf("Problem:     %s (%d rows, %d columns, %d nonzeros)\n", p->name, p->nrows, p->ncolumns,
           p->nonzeros);
    printf("Status:      %s\n", status);
    if (x != NULL) printf("Objective:   %.12g\n", obj);
    printf("Iterations:  %d\n", iterations);
    printf("Time:        %.3f s (read %.3f s, solve %.3f s)\n", t2 - t0, t1 - t0, t2 - t1);
    if (x != NULL && solution) {
        for (int j = 0; j < p->ncolumns; ++j)
            if (x[j] != 0) printf("  %-10s %.12g\n", p->column_name[j], x[j]);
    }
    qnum_free_allocated_memory(x);
    qnum_d_mps_free(p);
    return code == 0 ? 0 : 1;
}
