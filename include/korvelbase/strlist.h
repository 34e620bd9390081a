/*
 * KorvelBase: string lists, indexed lists of members that each hold a text and a fixed number
 * of int info fields shared by the whole list (a name with flags or codes, for instance).
 *
 * The list owns every text and field array it stores: texts are copies, field arrays are
 * zero-filled on creation.  A member starts empty (text null, no field array; its fields read
 * as 0).  Storing the empty string as a text leaves the member with a null text.
 *
 * Member indexes run from 0 to size - 1.  Unless stated, results are 0 or ERR_FAILURE; a null
 * list or an index outside 0..size-1 gives ERR_FAILURE.  Pointers handed out by
 * qmStrList_getMember stay owned by the list and are valid until the member is next changed.
 * A list is not locked: use it from one thread at a time.
 */
#ifndef KORVELBASE_STRLIST_H
#define KORVELBASE_STRLIST_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

/** Opaque string list. */
typedef struct QmStrList QmStrList;

/**
 * A new list of memberCount empty members with infoFieldCount fields each (0 allowed).  Null
 * when a count is negative or an allocation fails.  Release it with qmStrList_destroy.
 */
KB_API QmStrList* qmStrList_create(int memberCount, int infoFieldCount) KB_NOEXCEPT;
/** Releases every member, the member array and the list.  Null is ignored; the caller's
 *  pointer is not cleared. */
KB_API void qmStrList_destroy(QmStrList* list) KB_NOEXCEPT;
/** Number of members; -1 for a null list. */
KB_API int qmStrList_size(const QmStrList* list) KB_NOEXCEPT;
/** Number of info fields per member; -1 for a null list. */
KB_API int qmStrList_numInfoFields(const QmStrList* list) KB_NOEXCEPT;
/**
 * Sets member index.  A non-null text replaces the member's text by a copy (the empty string
 * by null); a null text keeps it.  When the list has info fields the member gets a zero-filled
 * field array if it has none, and a non-null fields array is copied into it (as many ints as
 * the list has fields); null fields keep the values.  A failed allocation gives ERR_FAILURE
 * and leaves the member's text as it was.
 */
KB_API int qmStrList_setMember(QmStrList* list, int index, const char* text,
                               const int* fields) KB_NOEXCEPT;
/**
 * Stores the text and the field array of member index (either may be null) in *text and
 * *fields; null output addresses are skipped.  Note the outputs come first.
 */
KB_API int qmStrList_getMember(const char** text, int** fields, const QmStrList* list,
                               int index) KB_NOEXCEPT;
/**
 * Stores value in field field (0 <= field < number of info fields) of member index, giving
 * the member a zero-filled field array first if it has none.
 */
KB_API int qmStrList_setInfoField(QmStrList* list, int index, int field, int value) KB_NOEXCEPT;
/**
 * Stores 0 in *value, then the value of field field of member index, or leaves 0 when the
 * member has no field array.  Null value address or field outside 0..fields-1: ERR_FAILURE.
 */
KB_API int qmStrList_getInfoField(int* value, const QmStrList* list, int index,
                                  int field) KB_NOEXCEPT;
/**
 * Inserts count (>= 1) empty members before index (0 <= index <= size; -1 = at the end).
 * *newIndex (if the address is not null) receives the index given, or for -1 the last index
 * after the insertion.
 */
KB_API int qmStrList_insertMember(int* newIndex, QmStrList* list, int index,
                                  int count) KB_NOEXCEPT;
/**
 * Releases and removes count members from first on; the count is cut to size - first.
 * A count below 1 does nothing and returns 0; first outside 0..size-1 gives ERR_FAILURE.
 */
KB_API int qmStrList_deleteMember(QmStrList* list, int first, int count) KB_NOEXCEPT;
/**
 * Index of the first member whose text equals text by qmString_strcmp (so a null text finds
 * the first member without one); -1 when there is none, the list is empty or null.
 */
KB_API int qmStrList_getMemberIndex(const QmStrList* list, const char* text) KB_NOEXCEPT;
/**
 * Makes destination an independent copy of source (texts and field arrays duplicated).  Both
 * lists must exist and have the same number of info fields, else ERR_FAILURE; on any failure
 * the destination is left unchanged.
 */
KB_API int qmStrList_copy(QmStrList* destination, const QmStrList* source) KB_NOEXCEPT;
/**
 * Copies members from..from+count-1 onto members to..to+count-1.  The source range is first
 * duplicated as qmStrList_copy would (so every duplicate has a field array, zero-filled where
 * the source had none), then each duplicate is set onto its target with the qmStrList_setMember
 * rule: a source without text leaves the target's text as it was, the field values are always
 * copied.  Overlapping ranges work.  The source members keep their contents unless they lie in
 * the target range.  Requires count >= 1, from >= 0, to >= 0 and both ranges inside the list,
 * else ERR_FAILURE.  A null list returns 0.
 */
KB_API int qmStrList_moveMembers(QmStrList* list, int to, int from, int count) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_STRLIST_H */
