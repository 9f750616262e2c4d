#!/bin/sh
# Runs the fuzz targets of a build, one after the other and each in one process, and counts what was executed.
#
#   scripts/run-fuzz.sh BIN_DIR SECONDS [TARGET...]       so many seconds more for each target
#   scripts/run-fuzz.sh BIN_DIR upto=SECONDS [TARGET...]  until each has had so many over all runs
#   scripts/run-fuzz.sh BIN_DIR merge [TARGET...]
#   scripts/run-fuzz.sh BIN_DIR table
#
# Without a name, all targets run. What a target finds new stays in BIN_DIR/../runs/TARGET, and the next run goes on from
# there. A run is cut into slices of SLICE seconds (300); after each, and when it is interrupted, what was executed is
# added to BIN_DIR/../runs/executions.tsv. So a run that was stopped is taken up again by the same command with "upto".
#
# At the end a table is printed as docs/reliability.md has it: executions, seconds and findings of each target over all
# runs, and their sums. An input that breaks a target is kept beside the counts, the other targets still run, and the
# exit code is 1.
#
# "merge" leaves out of the corpora in fuzz/corpus what was found once and reaches nothing more by itself, and adds what
# the runs found and the corpora do not reach, the smallest inputs first, up to MOST files (200) of at most 2 KiB each.
# A seed whose name is no hash stays.
#
# A line "name = value" of fuzz/TARGET.options is an option of the target's runs.
set -eu

bin=$1
task=$2
shift 2
root=$(cd "$(dirname "$0")/.." && pwd)
runs=$(dirname "$bin")/runs
counts=$runs/executions.tsv
mkdir -p "$runs"
touch "$counts"

if [ $# -eq 0 ]; then
  for program in "$bin"/fuzz_*; do
    [ -x "$program" ] && set -- "$@" "${program##*/}"
  done
fi
[ $# -gt 0 ] || { echo "run-fuzz.sh: no fuzz target in $bin" >&2; exit 1; }

table() {
  awk -F '\t' '
    function grouped(n,  text) {
      for (; n >= 1000; n = int(n / 1000))
        text = sprintf(",%03d%s", n % 1000, text)
      return n text
    }
    function row(name, n, s, b) {
      printf "| %s | %s | %s | %s | %d |\n", name, grouped(n), grouped(s), grouped(s ? int(n / s) : 0), b
    }
    { n[$1] += $2; s[$1] += $3; b[$1] += $4; all += $2; time += $3; bad += $4 }
    END {
      print "| target | executions | seconds | a second | findings |"
      print "|---|---:|---:|---:|---:|"
      while (length(n)) {
        most = ""
        for (t in n)
          if (most == "" || n[t] > n[most])
            most = t
        row("`" most "`", n[most], s[most], b[most])
        delete n[most]
      }
      row("all", all, time, bad)
    }' "$counts"
}

options() { # TARGET
  [ ! -f "$root/fuzz/$1.options" ] || sed -n 's/^\([a-z_]*\) *= *\(.*\)$/-\1=\2/p' "$root/fuzz/$1.options"
}

child=
stopped=0
trap 'stopped=1; [ -z "$child" ] || kill -INT "$child" 2>/dev/null || true' INT TERM

slice() { # TARGET SECONDS
  mkdir -p "$runs/$1"
  begun=$(date +%s)
  log=$runs/$1.log
  broken=0
  # shellcheck disable=SC2046 # each option is a word
  "$bin/$1" $(options "$1") -max_total_time="$2" -timeout=60 -print_final_stats=1 -artifact_prefix="$runs/$1-" \
    "$runs/$1" "$root/fuzz/corpus/$1" > "$log" 2>&1 &
  child=$!
  while :; do # a signal ends the waiting before the target
    code=0
    wait "$child" || code=$?
    kill -0 "$child" 2>/dev/null || break
  done
  child=
  [ "$code" -eq 0 ] || [ "$stopped" -eq 1 ] || broken=1
  # A target that is broken or interrupted prints no statistics: the last count it told stands for it.
  done=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  [ -n "$done" ] || done=$(sed -n 's/^#\([0-9]*\).*/\1/p' "$log" | tail -n 1)
  printf '%s\t%s\t%s\t%s\n' "$1" "${done:-0}" "$(($(date +%s) - begun))" "$broken" >> "$counts"
  if [ "$broken" -ne 0 ]; then
    grep -m 1 -A 12 -E 'ERROR|runtime error|deadly signal' "$log" || tail -n 20 "$log"
    echo "run-fuzz.sh: $1 broke; what broke it: $(sed -n 's/.*Test unit written to //p' "$log"), all it said: $log" >&2
  fi
  return "$broken"
}

had() { # TARGET: its seconds over all runs
  awk -F '\t' -v target="$1" '$1 == target { s += $3 } END { print s + 0 }' "$counts"
}

run() { # TARGET
  case $task in
    upto=*) until=${task#upto=} ;;
    *) until=$(($(had "$1") + task)) ;;
  esac
  while [ "$stopped" -eq 0 ] && left=$((until - $(had "$1"))) && [ "$left" -gt 0 ]; do
    echo "== $1, $left s"
    most=${SLICE:-300}
    slice "$1" $((left < most ? left : most)) || return 1
  done
}

merge() { # TARGET
  corpus=$root/fuzz/corpus/$1
  fresh=$(mktemp -d)
  mkdir -p "$runs/$1"
  # What has a name that says what it is stays, then what was found before and is still needed, then what is new.
  find "$corpus" -type f | grep -vE '/[0-9a-f]{40}$' | xargs -r -d '\n' cp -t "$fresh"
  "$bin/$1" -merge=1 -max_len=2048 "$fresh" "$corpus" > "$runs/$1.log" 2>&1
  find "$corpus" -type f | grep -E '/[0-9a-f]{40}$' | xargs -r -d '\n' rm
  find "$fresh" -type f | grep -E '/[0-9a-f]{40}$' | xargs -r -d '\n' cp -t "$corpus"
  before=$(mktemp)
  find "$fresh" -type f -printf '%f\n' | sort > "$before"
  "$bin/$1" -merge=1 -max_len=2048 "$fresh" "$runs/$1" >> "$runs/$1.log" 2>&1
  find "$fresh" -type f -printf '%s %f\n' | sort -n | cut -d ' ' -f 2 | grep -vxFf "$before" |
    head -n "${MOST:-200}" | while read -r file; do cp "$fresh/$file" "$corpus/"; done
  rm -rf "$fresh" "$before"
  echo "$1: $(find "$corpus" -type f | wc -l) files, $(du -sb "$corpus" | cut -f 1) bytes"
}

failed=0
case $task in
  table) ;;
  merge) for target; do merge "$target"; done ;;
  *) for target; do run "$target" || failed=1; done ;;
esac
[ "$task" = merge ] || table
[ "$stopped" -eq 0 ] || exit 130
exit "$failed"
