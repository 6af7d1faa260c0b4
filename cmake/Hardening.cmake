# zeb_hardening: what makes an exploit of a memory error harder, at a price too small to measure.
# tools/check_hardening.sh looks for the result in the built library.

include(CheckCXXCompilerFlag)
check_cxx_compiler_flag(-fcf-protection=full ZEB_HAS_CF_PROTECTION)  # x86 only

add_library(zeb_hardening INTERFACE)

target_compile_options(zeb_hardening INTERFACE
  -fstack-protector-strong
  -fstack-clash-protection
  "$<$<BOOL:${ZEB_HAS_CF_PROTECTION}>:-fcf-protection=full>")

# Fortified libc calls need the optimiser, and the sanitizers want to see the plain calls.
if(NOT ZEB_SANITIZE)
  target_compile_options(zeb_hardening INTERFACE
    "$<$<CONFIG:Release>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
endif()

# Checks of the standard library's own preconditions, where speed is not measured.
target_compile_definitions(zeb_hardening INTERFACE "$<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>")

target_link_options(zeb_hardening INTERFACE
  -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,-z,text -Wl,--as-needed)
