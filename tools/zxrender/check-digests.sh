#!/bin/sh
# Holds pictures against the digests that docs/same-pixels.md lists.
#
#   check-digests.sh ZXRENDER PICTURE_DIR [LIST]
#
# LIST has rows "| NAME | `DIGEST` |". Status 0 if all pictures are there and the same, 3 if not.

set -eu

if [ $# -lt 2 ]; then
  echo "usage: check-digests.sh ZXRENDER PICTURE_DIR [LIST]" >&2
  exit 2
fi
program=$1
pictures=$2
list=${3:-$(dirname "$0")/../../docs/same-pixels.md}

rows=$(sed -n 's/^| \([^ |]*\.png\) | `\([0-9a-f]\{64\}\)` |.*/\2  \1/p' "$list")
if [ -z "$rows" ]; then
  echo "check-digests.sh: $list lists no digests" >&2
  exit 2
fi
count=0
other=0
# Only pictures that the list names: a directory may hold more.
while read -r digest name; do
  count=$((count + 1))
  if [ ! -f "$pictures/$name" ]; then
    echo "$name: is not there"
    other=$((other + 1))
  elif [ "$("$program" --digest "$pictures/$name" | cut -c1-64)" != "$digest" ]; then
    echo "$name: other pixels"
    other=$((other + 1))
  fi
done <<ROWS
$rows
ROWS
if [ "$other" -gt 0 ]; then
  echo "$other of $count pictures differ from those of docs/same-pixels.md, which says why that may be."
  exit 3
fi
echo "All $count pictures are the same, pixel for pixel, as those that docs/same-pixels.md lists."
