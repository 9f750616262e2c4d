#!/bin/sh
# Whether check_instructions.sh finds each instruction that it is there for:
#
#   check_fused_is_found.sh COMPILER OBJDUMP WORK_DIR

set -eu

compiler=$1
objdump=$2
work=$3
here=$(dirname "$0")
mkdir -p "$work"

case "$("$compiler" -dumpmachine)" in
  x86_64*)
    fused="vfmadd213sd %xmm0,%xmm1,%xmm2|vfnmsub231ps %ymm0,%ymm1,%ymm2|rcpps %xmm0,%xmm1|vrsqrt14pd %zmm0,%zmm1"
    plain="mulsd %xmm0,%xmm1"
    ;;
  aarch64*)
    fused="fmadd d0,d1,d2,d3|fmsub d0,d1,d2,d3|fnmadd d0,d1,d2,d3|fnmsub s0,s1,s2,s3|fmla v0.2d,v1.2d,v2.2d"
    fused="$fused|fmls v0.4s,v1.4s,v2.4s|fmla v0.2d,v1.2d,v2.d[0]|frecpe v0.2d,v1.2d|frsqrts d0,d1,d2"
    plain="fmul d0,d1,d2"
    ;;
  *)
    echo "no instructions of this processor are known" >&2
    exit 1
    ;;
esac

library() { # instruction
  {
    echo ".text"
    echo ".rept 200"
    echo "$plain"
    echo ".endr"
    echo "$1"
  } >"$work/sample.s"
  "$compiler" -c "$work/sample.s" -o "$work/sample.o"
  sh "$here/check_instructions.sh" "$objdump" "$work/sample.o" >/dev/null 2>&1
}

library "$plain" || { echo "$plain is taken for a fused instruction" >&2; exit 1; }
echo "$fused" | tr '|' '\n' | while read -r instruction; do
  if library "$instruction"; then
    echo "$instruction is not found" >&2
    exit 1
  fi
done
