#!/bin/sh
# Runs a command in a bare Debian system: a fresh root of debootstrap's minbase with make, and in it a
# fresh clone of this repository at the commit that is checked out.
#
#   scripts/bare-root.sh SUITE COMMAND [ARGUMENT...]
#   scripts/bare-root.sh trixie make demo
#   scripts/bare-root.sh bookworm sh -c 'make test && make install'
#
# Ends with the command's own status, or with 2 where the root could not be made. Needs root, or sudo.
# The environment may name
#
#   ZX_MIRROR      where packages come from; otherwise what this system's apt uses, or deb.debian.org
#   ZX_BARE_ROOT   a directory for the root. It stays afterwards and is taken up again by the next run,
#                  with what was built in it; otherwise the root is temporary
#   ZX_CACHE       where base systems and downloaded packages are kept; otherwise zxcore3d/bare-root in
#                  $XDG_CACHE_HOME or ~/.cache. Delete a suite's directory in it to have it made again
#
# The clone lies in /zxcore3d of the root. http_proxy, https_proxy, no_proxy and JOBS go through to the
# command; nothing else of the environment does.

set -eu

say() { echo "bare-root.sh: $*" >&2; }
fail() {
  say "$@"
  exit 2
}

if [ $# -lt 2 ] || [ "${1#-}" != "$1" ]; then
  echo "usage: bare-root.sh SUITE COMMAND [ARGUMENT...]" >&2
  exit 2
fi
suite=$1
shift
case "$suite" in
  '' | *[!a-z]*) fail "'$suite' is no name of a Debian suite (bookworm, trixie)" ;;
esac

tree=$(cd "$(dirname "$0")/.." && pwd)
cache=${ZX_CACHE:-${XDG_CACHE_HOME:-$HOME/.cache}/zxcore3d/bare-root}/$suite
export PATH="$PATH:/usr/sbin:/sbin"

if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null 2>&1 || fail "neither root nor sudo is at hand"
  exec sudo ZX_MIRROR="${ZX_MIRROR-}" ZX_BARE_ROOT="${ZX_BARE_ROOT-}" ZX_CACHE="$(dirname "$cache")" \
    JOBS="${JOBS-}" http_proxy="${http_proxy-}" https_proxy="${https_proxy-}" no_proxy="${no_proxy-}" \
    "$0" "$suite" "$@"
fi

for tool in debootstrap git; do
  if ! command -v "$tool" >/dev/null 2>&1; then
    say "installing $tool"
    {
      apt-get update -qq
      DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "$tool" >&2
    } || fail "no $tool"
  fi
done

# The archive that this system itself takes Debian from, so that a local mirror is used unasked.
host_mirror() {
  # shellcheck disable=SC2016
  apt-get indextargets --format '$(ORIGIN) $(LABEL) $(REPO_URI)' 'Created-By: Packages' 2>/dev/null |
    sed -n 's/^Debian Debian \(http.*\)$/\1/p' | head -1
}
mirror=${ZX_MIRROR:-$(host_mirror)}
mirror=${mirror:-http://deb.debian.org/debian}

# --- The base system, once for each suite

base=$cache/base.tar
mkdir -p "$cache/packages"
if [ ! -s "$base" ]; then
  say "making the base system of $suite from $mirror"
  new=$(mktemp -d "$cache/new.XXXXXX")
  trap 'rm -rf "$new"' EXIT
  debootstrap --variant=minbase --include=make "$suite" "$new" "$mirror" >"$cache/debootstrap.log" 2>&1 || {
    tail -5 "$cache/debootstrap.log" >&2
    fail "debootstrap failed; all it said is in $cache/debootstrap.log"
  }
  rm -f "$new"/var/cache/apt/archives/*.deb
  tar -C "$new" --numeric-owner -cf "$base.$$" . && mv "$base.$$" "$base"
  rm -rf "$new"
  trap - EXIT
fi

# --- The root

if [ -n "${ZX_BARE_ROOT-}" ]; then
  root=$ZX_BARE_ROOT
  mkdir -p "$root"
  root=$(cd "$root" && pwd)
  [ "$root" != / ] || fail "ZX_BARE_ROOT must not be this system's own root"
  if [ -e "$root/.zx-bare-root" ]; then
    [ "$(cat "$root/.zx-bare-root")" = "$suite" ] || fail "$root holds another suite"
  elif [ -n "$(ls -A "$root")" ]; then
    fail "$root holds something else; ZX_BARE_ROOT has to be empty, or made by this script"
  fi
else
  root=$(mktemp -d "${TMPDIR:-/tmp}/zx-$suite.XXXXXX")
fi

# What was downloaded serves the next root too. Links cost nothing; across file systems it is copied.
put() { # FROM-DIR TO-DIR
  for package in "$1"/*.deb; do
    if [ -e "$package" ] && [ ! -e "$2/${package##*/}" ]; then
      ln "$package" "$2/" 2>/dev/null || cp -p "$package" "$2/"
    fi
  done
}
# shellcheck disable=SC2317
leave() {
  status=$?
  trap - EXIT INT TERM
  put "$root/var/cache/apt/archives" "$cache/packages"
  # The mounts below are gone with their namespace. Where there was none, this is what takes them away.
  for place in dev proc; do
    umount -R -l "$root/$place" 2>/dev/null || true
  done
  [ -n "${ZX_BARE_ROOT-}" ] || rm -rf --one-file-system "$root"
  exit "$status"
}
trap leave EXIT
trap 'exit 130' INT TERM

if [ ! -e "$root/.zx-bare-root" ]; then
  tar -C "$root" --numeric-owner -xf "$base"
  echo "$suite" >"$root/.zx-bare-root"
fi
chmod 755 "$root" # apt downloads as a user of its own
mkdir -p "$root/var/cache/apt/archives"
put "$cache/packages" "$root/var/cache/apt/archives"
for file in resolv.conf hosts; do
  if [ -e "/etc/$file" ]; then
    rm -f "$root/etc/$file"
    cat "/etc/$file" >"$root/etc/$file"
  fi
done
echo "deb $mirror $suite main" >"$root/etc/apt/sources.list"
apt-config dump | grep -E '^Acquire::https?::Proxy' >"$root/etc/apt/apt.conf.d/95-of-the-host" || true

# --- The clone

commit=$(git -c safe.directory='*' -C "$tree" rev-parse HEAD)
[ -z "$(git -c safe.directory='*' -C "$tree" status --porcelain --untracked-files=no)" ] ||
  say "what is not committed is not in the clone"
if [ ! -d "$root/zxcore3d/.git" ]; then
  git -c safe.directory='*' -c advice.detachedHead=false clone -q --no-checkout --no-local "$tree" "$root/zxcore3d"
else
  git -c safe.directory='*' -C "$root/zxcore3d" fetch -q "$tree" HEAD
fi
git -C "$root/zxcore3d" -c advice.detachedHead=false checkout -q --detach --force "$commit"
git -C "$root/zxcore3d" remote remove origin 2>/dev/null || true

# --- The command

# In a mount namespace of its own nothing can be left mounted. Some containers allow none; there the
# host's /proc and /dev are bound, and where even that is forbidden the command has to do without.
cat >"$root/.zx-enter" <<'ENTER'
set -eu
root=$1
shift
mount -t proc proc "$root/proc" 2>/dev/null || mount --bind /proc "$root/proc" 2>/dev/null ||
  echo "bare-root.sh: no /proc in the root" >&2
mount --rbind /dev "$root/dev" 2>/dev/null || [ -c "$root/dev/null" ] || echo "bare-root.sh: no /dev in the root" >&2
for name in http_proxy https_proxy no_proxy JOBS; do
  eval "value=\${$name-}"
  [ -z "$value" ] || set -- "$name=$value" "$@"
done
exec chroot "$root" /usr/bin/env -i -C /zxcore3d HOME=/root LANG=C.UTF-8 TERM="${TERM:-dumb}" \
  DEBIAN_FRONTEND=noninteractive PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin "$@"
ENTER
if unshare --mount --pid --fork true 2>/dev/null; then
  enter="unshare --mount --pid --fork"
else
  enter=""
fi
say "$suite, commit $(echo "$commit" | cut -c1-10), root $root: $*"
set +e
$enter sh "$root/.zx-enter" "$root" "$@"
status=$?
set -e
[ "$status" -eq 0 ] || say "'$*' ended with status $status"
exit "$status"
