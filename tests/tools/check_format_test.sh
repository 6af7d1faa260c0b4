#!/usr/bin/env bash
# Plants each fault that tools/check_format.sh is there to find.
source "$(dirname "$0")/expect.sh"
skip_without clang-format
cd "$scratch"
cp "$tools/../.clang-format" .

mkdir -p src/room include/zeb
cp "$tools/../include/zeb/.clang-format" include/zeb
echo 'int* pointer();' >src/room/part.cpp
echo 'int *pointer(void);' >include/zeb/part.h
expect_pass "$tools/check_format.sh"

echo 'int *pointer();' >src/room/part.cpp
expect_fault 'src/room/part.cpp:1' "$tools/check_format.sh"
expect_pass "$tools/check_format.sh" --fix
expect_pass "$tools/check_format.sh"

echo 'int* pointer(void);' >include/zeb/part.h
expect_fault 'include/zeb/part.h:1' "$tools/check_format.sh"

rm -r src include
expect_fault 'no sources' "$tools/check_format.sh"
