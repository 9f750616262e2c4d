#!/bin/sh
# Runs the demonstration's programs and the object model's tests under valgrind's memcheck: reads of what was never
# written, accesses outside of any block, blocks that are freed twice, and memory that is lost at the end.
#
#   scripts/valgrind.sh BIN_DIR
#
# The first finding ends the script, which then prints it. Valgrind knows no AVX-512, and the library, which asks the
# processor that valgrind shows it, runs its AVX2 kernels. MODELS names another place of the models.

set -eu

if [ $# -ne 1 ]; then
  echo "usage: valgrind.sh BIN_DIR" >&2
  exit 2
fi
bin=$(cd "$1" && pwd)
cd "$(dirname "$0")/.."
models=${MODELS:-/usr/share/assimp/models}
out=build/valgrind
mkdir -p "$out"

# The tests have a malloc of their own, which valgrind replaces too; what needs it is skipped then.
check() { # name command...
  name=$1
  shift
  begun=$(date +%s)
  if ! valgrind --tool=memcheck --leak-check=full --show-leak-kinds=definite,indirect,possible \
    --errors-for-leak-kinds=definite,indirect,possible --error-exitcode=9 --soname-synonyms=somalloc=NONE \
    --suppressions=scripts/valgrind.supp --log-file="$out/$name.log" "$@" >"$out/$name.out" 2>&1; then
    tail -n 20 "$out/$name.out" >&2
    echo "valgrind.sh: $name: see $out/$name.log" >&2
    sed 's/^/  /' "$out/$name.log" >&2
    exit 1
  fi
  # Processes that it began have summaries too, and a program without any was not looked at.
  if grep -q 'ERROR SUMMARY: [1-9]' "$out/$name.log" || ! grep -q 'ERROR SUMMARY: 0 ' "$out/$name.log"; then
    echo "valgrind.sh: $name: a process of its own failed, or none was looked at: see $out/$name.log" >&2
    exit 1
  fi
  programs=$((programs + 1))
  echo "$name: no error, $(($(date +%s) - begun)) s"
}
programs=0

for name in first_triangle showcase spline_path fit_homography triangle_contact report_errors shaders shader_errors \
  step1_triangle step2_light step3_texture step4_arrays step5_mirror step6_targets step7_shaders step8_scene; do
  check "$name" "$bin/$name" "$out/$name.png"
done
for model in OBJ/spider.obj glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb; do
  check "zxrender-$(basename "$model")" "$bin/zxrender" "$models/$model" -o "$out/model.png" --size 200x150
done
# Valgrind turns whole numbers of 64 bits into floats by way of doubles, which rounds twice.
check test_object "$bin/test_object" --gtest_brief=1 --gtest_filter=-TVariantGet.Int64:TVariantGet.Uint64
echo "valgrind: no error in $programs programs"
