#!/usr/bin/env bash
# run_tidy.sh <build folder>: clang-tidy over the library's sources, as that build compiles them,
# and over each public header by itself. Run from the top of the repository, after a clang build
# was configured.
set -euo pipefail

build=$1
failed=0

# tidy <option>... [-- <compiler flag>...]: runs clang-tidy on each file named on standard input.
tidy() {
  xargs -r -d '\n' -I '{}' -P "${JOBS:-$(nproc)}" clang-tidy --quiet '{}' "$@" 2>&1 |
    sed '/^[0-9]* warnings\? generated\.$/d' || failed=1
}

sources=$(sed -n 's/^ *"file": "\(.*\)".*/\1/p' "$build/compile_commands.json" |
  grep -F "$PWD/src/" | sort -u)
tidy -p "$build" --header-filter='/(src|include/zeb/sdk)/' <<<"$sources"

tidy -- -Iinclude -x c -std=c11 < <(find include -name '*.h')
tidy -- -Iinclude -x c++ -std=c++20 < <(find include -name '*.hpp')

exit $failed
