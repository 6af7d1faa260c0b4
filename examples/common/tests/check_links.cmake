# Nothing of the example is linked with another part of it or with the library, and a module exports
# its two entry points and nothing else. READELF and NM are the tools, PROGRAM and MODULES the files,
# PARTS matches the names of the parts.

set(faults "")

foreach(file IN LISTS PROGRAM MODULES)
  execute_process(COMMAND ${READELF} --dynamic --wide ${file}
    OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "\\(NEEDED\\)[^\n]*" needed "${dynamic}")
  if(NOT needed MATCHES "libc\\.")
    string(APPEND faults "  ${file}: its dependencies cannot be read\n")
  endif()
  if(needed MATCHES "zeb|${PARTS}")
    string(APPEND faults "  ${file}: linked with ${needed}\n")
  endif()
endforeach()

foreach(file IN LISTS MODULES)
  execute_process(COMMAND ${NM} -D --defined-only --format=posix ${file}
    OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "[^\n ]+ [A-Za-z] [^\n]*" symbols "${symbols}")
  list(TRANSFORM symbols REPLACE " .*" "")
  list(SORT symbols)
  if(NOT symbols STREQUAL "ZEBModuleStart;ZEBModuleStop")
    string(APPEND faults "  ${file}: exports ${symbols}\n")
  endif()
endforeach()

if(faults)
  message(FATAL_ERROR "\n${faults}")
endif()
