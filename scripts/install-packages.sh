#!/bin/sh
# Installs the Debian packages that the named groups need and the system lacks; without any missing it
# asks for no rights and no network.
#
#   scripts/install-packages.sh build test demo bench rivals fuzz docs

set -eu

packages=""
for group in "$@"; do
  case "$group" in
    build)
      packages="$packages g++ cmake ninja-build pkg-config libboost-dev qtbase5-dev libpng-dev"
      packages="$packages libjpeg62-turbo-dev libstb-dev libtomlplusplus-dev libhwy-dev libassimp-dev"
      ;;
    test) packages="$packages libgtest-dev libgmock-dev libturbojpeg0-dev libeigen3-dev libgl-dev binutils locales" ;;
    demo) packages="$packages assimp-testmodels" ;;
    bench) packages="$packages libbenchmark-dev libeigen3-dev libboost-serialization-dev" ;;
    rivals) packages="$packages libosmesa6-dev" ;;
    fuzz) packages="$packages clang-14 libclang-rt-14-dev" ;;
    docs) packages="$packages doxygen" ;;
    *)
      echo "install-packages.sh: no group '$group' (build, test, demo, bench, rivals, fuzz, docs)" >&2
      exit 2
      ;;
  esac
done

missing=""
for package in $packages; do
  status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
  case "$status" in
    *" installed") ;;
    *) missing="$missing $package" ;;
  esac
done
[ -n "$missing" ] || exit 0

as_root=""
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null 2>&1; then
    echo "These packages are missing, and neither root nor sudo is at hand to install them:" >&2
    echo " $missing" >&2
    exit 1
  fi
  as_root="sudo"
fi
echo "Installing:$missing"
$as_root apt-get update -qq
# shellcheck disable=SC2086
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing
