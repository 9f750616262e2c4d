#!/bin/sh
# Makes the Debian packages from a copy of the tree, so that nothing is written beside the tree itself,
# and has lintian look at them.
#
#   scripts/make-package.sh OUT
#
# OUT/*.deb are the packages afterwards, OUT/*.changes what tells of them.

set -eu

out=${1:?usage: make-package.sh OUT}
tree=$(cd "$(dirname "$0")/.." && pwd)
mkdir -p "$out"
out=$(cd "$out" && pwd)
copy=$out/zxcore3d

rm -rf "$copy"
rm -f "$out"/*.deb "$out"/*.changes "$out"/*.buildinfo
mkdir "$copy"
if git -C "$tree" -c safe.directory='*' rev-parse --is-inside-work-tree >/dev/null 2>&1; then
  # What belongs to the tree, as it stands: changed files too, and new ones that are not ignored.
  (cd "$tree" && git -c safe.directory='*' ls-files -z --cached --others --exclude-standard |
    xargs -0 sh -c 'for f; do [ ! -e "$f" ] || printf "%s\0" "$f"; done' sh |
    tar --null -T - -cf -) | tar -C "$copy" -xf -
else
  tar -C "$tree" --exclude=./build --exclude='./build-*' -cf - . | tar -C "$copy" -xf -
fi

cd "$copy"
DEB_BUILD_OPTIONS="parallel=${JOBS:-$(nproc)} noautodbgsym ${DEB_BUILD_OPTIONS-}" dpkg-buildpackage --no-sign --build=binary
lintian --fail-on error --allow-root "$out"/*.changes
rm -rf "$copy"
echo "The packages are in $out:"
ls "$out"/*.deb
