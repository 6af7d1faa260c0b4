#!/usr/bin/env bash
# Runs tools/install_packages.sh against a package system of this test: `absent` lists what is not
# installed, `offline` is there when nothing can be fetched, `asked` collects what apt-get is told.
source "$(dirname "$0")/expect.sh"
cd "$scratch"
mkdir bin
cat >bin/dpkg-query <<'CODE'
#!/bin/sh
for package; do :; done
grep -qx "$package" absent || echo installed
CODE
cat >bin/apt-get <<'CODE'
#!/bin/sh
echo "$*" >>asked
! [ -e offline ] || exit 100
[ "$1" = update ] || : >absent
CODE
printf '#!/bin/sh\necho 0\n' >bin/id
chmod +x bin/*
PATH=$scratch/bin:$PATH

: >absent
expect_pass "$tools/install_packages.sh" build test demo bench gates
expect_pass test ! -e asked

printf 'ninja-build\nvalgrind\n' >absent
expect_pass "$tools/install_packages.sh" build test
expect_pass grep -q '^update' asked
expect_pass grep -q '^install .* ninja-build$' asked

: >offline
printf 'ninja-build\nlibtbb-dev\n' >absent
expect_fault 'ninja-build' "$tools/install_packages.sh" build
expect_fault 'libtbb-dev' "$tools/install_packages.sh" build bench

echo libtbb-dev >absent
expect_pass "$tools/install_packages.sh" build bench
"$tools/install_packages.sh" bench >said 2>&1 || true
expect_pass grep -q 'libtbb-dev' said

printf '#!/bin/sh\necho 1000\n' >bin/id
printf '#!/bin/sh\necho "sudo $*" >>asked\nexec "$@"\n' >bin/sudo
chmod +x bin/sudo
rm offline
echo ninja-build >absent
expect_pass "$tools/install_packages.sh" build
expect_pass grep -q '^sudo apt-get update' asked

expect_fault 'usage' "$tools/install_packages.sh"
expect_fault 'usage' "$tools/install_packages.sh" kitchen
