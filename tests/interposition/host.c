/*
 * A host program that defines functions with the names of library functions, each of which
 * aborts.  The library's own calls must stay inside the library, so every call below gives
 * its correct result and the host's definitions never run.
 */
#include <stdio.h>
#include <stdlib.h>

#include "korvelbase/korvelbase.h"

static void hostVersionCalled(const char* name) {
    fprintf(stderr, "the host's %s ran inside the library\n", name);
    abort();
}

/* Same names and types as the library's own. */
int qmMem_free(void* block) {
    (void)block;
    hostVersionCalled("qmMem_free");
    return 0;
}

void* qmMem_malloc(size_t size) {
    (void)size;
    hostVersionCalled("qmMem_malloc");
    return NULL;
}

void* qmMem_calloc(size_t count, size_t size) {
    (void)count;
    (void)size;
    hostVersionCalled("qmMem_calloc");
    return NULL;
}

int UTMAT_Egal(double a, double b, double tol) {
    (void)a;
    (void)b;
    (void)tol;
    hostVersionCalled("UTMAT_Egal");
    return 0;
}

int qmMath_doublesNearEqual(double a, double b, double tol) {
    (void)a;
    (void)b;
    (void)tol;
    hostVersionCalled("qmMath_doublesNearEqual");
    return 0;
}

int main(void) {
    int failures = 0;
    /* UTMAT_PointsIdentiques compares the distance with UTMAT_Egal. */
    Point2d p = {1.0, 2.0};
    Point2d q = {1.0, 2.0 + 1e-9};
    Point2d far = {5.0, 2.0};
    if (UTMAT_PointsIdentiques(&p, &q, 1e-6) != 1) ++failures;
    if (UTMAT_PointsIdentiques(&p, &far, 1e-6) != 0) ++failures;

    /* Block arrays allocate and release through the library's heap functions. */
    void* array = NULL;
    int count = 0;
    MEM_EtendreTableauParBloc(&array, (int)sizeof(double), &count, 25);
    if (array == NULL || count != 25) ++failures;
    MEM_LibererTableau(&array);
    if (array != NULL) ++failures;

    /* A dynamic array and a string list: creation, growth and destruction. */
    QmDynArray* dyn = NULL;
    if (qmDynArray_create(&dyn, (int)sizeof(double)) != 0) ++failures;
    if (qmDynArray_insertElements(dyn, -1, 30) != 0 || qmDynArray_getSize(dyn) != 30) ++failures;
    qmDynArray_destroy(&dyn);
    QmStrList* list = qmStrList_create(3, 2);
    if (list == NULL || qmStrList_setMember(list, 1, "station", NULL) != 0) ++failures;
    if (qmStrList_getMemberIndex(list, "station") != 1) ++failures;
    qmStrList_destroy(list);

    if (failures != 0) {
        fprintf(stderr, "%d wrong results\n", failures);
        return 1;
    }
    puts("the library's calls stayed inside the library");
    return 0;
}
