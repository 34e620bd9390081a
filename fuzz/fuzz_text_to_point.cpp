// Fuzz target for the "y x [z]" text reader: arbitrary bytes, NUL-terminated at the input's
// end, must give a status and never read past the text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "korvelbase/qmpoint.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<char> text(size + 1, '\0');
    if (size > 0) std::memcpy(text.data(), data, size);
    Point3d point{0.0, 0.0, 0.0};
    const int status = qmPoint_setFromYXZString(&point, text.data());
    if (status != 0 && status != ERR_FAILURE) std::abort();
    return 0;
}
