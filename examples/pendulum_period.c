/* Period of a pendulum swinging with a large amplitude.
 *
 * Energy conservation gives the quarter period as an integral with an inverse square-root
 * singularity at the turning point theta0:
 *     T = 4 sqrt(L/g) / sqrt(2) * int_0^theta0 dtheta / sqrt(cos(theta) - cos(theta0)).
 * qnum_d_int_fcn_sing handles the singular end point; the amplitude travels to the integrand
 * through the data pointer of QNUM_FCN_W_DATA. The small-swing period is 2 pi sqrt(L/g). */
#include <math.h>
#include <stdio.h>

#include "qnummath.h"

static double integrand(double theta, void* data) {
    const double theta0 = *(const double*)data;
    return 1.0 / sqrt(cos(theta) - cos(theta0));
}

int main(void) {
    const double pi = 3.14159265358979323846;
    const double length = 1.0, g = 9.81; /* a one-metre pendulum */
    const double small = 2 * pi * sqrt(length / g);
    const double degrees[] = {5, 30, 60, 90, 120, 150, 175};
    printf("one-metre pendulum, small-swing period %.6f s\n", small);
    printf("amplitude   period (s)   / small-swing   error estimate   evaluations\n");
    for (int i = 0; i < 7; ++i) {
        double theta0 = degrees[i] * pi / 180, err = 0;
        int evals = 0;
        double quarter = qnum_d_int_fcn_sing(NULL, 0.0, theta0, QNUM_FCN_W_DATA, integrand, (void*)&theta0,
                                             QNUM_ERR_ABS, 0.0, QNUM_ERR_REL, 1e-10, QNUM_ERR_EST, &err, QNUM_N_EVALS, &evals, 0);
        double scale = 4 * sqrt(length / g) / sqrt(2.0);
        printf("%6.0f deg   %10.6f   %13.6f   %14.1e   %11d\n", degrees[i], scale * quarter,
               scale * quarter / small, scale * err, evals);
    }
    return 0;
}
