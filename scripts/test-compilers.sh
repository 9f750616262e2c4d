#!/bin/sh
# Builds with every compiler that this Debian has, and with Qt 6, and compares what each build computes with what
# the system's own g++ and Qt 5 compute.
#
#   scripts/test-compilers.sh
#   scripts/bare-root.sh trixie scripts/test-compilers.sh
#
# Each clang builds library and tools without a warning. The oldest, the newest and Qt 6 compute all hashes too; the two
# clangs draw the demonstration, which is held against the digests of docs/same-pixels.md; and with Qt 6 the tests of
# what stands on Qt run. JOBS names how many processes compile.

set -eu
cd "$(dirname "$0")/.."
jobs=${JOBS:-$(nproc)}
scripts/install-packages.sh build test demo clangs qt6

say() { printf '%s  %s\n' "$(date +%H:%M:%S)" "$*"; }

# NAME TARGETS DEFINITION...: builds in build/compilers/NAME; a warning is an error.
build() {
  folder=build/compilers/$1
  targets=$2
  shift 2
  mkdir -p "$folder"
  # shellcheck disable=SC2086
  if ! cmake -S . -B "$folder" -G Ninja -DZX_WARNINGS_AS_ERRORS=ON -DZX_BUILD_TESTS=ON -DZX_BUILD_TOOLS=ON "$@" >"$folder/log" 2>&1 ||
    ! cmake --build "$folder" -j "$jobs" --target $targets >>"$folder/log" 2>&1; then
    grep -E 'error|warning' -A4 "$folder/log" >&2 || tail -20 "$folder/log" >&2
    say "$folder: failed; all that was said is in its log"
    exit 1
  fi
}

# NAME: holds the hashes of build/compilers/NAME against those of the system's own g++.
compare() {
  "build/compilers/$1/bin/zx_digest" 500 >"build/compilers/$1.txt"
  diff build/compilers/gcc.txt "build/compilers/$1.txt" || {
    say "above: '<' is what g++ computes, '>' what $1 does"
    exit 1
  }
}

# NAME: draws the demonstration's pictures by build/compilers/NAME and holds them against the listed digests.
draw() {
  scripts/run-demo.sh "build/compilers/$1/bin" "build/compilers/$1/demo" >"build/compilers/$1/demo.log"
  tools/zxrender/check-digests.sh "build/compilers/$1/bin/zxrender" "build/compilers/$1/demo"
}

build gcc "all" -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=g++ -DZX_BUILD_TESTS=OFF
build gcc zx_digest
build/compilers/gcc/bin/zx_digest 500 >build/compilers/gcc.txt
say "$(g++ --version | head -1): $(wc -l <build/compilers/gcc.txt) hashes"

versions=""
for version in 13 14 15 16 17 18 19 20 21; do
  if command -v "clang++-$version" >/dev/null; then versions="$versions $version"; fi
done
first=$(echo "$versions" | awk '{ print $1 }')
last=$(echo "$versions" | awk '{ print $NF }')
for version in $versions; do
  case "$version" in
    "$first" | "$last")
      build "clang-$version" all -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER="clang++-$version" -DZX_BUILD_TESTS=OFF
      build "clang-$version" zx_digest
      compare "clang-$version"
      draw "clang-$version"
      say "clang $version: no warning, the same hashes and pictures"
      ;;
    *)
      build "clang-$version" "ZxCore3D zxrender" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER="clang++-$version"
      say "clang $version: no warning"
      ;;
  esac
done

build qt6 "zx_digest zxrender test_types test_util test_object" -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=g++ -DQT_VERSION_MAJOR=6
compare qt6
ldd build/compilers/qt6/bin/zxrender | grep -q libQt6Core || { say "zxrender was not linked with Qt 6"; exit 1; }
for test in types util object; do
  "build/compilers/qt6/bin/test_$test" --gtest_brief=1
done
say "Qt 6: no warning, the same hashes, the tests of types, util and object"
