#!/bin/sh
# Checks of the source text that need no test run. Without arguments all of them; each prints what it found and where.
#
#   scripts/check.sh [format] [words] [headers] [tested-by] [tidy] [clang]
#
#   format    clang-format 14 would change nothing
#   words     no word that the glossary replaces (scripts/retired-words.txt)
#   headers   every header of src and siblings compiles alone, those of the kernels included
#   tested-by every kernel and stage of src/render names tests, and these exist
#   tidy      clang-tidy 14 with the checks of .clang-tidy, headers included (needs build/check, which make check
#             configures, or build/release)
#   clang     src, siblings and tools build with clang without a warning

set -eu
cd "$(dirname "$0")/.."

jobs=${JOBS:-$(nproc)}
failed=""

sources() { git ls-files "$@" | grep -E '\.(h|cpp)$'; }

# A check whose program this system's suite does not have is left out, and says so.
have() { command -v "$1" >/dev/null || { echo "  skipped: there is no $1" >&2; return 1; }; }

check_format() {
  have clang-format-14 || return 0
  sources | xargs -P "$jobs" -n 40 clang-format-14 --dry-run --Werror
}

check_words() {
  # One rule a line: a regular expression, the paths it holds for, what to write instead, separated by tabs.
  found=0
  tab=$(printf '\t')
  while IFS="$tab" read -r pattern paths instead; do
    case "$pattern" in ''|'#'*) continue ;; esac
    # shellcheck disable=SC2086
    if git grep -nPI -e "$pattern" -- $paths; then
      echo "  -> $instead" >&2
      found=1
    fi
  done < scripts/retired-words.txt
  return $found
}

check_headers() {
  include=build/check-headers
  mkdir -p "$include"
  ln -sfn "$PWD/src" "$include/ZxCore3D"
  kits=""
  for kit in siblings/*/; do kits="$kits -I${kit}include"; done
  # A kernel header is written for one instruction set at a time: any that has kernels will do.
  sources src siblings | grep '\.h$' | xargs -P "$jobs" -I{} sh -c '
    flags=""
    case "$1" in *-inl.h) flags="-march=haswell -ffp-contract=off" ;; esac
    printf "#include \"%s\"\n#include \"%s\"\n" "$1" "$1" |
      ${CXX:-g++} -x c++ -std=c++20 -Wall -Wextra -Werror -Wno-unused-function $flags -fsyntax-only -I. -Itests -I"$2" $3 - ||
      { echo "$1 does not compile alone" >&2; exit 1; }
  ' sh {} "$include" "$kits"
}

# Each file's comment holds "Tested by: tests/render/X.cpp (Suite.*, Other.Name), tests/...".
check_tested_by() {
  found=0
  for file in $(sources src/render/kernels src/render/stages); do
    tests=$(sed -n 's@^ *// \{0,1\}@@p' "$file" | tr '\n' ' ' | sed -n 's/.*Tested by: *//p' |
      grep -oE '^(,? *(and )?tests/[A-Za-z0-9_/]+\.cpp \([A-Za-z0-9_*., ]+\))+' | grep -oE 'tests/[^)]*\)' | tr -d ' ' || true)
    [ -n "$tests" ] || { echo "$file names no test"; found=1; continue; }
    for test in $tests; do
      path=${test%%(*}
      names=${test#*(}
      [ -f "$path" ] || { echo "$file: there is no $path"; found=1; continue; }
      for name in $(echo "${names%)}" | tr ',' ' ' | sed 's/\*/[A-Za-z0-9_]*/g'); do
        grep -qE "^ *(TYPED_)?TEST(_F|_P)?\(${name%%.*}, *${name#*.}[,)]" "$path" ||
          { echo "$file: no test of $path is named $name"; found=1; }
      done
    done
  done
  return $found
}

check_tidy() {
  have clang-tidy-14 || return 0
  commands=build/check
  [ -f $commands/compile_commands.json ] || commands=build/release
  [ -f $commands/compile_commands.json ] || { echo "neither build/check nor build/release: make check, or cmake --preset release" >&2; return 1; }
  sources src siblings tools | grep '\.cpp$' | grep -v '/tests/' |
    xargs -P "$jobs" -n 4 clang-tidy-14 -p $commands --quiet --warnings-as-errors='*' 2>/dev/null
}

check_clang() {
  have clang++-14 || return 0
  CXX=clang++-14 cmake -S . -B build/check-clang -G Ninja -DCMAKE_BUILD_TYPE=Debug -DZX_WARNINGS_AS_ERRORS=ON \
    -DZX_BUILD_TESTS=OFF -DZX_BUILD_TOOLS=ON > /dev/null
  cmake --build build/check-clang -j "$jobs" > build/check-clang/log 2>&1 || { grep -E 'error:|warning:' -A4 build/check-clang/log; return 1; }
}

[ $# -gt 0 ] || set -- format words headers tested-by tidy clang
for name in "$@"; do
  case "$name" in
    format|words|headers|tested-by|tidy|clang) ;;
    *) sed -n '2,12s/^# \{0,1\}//p' "$0" >&2; exit 2 ;;
  esac
  echo "check $name"
  "check_$(echo "$name" | tr - _)" || { failed="$failed $name"; }
done
[ -z "$failed" ] || { echo "failed:$failed" >&2; exit 1; }
