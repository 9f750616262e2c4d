#!/bin/sh
# Run inside a bare root: installs the packages, builds README's program by pkg-config, draws the duck,
# imports the Python module, and takes everything away again.
#
#   scripts/check-package.sh DIR-OF-PACKAGES

set -eu

packages=$(cd "${1:?usage: check-package.sh DIR-OF-PACKAGES}" && pwd)
tree=$(cd "$(dirname "$0")/.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export DEBIAN_FRONTEND=noninteractive

listing() {
  find / -xdev \( -path /proc -o -path /dev -o -path /sys -o -path /tmp -o -path /run -o -path "$tree" \
    -o -path "$packages" -o -path /var/cache -o -path /var/lib/apt -o -path /var/log -o -path /root \) -prune \
    -o -print | sort
}

apt-get update -qq
# What only the checks need comes first, so that it is no part of the comparison.
apt-get install -y -qq --no-install-recommends assimp-testmodels g++ pkg-config >"$work/apt.log" 2>&1 ||
  { tail -20 "$work/apt.log"; exit 1; }
dpkg-query -W -f='${Package}\n' | sort >"$work/packages-before"
listing >"$work/files-before"

echo "--- apt install ./*.deb"
cd "$packages"
apt-get install -y -qq --no-install-recommends ./*.deb >"$work/apt.log" 2>&1 || { tail -20 "$work/apt.log"; exit 1; }

cd "$work"
echo "--- README's program by pkg-config"
awk '/^```cpp$/ { on = 1; next } /^```$/ { on = 0 } on' "$tree/README.md" >program.cpp
grep -q 'int main' program.cpp
# shellcheck disable=SC2046
c++ -std=c++17 -Wall -Wextra -Werror program.cpp -o program $(pkg-config --cflags --libs ZxCore3D)
./program triangle.png
[ "$(head -c 8 triangle.png | od -An -tx1 | tr -d ' ')" = 89504e470d0a1a0a ]

echo "--- zxrender draws the duck"
duck=$(find /usr/share/assimp/models/Collada -name duck.dae)
zxrender "$duck" -o duck.png
echo "--- the Python module"
python3 - triangle.png duck.png <<'PYTHON'
import sys
import numpy
import ZxCore3D as zx
triangle = zx.LoadImage(sys.argv[1]).Data
assert triangle.shape == (240, 320, 4), triangle.shape
assert (triangle[0, 0] == [26, 26, 38, 255]).all(), triangle[0, 0]
inner = triangle[90, 160]
assert inner[:3].min() > 26, inner
duck = zx.LoadImage(sys.argv[2]).Data[:, :, :3].astype(int)
background = duck[0, 0]
drawn = (numpy.abs(duck - background).max(axis=2) > 8)
# A yellow duck: something is drawn, and most of it has more red than blue.
assert 0.05 < drawn.mean() < 0.95, drawn.mean()
assert (duck[drawn][:, 0] > duck[drawn][:, 2]).mean() > 0.5
print("the triangle has its colours, the duck covers", f"{drawn.mean():.0%}", "of the picture")
PYTHON

echo "--- removal"
cd /
names=$(for deb in "$packages"/*.deb; do dpkg-deb -f "$deb" Package; done)
# shellcheck disable=SC2086
apt-get purge -y -qq $names >"$work/apt.log" 2>&1
apt-get autoremove --purge -y -qq >>"$work/apt.log" 2>&1
dpkg-query -W -f='${Package}\n' | sort >"$work/packages-after"
listing >"$work/files-after"
comm -13 "$work/packages-before" "$work/packages-after"
# What the packages of others leave behind (caches and their like) is not ours; nothing of ours may stay.
left=$(comm -13 "$work/files-before" "$work/files-after" | grep -iE 'zxcore|zxrender|libzx' || true)
[ -z "$left" ] || { echo "these files stay:"; echo "$left"; exit 1; }
[ -z "$(dpkg-query -W -f='${Package} ${Status}\n' $names 2>/dev/null | grep -v 'not-installed' || true)" ]
echo "nothing of the packages is left; $(comm -13 "$work/files-before" "$work/files-after" | wc -l) files of others"
