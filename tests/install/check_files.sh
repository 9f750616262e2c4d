#!/bin/sh
# Names in the install tree: check_files.sh LIBDIR INCLUDE_DIR VERSION

set -eu

lib=$1
include=$2
version=$3
major=${version%%.*}

for name in ZxCore3D ZxBaseKit ZxRunKit ZxPixelKit ZxDrawKit; do
  [ -f "$lib/lib$name.so.$version" ] || { echo "no lib$name.so.$version" >&2; exit 1; }
  [ "$(readlink "$lib/lib$name.so.$major")" = "lib$name.so.$version" ] || { echo "lib$name.so.$major leads elsewhere" >&2; exit 1; }
  [ "$(readlink "$lib/lib$name.so")" = "lib$name.so.$major" ] || { echo "lib$name.so leads elsewhere" >&2; exit 1; }
  readelf -dW "$lib/lib$name.so.$version" | grep -q "SONAME.*\[lib$name\.so\.$major\]" || { echo "lib$name: wrong soname" >&2; exit 1; }
  # Nothing of the build's paths; only the tree's own directory.
  if readelf -dW "$lib/lib$name.so.$version" | grep -E 'RPATH|RUNPATH' | grep -qvF '[$ORIGIN]'; then
    echo "lib$name carries a run path of the build" >&2
    exit 1
  fi
done
for file in cmake/ZxCore3D/ZxCore3DConfig.cmake cmake/ZxCore3D/ZxCore3DConfigVersion.cmake pkgconfig/ZxCore3D.pc; do
  [ -f "$lib/$file" ] || { echo "no $file" >&2; exit 1; }
done
for header in ZxCore3D.h module/Module.h types/MAT4.h render/TRenderCPU.h object/TVariant.h math/TMatrixD.h util/TEvent.h; do
  [ -f "$include/ZxCore3D/$header" ] || { echo "no ZxCore3D/$header" >&2; exit 1; }
done
if find "$include" -name '*-inl.h' -o -name '*.cpp' | grep .; then
  echo "the files above are the library's own and must not be installed" >&2
  exit 1
fi
