# Cross-compiling the library for Windows (i686) with MinGW-w64 (Debian's g++-mingw-w64-*).
#   cmake -S . -B build-win -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-w64-i686.cmake
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)

set(KB_MINGW_TRIPLE i686-w64-mingw32)
# The POSIX thread model: its libstdc++ has std::mutex, which the test framework needs.
set(CMAKE_C_COMPILER ${KB_MINGW_TRIPLE}-gcc-posix)
set(CMAKE_CXX_COMPILER ${KB_MINGW_TRIPLE}-g++-posix)
set(CMAKE_RC_COMPILER ${KB_MINGW_TRIPLE}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${KB_MINGW_TRIPLE})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
