#!/bin/sh
# check.sh PROGRAM WORK_DIR: models are saved, shown and drawn; the two pictures have to be equal.

set -eu

program=$1
work=$2
models=${MODELS:-/usr/share/assimp/models}

rm -rf "$work"
mkdir -p "$work"
for model in Collada/duck.dae OBJ/spider.obj glTF/CesiumMilkTruck/CesiumMilkTruck.gltf PLY/Wuson.ply; do
  name=$work/$(basename "${model%.*}")
  "$program" save "$models/$model" "$name.scene"
  "$program" show "$name.scene" "$name-shown.png"
  "$program" draw "$models/$model" "$name-drawn.png"
  [ -s "$name-drawn.png" ]
  cmp "$name-drawn.png" "$name-shown.png"
done

# Told, not shown: truncated and damaged files, and no file at all.
refused() {
  status=0
  "$program" show "$1" "$work/damaged.png" 2>"$work/damaged.log" || status=$?
  [ "$status" -eq 1 ] || { echo "$1: ended with $status" >&2; exit 1; }
  [ -s "$work/damaged.log" ] || { echo "$1: no reason was given" >&2; exit 1; }
  [ ! -e "$work/damaged.png" ] || { echo "$1: left a picture" >&2; exit 1; }
}
size=$(wc -c <"$work/duck.scene")
for length in 0 1 7 11 12 19 20 27 28 40 100 1000 $((size / 2)) $((size - 1)); do
  head -c "$length" "$work/duck.scene" >"$work/damaged.scene"
  refused "$work/damaged.scene"
done
# A size of the scene that no file has, in bytes 16 to 23.
{ head -c 16 "$work/duck.scene"; printf '\377\377\377\377\377\377\377\177'; tail -c +25 "$work/duck.scene"; } >"$work/damaged.scene"
refused "$work/damaged.scene"
refused "$work/no-such.scene"
