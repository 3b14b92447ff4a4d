/* Two everyday uses of qnummath's zero finder and MPS reader.
 *
 * 1. The internal rate of return of an investment: the rate r at which the net present value
 *    of its cash flows is zero, found by qnum_d_zeros_fcn with the cash flows passed as data.
 * 2. A small production plan written as an MPS file, read by qnum_d_read_mps (or the file named
 *    on the command line), summarised, and a candidate plan checked against its rows.
 */
#include <stdio.h>
#include <stdlib.h>

#include "qnummath.h"

struct cash_flows {
    int n;
    const double* amount; /* amount[t] at the end of year t; amount[0] is the outlay */
};

static double net_present_value(double r, void* data) {
    const struct cash_flows* cf = data;
    double v = 0, discount = 1;
    for (int t = 0; t < cf->n; ++t) {
        v += cf->amount[t] * discount;
        discount /= 1 + r;
    }
    return v;
}

static const char* plan_mps =
    "NAME          WORKSHOP\n"
    "ROWS\n"
    " N  PROFIT\n"
    " L  LATHE\n"
    " L  PAINT\n"
    " G  ORDERS\n"
    "COLUMNS\n"
    "    CHAIRS    PROFIT           -45.0   LATHE              2.0\n"
    "    CHAIRS    PAINT              1.0   ORDERS             1.0\n"
    "    MARKER    'MARKER'                 'INTORG'\n"
    "    TABLES    PROFIT           -80.0   LATHE              5.0\n"
    "    TABLES    PAINT              3.0   ORDERS             1.0\n"
    "    MARKER    'MARKER'                 'INTEND'\n"
    "RHS\n"
    "    RHS       LATHE             80.0   PAINT             45.0\n"
    "    RHS       ORDERS            10.0\n"
    "BOUNDS\n"
    " UP BND       CHAIRS            30.0\n"
    "ENDATA\n";

int main(int argc, char** argv) {
    /* 1. Internal rate of return: pay 1000 now, receive 300, 400, 500 and 200. */
    const double amount[] = {-1000, 300, 400, 500, 200};
    struct cash_flows cf = {5, amount};
    double guess = 0.1, rate;
    int evaluations;
    qnum_d_zeros_fcn(NULL, QNUM_FCN_W_DATA, net_present_value, &cf, QNUM_XGUESS, &guess,
                     QNUM_RETURN_USER, &rate, QNUM_INFO_USER, &evaluations, 0);
    printf("internal rate of return: %.4f%% (%d evaluations), NPV there %.1e\n", 100 * rate,
           evaluations, net_present_value(rate, &cf));

    /* 2. The production plan, from the file named on the command line or the one above. */
    Qnum_d_mps* p;
    if (argc > 1) {
        p = qnum_d_read_mps(argv[1], 0);
    } else {
        FILE* f = tmpfile();
        if (f == NULL) return 1;
        fputs(plan_mps, f);
        rewind(f);
        p = qnum_d_read_mps(NULL, QNUM_MPS_FILE, f, 0);
        fclose(f);
    }
    if (p == NULL) return 1;
    int integer = 0;
    for (int j = 0; j < p->ncolumns; ++j) integer += p->variable_type[j] & 1;
    printf("problem %s: %d rows, %d columns (%d integer), %d nonzeros, objective %s\n", p->name,
           p->nrows, p->ncolumns, integer, p->nonzeros, p->name_objective);

    /* A candidate plan: half of each column's upper bound, or 5 where there is none. */
    double* x = malloc(sizeof(double) * (p->ncolumns + 1));
    double* activity = calloc(p->nrows + 1, sizeof(double));
    if (x == NULL || activity == NULL) return 1;
    double objective = p->objective_constant;
    for (int j = 0; j < p->ncolumns; ++j) {
        x[j] = p->upper_bound[j] < p->positive_infinity ? p->upper_bound[j] / 2 : 5;
        objective += p->objective[j] * x[j];
    }
    for (int k = 0; k < p->nonzeros; ++k) activity[p->matrix_row[k]] += p->matrix_value[k] * x[p->matrix_column[k]];
    printf("candidate plan: objective %g\n", objective);
    for (int i = 0; i < p->nrows && i < 10; ++i) {
        const int t = p->row_type[i];
        const int ok = t == 'N' || (t == 'L' && activity[i] <= p->rhs[i]) ||
                       (t == 'G' && activity[i] >= p->rhs[i]) || (t == 'E' && activity[i] == p->rhs[i]);
        printf("  %-8s %c %8g  activity %8g  %s\n", p->row_name[i], t, p->rhs[i], activity[i],
               ok ? "met" : "VIOLATED");
    }
    free(x);
    free(activity);
    qnum_d_mps_free(p);
    return 0;
}
