// The vertical profile fit on arbitrary profiles and parameters (missing-value markers, NaN,
// huge filter values, coincident stations): it returns a valid alignment or a clean failure,
// and it finishes.
#include <cmath>
#include <cstdlib>
#include <vector>

#include "fuzz/fuzz_input.hpp"
#include "korvelbase/bestfit_vertical.h"
#include "korvelbase/mem.h"

namespace {

constexpr int kMostPoints = 120;
constexpr double kMissing = -999.0;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kbfuzz::Input input(data, size);
    const double upTol = std::fabs(input.takeDouble());
    const double loTol = std::fabs(input.takeDouble());
    const double hog = input.takeDouble();
    const double sag = input.takeDouble();
    const double minLength = input.takeDouble();
    // Filter values beyond 30 % only add filtering passes (bounded at 1000, each a rescan):
    // the target spends its time on shapes of data instead.
    const double rawCog = input.takeDouble();
    const double cog = std::isfinite(rawCog) ? std::fmod(std::fabs(rawCog), 30.0) : rawCog;
    const int flags = input.take<std::uint8_t>();
    qmBestFit_verticalProfileInitialize(upTol, loTol, hog, sag, minLength, cog, flags & 1,
                                        (flags >> 1) & 1, 0);
    std::vector<double> stations;
    std::vector<double> levels;
    double station = 0.0;
    while (!input.empty() && static_cast<int>(stations.size()) < kMostPoints) {
        station += input.takeInt(0, 20) * 0.5;  // steps of 0 to 10, repeats allowed
        stations.push_back(station);
        const int kind = input.takeInt(0, 7);
        levels.push_back(kind == 0 ? kMissing : input.takeInt(-4000, 4000) * 0.01);
    }
    double* s = nullptr;
    double* l = nullptr;
    double* v = nullptr;
    int count = -1;
    const int status = qmBestFit_verticalComputeProfile(&s, &l, &v, &count, stations.data(),
                                                        levels.data(),
                                                        static_cast<int>(stations.size()));
    if (status == 0) {
        if (count < 2 || s == nullptr || l == nullptr || v == nullptr) std::abort();
        for (int i = 1; i < count; ++i) {
            if (!(s[i] > s[i - 1])) std::abort();  // IPs in strictly increasing station order
        }
        if (v[0] != 0.0 || v[count - 1] != 0.0) std::abort();
    } else if (s != nullptr || l != nullptr || v != nullptr || count != 0) {
        std::abort();
    }
    qmMem_free(s);
    qmMem_free(l);
    qmMem_free(v);
    return 0;
}
