#!/bin/sh
# Holds the binary interface of the working tree's libraries against that of the last release, by libabigail: order of
# virtual functions, layout and size of what hosts see, exported symbols, soname. What a release added is no change
# here; anything else is reported and fails. CONTRIBUTING.md has the rule.
#
#   scripts/check-abi.sh           compare with the newest release in abi/
#   scripts/check-abi.sh --renew   write abi/NAME-VERSION.abi for the version that CMakeLists.txt states: at a release
#
# The dumps are of x86-64 and g++, with what the installed headers declare and no private types. On another processor
# nothing is compared, and that is said.

set -eu
cd "$(dirname "$0")/.."

build=build/abi
tree=$build/tree
libraries="ZxBaseKit ZxRunKit ZxPixelKit ZxDrawKit ZxCore3D"

if [ "$(uname -m)" != x86_64 ]; then
  echo "check-abi.sh: the dumps in abi/ are of x86_64, not of $(uname -m): nothing is compared" >&2
  exit 0
fi

mkdir -p "$build"
log=$build/log
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS=-g \
  -DZX_BUILD_TESTS=OFF -DZX_BUILD_TOOLS=OFF > "$log"
cmake --build "$build" -j "${JOBS:-$(nproc)}" >> "$log"
rm -rf "$tree"
cmake --install "$build" --prefix "$tree" >> "$log"

# A library's file, past the links to it.
library() { find "$tree" -type f -name "lib$1.so.*"; }

# What only the library itself sees is left out, so that it may change: types that no installed header declares.
seen="--exported-interfaces-only --no-corpus-path --drop-private-types"

if [ "${1-}" = --renew ]; then
  version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
  mkdir -p abi
  for name in $libraries; do
    # File names stay in the dump: by them a type is known to be of an installed header.
    # shellcheck disable=SC2086
    abidw $seen --no-comp-dir-path --short-locs --no-parameter-names --no-write-default-sizes \
      --headers-dir "$tree/include" --out-file "abi/$name-$version.abi" "$(library "$name")"
    echo "abi/$name-$version.abi"
  done
  exit 0
fi

# compare DUMP NAME: fails, and prints what changed, if anything did.
compare() {
  # shellcheck disable=SC2086
  abidiff $seen --headers-dir2 "$tree/include" --no-added-syms --no-show-locs "$1" "$(library "$2")"
}

newest() { find abi -name "$1-*.abi" | sort -V | tail -n 1; }

failed=""
for name in $libraries; do
  release=$(newest "$name")
  [ -n "$release" ] || { echo "check-abi.sh: abi/ has no release of $name" >&2; exit 2; }
  echo "$name against $release"
  compare "$release" "$name" || failed="$failed $name"
done
[ -z "$failed" ] || { echo "the binary interface changed:$failed" >&2; exit 1; }

# The comparison is worth something only if it finds such changes.
finds() {
  sed "$2" "$(newest ZxCore3D)" > "$build/changed.abi"
  if cmp -s "$(newest ZxCore3D)" "$build/changed.abi" || compare "$build/changed.abi" ZxCore3D > "$log" 2>&1; then
    echo "check-abi.sh: $1 would not be found" >&2
    exit 2
  fi
}
finds "a change of a context's size" "s/\\(name='TRenderCPU' size-in-bits='\\)/\\19/"
finds "virtual functions in another order" "s/vtable-offset='100'/vtable-offset='99'/"
finds "an exported symbol that is gone" "s/TRenderCPU8CullFaceEj/TRenderCPU8CullFaceEjj/"
finds "another soname" "s/soname='libZxCore3D.so.1'/soname='libZxCore3D.so.0'/"
