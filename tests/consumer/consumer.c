/* A minimal consumer of the installed library: links, reads a constant, calls a function. */
#include <stdio.h>

#include "korvelbase/constants.h"
#include "korvelbase/compare.h"

int main(void) {
    if (dc_pi < 3.14159 || dc_pi > 3.1416) return 1;
    if (qmUtil_equalDouble(1.0, 1.0 + 1e-9, 1e-6) != 1) return 1;
    printf("consumer linked against KorvelBase: pi = %.15f\n", dc_pi);
    return 0;
}
