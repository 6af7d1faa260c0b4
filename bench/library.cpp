#include "library.h"

#include <dlfcn.h>

#include "harness.h"

namespace zeb::bench {

namespace {

Library library;

template <class Function>
Function Find(void* handle, const char* name) {
  void* symbol = dlsym(handle, name);
  Check(symbol, std::string("the library does not export ") + name);
  return reinterpret_cast<Function>(symbol);
}

}  // namespace

void LoadLibrary(const std::string& path) {
  void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  Check(handle, handle ? "" : dlerror());
  library.initialize = Find<ZEBInitializeFunction>(handle, "ZEBInitialize");
  library.terminate = Find<ZEBTerminateFunction>(handle, "ZEBTerminate");
  library.getGetProcAddress = Find<ZEBGetGetProcAddressFunction>(handle, "ZEBGetGetProcAddress");
}

const Library& TheLibrary() { return library; }

Session::Session() : getProcAddress_(library.initialize(nullptr, nullptr, nullptr)) {
  Check(getProcAddress_, "the library does not start");
}

Session::~Session() { library.terminate(); }

}  // namespace zeb::bench
