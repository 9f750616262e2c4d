#!/bin/sh
# The manual page, the completion and the thumbnailer entry, held against the program.
#
#   Pages.sh ZXRENDER BUILD_DIR SOURCE_DIR

set -eu

program=$1
build=$2
source=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

fail() {
  echo "Pages.sh: $*" >&2
  exit 1
}

# Every option of --help=all stands in the manual page, and the completion offers it.
"$program" --help=all | grep -o '^ \{2,6\}\(-[a-zA-Z], \)\{0,1\}--[a-z-]*' | sed 's/.*--/--/' >"$work/options"
[ "$(wc -l <"$work/options")" -ge 28 ] || fail "--help=all tells of $(wc -l <"$work/options") options only"
sed 's/\\-/-/g' "$build/zxrender.1" >"$work/page"
for option in $(cat "$work/options"); do
  grep -q "^\.B.* *$option" "$work/page" || fail "the manual page lacks $option"
done
for section in NAME SYNOPSIS DESCRIPTION OPTIONS JSON "EXIT STATUS" EXAMPLES; do
  grep -q "^\.SH $section\$" "$build/zxrender.1" || fail "the manual page lacks $section"
done
if command -v groff >/dev/null 2>&1; then
  groff -man -Tascii -ww "$build/zxrender.1" >/dev/null 2>"$work/groff"
  [ ! -s "$work/groff" ] || fail "groff complains: $(cat "$work/groff")"
fi

# All of it is installed.
cmake -DCMAKE_INSTALL_PREFIX="$work/tree" -P "$build/cmake_install.cmake" >/dev/null
for file in bin/zxrender share/man/man1/zxrender.1 share/bash-completion/completions/zxrender \
  share/thumbnailers/zxrender.thumbnailer; do
  [ -s "$work/tree/$file" ] || fail "$file is not installed"
done

complete() { # words...; the last one is completed
  bash -c '
    . "$0"
    compopt() { :; }
    COMP_WORDS=(zxrender "$@")
    COMP_CWORD=$#
    _zxrender
    printf "%s\n" "${COMPREPLY[@]}"' "$build/zxrender.bash" "$@"
}
for option in $(cat "$work/options"); do
  complete "$option" | grep -qxe "$option" || fail "$option is not completed"
done
[ "$(complete --samples '' | tr '\n' ' ')" = "1 4 16 " ] || fail "the values of --samples are not offered"
[ "$(complete --filter n)" = "nearest" ] || fail "--filter n is not completed"
[ "$(complete --up '' | tr '\n' ' ')" = "y z auto " ] || fail "the values of --up are not offered"
touch "$work/a model.obj"
[ "$(cd "$work" && complete a)" = "a model.obj" ] || fail "names of files are not completed"
[ "$(cd "$work" && complete -o a)" = "a model.obj" ] || fail "names are not completed behind -o"

# A thumbnailer gets a size and two names, of which that of the picture has no ending.
entry="$source/zxrender.thumbnailer"
[ "$(head -n 1 "$entry")" = "[Thumbnailer Entry]" ] || fail "the thumbnailer entry lacks its head"
grep -q '^TryExec=zxrender$' "$entry" || fail "the thumbnailer entry lacks TryExec"
grep -q '^MimeType=.*model/gltf-binary;.*;$' "$entry" || fail "the thumbnailer entry lacks its types"
printf 'v -1 -1 0\nv 1 -1 0\nv 1 1 0\nf 1 2 3\n' >"$work/in.obj"
command=$(sed -n 's/^Exec=zxrender //p' "$entry" |
  sed "s|%sx%s|96x96|; s|%o|$work/out|; s|%i|$work/in.obj|")
# shellcheck disable=SC2086
"$program" $command || fail "the thumbnailer's command fails: $command"
"$program" --json --check "$work/out.png" --samples 4 --background transparent --size 96x96 \
  "$work/in.obj" >/dev/null 2>&1 && fail "a picture that is not there can't be the same"
mv "$work/out" "$work/out.png"
"$program" --check "$work/out.png" --samples 4 --background transparent --size 96x96 \
  "$work/in.obj" >/dev/null || fail "the thumbnail is not the picture"
echo "$(wc -l <"$work/options") options stand in the manual page and are completed"
