#!/ bin / sh
#Holds the binary interface of the working tree's libraries against that of the last release, by libabigail: order of
#virtual functions, layout and size of what hosts see, exported symbols,                           \
    soname.What a release added is no change
#here; anything else is reported and fails.
#
#scripts / check - abi.sh compare with the newest release in abi /
#scripts / check - abi.sh-- renew write abi / NAME -                                               \
    VERSION.abi for the version that CMakeLists.txt states : at a release
#
#The dumps are of x86 - 64 and g++,                                                                \
    with what the installed headers declare and no private types.On another processor
#nothing is compared, and that is said.

set - eu cd "$(dirname " $0 ")/.."

    build = build / abi tree = $build / tree libraries =
                                   "ZxBaseKit ZxRunKit ZxPixelKit ZxDrawKit ZxCore3D"

    if["$(uname -m)" != x86_64];
then echo "check-abi.sh: the dumps in abi/ are of x86_64, not of $(uname -m): nothing is "
          "compared" > & 2 exit 0 fi

                               cmake -
                           S.- B "$build" - G Ninja - DCMAKE_BUILD_TYPE =
    Release - DCMAKE_CXX_FLAGS =
        -g - DZX_BUILD_TESTS = OFF - DZX_BUILD_TOOLS = OFF > "$build.log" cmake-- build "$build" - j
                                                                 "${JOBS:-$(nproc)}" >>
                                                       "$build.log" rm - rf "$tree" cmake-- install
                                                           "$build" --prefix "$tree" >>
                                                       "$build.log"

#A library's file, past the links to it.
                                                       library() {
  find "$tree" - type f - name "lib$1.so.*";
}

if
  ["${1-}" = --renew]; then
  version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
  mkdir -p abi
  for name in $libraries;
do
    abidw --no-corpus-path --no-comp-dir-path --no-show-locs --drop-private-types --headers-dir "$tree/include" \
      --out-file "abi/$name-$version.abi" "$(library "$name")"
    echo "abi/$name-$version.abi"
  done
  exit 0
fi

failed=""
for name in $libraries;
do
  release = $(find abi - name "$name-*.abi" | sort - V | tail - n 1)[-n "$release"] || {
    echo "check-abi.sh: abi/ has no release of $name" > &2;
    exit 2;
  }
echo "$name against $release" abidiff-- drop - private - types-- headers -
        dir2 "$tree/include" --no - added - syms-- no - show -
        locs "$release"
             "$(library " $name ")" ||
    failed = "$failed $name" done[-z "$failed"] || {
  echo "the binary interface changed:$failed" > &2;
  exit 1;
}
