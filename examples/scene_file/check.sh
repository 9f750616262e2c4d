#!/bin/sh
# check.sh PROGRAM WORK_DIR: models are saved, shown and drawn; the two pictures have to be equal.

set -eu

program=$1
work=$2
models=${MODELS:-/usr/share/assimp/models}

rm -rf "$work"
mkdir -p "$work"
# The nearer one of two triangles is cut out, as its alpha lies below the cutoff.
cat >"$work/cutout.gltf" <<'GLTF'
{"asset":{"version":"2.0"},"scene":0,"scenes":[{"nodes":[0,1]}],
 "nodes":[{"mesh":0,"translation":[0,0,1]},{"mesh":1}],
 "meshes":[{"primitives":[{"attributes":{"POSITION":0},"material":0}]},
           {"primitives":[{"attributes":{"POSITION":0},"material":1}]}],
 "materials":[{"alphaMode":"MASK","pbrMetallicRoughness":{"baseColorFactor":[1,0,0,0.3]}},
              {"pbrMetallicRoughness":{"baseColorFactor":[0,1,0,1]}}],
 "accessors":[{"bufferView":0,"componentType":5126,"count":3,"type":"VEC3","min":[0,0,0],"max":[1,1,0]}],
 "bufferViews":[{"buffer":0,"byteLength":36}],
 "buffers":[{"byteLength":36,
   "uri":"data:application/octet-stream;base64,AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA"}]}
GLTF
for model in "$work/cutout.gltf" Collada/duck.dae OBJ/spider.obj glTF/CesiumMilkTruck/CesiumMilkTruck.gltf PLY/Wuson.ply; do
  name=$work/$(basename "${model%.*}")
  case $model in
    /*) ;;
    *) model=$models/$model ;;
  esac
  "$program" save "$model" "$name.scene"
  "$program" show "$name.scene" "$name-shown.png"
  "$program" draw "$model" "$name-drawn.png"
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
