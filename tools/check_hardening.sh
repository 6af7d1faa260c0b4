#!/usr/bin/env bash
# check_hardening.sh <library> <compile_commands.json> <source folder>: the library is hardened.
#
# What the linker does shows in the library itself: read-only relocations bound at load time, no
# executable stack, no text relocations, no unique symbols. What the compiler does is proved for
# every file of the source folder by its own compile command; a call to a check function in the
# library would prove it for one file only, and a file that needs no check has none. The library
# must refer to the stack check all the same, which shows that the objects it was made of have it.
set -euo pipefail
export LC_ALL=C

library=$1
commands=$2
sources=$3
failed=0

fault() {
  echo "$library: $1"
  failed=1
}

headers=$(readelf --program-headers --wide "$library")
dynamic=$(readelf --dynamic --wide "$library")
symbols=$(readelf --symbols --wide "$library")

grep -q 'GNU_RELRO' <<<"$headers" || fault "no GNU_RELRO segment"
grep -Eq '\((FLAGS|FLAGS_1)\).*\b(BIND_NOW|NOW)\b' <<<"$dynamic" || fault "not bound at load time"
grep -Eq 'GNU_STACK.* RW +0x' <<<"$headers" || fault "the stack is executable"
! grep -q 'TEXTREL' <<<"$dynamic" || fault "text relocations"
! grep -q ' UNIQUE ' <<<"$symbols" || fault "unique symbols, so that dlclose never unmaps it"
grep -q '__stack_chk_fail' <<<"$symbols" || fault "no reference to the stack check"

# Of two flags that contradict each other, the last one counts.
last_flag() { tr ' ' '\n' <<<"$2" | grep -xE -- "$1" | tail -n 1; }

count=0
while IFS= read -r command; do
  file=${command##* }
  count=$((count + 1))
  for wanted in \
    '-O.*: -O2' \
    '-[DU]_FORTIFY_SOURCE(=.*)?: -D_FORTIFY_SOURCE=2' \
    '-f(no-)?stack-protector(-strong|-all)?: -fstack-protector-strong' \
    '-f(no-)?stack-clash-protection: -fstack-clash-protection'; do
    found=$(last_flag "${wanted%: *}" "$command" || true)
    [[ $found == "${wanted##*: }" ]] || fault "$file is built with '$found', not ${wanted##*: }"
  done
done < <(sed -n 's/^ *"command": "\(.*\)",$/\1/p' "$commands" | grep -F -- " -c $sources/")
[[ $count -gt 0 ]] || fault "$commands has no command for a file of $sources"

exit $failed
