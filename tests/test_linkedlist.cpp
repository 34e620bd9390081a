// Linked list and iterator: edge cases, the sorted-flag rules, stability, and a long run of
// random operations checked against std::list.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <list>
#include <random>
#include <vector>

#include "korvelbase/linkedlist.h"

namespace {

// A keyed record: the comparison looks at the key only, so the payload reveals the order in
// which records with equal keys were kept.
struct Rec {
    int32_t key;
    int32_t payload;
    bool operator==(const Rec& o) const { return key == o.key && payload == o.payload; }
};

int byKey(const void* a, const void* b) {
    const int32_t ka = static_cast<const Rec*>(a)->key, kb = static_cast<const Rec*>(b)->key;
    return (ka > kb) - (ka < kb);
}

struct List {
    QmLinkedList* h = nullptr;
    explicit List(int size = sizeof(Rec), bool keyed = true) {
        qmLinkedList_create(&h, size);
        if (keyed) qmLinkedList_setCompareFunction(h, byKey);
    }
    ~List() { qmLinkedList_destroy(&h); }
};

struct Iter {
    QmLListIterator* h = nullptr;
    explicit Iter(QmLinkedList* list) { qmLListIterator_create(&h, list); }
    ~Iter() { qmLListIterator_destroy(&h); }
};

// Contents read three independent ways (forward walk, backward walk, by index) that must agree.
template <typename T>
std::vector<T> contents(QmLinkedList* list) {
    Iter it(list);
    std::vector<T> forward, backward;
    T value{};
    while (qmLListIterator_next(it.h) == 0) {
        EXPECT_EQ(qmLListIterator_getCurrent(it.h, &value), 0);
        forward.push_back(value);
    }
    qmLListIterator_end(it.h);
    while (qmLListIterator_previous(it.h) == 0) {
        qmLListIterator_getCurrent(it.h, &value);
        backward.insert(backward.begin(), value);
    }
    EXPECT_EQ(forward, backward) << "forward and backward links disagree";
    EXPECT_EQ(static_cast<int>(forward.size()), qmLinkedList_size(list));
    for (size_t i = 0; i < forward.size(); ++i) {
        EXPECT_EQ(qmLinkedList_getValueByIndex(list, &value, static_cast<int>(i)), 0);
        EXPECT_TRUE(value == forward[i]);
    }
    return forward;
}

void pushAll(QmLinkedList* list, std::initializer_list<Rec> recs) {
    for (const Rec& r : recs) ASSERT_EQ(qmLinkedList_pushBack(list, &r), 0);
}

}  // namespace

TEST(LinkedList, CreateDestroyAndNullHandles) {
    QmLinkedList* list = nullptr;
    EXPECT_EQ(qmLinkedList_create(nullptr, 4), 0);
    EXPECT_EQ(qmLinkedList_create(&list, 0), 0);
    EXPECT_EQ(qmLinkedList_create(&list, -3), 0);
    EXPECT_EQ(list, nullptr);
    ASSERT_EQ(qmLinkedList_create(&list, 4), 0);
    QmLinkedList* const first = list;
    EXPECT_EQ(qmLinkedList_create(&list, 4), 0);  // already holds a list: nothing happens
    EXPECT_EQ(list, first);
    EXPECT_EQ(qmLinkedList_destroy(&list), 0);
    EXPECT_EQ(list, nullptr);
    EXPECT_EQ(qmLinkedList_destroy(&list), ERR_FAILURE);
    EXPECT_EQ(qmLinkedList_destroy(nullptr), ERR_FAILURE);
    EXPECT_EQ(qmLinkedList_size(nullptr), 0);
    int v = 0;
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

TEST(LinkedList, SortedFlagGovernsOrderedInsertion) {
    List list;
    const Rec a{5, 1}, b{5, 2}, c{3, 3}, d{5, 4};
    EXPECT_EQ(qmLinkedList_insertInOrder(list.h, &a), 0);  // new list counts as sorted
    EXPECT_EQ(qmLinkedList_pushBack(list.h, &c), 0);
    EXPECT_EQ(qmLinkedList_insertInOrder(list.h, &b), ERR_FAILURE);
    EXPECT_EQ(qmLinkedList_popFront(list.h), 0);             // erase keeps the flag at 0
    EXPECT_EQ(qmLinkedList_insertInOrder(list.h, &b), ERR_FAILURE);
    qmLinkedList_pushBack(list.h, &a);
    qmLinkedList_sort(list.h);
    EXPECT_EQ(qmLinkedList_insertInOrder(list.h, &b), 0);
    EXPECT_EQ(qmLinkedList_insertInOrder(list.h, &d), 0);   // lands after every equal key
    EXPECT_EQ(contents<Rec>(list.h), (std::vector<Rec>{c, a, b, d}));
    qmLinkedList_reverse(list.h);
    EXPECT_EQ(qmLinkedList_insertInOrder(list.h, &a), ERR_FAILURE);
    qmLinkedList_clear(list.h);  // clear keeps the flag too
    EXPECT_EQ(qmLinkedList_insertInOrder(list.h, &a), ERR_FAILURE);
    EXPECT_EQ(qmLinkedList_popBack(list.h), ERR_FAILURE);
}

TEST(LinkedList, BytewiseOrderIsUnsignedFromFirstByte) {
    List list(2, false);
    const unsigned char recs[][2] = {{0x80, 0x00}, {0x01, 0xff}, {0x01, 0x02}, {0x7f, 0x00}};
    for (const auto& r : recs) qmLinkedList_pushBack(list.h, r);
    qmLinkedList_sort(list.h);
    std::vector<std::vector<unsigned char>> got;
    unsigned char value[2];
    for (int i = 0; qmLinkedList_getValueByIndex(list.h, value, i) == 0; ++i)
        got.push_back({value[0], value[1]});
    EXPECT_EQ(got, (std::vector<std::vector<unsigned char>>{
                       {0x01, 0x02}, {0x01, 0xff}, {0x7f, 0x00}, {0x80, 0x00}}));
}

TEST(LinkedList, UniqueAndIndexQuirks) {
    List list(sizeof(int), false);
    for (int v : {1, 1, 2, 1}) qmLinkedList_pushBack(list.h, &v);
    qmLinkedList_unique(list.h);
    EXPECT_EQ(contents<int>(list.h), (std::vector<int>{1, 2, 1}));
    int value = -7;
    EXPECT_EQ(qmLinkedList_getValueByIndex(list.h, &value, 3), ERR_FAILURE);
    EXPECT_EQ(value, 1);  // the walk leaves the last visited record behind
    value = -7;
    EXPECT_EQ(qmLinkedList_getValueByIndex(list.h, &value, -1), ERR_FAILURE);
    EXPECT_EQ(value, 1);
}

TEST(LinkedListIterator, WalkingResults) {
    List list(sizeof(int), false);
    Iter it(list.h);
    int value = 0;
    EXPECT_EQ(qmLListIterator_getCurrent(it.h, &value), -1);
    EXPECT_EQ(qmLListIterator_next(it.h), -1);      // empty list: lands on end
    EXPECT_EQ(qmLListIterator_previous(it.h), -2);  // end of an empty list is the first slot
    for (int v : {10, 20, 30}) qmLinkedList_pushBack(list.h, &v);
    qmLListIterator_reset(it.h);
    EXPECT_EQ(qmLListIterator_getCurrent(it.h, &value), -1);
    EXPECT_EQ(qmLListIterator_previous(it.h), -2);
    EXPECT_EQ(qmLListIterator_next(it.h), 0);
    EXPECT_EQ(qmLListIterator_previous(it.h), -2);  // on the first record
    qmLListIterator_end(it.h);
    EXPECT_EQ(qmLListIterator_getCurrent(it.h, &value), -1);
    EXPECT_EQ(qmLListIterator_next(it.h), 0);  // the ring wraps from end to the first record
    qmLListIterator_getCurrent(it.h, &value);
    EXPECT_EQ(value, 10);
    int wanted = 20;
    ASSERT_EQ(qmLListIterator_find(it.h, &wanted), 0);
    wanted = 99;
    EXPECT_EQ(qmLListIterator_find(it.h, &wanted), ERR_FAILURE);
    EXPECT_EQ(qmLListIterator_getCurrent(it.h, &value), 0);
    EXPECT_EQ(value, 20);  // position restored
    qmLListIterator_reset(it.h);
    EXPECT_EQ(qmLListIterator_find(it.h, &wanted), ERR_FAILURE);
    EXPECT_EQ(qmLListIterator_getCurrent(it.h, &value), -1);  // still reset
}

TEST(LinkedListIterator, RangesEraseAndActions) {
    List list(sizeof(int), false), other(sizeof(int), false);
    Iter from(list.h), to(list.h), foreign(other.h);
    EXPECT_EQ(qmLinkedList_eraseElements(list.h, nullptr, nullptr), -1);
    EXPECT_EQ(qmLinkedList_performAction(list.h, [](void*, void*) { return 0; }, nullptr,
                                         nullptr, nullptr), -1);
    for (int v = 0; v < 8; ++v) qmLinkedList_pushBack(list.h, &v);
    EXPECT_EQ(qmLinkedList_eraseElement(list.h, foreign.h), ERR_FAILURE);
    EXPECT_EQ(qmLinkedList_eraseElement(list.h, from.h), -1);  // reset: no record
    int key = 2;
    qmLListIterator_find(from.h, &key);
    key = 5;
    qmLListIterator_find(to.h, &key);
    // The action sees copies: doubling them changes nothing in the list; 3 stops the walk.
    std::vector<int> seen;
    auto action = [](void* rec, void* user) {
        static_cast<std::vector<int>*>(user)->push_back(*static_cast<int*>(rec));
        *static_cast<int*>(rec) *= 2;
        return *static_cast<int*>(rec) == 6 ? 1 : 0;
    };
    EXPECT_EQ(qmLinkedList_performAction(list.h, action, &seen, from.h, to.h), 0);
    EXPECT_EQ(seen, (std::vector<int>{2, 3}));
    EXPECT_EQ(qmLinkedList_eraseElements(list.h, from.h, to.h), 0);  // removes 2, 3, 4
    int value = 0;
    qmLListIterator_getCurrent(from.h, &value);
    EXPECT_EQ(value, 5);
    EXPECT_EQ(qmLinkedList_eraseElement(list.h, from.h), 0);  // removes 5, moves to 6
    qmLListIterator_getCurrent(from.h, &value);
    EXPECT_EQ(value, 6);
    EXPECT_EQ(qmLinkedList_eraseElements(list.h, from.h, nullptr), 0);  // 6, 7 to the end
    EXPECT_EQ(qmLListIterator_getCurrent(from.h, &value), -1);
    EXPECT_EQ(contents<int>(list.h), (std::vector<int>{0, 1}));
    // Insertion before the iterator moves it onto the new record; null means the front.
    int nine = 9, eight = 8;
    EXPECT_EQ(qmLinkedList_insert(list.h, from.h, &nine), 0);
    qmLListIterator_getCurrent(from.h, &value);
    EXPECT_EQ(value, 9);
    EXPECT_EQ(qmLinkedList_insert(list.h, nullptr, &eight), 0);
    EXPECT_EQ(qmLinkedList_insert(list.h, foreign.h, &eight), ERR_FAILURE);
    EXPECT_EQ(contents<int>(list.h), (std::vector<int>{8, 0, 1, 9}));
}

TEST(LinkedList, AppendMergeAndAssignment) {
    List list, other;
    const Rec a1{1, 1}, a3{3, 2}, b1{1, 10}, b2{2, 11}, b3{3, 12}, b4{4, 13};
    pushAll(list.h, {a1, a3});
    pushAll(other.h, {b1, b2, b3, b4});
    EXPECT_EQ(qmLinkedList_merge(list.h, other.h), 0);  // unsorted: nothing changes
    EXPECT_EQ(qmLinkedList_size(list.h), 2);
    qmLinkedList_sort(list.h);
    qmLinkedList_sort(other.h);
    EXPECT_EQ(qmLinkedList_merge(list.h, other.h), 0);
    EXPECT_EQ(contents<Rec>(list.h), (std::vector<Rec>{a1, b1, b2, a3, b3, b4}));
    EXPECT_EQ(contents<Rec>(other.h), (std::vector<Rec>{b1, b2, b3, b4}));
    EXPECT_EQ(qmLinkedList_mergeCopyUnique(list.h, other.h), 0);
    EXPECT_EQ(contents<Rec>(list.h), (std::vector<Rec>{a1, b2, a3, b4}));
    EXPECT_EQ(qmLinkedList_merge(list.h, list.h), 0);  // self merge doubles every record
    EXPECT_EQ(contents<Rec>(list.h), (std::vector<Rec>{a1, a1, b2, b2, a3, a3, b4, b4}));

    for (auto op : {qmLinkedList_append, qmLinkedList_appendCopy}) {
        List dst;
        pushAll(dst.h, {a3});
        qmLinkedList_sort(dst.h);
        EXPECT_EQ(op(dst.h, other.h), 0);
        EXPECT_EQ(op(dst.h, dst.h), 0);  // self append doubles the list once
        EXPECT_EQ(contents<Rec>(dst.h),
                  (std::vector<Rec>{a3, b1, b2, b3, b4, a3, b1, b2, b3, b4}));
        EXPECT_EQ(qmLinkedList_insertInOrder(dst.h, &a1), ERR_FAILURE);
        List wrongSize(4);
        EXPECT_EQ(op(dst.h, wrongSize.h), ERR_FAILURE);
    }

    // Assignment of contents through an iterator: size, flag and comparison come along.
    List small(sizeof(int), false);
    int seven = 7;
    qmLinkedList_pushBack(small.h, &seven);
    Iter it(small.h);
    qmLListIterator_next(it.h);
    ASSERT_EQ(qmLListIterator_setLinkedList(it.h, other.h), 0);
    Rec r{};
    EXPECT_EQ(qmLListIterator_getCurrent(it.h, &r), -1);  // reset
    EXPECT_EQ(contents<Rec>(small.h), (std::vector<Rec>{b1, b2, b3, b4}));
    const Rec b2bis{2, 99};
    EXPECT_EQ(qmLinkedList_insertInOrder(small.h, &b2bis), 0);  // sorted by key, not bytes
    EXPECT_EQ(contents<Rec>(small.h), (std::vector<Rec>{b1, b2, b2bis, b3, b4}));
    ASSERT_EQ(qmLListIterator_setLinkedList(it.h, small.h), 0);  // self assignment
    EXPECT_EQ(qmLinkedList_size(small.h), 5);
}

TEST(LinkedList, SortIsStableAndMatchesStableSort) {
    std::mt19937 rng(12345);
    for (int n : {0, 1, 2, 3, 7, 64, 1000, 4099}) {
        List list;
        std::vector<Rec> model;
        for (int i = 0; i < n; ++i) {
            model.push_back({static_cast<int32_t>(rng() % 17), i});
            qmLinkedList_pushFront(list.h, &model.back());
        }
        std::reverse(model.begin(), model.end());
        ASSERT_EQ(qmLinkedList_sort(list.h), 0);
        std::stable_sort(model.begin(), model.end(),
                         [](const Rec& a, const Rec& b) { return a.key < b.key; });
        EXPECT_EQ(contents<Rec>(list.h), model) << "n = " << n;
    }
}

TEST(LinkedList, RandomOperationsAgreeWithModel) {
    std::mt19937 rng(2024);
    auto keyLess = [](const Rec& a, const Rec& b) { return a.key < b.key; };
    List list;
    Iter it(list.h);
    std::list<Rec> model;
    bool sorted = true;
    size_t position = 0;  // model index of the iterator (model.size() = end)
    qmLListIterator_end(it.h);
    int payload = 0;
    for (int step = 0; step < 4000; ++step) {
        const Rec rec{static_cast<int32_t>(rng() % 64), payload++};
        const int op = static_cast<int>(rng() % 16);
        auto at = [&](size_t i) { return std::next(model.begin(), static_cast<long>(i)); };
        auto moveIterator = [&](bool toEnd) {
            toEnd ? qmLListIterator_end(it.h) : qmLListIterator_begin(it.h);
            position = toEnd ? model.size() : 0;
        };
        switch (op) {
            case 0:
                qmLinkedList_pushFront(list.h, &rec);
                model.push_front(rec);
                ++position;  // same node, one further from the front
                sorted = false;
                break;
            case 1:
            case 13:
            case 14:
            case 15:
                qmLinkedList_pushBack(list.h, &rec);
                if (position == model.size()) ++position;  // the iterator stays at end
                model.push_back(rec);
                sorted = false;
                break;
            case 2:
                ASSERT_EQ(qmLinkedList_insert(list.h, it.h, &rec), 0);
                model.insert(at(position), rec);  // the iterator moves onto the new record
                sorted = false;
                break;
            case 3:
                ASSERT_EQ(qmLinkedList_popBack(list.h), model.empty() ? ERR_FAILURE : 0);
                if (!model.empty()) model.pop_back();
                moveIterator(true);
                break;
            case 4:
                ASSERT_EQ(qmLinkedList_eraseElement(list.h, it.h),
                          position == model.size() ? -1 : 0);
                if (position < model.size()) model.erase(at(position));
                break;
            case 5:
                qmLinkedList_sort(list.h);
                model.sort(keyLess);
                sorted = true;
                moveIterator(false);
                break;
            case 6:
                qmLinkedList_reverse(list.h);
                model.reverse();
                sorted = false;
                moveIterator(true);
                break;
            case 7:
                qmLinkedList_unique(list.h);
                model.unique([](const Rec& a, const Rec& b) { return a.key == b.key; });
                moveIterator(false);
                break;
            case 8:
            case 9:
                ASSERT_EQ(qmLinkedList_insertInOrder(list.h, &rec), sorted ? 0 : ERR_FAILURE);
                if (sorted) {
                    model.insert(std::upper_bound(model.begin(), model.end(), rec, keyLess), rec);
                }
                moveIterator(false);
                break;
            case 10: {
                List other;
                std::list<Rec> otherModel;
                for (int i = static_cast<int>(rng() % 6); i > 0; --i) {
                    const Rec o{static_cast<int32_t>(rng() % 64), payload++};
                    qmLinkedList_pushBack(other.h, &o);
                    otherModel.push_back(o);
                }
                qmLinkedList_sort(other.h);
                otherModel.sort(keyLess);
                ASSERT_EQ(qmLinkedList_merge(list.h, other.h), 0);
                if (sorted) model.merge(otherModel, keyLess);  // the list's records first
                moveIterator(true);
                break;
            }
            default:  // 11, 12
                if (rng() % 5 != 0) {  // walk the iterator to a random position
                    moveIterator(false);
                    position = rng() % (model.size() + 1);
                    for (size_t i = 0; i < position; ++i) qmLListIterator_next(it.h);
                } else {  // erase from the front up to the iterator
                    ASSERT_EQ(qmLinkedList_eraseElements(list.h, nullptr, it.h),
                              model.empty() ? -1 : 0);
                    model.erase(model.begin(), at(position));
                    position = 0;
                }
        }
        ASSERT_EQ(contents<Rec>(list.h), std::vector<Rec>(model.begin(), model.end()))
            << "after step " << step << " (operation " << op << ")";
        if (model.size() > 300) {
            qmLinkedList_clear(list.h);
            model.clear();
            moveIterator(true);
        }
    }
}
