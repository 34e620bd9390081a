/*
 * KorvelBase: block arrays, untyped growable arrays of fixed-size elements.
 *
 * The caller holds three things: the base pointer of the storage (null while empty), the
 * element size in bytes (passed to every call) and the element count.  The capacity is never
 * stored; it follows from the count:
 *   capacity(1) = 1; otherwise capacity(n) = n rounded up to a multiple of 10.
 * So one element occupies exactly one slot, 2..10 elements occupy 10, 11..20 occupy 20, ...
 *
 * Failures are reported only through the process-wide error pair read by MEM_GetErreur: every
 * MEM_ operation other than MEM_GetErreur / MEM_SetErreur sets the error word to 0 on entry and
 * to ERR_FAILURE on failure, and none touches the second word.  A failed precondition changes
 * nothing; a failed reallocation has already moved the count.  The pair is not guarded: use
 * block arrays from one thread at a time.
 *
 * Insertion opens a gap that is NOT cleared: it still holds the bytes that were there before
 * the move; the caller writes the new elements into it.  Appended elements are zeroed.
 */
#ifndef KORVELBASE_BLOCKARRAY_H
#define KORVELBASE_BLOCKARRAY_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

/** Copies the error word and the second word out (null addresses are skipped). */
KB_API void MEM_GetErreur(int* error, int* detail) KB_NOEXCEPT;
/** Stores both words. */
KB_API void MEM_SetErreur(int error, int detail) KB_NOEXCEPT;

/**
 * Creates capacity(n) zeroed elements.  n = 0 stores null and succeeds.  Fails when *array is
 * not null on entry, when n < 0 or when the allocation fails.
 */
KB_API void MEM_CreerTableau(void** array, int size, int n) KB_NOEXCEPT;
/**
 * Reallocates the storage to capacity(n) elements.  Fails when *array is null.  n = 0 stores
 * null WITHOUT releasing the old storage: release it first.  A failed reallocation releases
 * the old storage (its contents are lost) and stores null.
 */
KB_API void MEM_ModifierTailleTableau(void** array, int size, int n) KB_NOEXCEPT;
/**
 * Index of the first element whose bytes equal the sample's, stored in *rank and returned.
 * Without a match *rank is -1 and the count is returned; a count below 1 returns 0 with
 * *rank = -1; a null rank address fails and returns 0.  Bytewise: 0.0 differs from -0.0.
 */
KB_API int MEM_RecupererRang(const void* base, int count, int size, const void* sample,
                             int* rank) KB_NOEXCEPT;
/** Appends one zeroed element. */
KB_API void MEM_EtendreTableau(void** array, int size, int* count) KB_NOEXCEPT;
/** Appends k (>= 1) zeroed elements. */
KB_API void MEM_EtendreTableauParBloc(void** array, int size, int* count, int k) KB_NOEXCEPT;
/** Frees the storage and stores null; fails when it is already null.  Reset the count yourself. */
KB_API void MEM_LibererTableau(void** array) KB_NOEXCEPT;
/** Opens an uncleared gap of one element before index i (0 <= i <= count). */
KB_API void MEM_InsererElementDansTableau(void** array, int size, int* count, int i) KB_NOEXCEPT;
/** Opens an uncleared gap of k (>= 1) elements before index i (0 <= i <= count). */
KB_API void MEM_InsererElementsDansTableau(void** array, int size, int* count, int i,
                                           int k) KB_NOEXCEPT;
/** Removes element i (0 <= i < count); removing the last one releases the storage. */
KB_API void MEM_SupprimerElementDansTableau(void** array, int size, int* count, int i) KB_NOEXCEPT;
/** Removes the inclusive range first..last; removing everything releases the storage. */
KB_API void MEM_SupprimerElementsDansTableau(void** array, int size, int* count, int first,
                                             int last) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_BLOCKARRAY_H */
