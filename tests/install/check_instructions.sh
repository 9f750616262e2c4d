#!/bin/sh
# No fused multiply-add and no estimate of a reciprocal in a library, of x86-64 or of arm64:
#
#   check_instructions.sh OBJDUMP LIBRARY...

set -eu

objdump=$1
shift

x86='vfn?m(add|sub)|v4fn?madd|v?rcp(ss|ps)|v?rsqrt(ss|ps)|vrcp(14|28|ph|sh)|vrsqrt(14|28|ph|sh)'
arm='fn?m(add|sub)|fml[as]l?2?[^a-z0-9]|fcmla|frecp[esx]|frsqrt[es]|urecpe|ursqrte|bfml|bfdot|fmmla'

for library in "$@"; do
  count=$("$objdump" -d --no-show-raw-insn "$library" | grep -cE '^ *[0-9a-f]+:')
  [ "$count" -gt 100 ] || { echo "$library: could not be disassembled" >&2; exit 1; }
  if "$objdump" -d --no-show-raw-insn "$library" |
    grep -E "^ *[0-9a-f]+:\s+(\{[a-z]+\} )?($x86|$arm)" |
    head -20 | grep .; then
    echo "$library: the instructions above don't round as the arithmetic says" >&2
    exit 1
  fi
  echo "$library: $count instructions, none fused, no estimates"
done
