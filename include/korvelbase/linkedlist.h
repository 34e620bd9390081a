/*
 * KorvelBase: doubly linked list of fixed-size records, and its iterator.
 *
 * A list stores its own copy of every record (element-size bytes taken from the library heap,
 * qmMem_malloc) and copies records out on every read: callers never hold pointers into it.
 * Internally the nodes form a ring closed by one sentinel node that holds no record; the
 * sentinel is the "end" position.
 *
 * Order and equality of two records a, b:
 *   - with a comparison set, a comes before b when compare(a, b) < 0 and they are equal when it
 *     returns 0;
 *   - without one, the element-size bytes are compared as unsigned bytes from the first; the
 *     first differing byte decides (smaller byte first), and all bytes equal means equal.
 *
 * Sorted flag: a new list is flagged sorted; qmLinkedList_sort sets the flag; every insertion
 * that does not keep order (insert, push front/back, append, append copy) and reverse clear it;
 * unique, the erase operations and clear leave it as it is.  Ordered insertion and merging work
 * only on lists flagged sorted.
 *
 * Size limit: a list holds at most 536870911 records ("list<T> too long"); an operation that
 * would grow a list past it fails with ERR_FAILURE and changes nothing.
 *
 * Status results are 0 or ERR_FAILURE; a null list or iterator handle gives ERR_FAILURE unless
 * stated otherwise.  Some walking operations answer -1 or -2 instead, as documented.  An
 * operation that cannot allocate a node or a record copy fails with ERR_FAILURE and leaves the
 * list unchanged.  Erasing, clearing or replacing records invalidates iterators positioned on
 * the removed nodes (as with any linked list); using such an iterator is a caller error.
 * Lists and iterators are not locked: use a list and its iterators from one thread at a time.
 */
#ifndef KORVELBASE_LINKEDLIST_H
#define KORVELBASE_LINKEDLIST_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

/** A list of fixed-size records (opaque). */
typedef struct QmLinkedList QmLinkedList;
/** A position in a list (opaque): a reset flag, a current node and the list it walks. */
typedef struct QmLListIterator QmLListIterator;

/** Record order: negative when a comes first, 0 when equal, positive when b comes first. */
typedef int (*QmLinkedListCompareFunc)(const void* a, const void* b);
/**
 * Called with a scratch copy of a record and the caller's data; a non-zero result stops the
 * walk.  Changes made to the copy do not reach the list.
 */
typedef int (*QmLinkedListActionFunc)(void* record, void* userData);

/* ---- List ------------------------------------------------------------------------------ */

/**
 * Stores a new empty list of elementSize-byte records in *out (sorted flag 1, bytewise order).
 * Does nothing when out is null, *out is not null or elementSize <= 0; returns 0 in those cases
 * and on success.  ERR_FAILURE only when the list object cannot be allocated.
 */
KB_API int qmLinkedList_create(QmLinkedList** out, int elementSize) KB_NOEXCEPT;
/**
 * Releases every record copy, every node and the list, and stores null in *list.  Iterators
 * created on the list are invalidated: the only call still allowed on such an iterator is
 * qmLListIterator_destroy.
 */
KB_API int qmLinkedList_destroy(QmLinkedList** list) KB_NOEXCEPT;
/** Sets the record order; null restores bytewise order.  The sorted flag is not changed. */
KB_API int qmLinkedList_setCompareFunction(QmLinkedList* list,
                                           QmLinkedListCompareFunc compare) KB_NOEXCEPT;
/** Number of records; 0 for a null list. */
KB_API int qmLinkedList_size(const QmLinkedList* list) KB_NOEXCEPT;
/** Removes every record; the sorted flag is kept. */
KB_API int qmLinkedList_clear(QmLinkedList* list) KB_NOEXCEPT;
/** Copies the record into a new first node; sorted flag 0.  Null record: ERR_FAILURE. */
KB_API int qmLinkedList_pushFront(QmLinkedList* list, const void* record) KB_NOEXCEPT;
/** Copies the record into a new last node; sorted flag 0.  Null record: ERR_FAILURE. */
KB_API int qmLinkedList_pushBack(QmLinkedList* list, const void* record) KB_NOEXCEPT;
/**
 * Copies the record into a new node before the iterator's position and moves the iterator onto
 * the new node (clearing its reset flag); sorted flag 0.  A null iterator, or one still in the
 * reset state, means "before the first record"; an iterator at end appends.  An iterator
 * bound to another list: ERR_FAILURE.
 */
KB_API int qmLinkedList_insert(QmLinkedList* list, QmLListIterator* it,
                               const void* record) KB_NOEXCEPT;
/**
 * Inserts a copy of the record after every record that orders before or equal to it.
 * ERR_FAILURE when the list is not flagged sorted (e.g. after a push) or the record is null.
 */
KB_API int qmLinkedList_insertInOrder(QmLinkedList* list, const void* record) KB_NOEXCEPT;
/** Removes the first record.  Empty list: ERR_FAILURE. */
KB_API int qmLinkedList_popFront(QmLinkedList* list) KB_NOEXCEPT;
/** Removes the last record.  Empty list: ERR_FAILURE. */
KB_API int qmLinkedList_popBack(QmLinkedList* list) KB_NOEXCEPT;
/**
 * Removes the iterator's record and moves the iterator to the next node; 0.  An iterator at end
 * (or in the reset state, which has no record) returns -1.  Null iterator or an iterator of
 * another list: ERR_FAILURE.
 */
KB_API int qmLinkedList_eraseElement(QmLinkedList* list, QmLListIterator* it) KB_NOEXCEPT;
/**
 * Removes the records from first up to but not including last, then sets both iterators onto
 * last (clearing their reset flags); 0.  A null (or reset) first means the first record; a null
 * last means end.  A first at end returns -1.  A last that does not follow first is never met
 * and the range then runs to the end.  An iterator of another list: ERR_FAILURE.
 */
KB_API int qmLinkedList_eraseElements(QmLinkedList* list, QmLListIterator* first,
                                      QmLListIterator* last) KB_NOEXCEPT;
/**
 * Calls action(copy, userData) for each record from `from` up to but not including `to`,
 * stopping after the first call that returns non-zero; 0.  The copy is a scratch buffer of
 * element size, so the list is never changed by the action.  A null (or reset) from means the
 * first record, a null to means end; a from at end returns -1.  Null action or an iterator of
 * another list: ERR_FAILURE.
 */
KB_API int qmLinkedList_performAction(QmLinkedList* list, QmLinkedListActionFunc action,
                                      void* userData, QmLListIterator* from,
                                      QmLListIterator* to) KB_NOEXCEPT;
/**
 * Copies the record at the 0-based index into destination; 0.  The walk copies every record it
 * visits into destination, so when the index is not below the count (negative indexes count as
 * too large) destination holds the last record and the result is ERR_FAILURE (an empty list
 * leaves it untouched).  A null list returns 0; a null destination: ERR_FAILURE.
 */
KB_API int qmLinkedList_getValueByIndex(QmLinkedList* list, void* destination,
                                        int index) KB_NOEXCEPT;
/**
 * Appends copies of all records of other at the end (other may be the list itself and is not
 * changed); sorted flag 0.  Records of a different size: ERR_FAILURE.
 */
KB_API int qmLinkedList_append(QmLinkedList* list, const QmLinkedList* other) KB_NOEXCEPT;
/** The same result as qmLinkedList_append, record by record as by pushBack. */
KB_API int qmLinkedList_appendCopy(QmLinkedList* list, const QmLinkedList* other) KB_NOEXCEPT;
/**
 * When both lists are flagged sorted, merges copies of other's records into the list in one
 * pass: a record of other goes before the first record of the list that it orders strictly
 * before, so among equal records the list's own come first; the merge is stable.  When either
 * is not sorted nothing changes.  Returns 0 in those cases and for null arguments; ERR_FAILURE
 * only when records differ in size, on allocation failure or past the size limit.
 */
KB_API int qmLinkedList_merge(QmLinkedList* list, const QmLinkedList* other) KB_NOEXCEPT;
/**
 * qmLinkedList_merge followed by qmLinkedList_unique (the unique step runs even when the merge
 * changed nothing).  Null arguments: ERR_FAILURE; otherwise as qmLinkedList_merge.
 */
KB_API int qmLinkedList_mergeCopyUnique(QmLinkedList* list,
                                        const QmLinkedList* other) KB_NOEXCEPT;
/** Removes every record equal to the record before it: [1, 1, 2, 1] becomes [1, 2, 1]. */
KB_API int qmLinkedList_unique(QmLinkedList* list) KB_NOEXCEPT;
/**
 * Stable merge sort of the nodes in the list's order, O(n log n) comparisons, no record is
 * copied; sorted flag 1.
 */
KB_API int qmLinkedList_sort(QmLinkedList* list) KB_NOEXCEPT;
/** Reverses the order of the records; sorted flag 0. */
KB_API int qmLinkedList_reverse(QmLinkedList* list) KB_NOEXCEPT;

/* ---- Iterator -------------------------------------------------------------------------- */

/**
 * Stores a new iterator on the list in *out, in the reset state (not yet positioned).
 * ERR_FAILURE when out is null, *out is not null, the list is null or allocation fails.
 */
KB_API int qmLListIterator_create(QmLListIterator** out, QmLinkedList* list) KB_NOEXCEPT;
/** Releases the iterator and stores null in *it.  Null address or handle: ERR_FAILURE. */
KB_API int qmLListIterator_destroy(QmLListIterator** it) KB_NOEXCEPT;
/** Returns the iterator to the reset state. */
KB_API int qmLListIterator_reset(QmLListIterator* it) KB_NOEXCEPT;
/** Positions on the first record (end for an empty list) and clears the reset flag. */
KB_API int qmLListIterator_begin(QmLListIterator* it) KB_NOEXCEPT;
/** Positions on end and clears the reset flag. */
KB_API int qmLListIterator_end(QmLListIterator* it) KB_NOEXCEPT;
/**
 * Copies the current record into destination; 0.  In the reset state or at end: -1.
 * Null iterator or destination: ERR_FAILURE.
 */
KB_API int qmLListIterator_getCurrent(QmLListIterator* it, void* destination) KB_NOEXCEPT;
/**
 * From the reset state moves to the first record, otherwise to the next node of the ring (so
 * from end it wraps to the first record); clears the reset flag.  -1 when it lands on end,
 * otherwise 0.
 */
KB_API int qmLListIterator_next(QmLListIterator* it) KB_NOEXCEPT;
/**
 * Moves back one node; 0 (from end this reaches the last record).  In the reset state or on
 * the first record (or at end of an empty list) it stays and returns -2.
 */
KB_API int qmLListIterator_previous(QmLListIterator* it) KB_NOEXCEPT;
/**
 * Searches from the first record for one equal to the given record in the list's order.
 * Found: positions there, clears the reset flag, 0.  Not found: the position and reset flag
 * are left as they were, ERR_FAILURE.  Null record: ERR_FAILURE.
 */
KB_API int qmLListIterator_find(QmLListIterator* it, const void* record) KB_NOEXCEPT;
/**
 * Assignment of contents: the list this iterator walks receives copies of the given list's
 * records and takes its element size, sorted flag and comparison; the iterator stays bound to
 * its own list and is put in the reset state (call begin or next before reading).  Other
 * iterators on the assigned list are invalidated.  Null list: ERR_FAILURE.
 */
KB_API int qmLListIterator_setLinkedList(QmLListIterator* it,
                                         const QmLinkedList* list) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_LINKEDLIST_H */
