#!/bin/sh
# Prints what a library exports, one demangled name a line, sorted: list_exports.sh LIBRARY

set -eu

nm -DC --defined-only "$1" | cut -d' ' -f3- | LC_ALL=C sort -u
