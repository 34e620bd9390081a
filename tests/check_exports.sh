#!/bin/sh
# Compares the library's exported dynamic symbols with the interface lists in a folder
# (one symbol a line, '#' starts a comment).  Prints the difference and fails on any.
# Not part of the interface: AddressSanitizer's one-definition-rule markers (__odr_asan.*),
# gcov's runtime symbols (__gcov_*, mangle_path) and weak instantiations of standard-library
# templates and their static data (namespace std keeps default visibility in libstdc++'s headers, so Clang's
# unoptimised builds export them).
set -eu
library="$1"
lists="$2"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
nm -D --defined-only "$library" | awk '!($2 ~ /^[WVu]$/ && $NF ~ /^_ZZ?(N|NK)?St/) {print $NF}' | grep -v -E '^(_init|_fini|_edata|_end|__bss_start|__odr_asan\..*|__gcov_.*|mangle_path)$' | sort -u > "$work/actual"
cat "$lists"/*.txt | sed -e 's/#.*//' -e 's/[[:space:]]//g' | grep -v '^$' | sort -u > "$work/expected"
if ! diff -u "$work/expected" "$work/actual"; then
    echo "exported symbols differ from the interface lists (- missing, + unexpected)"
    exit 1
fi
echo "$(wc -l < "$work/actual") exported symbols match the interface"
