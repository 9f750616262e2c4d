#!/bin/sh
# What a built library says about itself: relocations that are read-only once they are done, and all done before
# anything runs; a stack that is not executed; no text that is written to; no path of the build to look for libraries
# in but those beside it.
#
#   check_hardening.sh READELF [-checked NAME LIBRARY]... LIBRARY...
#
# -checked: the library imports a function, by which it shows that it was compiled with checks.

set -eu

readelf=$1
shift
bad=0

complain() {
  echo "$1" >&2
  bad=1
}

while [ $# -gt 0 ]; do
  if [ "$1" = -checked ]; then
    "$readelf" --wide --dyn-syms "$3" | grep -qE " UND $2(@| |\$)" || complain "$3: does not import $2"
    shift 3
    continue
  fi
  library=$1
  shift
  segments=$("$readelf" --wide --program-headers "$library")
  dynamic=$("$readelf" --wide --dynamic "$library")
  echo "$segments" | grep -q GNU_RELRO || complain "$library: no read-only relocations (-z relro)"
  echo "$dynamic" | grep -qE '\(BIND_NOW\)|FLAGS.*(BIND_NOW|NOW)' || complain "$library: bound lazily (-z now)"
  echo "$segments" | grep -E '^ *GNU_STACK' | grep -q ' RW ' || complain "$library: the stack is not RW alone"
  if echo "$segments" | grep -E '^ *LOAD' | grep -q ' RWE '; then
    complain "$library: a segment can be written and executed"
  fi
  if echo "$dynamic" | grep -qE '\(TEXTREL\)|FLAGS.*TEXTREL'; then
    complain "$library: relocations in its text"
  fi
  if echo "$dynamic" | grep -E '\((RPATH|RUNPATH)\)' | grep -vE '\[\$ORIGIN[^:]*\]'; then
    complain "$library: looks for libraries in the path above"
  fi
done
exit $bad
