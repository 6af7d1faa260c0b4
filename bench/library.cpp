#include "library.h"

#include <dlfcn.h>

#include <string>
#include <thread>

#include "check.h"

namespace zeb::bench {

namespace {

Library library;

template <class Function>
Function find(void* handle, const char* name) {
  void* symbol = dlsym(handle, name);
  check(symbol, std::string("the library does not export ") + name);
  return reinterpret_cast<Function>(symbol);
}

}  // namespace

void loadLibrary(const std::string& path) {
  void* handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  check(handle, handle ? "" : dlerror());
  library.initialize = find<ZEBInitializeFunction>(handle, "ZEBInitialize");
  library.terminate = find<ZEBTerminateFunction>(handle, "ZEBTerminate");
  library.getGetProcAddress = find<ZEBGetGetProcAddressFunction>(handle, "ZEBGetGetProcAddress");
}

const Library& theLibrary() { return library; }

Session::Session() : getProcAddress_(library.initialize(nullptr, nullptr, nullptr)) {
  check(getProcAddress_, "the library does not start");
  beUsedByAnotherThread();
}

void Session::beUsedByAnotherThread() const {
  std::thread([find = getProcAddress_] {
    check(find("ZEB", "ZEBIsMultiThreaded", "ZEBIsMultiThreaded"), "a proc is not found");
  }).join();
}

Session::~Session() { library.terminate(); }

}  // namespace zeb::bench
