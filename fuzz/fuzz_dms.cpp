// Degree-minute-second splitting on arbitrary doubles: either a refusal with nothing stored,
// or parts that carry the angle's sign, lie in range and sum back to the angle.
#include <cmath>
#include <cstdlib>

#include "fuzz/fuzz_input.hpp"
#include "korvelbase/conversion.h"
#include "korvelbase/types.h"

namespace {

constexpr int kUntouched = 7777;
constexpr double kSecondsCarry = 5e-08;

void checkDms(double angle) {
    int degrees = kUntouched;
    int minutes = kUntouched;
    double seconds = kUntouched;
    const int status = qmConversion_degreeToDMS(&degrees, &minutes, &seconds, angle);
    if (status != 0) {
        if (status != ERR_FAILURE || degrees != kUntouched || minutes != kUntouched) std::abort();
        return;
    }
    if (!std::isfinite(angle)) std::abort();
    if (std::abs(minutes) > 59 || !(std::fabs(seconds) < 60.0)) std::abort();
    // Every part has the sign of the angle (or is zero).
    if (angle > 0 && (degrees < 0 || minutes < 0 || seconds < 0)) std::abort();
    if (angle < 0 && (degrees > 0 || minutes > 0 || seconds > 0)) std::abort();
    const double back = qmConversion_DMSTodegree(nullptr, degrees, minutes, seconds);
    const double allowed = kSecondsCarry / 3600.0 * 2 + std::fabs(angle) * 1e-12;
    if (!(std::fabs(back - angle) <= allowed)) std::abort();
}

void checkDm(double angle) {
    int degrees = kUntouched;
    double minutes = kUntouched;
    const int status = qmConversion_degreeToDM(&degrees, &minutes, angle);
    if (status != 0) {
        if (status != ERR_FAILURE || degrees != kUntouched) std::abort();
        return;
    }
    if (!(std::fabs(minutes) < 60.0)) std::abort();
    const double back = qmConversion_DMToDegree(nullptr, degrees, minutes);
    if (!(std::fabs(back - angle) <= 1e-9 + std::fabs(angle) * 1e-12)) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kbfuzz::Input input(data, size);
    while (!input.empty()) {
        const double angle = input.takeDouble();
        checkDms(angle);
        checkDm(angle);
        // Null part pointers are allowed and store nothing.
        qmConversion_degreeToDMS(nullptr, nullptr, nullptr, angle);
        qmConversion_degreeToDM(nullptr, nullptr, angle);
    }
    return 0;
}
