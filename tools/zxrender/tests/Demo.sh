#!/bin/sh
# Draws the demonstration and holds its pictures against the digests of docs/same-pixels.md; then
# sees that a picture that is not the same is noticed.
#
#   Demo.sh SOURCE_DIR BIN_DIR OUT_DIR

set -eu

source=$1
bin=$2
out=$3
check="$source/tools/zxrender/check-digests.sh"

rm -rf "$out"
"$source/scripts/run-demo.sh" "$bin" "$out"
"$check" "$bin/zxrender" "$out"
listed=$(sed -n 's/^| \([^ |]*\.png\) | `[0-9a-f]\{64\}` |.*/\1/p' "$source/docs/same-pixels.md" |
  LC_ALL=C sort)
drawn=$(cd "$out" && ls -- *.png | LC_ALL=C sort)
[ "$listed" = "$drawn" ] || { echo "docs/same-pixels.md lists other pictures than there are" >&2; exit 1; }

cp "$out/bison.png" "$out/duck.png"
rm "$out/teapots.png"
status=0
"$check" "$bin/zxrender" "$out" >"$out/changed" || status=$?
[ "$status" -eq 3 ]
grep -qx 'duck.png: other pixels' "$out/changed"
grep -qx 'teapots.png: is not there' "$out/changed"
[ "$(wc -l <"$out/changed")" -eq 3 ]
