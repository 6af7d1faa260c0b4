#include "common/host/mapped_file.h"

#include <dlfcn.h>

namespace examples {

bool isMapped(const std::filesystem::path& path) {
  void* const handle = dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (handle == nullptr) return false;
  dlclose(handle);
  return true;
}

}  // namespace examples
