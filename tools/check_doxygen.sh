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

# Doxygen does not mind a filter that fails, and takes what it reads then for all there is.
while read -r input; do
  tools/doxygen_filter.py "$input" > /dev/null && continue
  echo "the filter fails on $input" >&2
  exit 1
done < <(find README.md docs/guide docs/reference include -name '*.h' -o -name '*.hpp' -o -name '*.md')

rm -rf build/doxygen
mkdir -p build/doxygen
doxygen docs/Doxyfile

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
