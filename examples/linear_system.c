/* qnum_linear_system: mesh currents of a resistor network with the general solver, then a
 * least-squares parabola through measured points with the positive definite solver. */
#include <stdio.h>

#include "qnummath.h"

int main(void) {
    /* Three meshes sharing resistors (ohms); sources of 10 V and 5 V in meshes 1 and 3.
     * Row i: the resistance around mesh i on the diagonal, minus the shared ones. */
    double r[9] = {15, -5, 0,
                   -5, 20, -10,
                   0, -10, 25};
    double v[3] = {10, 0, 5};
    double cond = 0;
    double* current = qnum_d_lin_sol_gen(3, r, v, QNUM_CONDITION, &cond, 0);
    int i;

    if (current == NULL) return 1;
    printf("mesh currents (A):");
    for (i = 0; i < 3; ++i) printf(" %.6f", current[i]);
    printf("\ncondition estimate: %.3f\n", cond);
    qnum_free_allocated_memory(current);

    /* Fit y = c0 + c1 t + c2 t^2 to five points through the normal equations
     * (X^T X) c = X^T y, a symmetric positive definite system. */
    {
        const double t[5] = {0, 1, 2, 3, 4};
        const double y[5] = {1.1, 1.9, 5.2, 9.8, 17.1};
        double xtx[9] = {0}, xty[3] = {0};
        double* c;
        int k, p, q;
        for (k = 0; k < 5; ++k) {
            double pow_t[3];
            pow_t[0] = 1;
            pow_t[1] = t[k];
            pow_t[2] = t[k] * t[k];
            for (p = 0; p < 3; ++p) {
                xty[p] += pow_t[p] * y[k];
                for (q = 0; q < 3; ++q) xtx[p * 3 + q] += pow_t[p] * pow_t[q];
            }
        }
        c = qnum_d_lin_sol_posdef(3, xtx, xty, 0);
        if (c == NULL) return 1;
        printf("parabola: y = %.4f %+.4f t %+.4f t^2\n", c[0], c[1], c[2]);
        qnum_free_allocated_memory(c);
    }
    return 0;
}
