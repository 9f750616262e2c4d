#!/bin/sh
# Runs every fuzz target of a build on a copy of its corpus.
#
#   scripts/run-fuzz.sh BIN_DIR SECONDS

set -eu
bin=$1
seconds=$2
root=$(cd "$(dirname "$0")/.." && pwd)
found=0
for program in "$bin"/fuzz_*; do
  [ -x "$program" ] || continue
  found=1
  name=${program##*/}
  work=$(mktemp -d)
  echo "== $name, $seconds s"
  "$program" -max_total_time="$seconds" -print_final_stats=1 -artifact_prefix="$work/" \
    "$work" "$root/fuzz/corpus/$name" || { echo "what broke it lies in $work" >&2; exit 1; }
  rm -rf "$work"
done
[ "$found" -eq 1 ] || { echo "run-fuzz.sh: no fuzz target in $bin" >&2; exit 1; }
