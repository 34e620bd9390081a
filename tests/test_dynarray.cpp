// Dynamic arrays: capacity steps, index conventions, callbacks and random operations checked
// against a std::vector model.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdint>
#include <cstring>
#include <random>
#include <set>
#include <vector>

#include "korvelbase/dynarray.h"
#include "korvelbase/mem.h"

namespace {

// Owns an array for the length of a test.
struct Array {
    QmDynArray* handle = nullptr;
    explicit Array(int elementSize, int blockSize = 0) {
        if (blockSize == 0) {
            EXPECT_EQ(qmDynArray_create(&handle, elementSize), 0);
        } else {
            EXPECT_EQ(qmDynArray_createWithMinBlockNumberAllocated(&handle, elementSize, blockSize), 0);
        }
        EXPECT_NE(handle, nullptr);
    }
    ~Array() {
        if (handle != nullptr) qmDynArray_destroy(&handle);
    }
    operator QmDynArray*() const { return handle; }
};

std::int64_t modelCapacity(std::int64_t count, int blockSize) {
    if (count == 1) return 1;
    return (count + blockSize - 1) / blockSize * blockSize;
}

// The heap block behind the array is at least capacity elements and less than one element
// (or a small allocator granule, whichever is larger) beyond them.
void expectCapacity(QmDynArray* array, int elementSize, std::int64_t capacity) {
    size_t usable = 0;
    ASSERT_EQ(qmMem_getSize(qmDynArray_getElementAdd(array, 0), &usable), 0);
    const auto bytes = static_cast<size_t>(capacity * elementSize);
    EXPECT_GE(usable, bytes);
    EXPECT_LT(usable, bytes + static_cast<size_t>(std::max(elementSize, 32)));
}

std::vector<std::int64_t> contents(QmDynArray* array) {
    std::vector<std::int64_t> values(static_cast<size_t>(qmDynArray_getSize(array)));
    for (size_t i = 0; i < values.size(); ++i) {
        EXPECT_EQ(qmDynArray_getElement(array, static_cast<int>(i), &values[i]), 0);
    }
    return values;
}

}  // namespace

TEST(DynArray, CapacityFollowsTheBlockRule) {
    struct Case {
        int elementSize;
        int blockSize;  // 0: the default for the element size
        int expectedStep;
    };
    const Case cases[] = {{8, 0, 10}, {64, 0, 10}, {128, 0, 10}, {129, 0, 1},
                          {200, 0, 1}, {64, 7, 7},  {256, 3, 3}};
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << "element " << c.elementSize << " block " << c.blockSize);
        Array array(c.elementSize, c.blockSize);
        for (int n = 1; n <= 45; ++n) {
            qmDynArray_insertElement(array, -1);
            ASSERT_EQ(qmDynArray_getSize(array), n);
            expectCapacity(array, c.elementSize, modelCapacity(n, c.expectedStep));
        }
        // Shrinking follows the same rule, down to the single slot.
        for (int n = 44; n >= 1; --n) {
            qmDynArray_deleteElement(array, 0);
            expectCapacity(array, c.elementSize, modelCapacity(n, c.expectedStep));
        }
        qmDynArray_deleteElement(array, -1);
        EXPECT_EQ(qmDynArray_getSize(array), 0);
        EXPECT_EQ(qmDynArray_getElementAdd(array, 0), nullptr);
    }
}

TEST(DynArray, CreationAndDestructionRules) {
    QmDynArray* array = reinterpret_cast<QmDynArray*>(&array);
    EXPECT_EQ(qmDynArray_createWithMinBlockNumberAllocated(&array, 8, 0), ERR_FAILURE);
    EXPECT_EQ(array, nullptr);
    EXPECT_EQ(qmDynArray_createWithMinBlockNumberAllocated(&array, 8, -3), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_createWithMinBlockNumberAllocated(nullptr, 8, 4), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_createWithMinBlockNumberAllocated(&array, 0, 4), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_create(nullptr, 8), 0);
    EXPECT_EQ(qmDynArray_create(&array, 0), 0);
    EXPECT_EQ(array, nullptr);

    ASSERT_EQ(qmDynArray_create(&array, 4), 0);
    ASSERT_NE(array, nullptr);
    qmDynArray_insertElements(array, -1, 25);
    EXPECT_EQ(qmDynArray_destroy(&array), 0);
    EXPECT_EQ(array, nullptr);
    EXPECT_EQ(qmDynArray_destroy(&array), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_destroy(nullptr), ERR_FAILURE);

    // Every operation on a null handle fails cleanly.
    int value = 0;
    int index = 7;
    EXPECT_EQ(qmDynArray_getSize(nullptr), 0);
    EXPECT_EQ(qmDynArray_getElementAdd(nullptr, 0), nullptr);
    EXPECT_EQ(qmDynArray_clear(nullptr), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_insertElements(nullptr, -1, 1), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_insertElement(nullptr, -1), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_insertAndSetElement(nullptr, -1, &value), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_deleteElement(nullptr, -1), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_getElement(nullptr, 0, &value), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_setElement(nullptr, 0, &value), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_clone(&array, nullptr), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_findElement(nullptr, nullptr, nullptr, &index), ERR_FAILURE);
    EXPECT_EQ(index, -1);
    EXPECT_EQ(qmDynArray_sort(nullptr, nullptr), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_performAction(nullptr, nullptr, nullptr, -1, -1), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_insertElementByOrder(nullptr, &value, nullptr), ERR_FAILURE);
}

TEST(DynArray, IndexConventions) {
    Array array(sizeof(std::int64_t));
    std::int64_t value = 42;
    // An empty array has no last element: -1 addresses nothing.
    EXPECT_EQ(qmDynArray_getElement(array, -1, &value), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_setElement(array, -1, &value), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_getElementAdd(array, -1), nullptr);
    EXPECT_EQ(qmDynArray_deleteElement(array, -1), ERR_FAILURE);

    // Into an empty array the index is ignored: the element is appended.
    EXPECT_EQ(qmDynArray_insertAndSetElement(array, 0, &value), 0);
    for (std::int64_t v = 1; v <= 4; ++v) qmDynArray_insertAndSetElement(array, -1, &v);
    EXPECT_EQ(contents(array), (std::vector<std::int64_t>{42, 1, 2, 3, 4}));

    std::int64_t out = 0;
    EXPECT_EQ(qmDynArray_getElement(array, -1, &out), 0);
    EXPECT_EQ(out, 4);
    EXPECT_EQ(qmDynArray_getElement(array, 5, &out), ERR_FAILURE);  // index == count
    EXPECT_EQ(qmDynArray_getElement(array, -2, &out), ERR_FAILURE);
    EXPECT_EQ(qmDynArray_getElementAdd(array, 5), nullptr);
    EXPECT_EQ(qmDynArray_getElementAdd(array, -1), qmDynArray_getElementAdd(array, 4));
    EXPECT_EQ(qmDynArray_getElement(array, 0, nullptr), ERR_FAILURE);

    EXPECT_EQ(qmDynArray_deleteElement(array, -1), 0);
    EXPECT_EQ(qmDynArray_deleteElement(array, 4), ERR_FAILURE);
    EXPECT_EQ(contents(array), (std::vector<std::int64_t>{42, 1, 2, 3}));

    // A bad insertion index or count is swallowed: 0 and nothing inserted.
    EXPECT_EQ(qmDynArray_insertElements(array, 5, 1), 0);
    EXPECT_EQ(qmDynArray_insertElements(array, -2, 1), 0);
    EXPECT_EQ(qmDynArray_insertElements(array, 0, 0), 0);
    EXPECT_EQ(qmDynArray_insertElements(array, 0, INT_MAX), 0);
    EXPECT_EQ(contents(array), (std::vector<std::int64_t>{42, 1, 2, 3}));
    // Inserting at index == count opens the gap at the end.
    value = 9;
    qmDynArray_insertAndSetElement(array, 4, &value);
    EXPECT_EQ(contents(array), (std::vector<std::int64_t>{42, 1, 2, 3, 9}));

    EXPECT_EQ(qmDynArray_clear(array), 0);
    EXPECT_EQ(qmDynArray_getSize(array), 0);
    EXPECT_EQ(qmDynArray_getElementAdd(array, 0), nullptr);
}

TEST(DynArray, SourcesInsideTheArraySurviveGrowth) {
    Array array(sizeof(std::int64_t), 1);  // every insertion reallocates
    for (std::int64_t v = 0; v < 5; ++v) qmDynArray_insertAndSetElement(array, -1, &v);
    qmDynArray_insertAndSetElement(array, 1, qmDynArray_getElementAdd(array, 3));
    qmDynArray_setElement(array, 0, qmDynArray_getElementAdd(array, 0));
    EXPECT_EQ(contents(array), (std::vector<std::int64_t>{0, 3, 1, 2, 3, 4}));
}

TEST(DynArray, RandomOperationsMatchVectorModel) {
    std::mt19937 random(20240611);
    for (int blockSize : {0, 1, 3}) {
        SCOPED_TRACE(testing::Message() << "block size " << blockSize);
        Array array(sizeof(std::int64_t), blockSize);
        std::vector<std::int64_t> model;
        std::int64_t next = 1;
        auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(random); };
        for (int step = 0; step < 3000; ++step) {
            const int size = static_cast<int>(model.size());
            switch (pick(0, 7)) {
                case 0:
                case 1: {  // insert and set, sometimes at the end
                    const int index = pick(0, 3) == 0 ? -1 : pick(0, size);
                    const std::int64_t value = next++;
                    ASSERT_EQ(qmDynArray_insertAndSetElement(array, index, &value), 0);
                    model.insert(index == -1 || size == 0 ? model.end() : model.begin() + index,
                                 value);
                    break;
                }
                case 2: {  // open an uncleared gap, check it still holds the old bytes, fill it
                    const int n = pick(1, 12);
                    if (size == 0 || pick(0, 3) == 0) {
                        qmDynArray_insertElements(array, -1, n);
                        for (int k = 0; k < n; ++k) {
                            std::int64_t value = -1;
                            qmDynArray_getElement(array, size + k, &value);
                            EXPECT_EQ(value, 0) << "appended elements are zeroed";
                        }
                        model.insert(model.end(), static_cast<size_t>(n), 0);
                        break;
                    }
                    const int index = pick(0, size);
                    const std::vector<std::int64_t> before = model;
                    qmDynArray_insertElements(array, index, n);
                    for (int p = index; p < std::min(index + n, size); ++p) {
                        std::int64_t value = 0;
                        qmDynArray_getElement(array, p, &value);
                        EXPECT_EQ(value, before[static_cast<size_t>(p)]) << "gap at " << p;
                    }
                    for (int k = 0; k < n; ++k) {
                        const std::int64_t value = next++;
                        qmDynArray_setElement(array, index + k, &value);
                        model.insert(model.begin() + index + k, value);
                    }
                    break;
                }
                case 3:
                case 4: {  // delete, sometimes the last, sometimes a bad index
                    const int index = pick(-1, size);
                    const int status = qmDynArray_deleteElement(array, index);
                    if (size == 0 || index == size) {
                        EXPECT_EQ(status, ERR_FAILURE);
                    } else {
                        EXPECT_EQ(status, 0);
                        model.erase(index == -1 ? model.end() - 1 : model.begin() + index);
                    }
                    break;
                }
                case 5: {  // overwrite
                    if (size == 0) break;
                    const int index = pick(0, size - 1);
                    const std::int64_t value = next++;
                    ASSERT_EQ(qmDynArray_setElement(array, index, &value), 0);
                    model[static_cast<size_t>(index)] = value;
                    break;
                }
                case 6: {  // a clone is an equal, independent copy
                    QmDynArray* copy = nullptr;
                    ASSERT_EQ(qmDynArray_clone(&copy, array), 0);
                    EXPECT_EQ(contents(copy), model);
                    if (size > 0) {
                        const std::int64_t value = -7;
                        qmDynArray_setElement(copy, 0, &value);
                        std::int64_t original = 0;
                        qmDynArray_getElement(array, 0, &original);
                        EXPECT_EQ(original, model[0]);
                        expectCapacity(copy, sizeof(std::int64_t),
                                       modelCapacity(size, blockSize == 0 ? 10 : blockSize));
                    }
                    qmDynArray_destroy(&copy);
                    break;
                }
                default:
                    if (pick(0, 40) == 0) {
                        qmDynArray_clear(array);
                        model.clear();
                    }
                    break;
            }
            ASSERT_EQ(contents(array), model) << "after step " << step;
        }
    }
}

namespace {

int compareInts(const void* left, const void* right) {
    const int a = *static_cast<const int*>(left);
    const int b = *static_cast<const int*>(right);
    return (a > b) - (a < b);
}

// Exactly 1 when the existing element orders after the new one, as ordered insertion expects.
int orderInts(const void* existing, const void* inserted) { return compareInts(existing, inserted); }

// A comparison that answers 2 for "after": never marks a position.
int orderIntsWithTwo(const void* existing, const void* inserted) {
    return 2 * compareInts(existing, inserted);
}

std::vector<int> intContents(QmDynArray* array) {
    std::vector<int> values(static_cast<size_t>(qmDynArray_getSize(array)));
    for (size_t i = 0; i < values.size(); ++i) {
        qmDynArray_getElement(array, static_cast<int>(i), &values[i]);
    }
    return values;
}

}  // namespace

TEST(DynArray, OrderedInsertionKeepsUniqueSortedKeys) {
    std::mt19937 random(7);
    Array array(sizeof(int));
    std::set<int> model;
    for (int i = 0; i < 2000; ++i) {
        const int key = std::uniform_int_distribution<int>(-300, 300)(random);
        ASSERT_EQ(qmDynArray_insertElementByOrder(array, &key, orderInts), 0);
        model.insert(key);
    }
    EXPECT_EQ(intContents(array), std::vector<int>(model.begin(), model.end()));

    // Re-inserting an existing element (even from inside the array) changes nothing.
    const int size = qmDynArray_getSize(array);
    qmDynArray_insertElementByOrder(array, qmDynArray_getElementAdd(array, size / 2), orderInts);
    EXPECT_EQ(qmDynArray_getSize(array), size);
    EXPECT_EQ(qmDynArray_insertElementByOrder(array, nullptr, orderInts), ERR_FAILURE);

    // Only the exact result 1 marks a position: a comparison answering 2 always appends.
    Array twos(sizeof(int));
    for (int key : {5, 1, 3, 1}) qmDynArray_insertElementByOrder(twos, &key, orderIntsWithTwo);
    EXPECT_EQ(intContents(twos), (std::vector<int>{5, 1, 3}));
}

namespace {

struct Walk {
    std::vector<int> visited;
    int stopAt = -1;
};

int recordVisit(void* element, void* userData) {
    auto* walk = static_cast<Walk*>(userData);
    const int value = *static_cast<int*>(element);
    walk->visited.push_back(value);
    return value == walk->stopAt ? 1 : 0;
}

int equalsKey(const void* element, const void* key) {
    return *static_cast<const int*>(element) == *static_cast<const int*>(key);
}

}  // namespace

TEST(DynArray, ActionWalkAndSearch) {
    Array array(sizeof(int));
    int index = 99;
    int key = 3;
    EXPECT_EQ(qmDynArray_findElement(array, equalsKey, &key, &index), 0);
    EXPECT_EQ(index, -1);
    Walk empty;
    EXPECT_EQ(qmDynArray_performAction(array, recordVisit, &empty, -1, -1), 0);
    EXPECT_TRUE(empty.visited.empty());

    for (int v = 0; v < 10; ++v) qmDynArray_insertAndSetElement(array, -1, &v);
    const std::vector<int> all{0, 1, 2, 3, 4, 5, 6, 7, 8, 9};

    // The range is checked, never used: the walk starts at element 0.
    Walk walk;
    EXPECT_EQ(qmDynArray_performAction(array, recordVisit, &walk, 5, 7), 0);
    EXPECT_EQ(walk.visited, all);
    Walk stopping;
    stopping.stopAt = 3;
    EXPECT_EQ(qmDynArray_performAction(array, recordVisit, &stopping, -1, -1), 0);
    EXPECT_EQ(stopping.visited, (std::vector<int>{0, 1, 2, 3}));
    const int badRanges[][2] = {{-2, 5}, {0, 10}, {3, 12}};
    for (const auto& range : badRanges) {
        Walk none;
        EXPECT_EQ(qmDynArray_performAction(array, recordVisit, &none, range[0], range[1]),
                  ERR_FAILURE);
        EXPECT_TRUE(none.visited.empty());
    }

    key = 6;
    qmDynArray_setElement(array, 8, &key);  // a second 6 later on
    EXPECT_EQ(qmDynArray_findElement(array, equalsKey, &key, &index), 0);
    EXPECT_EQ(index, 6);
    key = 11;
    EXPECT_EQ(qmDynArray_findElement(array, equalsKey, &key, &index), 0);
    EXPECT_EQ(index, -1);
}

TEST(DynArray, SortAgreesWithStdSort) {
    std::mt19937 random(3);
    for (int n : {0, 1, 2, 17, 500}) {
        Array array(sizeof(int));
        std::vector<int> model;
        for (int i = 0; i < n; ++i) {
            const int v = std::uniform_int_distribution<int>(-50, 50)(random);
            qmDynArray_insertAndSetElement(array, -1, &v);
            model.push_back(v);
        }
        EXPECT_EQ(qmDynArray_sort(array, compareInts), 0);
        std::sort(model.begin(), model.end());
        EXPECT_EQ(intContents(array), model);
    }
}

TEST(DynArray, LargeRecordsCopyWholeElements) {
    using Record = std::array<unsigned char, 200>;
    Array array(sizeof(Record));
    std::vector<Record> model;
    for (int i = 0; i < 30; ++i) {
        Record record;
        for (size_t b = 0; b < record.size(); ++b) record[b] = static_cast<unsigned char>(i * 7 + b);
        const int index = i % 3 == 0 ? -1 : static_cast<int>(model.size() / 2);
        qmDynArray_insertAndSetElement(array, index, record.data());
        model.insert(index == -1 ? model.end() : model.begin() + index, record);
        expectCapacity(array, sizeof(Record), static_cast<std::int64_t>(model.size()));
    }
    for (size_t i = 0; i < model.size(); ++i) {
        Record out{};
        qmDynArray_getElement(array, static_cast<int>(i), out.data());
        EXPECT_EQ(out, model[i]);
    }
}
