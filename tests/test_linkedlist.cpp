// Linked list and iterator: edge cases, quirks, and random operations checked against std::list.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <list>
#include <random>
#include <vector>

#include "korvelbase/linkedlist.h"

namespace {

// Compared by key only, so the payload reveals how records with equal keys were ordered.
struct Rec {
    int32_t key, payload;
    bool operator==(const Rec& o) const { return key == o.key && payload == o.payload; }
};
using Recs = std::vector<Rec>;
using Ints = std::vector<int>;

struct List {
    QmLinkedList* h = nullptr;
    explicit List(int size = sizeof(Rec), bool keyed = true) {
        qmLinkedList_create(&h, size);
        if (keyed) qmLinkedList_setCompareFunction(h, [](const void* a, const void* b) {
            const int32_t ka = static_cast<const Rec*>(a)->key, kb = static_cast<const Rec*>(b)->key;
            return (ka > kb) - (ka < kb);
        });
    }
    ~List() { qmLinkedList_destroy(&h); }
};
struct Iter {
    QmLListIterator* h = nullptr;
    explicit Iter(QmLinkedList* list) { qmLListIterator_create(&h, list); }
    ~Iter() { qmLListIterator_destroy(&h); }
};
template <typename T>
void push(QmLinkedList* list, std::initializer_list<T> values) {
    for (const T& v : values) ASSERT_EQ(qmLinkedList_pushBack(list, &v), 0);
}
int cur(QmLListIterator* it) {  // the int under the iterator, or the (negative) result code
    int v = 0, rc = qmLListIterator_getCurrent(it, &v);
    return rc == 0 ? v : rc;
}
// Contents read three independent ways (forward walk, backward walk, by index) that must agree.
template <typename T>
std::vector<T> contents(QmLinkedList* list) {
    Iter it(list);
    std::vector<T> forward, backward;
    T v{};
    while (qmLListIterator_next(it.h) == 0 && qmLListIterator_getCurrent(it.h, &v) == 0)
        forward.push_back(v);
    qmLListIterator_end(it.h);
    while (qmLListIterator_previous(it.h) == 0 && qmLListIterator_getCurrent(it.h, &v) == 0)
        backward.insert(backward.begin(), v);
    EXPECT_EQ(forward, backward) << "forward and backward links disagree";
    EXPECT_EQ(static_cast<int>(forward.size()), qmLinkedList_size(list));
    for (int i = 0; i < static_cast<int>(forward.size()); ++i)
        EXPECT_TRUE(qmLinkedList_getValueByIndex(list, &v, i) == 0 && v == forward[i]) << i;
    return forward;
}

}  // namespace

TEST(LinkedList, CreateDestroyAndNullHandles) {
    QmLinkedList* list = nullptr;
    EXPECT_EQ(qmLinkedList_create(nullptr, 4), 0);
    for (int size : {0, -3}) EXPECT_EQ(qmLinkedList_create(&list, size), 0);
    EXPECT_EQ(list, nullptr);
    ASSERT_EQ(qmLinkedList_create(&list, 4), 0);
    QmLinkedList* const first = list;
    EXPECT_EQ(qmLinkedList_create(&list, 4), 0);  // already holds a list: nothing happens
    EXPECT_EQ(list, first);
    EXPECT_EQ(qmLinkedList_destroy(&list), 0);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(qmLinkedList_destroy(&list), ERR_FAILURE);
    EXPECT_EQ(qmLinkedList_destroy(nullptr), ERR_FAILURE);
    int v = 0;
    EXPECT_EQ(qmLinkedList_size(nullptr), 0);
    EXPECT_EQ(qmLinkedList_getValueByIndex(nullptr, &v, 0), 0);
    EXPECT_EQ(qmLinkedList_merge(nullptr, nullptr), 0);
    EXPECT_EQ(qmLinkedList_mergeCopyUnique(nullptr, nullptr), ERR_FAILURE);
    for (auto op : {qmLinkedList_clear, qmLinkedList_popFront, qmLinkedList_popBack,
                    qmLinkedList_unique, qmLinkedList_sort, qmLinkedList_reverse})
        EXPECT_EQ(op(nullptr), ERR_FAILURE);
    QmLListIterator* it = nullptr;
    EXPECT_EQ(qmLListIterator_create(&it, nullptr), ERR_FAILURE);
    EXPECT_EQ(qmLListIterator_destroy(&it), ERR_FAILURE);
    EXPECT_EQ(qmLListIterator_next(nullptr), ERR_FAILURE);
}

TEST(LinkedList, DefaultOrderUniqueAndIndexQuirks) {
    using Pair = std::array<unsigned char, 2>;  // no comparison set: unsigned bytes, first first
    List bytes(2, false);
    for (Pair r : {Pair{0x80, 0}, Pair{1, 0xff}, Pair{1, 2}, Pair{0x7f, 0}})
        qmLinkedList_pushBack(bytes.h, r.data());
    qmLinkedList_sort(bytes.h);
    EXPECT_EQ(contents<Pair>(bytes.h), (std::vector<Pair>{{1, 2}, {1, 0xff}, {0x7f, 0}, {0x80, 0}}));

    List ints(sizeof(int), false);
    push<int>(ints.h, {1, 1, 2, 1});
    qmLinkedList_unique(ints.h);  // adjacent duplicates only
    EXPECT_EQ(contents<int>(ints.h), (Ints{1, 2, 1}));
    for (int index : {3, -1}) {  // a failed walk leaves the last visited record behind
        int value = -7;
        EXPECT_EQ(qmLinkedList_getValueByIndex(ints.h, &value, index), ERR_FAILURE);
        EXPECT_EQ(value, 1);
    }
}

TEST(LinkedListIterator, WalkingResults) {
    List list(sizeof(int), false);
    Iter it(list.h);
    EXPECT_EQ(cur(it.h), -1);
    EXPECT_EQ(qmLListIterator_next(it.h), -1);      // empty list: lands on end
    EXPECT_EQ(qmLListIterator_previous(it.h), -2);  // end of an empty list is the first slot
    push<int>(list.h, {10, 20, 30});
    qmLListIterator_reset(it.h);
    EXPECT_EQ(cur(it.h), -1);
    EXPECT_EQ(qmLListIterator_previous(it.h), -2);
    EXPECT_EQ(qmLListIterator_next(it.h), 0);
    EXPECT_EQ(qmLListIterator_previous(it.h), -2);  // on the first record
    qmLListIterator_end(it.h);
    EXPECT_EQ(cur(it.h), -1);
    EXPECT_EQ(qmLListIterator_next(it.h), 0);  // the ring wraps from end to the first record
    EXPECT_EQ(cur(it.h), 10);
    const int twenty = 20, absent = 99;
    ASSERT_EQ(qmLListIterator_find(it.h, &twenty), 0);
    EXPECT_EQ(qmLListIterator_find(it.h, &absent), ERR_FAILURE);
    EXPECT_EQ(cur(it.h), 20);  // position restored
    qmLListIterator_reset(it.h);
    EXPECT_EQ(qmLListIterator_find(it.h, &absent), ERR_FAILURE);
    EXPECT_EQ(cur(it.h), -1);  // still reset
}

TEST(LinkedListIterator, RangesEraseInsertAndActions) {
    List list(sizeof(int), false), other(sizeof(int), false);
    Iter from(list.h), to(list.h), foreign(other.h);
    auto noop = [](void*, void*) { return 0; };
    EXPECT_EQ(qmLinkedList_eraseElements(list.h, nullptr, nullptr), -1);
    EXPECT_EQ(qmLinkedList_performAction(list.h, noop, nullptr, nullptr, nullptr), -1);
    push<int>(list.h, {0, 1, 2, 3, 4, 5, 6, 7});
    EXPECT_EQ(qmLinkedList_eraseElement(list.h, foreign.h), ERR_FAILURE);
    EXPECT_EQ(qmLinkedList_eraseElement(list.h, from.h), -1);  // reset: no record
    const int two = 2, five = 5, eight = 8, nine = 9;
    qmLListIterator_find(from.h, &two);
    qmLListIterator_find(to.h, &five);
    Ints seen;  // the action sees copies: doubling them changes nothing; 3 stops the walk
    auto action = [](void* rec, void* user) {
        static_cast<Ints*>(user)->push_back(*static_cast<int*>(rec));
        return (*static_cast<int*>(rec) *= 2) == 6 ? 1 : 0;
    };
    EXPECT_EQ(qmLinkedList_performAction(list.h, action, &seen, from.h, to.h), 0);
    EXPECT_EQ(seen, (Ints{2, 3}));
    EXPECT_EQ(qmLinkedList_eraseElements(list.h, from.h, to.h), 0);  // removes 2, 3, 4
    EXPECT_EQ(cur(from.h), 5);
    EXPECT_EQ(qmLinkedList_eraseElement(list.h, from.h), 0);  // removes 5, moves to 6
    EXPECT_EQ(cur(from.h), 6);
    EXPECT_EQ(qmLinkedList_eraseElements(list.h, from.h, nullptr), 0);  // 6, 7 to the end
    EXPECT_EQ(cur(from.h), -1);
    // Insertion before the iterator moves it onto the new record; null means the front.
    EXPECT_EQ(qmLinkedList_insert(list.h, from.h, &nine), 0);
    EXPECT_EQ(cur(from.h), 9);
    EXPECT_EQ(qmLinkedList_insert(list.h, nullptr, &eight), 0);
    EXPECT_EQ(qmLinkedList_insert(list.h, foreign.h, &eight), ERR_FAILURE);
    EXPECT_EQ(contents<int>(list.h), (Ints{8, 0, 1, 9}));
}

TEST(LinkedList, AppendMergeAndAssignment) {
    List list, other;
    const Rec a1{1, 1}, a3{3, 2}, b1{1, 10}, b2{2, 11}, b3{3, 12}, b4{4, 13};
    push<Rec>(list.h, {a3, a1});
    push<Rec>(other.h, {b1, b2, b3, b4});
    qmLinkedList_sort(list.h);
    qmLinkedList_sort(other.h);
    EXPECT_EQ(qmLinkedList_mergeCopyUnique(list.h, other.h), 0);  // equal keys: the list's first
    EXPECT_EQ(contents<Rec>(list.h), (Recs{a1, b2, a3, b4}));
    EXPECT_EQ(qmLinkedList_merge(list.h, list.h), 0);  // self merge doubles every record
    EXPECT_EQ(contents<Rec>(list.h), (Recs{a1, a1, b2, b2, a3, a3, b4, b4}));

    for (auto op : {qmLinkedList_append, qmLinkedList_appendCopy}) {
        List dst, wrongSize(4);
        push<Rec>(dst.h, {a3});
        qmLinkedList_sort(dst.h);
        EXPECT_EQ(op(dst.h, other.h), 0);
        EXPECT_EQ(op(dst.h, dst.h), 0);  // self append doubles the list once
        EXPECT_EQ(contents<Rec>(dst.h), (Recs{a3, b1, b2, b3, b4, a3, b1, b2, b3, b4}));
        EXPECT_EQ(qmLinkedList_insertInOrder(dst.h, &a1), ERR_FAILURE);  // no longer sorted
        EXPECT_EQ(op(dst.h, wrongSize.h), ERR_FAILURE);
    }

    // Assignment through an iterator: records, size, flag and comparison come along.
    List small(sizeof(int), false);
    push<int>(small.h, {7});
    Iter it(small.h);
    qmLListIterator_next(it.h);
    ASSERT_EQ(qmLListIterator_setLinkedList(it.h, other.h), 0);
    EXPECT_EQ(cur(it.h), -1);  // reset
    const Rec b2bis{2, 99};
    EXPECT_EQ(qmLinkedList_insertInOrder(small.h, &b2bis), 0);  // sorted by key, not bytes
    EXPECT_EQ(contents<Rec>(small.h), (Recs{b1, b2, b2bis, b3, b4}));
    ASSERT_EQ(qmLListIterator_setLinkedList(it.h, small.h), 0);  // self assignment
    EXPECT_EQ(qmLinkedList_size(small.h), 5);
}

// Every operation mirrored on std::list, with the iterator's position and the sorted flag
// tracked; the contents are compared three ways after each step.
TEST(LinkedList, RandomOperationsAgreeWithModel) {
    std::mt19937 rng(2024);
    auto keyLess = [](const Rec& a, const Rec& b) { return a.key < b.key; };
    auto sameKey = [](const Rec& a, const Rec& b) { return a.key == b.key; };
    List list;
    Iter it(list.h);
    std::list<Rec> model;
    bool sorted = true;
    size_t pos = 0;  // model index of the iterator (model.size() = end)
    int payload = 0;
    auto at = [&](size_t i) { return std::next(model.begin(), static_cast<long>(i)); };
    auto moveTo = [&](bool end) {
        end ? qmLListIterator_end(it.h) : qmLListIterator_begin(it.h);
        pos = end ? model.size() : 0;
    };
    moveTo(true);
    for (int step = 0; step < 2000; ++step) {
        const Rec rec{static_cast<int32_t>(rng() % 64), payload++};
        const int op = static_cast<int>(rng() % 16);
        const bool atEnd = pos == model.size(), empty = model.empty();
        if (op <= 2 || op == 6 || op >= 13) sorted = false;  // insertions at will, reverse
        switch (op) {
            case 0:  // the iterator keeps its node, one further from the front
                qmLinkedList_pushFront(list.h, &rec); model.push_front(rec); ++pos; break;
            case 1: case 13: case 14: case 15:  // an iterator at end stays there
                qmLinkedList_pushBack(list.h, &rec); model.push_back(rec); pos += atEnd; break;
            case 2:  // the iterator moves onto the new record
                ASSERT_EQ(qmLinkedList_insert(list.h, it.h, &rec), 0);
                model.insert(at(pos), rec);
                break;
            case 3: {  // pop at either end
                const bool front = rng() % 2;
                ASSERT_EQ((front ? qmLinkedList_popFront : qmLinkedList_popBack)(list.h),
                          empty ? ERR_FAILURE : 0);
                if (!empty) front ? model.pop_front() : model.pop_back();
                moveTo(true);
                break;
            }
            case 4:
                ASSERT_EQ(qmLinkedList_eraseElement(list.h, it.h), atEnd ? -1 : 0);
                if (!atEnd) model.erase(at(pos));
                break;
            case 5: qmLinkedList_sort(list.h); model.sort(keyLess); sorted = true; moveTo(false); break;
            case 6: qmLinkedList_reverse(list.h); model.reverse(); moveTo(true); break;
            case 7: qmLinkedList_unique(list.h); model.unique(sameKey); moveTo(false); break;
            case 8: case 9:
                ASSERT_EQ(qmLinkedList_insertInOrder(list.h, &rec), sorted ? 0 : ERR_FAILURE);
                if (sorted) model.insert(std::upper_bound(model.begin(), model.end(), rec, keyLess), rec);
                moveTo(false);
                break;
            case 10: {  // merge a sorted list: among equal keys the list's records come first
                List other;
                std::list<Rec> otherModel;
                for (int i = static_cast<int>(rng() % 6); i > 0; --i) {
                    otherModel.push_back({static_cast<int32_t>(rng() % 64), payload++});
                    qmLinkedList_pushBack(other.h, &otherModel.back());
                }
                qmLinkedList_sort(other.h);
                otherModel.sort(keyLess);
                ASSERT_EQ(qmLinkedList_merge(list.h, other.h), 0);
                if (sorted) model.merge(otherModel, keyLess);
                moveTo(true);
                break;
            }
            default:  // 11, 12: walk the iterator to a random position, or erase up to it
                if (rng() % 5 == 0) {
                    ASSERT_EQ(qmLinkedList_eraseElements(list.h, nullptr, it.h), empty ? -1 : 0);
                    model.erase(model.begin(), at(pos));
                    pos = 0;
                    break;
                }
                moveTo(false);
                pos = rng() % (model.size() + 1);
                for (size_t i = 0; i < pos; ++i) qmLListIterator_next(it.h);
        }
        ASSERT_EQ(contents<Rec>(list.h), Recs(model.begin(), model.end()))
            << "after step " << step << " (operation " << op << ")";
        if (model.size() > 300) { qmLinkedList_clear(list.h); model.clear(); moveTo(true); }
    }
}
