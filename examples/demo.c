/*
 * KorvelBase demonstration: a few calls of the library on small bundled data, with what each
 * result means.  Run it after building to see the library at work.
 */
#include <stdio.h>

#include "korvelbase/blockarray.h"
#include "korvelbase/compare.h"
#include "korvelbase/constants.h"
#include "korvelbase/convert.h"
#include "korvelbase/mem.h"

static void showConstants(void) {
    printf("Constants computed when the library loaded\n");
    printf("  dc_pi          = %.17g\n", dc_pi);
    printf("  dc_piover180   = %.17g  (radians per degree)\n", dc_piover180);
    printf("  dc_180overpi   = %.17g  (degrees per radian)\n", dc_180overpi);
    printf("  dc_iang_to_rad = %.17g  (radians per 1/360000 degree)\n\n", dc_iang_to_rad);
}

static void showTolerantComparison(void) {
    /* Two surveyed levels, compared at a millimetre tolerance. */
    const double levels[][2] = {{102.3450, 102.3455}, {102.3450, 102.3461}, {98.0, 98.001}};
    size_t i;
    printf("Tolerant comparison at 0.001 m (the bound is inclusive)\n");
    for (i = 0; i < sizeof levels / sizeof levels[0]; ++i) {
        const double a = levels[i][0], b = levels[i][1];
        printf("  %.4f vs %.4f: equal=%d less=%d lessOrEqual=%d\n", a, b,
               qmUtil_equalDouble(a, b, 0.001), qmUtil_lessDouble(a, b, 0.001),
               qmUtil_lessOrEqualDouble(a, b, 0.001));
    }
    printf("\n");
}

static void showBlockArray(void) {
    /* A station list grown one entry at a time: storage moves once per ten entries. */
    const double stations[] = {0.0, 20.0, 40.0, 60.0, 80.0, 100.0, 120.0, 140.0, 160.0, 180.0,
                               200.0, 220.0};
    void* storage = NULL;
    int count = 0, error = 0, rank = -1;
    size_t bytes = 0, i;
    double wanted = 140.0;
    printf("Block array of chainages\n");
    for (i = 0; i < sizeof stations / sizeof stations[0]; ++i) {
        MEM_EtendreTableau(&storage, (int)sizeof(double), &count);
        MEM_GetErreur(&error, NULL);
        if (error != 0) {
            printf("  append failed\n");
            return;
        }
        ((double*)storage)[count - 1] = stations[i];
        qmMem_getSize(storage, &bytes);
        printf("  %2d chainages, storage of %zu usable bytes\n", count, bytes);
    }
    MEM_RecupererRang(storage, count, (int)sizeof(double), &wanted, &rank);
    printf("  chainage %.1f is entry %d\n\n", wanted, rank);
    MEM_LibererTableau(&storage);
}

static void showPointConversion(void) {
    const Point2d plan[] = {{1000.0, 2000.0}, {1010.5, 2003.25}};
    Point3d* spatial = ConvertArray23(plan, 2);
    printf("Plan points lifted to 3-D (z = 0)\n");
    if (spatial != NULL) {
        printf("  (%.2f, %.2f, %.2f) (%.2f, %.2f, %.2f)\n", spatial[0].x, spatial[0].y,
               spatial[0].z, spatial[1].x, spatial[1].y, spatial[1].z);
        qmMem_free(spatial);
    }
}

int main(void) {
    printf("KorvelBase demonstration\n\n");
    showConstants();
    showTolerantComparison();
    showBlockArray();
    showPointConversion();
    return 0;
}
