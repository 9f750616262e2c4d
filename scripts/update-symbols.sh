#!/bin/sh
# Writes debian/libzxcore3d1.symbols anew from the built libraries in a directory.
#
#   scripts/update-symbols.sh [build/release/lib]
#
# Weak symbols are inline functions and templates, which a compiler may or may not emit: optional.

set -eu

tree=$(cd "$(dirname "$0")/.." && pwd)
built=${1:-$tree/build/release/lib}
out=$tree/debian/libzxcore3d1.symbols

for library in "$built"/lib*.so.1; do
  readelf -d "$library" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1 libzxcore3d1 #MINVER#/p'
  nm -D --defined-only "$library" | LC_ALL=C sort -k 3 |
    awk '$2 != "A" { print ($2 ~ /^[WVuv]$/ ? " (optional)" : " ") $3 "@Base 1.0.0" }'
done >"$out"
echo "$out: $(grep -c '@Base' "$out") symbols"
