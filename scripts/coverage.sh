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

# One of the programs that test a room. What counts static initialisers would find those that do the counting here; and
# NaNs as colours leave other bits on the reference path than in the kernels where one is optimised less.
left_out=StaticInitialisers.*:SpanBytes.ColoursOutsideTheirRange
if [ "${1-}" = --run ]; then # program, which of its parts from 0 on, how many there are
  log=$build/$2-$3.log
  if ! GTEST_SHARD_INDEX=$3 GTEST_TOTAL_SHARDS=$4 "$build/bin/$2" --gtest_brief=1 --gtest_filter="-$left_out" \
    >"$log" 2>&1; then
    cat "$log" >&2
    echo "coverage.sh: $2 failed, part $3" >&2
    exit 1
  fi
  echo "coverage.sh: $2 passed, part $3 of 0 to $(($4 - 1))"
  exit
fi
failed=""

if [ "${1-}" != --count ]; then
  cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=Debug -DZX_COVERAGE=ON -DZX_BUILD_TESTS=ON -DZX_BUILD_TOOLS=OFF
  programs="test_render test_math test_object test_ZxPixelKit test_util test_types test_module test_ZxBaseKit"
  programs="$programs test_ZxRunKit test_ZxDrawKit"
  # shellcheck disable=SC2086
  cmake --build $build -j "$jobs" --target $programs
  find $build -name '*.gcda' -delete
  # The longest first, in parts.
  {
    for part in 0 1 2 3 4 5; do echo "test_render $part 6"; done
    for part in 0 1 2; do echo "test_math $part 3"; done
    for program in $programs; do echo "$program 0 1"; done | grep -v -e test_render -e test_math
  } | xargs -P "$jobs" -L 1 scripts/coverage.sh --run || failed=yes
fi

# The pages are gcovr's; it counts copies of a line apart, so the figures are those of the other.
mkdir -p $build/html
merge="" # newer ones refuse functions that are compiled several times, unless told
gcovr --help | grep -q merge-mode-functions && merge=--merge-mode-functions=separate
# shellcheck disable=SC2086
gcovr --root . --object-directory $build -j "$jobs" --filter 'src/' --filter 'siblings/[^/]*/(src|include)/' \
  --exclude-throw-branches --exclude-unreachable-branches $merge \
  --gcov-ignore-parse-errors --html-details $build/html/index.html >$build/gcovr.log 2>&1 ||
  echo "coverage.sh: no pages; see $build/gcovr.log" >&2
scripts/count-coverage.py $build -j "$jobs" || failed=yes
[ -z "$failed" ]
