#include "common/host/module_loader.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <stdexcept>
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

Module::Module(const std::filesystem::path& path, ZEBGetProcAddress getProcAddress, bool keepMapped)
    : path_(path),
      object_(path, keepMapped),
      stop_(object_.find<ExampleModuleStopFunction>(EXAMPLE_MODULE_STOP)) {
  const auto start = object_.find<ExampleModuleStartFunction>(EXAMPLE_MODULE_START);
  if (start == nullptr || stop_ == nullptr) {
    throw std::runtime_error("does not export " EXAMPLE_MODULE_START " and " EXAMPLE_MODULE_STOP);
  }
  if (start(getProcAddress) == 0) {
    throw std::runtime_error(
        fmt::format("did not want to start: {}", fmt::join(takeErrorLog(), "; ")));
  }
}

Module::~Module() { stop_(); }

std::vector<LoadOutcome> ModuleLoader::loadFolder(const std::filesystem::path& folder) {
  std::vector<LoadOutcome> outcomes;
  for (const std::filesystem::path& file : filesOf(folder)) outcomes.push_back(loadFile(file));
  return outcomes;
}

LoadOutcome ModuleLoader::loadFile(const std::filesystem::path& path) {
  LoadOutcome outcome{path.filename().string(), {}};
  try {
    modules_.emplace_back(path, getProcAddress_, keepMapped_);
  } catch (const std::runtime_error& error) {
    outcome.problem = error.what();
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
