# Sanitizers for the whole tree. Everything that ends up in one process must be built alike, so the
# flags are set for all targets and not one by one.

set(ZEB_SANITIZE "" CACHE STRING "Sanitizers for -fsanitize=, e.g. address,undefined,leak or thread")

if(ZEB_SANITIZE)
  add_compile_options(-fsanitize=${ZEB_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${ZEB_SANITIZE})
endif()
