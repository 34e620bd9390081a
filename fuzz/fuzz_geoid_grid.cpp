// Arbitrary bytes as a geoid grid file: opening either rejects the file or loads a model that
// answers queries with a value or a clean failure, never a crash or a read outside the file.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "fuzz/fuzz_input.hpp"
#include "korvelbase/qmgeoid.h"

namespace {

// A file of this process's own, so that fuzzers running side by side never share it.
const std::string& gridPath() {
    static const std::string path =
        (std::filesystem::temp_directory_path() /
         ("kb-fuzz-geoid-grid-" + std::to_string(std::random_device{}()) + ".bin"))
            .string();
    return path;
}

constexpr std::size_t kHeaderBytes = 44;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The first bytes choose query positions; the rest is the file.
    kbfuzz::Input input(data, size < 32 ? size : 32);
    double positions[4][2];
    for (auto& p : positions) {
        p[0] = input.takeDouble();
        p[1] = input.takeDouble();
    }
    const std::size_t skip = size < 32 ? size : 32;
    {
        std::ofstream out(gridPath(), std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(data + skip), static_cast<std::streamsize>(size - skip));
    }
    if (qmGeoid_initModelByFile(gridPath().c_str()) == 0) {
        if (size - skip < kHeaderBytes) std::abort();  // a file without a header was accepted
        for (const auto& p : positions) {
            for (const int east : {0, 1}) {
                double n = 1234.5;
                const int status = qmGeoid_getUndulationAtLatLong(&n, p[0], p[1], east);
                if (status != 0 && status != 1) std::abort();
                if (status == 1 && n != 0.0) std::abort();
            }
        }
    }
    qmGeoid_closeModel();
    return 0;
}
