#!/bin/sh
# Measures which lines and branches of src and siblings the tests run: a table on the terminal, and a page for each
# file in build/coverage/html.
#
#   scripts/coverage.sh
#
# Branches that only an exception takes are left out, and a kernel counts once over all instruction sets: a branch
# that any of them took is taken. JOBS names how many processes compile.

set -eu
cd "$(dirname "$0")/.."
jobs=${JOBS:-$(nproc)}
build=build/coverage

cmake -S . -B $build -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-O0 -g1 --coverage -fprofile-update=atomic" \
  -DZX_BUILD_TESTS=ON -DZX_BUILD_TOOLS=ON
cmake --build $build -j "$jobs"
find $build -name '*.gcda' -delete
# Without what builds projects of its own, and without the pages.
ctest --test-dir $build -j "$jobs" -E '^(install_|pages_|build_|tsan_)' --output-on-failure || {
  echo "coverage.sh: tests failed; what follows counts what they ran" >&2
}
mkdir -p $build/html
gcovr --root . --object-directory $build -j "$jobs" \
  --filter 'src/' --filter 'siblings/[^/]*/(src|include)/' --exclude '.*/tests/.*' \
  --exclude-throw-branches --exclude-unreachable-branches --merge-mode-functions=separate \
  --gcov-ignore-parse-errors \
  --html-details $build/html/index.html --json $build/coverage.json --json-summary $build/summary.json \
  --txt $build/lines.txt --print-summary
gcovr --add-tracefile $build/coverage.json --root . --branches --exclude-throw-branches --txt $build/branches.txt
cat $build/lines.txt
