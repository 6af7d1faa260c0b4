# zeb_warnings: the warnings that all first-party code is built with, each of them an error.
# A target takes them with target_link_libraries(<target> PRIVATE zeb_warnings).
#
# Not among them: -Wnull-dereference, for g++ 12 finds null pointers inside std::string;
# -Wuseless-cast, for what is useless on one platform is needed on another.

add_library(zeb_warnings INTERFACE)

set(both
  -Wall -Wextra -Wpedantic -Werror
  -Wcast-align -Wcast-qual -Wconversion -Wsign-conversion -Wdouble-promotion
  -Wdate-time -Wfloat-equal -Wformat=2 -Wimplicit-fallthrough -Wmissing-declarations
  -Wpointer-arith -Wredundant-decls -Wshadow -Wundef -Wunused -Wvla
  -Wwrite-strings)

set(both_cxx
  -Wctor-dtor-privacy -Wextra-semi -Wnon-virtual-dtor -Wold-style-cast -Woverloaded-virtual
  -Wsuggest-override -Wzero-as-null-pointer-constant)

set(both_c -Wmissing-prototypes -Wold-style-definition -Wstrict-prototypes)

set(gcc_only -Wduplicated-branches -Wduplicated-cond -Wlogical-op -Wtrampolines)
set(gcc_only_cxx -Wcomma-subscript -Wredundant-tags -Wstrict-null-sentinel -Wvolatile)

# The thread-safety group is what makes the lock annotations mean something.
set(clang_only
  -Wthread-safety -Wcomma -Wconditional-uninitialized -Wdocumentation -Wheader-hygiene
  -Wmissing-variable-declarations -Wnewline-eof -Wover-aligned -Wshift-sign-overflow
  -Wundefined-reinterpret-cast -Wunreachable-code-aggressive)

set(is_gcc $<CXX_COMPILER_ID:GNU>)
set(is_clang $<CXX_COMPILER_ID:Clang>)
set(is_cxx $<COMPILE_LANGUAGE:CXX>)
set(is_c $<COMPILE_LANGUAGE:C>)

target_compile_options(zeb_warnings INTERFACE
  ${both}
  "$<${is_cxx}:${both_cxx}>"
  "$<${is_c}:${both_c}>"
  "$<${is_gcc}:${gcc_only}>"
  "$<$<AND:${is_gcc},${is_cxx}>:${gcc_only_cxx}>"
  "$<${is_clang}:${clang_only}>")

# The sanitizers' own checks split and merge paths until g++ sees uninitialised variables that the
# program does not have.
if(ZEB_SANITIZE)
  target_compile_options(zeb_warnings INTERFACE "$<${is_gcc}:-Wno-maybe-uninitialized>")
endif()
