// Dynamic array growth: appending a million 8-byte elements one at a time.
//
// Counters per run:
//   capacity_steps  capacity changes predicted by the block rule, i.e. reallocation calls
//                   (capacity(1) = 1, then n rounded up to a multiple of the block size);
//   moves           times the storage address changed (a reallocation that could not grow in
//                   place); at most capacity_steps;
//   steps_per_block capacity_steps divided by count / block size: about one per block.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "korvelbase/dynarray.h"

namespace {

constexpr int kElements = 1000000;

std::int64_t blockRuleCapacity(std::int64_t count, std::int64_t blockSize) {
    if (count == 1) return 1;
    return (count + blockSize - 1) / blockSize * blockSize;
}

std::int64_t capacitySteps(std::int64_t count, std::int64_t blockSize) {
    std::int64_t steps = 0;
    for (std::int64_t n = 1; n <= count; ++n) {
        if (blockRuleCapacity(n, blockSize) != blockRuleCapacity(n - 1, blockSize)) ++steps;
    }
    return steps;
}

// Appends kElements 8-byte values; blockSize 0 means the default block for 8-byte elements.
void appendElements(benchmark::State& state) {
    const int blockSize = static_cast<int>(state.range(0));
    const int effectiveBlock = blockSize == 0 ? 10 : blockSize;
    std::int64_t moves = 0;
    for (auto _ : state) {
        QmDynArray* array = nullptr;
        if (blockSize == 0) {
            qmDynArray_create(&array, sizeof(std::int64_t));
        } else {
            qmDynArray_createWithMinBlockNumberAllocated(&array, sizeof(std::int64_t), blockSize);
        }
        const void* storage = nullptr;
        moves = 0;
        for (std::int64_t i = 0; i < kElements; ++i) {
            qmDynArray_insertAndSetElement(array, -1, &i);
            const void* now = qmDynArray_getElementAdd(array, 0);
            if (now != storage) {
                ++moves;
                storage = now;
            }
        }
        benchmark::DoNotOptimize(qmDynArray_getElementAdd(array, -1));
        qmDynArray_destroy(&array);
    }
    const std::int64_t steps = capacitySteps(kElements, effectiveBlock);
    state.counters["capacity_steps"] = static_cast<double>(steps);
    state.counters["moves"] = static_cast<double>(moves);
    state.counters["steps_per_block"] =
        static_cast<double>(steps) / (static_cast<double>(kElements) / effectiveBlock);
    state.SetItemsProcessed(state.iterations() * kElements);
}

}  // namespace

BENCHMARK(appendElements)->Arg(0)->Arg(100)->Arg(10000)->Unit(benchmark::kMillisecond);
