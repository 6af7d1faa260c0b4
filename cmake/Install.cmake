# What an installed libzeb consists of: the library, its headers, their machine-readable description,
# the CMake package, the pkg-config file, the documents and zebinfo (tools/zebinfo); and the Debian
# packages that CPack makes of it. Everything that is installed finds its neighbours from where it
# lies, so the tree may be moved as a whole.

include(CMakePackageConfigHelpers)
include(GNUInstallDirs)

set(ZEB_INSTALL_CMAKEDIR ${CMAKE_INSTALL_LIBDIR}/cmake/zeb CACHE STRING
  "Where the CMake package is installed")

install(TARGETS zeb EXPORT zebTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
install(TARGETS zeb_headers zeb_sdk EXPORT zebTargets)
install(DIRECTORY include/zeb TYPE INCLUDE COMPONENT development
  FILES_MATCHING PATTERN *.h PATTERN *.hpp)
install(FILES share/zeb/zeb.json share/zeb/zeb.schema.json
  DESTINATION ${CMAKE_INSTALL_DATADIR}/zeb COMPONENT development)
install(FILES README.md docs/rationales.md TYPE DOC COMPONENT development)

# --- the CMake package ------------------------------------------------------------------------------

install(EXPORT zebTargets NAMESPACE zeb:: DESTINATION ${ZEB_INSTALL_CMAKEDIR}
  COMPONENT development)
configure_package_config_file(
  ${CMAKE_CURRENT_LIST_DIR}/package/zebConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/package/zebConfig.cmake
  INSTALL_DESTINATION ${ZEB_INSTALL_CMAKEDIR}
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file(
  ${CMAKE_CURRENT_BINARY_DIR}/package/zebConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(
  FILES ${CMAKE_CURRENT_BINARY_DIR}/package/zebConfig.cmake
        ${CMAKE_CURRENT_BINARY_DIR}/package/zebConfigVersion.cmake
  DESTINATION ${ZEB_INSTALL_CMAKEDIR} COMPONENT development)

# --- pkg-config -------------------------------------------------------------------------------------

# The file lies in <libdir>/pkgconfig. A folder under the prefix is named from there, and an
# absolute one as it stands.
set(from ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
if(IS_ABSOLUTE ${CMAKE_INSTALL_LIBDIR})
  set(pc_prefix ${CMAKE_INSTALL_PREFIX})
else()
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${from} OUTPUT_VARIABLE up)
  cmake_path(NORMAL_PATH up)
  set(pc_prefix "\${pcfiledir}/${up}")
endif()
foreach(kind IN ITEMS LIB INCLUDE)
  set(directory ${CMAKE_INSTALL_${kind}DIR})
  if(IS_ABSOLUTE ${directory})
    set(pc_${kind}dir ${directory})
  else()
    set(pc_${kind}dir "\${prefix}/${directory}")
  endif()
endforeach()
configure_file(${CMAKE_CURRENT_LIST_DIR}/package/zeb.pc.in
  ${CMAKE_CURRENT_BINARY_DIR}/package/zeb.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/package/zeb.pc
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# --- packages ---------------------------------------------------------------------------------------

if(NOT PROJECT_IS_TOP_LEVEL)
  return()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zeb)
set(CPACK_PACKAGE_VENDOR "the libzeb developers")
set(CPACK_PACKAGE_CONTACT "the libzeb developers <libzeb@example.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "In-process interface binder")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development)
if(ZEB_BUILD_TOOLS)
  list(APPEND CPACK_COMPONENTS_ALL tools)
endif()
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libzeb${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
  ${CMAKE_CURRENT_LIST_DIR}/package/triggers)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "The library that a host loads and its modules share.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzeb-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "libzeb${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "Headers, CMake package and pkg-config file for hosts and modules.")
set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME zeb-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
# The library is not installed while its package is made; the version is what dpkg-shlibdeps cannot
# know.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/lib)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "libzeb${PROJECT_VERSION_MAJOR} (= ${PROJECT_VERSION})")
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
  "zebinfo, which shows what a running library serves.")
include(CPack)
