// The library from a host's side: started by a constructor, stopped by the end of the scope. The
// host itself is started and stopped with it, as a module is (client_start.hpp).
//
//   const Library library = Library::load("libzeb.so.4", {});   // by path
//   const Library library = Library::linked({});                // linked with zeb::zeb
#ifndef ZEB_SDK_LIBRARY_HPP
#define ZEB_SDK_LIBRARY_HPP

#include <stdexcept>
#include <string>
#include <utility>

#include "zeb/sdk/binding.hpp"
#include "zeb/sdk/client_start.hpp"
#include "zeb/sdk/host_reports.hpp"
#include "zeb/sdk/shared_object.hpp"

namespace zeb::sdk {

// A Library is no static object: at the end of the process the library's own would be gone first.

// What a host chooses when it starts the library; see ZEBInitialize4 in exports.h.
struct StartOptions {
  // Where pages come from; none: malloc and free. One of the two alone is refused.
  ZEBPageAlloc pageAlloc = nullptr;
  ZEBPageFree pageFree = nullptr;  // where they go
  // Where every object comes from: all four or none; less than four are refused.
  ZEBObjAlloc objAlloc = nullptr;
  ZEBObjRealloc objRealloc = nullptr;  // changes a block's size
  ZEBObjFree objFree = nullptr;        // takes a block back
  ZEBObjSize objSize = nullptr;        // tells a block's size
  // Told what the library and the modules report, through a procedure of Library's own, which is
  // what "ZEBReportError" then names.
  ZEBErrorReport errorReport = nullptr;
  ZEBPurgeRequest purgeRequest = nullptr;    // asked to purge the cache; null: the library does
  uint32_t flags = ZEB_FLAG_MULTI_THREADED;  // looked at only with allocators of the host's
  // Never 0. After a stop, what stop() returned.
  uint32_t unregisterCountStart = 1;
  uint64_t hostValue = 0;  // kept, never looked at
};

// The library could not be loaded or refused to start; what() says which.
class StartFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A start of the library, which ends with this object.
class Library {
 public:
  // Loads the shared library by path or name, and starts it. It stays loaded: objects that outlive
  // the stop, as errors may, still need its code. Throws StartFailure.
  [[nodiscard]] static Library load(const std::string& path, const StartOptions& options = {}) {
    const SharedObject file = loaded(path);
    const Exports exports{file.find<ZEBInitialize4Function>("ZEBInitialize4"),
                          file.find<ZEBTerminateFunction>("ZEBTerminate")};
    if (exports.start == nullptr || exports.stop == nullptr) {
      throw StartFailure(path + " is not libzeb");
    }
    return {exports, options};
  }

  // The library that the host is linked with. A template only so that a host which loads the
  // library by path needs no symbol of it.
  template <class Options = StartOptions>
  [[nodiscard]] static Library linked(const Options& options = {}) {
    return {Exports{&ZEBInitialize4, &ZEBTerminate}, options};
  }

  Library(Library&& other) noexcept
      : stop_(std::exchange(other.stop_, nullptr)), find_(std::exchange(other.find_, nullptr)) {}
  Library& operator=(Library&&) = delete;
  ~Library() { (void)stop(); }

  // What modules are handed; null once the library was stopped.
  [[nodiscard]] ZEBGetProcAddress find() const noexcept { return find_; }

  // Stops the library and returns where the change counter stood, for the next start; 0 when it was
  // stopped already. What the caches keep goes first, while the host's allocator is still in place.
  uint32_t stop() noexcept {
    if (stop_ == nullptr) return 0;
    if (const auto* cache = tryProcs<Cache>()) cache->PurgeAllStaticCaches(nullptr);
    stopClient();
    find_ = nullptr;
    const uint32_t count = std::exchange(stop_, nullptr)();
    detail::hostReport.store(nullptr, std::memory_order_release);
    return count;
  }

 private:
  struct Exports {
    ZEBInitialize4Function start;
    ZEBTerminateFunction stop;
  };

  // The library takes the procs of an allocator that is not whole for none.
  static void requireWholeAllocators(const StartOptions& options) {
    const auto isWhole = [](auto... procs) {
      const std::size_t given = (std::size_t{procs != nullptr} + ...);
      return given == 0 || given == sizeof...(procs);
    };
    if (!isWhole(options.pageAlloc, options.pageFree)) {
      throw StartFailure("one of the two page procs of the host is missing");
    }
    if (!isWhole(options.objAlloc, options.objRealloc, options.objFree, options.objSize)) {
      throw StartFailure("one of the four object procs of the host is missing");
    }
  }

  static SharedObject loaded(const std::string& path) {
    try {
      return SharedObject(path);
    } catch (const LoadFailure& failure) {
      throw StartFailure(failure.what());
    }
  }

  Library(const Exports& exports, const StartOptions& options) : stop_(exports.stop) {
    if (thisModule.started) throw StartFailure("this host has started the library already");
    requireWholeAllocators(options);
    detail::hostReport.store(options.errorReport, std::memory_order_release);
    find_ =
        exports.start(options.pageAlloc, options.pageFree, options.objAlloc, options.objRealloc,
                      options.objFree, options.objSize, &detail::reportToHost, options.purgeRequest,
                      options.flags, options.unregisterCountStart, options.hostValue);
    if (find_ == nullptr) {
      detail::hostReport.store(nullptr, std::memory_order_release);
      throw StartFailure(
          "libzeb refused to start: it runs with another host's allocators, or memory is short");
    }
    if (!startClient(find_)) {
      stop_();
      detail::hostReport.store(nullptr, std::memory_order_release);
      throw StartFailure("an object of the host could not be initialised");
    }
  }

  ZEBTerminateFunction stop_;
  ZEBGetProcAddress find_ = nullptr;
};

}  // namespace zeb::sdk

#endif
