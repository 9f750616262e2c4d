#!/bin/sh
# Checks of the source text that need no test run. Without arguments all of them; each prints what it found and where.
#
#   scripts/check.sh [format] [words] [headers] [tidy] [clang]
#
#   format    clang-format 14 would change nothing
#   words     no word that the glossary replaces (scripts/retired-words.txt)
#   headers   every header of src and siblings compiles alone, those of the kernels included
#   tidy      clang-tidy 14 with the checks of .clang-tidy, headers included (needs build/release)
#   clang     src, siblings and tools build with clang without a warning

set -eu
cd "$(dirname "$0")/.."

jobs=${JOBS:-$(nproc)}
failed=""

sources() { git ls-files "$@" | grep -E '\.(h|cpp)$'; }

check_format() {
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
      ${CXX:-g++} -x c++ -std=c++20 -Wall -Wextra -Werror -Wno-unused-function $flags -fsyntax-only -I. -I"$2" $3 - ||
      { echo "$1 does not compile alone" >&2; exit 1; }
  ' sh {} "$include" "$kits"
}

check_tidy() {
  [ -f build/release/compile_commands.json ] || { echo "no build/release: cmake --preset release comes first" >&2; return 1; }
  sources src siblings tools | grep '\.cpp$' | grep -v '/tests/' |
    xargs -P "$jobs" -n 4 clang-tidy-14 -p build/release --quiet --warnings-as-errors='*' 2>/dev/null
}

check_clang() {
  CXX=clang++-14 cmake -S . -B build/check-clang -G Ninja -DCMAKE_BUILD_TYPE=Debug -DZX_WARNINGS_AS_ERRORS=ON \
    -DZX_BUILD_TESTS=OFF -DZX_BUILD_TOOLS=ON > /dev/null
  cmake --build build/check-clang -j "$jobs" > build/check-clang/log 2>&1 || { grep -E 'error:|warning:' -A4 build/check-clang/log; return 1; }
}

[ $# -gt 0 ] || set -- format words headers tidy clang
for name in "$@"; do
  case "$name" in
    format|words|headers|tidy|clang) ;;
    *) sed -n '2,10s/^# \{0,1\}//p' "$0" >&2; exit 2 ;;
  esac
  echo "check $name"
  "check_$name" || { failed="$failed $name"; }
done
[ -z "$failed" ] || { echo "failed:$failed" >&2; exit 1; }
