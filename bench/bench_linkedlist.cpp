// Linked list: merge sort of the nodes should scale as n log n (10^5 -> 10^6 records: about
// 12x the time, far from the 100x of a quadratic path), and merging two sorted lists is one pass.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>

#include "korvelbase/linkedlist.h"

namespace {

struct Record {
    int64_t key;
    int64_t payload;
};

int byKey(const void* a, const void* b) {
    const int64_t ka = static_cast<const Record*>(a)->key;
    const int64_t kb = static_cast<const Record*>(b)->key;
    return (ka > kb) - (ka < kb);
}

QmLinkedList* randomList(int64_t count, uint32_t seed) {
    QmLinkedList* list = nullptr;
    qmLinkedList_create(&list, sizeof(Record));
    qmLinkedList_setCompareFunction(list, byKey);
    std::mt19937_64 rng(seed);
    for (int64_t i = 0; i < count; ++i) {
        const Record record{static_cast<int64_t>(rng() % 1000000007u), i};
        qmLinkedList_pushBack(list, &record);
    }
    return list;
}

void BM_SortRandomRecords(benchmark::State& state) {
    uint32_t seed = 1;
    for (auto _ : state) {
        state.PauseTiming();
        QmLinkedList* list = randomList(state.range(0), seed++);
        state.ResumeTiming();
        qmLinkedList_sort(list);
        state.PauseTiming();
        qmLinkedList_destroy(&list);
        state.ResumeTiming();
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_SortRandomRecords)
    ->Arg(100000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity(benchmark::oNLogN);

void BM_MergeSortedLists(benchmark::State& state) {
    QmLinkedList* other = randomList(state.range(0), 7);
    qmLinkedList_sort(other);
    for (auto _ : state) {
        state.PauseTiming();
        QmLinkedList* list = randomList(state.range(0), 11);
        qmLinkedList_sort(list);
        state.ResumeTiming();
        qmLinkedList_merge(list, other);
        state.PauseTiming();
        qmLinkedList_destroy(&list);
        state.ResumeTiming();
    }
    qmLinkedList_destroy(&other);
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_MergeSortedLists)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
