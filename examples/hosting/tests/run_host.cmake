# One run of the host, judged. tests/CMakeLists.txt tells what the variables mean.

set(arguments ${ARGS})
if(MODULES)
  file(REMOVE_RECURSE ${FOLDER})
  file(COPY ${MODULES} DESTINATION ${FOLDER})
  list(APPEND arguments --modules ${FOLDER})
endif()

execute_process(COMMAND ${HOST} ${arguments}
  RESULT_VARIABLE status
  OUTPUT_VARIABLE output
  ERROR_VARIABLE output)

set(faults "")
if(NOT status STREQUAL STATUS)
  string(APPEND faults "  exit status ${status} instead of ${STATUS}\n")
endif()
foreach(pattern IN LISTS EXPECT)
  if(NOT output MATCHES "${pattern}")
    string(APPEND faults "  missing: ${pattern}\n")
  endif()
endforeach()
foreach(pattern IN LISTS REJECT)
  if(output MATCHES "${pattern}")
    string(APPEND faults "  unwanted: ${pattern}\n")
  endif()
endforeach()

if(faults)
  message(FATAL_ERROR "${HOST} ${arguments}\n${faults}It printed:\n${output}")
endif()
