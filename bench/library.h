// The built shared library, loaded at run time as a host loads it: the rows that measure public
// procs see exactly what a client sees.
#ifndef ZEB_BENCH_LIBRARY_H
#define ZEB_BENCH_LIBRARY_H

#include <string>

#include "zeb/zeb.h"

namespace zeb::bench {

// The exports that the rows call.
struct Library {
  ZEBInitializeFunction initialize;
  ZEBTerminateFunction terminate;
  ZEBGetGetProcAddressFunction getGetProcAddress;
};

// Loads the library from a path. To be called once, before any row runs. Ends the process when the
// library or one of its exports is not there.
void loadLibrary(const std::string& path);

const Library& theLibrary();

// The library started with its default allocators, stopped again at the end. More than one thread
// has used it, as in any host, so that nothing is measured that only a first thread is spared,
// whatever row runs first.
class Session {
 public:
  Session();
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  ZEBGetProcAddress getProcAddress() const { return getProcAddress_; }

 private:
  void beUsedByAnotherThread() const;

  ZEBGetProcAddress getProcAddress_;
};

}  // namespace zeb::bench

#endif
