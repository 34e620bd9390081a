// Doubly linked list of fixed-size records, and its iterator.
//
// The nodes form a ring closed by a sentinel node that holds no record: the sentinel's next is
// the first record, its previous the last, and an empty list is the sentinel linked to itself.
// Every record lives in its own heap copy of elementSize bytes (qmMem_malloc); operations that
// add several records first build a detached chain of copies and only then link it in, so a
// failed allocation leaves the list exactly as it was.
#include "korvelbase/linkedlist.h"

#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>

#include "base/boundary.hpp"
#include "base/heap.hpp"
#include "korvelbase/mem.h"

namespace kb {

// One ring node.  The record is null only in the sentinel; the owner is the list the node is
// linked into, set whenever a node is linked (nodes built for a merge or an append join their
// new list that way).
struct ListNode {
    ListNode* next;
    ListNode* prev;
    void* record;
    QmLinkedList* owner;
};

}  // namespace kb

using kb::ListNode;

struct QmLinkedList {
    ListNode sentinel;
    uint32_t count;
    int elementSize;
    int sorted;
    QmLinkedListCompareFunc compare;
};

struct QmLListIterator {
    int reset;  // 1 while not yet positioned
    ListNode* current;
    QmLinkedList* list;
};

namespace {

// Largest number of records a list may hold.
constexpr uint32_t kMaxRecordCount = 536870911u;
// Growth past kMaxRecordCount is reported with this message (as a length error internally).
constexpr const char* kTooLongMessage = "list<T> too long";
// Enough runs for the binary-counter merge sort of kMaxRecordCount (< 2^29) nodes.
constexpr int kSortRunSlots = 32;

// Walking results of the iterator and the range operations.
constexpr int kAtEnd = -1;
constexpr int kBeforeFirst = -2;

ListNode* endOf(QmLinkedList* list) { return &list->sentinel; }
const ListNode* endOf(const QmLinkedList* list) { return &list->sentinel; }
ListNode* firstOf(QmLinkedList* list) { return list->sentinel.next; }

size_t recordBytes(const QmLinkedList* list) { return static_cast<size_t>(list->elementSize); }

// Negative when a orders before b, 0 when equal: the caller's comparison or unsigned bytes.
int compareRecords(const QmLinkedList* list, const void* a, const void* b) {
    if (list->compare != nullptr) return list->compare(a, b);
    return std::memcmp(a, b, recordBytes(list));
}

// Throws the length error when adding `extra` records would exceed the limit.
void requireRoom(const QmLinkedList* list, uint64_t extra) {
    if (static_cast<uint64_t>(list->count) + extra > kMaxRecordCount) {
        throw std::length_error(kTooLongMessage);
    }
}

// ---- nodes ----------------------------------------------------------------------------

// A detached node holding a copy of the record, or null when the heap refuses.
ListNode* newNode(const void* record, size_t bytes) {
    void* copy = qmMem_malloc(bytes);
    if (copy == nullptr) return nullptr;
    void* storage = qmMem_malloc(sizeof(ListNode));
    if (storage == nullptr) {
        qmMem_free(copy);
        return nullptr;
    }
    std::memcpy(copy, record, bytes);
    return new (storage) ListNode{nullptr, nullptr, copy, nullptr};
}

void deleteNode(ListNode* node) {
    qmMem_free(node->record);
    qmMem_free(node);
}

void linkBefore(QmLinkedList* list, ListNode* position, ListNode* node) {
    node->next = position;
    node->prev = position->prev;
    position->prev->next = node;
    position->prev = node;
    node->owner = list;
    ++list->count;
}

void eraseNode(QmLinkedList* list, ListNode* node) {
    node->prev->next = node->next;
    node->next->prev = node->prev;
    deleteNode(node);
    --list->count;
}

void eraseAll(QmLinkedList* list) {
    ListNode* node = firstOf(list);
    while (node != endOf(list)) {
        ListNode* following = node->next;
        deleteNode(node);
        node = following;
    }
    list->sentinel.next = list->sentinel.prev = endOf(list);
    list->count = 0;
}

// ---- detached chains of copies ---------------------------------------------------------

// Nodes linked through next only, null-terminated, not yet part of any list.
struct Chain {
    ListNode* head = nullptr;
    ListNode* tail = nullptr;
    uint32_t length = 0;
};

void releaseChain(Chain& chain) {
    while (chain.head != nullptr) {
        ListNode* following = chain.head->next;
        deleteNode(chain.head);
        chain.head = following;
    }
    chain = Chain{};
}

void appendToChain(Chain& chain, ListNode* node) {
    if (chain.tail == nullptr) {
        chain.head = node;
    } else {
        chain.tail->next = node;
    }
    chain.tail = node;
    ++chain.length;
}

// Copies of every record of source, in order; false (and nothing kept) when the heap refuses.
bool copyRecords(const QmLinkedList* source, Chain& chain) {
    for (const ListNode* node = source->sentinel.next; node != endOf(source); node = node->next) {
        ListNode* copy = newNode(node->record, recordBytes(source));
        if (copy == nullptr) {
            releaseChain(chain);
            return false;
        }
        appendToChain(chain, copy);
    }
    return true;
}

// Links the whole chain before position, in order, and leaves the chain empty.
void spliceBefore(QmLinkedList* list, ListNode* position, Chain& chain) {
    while (chain.head != nullptr) {
        ListNode* following = chain.head->next;
        linkBefore(list, position, chain.head);
        chain.head = following;
    }
    chain = Chain{};
}

// One pass over both sorted sequences: each chain node goes before the first list node it
// orders strictly before, so the list's own records stay first among equals; what remains of
// the chain after the list's last record goes to the end.
void mergeChain(QmLinkedList* list, Chain& chain) {
    ListNode* position = firstOf(list);
    while (chain.head != nullptr && position != endOf(list)) {
        if (compareRecords(list, chain.head->record, position->record) < 0) {
            ListNode* following = chain.head->next;
            linkBefore(list, position, chain.head);
            chain.head = following;
        } else {
            position = position->next;
        }
    }
    spliceBefore(list, endOf(list), chain);
}

// ---- sorting ---------------------------------------------------------------------------

// Stable merge of two null-terminated runs (a holds the earlier records): b's node is taken
// only when it orders strictly before a's.
ListNode* mergeRuns(const QmLinkedList* list, ListNode* a, ListNode* b) {
    ListNode* head = nullptr;
    ListNode** link = &head;
    while (a != nullptr && b != nullptr) {
        ListNode** taken = compareRecords(list, b->record, a->record) < 0 ? &b : &a;
        *link = *taken;
        link = &(*taken)->next;
        *taken = (*taken)->next;
    }
    *link = (a != nullptr) ? a : b;
    return head;
}

// Bottom-up merge sort with a binary counter of runs: runs[k] is empty or holds 2^k sorted
// nodes that precede every node still to come, so merging runs[k] first keeps the sort
// stable.  O(n log n) comparisons, no recursion, nodes relinked in place.
void sortNodes(QmLinkedList* list) {
    if (list->count < 2) return;
    ListNode* runs[kSortRunSlots] = {};
    list->sentinel.prev->next = nullptr;
    ListNode* node = firstOf(list);
    while (node != nullptr) {
        ListNode* following = node->next;
        node->next = nullptr;
        ListNode* carry = node;
        int slot = 0;
        for (; runs[slot] != nullptr; ++slot) {
            carry = mergeRuns(list, runs[slot], carry);
            runs[slot] = nullptr;
        }
        runs[slot] = carry;
        node = following;
    }
    ListNode* sorted = nullptr;
    for (ListNode* run : runs) {
        if (run != nullptr) sorted = (sorted == nullptr) ? run : mergeRuns(list, run, sorted);
    }
    // Restore the backward links and close the ring.
    ListNode* previous = endOf(list);
    for (ListNode* each = sorted; each != nullptr; each = each->next) {
        previous->next = each;
        each->prev = previous;
        previous = each;
    }
    previous->next = endOf(list);
    list->sentinel.prev = previous;
}

void reverseNodes(QmLinkedList* list) {
    ListNode* node = endOf(list);
    do {
        ListNode* following = node->next;
        node->next = node->prev;
        node->prev = following;
        node = following;
    } while (node != endOf(list));
}

void removeAdjacentEqual(QmLinkedList* list) {
    ListNode* kept = firstOf(list);
    if (kept == endOf(list)) return;
    ListNode* node = kept->next;
    while (node != endOf(list)) {
        ListNode* following = node->next;
        if (compareRecords(list, kept->record, node->record) == 0) {
            eraseNode(list, node);
        } else {
            kept = node;
        }
        node = following;
    }
}

// ---- shared bodies ---------------------------------------------------------------------

int pushAt(QmLinkedList* list, ListNode* position, const void* record, ListNode** created) {
    return kb::callGuarded(ERR_FAILURE, [&]() -> int {
        requireRoom(list, 1);
        ListNode* node = newNode(record, recordBytes(list));
        if (node == nullptr) return ERR_FAILURE;
        linkBefore(list, position, node);
        list->sorted = 0;
        if (created != nullptr) *created = node;
        return 0;
    });
}

int appendCopies(QmLinkedList* list, const QmLinkedList* other) {
    if (list == nullptr || other == nullptr) return ERR_FAILURE;
    if (other->elementSize != list->elementSize) return ERR_FAILURE;
    return kb::callGuarded(ERR_FAILURE, [&]() -> int {
        requireRoom(list, other->count);
        Chain copies;
        if (!copyRecords(other, copies)) return ERR_FAILURE;
        spliceBefore(list, endOf(list), copies);
        list->sorted = 0;
        return 0;
    });
}

// The merge rule shared by merge and mergeCopyUnique; null arguments are checked by callers.
int mergeCopies(QmLinkedList* list, const QmLinkedList* other) {
    if (other->elementSize != list->elementSize) return ERR_FAILURE;
    if (list->sorted == 0 || other->sorted == 0) return 0;
    return kb::callGuarded(ERR_FAILURE, [&]() -> int {
        requireRoom(list, other->count);
        Chain copies;
        if (!copyRecords(other, copies)) return ERR_FAILURE;
        mergeChain(list, copies);
        return 0;
    });
}

// ---- iterators -------------------------------------------------------------------------

bool belongsTo(const QmLListIterator* it, const QmLinkedList* list) { return it->list == list; }

// Where a range bound starts: the first record for a null or not yet positioned iterator.
ListNode* rangeStart(QmLinkedList* list, const QmLListIterator* it) {
    if (it == nullptr || it->reset != 0) return firstOf(list);
    return it->current;
}

// Where a range bound stops: end for a null iterator.
ListNode* rangeStop(QmLinkedList* list, const QmLListIterator* it) {
    if (it == nullptr) return endOf(list);
    return rangeStart(list, it);
}

void placeAt(QmLListIterator* it, ListNode* node) {
    if (it == nullptr) return;
    it->current = node;
    it->reset = 0;
}

// Both range iterators, when given, must walk this list.
bool rangeBelongsTo(QmLinkedList* list, const QmLListIterator* from, const QmLListIterator* to) {
    return (from == nullptr || belongsTo(from, list)) && (to == nullptr || belongsTo(to, list));
}

}  // namespace

extern "C" {

// ---- List ------------------------------------------------------------------------------

int qmLinkedList_create(QmLinkedList** out, int elementSize) noexcept {
    if (out == nullptr || *out != nullptr || elementSize <= 0) return 0;
    QmLinkedList* list = kb::heap::create<QmLinkedList>();
    if (list == nullptr) return ERR_FAILURE;
    list->sentinel.next = list->sentinel.prev = endOf(list);
    list->sentinel.owner = list;
    list->elementSize = elementSize;
    list->sorted = 1;
    *out = list;
    return 0;
}

int qmLinkedList_destroy(QmLinkedList** list) noexcept {
    if (list == nullptr || *list == nullptr) return ERR_FAILURE;
    eraseAll(*list);
    kb::heap::destroy(*list);
    *list = nullptr;
    return 0;
}

int qmLinkedList_setCompareFunction(QmLinkedList* list,
                                    QmLinkedListCompareFunc compare) noexcept {
    if (list == nullptr) return ERR_FAILURE;
    list->compare = compare;
    return 0;
}

int qmLinkedList_size(const QmLinkedList* list) noexcept {
    return list == nullptr ? 0 : static_cast<int>(list->count);
}

int qmLinkedList_clear(QmLinkedList* list) noexcept {
    if (list == nullptr) return ERR_FAILURE;
    eraseAll(list);
    return 0;
}

int qmLinkedList_pushFront(QmLinkedList* list, const void* record) noexcept {
    if (list == nullptr || record == nullptr) return ERR_FAILURE;
    return pushAt(list, firstOf(list), record, nullptr);
}

int qmLinkedList_pushBack(QmLinkedList* list, const void* record) noexcept {
    if (list == nullptr || record == nullptr) return ERR_FAILURE;
    return pushAt(list, endOf(list), record, nullptr);
}

int qmLinkedList_insert(QmLinkedList* list, QmLListIterator* it, const void* record) noexcept {
    if (list == nullptr || record == nullptr) return ERR_FAILURE;
    if (it != nullptr && !belongsTo(it, list)) return ERR_FAILURE;
    ListNode* created = nullptr;
    const int status = pushAt(list, rangeStart(list, it), record, &created);
    if (status == 0) placeAt(it, created);
    return status;
}

int qmLinkedList_insertInOrder(QmLinkedList* list, const void* record) noexcept {
    if (list == nullptr || record == nullptr || list->sorted == 0) return ERR_FAILURE;
    return kb::callGuarded(ERR_FAILURE, [&]() -> int {
        requireRoom(list, 1);
        Chain single;
        ListNode* node = newNode(record, recordBytes(list));
        if (node == nullptr) return ERR_FAILURE;
        appendToChain(single, node);
        mergeChain(list, single);
        return 0;
    });
}

int qmLinkedList_popFront(QmLinkedList* list) noexcept {
    if (list == nullptr || list->count == 0) return ERR_FAILURE;
    eraseNode(list, firstOf(list));
    return 0;
}

int qmLinkedList_popBack(QmLinkedList* list) noexcept {
    if (list == nullptr || list->count == 0) return ERR_FAILURE;
    eraseNode(list, list->sentinel.prev);
    return 0;
}

int qmLinkedList_eraseElement(QmLinkedList* list, QmLListIterator* it) noexcept {
    if (list == nullptr || it == nullptr || !belongsTo(it, list)) return ERR_FAILURE;
    if (it->reset != 0 || it->current == endOf(list)) return kAtEnd;
    ListNode* following = it->current->next;
    eraseNode(list, it->current);
    it->current = following;
    return 0;
}

int qmLinkedList_eraseElements(QmLinkedList* list, QmLListIterator* first,
                               QmLListIterator* last) noexcept {
    if (list == nullptr || !rangeBelongsTo(list, first, last)) return ERR_FAILURE;
    ListNode* node = rangeStart(list, first);
    if (node == endOf(list)) return kAtEnd;
    ListNode* stop = rangeStop(list, last);
    while (node != stop && node != endOf(list)) {
        ListNode* following = node->next;
        eraseNode(list, node);
        node = following;
    }
    placeAt(first, stop);
    placeAt(last, stop);
    return 0;
}

int qmLinkedList_performAction(QmLinkedList* list, QmLinkedListActionFunc action, void* userData,
                               QmLListIterator* from, QmLListIterator* to) noexcept {
    if (list == nullptr || action == nullptr || !rangeBelongsTo(list, from, to)) {
        return ERR_FAILURE;
    }
    ListNode* node = rangeStart(list, from);
    if (node == endOf(list)) return kAtEnd;
    void* scratch = qmMem_malloc(recordBytes(list));
    if (scratch == nullptr) return ERR_FAILURE;
    ListNode* stop = rangeStop(list, to);
    for (; node != stop && node != endOf(list); node = node->next) {
        std::memcpy(scratch, node->record, recordBytes(list));
        if (action(scratch, userData) != 0) break;
    }
    qmMem_free(scratch);
    return 0;
}

int qmLinkedList_getValueByIndex(QmLinkedList* list, void* destination, int index) noexcept {
    if (list == nullptr) return 0;
    if (destination == nullptr) return ERR_FAILURE;
    // A negative index compares as a very large unsigned one: it is never reached.
    const uint32_t wanted = static_cast<uint32_t>(index);
    uint32_t visited = 0;
    for (ListNode* node = firstOf(list); node != endOf(list); node = node->next, ++visited) {
        std::memcpy(destination, node->record, recordBytes(list));
        if (visited == wanted) return 0;
    }
    return ERR_FAILURE;
}

int qmLinkedList_append(QmLinkedList* list, const QmLinkedList* other) noexcept {
    return appendCopies(list, other);
}

int qmLinkedList_appendCopy(QmLinkedList* list, const QmLinkedList* other) noexcept {
    // Pushing back each record of other in turn gives exactly the result of append; copying
    // first keeps self-appending finite and a failure free of partial results.
    return appendCopies(list, other);
}

int qmLinkedList_merge(QmLinkedList* list, const QmLinkedList* other) noexcept {
    if (list == nullptr || other == nullptr) return 0;
    return mergeCopies(list, other);
}

int qmLinkedList_mergeCopyUnique(QmLinkedList* list, const QmLinkedList* other) noexcept {
    if (list == nullptr || other == nullptr) return ERR_FAILURE;
    const int status = mergeCopies(list, other);
    if (status != 0) return status;
    removeAdjacentEqual(list);
    return 0;
}

int qmLinkedList_unique(QmLinkedList* list) noexcept {
    if (list == nullptr) return ERR_FAILURE;
    removeAdjacentEqual(list);
    return 0;
}

int qmLinkedList_sort(QmLinkedList* list) noexcept {
    if (list == nullptr) return ERR_FAILURE;
    sortNodes(list);
    list->sorted = 1;
    return 0;
}

int qmLinkedList_reverse(QmLinkedList* list) noexcept {
    if (list == nullptr) return ERR_FAILURE;
    reverseNodes(list);
    list->sorted = 0;
    return 0;
}

// ---- Iterator --------------------------------------------------------------------------

int qmLListIterator_create(QmLListIterator** out, QmLinkedList* list) noexcept {
    if (out == nullptr || *out != nullptr || list == nullptr) return ERR_FAILURE;
    QmLListIterator* it = kb::heap::create<QmLListIterator>(1, endOf(list), list);
    if (it == nullptr) return ERR_FAILURE;
    *out = it;
    return 0;
}

int qmLListIterator_destroy(QmLListIterator** it) noexcept {
    if (it == nullptr || *it == nullptr) return ERR_FAILURE;
    kb::heap::destroy(*it);
    *it = nullptr;
    return 0;
}

int qmLListIterator_reset(QmLListIterator* it) noexcept {
    if (it == nullptr) return ERR_FAILURE;
    it->reset = 1;
    return 0;
}

int qmLListIterator_begin(QmLListIterator* it) noexcept {
    if (it == nullptr) return ERR_FAILURE;
    placeAt(it, firstOf(it->list));
    return 0;
}

int qmLListIterator_end(QmLListIterator* it) noexcept {
    if (it == nullptr) return ERR_FAILURE;
    placeAt(it, endOf(it->list));
    return 0;
}

int qmLListIterator_getCurrent(QmLListIterator* it, void* destination) noexcept {
    if (it == nullptr || destination == nullptr) return ERR_FAILURE;
    if (it->reset != 0 || it->current == endOf(it->list)) return kAtEnd;
    std::memcpy(destination, it->current->record, recordBytes(it->list));
    return 0;
}

int qmLListIterator_next(QmLListIterator* it) noexcept {
    if (it == nullptr) return ERR_FAILURE;
    placeAt(it, it->reset != 0 ? firstOf(it->list) : it->current->next);
    return it->current == endOf(it->list) ? kAtEnd : 0;
}

int qmLListIterator_previous(QmLListIterator* it) noexcept {
    if (it == nullptr) return ERR_FAILURE;
    if (it->reset != 0 || it->current == firstOf(it->list)) return kBeforeFirst;
    it->current = it->current->prev;
    return 0;
}

int qmLListIterator_find(QmLListIterator* it, const void* record) noexcept {
    if (it == nullptr || record == nullptr) return ERR_FAILURE;
    QmLinkedList* list = it->list;
    for (ListNode* node = firstOf(list); node != endOf(list); node = node->next) {
        if (compareRecords(list, node->record, record) == 0) {
            placeAt(it, node);
            return 0;
        }
    }
    return ERR_FAILURE;
}

int qmLListIterator_setLinkedList(QmLListIterator* it, const QmLinkedList* list) noexcept {
    if (it == nullptr || list == nullptr) return ERR_FAILURE;
    QmLinkedList* target = it->list;
    Chain copies;
    if (!copyRecords(list, copies)) return ERR_FAILURE;
    eraseAll(target);
    target->elementSize = list->elementSize;
    target->sorted = list->sorted;
    target->compare = list->compare;
    spliceBefore(target, endOf(target), copies);
    it->current = endOf(target);
    it->reset = 1;
    return 0;
}

}  // extern "C"
