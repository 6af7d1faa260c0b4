#include "module.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <stdexcept>

#include "report_log.h"
#include "text.h"

namespace zebinfo {

Module::Module(std::string file, const std::string& entry, ZEBGetProcAddress getProcAddress)
    : file_(std::move(file)) {
  try {
    start(entry, getProcAddress);
  } catch (const std::exception& failure) {
    problem_ = failure.what();
  } catch (...) {  // thrown by the module, which must not
    problem_ = "threw an unknown exception";
  }
}

// The file is never unloaded: the process ends soon, and a checker can still name its functions.
void Module::start(const std::string& entry, ZEBGetProcAddress getProcAddress) {
  void* object = dlopen(file_.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (object == nullptr) throw std::runtime_error("cannot be loaded: " + loaderReason(file_));
  const auto startName = entry + "Start";
  const auto stopName = entry + "Stop";
  const auto starts = reinterpret_cast<Start>(dlsym(object, startName.c_str()));
  const auto stops = reinterpret_cast<Stop>(dlsym(object, stopName.c_str()));
  if (starts == nullptr || stops == nullptr) {
    throw std::runtime_error(fmt::format("does not export {} and {}", startName, stopName));
  }
  if (starts(getProcAddress) == 0) {
    const auto reports = takeReports();
    throw std::runtime_error(reports.empty()
                                 ? "did not start"
                                 : fmt::format("did not start: {}", fmt::join(reports, "; ")));
  }
  stop_ = stops;
}

void Module::stop() {
  if (stop_ != nullptr) stop_();
  stop_ = nullptr;
}

}  // namespace zebinfo
