#!/usr/bin/env bash
# check_doxygen.sh: builds the pages of the headers and the guide into build/doxygen/html. Whatever
# Doxygen warns of is a failure: a public name without a comment, a reference that leads nowhere.
# Run from the top of the repository.
set -euo pipefail

# Releases differ in what they understand and warn of.
version=$(doxygen --version)
if [[ $version != 1.9.4* ]]; then
  echo "doxygen 1.9.4 is needed, here is: $version" >&2
  exit 1
fi

rm -rf build/doxygen
mkdir -p build/doxygen
doxygen docs/Doxyfile

# Doxygen does not mind a filter that fails: what it then reads has no page.
failed=0
while read -r header; do
  page=$(basename "$header")
  page=${page//_/__}
  page=build/doxygen/html/${page//./_8}.html
  [[ ! -e $page ]] || continue
  echo "$header has no page" >&2
  failed=1
done < <(find include -name '*.h' -o -name '*.hpp')
[[ -e build/doxygen/html/index.html ]] || failed=1
exit $failed
