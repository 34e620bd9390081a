// A dynamic array driven by an operation sequence decoded from the bytes, compared after every
// operation with a std::vector model.
#include <cstdlib>
#include <vector>

#include "fuzz/fuzz_input.hpp"
#include "korvelbase/dynarray.h"

namespace {

using Value = long long;

void expectSame(QmDynArray* array, const std::vector<Value>& model) {
    if (qmDynArray_getSize(array) != static_cast<int>(model.size())) std::abort();
    for (std::size_t i = 0; i < model.size(); ++i) {
        Value value = 0;
        if (qmDynArray_getElement(array, static_cast<int>(i), &value) != 0) std::abort();
        if (value != model[i]) std::abort();
    }
}

constexpr int kMostElements = 400;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kbfuzz::Input input(data, size);
    QmDynArray* array = nullptr;
    if (qmDynArray_createWithMinBlockNumberAllocated(&array, sizeof(Value),
                                                     input.takeInt(1, 16)) != 0) {
        return 0;
    }
    std::vector<Value> model;
    Value next = 1;
    while (!input.empty()) {
        const int count = static_cast<int>(model.size());
        switch (input.takeInt(0, 5)) {
            case 0: {  // insert one element with a value, at an index or at the end
                if (count >= kMostElements) break;
                const int index = input.takeInt(-1, count);
                qmDynArray_insertAndSetElement(array, index, &next);
                model.insert(index == -1 || count == 0 ? model.end() : model.begin() + index, next);
                if (count == 0 && index > 0) model.back() = 0;  // set at a missing index: stays 0
                ++next;
                break;
            }
            case 1: {  // append several zeroed elements
                const int n = input.takeInt(1, 20);
                if (count + n > kMostElements) break;
                qmDynArray_insertElements(array, -1, n);
                model.insert(model.end(), static_cast<std::size_t>(n), 0);
                break;
            }
            case 2: {  // delete, including indexes below -1 and past the end
                const int index = input.takeInt(-3, count + 1);
                const int status = qmDynArray_deleteElement(array, index);
                const bool refused = index > count - 1 || (index == -1 && count == 0);
                if (status != (refused ? ERR_FAILURE : 0)) std::abort();
                if (!refused && index >= -1) {
                    model.erase(index == -1 ? model.end() - 1 : model.begin() + index);
                }
                break;
            }
            case 3: {  // overwrite
                if (count == 0) break;
                const int index = input.takeInt(0, count - 1);
                if (qmDynArray_setElement(array, index, &next) != 0) std::abort();
                model[static_cast<std::size_t>(index)] = next++;
                break;
            }
            case 4: {  // a clone is equal and independent
                QmDynArray* copy = nullptr;
                if (qmDynArray_clone(&copy, array) != 0) std::abort();
                expectSame(copy, model);
                qmDynArray_destroy(&copy);
                break;
            }
            default:
                qmDynArray_clear(array);
                model.clear();
                break;
        }
        expectSame(array, model);
    }
    qmDynArray_destroy(&array);
    return 0;
}
