#!/bin/sh
# Each thing that check_hardening.sh looks for is found to be missing: check_softness_is_found.sh COMPILER READELF FOLDER

set -eu

compiler=$1
readelf=$2
out=$3
here=$(dirname "$0")
mkdir -p "$out"
echo 'int f() { return 1; }' >"$out/f.cpp"

build() {
  name=$1
  shift
  "$compiler" -shared -fPIC -Wl,-z,relro,-z,now,-z,noexecstack "$@" "$out/f.cpp" -o "$out/$name.so"
}

refuses() {
  if sh "$here/check_hardening.sh" "$readelf" "$@" 2>"$out/said"; then
    echo "check_hardening.sh takes $*" >&2
    exit 1
  fi
}

build good
sh "$here/check_hardening.sh" "$readelf" "$out/good.so"
build lazy -Wl,-z,lazy
refuses "$out/lazy.so"
build norelro -Wl,-z,norelro
refuses "$out/norelro.so"
build execstack -Wl,-z,execstack
refuses "$out/execstack.so"
build elsewhere -Wl,-rpath,/usr/nowhere
refuses "$out/elsewhere.so"
refuses -checked __vsnprintf_chk "$out/good.so"
refuses "$out/good.so" "$out/lazy.so"
echo "what is missing is found"
