/*
 * KorvelBase: dynamic arrays, growable arrays of fixed-size elements behind an opaque handle.
 *
 * Elements are copied in and out by the element size fixed at creation.  The capacity is never
 * stored; it follows from the count n and the array's block size B:
 *   capacity(1) = 1; otherwise capacity(n) = n rounded up to a multiple of B.
 * The default block size is 10 elements, or 1 element for elements larger than 128 bytes, so
 * large records grow one at a time.
 *
 * Indexes are 0-based.  Where an existing element is addressed, -1 stands for the last one;
 * where elements are inserted, -1 stands for the end.  Addressing any element of an empty array
 * fails (there is no last element).
 *
 * Status results are 0 or ERR_FAILURE; a null handle gives ERR_FAILURE.  Several insertion and
 * deletion operations deliberately swallow the failure of their inner growth step and return 0:
 * detect a failed growth through qmDynArray_getSize and the element addresses.  A failed
 * reallocation leaves the count changed and the storage empty (every element access then fails
 * until qmDynArray_clear).
 *
 * An array is not locked: use one array from one thread at a time.
 */
#ifndef KORVELBASE_DYNARRAY_H
#define KORVELBASE_DYNARRAY_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

/** Opaque dynamic array. */
typedef struct QmDynArray QmDynArray;

/** Called with the address of each element that is cleared or deleted. */
typedef void (*QmDynArrayReleaseFn)(void* element);
/** Search predicate: non-zero when the element matches the key. */
typedef int (*QmDynArrayPredicateFn)(const void* element, const void* key);
/** qsort comparison of two elements: negative, zero or positive. */
typedef int (*QmDynArraySortFn)(const void* left, const void* right);
/**
 * Ordered-insertion comparison of an existing element with the new one: 0 when equal, exactly
 * 1 when the existing element orders after the new one, any other value when it orders before.
 */
typedef int (*QmDynArrayOrderFn)(const void* existing, const void* inserted);
/** Action on one element with the caller's data; non-zero stops the walk. */
typedef int (*QmDynArrayActionFn)(void* element, void* userData);

/**
 * Creates an empty array of elementSize-byte elements with the default block size and stores
 * it in *out (null when the allocation failed or elementSize < 1).  Returns 0 in every case.
 */
KB_API int qmDynArray_create(QmDynArray** out, int elementSize) KB_NOEXCEPT;
/**
 * As qmDynArray_create with a growth step of blockSize elements.  A null out, an elementSize
 * below 1 or a blockSize below 1 gives ERR_FAILURE (nothing is kept; *out, when given, is null).
 */
KB_API int qmDynArray_createWithMinBlockNumberAllocated(QmDynArray** out, int elementSize,
                                                        int blockSize) KB_NOEXCEPT;
/**
 * Releases the storage and the array (without calling the release callback) and stores null
 * in *handle.  A null address or a null *handle gives ERR_FAILURE.
 */
KB_API int qmDynArray_destroy(QmDynArray** handle) KB_NOEXCEPT;
/** Calls the release callback on every element (if one is set), then empties the array. */
KB_API int qmDynArray_clear(QmDynArray* array) KB_NOEXCEPT;
/** Number of elements; 0 for a null handle. */
KB_API int qmDynArray_getSize(const QmDynArray* array) KB_NOEXCEPT;
/**
 * Opens n elements before index (0 <= index <= count; -1 appends).  Appended elements are
 * zeroed; a gap opened inside the array keeps the bytes that were there before the move, for
 * the caller to overwrite.  Into an empty array the elements are appended and index is
 * ignored.  Returns 0 even when the step failed (bad index, n < 1, allocation).
 */
KB_API int qmDynArray_insertElements(QmDynArray* array, int index, int n) KB_NOEXCEPT;
/** qmDynArray_insertElements with n = 1. */
KB_API int qmDynArray_insertElement(QmDynArray* array, int index) KB_NOEXCEPT;
/**
 * Inserts one element at index, then copies elementSize bytes from source into the element at
 * the same index (-1: the new last element).  Returns 0 even when a step failed.
 */
KB_API int qmDynArray_insertAndSetElement(QmDynArray* array, int index,
                                          const void* source) KB_NOEXCEPT;
/**
 * Calls the release callback on element index (-1: the last), if one is set, and removes it.
 * An index above the last gives ERR_FAILURE.  An index below -1 addresses no element: nothing
 * is removed and the result is 0, as it is when a shrink fails.
 */
KB_API int qmDynArray_deleteElement(QmDynArray* array, int index) KB_NOEXCEPT;
/** Copies element index (-1: the last) to destination.  No such element: ERR_FAILURE. */
KB_API int qmDynArray_getElement(QmDynArray* array, int index, void* destination) KB_NOEXCEPT;
/** Copies source into element index (-1: the last).  No such element: ERR_FAILURE. */
KB_API int qmDynArray_setElement(QmDynArray* array, int index, const void* source) KB_NOEXCEPT;
/**
 * Address of element index (-1: the last) inside the storage, valid until the next insertion
 * or deletion; null when there is no such element.
 */
KB_API void* qmDynArray_getElementAdd(QmDynArray* array, int index) KB_NOEXCEPT;
/**
 * Stores in *out a new array with the source's element size, block size, count and a byte copy
 * of its elements; the release callback is not copied.  Null out or source: ERR_FAILURE.  A
 * failed allocation stores null and gives ERR_FAILURE.
 */
KB_API int qmDynArray_clone(QmDynArray** out, const QmDynArray* source) KB_NOEXCEPT;
/**
 * Stores -1 in *index, then the index of the first element, walking from 0, for which
 * predicate(element, key) is non-zero.  Returns 0; a null handle, predicate or index address
 * gives ERR_FAILURE.
 */
KB_API int qmDynArray_findElement(QmDynArray* array, QmDynArrayPredicateFn predicate,
                                  const void* key, int* index) KB_NOEXCEPT;
/** Sorts the elements in place with qsort and the comparison.  Null comparison: ERR_FAILURE. */
KB_API int qmDynArray_sort(QmDynArray* array, QmDynArraySortFn compare) KB_NOEXCEPT;
/**
 * Validates the range first..last (first -1 means 0, last -1 means count - 1): first < 0 or
 * last >= count gives ERR_FAILURE and calls nothing.  Then calls action(element, userData) on
 * the elements from index 0 upward until it returns non-zero or the array ends.  The range is
 * only checked, never used to bound the walk: that is the behaviour callers rely on.  Returns 0.
 */
KB_API int qmDynArray_performAction(QmDynArray* array, QmDynArrayActionFn action, void* userData,
                                    int first, int last) KB_NOEXCEPT;
/**
 * Inserts a copy of element before the first existing element for which compare(existing,
 * element) returns exactly 1, or at the end when there is none.  A result of 0 on the way means
 * the key is already present and nothing is inserted.  Returns 0 (ERR_FAILURE for a null
 * handle, element or comparison).
 */
KB_API int qmDynArray_insertElementByOrder(QmDynArray* array, const void* element,
                                           QmDynArrayOrderFn compare) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_DYNARRAY_H */
