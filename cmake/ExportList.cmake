# zeb_export_only(<library> <file>): the library exports the names in <file>, one a line, and
# nothing else.
#
# Hidden visibility alone leaves weak template instances of the standard library visible; only the
# linker's own list brings the dynamic symbol table down to what is meant. Both forms of the list
# are written at configure time, and a changed <file> configures and links anew.
function(zeb_export_only library file)
  cmake_path(ABSOLUTE_PATH file)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  file(STRINGS ${file} names REGEX "^[A-Za-z_][A-Za-z0-9_]*$")

  list(JOIN names ";\n    " elf_names)
  set(version_script ${CMAKE_CURRENT_BINARY_DIR}/${library}.map)
  file(CONFIGURE OUTPUT ${version_script}
    CONTENT "{\n  global:\n    @elf_names@;\n  local:\n    *;\n};\n" @ONLY)

  list(JOIN names "\n  " def_names)
  set(module_definition ${CMAKE_CURRENT_BINARY_DIR}/${library}.def)
  file(CONFIGURE OUTPUT ${module_definition} CONTENT "EXPORTS\n  @def_names@\n" @ONLY)

  if(WIN32)
    target_sources(${library} PRIVATE ${module_definition})
  else()
    target_link_options(${library} PRIVATE -Wl,--version-script=${version_script})
    set_property(TARGET ${library} APPEND PROPERTY LINK_DEPENDS ${version_script})
  endif()
endfunction()
