#!/bin/sh
# Draws the pictures of the demonstration: models of Debian's package assimp-testmodels by zxrender, and
# the examples' own. An index.html beside them shows them all; at the end they are held against the
# digests of docs/same-pixels.md.
#
#   scripts/run-demo.sh BIN_DIR OUT_DIR
#
# MODELS names another place of the models, EMULATOR a program that runs the others.

set -eu

if [ $# -ne 2 ]; then
  echo "usage: run-demo.sh BIN_DIR OUT_DIR" >&2
  exit 2
fi
bin=$1
out=$2
models=${MODELS:-/usr/share/assimp/models}

if [ ! -d "$models" ]; then
  echo "run-demo.sh: no models at $models (Debian's package assimp-testmodels)" >&2
  exit 1
fi
mkdir -p "$out"
log="$out/demo.log"
page="$out/index.html"
: >"$log"

total=$(sed -n '/^# --- Pictures/,/^# --- End/p' "$0" | grep -cE '^(model|example) ')
count=0

begin() { # name
  count=$((count + 1))
  printf '[%2d/%d] %s\n' "$count" "$total" "$1"
}

fail() { # name command...
  name=$1
  shift
  echo "run-demo.sh: $name failed: $*" >&2
  sed 's/^/  /' "$log.part" >&2
  exit 1
}

# Runs a command that is to leave OUT_DIR/NAME.png; what it prints goes to the log and, if it fails, to
# the terminal.
draw() { # name command...
  name=$1
  shift
  rm -f "$out/$name.png"
  if ! "$@" >"$log.part" 2>&1; then
    fail "$name" "$@"
  fi
  cat "$log.part" >>"$log"
  [ -s "$out/$name.png" ] || fail "$name" "no picture was left by" "$@"
}

show() { # name title caption
  cat >>"$page" <<HTML
<figure>
<a href="$1.png"><img src="$1.png" alt="$2" loading="lazy"></a>
<figcaption><b>$2</b> $3</figcaption>
</figure>
HTML
}

model() { # name file title caption option...
  name=$1
  file=$2
  title=$3
  caption=$4
  shift 4
  begin "$title ($file)"
  if [ ! -f "$models/$file" ]; then
    echo "run-demo.sh: no model $models/$file" >&2
    exit 1
  fi
  # shellcheck disable=SC2086
  draw "$name" ${EMULATOR-} "$bin/zxrender" "$models/$file" -o "$out/$name.png" --size 800x600 --samples 4 "$@"
  # A picture that came with a warning is still a picture; the warning belongs before everyone's eyes.
  sed 's/^/        /' "$log.part"
  show "$name" "$title" "$caption"
}

example() { # name title caption
  begin "$2 (examples/$1)"
  # shellcheck disable=SC2086
  draw "$1" ${EMULATOR-} "$bin/$1" "$out/$1.png"
  show "$1" "$2" "$3"
}

cat >"$page" <<'HTML'
<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>ZxCore3D: pictures</title>
<style>
body { margin: 2rem auto; max-width: 76rem; padding: 0 1rem; font: 1rem/1.5 sans-serif; color: #222; background: #fafafa; }
h1, h2 { font-weight: 600; line-height: 1.2; }
.pictures { display: grid; grid-template-columns: repeat(auto-fill, minmax(20rem, 1fr)); gap: 1.5rem; }
figure { margin: 0; background: #fff; border: 1px solid #ddd; border-radius: 4px; overflow: hidden; }
figure img { display: block; width: 100%; height: auto; }
figcaption { padding: 0.6rem 0.9rem; }
</style>
</head>
<body>
<h1>ZxCore3D: pictures</h1>
<p>Every pixel here was computed by the library on the processor, in double precision, and comes out the
same on every run.</p>
<h2>The examples</h2>
<div class="pictures">
HTML

# --- Pictures

example showcase "Showcase" "Nearest (left) and bilinear (right) texturing, spot lights, a stencil mirror, blended glass, points and lines, and a ring by a custom shader pair."
example first_triangle "First triangle" "The least that a host does."
example spline_path "Spline path" "A closed cubic spline through twelve points."
example fit_homography "Plane set straight" "Left the photo with nine measured points, right the plane by the estimated projective map."
example triangle_contact "Triangle contact" "The common part of two triangles: a segment where they cut each other, a polygon where they lie in one plane."
example report_errors "Reported errors" "What was right is drawn, what was wrong was told."
example shaders "Shader pairs" "Above: standard stages, light at each pixel, discarded pixels. Below: depth of one's own, two textures, fog."
example shader_errors "Shader mistakes" "A floor drawn right, and with the mistakes that everybody makes."

printf '</div>\n<h2>The tutorial</h2>\n<div class="pictures">\n' >>"$page"

example step1_triangle "1. A triangle" "A context, vertices, a picture."
example step2_light "2. A camera and a light" "Matrices, normals, material."
example step3_texture "3. A texture" "Sampled nearest and bilinear."
example step4_arrays "4. A model from arrays" "Vertices in memory, and indices."
example step5_mirror "5. Blending and the stencil buffer" "A mirror."
example step6_targets "6. Rendering to a texture" "And the depth that it left."
example step7_shaders "7. A shader pair" "A uniform, an attribute, discarded pixels."
example step8_scene "8. Saving and loading a scene" "Drawn from the file."

printf '</div>\n<h2>Models by zxrender</h2>\n<div class="pictures">\n' >>"$page"

model duck Collada/duck.dae "Duck" "COLLADA, with a TGA texture."
model milk_truck glTF/CesiumMilkTruck/CesiumMilkTruck.gltf "Milk truck" "glTF 1, with a PNG texture."
model engine glTF2/2CylinderEngine-glTF-Binary/2CylinderEngine.glb "Cylinder engine" "glTF 2, binary, its parts in colours of their own."
model spider OBJ/spider.obj "Spider" "Wavefront OBJ, with JPEG textures." --camera -40,30
model bison PLY/Wuson.ply "Bison" "PLY, every face with a normal of its own." --camera 150,15
model bison_wire PLY/Wuson.ply "Bison, edges" "The same in lines." --camera 150,15 --wire
model teapots Collada/teapots.DAE "Teapots" "COLLADA: two materials and a texture."

# --- End

printf '</div>\n</body>\n</html>\n' >>"$page"
rm -f "$log.part"
echo "$total pictures are in $out; $page shows them."
# Pictures of another architecture are compared with those of this one by who asked for them.
[ -n "${EMULATOR-}" ] ||
  "$(dirname "$0")/../tools/zxrender/check-digests.sh" "$bin/zxrender" "$out" || [ $? -eq 3 ]
