/*
 * KorvelBase: relative and absolute file names.
 *
 * Paths are NUL-terminated strings separated by backslashes, with an optional drive ending in
 * ':', compared without regard to letter case (ASCII).  They are string algorithms and behave
 * the same on every platform.  A relative path made here starts with a backslash
 * (\..\..\W\f.txt) so that it appends directly to a base folder written without a trailing
 * separator.  Destination buffers must hold 260 characters; nothing is written beyond 260
 * (longer results are cut, the NUL included in the 260).
 * Results: 0 or ERR_FAILURE (null or empty input, paths that do not contain one another, no
 * working memory).  Thread-safe (no state).
 */
#ifndef KORVELBASE_QMFILENAME_H
#define KORVELBASE_QMFILENAME_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

/** Size of every path destination, NUL included. */
#define QM_FILENAME_PATH_SIZE 260

/**
 * The folder common to a and b: their common prefix (compared ignoring case, copied from a)
 * cut back to the last separator, which is dropped ("C:\X\Y\a.txt", "C:\X\Z\b.txt" give
 * "C:\X"); a drive's ':' is kept.  The last component of the prefix is always given up, even
 * when complete in both ("C:\X", "C:\X\W" give "C:").  Paths equal but for case give a copy of
 * a.  No separator in the prefix gives "" (still 0).  ERR_FAILURE for nulls or an empty path.
 */
KB_API int qmFilename_getCommonPath(char* destination, const char* a, const char* b) KB_NOEXCEPT;
/**
 * When b occurs anywhere in a (ignoring case; a substring test, deliberately not a prefix
 * test): the part of a after its first len(b) characters.  Else when a occurs in b: "\.." once
 * per non-empty component of b after its first len(a) characters ("C:\X", "C:\X\Y\Z" give
 * "\..\..").  Else ERR_FAILURE (destination "").
 */
KB_API int qmFilename_getRelativePath(char* destination, const char* a, const char* b) KB_NOEXCEPT;
/**
 * The target expressed relative to a base folder: "\.." per level of the base below their
 * common folder, then the target after that folder ("C:\X\Y\Z", "C:\X\W\f.txt" give
 * "\..\..\W\f.txt").  ERR_FAILURE when the two have no common folder.
 */
KB_API int qmFilename_expressUsingRelativePath(char* destination, const char* baseFolder,
                                               const char* targetPath) KB_NOEXCEPT;
/** Joins base folder and relative path with no separator added and resolves every "\..". */
KB_API int qmFilename_fromRelativePath(char* destination, const char* baseFolder,
                                       const char* relativePath) KB_NOEXCEPT;
/**
 * Copies path into destination and removes every "\name\.." pair, first pair first
 * ("C:\X\Y\..\Z" gives "C:\X\Z").  A "\.." with no separator before it ends the work there
 * ("C:\X\..\..\Z" gives "C:\..\Z").  The first removal is made in the caller's path itself (it
 * is changed by that one step: kept as it stands).  A removal whose remaining text, plus the
 * removed span, exceeds 256 characters is refused and ends the work.
 */
KB_API int qmFilename_resolveRelativePath(char* destination, char* path) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_QMFILENAME_H */
