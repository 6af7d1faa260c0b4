#include "library.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include "failure.h"
#include "report_log.h"
#include "zeb/sdk/shared_object.hpp"

namespace zebinfo {

namespace {

[[noreturn]] void refuse(const std::string& reason) {
  throw Failure(ExitStatus::badLibrary, reason);
}

struct Exports {
  ZEBGetVersionFunction getVersion;
  ZEBInitialize4Function initialize;
  ZEBTerminateFunction terminate;
};

Exports linkedExports() { return {&ZEBGetVersion, &ZEBInitialize4, &ZEBTerminate}; }

template <class Function>
Function required(const zeb::sdk::SharedObject& file, const std::string& path, const char* name) {
  const auto function = file.find<Function>(name);
  if (function == nullptr)
    refuse(fmt::format("{} is not libzeb: it does not export {}", path, name));
  return function;
}

zeb::sdk::SharedObject loaded(const std::string& path) {
  try {
    return zeb::sdk::SharedObject(path);
  } catch (const zeb::sdk::LoadFailure& failure) {
    refuse(failure.what());
  }
}

Exports loadedExports(const std::string& path) {
  const zeb::sdk::SharedObject file = loaded(path);
  return {required<ZEBGetVersionFunction>(file, path, "ZEBGetVersion"),
          required<ZEBInitialize4Function>(file, path, "ZEBInitialize4"),
          required<ZEBTerminateFunction>(file, path, "ZEBTerminate")};
}

constexpr uint32_t majorOf(uint32_t version) { return version >> 16; }

}  // namespace

Library::Library(const std::string& path) {
  const Exports exports = path.empty() ? linkedExports() : loadedExports(path);
  version_ = exports.getVersion();
  if (majorOf(version_) != majorOf(ZEB_VERSION)) {
    refuse(fmt::format("the library is of major version {}, but {} is needed", majorOf(version_),
                       majorOf(ZEB_VERSION)));
  }
  getProcAddress_ = exports.initialize(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                       &keepReport, nullptr, 0, 1, 0);
  if (getProcAddress_ == nullptr) refuse("the library did not start");
  terminate_ = exports.terminate;
  fetch();
}

Library::~Library() { stop(); }

void Library::fetch() {
  if (ZEBFetchFrameProcs(getProcAddress_, &frame_) == 0 ||
      ZEBFetchEventProcs(getProcAddress_, &events_) == 0) {
    stop();
    refuse("the library lacks procs of its own interfaces");
  }
  ZEBInspectProcs procs{};
  if (ZEBFetchInspectProcs(getProcAddress_, &procs) != 0) inspect_ = procs;
}

std::string Library::file() const {
  Dl_info info{};
  const auto* address = reinterpret_cast<const void*>(frame_.GetUnregisterCount);
  return dladdr(address, &info) != 0 && info.dli_fname != nullptr ? info.dli_fname : "";
}

void Library::stop() noexcept {
  if (terminate_ != nullptr) terminate_();
  terminate_ = nullptr;
}

}  // namespace zebinfo
