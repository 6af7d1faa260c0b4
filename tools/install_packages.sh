#!/usr/bin/env bash
# Makes sure that the Debian packages of the named groups are installed: build, test, demo, bench,
# gates. Asks the network only when something is missing. When it cannot install, it names what is
# missing and fails; the bench group alone is optional, for the benchmark leaves absent peers out.
set -euo pipefail

declare -A packages=(
  [build]="cmake ninja-build g++ pkg-config python3 libfmt-dev libcli11-dev"
  [test]="libgtest-dev libgmock-dev"
  [demo]="zlib1g-dev libxxhash-dev libjpeg62-turbo-dev libfmt-dev libcli11-dev"
  [bench]="libbenchmark-dev libglib2.0-dev libboost-dev libjemalloc-dev libmimalloc-dev libabsl-dev
           libtbb-dev libfmt-dev libcli11-dev"
  [gates]="clang clang-format clang-tidy libclang-rt-14-dev valgrind binutils gcovr
           doxygen dpkg-dev file python3-jsonschema"
)

# missing <group>...: prints the packages of the groups that are not installed.
missing() {
  local group package
  for group in "$@"; do
    for package in ${packages[$group]}; do
      [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] ||
        echo "$package"
    done
  done | sort -u
}

# install <package>...: fails, having said why, when the packages cannot be installed.
install() {
  local as_root=()
  if ! command -v apt-get >/dev/null; then
    echo "No apt-get here: this is not a Debian system." >&2
    return 1
  fi
  if [[ $(id -u) -ne 0 ]]; then
    if ! command -v sudo >/dev/null; then
      echo "Installing packages needs root or sudo." >&2
      return 1
    fi
    as_root=(sudo)
  fi
  "${as_root[@]}" apt-get update -q &&
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
      apt-get install -q -y --no-install-recommends "$@"
}

usage() {
  echo "usage: $0 <group>..., the groups being ${!packages[*]}" >&2
  exit 2
}

[[ $# -gt 0 ]] || usage
for group in "$@"; do
  [[ -n ${packages[$group]:-} ]] || usage
done

mapfile -t wanted < <(missing "$@")
[[ ${#wanted[@]} -gt 0 ]] || exit 0

echo "Installing ${wanted[*]}"
install "${wanted[@]}" && exit 0

needed=()
for group in "$@"; do
  [[ $group == bench ]] || needed+=("$group")
done
mapfile -t wanted < <(missing "$@")
echo "These packages are missing and could not be installed:" >&2
printf '  %s\n' "${wanted[@]}" >&2
echo "Install them (apt-get install ${wanted[*]}) or their like, then try again." >&2
[[ ${#needed[@]} -gt 0 && -z $(missing "${needed[@]}") ]]
