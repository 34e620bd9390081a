/*
 * KorvelBase: globally unique identifiers.
 *
 * A QmGuid is the 16-byte identifier record (32-bit, two 16-bit and eight 8-bit fields in
 * memory order).  New identifiers are random version-4 identifiers (RFC 4122 variant) from the
 * operating system's secure source (CoCreateGuid on Windows).  The text form is braced
 * upper-case hexadecimal, 38 characters, in UTF-16: {XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}
 * (Data1 as 8 digits, Data2 and Data3 as 4, Data4[0..1], '-', Data4[2..7]).
 * Outputs come first (destination, then source).  Results are 0 for success and HRESULT-like
 * codes otherwise: 0x800401F4 for text that is not a braced identifier, 0x80070057 for null
 * arguments, 0x80004005 when no random bytes can be had.  Thread-safe (no state).
 */
#ifndef KORVELBASE_QMGUID_H
#define KORVELBASE_QMGUID_H

#include "korvelbase/types.h"

/* A UTF-16 code unit: char16_t in C++, its C11 definition (uint_least16_t) in C. */
#ifdef __cplusplus
typedef char16_t QmChar16;
#else
typedef uint_least16_t QmChar16;
#endif

KB_BEGIN_DECLS

typedef struct QmGuid {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
} QmGuid;

/** Size of the text buffer of qmGuid_toString, in UTF-16 units, NUL included. */
#define QM_GUID_TEXT_SIZE 40

KB_API int32_t qmGuid_generate(QmGuid* out) KB_NOEXCEPT;
/** -1, 0 or 1 from an unsigned comparison of the 16 bytes in memory order. */
KB_API int qmGuid_compare(const QmGuid* a, const QmGuid* b) KB_NOEXCEPT;
/** 1 when all 16 bytes match, else 0 (and 0 for a null argument). */
KB_API int qmGuid_equal(const QmGuid* a, const QmGuid* b) KB_NOEXCEPT;
/** Parses the braced form (hex digits in either case); 0x800401F4 for anything else. */
KB_API int32_t qmGuid_fromString(QmGuid* out, const QmChar16* text) KB_NOEXCEPT;
/** Writes the braced form and a NUL (39 of the 40 units). */
KB_API int32_t qmGuid_toString(QmChar16* text, const QmGuid* guid) KB_NOEXCEPT;
/** Writes the 36 characters between the braces and a NUL. */
KB_API int32_t qmGuid_toStringNoBrackets(QmChar16* text, const QmGuid* guid) KB_NOEXCEPT;
/** All 16 bytes 0 (null ignored); 0. */
KB_API int32_t qmGuid_clear(QmGuid* guid) KB_NOEXCEPT;
/** 1 when all 16 bytes are 0, else 0. */
KB_API int qmGuid_isClear(const QmGuid* guid) KB_NOEXCEPT;
/** Copies the 16 bytes; a null on either side does nothing; 0. */
KB_API int32_t qmGuid_copy(QmGuid* destination, const QmGuid* source) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_QMGUID_H */
