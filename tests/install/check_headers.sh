#!/bin/sh
# Compiles every installed header alone:
#
#   check_headers.sh COMPILER INCLUDE_DIR STANDARD

set -eu

compiler=$1
include=$2
standard=$3

for tree in ZxCore3D ZxBaseKit ZxRunKit ZxPixelKit ZxDrawKit; do
  [ -d "$include/$tree" ] || { echo "no $include/$tree" >&2; exit 1; }
done
headers=$(cd "$include" && find ZxCore3D ZxBaseKit ZxRunKit ZxPixelKit ZxDrawKit -name '*.h' | sort)
echo "$headers" | xargs -P "$(nproc)" -I{} sh -c '
  printf "#include <%s>\n#include <%s>\n" "$3" "$3" |
    "$0" -x c++ -std="$1" -pedantic-errors -Wall -Wextra -Werror -fsyntax-only -isystem /nonexistent -I"$2" - ||
    { echo "$3 does not compile alone" >&2; exit 1; }
' "$compiler" "$standard" "$include" {}

# The one header brings in all of the library's own.
cd "$include"
find ZxCore3D -mindepth 2 -name '*.h' | sort > "${TMPDIR:-/tmp}/zx-headers.$$"
sed -n 's/^#include <\(ZxCore3D\/.*\)>$/\1/p' ZxCore3D/ZxCore3D.h | sort |
  diff - "${TMPDIR:-/tmp}/zx-headers.$$" || { echo "ZxCore3D.h does not include every header" >&2; exit 1; }
rm -f "${TMPDIR:-/tmp}/zx-headers.$$"
