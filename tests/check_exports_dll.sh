#!/bin/sh
# Compares a DLL's export table with the interface lists in a folder (one symbol a line, '#'
# starts a comment).  Usage: check_exports_dll.sh OBJDUMP DLL LISTS_FOLDER [stdcall].
# Names are the plain C names.  With "stdcall" (a 32-bit DLL), a callee-pops function is
# exported as name@bytes, the decoration its calling convention demands; the suffix is
# dropped before comparing.
set -eu
objdump="$1"
library="$2"
lists="$3"
strip_stdcall="${4:-}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
# The "[Ordinal/Name Pointer] Table" lines read "	[   n] name".
"$objdump" -p "$library" | sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' \
    | sed -n 's/^[[:space:]]*\[[[:space:]]*[0-9]*\] \(.*\)$/\1/p' > "$work/names"
if [ "$strip_stdcall" = "stdcall" ]; then
    grep -E '@[0-9]+$' "$work/names" | sed 's/^/callee-pops export: /' || true
    sed -E 's/@[0-9]+$//' "$work/names" | sort -u > "$work/actual"
else
    sort -u "$work/names" > "$work/actual"
fi
# A DLL does not export the type-name strings (_ZTS...) of an exported class; everything else
# of the C++ class (vtable, type information, members) is exported as on other systems.
cat "$lists"/*.txt | sed -e 's/#.*//' -e 's/[[:space:]]//g' | grep -v -E '^$|^_ZTS' | sort -u > "$work/expected"
if ! diff -u "$work/expected" "$work/actual"; then
    echo "exported symbols differ from the interface lists (- missing, + unexpected)"
    exit 1
fi
echo "$(wc -l < "$work/actual") exported symbols match the interface"
