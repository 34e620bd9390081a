/*
 * KorvelBase: string utilities (qmString_ family).
 */
#ifndef KORVELBASE_QMSTRING_H
#define KORVELBASE_QMSTRING_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

/**
 * Compares two NUL-terminated texts byte by byte as unsigned chars (the C library's strcmp
 * order) and returns -1, 0 or 1.  A null text orders before every non-null text, the empty
 * string included, and equals another null text.
 */
KB_API int qmString_strcmp(const char* left, const char* right) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_QMSTRING_H */
