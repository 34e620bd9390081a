/*
 * KorvelBase: system utilities and small value and array helpers.
 *
 * Operating system: qmUtil_getOperatingSystem answers 1 for the Windows 95/98/Me family, 2 for
 * any other platform the query recognises (every later Windows; and, where there is no
 * Windows version query, any system whose uname() succeeds), 0 when the query fails.
 * qmUtil_isOperatingSystemWindowsXP is 1 only on Windows version 5.1 (always 0 elsewhere).
 *
 * Processes: qmUtil_createWindowsProcess starts a command line and does not wait for it.  On
 * Windows it calls CreateProcessA with the line as given, as a detached process with the
 * caller's environment and folder.  Elsewhere the line is split as Windows splits it (blanks
 * separate arguments; double quotes group; 2n backslashes before a quote give n and the quote
 * delimits, 2n + 1 give n and a literal quote), a program name without '/' is looked up on
 * PATH, and the program is started in a session of its own, without a shell, leaving no
 * zombie behind.  0 when it started, ERR_FAILURE when it could not (a null or empty line, a
 * program not found or not executable).
 *
 * Threads: all functions may be called from any thread (the process start forks only
 * async-signal-safe work).
 */
#ifndef KORVELBASE_QMUTIL_H
#define KORVELBASE_QMUTIL_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

KB_API int qmUtil_getOperatingSystem(void) KB_NOEXCEPT;
KB_API int qmUtil_isOperatingSystemWindowsXP(void) KB_NOEXCEPT;
KB_API int qmUtil_createWindowsProcess(char* commandLine) KB_NOEXCEPT;

/** Exchange two values; null pointers are ignored. */
KB_API void qmUtil_swapDouble(double* a, double* b) KB_NOEXCEPT;
KB_API void qmUtil_swapFloat(float* a, float* b) KB_NOEXCEPT;
KB_API void qmUtil_swapInt(int* a, int* b) KB_NOEXCEPT;
/** The 32-bit integer exchange under its second name. */
KB_API void qmUtil_swapLong(int32_t* a, int32_t* b) KB_NOEXCEPT;
/** Exchanges size bytes of two (non-overlapping) blocks; nothing for size < 1 or null. */
KB_API void qmUtil_swapMem(void* a, void* b, int size) KB_NOEXCEPT;
/**
 * When n is exactly 1, exchanges the two bytes of array[0]; any other n does nothing (kept as
 * it stands; the middle argument is not used).  Returns 0.
 */
KB_API int qmUtil_swapBytesShortArray(short* array, int unused, int n) KB_NOEXCEPT;
KB_API int qmUtil_getGreaterInteger(int a, int b) KB_NOEXCEPT;
KB_API int qmUtil_getSmallerInteger(int a, int b) KB_NOEXCEPT;
/** Reverses n elements of elementSize bytes in place (element k with element n - 1 - k). */
KB_API void qmUtil_reverseArray(void* array, int n, int elementSize) KB_NOEXCEPT;
/**
 * Removes later repetitions of each value, keeping first occurrences in their first-seen
 * order, and stores the new count.  O(n log n) (in place, quadratic, should working memory be
 * unavailable).  ERR_FAILURE when either pointer is null, else 0.
 */
KB_API int qmUtil_removeDuplicatesFromLongArray(int32_t* array, int* count) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_QMUTIL_H */
