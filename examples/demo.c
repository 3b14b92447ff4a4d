/* qnum_demo: a tour of the library's runtime frame from plain C. */
#include <stdio.h>

#include "qnummath.h"

int main(void) {
    char* text;
    int print, stop;

    printf("qnummath demo\n\n");

    /* Machine constants. */
    printf("single precision epsilon      %.9g\n", qnum_amach(4));
    printf("double precision epsilon      %.17g\n", qnum_dmach(4));
    printf("largest double                %.17g\n", qnum_dmach(2));
    printf("double mantissa digits        %d\n", qnum_i_machine(10));
    printf("NaN test of amach(6)          %d\n\n", qnum_ifnan(qnum_amach(6)));

    /* The version query reads the installation's variables. */
    text = qnum_version(QNUM_LIBRARY_VERSION);
    printf("library version query         \"%s\"\n\n", text);
    qnum_free_allocated_memory(text);

    /* Error options at run time: keep going after TERMINAL errors and show a traceback. */
    qnum_error_options(QNUM_SET_STOP, QNUM_TERMINAL, 0, QNUM_SET_TRACEBACK, QNUM_TERMINAL, 1, 0);
    qnum_error_options(QNUM_GET_STOP, QNUM_TERMINAL, &stop, QNUM_GET_PRINT, QNUM_TERMINAL, &print, 0);
    printf("TERMINAL errors now print=%d stop=%d\n", print, stop);
    fflush(stdout);

    /* A deliberate mistake: there is no integer machine constant 13. */
    printf("calling qnum_i_machine(13) ...\n");
    fflush(stdout);
    qnum_i_machine(13);
    printf("... returned with error type %d, code %d\n\n", qnum_n1rty(1), qnum_20305());

    /* A user routine of its own on the error stack, raising a warning that prints at its pop. */
    qnum_e1psh("demo_step");
    qnum_e1sti(1, 42);
    qnum_e1mes(QNUM_WARNING, 9999, "The demo step met %(i1) unusual values; the result is still usable.");
    qnum_e1pop("demo_step");
    printf("after the warning: type %d, code %d\n", qnum_n1rty(1), qnum_20305());
    fflush(stdout);
    return 0;
}
