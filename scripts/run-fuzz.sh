#!/bin/sh
# Runs the fuzz targets of a build, one after the other and each in one process, and counts what was executed.
#
#   scripts/run-fuzz.sh BIN_DIR SECONDS [TARGET...]
#   scripts/run-fuzz.sh BIN_DIR merge [TARGET...]
#   scripts/run-fuzz.sh BIN_DIR table
#
# SECONDS are for each target; without a name, all of them run. What a target finds new stays in BIN_DIR/../runs/TARGET
# and the next run goes on from there; the count of each run goes to BIN_DIR/../runs/executions.tsv. At the end a table
# is printed: executions and seconds of each target over all runs, and their sums. An input that breaks a target is kept
# beside them, the other targets still run, and the exit code is 1. "merge" adds to the corpora in fuzz/corpus what the
# runs found and the corpora do not reach, the smallest inputs first, up to MOST files (200) of at most 2 KiB each.
set -eu

bin=$1
task=$2
shift 2
root=$(cd "$(dirname "$0")/.." && pwd)
runs=$(dirname "$bin")/runs
counts=$runs/executions.tsv
mkdir -p "$runs"

if [ $# -eq 0 ]; then
  for program in "$bin"/fuzz_*; do
    [ -x "$program" ] && set -- "$@" "${program##*/}"
  done
fi
[ $# -gt 0 ] || { echo "run-fuzz.sh: no fuzz target in $bin" >&2; exit 1; }

table() {
  awk -F '\t' '
    { n[$1] += $2; s[$1] += $3; b[$1] += $4 }
    END {
      printf "%-20s %14s %9s %9s\n", "target", "executions", "seconds", "findings"
      sort = "sort"
      for (t in n) {
        printf "%-20s %14d %9d %9d\n", t, n[t], s[t], b[t] | sort
        all += n[t]; time += s[t]; bad += b[t]
      }
      close(sort)
      printf "%-20s %14d %9d %9d\n", "sum", all, time, bad
    }' "$counts"
}

run() { # TARGET
  mkdir -p "$runs/$1"
  echo "== $1, $task s"
  begun=$(date +%s)
  log=$runs/$1.log
  broken=0
  "$bin/$1" -max_total_time="$task" -timeout=60 -print_final_stats=1 -artifact_prefix="$runs/$1-" \
    "$runs/$1" "$root/fuzz/corpus/$1" > "$log" 2>&1 || broken=1
  # A target that breaks prints no statistics of its own accord in every case: the last count it told stands for it.
  done=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  [ -n "$done" ] || done=$(sed -n 's/^#\([0-9]*\).*/\1/p' "$log" | tail -n 1)
  printf '%s\t%s\t%s\t%s\n' "$1" "${done:-0}" "$(($(date +%s) - begun))" "$broken" >> "$counts"
  if [ "$broken" -ne 0 ]; then
    grep -m 1 -A 12 -E 'ERROR|runtime error|deadly signal' "$log" || tail -n 20 "$log"
    echo "run-fuzz.sh: $1 broke; what broke it: $(sed -n 's/.*Test unit written to //p' "$log"), all it said: $log" >&2
  fi
  return "$broken"
}

merge() { # TARGET
  fresh=$(mktemp -d)
  mkdir -p "$runs/$1"
  "$bin/$1" -merge=1 -max_len=2048 "$fresh" "$root/fuzz/corpus/$1" "$runs/$1" > "$runs/$1.log" 2>&1
  find "$fresh" -type f -printf '%s %f\n' | sort -n | cut -d ' ' -f 2 | head -n "${MOST:-200}" | while read -r file; do
    # Seeds of the corpus have names that say what they are, and stay.
    same=$(find "$root/fuzz/corpus/$1" -type f -exec cmp -s {} "$fresh/$file" \; -print -quit)
    [ -n "$same" ] || cp "$fresh/$file" "$root/fuzz/corpus/$1/$file"
  done
  rm -rf "$fresh"
  echo "$1: $(find "$root/fuzz/corpus/$1" -type f | wc -l) files, $(du -sb "$root/fuzz/corpus/$1" | cut -f 1) bytes"
}

failed=0
case $task in
  table) ;;
  merge) for target; do merge "$target"; done ;;
  *) for target; do run "$target" || failed=1; done ;;
esac
[ "$task" = merge ] || table
exit "$failed"
