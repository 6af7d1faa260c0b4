#!/usr/bin/env bash
# check_exports.sh <library> <list of names> <soname>: the library defines exactly the listed names
# for others to see, as functions, and carries the given SONAME.
set -euo pipefail
export LC_ALL=C

library=$1
list=$2
soname=$3
failed=0

defined=$(nm --dynamic --defined-only --format=posix "$library" | awk '{ print $1, $2 }' | sort)
expected=$(awk 'NF { print $1, "T" }' "$list" | sort)
if ! difference=$(diff <(echo "$expected") <(echo "$defined")); then
  echo "$library: exports are not those of $list (< missing, > unexpected):"
  grep '^[<>]' <<<"$difference"
  failed=1
fi

found=$(readelf --dynamic --wide "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
if [[ $found != "$soname" ]]; then
  echo "$library: SONAME is '$found' instead of '$soname'"
  failed=1
fi

exit $failed
