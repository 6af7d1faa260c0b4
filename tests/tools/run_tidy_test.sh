#!/usr/bin/env bash
# Plants a fault in each kind of file that tools/run_tidy.sh is there to read.
source "$(dirname "$0")/expect.sh"
skip_without clang-tidy
cd "$scratch"
cp "$tools/../.clang-tidy" .

mkdir -p src/room include/zeb/sdk build
cat >build/compile_commands.json <<JSON
[
{
  "directory": "$scratch",
  "command": "clang++ -std=c++20 -I$scratch/src -c $scratch/src/room/part.cpp",
  "file": "$scratch/src/room/part.cpp"
}
]
JSON
sound() {
  printf '#include "room/part.h"\nint half(int value) { return value / 2; }\n' >src/room/part.cpp
  printf '#pragma once\nint half(int value);\n' >src/room/part.h
  printf '#ifndef PART_H\n#define PART_H\nint part(void);\n#endif\n' >include/zeb/part.h
  printf '#pragma once\nint twice(int value);\n' >include/zeb/sdk/part.hpp
}

sound
expect_pass "$tools/run_tidy.sh" build

printf 'float half(int value) { return value / 2; }\n' >src/room/part.cpp
expect_fault 'part.cpp:1:32: error: result of integer division' "$tools/run_tidy.sh" build

sound
printf '#pragma once\nint half(int value);\ninline int* null() { return 0; }\n' >src/room/part.h
expect_fault 'part.h:3:29: error: use nullptr' "$tools/run_tidy.sh" build

sound
printf 'inline int* null() { return 0; }\n' >>include/zeb/sdk/part.hpp
expect_fault 'part.hpp:3:29: error: use nullptr' "$tools/run_tidy.sh" build

sound
printf 'static inline float half(int value) { return value / 2; }\n' >>include/zeb/part.h
expect_fault 'part.h:5:46: error: result of integer division' "$tools/run_tidy.sh" build
