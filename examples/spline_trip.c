/* qnum_spline_trip: distance and acceleration of a car from speed readings taken at
 * irregular times, with cubic splines. */
#include <stdio.h>
#include <stdlib.h>

#include "qnummath.h"

int main(void) {
    /* Time in seconds and speed in m/s, logged as the car pulls away and cruises. */
    double t[] = {0, 2, 5, 7, 10, 14, 17, 20, 25, 30};
    double v[] = {0, 4.1, 9.8, 12.6, 15.9, 19.2, 20.4, 20.9, 21.1, 21.0};
    /* Noisy readings of a second run: the same trip seen by a jittery sensor. */
    double noisy[] = {0.3, 3.7, 10.3, 12.1, 16.4, 18.8, 20.9, 20.5, 21.6, 20.7};
    double grid[61], accel[61];
    double when = -1;
    int i;

    /* The car starts from rest with a known acceleration of 2.2 m/s^2; the end is free. */
    Qnum_d_ppoly* speed = qnum_d_cub_spline_interp_e_cnd(10, t, v, QNUM_LEFT, 1, 2.2, 0);
    if (speed == NULL) return 1;

    printf("distance in the first 10 s   %8.2f m\n", qnum_d_cub_spline_integral(0, 10, speed));
    printf("distance over the whole trip %8.2f m\n", qnum_d_cub_spline_integral(0, 30, speed));
    printf("speed at t = 12 s            %8.2f m/s\n", qnum_d_cub_spline_value(12, speed, 0));

    /* The acceleration on a half-second grid, in one pass: when does the car settle into
     * cruising (acceleration below 0.2 m/s^2)? */
    for (i = 0; i < 61; ++i) grid[i] = 0.5 * i;
    qnum_d_cub_spline_value(0, speed, QNUM_DERIV, 1, QNUM_GRID_USER, 61, grid, accel, 0);
    for (i = 0; i < 61 && when < 0; ++i)
        if (accel[i] < 0.2) when = grid[i];
    printf("cruising from                %8.1f s\n", when);

    /* The noisy run, smoothed with the parameter chosen by cross-validation. */
    Qnum_d_ppoly* smooth = qnum_d_cub_spline_smooth(10, t, noisy, 0);
    if (smooth == NULL) return 1;
    printf("smoothed distance, noisy run %8.2f m\n", qnum_d_cub_spline_integral(0, 30, smooth));
    printf("smoothed speed at t = 12 s   %8.2f m/s\n", qnum_d_cub_spline_value(12, smooth, 0));

    free(speed);
    free(smooth);
    return 0;
}
