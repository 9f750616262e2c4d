#!/bin/sh
# The program in the README is the example of that name: check_readme.sh SOURCE_ROOT

set -eu

root=$1
sed -n '/^```cpp$/,/^```$/p' "$root/README.md" | sed '1d;$d' | diff - "$root/examples/first_triangle.cpp" ||
  { echo "the README's first program is not examples/first_triangle.cpp" >&2; exit 1; }

# One header is all that it takes.
includes=$(grep '^#include' "$root/examples/first_triangle.cpp")
[ "$includes" = '#include <ZxCore3D/ZxCore3D.h>' ] ||
  { echo "the README's first program includes more than the one header: $includes" >&2; exit 1; }

# Links to files lead somewhere.
bad=0
for page in "$root"/*.md "$root"/docs/*.md; do
  dir=$(dirname "$page")
  for link in $(grep -oE '\]\([^)#:]+' "$page" | sed 's/^](//'); do
    if [ ! -e "$dir/$link" ]; then
      echo "$page: nothing at $link" >&2
      bad=1
    fi
  done
done
exit $bad
