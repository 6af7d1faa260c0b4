// Modules: loaded from a folder, started, and later stopped and unloaded.
#ifndef EXAMPLES_COMMON_HOST_MODULE_LOADER_H
#define EXAMPLES_COMMON_HOST_MODULE_LOADER_H

#include <filesystem>
#include <list>
#include <string>
#include <vector>

#include "common/host/shared_object.h"
#include "common/module.h"

namespace examples {

// The regular files of a folder, sorted by name. Throws Failure if there is no such folder.
std::vector<std::filesystem::path> filesOf(const std::filesystem::path& folder);

// A started module. It stops when this object goes, and then its file is unloaded.
class Module {
 public:
  // Throws std::runtime_error if the file is not a module or does not want to start.
  Module(const std::filesystem::path& path, ZEBGetProcAddress getProcAddress, bool keepMapped);
  ~Module();

  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  // The file's name: modules of the same name stand in for each other.
  [[nodiscard]] std::string name() const { return path_.filename().string(); }
  [[nodiscard]] const std::filesystem::path& path() const noexcept { return path_; }

 private:
  std::filesystem::path path_;
  SharedObject object_;
  ExampleModuleStopFunction stop_;
};

// What became of one file.
struct LoadOutcome {
  std::string file;
  std::string problem;  // empty: the module is started
};

// All running modules. The library must outlive them.
class ModuleLoader {
 public:
  ModuleLoader(ZEBGetProcAddress getProcAddress, bool keepMapped)
      : getProcAddress_(getProcAddress), keepMapped_(keepMapped) {}
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
  bool keepMapped_;
  std::list<Module> modules_;
};

}  // namespace examples

#endif
