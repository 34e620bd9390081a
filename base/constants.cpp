// Exported double constants.
//
// The literal constants are plain read-only data.  The pi-derived ones are computed once, by
// the dynamic initialisation of this translation unit, which runs when the library is loaded
// into the process (before any exported function can be called).  The arithmetic follows the
// stated derivation step by step, each step rounded to double: pi comes from atan2, the
// fractions 1/3, 1/6, 1/180 and 1/360000 are multiplied in rather than divided.
#include <cmath>

#include "korvelbase/constants.h"

namespace {

constexpr double kIangPerDegree = 360000.0;      // integer angle units to the degree
constexpr double kIangPerHalfTurn = 64800000.0;  // 180 * 360000

struct PiDerived {
    double pi, twoPi, oneOverPi, deg180OverPi, piOver180, piOver2, piOver3, piOver4, piOver6,
        iangToRad, radToIang, miangToRad;
};

PiDerived computePiDerived() {
    PiDerived k{};
    k.pi = std::atan2(1.0, 1.0) * 4.0;
    k.twoPi = k.pi + k.pi;
    k.oneOverPi = 1.0 / k.pi;
    k.deg180OverPi = k.oneOverPi * 180.0;
    k.piOver180 = (1.0 / 180.0) * k.pi;
    k.piOver2 = k.pi * 0.5;
    k.piOver3 = k.pi * (1.0 / 3.0);
    k.piOver4 = k.pi * 0.25;
    k.piOver6 = k.pi * (1.0 / 6.0);
    k.iangToRad = (1.0 / kIangPerDegree) * k.piOver180;
    k.radToIang = k.oneOverPi * kIangPerHalfTurn;
    k.miangToRad = k.piOver180 * (-1.0 / kIangPerDegree);
    return k;
}

// Computed at load; declared before the exported constants so it is initialised first.
const PiDerived kLoaded = computePiDerived();

}  // namespace

extern "C" {

const double dc_zero = 0.0;
const double dc_onehalf = 0.5;
const double dc_1 = 1.0;
const double dc_m1 = -1.0;
const double dc_2 = 2.0;
const double dc_3 = 3.0;
const double dc_4 = 4.0;
const double dc_5 = 5.0;
const double dc_10 = 10.0;
const double dc_30 = 30.0;
const double dc_60 = 60.0;
const double dc_90 = 90.0;
const double dc_100 = 100.0;
const double dc_180 = 180.0;
const double dc_270 = 270.0;
const double dc_360 = 360.0;
const double dc_750 = 750.0;
const double dc_1000 = 1000.0;
const double dc_10000 = 10000.0;
const double dc_100000 = 100000.0;
const double dc_360000 = 360000.0;
const double dc_p1 = 0.1;
const double dc_p01 = 0.01;
const double dc_p001 = 0.001;
const double dc_p0001 = 0.0001;
const double dc_mm_per_in = 25.4;

const double dc_pi = kLoaded.pi;
const double dc_2pi = kLoaded.twoPi;
const double dc_piover2 = kLoaded.piOver2;
const double dc_piover3 = kLoaded.piOver3;
const double dc_piover4 = kLoaded.piOver4;
const double dc_piover6 = kLoaded.piOver6;
const double dc_piover180 = kLoaded.piOver180;
const double dc_180overpi = kLoaded.deg180OverPi;
const double dc_iang_to_rad = kLoaded.iangToRad;
const double dc_rad_to_iang = kLoaded.radToIang;
const double dc_miang_to_rad = kLoaded.miangToRad;

}  // extern "C"
