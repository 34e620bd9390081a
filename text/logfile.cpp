// The process-wide text log file.
#include <cstdarg>
#include <cstdio>

#include "korvelbase/qmlogfile.h"

namespace {

// The open log, or null.  One per process, unguarded, as its callers expect.
std::FILE* logFile = nullptr;

}  // namespace

extern "C" {

int qmLogFile_open(const char* path) noexcept {
    if (path == nullptr) return ERR_FAILURE;
    std::FILE* file = std::fopen(path, "w+");
    if (file == nullptr) return ERR_FAILURE;
    logFile = file;  // an open log is replaced, not closed
    return 0;
}

int qmLogFile_write(const char* format, ...) noexcept {
    if (logFile == nullptr || format == nullptr) return ERR_FAILURE;
    va_list arguments;
    va_start(arguments, format);
    std::vfprintf(logFile, format, arguments);
    va_end(arguments);
    std::fputs("\n", logFile);
    std::fflush(logFile);
    return 0;
}

int qmLogFile_close(void) noexcept {
    if (logFile == nullptr) return ERR_FAILURE;
    std::fclose(logFile);
    logFile = nullptr;
    return 0;
}

}  // extern "C"
