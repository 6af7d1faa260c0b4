#!/usr/bin/env bash
# Plants each fault that tools/check_hardening.sh is there to find.
source "$(dirname "$0")/expect.sh"
cd "$scratch"

# A function that needs both the stack check and the fortified copy.
cat >hard.cpp <<'CODE'
#include <cstring>
void use(char*);
void copy(const char* from, std::size_t size) {
  char text[16];
  std::memcpy(text, from, size);
  use(text);
}
CODE
{
  cat hard.cpp
  echo 'inline int unique_value; int* address() { return &unique_value; }'
} >unique.cpp
{
  cat hard.cpp
  echo '__asm__(".text\n.quad textrel\n.data\n.globl textrel\ntextrel: .quad 0\n.text\n");'
} >textrel.cpp

compile="-O2 -fPIC -fstack-protector-strong -fstack-clash-protection -U_FORTIFY_SOURCE
         -D_FORTIFY_SOURCE=2"
link="-shared -Wl,-z,relro -Wl,-z,now"

# check <source> <compile flags> <link flags>: builds a library and checks it.
check() {
  local source=$1 object=${1%.cpp}.o
  local command
  command=$(echo "g++" $2 -o "$object" -c "$scratch/$source")
  printf '[\n{\n  "directory": "x",\n  "command": "%s",\n  "file": "x"\n}\n]\n' "$command" >commands
  $command
  g++ "$object" $3 -o library.so
  "$tools/check_hardening.sh" library.so commands "$scratch"
}

expect_pass check hard.cpp "$compile" "$link"
for function in __memcpy_chk __stack_chk_fail; do  # the flags do what the check takes them for
  expect_pass grep -q "U $function" <(nm --dynamic library.so)
done

expect_fault 'no GNU_RELRO' check hard.cpp "$compile" "$link -Wl,-z,norelro"
expect_fault 'not bound at load time' check hard.cpp "$compile" "$link -Wl,-z,lazy"
expect_fault 'stack is executable' check hard.cpp "$compile" "$link -Wl,-z,execstack"
expect_fault 'text relocations' check textrel.cpp "$compile" "$link -Wl,-z,notext"
expect_fault 'unique symbols' check unique.cpp "$compile -fgnu-unique" "$link"
expect_fault 'no reference to the stack check' check hard.cpp "$compile -fno-stack-protector" "$link"
expect_fault 'not -fstack-protector-strong' check hard.cpp "$compile -fno-stack-protector" "$link"
expect_fault 'not -fstack-clash-protection' \
  check hard.cpp "$compile -fno-stack-clash-protection" "$link"
expect_fault 'not -D_FORTIFY_SOURCE=2' check hard.cpp "$compile -U_FORTIFY_SOURCE" "$link"
expect_fault "built with '-O0', not -O2" check hard.cpp "$compile -O0" "$link"

check hard.cpp "$compile" "$link"
expect_fault 'has no command' "$tools/check_hardening.sh" library.so commands "$scratch/elsewhere"
