#!/bin/sh
# Builds the libraries and zxrender twice, in two folders with names of different length, and compares every installed
# file byte by byte: scripts/check-reproducible.sh [OUT]. What is committed or changed here is what is built.

set -eu

root=$(cd "$(dirname "$0")/.." && pwd)
out=${1:-$root/build/reproducible}
jobs=${JOBS:-$(nproc)}

rm -rf "$out"
for folder in one quite/another; do
  place=$out/$folder
  mkdir -p "$place/source"
  (cd "$root" && git ls-files -z --cached --others --exclude-standard |
    xargs -0 sh -c 'for name; do [ ! -e "$name" ] || printf "%s\0" "$name"; done' sh |
    xargs -0 cp -P --parents -t "$place/source")
  # A compiler cache would hand the first build's objects to the second.
  CCACHE_DISABLE=1 cmake -S "$place/source" -B "$place/build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_COMPILER_LAUNCHER= -DCMAKE_INSTALL_PREFIX=/usr -DZX_BUILD_TESTS=OFF -DZX_BUILD_TOOLS=ON
  CCACHE_DISABLE=1 cmake --build "$place/build" -j "$jobs" --target ZxCore3D zxrender zxrender_pages
  DESTDIR=$place/installed cmake --install "$place/build" >/dev/null
done

if ! diff -r --no-dereference "$out/one/installed" "$out/quite/another/installed"; then
  echo "check-reproducible.sh: the files above differ" >&2
  exit 1
fi
count=$(find "$out/one/installed" -type f | wc -l)
libraries=$(find "$out/one/installed" -name '*.so.*' -type f | wc -l)
[ "$libraries" -ge 5 ] || { echo "check-reproducible.sh: only $libraries libraries" >&2; exit 1; }
echo "two builds in two folders: $count files, of which $libraries are libraries, with the same bytes"
