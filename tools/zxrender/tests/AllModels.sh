#!/bin/sh
# Draws every file of Debian's package assimp-testmodels, whatever it is, and leaves a table of what
# became of each: no crash, no hang, a reason for whatever is refused.
#
#   AllModels.sh ZXRENDER OUT_DIR [MODELS]
#
# With SANITIZED=1 in the environment, a file that wants too much memory may end its process: that is
# what the address sanitizer does about it.

set -eu

program=$1
out=$2
models=${3:-/usr/share/assimp/models}
table="$out/all-models.md"

fail() {
  echo "AllModels.sh: $*" >&2
  exit 1
}

[ -d "$models" ] || fail "no models at $models (Debian's package assimp-testmodels)"
rm -rf "$out"
mkdir -p "$out/pictures"
cd "$models"
find . -type f | sed 's|^\./||' | LC_ALL=C sort >"$out/list"
files=$(wc -l <"$out/list")
[ "$files" -ge 500 ] || fail "only $files files at $models"

status=0
timeout 900 "$program" --list "$out/list" --json --timeout 60 --size 64x48 \
  --output "$out/pictures/{n}.png" >"$out/lines.json" 2>"$out/messages" || status=$?
# Some are refused, as they are no models.
[ "$status" -eq 1 ] || fail "zxrender ended with status $status"
[ "$(wc -l <"$out/lines.json")" -eq "$files" ] || fail "not a line for each of $files files"

# The fields of an object in one line. Names come back as they were, quotes apart.
field() { sed -n 's/.*"'"$1"'":\("\(\(\\.\|[^"\\]\)*\)"\|\([0-9]*\)\).*/\2\4/p'; }

{
  echo "# What zxrender makes of assimp-testmodels"
  echo
  echo "| file | status | triangles | seconds | reason or digest |"
  echo "|---|---|---|---|---|"
} >"$table"
number=0
drawn=0
while IFS= read -r line; do
  number=$((number + 1))
  file=$(printf '%s\n' "$line" | field file)
  what=$(printf '%s\n' "$line" | field status)
  reason=$(printf '%s\n' "$line" | field reason)
  [ "$file" = "$(sed -n "${number}p" "$out/list")" ] || fail "line $number is of $file"
  if [ "${SANITIZED:-0}" = 1 ] && [ "$file:$what" = "invalid/OutOfMemory.off:crashed" ]; then
    what=memory
  fi
  case "$what" in
    drawn)
      drawn=$((drawn + 1))
      picture="$out/pictures/$(printf '%03d' $((number - 1))).png"
      [ -s "$picture" ] || fail "$file is drawn, but there is no $picture"
      reason=$(printf '%s\n' "$line" | field digest | cut -c1-16)
      ;;
    refused | memory)
      [ -n "$reason" ] || fail "$file is refused without a reason"
      ;;
    *) fail "$file: $what: $reason" ;;
  esac
  triangles=$(printf '%s\n' "$line" | field triangles)
  seconds=$(printf '%s\n' "$line" | sed -n 's/.*"load":\([0-9.e-]*\).*/\1/p')
  printf '| %s | %s | %s | %s | %s |\n' "$file" "$what" "$triangles" "$seconds" \
    "$(printf '%s' "$reason" | sed 's/|/\\|/g')" >>"$table"
done <"$out/lines.json"

grep -q '^| invalid/OutOfMemory.off | \(memory\|refused\) |' "$table" ||
  fail "invalid/OutOfMemory.off is not given up for its memory"
[ "$drawn" -ge 300 ] || fail "only $drawn of $files files are drawn"
echo "$drawn of $files files drawn; $table tells of each"
