#include "common/host/shared_object.h"

#include <dlfcn.h>

#include <stdexcept>
#include <string>

namespace examples {
namespace {

// The loader puts the path in front of its reason; whoever prints it has named the file already.
std::string loaderReason(const std::string& path) {
  const char* const text = dlerror();
  std::string reason = text != nullptr ? text : "unknown reason";
  const std::string prefix = path + ": ";
  if (reason.rfind(prefix, 0) == 0) reason.erase(0, prefix.size());
  return reason;
}

}  // namespace

SharedObject::SharedObject(const std::filesystem::path& path, bool keepMapped)
    : handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL | (keepMapped ? RTLD_NODELETE : 0))) {
  if (handle_ == nullptr) throw std::runtime_error(loaderReason(path.string()));
}

SharedObject::~SharedObject() { dlclose(handle_); }

void* SharedObject::symbol(const char* name) const { return dlsym(handle_, name); }

bool isMapped(const std::filesystem::path& path) {
  void* const handle = dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (handle == nullptr) return false;
  dlclose(handle);
  return true;
}

}  // namespace examples
