#!/bin/sh
# Builds the packages in a bare root of each suite and tries them in a second one, where nothing else is
# (scripts/check-package.sh). Needs root and the network; takes a quarter of an hour a suite.
#
#   scripts/test-package.sh [SUITE...]      otherwise bookworm and trixie
#   ZX_PACKAGES=DIR scripts/test-package.sh bookworm      with the packages in DIR, which are not built

set -eu

tree=$(cd "$(dirname "$0")/.." && pwd)
[ $# -gt 0 ] || set -- bookworm trixie
work=$(mktemp -d "${TMPDIR:-/tmp}/zx-package.XXXXXX")
trap 'rm -rf --one-file-system "$work"' EXIT

for suite in "$@"; do
  if [ -n "${ZX_PACKAGES-}" ]; then
    packages=$ZX_PACKAGES
  else
    ZX_BARE_ROOT=$work/build-$suite "$tree/scripts/bare-root.sh" "$suite" make package
    packages=$work/packages-$suite
    mkdir "$packages"
    mv "$work/build-$suite/zxcore3d/build/package"/*.deb "$packages"
    rm -rf --one-file-system "$work/build-$suite"
  fi
  ZX_BARE_ROOT=$work/try-$suite "$tree/scripts/bare-root.sh" "$suite" true
  mkdir "$work/try-$suite/packages"
  cp "$packages"/*.deb "$work/try-$suite/packages/"
  rm -f "$work/try-$suite/packages"/*-dbgsym_*.deb
  ZX_BARE_ROOT=$work/try-$suite "$tree/scripts/bare-root.sh" "$suite" scripts/check-package.sh /packages
  rm -rf --one-file-system "$work/try-$suite"
  echo "test-package.sh: the packages work on $suite"
done
