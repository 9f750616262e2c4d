#!/bin/sh
# Installs the Debian packages that the named groups need and the system lacks; without any missing it
# asks for no rights and no network. Where a package's name differs from one suite to the next, a name
# stands for the first of its alternatives (one|other) that is installed or that apt knows. A name that ends in
# "?" is left out, and said to be, where the suite does not have it.
#
#   scripts/install-packages.sh build test check demo bench rivals fuzz docs qt6 clangs arm64 python package farm coverage valgrind abi
#   scripts/install-packages.sh --list build demo     only says which are missing

# Ends with 3, having installed nothing, if other packages would have to go for these: arm64's stand beside
# the system's own, which not every system allows.

set -eu

list_only=""
if [ "${1-}" = --list ]; then
  list_only=yes
  shift
fi

packages=""
for group in "$@"; do
  case "$group" in
    build)
      packages="$packages g++ cmake ninja-build pkg-config libboost-dev qtbase5-dev libpng-dev"
      packages="$packages libjpeg62-turbo-dev libstb-dev libtomlplusplus-dev libhwy-dev libassimp-dev"
      ;;
    test) packages="$packages libgtest-dev libgmock-dev libturbojpeg0-dev libeigen3-dev libgl-dev binutils locales" ;;
    # One version of the formatter and of the linter: another one finds other things.
    check) packages="$packages git clang-format-14? clang-tidy-14? clang-14?" ;;
    demo) packages="$packages assimp-testmodels" ;;
    bench) packages="$packages libbenchmark-dev libeigen3-dev libboost-serialization-dev" ;;
    rivals) packages="$packages libosmesa6-dev" ;;
    arm64)
      packages="$packages g++-aarch64-linux-gnu qemu-user-static qtbase5-dev:arm64 libpng-dev:arm64"
      packages="$packages libjpeg62-turbo-dev:arm64 libstb-dev:arm64 libtomlplusplus-dev:arm64 libhwy-dev:arm64"
      packages="$packages libassimp-dev:arm64 libturbojpeg0-dev:arm64 libgtest-dev:arm64 libgmock-dev:arm64"
      ;;
    docs) packages="$packages doxygen" ;;
    abi) packages="$packages abigail-tools" ;;
    qt6) packages="$packages qt6-base-dev" ;;
    clangs)
      for version in 13 14 15 16 17 18 19; do packages="$packages clang-$version?"; done
      ;;
    fuzz) packages="$packages clang libclang-rt-14-dev|libclang-rt-19-dev" ;;
    python)
      packages="$packages python3-dev python3-venv python3-pip python3-setuptools python3-wheel pybind11-dev"
      packages="$packages python3-numpy python3-pytest mypy"
      ;;
    package)
      packages="$packages build-essential debhelper dh-python dpkg-dev lintian pybind11-dev python3-dev"
      ;;
    coverage) packages="$packages gcovr" ;;
    valgrind) packages="$packages valgrind libc6-dbg" ;;
    farm) packages="$packages python3-distributed python3-numpy python3-pytest" ;;
    *)
      echo "install-packages.sh: no group '$group' (build, test, check, demo, bench, rivals, fuzz, docs, qt6, clangs, arm64, python, package, farm, coverage, valgrind, abi)" >&2
      exit 2
      ;;
  esac
done

installed() {
  case "$(dpkg-query -W -f='${Status}' "$1" 2>/dev/null || true)" in
    *" installed") return 0 ;;
  esac
  return 1
}

# Whether apt's lists are there and do not name it. An empty bare root has no lists until the update below.
lacks() {
  ! installed "$1" && [ -n "$(find /var/lib/apt/lists -name '*_Packages*' 2>/dev/null)" ] && ! apt-cache show "$1" >/dev/null 2>&1
}

left_out() { echo "install-packages.sh: this suite has no $1, so it is left out" >&2; }

missing=""
for package in $packages; do
  case "$package" in
    *\?) lacks "${package%\?}" && left_out "${package%\?}" && continue ;;
  esac
  found=""
  for name in $(echo "${package%\?}" | tr '|' ' '); do
    installed "$name" && found=yes && break
  done
  [ -n "$found" ] || missing="$missing $package"
done
[ -n "$missing" ] || exit 0
if [ -n "$list_only" ]; then
  echo "${missing# }" | tr -d '?'
  exit 0
fi

as_root=""
if [ "$(id -u)" -ne 0 ]; then
  if ! command -v sudo >/dev/null 2>&1; then
    echo "These packages are missing, and neither root nor sudo is at hand to install them:" >&2
    echo " $missing" >&2
    exit 1
  fi
  as_root="sudo"
fi
case "$missing" in
  *:arm64*) dpkg --print-foreign-architectures | grep -qx arm64 || $as_root dpkg --add-architecture arm64 ;;
esac
$as_root apt-get update -qq
names=""
for package in $missing; do
  case "$package" in
    *\?) lacks "${package%\?}" && left_out "${package%\?}" && continue ;;
  esac
  package=${package%\?}
  chosen=${package%%|*}
  for name in $(echo "$package" | tr '|' ' '); do
    if apt-cache show "$name" >/dev/null 2>&1; then
      chosen=$name
      break
    fi
  done
  names="$names $chosen"
done
[ -n "$names" ] || exit 0
# shellcheck disable=SC2086
if apt-get install -s --no-install-recommends $names 2>/dev/null | grep '^Remv'; then
  echo "install-packages.sh: the packages above would be removed for$names" >&2
  exit 3
fi
echo "Installing with apt-get${as_root:+, by $as_root}:$names"
# shellcheck disable=SC2086
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $names
