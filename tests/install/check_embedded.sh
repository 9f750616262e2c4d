#!/bin/sh
# Builds a host's project that has the library's sources inside it, and runs its programs:
#
#   check_embedded.sh (add_subdirectory|fetchcontent) COMPILER SOURCE_ROOT WORK_DIR

set -eu

way=$1
compiler=$2
root=$3
work=$4

rm -rf "$work"
mkdir -p "$work"
# Without optimisation, since all of the library is compiled once more.
cmake -S "$root/tests/install/embedded" -B "$work/build" -G Ninja -DWAY="$way" -DZX_SOURCE="$root" \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0

# What the library writes stays in its own part of the build tree.
for name in bin lib include ZxCore3D.pc ZxCore3DConfig.cmake; do
  [ ! -e "$work/build/$name" ] || { echo "the library wrote $name beside the host's own files" >&2; exit 1; }
done
if ctest --test-dir "$work/build" -N | grep 'Test *#'; then
  echo "the tests above are the library's, not the host's" >&2
  exit 1
fi
# One of the two ways is built; in the other the same targets come from the same files.
if [ "$way" = add_subdirectory ]; then
  cmake --build "$work/build"
  cd "$work"
  build/consumer
  build/sibling
  # Only the host's own program is installed.
  cmake --install build --prefix "$work/installed"
  [ "$(cd installed && find . -type f)" = ./bin/consumer ] || { echo "the host installs the library's files" >&2; exit 1; }
else
  cmake --build "$work/build" --target sibling
  cd "$work"
  build/sibling
fi
