// Arbitrary UTF-16 text given to the identifier parser: it either rejects the text or parses
// it, and then the printed form reads back to the same identifier.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "korvelbase/qmguid.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<QmChar16> text(size / 2 + 1, 0);
    std::memcpy(text.data(), data, (size / 2) * 2);
    text.back() = 0;
    QmGuid g;
    const int32_t status = qmGuid_fromString(&g, text.data());
    if (status != 0) {
        if (status != static_cast<int32_t>(0x800401F4u)) std::abort();
        return 0;
    }
    QmChar16 printed[QM_GUID_TEXT_SIZE + 8];
    std::fill(std::begin(printed), std::end(printed), QmChar16{0xBEEF});
    qmGuid_toString(printed, &g);
    for (std::size_t i = QM_GUID_TEXT_SIZE; i < sizeof printed / sizeof printed[0]; ++i) {
        if (printed[i] != 0xBEEF) std::abort();  // nothing past the 40 units
    }
    QmGuid back;
    if (qmGuid_fromString(&back, printed) != 0 || qmGuid_equal(&back, &g) != 1) std::abort();
    return 0;
}
