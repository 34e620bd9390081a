# Cross-compiling the library for 32-bit Windows with MinGW-w64 (Debian's g++-mingw-w64-i686).
#   cmake -S . -B build-win32 -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-w64-i686.cmake
set(KB_MINGW_ARCH i686)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64-common.cmake)
