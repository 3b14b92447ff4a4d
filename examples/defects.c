/* qnum_defects: how unusual is a batch with 9 defective parts out of 200 when the long-run
 * defect rate is 2%? The exact binomial tail, its Poisson and normal approximations, and the
 * 99.9% control limit, from the library's special functions. */
#include <math.h>
#include <stdio.h>

#include "qnummath.h"

int main(void) {
    const int n = 200, k = 9;
    const double p = 0.02, mean = n * p, sd = sqrt(n * p * (1 - p));

    /* P(X >= k) for X ~ Binomial(n, p) is the regularised incomplete beta I_p(k, n - k + 1). */
    double binomial = qnum_d_beta_incomplete(p, k, n - k + 1);
    /* Poisson(np): P(X >= k) = gamma_incomplete(k, np) / gamma(k). */
    double poisson = qnum_d_gamma_incomplete(k, mean) / qnum_d_gamma(k);
    /* Normal with continuity correction: P(Z >= z) = erfc(z / sqrt 2) / 2. */
    double z = (k - 0.5 - mean) / sd;
    double normal = 0.5 * qnum_d_erfc(z / sqrt(2.0));
    /* The one-sided 99.9% quantile of the normal distribution: sqrt 2 * erf_inverse(0.998). */
    double z999 = sqrt(2.0) * qnum_d_erf_inverse(0.998);
    /* The same quantile as a count, and the chance that a count in control exceeds it. */
    double limit = mean + z999 * sd;
    int first_alarm = (int)ceil(limit);

    printf("batch of %d parts, defect rate %.0f%%: expected %.1f defects (sd %.3f)\n", n, 100 * p, mean, sd);
    printf("P(at least %d defects)  binomial %.6f   Poisson %.6f   normal %.6f\n", k, binomial, poisson, normal);
    printf("99.9%% normal quantile z = %.6f, upper control limit %.3f defects\n", z999, limit);
    printf("false alarm rate at %d or more defects: %.6f\n", first_alarm,
           qnum_d_beta_incomplete(p, first_alarm, n - first_alarm + 1));
    printf("verdict: %s\n", binomial < 0.01 ? "the batch is out of control" : "the batch is within normal variation");
    return 0;
}
