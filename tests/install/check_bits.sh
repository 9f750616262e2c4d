#!/bin/sh
# A host compiled with contraction gets the library's bits from the headers' templates:
#
#   check_bits.sh COMPILER LIBDIR SOURCE_DIR WORK_DIR
#
# Ends with 77 where there is no such compiler.

set -eu

compiler=$1
lib=$2
source=$3
work=$4

command -v "$compiler" > /dev/null || exit 77
mkdir -p "$work"
cd "$work"
export PKG_CONFIG_PATH="$lib/pkgconfig"
for optimisation in -O2 -O3; do
  # The host's flags come last, where they win.
  # shellcheck disable=SC2046
  "$compiler" -std=c++17 -Wall -Wextra -Werror "$source/consumer/bits.cpp" -o bits \
    $(pkg-config --cflags --libs ZxCore3D) "$optimisation" -march=native -ffp-contract=fast
  LD_LIBRARY_PATH="$lib" ./bits
done
