// Dynamic arrays: capacity steps, index conventions, callbacks and random operations checked
// against a std::vector model.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <random>
#include <set>
#include <vector>

#include "korvelbase/dynarray.h"
#include "korvelbase/mem.h"

namespace {

using Value = std::int64_t;
using Ints = std::vector<int>;

QmDynArray* makeArray(int elementSize, int blockSize) {  // blockSize 0: the default
    QmDynArray* array = nullptr;
    if (blockSize == 0) qmDynArray_create(&array, elementSize);
    else qmDynArray_createWithMinBlockNumberAllocated(&array, elementSize, blockSize);
    EXPECT_NE(array, nullptr);
    return array;
}

// Capacity: the count rounded up to whole blocks, but one element gets one slot.  The heap block
// holds at least that and less than one element more (64 bytes of slack at least: the
// allocator's granule and unsplit remainders dominate below that).
void expectCapacity(QmDynArray* array, int elementSize, int count, int blockSize) {
    const int capacity = count == 1 ? 1 : (count + blockSize - 1) / blockSize * blockSize;
    const auto bytes = static_cast<size_t>(capacity) * static_cast<size_t>(elementSize);
    size_t usable = 0;
    ASSERT_EQ(qmMem_getSize(qmDynArray_getElementAdd(array, 0), &usable), 0);
    EXPECT_GE(usable, bytes);
    EXPECT_LT(usable, bytes + static_cast<size_t>(std::max(elementSize, 64)));
}

template <typename T>
std::vector<T> contents(QmDynArray* array) {
    std::vector<T> values(static_cast<size_t>(qmDynArray_getSize(array)));
    for (size_t i = 0; i < values.size(); ++i)
        EXPECT_EQ(qmDynArray_getElement(array, static_cast<int>(i), &values[i]), 0);
    return values;
}

int compareInts(const void* l, const void* r) {
    const int a = *static_cast<const int*>(l), b = *static_cast<const int*>(r);
    return (a > b) - (a < b);
}
int equalsKey(const void* e, const void* key) { return compareInts(e, key) == 0 ? 1 : 0; }

}  // namespace

TEST(DynArray, CapacityFollowsTheBlockRule) {
    // {element size, block size given (0: default), step}: by default 10 up to 128 bytes, then 1
    const int cases[][3] = {{8, 0, 10}, {128, 0, 10}, {129, 0, 1}, {64, 7, 7}, {256, 3, 3}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "element " << c[0] << " block " << c[1]);
        QmDynArray* array = makeArray(c[0], c[1]);
        for (int step = 1; step < 50; ++step) {  // grow to 25, then shrink by the same rule
            const int n = step <= 25 ? step : 50 - step;
            step <= 25 ? qmDynArray_insertElement(array, -1) : qmDynArray_deleteElement(array, 0);
            ASSERT_EQ(qmDynArray_getSize(array), n);
            expectCapacity(array, c[0], n, c[2]);
        }
        qmDynArray_deleteElement(array, -1);
        EXPECT_EQ(qmDynArray_getElementAdd(array, 0), nullptr);  // storage released
        qmDynArray_destroy(&array);
        EXPECT_EQ(qmDynArray_destroy(&array), ERR_FAILURE);  // destroy cleared the handle
    }
}

TEST(DynArray, RejectedArgumentsAndIndexConventions) {
    QmDynArray* array = nullptr;
    for (int blockSize : {0, -3})
        EXPECT_EQ(qmDynArray_createWithMinBlockNumberAllocated(&array, 8, blockSize), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_createWithMinBlockNumberAllocated(nullptr, 8, 4), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_create(nullptr, 8), 0);
    EXPECT_EQ(qmDynArray_clone(&array, nullptr), ERR_FAILURE);
    EXPECT_EQ(array, nullptr);
    Value value = 42;
    for (QmDynArray* target : {static_cast<QmDynArray*>(nullptr), array = makeArray(8, 0)}) {
        int index = 5;  // not found: -1, and a null array is an error
        EXPECT_EQ(qmDynArray_findElement(target, equalsKey, &value, &index),
                  target ? 0 : ERR_FAILURE);
        EXPECT_EQ(index, -1);
    }
    // An empty array has no last element: -1 addresses nothing.
    EXPECT_EQ(qmDynArray_getElement(array, -1, &value), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_deleteElement(array, -1), ERR_FAILURE);
    // Into an empty array the element is appended whatever the index, but it is then set at
    // that index: index 3 does not exist, so the new element stays zeroed.
    qmDynArray_insertAndSetElement(array, 3, &value);
    for (Value v = 1; v <= 4; ++v) qmDynArray_insertAndSetElement(array, -1, &v);
    // A source inside the array survives the reallocation of the insertion.
    qmDynArray_insertAndSetElement(array, 1, qmDynArray_getElementAdd(array, 3));
    EXPECT_EQ(contents<Value>(array), (std::vector<Value>{0, 3, 1, 2, 3, 4}));
    EXPECT_EQ(qmDynArray_getElement(array, -1, &value), 0);
    EXPECT_EQ(value, 4);
    EXPECT_EQ(qmDynArray_getElement(array, 6, &value), ERR_FAILURE);  // index == count
    EXPECT_EQ(qmDynArray_getElementAdd(array, -2), nullptr);
    for (const auto& bad : {Ints{7, 1}, {-2, 1}, {0, 0}, {0, INT_MAX}})  // swallowed: 0, no change
        EXPECT_EQ(qmDynArray_insertElements(array, bad[0], bad[1]), 0);
    EXPECT_EQ(qmDynArray_getSize(array), 6);
    EXPECT_EQ(qmDynArray_clear(array), 0);
    EXPECT_EQ(qmDynArray_getElementAdd(array, 0), nullptr);
    qmDynArray_destroy(&array);
}

TEST(DynArray, RandomOperationsMatchVectorModel) {
    std::mt19937 random(20240611);
    auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
    for (int blockSize : {0, 1, 3}) {
        SCOPED_TRACE(testing::Message() << "block size " << blockSize);
        QmDynArray* array = makeArray(sizeof(Value), blockSize);
        std::vector<Value> model;
        Value next = 1;
        for (int step = 0; step < 1500; ++step) {
            const int size = static_cast<int>(model.size()), op = pick(0, 5);
            if (op <= 1) {  // insert and set, sometimes at the end
                const int index = pick(0, 3) == 0 ? -1 : pick(0, size);
                qmDynArray_insertAndSetElement(array, index, &next);
                model.insert(index == -1 || !size ? model.end() : model.begin() + index, next++);
            } else if (op == 2) {  // n at once: appended ones are 0, an inner gap keeps old bytes
                const int n = pick(1, 12);
                const int index = size == 0 || pick(0, 3) == 0 ? -1 : pick(0, size);
                qmDynArray_insertElements(array, index, n);
                const int at = index == -1 ? size : index;
                const std::vector<Value> before = model;
                for (int p = at; p < at + n; ++p) {
                    Value value = -1;
                    qmDynArray_getElement(array, p, &value);
                    if (index == -1 || p < size) {  // beyond the old end the gap is undefined
                        EXPECT_EQ(value, index == -1 ? 0 : before[size_t(p)]) << p;
                    }
                    qmDynArray_setElement(array, p, &next);
                    model.insert(model.begin() + p, next++);
                }
            } else if (op <= 4) {  // delete, sometimes the last, sometimes past the end
                const int index = pick(-3, size);
                const bool exists = size > 0 && index >= -1 && index < size;
                // Below -1 nothing is removed, yet the result is 0: only the upper bound fails.
                const bool refused = index >= size || (index == -1 && size == 0);
                EXPECT_EQ(qmDynArray_deleteElement(array, index), refused ? ERR_FAILURE : 0);
                if (exists) model.erase(index == -1 ? model.end() - 1 : model.begin() + index);
            } else {  // a clone is an equal, independent copy with the same block size
                QmDynArray* copy = nullptr;
                ASSERT_EQ(qmDynArray_clone(&copy, array), 0);
                EXPECT_EQ(contents<Value>(copy), model);
                if (size > 0) {
                    qmDynArray_setElement(copy, 0, &next);  // must not show in the original
                    expectCapacity(copy, sizeof(Value), size, blockSize ? blockSize : 10);
                }
                qmDynArray_destroy(&copy);
                if (pick(0, 30) == 0) { qmDynArray_clear(array); model.clear(); }
            }
            ASSERT_EQ(contents<Value>(array), model) << "after step " << step;
        }
        qmDynArray_destroy(&array);
    }
}

TEST(DynArray, OrderedInsertionSortAndWalk) {
    std::mt19937 random(7);
    QmDynArray* array = makeArray(sizeof(int), 0);
    std::set<int> keys;  // ordered insertion keeps one of each key, ascending
    for (int i = 0; i < 600; ++i) {
        const int key = std::uniform_int_distribution<int>(-300, 300)(random);
        ASSERT_EQ(qmDynArray_insertElementByOrder(array, &key, compareInts), 0);
        keys.insert(key);
    }
    EXPECT_EQ(contents<int>(array), Ints(keys.begin(), keys.end()));
    qmDynArray_clear(array);
    // Only the exact result 1 marks a position: a comparison answering 2 always appends.
    auto compareWithTwo = [](const void* l, const void* r) { return 2 * compareInts(l, r); };
    for (int k : {5, 1, 3, 1, 5}) qmDynArray_insertElementByOrder(array, &k, compareWithTwo);
    EXPECT_EQ(contents<int>(array), (Ints{5, 1, 3}));
    for (int v = 9; v >= 0; --v) qmDynArray_insertAndSetElement(array, 0, &v);
    qmDynArray_sort(array, compareInts);
    EXPECT_EQ(contents<int>(array), (Ints{0, 1, 1, 2, 3, 3, 4, 5, 5, 6, 7, 8, 9}));
    int index = 0;
    const int five = 5;
    EXPECT_EQ(qmDynArray_findElement(array, equalsKey, &five, &index), 0);
    EXPECT_EQ(index, 7);  // the first of the two

    // The walk range is checked, never used: it starts at element 0 and stops on non-zero.
    Ints visited;
    auto recordVisit = [](void* element, void* seen) {  // stops on the value 3
        static_cast<Ints*>(seen)->push_back(*static_cast<int*>(element));
        return *static_cast<int*>(element) == 3 ? 1 : 0;
    };
    for (const auto& bad : {Ints{-2, 5}, {0, 13}}) {
        EXPECT_EQ(qmDynArray_performAction(array, recordVisit, &visited, bad[0], bad[1]),
                  ERR_FAILURE);
    }
    EXPECT_TRUE(visited.empty());
    EXPECT_EQ(qmDynArray_performAction(array, recordVisit, &visited, 8, 9), 0);
    EXPECT_EQ(visited, (Ints{0, 1, 1, 2, 3}));
    qmDynArray_destroy(&array);
}
