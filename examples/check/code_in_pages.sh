#!/bin/sh
# Holds that the code which pages show is that of the examples, or puts it there anew.
#
#   code_in_pages.sh [--write] EXAMPLES_DIR PAGE...
#
# A page names the code in a comment, behind which it stands in a fence:
#
#   <!-- code: tutorial/step1_triangle.cpp -->      the whole file
#   <!-- code: shaders.cpp, own depth -->           what follows the line "// --- own depth" of the file, up
#                                                   to the next such line or the end of the namespace

set -eu

write=""
if [ "$1" = "--write" ]; then
  write=yes
  shift
fi
examples=$1
shift

status=0
for page in "$@"; do
  made=$(mktemp)
  trap 'rm -f "$made"' EXIT
  awk -v examples="$examples" -v page="$page" '
    function fail(text) {
      print page ":" FNR ": " text > "/dev/stderr"
      failed = 1
      exit 1
    }
    /^<!-- code: .* -->$/ {
      what = $0
      sub(/^<!-- code: /, "", what)
      sub(/ -->$/, "", what)
      comma = index(what, ", ")
      file = examples "/" (comma ? substr(what, 1, comma - 1) : what)
      section = comma ? substr(what, comma + 2) : ""
      print
      if ((getline line) <= 0 || line !~ /^```/) fail("no fence behind " $0)
      print line
      inside = section == ""
      lines = 0
      blanks = ""
      while ((getline line < file) > 0) {
        if (section != "" && (line ~ /^\/\/ --- / || line ~ /^} \/\/ namespace/)) {
          inside = line == "// --- " section
        } else if (inside && line == "") {
          blanks = blanks "\n"
        } else if (inside) {
          printf "%s%s\n", lines ? blanks : "", line
          blanks = ""
          ++lines
        }
      }
      close(file)
      if (!lines) fail("no such code: " what)
      while ((getline line) > 0 && line !~ /^```$/) {}
      print "```"
      ++shown
      next
    }
    { print }
    END { if (!failed && !shown) { print page ": shows no code" > "/dev/stderr"; exit 1 } }
  ' "$page" >"$made"
  if [ -n "$write" ]; then
    cat "$made" >"$page"
  elif ! cmp -s "$made" "$page"; then
    diff "$page" "$made" >&2 || true
    echo "$page does not show what the examples are; code_in_pages.sh --write $examples $page mends it." >&2
    status=1
  fi
  rm -f "$made"
done
exit "$status"
