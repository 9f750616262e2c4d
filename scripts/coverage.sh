#!/bin/sh
# Measures which lines and branches of src and siblings the tests run: a table by rooms, a list of what is not run and
# has no reason in docs/coverage.md, and a page for each file in build/coverage/html. False if something is not run that
# is to be (scripts/count-coverage.py has the aims).
#
#   scripts/coverage.sh [--count]
#
# With --count nothing is built or run: it counts once more what the last run left. JOBS names how many processes
# compile and test.

set -eu
cd "$(dirname "$0")/.."
jobs=${JOBS:-$(nproc)}
build=build/coverage

# The programs that test a room; the renderer's once more at each lower instruction set. What counts static
# initialisers would find those that do the counting here.
run() { # program instruction-set
  [ "$2" = best ] || export ZX_SPAN_LEVEL="$2"
  result=0
  "$build/bin/$1" --gtest_brief=1 --gtest_filter=-StaticInitialisers.* >"$build/$1-$2.log" 2>&1 || result=$?
  [ "$result" -eq 0 ] && echo "coverage.sh: $1 ($2) passed" && return 0
  [ "$result" -eq 77 ] && echo "coverage.sh: $1 ($2) skipped: this processor lacks the instructions" && return 0
  cat "$build/$1-$2.log" >&2
  echo "coverage.sh: $1 ($2) failed" >&2
  return 1
}
if [ "${1-}" = --run ]; then
  run "$2" "$3"
  exit
fi

if [ "${1-}" != --count ]; then
  cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=Debug -DZX_BUILD_TESTS=ON -DZX_BUILD_TOOLS=OFF \
    -DCMAKE_CXX_FLAGS_DEBUG="-O0 -g1 --coverage -fprofile-update=atomic"
  programs="test_render test_math test_object test_ZxPixelKit test_util test_types test_module test_ZxBaseKit"
  programs="$programs test_ZxRunKit test_ZxDrawKit"
  # shellcheck disable=SC2086
  cmake --build $build -j "$jobs" --target $programs
  find $build -name '*.gcda' -delete
  {
    for program in $programs; do echo "$program best"; done
    for level in reference SSE2 SSSE3 AVX2; do echo "test_render $level"; done
  } | xargs -P "$jobs" -L 1 scripts/coverage.sh --run
fi

# The pages are gcovr's; it counts copies of a line apart, so the figures are those of the other.
mkdir -p $build/html
gcovr --root . --object-directory $build -j "$jobs" --filter 'src/' --filter 'siblings/[^/]*/(src|include)/' \
  --exclude-throw-branches --exclude-unreachable-branches --merge-mode-functions=separate \
  --gcov-ignore-parse-errors --html-details $build/html/index.html >$build/gcovr.log 2>&1 ||
  echo "coverage.sh: no pages; see $build/gcovr.log" >&2
scripts/count-coverage.py $build -j "$jobs"
