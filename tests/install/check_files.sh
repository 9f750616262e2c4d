#!/bin/sh
# Names in the install tree: check_files.sh LIBDIR INCLUDE_DIR VERSION SOURCE_DIR

set -eu

lib=$1
include=$2
version=$3
source=$4
major=${version%%.*}

for name in ZxCore3D ZxBaseKit ZxRunKit ZxPixelKit ZxDrawKit; do
  [ -f "$lib/lib$name.so.$version" ] || { echo "no lib$name.so.$version" >&2; exit 1; }
  [ "$(readlink "$lib/lib$name.so.$major")" = "lib$name.so.$version" ] || { echo "lib$name.so.$major leads elsewhere" >&2; exit 1; }
  [ "$(readlink "$lib/lib$name.so")" = "lib$name.so.$major" ] || { echo "lib$name.so leads elsewhere" >&2; exit 1; }
  readelf -dW "$lib/lib$name.so.$version" | grep -q "SONAME.*\[lib$name\.so\.$major\]" || { echo "lib$name: wrong soname" >&2; exit 1; }
  # Nothing of the build's paths; only the tree's own directory.
  if readelf -dW "$lib/lib$name.so.$version" | grep -E 'RPATH|RUNPATH' | grep -qvF '[$ORIGIN]'; then
    echo "lib$name carries a run path of the build" >&2
    exit 1
  fi
done
for file in cmake/ZxCore3D/ZxCore3DConfig.cmake cmake/ZxCore3D/ZxCore3DConfigVersion.cmake pkgconfig/ZxCore3D.pc; do
  [ -f "$lib/$file" ] || { echo "no $file" >&2; exit 1; }
done
# The headers of a room's own folder and of the siblings' include folders, no others: what stands in a folder below a
# room, or is included again for each instruction set, is the library's own.
expected=$({
  echo ZxCore3D/ZxCore3D.h
  (cd "$source/src" && find . -mindepth 2 -maxdepth 2 -name '*.h' ! -name '*-inl.h') | sed 's|^\./|ZxCore3D/|'
  (cd "$source/siblings" && find . -path './*/include/*.h') | sed 's|^\./[^/]*/include/||'
} | sort)
installed=$(cd "$include" && find . -type f | sed 's|^\./||' | sort)
[ "$(echo "$expected" | wc -l)" -gt 50 ] || { echo "no headers in $source" >&2; exit 1; }
if [ "$expected" != "$installed" ]; then
  echo "installed, but private ('+'), or public, but not installed ('-'):" >&2
  { echo "$expected" | sed 's/^/-/'; echo "$installed" | sed 's/^/+/'; } | sort -k1.2 | uniq -s 1 -u >&2
  exit 1
fi
# A private header among them would be found: there are some in every kind of place.
for private in render/kernels object/private; do
  [ -n "$(find "$source/src/$private" -name '*.h')" ] || { echo "no private header in src/$private" >&2; exit 1; }
done
