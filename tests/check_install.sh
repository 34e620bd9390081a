#!/bin/sh
# Installs the built library into a scratch prefix and builds a small consumer against it,
# once through find_package(KorvelBase) and once through pkg-config.
set -eu
build="$1"
consumer="$2"
work="$3"
rm -rf "$work"
mkdir -p "$work"
cmake --install "$build" --prefix "$work/prefix" > "$work/install.log"
libdir="$(find "$work/prefix" -name 'libkorvelbase.so*' -type f | head -n 1 | xargs dirname)"
ls -l "$libdir"/libkorvelbase.so* > "$work/links.log"
grep -q 'libkorvelbase.so.0 ->' "$work/links.log" || { echo "no versioned soname link"; exit 1; }
cmake -S "$consumer" -B "$work/cmake-build" -DCMAKE_PREFIX_PATH="$work/prefix" > "$work/configure.log"
cmake --build "$work/cmake-build" > "$work/build.log"
LD_LIBRARY_PATH="$libdir" "$work/cmake-build/korvelbase_consumer"
PKG_CONFIG_PATH="$libdir/pkgconfig" cc -std=c99 -Wall -Wextra -Wpedantic -Werror \
    "$consumer/consumer.c" $(PKG_CONFIG_PATH="$libdir/pkgconfig" pkg-config --cflags --libs korvelbase) \
    -o "$work/pkgconfig-consumer"
LD_LIBRARY_PATH="$libdir" "$work/pkgconfig-consumer"
