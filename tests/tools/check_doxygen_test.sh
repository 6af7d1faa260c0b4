#!/usr/bin/env bash
# Plants each fault that tools/check_doxygen.sh is there to find.
source "$(dirname "$0")/expect.sh"
skip_without doxygen
cd "$scratch"
mkdir -p tools docs/guide docs/reference include/zeb
cp "$tools/doxygen_filter.py" tools
cp "$tools/../docs/Doxyfile" docs
printf '# The project\n\nRead the [guide](docs/guide/threads.md).\n' >README.md
printf '# Threads\n\nAny.\n' >docs/guide/threads.md
printf '# Reference\n\nAll.\n' >docs/reference/README.md

# header <line>...: a sound header with these lines in it.
header() {
  printf '%s\n' '/*' ' * A part, as part.h makes it.' ' */' '#ifndef ZEB_PART_H' \
    '#define ZEB_PART_H' '' '/* The part of a whole. [any-thread] */' 'int ZEBPart(int whole);' '' \
    "$@" '' '#endif' >include/zeb/part.h
}

# refused <text>...: the check fails and says each of them.
refused() {
  local text
  if "$tools/check_doxygen.sh" >said 2>&1; then
    echo "expected to be refused: $*"
    exit 1
  fi
  for text in "$@"; do
    grep -qF -- "$text" said && continue
    printf 'expected to say "%s":\n' "$text"
    cat said
    exit 1
  done
}

header
expect_pass "$tools/check_doxygen.sh"
expect_pass grep -q 'The part of a whole' build/doxygen/html/part_8h.html

header 'int ZEBUndocumented(void);'
refused 'ZEBUndocumented'
header '/* A struct. */' 'struct ZEBPair {' '  int first; /* the first one */' '  int second;' '};' \
  '' '#define ZEB_UNDOCUMENTED 1' '' \
  '/* A comment that belongs to nothing. */' '' 'int ZEBAfterSpace(void);' '' \
  '/* As ZEBMissing does it, and missing.h says. */' 'int ZEBReferring(void);'
refused 'second' 'ZEB_UNDOCUMENTED' 'ZEBAfterSpace' 'ZEBMissing' 'missing.h'

# Type definitions that follow one another share a comment, and functions do not.
header '/* Of the first. */' 'int ZEBFirst(int *out);' 'int ZEBSecond(int *out);'
refused 'ZEBSecond'
# What Doxygen would take for its own is text to us, and what stands in a body is nobody's comment.
header '/* Of both: @see <b> \file *out and "#text". */' 'typedef int ZEBSecond;' \
  'typedef int ZEBThird;' \
  '/* One. */' 'static inline int ZEBOne(void) {' '  /* in the body */' '  return 1;' '}'
expect_pass "$tools/check_doxygen.sh"
expect_pass grep -q 'Of both: @see &lt;b&gt; \\file \*out' build/doxygen/html/part_8h.html
expect_pass test -z "$(grep -rl 'in the body' build/doxygen/html)"

header
printf '# The project\n\nRead the [guide](docs/guide/gone.md), @ref nowhere.\n' >README.md
refused 'guide_gone' 'nowhere'

printf '# The project\n' >README.md
printf '#!/bin/sh\nexit 1\n' >tools/doxygen_filter.py
refused 'the filter fails on README.md'
printf '#!/bin/sh\n' >tools/doxygen_filter.py
refused 'part.h has no page'
