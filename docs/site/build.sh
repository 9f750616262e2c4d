#!/bin/sh
# One site from the pages of docs/, the docstrings of the installed headers, and pictures that the examples
# make. Warnings are errors: an undocumented name, a link that leads nowhere, a picture that is not there.
#
#   docs/site/build.sh BUILD_DIR OUT_DIR
#
# BUILD_DIR is a build with the library and the examples; the site begins at OUT_DIR/index.html.

set -eu

if [ $# -ne 2 ]; then
  echo "usage: build.sh BUILD_DIR OUT_DIR" >&2
  exit 2
fi
build=$1
mkdir -p "$2"
out=$(cd "$2" && pwd)
site=$(cd "$(dirname "$0")" && pwd)
docs=$(dirname "$site")
work=$build/docs
rm -rf "$work"
mkdir -p "$work/pages" "$work/pictures"
work=$(cd "$work" && pwd)

# --- Headers: those that are installed

DESTDIR="$work/stage" cmake --install "$build" >"$work/install.log"
include=$(dirname "$(find "$work/stage" -type d -name ZxCore3D -path '*/include/*' | head -n 1)")

# --- Pictures: each that the pages show has to be one that an example makes

run() { # picture program argument...
  picture=$1
  shift
  "$@" >"$work/example.log" 2>&1 || {
    echo "build.sh: $* failed:" >&2
    sed 's/^/  /' "$work/example.log" >&2
    exit 1
  }
  [ -s "$work/pictures/$picture" ] || {
    echo "build.sh: $* left no $picture" >&2
    exit 1
  }
}
for picture in "$docs"/pictures/*.png; do
  name=$(basename "$picture" .png)
  run "$name.png" "$build/bin/$name" "$work/pictures/$name.png"
done
run showcase.png "$build/bin/showcase" "$work/pictures/showcase.png"
# The pairs need OSMesa, which not every system has; without it they are those that the pages show.
if [ -x "$build/bin/porting_pairs" ]; then
  "$build/bin/porting_pairs" "$work/pairs" >"$work/example.log"
  for picture in "$docs"/pictures/porting/*.png; do
    cp "$work/pairs/$(basename "$picture")" "$work/pictures/porting-$(basename "$picture")"
  done
else
  for picture in "$docs"/pictures/porting/*.png; do
    cp "$picture" "$work/pictures/porting-$(basename "$picture")"
  done
fi

# --- Pages

names=" README"
for page in "$docs"/*.md; do
  names="$names $(basename "$page" .md)"
done
for page in "$docs"/*.md "$docs/../README.md"; do
  name=$(basename "$page" .md)
  prefix=""
  [ "$name" != porting ] || prefix=porting-
  awk -v page="$name" -v pages="$names " -v prefix="$prefix" -f "$site/pages.awk" "$page" >"$work/pages/$name.md"
done

# --- The site

rm -rf "$out"
mkdir -p "$out"
{
  cat "$site/Doxyfile"
  echo "INPUT = \"$work/pages\" \"$include\" \"$site/namespaces.dox\""
  echo "IMAGE_PATH = \"$work/pictures\""
  echo "OUTPUT_DIRECTORY = \"$out\""
  echo "STRIP_FROM_PATH = \"$include\" \"$work/pages\""
  echo "USE_MDFILE_AS_MAINPAGE = \"$work/pages/README.md\""
  echo "FILTER_PATTERNS = \"*.h=awk -f '$site/families.awk'\""
} >"$work/Doxyfile"
if ! doxygen "$work/Doxyfile" 2>"$work/warnings.txt"; then
  sed "s#$include/##; s#$work/pages/#docs/#" "$work/warnings.txt" >&2
  echo "build.sh: doxygen had something to say; see above" >&2
  exit 1
fi
echo "The site is at $out/index.html"
