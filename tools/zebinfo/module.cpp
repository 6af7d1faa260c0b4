#include "module.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "report_log.h"

namespace zebinfo {

namespace {

// A module that refuses has reported why.
std::string problemOf(const zeb::sdk::ModuleFailure& failure) {
  if (failure.kind() != zeb::sdk::ModuleFailure::Kind::refused) return failure.reason();
  const auto reports = takeReports();
  if (reports.empty()) return failure.reason();
  return fmt::format("{}: {}", failure.reason(), fmt::join(reports, "; "));
}

}  // namespace

Module::Module(std::string file, const EntryNames& names, ZEBGetProcAddress getProcAddress)
    : file_(std::move(file)) {
  try {
    running_.emplace(
        file_, getProcAddress,
        zeb::sdk::ModuleOptions{.startName = names.start.c_str(), .stopName = names.stop.c_str()});
  } catch (const zeb::sdk::ModuleFailure& failure) {
    problem_ = problemOf(failure);
  }
}

}  // namespace zebinfo
