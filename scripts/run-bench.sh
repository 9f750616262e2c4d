#!/bin/sh
# Runs every benchmark program of a build, one after the other.
#
#   scripts/run-bench.sh BIN_DIR [benchmark options]

set -eu
bin=$1
shift
found=0
for program in "$bin"/bench_*; do
  case "$program" in
    *bench_rivals*) continue ;;
  esac
  [ -x "$program" ] || continue
  found=1
  echo "== ${program##*/}"
  "$program" "$@"
done
[ "$found" -eq 1 ] || { echo "run-bench.sh: no benchmark program in $bin" >&2; exit 1; }
