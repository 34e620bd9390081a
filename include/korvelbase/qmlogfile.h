/*
 * KorvelBase: one process-wide text log file.
 *
 * Threads: the log handle is process-wide and unguarded; writes from several threads may
 * interleave.  Results are 0 or ERR_FAILURE.
 */
#ifndef KORVELBASE_QMLOGFILE_H
#define KORVELBASE_QMLOGFILE_H

#include "korvelbase/types.h"

KB_BEGIN_DECLS

/**
 * Creates or truncates the file ("w+") and makes it the log.  An already open log is not
 * closed: its handle is replaced (and that file stays open until the process ends).
 * ERR_FAILURE when the file cannot be opened or the path is null.
 */
KB_API int qmLogFile_open(const char* path) KB_NOEXCEPT;
/** printf-style text, then "\n", then a flush.  ERR_FAILURE when no log is open. */
KB_API int qmLogFile_write(const char* format, ...) KB_NOEXCEPT;
/** Closes the log.  ERR_FAILURE when none is open. */
KB_API int qmLogFile_close(void) KB_NOEXCEPT;

KB_END_DECLS

#endif /* KORVELBASE_QMLOGFILE_H */
