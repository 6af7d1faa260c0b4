# How the examples are put together and tested. Included by examples/CMakeLists.txt.

set(examples_common ${CMAKE_CURRENT_LIST_DIR})

# example_module(<target> <folder> <file name> <source>...): a module that the host finds in
# <folder>, below this directory of the build, as <file name>.so.
function(example_module target folder name)
  add_library(${target} MODULE ${ARGN})
  set_target_properties(${target} PROPERTIES
    PREFIX ""
    OUTPUT_NAME ${name}
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}/${folder}
    C_VISIBILITY_PRESET hidden
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  # A unique symbol, as g++ makes of some templates, would keep the module from being unloaded.
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
  target_link_libraries(${target} PRIVATE examples_support)
  zeb_export_only(${target} ${examples_common}/module_exports.txt)
endfunction()

# example_knows_library(<host> <options source>): tells the source where the build puts the library,
# relative to the host, so that the build directory may be moved as a whole.
function(example_knows_library host source)
  set(default_library
    $<PATH:RELATIVE_PATH,$<TARGET_FILE_DIR:zeb>,$<TARGET_FILE_DIR:${host}>>/$<TARGET_SONAME_FILE_NAME:zeb>)
  set_property(SOURCE ${source} APPEND PROPERTY COMPILE_DEFINITIONS
    EXAMPLE_DEFAULT_LIBRARY="${default_library}")
  # CLI11 is all headers: with its code inlined, g++ 12 sees null pointers in std::string.
  set_property(SOURCE ${source} APPEND PROPERTY COMPILE_OPTIONS -Wno-null-dereference)
endfunction()

# example_test(<example> <behaviour> HOST <target> STATUS <exit status> ARGS <argument>...
#              [EXPECT <regex>...] [REJECT <regex>...] [MODULES <file>...] [TERMINAL <type>]
#              [FILE_LIMIT <KiB>]
#              [REMOVE <path>...] [FOLDERS <path>...] [EXISTING <path>...] [ABSENT <path>...]
#              [EQUAL <file> <file>]... [ALONE] [SHOW <file name>])
#
# Runs the host with the arguments. What it prints, errors included, must match every EXPECT and no
# REJECT. MODULES makes a folder of these files and has the host take its modules from there.
# TERMINAL runs it on a terminal of this type; on_terminal.py tells how its output is shown.
# FILE_LIMIT lets no file grow beyond that. Before
# the run, the paths of REMOVE are removed and then the folders of FOLDERS made; after it, those of
# EXISTING must be there, those of ABSENT not, and the files of EQUAL hold the same bytes, each pair
# of them. ALONE runs a copy of the host in a folder of its own, which must then be told where things
# are; what it leaves beside itself under the name of SHOW counts as printed.
function(example_test example behaviour)
  cmake_parse_arguments(PARSE_ARGV 2 arg "ALONE" "HOST;STATUS;TERMINAL;FILE_LIMIT;SHOW"
    "ARGS;EXPECT;REJECT;MODULES;REMOVE;FOLDERS;EXISTING;ABSENT;EQUAL")
  set(host $<TARGET_FILE:${arg_HOST}>)
  if(arg_TERMINAL)
    list(PREPEND host ${CMAKE_COMMAND} -E env TERM=${arg_TERMINAL}
      ${examples_common}/tests/on_terminal.py)
  endif()
  if(arg_FILE_LIMIT)
    list(PREPEND host ${examples_common}/tests/with_file_limit.sh ${arg_FILE_LIMIT})
  endif()
  add_test(NAME ${example}.${behaviour} COMMAND ${CMAKE_COMMAND}
    "-DHOST=${host}"
    "-DARGS=${arg_ARGS}"
    "-DSTATUS=${arg_STATUS}"
    "-DEXPECT=${arg_EXPECT}"
    "-DREJECT=${arg_REJECT}"
    "-DMODULES=${arg_MODULES}"
    "-DFOLDER=${CMAKE_CURRENT_BINARY_DIR}/${behaviour}"
    "-DREMOVE=${arg_REMOVE}"
    "-DFOLDERS=${arg_FOLDERS}"
    "-DEXISTING=${arg_EXISTING}"
    "-DABSENT=${arg_ABSENT}"
    "-DEQUAL=${arg_EQUAL}"
    "-DALONE=${arg_ALONE}"
    "-DSHOW=${arg_SHOW}"
    -P ${examples_common}/tests/run_host.cmake)
  set_tests_properties(${example}.${behaviour} PROPERTIES LABELS ${example})
endfunction()

# example_links_test(<example> HOST <target> MODULES <target>... PARTS <regex>): neither the host nor
# a module is linked with the library or with anything whose name the regex matches, and a module
# exports its entry points only.
function(example_links_test example)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "HOST;PARTS" "MODULES")
  set(modules ${arg_MODULES})
  list(TRANSFORM modules REPLACE "(.+)" "$<TARGET_FILE:\\1>")
  add_test(NAME ${example}.IsLinkedWithNoneOfItsParts COMMAND ${CMAKE_COMMAND}
    "-DREADELF=${CMAKE_READELF}"
    "-DNM=${CMAKE_NM}"
    "-DPROGRAM=$<TARGET_FILE:${arg_HOST}>"
    "-DMODULES=${modules}"
    "-DPARTS=${arg_PARTS}"
    -P ${examples_common}/tests/check_links.cmake)
  set_tests_properties(${example}.IsLinkedWithNoneOfItsParts PROPERTIES LABELS ${example})
endfunction()
