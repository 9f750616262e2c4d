#!/bin/sh
# Holds what the library exports against the reviewed list: check_exports.sh LIBRARY LIST

set -eu

here=$(dirname "$0")
list=$2
exports=$(sh "$here/list_exports.sh" "$1")

if ! echo "$exports" | diff "$list" - ; then
  echo "above: '<' is missing in the library, '>' is exported and not on the list ($list)" >&2
  exit 1
fi
# Whatever the list says, these are not for hosts. What stands before the arguments is the name.
if echo "$exports" | sed 's/(.*//' |
  grep -E '(^| )(std|__gnu_cxx|hwy|toml|boost)::|(^| )Q[A-Z]|InverseEx|GetProjectiveTransform_|GetBoundingSphere' ||
  echo "$exports" | grep SYMMAT4; then
  echo "the names above must not be exported" >&2
  exit 1
fi
