// The module folders of the build. The paths come from CMakeLists.txt.
#ifndef HOSTING_TESTS_MODULE_FOLDERS_H
#define HOSTING_TESTS_MODULE_FOLDERS_H

namespace examples {

inline constexpr const char* kModules = HOSTING_TEST_MODULES;
inline constexpr const char* kReplacement = HOSTING_TEST_REPLACEMENT;

}  // namespace examples

#endif
