#!/bin/sh
# Says what a target of the Makefile is about to do, before it does any of it:
#
#   scripts/announce.sh "PACKAGE-GROUP..." STEP...

set -eu

groups=$1
shift
# shellcheck disable=SC2086
missing=$("$(dirname "$0")/install-packages.sh" --list $groups)

echo "This will"
if [ -n "$missing" ]; then
  by=""
  [ "$(id -u)" -eq 0 ] || by=" by sudo"
  echo "  - install these Debian packages with apt-get$by, and what they depend on:"
  echo "$missing" | tr '|' '/' | fold -s -w 90 | sed 's/^/      /; s/ *$//'
fi
for step in "$@"; do
  echo "  - $step"
done
