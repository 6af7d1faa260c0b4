#include "common/host/library.h"

#include <fmt/format.h>

#include <string>

#include "common/host/counting_allocator.h"
#include "common/host/error_log.h"
#include "common/host/failure.h"

namespace examples {
namespace {

constexpr uint32_t majorOf(uint32_t version) { return version >> 16; }

[[noreturn]] void refuse(const std::string& reason) {
  throw Failure(ExitStatus::badLibrary, reason);
}

zeb::sdk::SharedObject load(const std::filesystem::path& path, zeb::sdk::Unload unload) {
  try {
    return zeb::sdk::SharedObject(path.string(), unload);
  } catch (const zeb::sdk::LoadFailure& failure) {
    refuse(fmt::format("cannot load the library {}: {}", path.string(), failure.reason()));
  }
}

template <class Function>
Function required(const zeb::sdk::SharedObject& file, const char* name) {
  const auto function = file.find<Function>(name);
  if (function == nullptr)
    refuse(fmt::format("this is not the library: it does not export {}", name));
  return function;
}

}  // namespace

Library::Library(const std::filesystem::path& path, uint32_t unregisterCountStart,
                 zeb::sdk::Unload unload, ZEBPurgeRequest purgeRequest)
    : file_(load(path, unload)),
      terminate_(required<ZEBTerminateFunction>(file_, "ZEBTerminate")),
      version_(required<ZEBGetVersionFunction>(file_, "ZEBGetVersion")()) {
  if (majorOf(version_) != majorOf(ZEB_VERSION)) {
    refuse(fmt::format("the library is of major version {}, but {} is needed", majorOf(version_),
                       majorOf(ZEB_VERSION)));
  }

  const auto initialize = required<ZEBInitialize4Function>(file_, "ZEBInitialize4");
  // The allocators may be called by several threads, so the library may as well.
  const ZEBGetProcAddress getProcAddress =
      initialize(countingPageAlloc, countingPageFree, countingAlloc, countingRealloc, countingFree,
                 countingSize, reportToErrorLog, purgeRequest, ZEB_FLAG_MULTI_THREADED,
                 unregisterCountStart, 0);
  if (getProcAddress == nullptr) refuse("the library did not start");

  services_ = fetchServices(getProcAddress);
  if (!services_) {
    terminate_();
    refuse("the library lacks procs of its own interfaces");
  }
  running_ = true;
}

Library::~Library() {
  if (running_) stop();
}

uint32_t Library::stop() {
  running_ = false;
  services_->cache.PurgeAllStaticCaches(nullptr);
  return terminate_();
}

}  // namespace examples
