#!/usr/bin/env bash
# check_format.sh [--fix]: every first-party source looks as .clang-format says; --fix makes it so.
# Run from the top of the repository.
set -euo pipefail

mode=(--dry-run -Werror)
[[ ${1:-} != --fix ]] || mode=(-i)

# Releases differ in what they do with the same settings.
version=$(clang-format --version)
if [[ $version != *" version 14."* ]]; then
  echo "clang-format 14 is needed, here is: $version" >&2
  exit 1
fi

folders=()
for folder in include src tests bench examples fuzz tools; do
  [[ ! -d $folder ]] || folders+=("$folder")
done
mapfile -d '' files < <(
  find "${folders[@]}" -type f -regex '.*\.\(h\|hpp\|inc\|c\|cpp\)' -print0)
if [[ ${#files[@]} -eq 0 ]]; then
  echo "there are no sources here" >&2
  exit 1
fi

clang-format "${mode[@]}" --style=file "${files[@]}"
