# Cross-compiling the library for 64-bit Windows with MinGW-w64 (Debian's g++-mingw-w64-x86-64).
#   cmake -S . -B build-win -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-w64-x86_64.cmake
set(KB_MINGW_ARCH x86_64)
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64-common.cmake)

# Test programs run under Wine (Debian's wine64).
if(EXISTS /usr/lib/wine/wine64)
  set(CMAKE_CROSSCOMPILING_EMULATOR /usr/lib/wine/wine64)
endif()
