/*
 * KorvelBase demonstration: a few calls of the library on small bundled data, with what each
 * result means.  Run it after building to see the library at work.
 */
#include <stdio.h>
#include <string.h>

#include "korvelbase/blockarray.h"
#include "korvelbase/compare.h"
#include "korvelbase/constants.h"
#include "korvelbase/conversion.h"
#include "korvelbase/convert.h"
#include "korvelbase/mem.h"
#include "korvelbase/qmmath.h"
#include "korvelbase/utmat.h"

#ifndef KB_DEMO_DATA
#define KB_DEMO_DATA "traverse.csv"
#endif

#define MAX_STATIONS 64

typedef struct Station {
    char name[16];
    Point2d position;
} Station;

/* Reads "name,easting,northing" lines; '#' lines and the header line are skipped. */
static int readTraverse(const char* path, Station* stations, int capacity) {
    char line[256];
    int count = 0;
    FILE* file = fopen(path, "r");
    if (file == NULL) return -1;
    while (count < capacity && fgets(line, sizeof line, file) != NULL) {
        Station s;
        if (line[0] == '#') continue;
        if (sscanf(line, "%15[^,],%lf,%lf", s.name, &s.position.x, &s.position.y) == 3) {
            stations[count++] = s;
        }
    }
    fclose(file);
    return count;
}

static void printAzimuth(double azimuthRadians) {
    int degrees = 0, minutes = 0;
    double seconds = 0.0;
    qmConversion_degreeToDMS(&degrees, &minutes, &seconds,
                             qmConversion_radianToDegree(azimuthRadians));
    printf("%3d deg %02d' %05.2f\"", degrees, minutes, seconds);
}

static void showTraverse(const Station* st, int n) {
    int i;
    printf("Traverse legs (azimuth clockwise from north, distance rounded to the millimetre)\n");
    for (i = 1; i < n; ++i) {
        const Point2d a = st[i - 1].position, b = st[i].position;
        /* The azimuth/direction conversion is its own inverse. */
        const double azimuth = qmConversion_azimuthToDirection(qmMath_direction2d(a.x, a.y, b.x, b.y));
        double distance = 0.0;
        qmConversion_roundDouble(&distance, qmMath_distance2d(a.x, a.y, b.x, b.y), 0.001, 3);
        printf("  %-4s -> %-4s  ", st[i - 1].name, st[i].name);
        printAzimuth(azimuth);
        printf("  %9.3f m\n", distance);
    }
    printf("\n");
}

static void showCurveFit(const Station* st, int n) {
    int i;
    printf("Circle through three consecutive stations\n");
    for (i = 2; i < n; ++i) {
        const Point2d a = st[i - 2].position, b = st[i - 1].position, c = st[i].position;
        double cx = 0.0, cy = 0.0, radius = 0.0;
        qmMath_computeCurveRadiusFromThreePoints(a.x, a.y, b.x, b.y, c.x, c.y, &cx, &cy, &radius);
        printf("  %s-%s-%s: radius %8.2f m, degree of curvature %6.3f deg, centre (%.2f, %.2f)\n",
               st[i - 2].name, st[i - 1].name, st[i].name, radius,
               qmConversion_radiusToDegree(radius), cx, cy);
    }
    printf("\n");
}

static void showOffsetsFromChord(const Station* st, int n) {
    UtDroite chord;
    uint32_t error = 0, detail = 0;
    int i;
    UTMAT_CalculerDroite2Pt(&st[0].position, &st[n - 1].position, &chord);
    UTMAT_GetErreur(&error, &detail);
    if (error != 0) return;
    printf("Offsets from the chord %s -> %s (positive to the right)\n", st[0].name, st[n - 1].name);
    for (i = 0; i < n; ++i) {
        double offset = 0.0;
        UTMAT_CalculerDeportPtDroite(&chord, &st[i].position, &offset);
        printf("  %-4s %9.3f m\n", st[i].name, offset);
    }
    printf("\n");
}

static void showTangentIntersection(const Station* st, int n) {
    UtDroite first, last;
    Point2d meeting;
    int found = 0;
    UTMAT_CalculerDroite2Pt(&st[0].position, &st[1].position, &first);
    UTMAT_CalculerDroite2Pt(&st[n - 2].position, &st[n - 1].position, &last);
    UTMAT_CalculerIntersection2Droite(&first, &last, &meeting, &found);
    printf("Intersection point of the first and last legs\n");
    if (found) {
        const double dFirst = qmMath_direction2d(st[0].position.x, st[0].position.y,
                                                 st[1].position.x, st[1].position.y);
        const double dLast = qmMath_direction2d(st[n - 2].position.x, st[n - 2].position.y,
                                                st[n - 1].position.x, st[n - 1].position.y);
        /* Signed turn in (-pi, pi]: positive counter-clockwise, that is to the left. */
        const double turn = qmMath_angleBetweenDirections(dFirst, dLast);
        printf("  (%.3f, %.3f), deflection ", meeting.x, meeting.y);
        printAzimuth(turn < 0.0 ? -turn : turn);
        printf(" to the %s\n\n", turn < 0.0 ? "right" : "left");
    } else {
        printf("  the legs are parallel\n\n");
    }
}

static void showConstants(void) {
    printf("Constants computed when the library loaded\n");
    printf("  dc_pi          = %.17g\n", dc_pi);
    printf("  dc_piover180   = %.17g  (radians per degree)\n", dc_piover180);
    printf("  dc_180overpi   = %.17g  (degrees per radian)\n", dc_180overpi);
    printf("  dc_iang_to_rad = %.17g  (radians per 1/360000 degree)\n\n", dc_iang_to_rad);
}

static void showTolerantComparison(void) {
    /* Two surveyed levels, compared at a millimetre tolerance. */
    const double levels[][2] = {{102.3450, 102.3455}, {102.3450, 102.3461}, {98.0, 98.0015}};
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

int main(int argc, char** argv) {
    Station stations[MAX_STATIONS];
    const char* path = argc > 1 ? argv[1] : KB_DEMO_DATA;
    const int n = readTraverse(path, stations, MAX_STATIONS);
    printf("KorvelBase demonstration\n\n");
    if (n < 3) {
        fprintf(stderr, "cannot read at least three stations from %s\n", path);
        return 1;
    }
    printf("Traverse %s: %d stations\n\n", path, n);
    showTraverse(stations, n);
    showCurveFit(stations, n);
    showOffsetsFromChord(stations, n);
    showTangentIntersection(stations, n);
    showConstants();
    showTolerantComparison();
    showBlockArray();
    showPointConversion();
    return 0;
}
