#!/bin/sh
# Writes debian/libzxcore3d1.symbols anew from the library package that `make package` left.
#
#   scripts/update-symbols.sh [build/package]
#
# Weak symbols are inline functions and templates, which a compiler may or may not emit: optional.

set -eu

tree=$(cd "$(dirname "$0")/.." && pwd)
packages=${1:-$tree/build/package}
out=$tree/debian/libzxcore3d1.symbols
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

dpkg-deb -x "$packages"/libzxcore3d1_*.deb "$work/root"
libraries=$(find "$work/root" -name 'lib*.so.1' | LC_ALL=C sort)
for library in $libraries; do
  readelf -d "$library" | sed -n 's/.*SONAME.*\[\(.*\)\]/\1 libzxcore3d1 #MINVER#/p'
  nm -D --defined-only "$library" | LC_ALL=C sort -k 3 |
    awk '$2 != "A" { print ($2 ~ /^[WVuv]$/ ? " (optional)" : " ") $3 "@Base 1.0.0" }'
done >"$out"
echo "$out: $(grep -c '@Base' "$out") symbols"
