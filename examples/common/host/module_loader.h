// Modules: loaded from a folder, started, and later stopped and unloaded.
#ifndef EXAMPLES_COMMON_HOST_MODULE_LOADER_H
#define EXAMPLES_COMMON_HOST_MODULE_LOADER_H

#include <filesystem>
#include <list>
#include <string>
#include <vector>

#include "zeb/sdk/loaded_module.hpp"

namespace examples {

// The regular files of a folder, sorted by name. Throws Failure if there is no such folder.
std::vector<std::filesystem::path> filesOf(const std::filesystem::path& folder);

// A started module. It stops when this object goes, and then its file is unloaded.
class Module {
 public:
  // Throws zeb::sdk::ModuleFailure if the file is not a module or does not want to start.
  Module(const std::filesystem::path& path, ZEBGetProcAddress getProcAddress,
         zeb::sdk::Unload unload)
      : path_(path), running_(path.string(), getProcAddress, {.unload = unload}) {}

  // The file's name: modules of the same name stand in for each other.
  [[nodiscard]] std::string name() const { return path_.filename().string(); }
  [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }

 private:
  std::filesystem::path path_;
  zeb::sdk::LoadedModule running_;
};

// What became of one file.
struct LoadOutcome {
  std::string file;
  std::string problem;  // empty: the module is started
};

// All running modules. The library must outlive them.
class ModuleLoader {
 public:
  ModuleLoader(ZEBGetProcAddress getProcAddress, zeb::sdk::Unload unload)
      : getProcAddress_(getProcAddress), unload_(unload) {}
  ~ModuleLoader() { unloadAll(); }

  ModuleLoader(const ModuleLoader&) = delete;
  ModuleLoader& operator=(const ModuleLoader&) = delete;

  // Starts each module that the folder holds and passes over what is none.
  std::vector<LoadOutcome> loadFolder(const std::filesystem::path& folder);

  // The running module of this name, or null. Valid until it is unloaded.
  [[nodiscard]] const Module* find(const std::string& name) const;

  // Stops and unloads the module of this name, if there is one.
  void unload(const std::string& name);

  // The same for all, the last loaded first.
  void unloadAll();

 private:
  LoadOutcome loadFile(const std::filesystem::path& path);

  ZEBGetProcAddress getProcAddress_;
  zeb::sdk::Unload unload_;
  std::list<Module> modules_;
};

}  // namespace examples

#endif
