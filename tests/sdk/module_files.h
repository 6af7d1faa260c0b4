// The modules of these tests as files, and how they are loaded here.
#ifndef ZEB_TESTS_SDK_MODULE_FILES_H
#define ZEB_TESTS_SDK_MODULE_FILES_H

#include <dlfcn.h>

#include <string>

#include "contract/sanitizers.h"
#include "zeb/sdk/loaded_module.hpp"

namespace sdk_test {

inline std::string moduleFile(const std::string& name) { return SDK_MODULES "/" + name + ".so"; }

// A sanitizer names the functions of a file that it still finds; valgrind counts what the loader
// keeps for one as lost.
inline constexpr zeb::sdk::Unload kUnload =
    contract::kSanitized ? zeb::sdk::Unload::never : zeb::sdk::Unload::atEnd;

// Whether the file is in memory, whoever loaded it.
inline bool isMapped(const std::string& file) {
  void* const handle = dlopen(file.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (handle == nullptr) return false;
  dlclose(handle);
  return true;
}

}  // namespace sdk_test

#endif
