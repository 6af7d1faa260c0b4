// The built library as a host meets it: loaded at run time, eleven exports, everything else by
// name.
//
// `exports()` loads it on first use and leaves it loaded, so that reports of the sanitizers can
// name its functions. `RunningLibrary` is one start, matched by one stop at the latest when it goes
// out of scope, with the procs of every interface fetched.
#ifndef ZEB_TESTS_CONTRACT_LIBRARY_H
#define ZEB_TESTS_CONTRACT_LIBRARY_H

#include <dlfcn.h>

#include <cstdint>
#include <stdexcept>
#include <string>

#include "contract/sanitizers.h"
#include "zeb/zeb.h"

namespace contract {

struct Exports {
  ZEBGetVersionFunction GetVersion;
  ZEBGetGetProcAddressFunction GetGetProcAddress;
  ZEBInitializeFunction Initialize;
  ZEBInitialize2Function Initialize2;
  ZEBInitialize3Function Initialize3;
  ZEBInitialize4Function Initialize4;
  ZEBTerminateFunction Terminate;
  ZEBLockSmithLockImplFunction LockSmithLock;
  ZEBLockSmithUnlockImplFunction LockSmithUnlock;
  ZEBLockSmithDeleteImplFunction LockSmithDelete;
  ZEBLockSmithAssertNoLocksImplFunction LockSmithAssertNoLocks;
};

inline void* OpenLibrary(int moreFlags = 0) {
  void* library = dlopen(ZEB_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL | moreFlags);
  if (library == nullptr) throw std::runtime_error(dlerror());
  return library;
}

// Whether the library is in this process already.
inline bool IsLoaded() {
  void* library = dlopen(ZEB_LIBRARY_PATH, RTLD_NOW | RTLD_NOLOAD);
  if (library == nullptr) return false;
  dlclose(library);
  return true;
}

template <class Function>
Function Exported(void* library, const char* name) {
  void* symbol = dlsym(library, name);
  if (symbol == nullptr) throw std::runtime_error(std::string(name) + " is not exported");
  return reinterpret_cast<Function>(symbol);
}

inline Exports ExportsOf(void* library) {
  return {
      .GetVersion = Exported<ZEBGetVersionFunction>(library, "ZEBGetVersion"),
      .GetGetProcAddress = Exported<ZEBGetGetProcAddressFunction>(library, "ZEBGetGetProcAddress"),
      .Initialize = Exported<ZEBInitializeFunction>(library, "ZEBInitialize"),
      .Initialize2 = Exported<ZEBInitialize2Function>(library, "ZEBInitialize2"),
      .Initialize3 = Exported<ZEBInitialize3Function>(library, "ZEBInitialize3"),
      .Initialize4 = Exported<ZEBInitialize4Function>(library, "ZEBInitialize4"),
      .Terminate = Exported<ZEBTerminateFunction>(library, "ZEBTerminate"),
      .LockSmithLock = Exported<ZEBLockSmithLockImplFunction>(library, "ZEBLockSmithLockImpl"),
      .LockSmithUnlock =
          Exported<ZEBLockSmithUnlockImplFunction>(library, "ZEBLockSmithUnlockImpl"),
      .LockSmithDelete =
          Exported<ZEBLockSmithDeleteImplFunction>(library, "ZEBLockSmithDeleteImpl"),
      .LockSmithAssertNoLocks =
          Exported<ZEBLockSmithAssertNoLocksImplFunction>(library, "ZEBLockSmithAssertNoLocksImpl"),
  };
}

class LoadedLibrary {
 public:
  LoadedLibrary() = default;
  ~LoadedLibrary() { dlclose(handle); }
  LoadedLibrary(const LoadedLibrary&) = delete;
  LoadedLibrary& operator=(const LoadedLibrary&) = delete;

  void* const handle = OpenLibrary(kSanitized ? RTLD_NODELETE : 0);
  const Exports exports = ExportsOf(handle);
};

inline const LoadedLibrary& Library() {
  static const LoadedLibrary library;
  return library;
}

inline const Exports& exports() { return Library().exports; }

// The arguments of the fullest start; the defaults are those of the simplest.
struct StartOptions {
  ZEBPageAlloc pageAlloc = nullptr;
  ZEBPageFree pageFree = nullptr;
  ZEBObjAlloc objAlloc = nullptr;
  ZEBObjRealloc objRealloc = nullptr;
  ZEBObjFree objFree = nullptr;
  ZEBObjSize objSize = nullptr;
  ZEBErrorReport errorReport = nullptr;
  ZEBPurgeRequest purgeRequest = nullptr;
  std::uint32_t flags = 0;
  std::uint32_t unregisterCountStart = 1;
  std::uint64_t hostValue = 0;
};

inline ZEBGetProcAddress Start(const StartOptions& options = {}) {
  return exports().Initialize4(options.pageAlloc, options.pageFree, options.objAlloc,
                               options.objRealloc, options.objFree, options.objSize,
                               options.errorReport, options.purgeRequest, options.flags,
                               options.unregisterCountStart, options.hostValue);
}

// Every proc of every interface, fetched as a module fetches them.
struct Procs {
  ZEBFrameProcs frame;
  ZEBMemoryProcs memory;
  ZEBMemoryDebugProcs memoryDebug;
  ZEBErrorProcs error;
  ZEBStringProcs string;
  ZEBEventProcs event;
};

inline Procs FetchAll(ZEBGetProcAddress getProcAddress) {
  Procs procs;
  if (ZEBFetchFrameProcs(getProcAddress, &procs.frame) == 0 ||
      ZEBFetchMemoryProcs(getProcAddress, &procs.memory) == 0 ||
      ZEBFetchMemoryDebugProcs(getProcAddress, &procs.memoryDebug) == 0 ||
      ZEBFetchErrorProcs(getProcAddress, &procs.error) == 0 ||
      ZEBFetchStringProcs(getProcAddress, &procs.string) == 0 ||
      ZEBFetchEventProcs(getProcAddress, &procs.event) == 0) {
    throw std::runtime_error("a started library lacks one of its procs");
  }
  return procs;
}

class RunningLibrary : public Procs {
 public:
  explicit RunningLibrary(const StartOptions& options = {})
      : RunningLibrary(contract::Start(options)) {}
  ~RunningLibrary() {
    if (running_) Stop();
  }
  RunningLibrary(const RunningLibrary&) = delete;
  RunningLibrary& operator=(const RunningLibrary&) = delete;

  // Stops early. The procs stay readable: what a client may still call afterwards is called so.
  std::uint32_t Stop() {
    running_ = false;
    return exports().Terminate();
  }

  const ZEBGetProcAddress getProcAddress;

 private:
  explicit RunningLibrary(ZEBGetProcAddress started)
      : Procs(FetchAll(Checked(started))), getProcAddress(started) {}

  static ZEBGetProcAddress Checked(ZEBGetProcAddress started) {
    if (started == nullptr) throw std::runtime_error("the library did not start");
    return started;
  }

  bool running_ = true;
};

// A function pointer to register and to find again; it is never called.
inline ZEBProc FakeProc(std::uintptr_t value) { return reinterpret_cast<ZEBProc>(value); }

template <class Function>
ZEBProc AsProc(Function function) {
  return reinterpret_cast<ZEBProc>(function);
}

}  // namespace contract

#endif
