#!/bin/sh
# Holds that every link of the pages leads somewhere when they are read as plain files: that the file is
# there, and in a page the heading.
#
#   check_links.sh PROJECT_DIR

set -eu

anchors() { # page
  sed -n '/^```/,/^```/d; s/^##* //p' "$1" | tr 'A-Z' 'a-z' | sed 's/[^a-z0-9 _-]//g; s/ /-/g'
}

status=0
for page in "$1"/*.md "$1"/docs/*.md; do
  folder=$(dirname "$page")
  sed '/^```/,/^```/d; /^    /d' "$page" | grep -o '](\([^()]*\))' | sed 's/^](//; s/)$//' | sort -u |
    while read -r target; do
      case $target in http*) continue ;; esac
      file=${target%%#*}
      place=$page
      [ -z "$file" ] || place=$folder/$file
      if [ ! -e "$place" ]; then
        echo "$page: no file $target" >&2
        echo bad
      elif [ "$file" != "$target" ] && ! anchors "$place" | grep -qxF -e "${target#*#}"; then
        echo "$page: no heading $target" >&2
        echo bad
      fi
    done | grep bad >/dev/null && status=1
done
exit "$status"
