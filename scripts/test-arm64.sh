#!/bin/sh
# Builds the library for arm64 by Debian's cross compiler, runs it under qemu, and compares what it computes with
# the build for this machine: hashes of scenes, matrices, splines and files, and the demonstration's pictures.
#
#   scripts/test-arm64.sh           everything, the tests among it
#   scripts/test-arm64.sh --part    hashes and instructions alone, in a few minutes
#
# JOBS names how many processes compile. Where the arm64 packages cannot stand beside this system's own, all of it
# runs in a bare root of the same release.

set -eu

part=""
[ "${1-}" != --part ] || part=yes
cd "$(dirname "$0")/.."
jobs=${JOBS:-$(nproc)}
scenes=500
[ -z "$part" ] || scenes=100

status=0
scripts/install-packages.sh build test demo arm64 || status=$?
if [ "$status" -eq 3 ]; then
  suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
  exec scripts/bare-root.sh "$suite" scripts/test-arm64.sh "$@"
fi
[ "$status" -eq 0 ] || exit "$status"

say() { printf '%s  %s\n' "$(date +%H:%M:%S)" "$*"; }

targets="zx_digest ZxCore3D ZxPixelKit"
demo_targets=""
for source in examples/*.cpp examples/tutorial/*.cpp; do
  name=${source##*/}
  demo_targets="$demo_targets example_${name%.cpp}"
done

say "building for this machine"
cmake --preset release -DZX_BUILD_TESTS=ON -DZX_BUILD_TOOLS=ON
# shellcheck disable=SC2086
cmake --build --preset release -j "$jobs" --target zx_digest $([ -n "$part" ] || echo zxrender $demo_targets)
say "building for arm64"
cmake --preset arm64 -DZX_BUILD_TESTS=ON -DZX_BUILD_TOOLS=ON
if [ -n "$part" ]; then
  # shellcheck disable=SC2086
  cmake --build --preset arm64 -j "$jobs" --target $targets
else
  cmake --build --preset arm64 -j "$jobs"
fi

say "comparing hashes"
build/release/bin/zx_digest $scenes >build/digest-native.txt
qemu-aarch64-static build/arm64/bin/zx_digest $scenes >build/digest-arm64.txt
diff build/digest-native.txt build/digest-arm64.txt || {
  echo "above: '<' is this machine's, '>' is arm64's" >&2
  exit 1
}
say "$(wc -l <build/digest-native.txt) hashes are the same"

if [ -n "$part" ]; then
  ctest --preset arm64 -R '^install_(no_fused|fused_is_found)$'
  exit 0
fi

# Left out: what starts programs of its own, which the emulator does not follow (consumer projects, the site of pages,
# zxrender's tests), and the thread sanitizer, which needs a real processor.
say "running the tests under qemu"
ctest --preset arm64 -j "$jobs" -E '^(install_(consumer|embedded|bare|bits)|pages_site|example_|zxrender|test_zxrender)' \
  -LE 'test_zxrender|examples|tsan'

say "drawing the demonstration's pictures twice"
scripts/run-demo.sh build/release/bin build/demo-native
EMULATOR=qemu-aarch64-static scripts/run-demo.sh build/arm64/bin build/demo-arm64
for picture in build/demo-native/*.png; do
  cmp "$picture" "build/demo-arm64/${picture##*/}"
done
say "$(find build/demo-native -name '*.png' | wc -l) pictures are the same"
