# Shared part of the MinGW-w64 toolchain files: they set KB_MINGW_ARCH and include this.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${KB_MINGW_ARCH})

set(KB_MINGW_TRIPLE ${KB_MINGW_ARCH}-w64-mingw32)
# The POSIX thread model: its libstdc++ has std::mutex, which the test framework needs.
set(CMAKE_C_COMPILER ${KB_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${KB_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${KB_MINGW_TRIPLE}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${KB_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
