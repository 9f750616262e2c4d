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

# One of the programs that test a room. What counts static initialisers would find those that do the counting here.
if [ "${1-}" = --run ]; then
  if ! "$build/bin/$2" --gtest_brief=1 --gtest_filter=-StaticInitialisers.* >"$build/$2.log" 2>&1; then
    cat "$build/$2.log" >&2
    echo "coverage.sh: $2 failed" >&2
    exit 1
  fi
  echo "coverage.sh: $2 passed"
  exit
fi

if [ "${1-}" != --count ]; then
  cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=Debug -DZX_COVERAGE=ON -DZX_BUILD_TESTS=ON -DZX_BUILD_TOOLS=OFF
  programs="test_render test_math test_object test_ZxPixelKit test_util test_types test_module test_ZxBaseKit"
  programs="$programs test_ZxRunKit test_ZxDrawKit"
  # shellcheck disable=SC2086
  cmake --build $build -j "$jobs" --target $programs
  find $build -name '*.gcda' -delete
  # shellcheck disable=SC2086
  printf '%s\n' $programs | xargs -P "$jobs" -n 1 scripts/coverage.sh --run
fi

# The pages are gcovr's; it counts copies of a line apart, so the figures are those of the other.
mkdir -p $build/html
gcovr --root . --object-directory $build -j "$jobs" --filter 'src/' --filter 'siblings/[^/]*/(src|include)/' \
  --exclude-throw-branches --exclude-unreachable-branches --merge-mode-functions=separate \
  --gcov-ignore-parse-errors --html-details $build/html/index.html >$build/gcovr.log 2>&1 ||
  echo "coverage.sh: no pages; see $build/gcovr.log" >&2
scripts/count-coverage.py $build -j "$jobs"
