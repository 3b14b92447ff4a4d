// A damaged catalogue hangs the first printed report: the template of code 0 in catalogue-1 holds
// the placeholder "%(i1%333333331i2)", whose format passes the one-conversion check and asks for
// a field 333 million characters wide; the formatter builds it and the word wrapper takes the
// length of the rest of the text once per output line.
// Run: mkdir d && cp fuzz/crashes/catalogue-1 d/qnumerr.bin && QNUMERRPATH=d ./a.out
// Build: g++ -Iinclude -x c fuzz/crashes/catalogue-1.c -x none build/libqnummath.a -fopenmp
#include <stdio.h>
#include "qnummath.h"
int main(void) {
    qnum_e1psh("qnum_d_example");
    qnum_e1sti(1, 1);
    qnum_e1sti(2, 2);
    qnum_ermes(QNUM_WARNING, 0);
    qnum_e1pop("qnum_d_example");
    puts("returned");
    return 0;
}
