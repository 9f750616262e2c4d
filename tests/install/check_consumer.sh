#!/bin/sh
# Builds and runs a host against the installed tree, by CMake and by pkg-config:
#
#   check_consumer.sh (cmake|pkg-config) COMPILER PREFIX LIBDIR SOURCE_DIR WORK_DIR VERSION

set -eu

way=$1
compiler=$2
prefix=$3
lib=$4
source=$5
work=$6
version=$7

rm -rf "$work"
mkdir -p "$work"
case "$way" in
  cmake)
    cmake -S "$source/consumer" -B "$work/build" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix"
    cmake --build "$work/build"
    cd "$work"
    build/consumer
    build/sibling
    build/one_header
    ;;
  pkg-config)
    cd "$work"
    export PKG_CONFIG_PATH="$lib/pkgconfig"
    [ "$(pkg-config --modversion ZxCore3D)" = "$version" ]
    # shellcheck disable=SC2046
    for program in consumer one_header; do
      "$compiler" -std=c++17 -Wall -Wextra -Werror "$source/consumer/$program.cpp" -o "$program" \
        $(pkg-config --cflags --libs ZxCore3D)
      LD_LIBRARY_PATH="$lib" "./$program"
    done
    ;;
esac
