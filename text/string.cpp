// String utilities.
#include <cstring>

#include "korvelbase/qmstring.h"

extern "C" {

int qmString_strcmp(const char* left, const char* right) noexcept {
    if (left == nullptr || right == nullptr) {
        // A missing text orders before any text and equals another missing one.
        return (left != nullptr) - (right != nullptr);
    }
    const int order = std::strcmp(left, right);
    return (order > 0) - (order < 0);
}

}  // extern "C"
