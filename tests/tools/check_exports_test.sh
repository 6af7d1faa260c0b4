#!/usr/bin/env bash
# Plants each fault that tools/check_exports.sh is there to find.
source "$(dirname "$0")/expect.sh"
cd "$scratch"

printf '%s\n' first second >names
printf '%s\n' first second third >longer
echo first >shorter
printf 'int first(void) { return 1; }\nint second(void) { return 2; }\n' >sound.c
printf 'int first(void) { return 1; }\nint second = 2;\n' >data.c
gcc -shared -fPIC -Wl,-soname,lib.so.4 -o sound.so sound.c
gcc -shared -fPIC -Wl,-soname,lib.so.4 -o data.so data.c
gcc -shared -fPIC -o unnamed.so sound.c

expect_pass "$tools/check_exports.sh" sound.so names lib.so.4
expect_fault '< third T' "$tools/check_exports.sh" sound.so longer lib.so.4
expect_fault '> second T' "$tools/check_exports.sh" sound.so shorter lib.so.4
expect_fault '> second D' "$tools/check_exports.sh" data.so names lib.so.4
expect_fault "SONAME is 'lib.so.4'" "$tools/check_exports.sh" sound.so names lib.so.5
expect_fault "SONAME is ''" "$tools/check_exports.sh" unnamed.so names lib.so.4
expect_fault 'gone.so' "$tools/check_exports.sh" gone.so names lib.so.4
