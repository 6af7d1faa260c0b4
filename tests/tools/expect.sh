# For the tests of the checks: a scratch folder, and what is expected of a command.
set -euo pipefail
export LC_ALL=C

tools=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../tools" && pwd)
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

# skip_without <program>: ctest reports the test as skipped, unless ZEB_TOOLS_REQUIRED says that
# the program has to be here.
skip_without() {
  command -v "$1" >/dev/null && return
  echo "$1 is not installed"
  [[ -z ${ZEB_TOOLS_REQUIRED:-} ]] && exit 77 || exit 1
}

expect_pass() {
  local output
  output=$("$@" 2>&1) && return
  printf 'expected to pass: %s\n%s\n' "$*" "$output"
  exit 1
}

# expect_fault <text> <command>...: the command fails and says so in these words.
expect_fault() {
  local text=$1 output
  shift
  if output=$("$@" 2>&1); then
    printf 'expected to fail with "%s": %s\n' "$text" "$*"
    exit 1
  fi
  grep -qF -- "$text" <<<"$output" && return
  printf 'expected to say "%s": %s\n%s\n' "$text" "$*" "$output"
  exit 1
}
