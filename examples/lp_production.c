/* Production planning: reads the furniture model of lp_production.mps (beside this file, or the
 * file named on the command line), maximises the profit and prints the plan, the use of each
 * resource and what one more unit of it would be worth. */
#include <math.h>
#include <stdio.h>
#include <string.h>

#include "qnummath.h"

int main(int argc, char** argv) {
    char path[4096];
    if (argc > 1) {
        snprintf(path, sizeof path, "%s", argv[1]);
    } else {
        snprintf(path, sizeof path, "%s", __FILE__);
        char* dot = strrchr(path, '.');
        if (dot != NULL) strcpy(dot, ".mps");
    }
    Qnum_d_mps* model = qnum_d_read_mps(path, 0);
    if (model == NULL) return 1;
    double profit = 0, activity[16], dual[16];
    if (model->nrows > 16) return 1;
    double* plan = qnum_d_linear_programming(model, QNUM_LP_MAXIMIZE, QNUM_LP_OBJ_VALUE, &profit,
                                             QNUM_LP_ROW_ACTIVITY, activity, QNUM_LP_DUALS, dual, 0);
    if (plan == NULL) {
        qnum_d_mps_free(model);
        return 1;
    }
    printf("Plan for %s\n", model->name);
    for (int j = 0; j < model->ncolumns; ++j)
        printf("  make %-6s %8.2f\n", model->column_name[j], plan[j]);
    printf("Profit %.2f\n", profit);
    printf("Resource   used   limit   value of one more\n");
    for (int i = 0; i < model->nrows; ++i) {
        if (model->row_type[i] != 'L') continue;
        /* A value below the printed precision (a zero of either sign) prints as 0. */
        printf("  %-7s %6.1f %7.1f %9.3f\n", model->row_name[i], activity[i], model->rhs[i],
               fabs(dual[i]) < 5e-4 ? 0.0 : dual[i]);
    }
    qnum_free_allocated_memory(plan);
    qnum_d_mps_free(model);
    return 0;
}
