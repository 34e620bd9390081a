// Heap wrappers and block arrays.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "korvelbase/blockarray.h"
#include "korvelbase/mem.h"

namespace {

// A 64-byte element: large enough that the heap's usable size pins down the capacity
// (usable >= capacity * 64 and < (capacity + 1) * 64, with the runtime heap and with ASan).
struct Slot {
    int value;
    unsigned char padding[60];
};
Slot slotWith(int value) { return Slot{value, {}}; }
const int kSlot = static_cast<int>(sizeof(Slot));

int memError() {
    int error = -1;
    MEM_GetErreur(&error, nullptr);
    return error;
}

// Capacity of the storage, in slots, read from the heap.
size_t slotsOf(void* storage) {
    size_t bytes = 0;
    EXPECT_EQ(qmMem_getSize(storage, &bytes), 0);
    return bytes / sizeof(Slot);
}

int valueAt(void* storage, int i) { return static_cast<Slot*>(storage)[i].value; }

class BlockArray : public ::testing::Test {
protected:
    void TearDown() override { if (storage != nullptr) MEM_LibererTableau(&storage); }
    void append(int value) {
        MEM_EtendreTableau(&storage, kSlot, &count);
        ASSERT_EQ(memError(), 0);
        static_cast<Slot*>(storage)[count - 1] = slotWith(value);
    }
    std::vector<int> values() const {
        std::vector<int> out;
        for (int i = 0; i < count; ++i) out.push_back(valueAt(storage, i));
        return out;
    }
    void* storage = nullptr;
    int count = 0;
};

TEST(HeapWrappers, FailureRulesAndUsableSize) {
    EXPECT_EQ(qmMem_free(nullptr), ERR_FAILURE);
    EXPECT_EQ(qmMem_freeAndClear(nullptr), ERR_FAILURE);
    void* empty = nullptr;
    EXPECT_EQ(qmMem_freeAndClear(&empty), ERR_FAILURE);

    size_t bytes = 99;
    EXPECT_EQ(qmMem_getSize(nullptr, nullptr), ERR_FAILURE);
    EXPECT_EQ(qmMem_getSize(nullptr, &bytes), ERR_FAILURE);
    EXPECT_EQ(bytes, 0u);

    void* block = qmMem_realloc(qmMem_calloc(10, 8), 200);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(qmMem_getSize(block, &bytes), 0);
    EXPECT_GE(bytes, 200u);
    EXPECT_EQ(qmMem_freeAndClear(&block), 0);
    EXPECT_EQ(block, nullptr);

    void* blocks[3] = {qmMem_malloc(8), nullptr, qmMem_malloc(16)};
    EXPECT_EQ(qmMem_freeAndClearArray(blocks, 0), ERR_FAILURE);
    EXPECT_EQ(qmMem_freeAndClearArray(blocks, 3), 0);  // the null slot is skipped
    for (void* b : blocks) EXPECT_EQ(b, nullptr);
}

TEST(HeapWrappers, LargestAllocatableBlockIsBoundedByTheProbe) {
    // A 64-bit process always has room for the probe; the probe block is kept by the library.
    EXPECT_EQ(qmMem_getMaximumAllocatableHeapMemory(), 64000000u);
}

TEST_F(BlockArray, CreateAndResizeFollowTheCapacityRule) {
    MEM_CreerTableau(&storage, kSlot, 13);
    ASSERT_EQ(memError(), 0);
    EXPECT_EQ(slotsOf(storage), 20u);
    for (int i = 0; i < 20; ++i) EXPECT_EQ(valueAt(storage, i), 0);
    void* kept = storage;
    MEM_CreerTableau(&storage, kSlot, 5);  // the pointer is already in use
    EXPECT_EQ(memError(), ERR_FAILURE);
    EXPECT_EQ(storage, kept);

    MEM_ModifierTailleTableau(&storage, kSlot, 1);
    EXPECT_EQ(slotsOf(storage), 1u);
    MEM_ModifierTailleTableau(&storage, kSlot, 25);
    EXPECT_EQ(slotsOf(storage), 30u);
    // Zero elements: the pointer is cleared without releasing, so release first.
    void* owned = storage;
    MEM_ModifierTailleTableau(&storage, kSlot, 0);
    EXPECT_EQ(memError(), 0);
    EXPECT_EQ(storage, nullptr);
    qmMem_free(owned);
    MEM_ModifierTailleTableau(&storage, kSlot, 4);  // nothing to resize
    EXPECT_EQ(memError(), ERR_FAILURE);
}

TEST_F(BlockArray, InsertionOpensAnUnclearedGap) {
    MEM_InsererElementDansTableau(&storage, kSlot, &count, 0);  // empty: exactly one slot
    ASSERT_EQ(memError(), 0);
    EXPECT_EQ(slotsOf(storage), 1u);
    static_cast<Slot*>(storage)[0] = slotWith(0);
    for (int v = 1; v < 5; ++v) append(v);
    MEM_InsererElementsDansTableau(&storage, kSlot, &count, 1, 2);
    ASSERT_EQ(memError(), 0);
    // The gap still holds the bytes that were there before the move.
    EXPECT_EQ(values(), std::vector<int>({0, 1, 2, 1, 2, 3, 4}));

    MEM_InsererElementDansTableau(&storage, kSlot, &count, count);  // index = count appends
    EXPECT_EQ(memError(), 0);
    EXPECT_EQ(count, 8);
    for (int bad : {count + 1, -1}) {
        MEM_InsererElementDansTableau(&storage, kSlot, &count, bad);
        EXPECT_EQ(memError(), ERR_FAILURE);
        EXPECT_EQ(count, 8);
    }
}

TEST_F(BlockArray, RemovalFailuresAndReleasingTheLastElement) {
    append(7);
    MEM_SupprimerElementDansTableau(&storage, kSlot, &count, 1);
    EXPECT_EQ(memError(), ERR_FAILURE);
    MEM_SupprimerElementsDansTableau(&storage, kSlot, &count, 0, -1);
    EXPECT_EQ(memError(), ERR_FAILURE);
    MEM_SupprimerElementDansTableau(&storage, kSlot, &count, 0);
    EXPECT_EQ(memError(), 0);
    EXPECT_EQ(storage, nullptr);
    EXPECT_EQ(count, 0);
    MEM_LibererTableau(&storage);
    EXPECT_EQ(memError(), ERR_FAILURE);  // already released
}

TEST_F(BlockArray, AppendByBlockZeroesTheNewElements) {
    MEM_EtendreTableauParBloc(&storage, kSlot, &count, 3);
    ASSERT_EQ(memError(), 0);
    EXPECT_EQ(slotsOf(storage), 10u);
    static_cast<Slot*>(storage)[0] = slotWith(5);
    MEM_EtendreTableauParBloc(&storage, kSlot, &count, 9);
    ASSERT_EQ(memError(), 0);
    EXPECT_EQ(count, 12);
    EXPECT_EQ(slotsOf(storage), 20u);
    EXPECT_EQ(values(), std::vector<int>({5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(BlockArray, RandomOperationsAgreeWithAVectorModel) {
    std::mt19937 rng(20261121);
    std::vector<int> model;
    int next = 1;
    for (int step = 0; step < 1500; ++step) {
        const int op = static_cast<int>(rng() % 4);
        if (op == 0 || model.empty()) {
            append(next);
            model.push_back(next++);
        } else if (op == 1) {
            const int at = static_cast<int>(rng() % (model.size() + 1));
            MEM_InsererElementDansTableau(&storage, kSlot, &count, at);
            ASSERT_EQ(memError(), 0);
            static_cast<Slot*>(storage)[at] = slotWith(next);
            model.insert(model.begin() + at, next++);
        } else if (op == 2) {
            const int at = static_cast<int>(rng() % model.size());
            MEM_SupprimerElementDansTableau(&storage, kSlot, &count, at);
            ASSERT_EQ(memError(), 0);
            model.erase(model.begin() + at);
        } else {
            const int first = static_cast<int>(rng() % model.size());
            const int last = first + static_cast<int>(rng() % (model.size() - first));
            MEM_SupprimerElementsDansTableau(&storage, kSlot, &count, first, last);
            ASSERT_EQ(memError(), 0);
            model.erase(model.begin() + first, model.begin() + last + 1);
        }
        ASSERT_EQ(values(), model) << "step " << step;
        if (count == 0) {
            ASSERT_EQ(storage, nullptr);
        } else {
            const size_t expected = count == 1 ? 1u : static_cast<size_t>((count + 9) / 10 * 10);
            ASSERT_EQ(slotsOf(storage), expected) << "step " << step;
        }
    }
}

TEST(BlockArraySearch, BytewiseRankOfTheFirstMatch) {
    const double values[] = {1.5, 0.0, 2.5, 1.5};
    // {sample, count, element size, result, rank}: -0.0 differs from 0.0 byte for byte.
    const struct { double sample; int count, size, result, rank; } cases[] = {
        {1.5, 4, 8, 0, 0}, {3.0, 4, 8, 4, -1}, {-0.0, 4, 8, 4, -1}, {1.5, 0, 8, 0, -1},
        {7.0, 4, 0, 0, 0}};
    for (const auto& c : cases) {
        int rank = 99;
        EXPECT_EQ(MEM_RecupererRang(values, c.count, c.size, &c.sample, &rank), c.result);
        EXPECT_EQ(rank, c.rank) << c.sample;
    }
    EXPECT_EQ(MEM_RecupererRang(values, 4, 8, &values[0], nullptr), 0);
    EXPECT_EQ(memError(), ERR_FAILURE);
}

TEST(BlockArrayErrorPair, SecondWordBelongsToTheCaller) {
    MEM_SetErreur(ERR_FAILURE, 1234);
    int error = 0, detail = 0;
    void* storage = nullptr;
    int count = 0;
    MEM_EtendreTableau(&storage, 8, &count);  // clears the error word, leaves the second
    MEM_GetErreur(&error, &detail);
    EXPECT_EQ(error, 0);
    EXPECT_EQ(detail, 1234);
    MEM_LibererTableau(&storage);
    MEM_SetErreur(0, 0);
}

}  // namespace
