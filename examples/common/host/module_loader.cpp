#include "common/host/module_loader.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <system_error>

#include "common/host/error_log.h"
#include "common/host/failure.h"

namespace examples {

std::vector<std::filesystem::path> filesOf(const std::filesystem::path& folder) {
  std::error_code error;
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    if (entry.is_regular_file()) files.push_back(entry.path());
  }
  if (error) {
    throw Failure(ExitStatus::badModules, fmt::format("cannot read the module folder {}: {}",
                                                      folder.string(), error.message()));
  }
  std::sort(files.begin(), files.end());
  return files;
}

namespace {

// A module that refuses has told the error log why.
std::string problemOf(const zeb::sdk::ModuleFailure& failure) {
  if (failure.kind() != zeb::sdk::ModuleFailure::Kind::refused) return failure.reason();
  return fmt::format("{}: {}", failure.reason(), fmt::join(takeErrorLog(), "; "));
}

}  // namespace

std::vector<LoadOutcome> ModuleLoader::loadFolder(const std::filesystem::path& folder) {
  std::vector<LoadOutcome> outcomes;
  for (const std::filesystem::path& file : filesOf(folder)) outcomes.push_back(loadFile(file));
  return outcomes;
}

LoadOutcome ModuleLoader::loadFile(const std::filesystem::path& path) {
  LoadOutcome outcome{path.filename().string(), {}};
  try {
    modules_.emplace_back(path, getProcAddress_, unload_);
  } catch (const zeb::sdk::ModuleFailure& failure) {
    outcome.problem = problemOf(failure);
  }
  return outcome;
}

const Module* ModuleLoader::find(const std::string& name) const {
  const auto at = std::find_if(modules_.begin(), modules_.end(),
                               [&](const Module& module) { return module.name() == name; });
  return at == modules_.end() ? nullptr : &*at;
}

void ModuleLoader::unload(const std::string& name) {
  modules_.remove_if([&](const Module& module) { return module.name() == name; });
}

void ModuleLoader::unloadAll() {
  while (!modules_.empty()) modules_.pop_back();
}

}  // namespace examples
