// A module from a host's side: loaded and started by a constructor, stopped by the end of the
// scope.
//
//   const Library library = Library::linked();
//   const LoadedModule greeter("./greeter.so", library.find());
//
// The module exports the two functions of module_entry.h. Modules that need each other are started
// in the order of their need, and stopped in the reverse order, as scopes end. A container may end
// its elements in another order: take them out from the back.
#ifndef ZEB_SDK_LOADED_MODULE_HPP
#define ZEB_SDK_LOADED_MODULE_HPP

#include <exception>
#include <stdexcept>
#include <string>
#include <utility>

#include "zeb/sdk/host_reports.hpp"
#include "zeb/sdk/module_entry.h"
#include "zeb/sdk/shared_object.hpp"

namespace zeb::sdk {

// What a host chooses for a module.
struct ModuleOptions {
  // Whether the code goes when the module was stopped. By default it stays, since an error, a
  // cached result or a stream of the module that somebody still holds may call into it.
  Unload unload = Unload::never;
  // The names of the two functions, for modules of another convention. The start returns 0 to
  // refuse, and both have the types of module_entry.h.
  const char* startName = ZEB_MODULE_START;
  const char* stopName = ZEB_MODULE_STOP;  // the stop's
};

// A module that does not run. what() names the file and says why.
class ModuleFailure : public std::runtime_error {
 public:
  // What can go wrong.
  enum class Kind : uint8_t {
    notLoaded,  // the file is missing, is no shared object, or needs what is missing
    noModule,   // it does not export the two functions
    refused,    // it did not want to start
  };

  // `reason` is a sentence about the file.
  ModuleFailure(const std::string& path, Kind kind, const std::string& reason)
      : std::runtime_error(path + ": " + reason), kind_(kind), reason_(reason) {}

  // What went wrong.
  [[nodiscard]] Kind kind() const noexcept { return kind_; }
  // Why, without the file.
  [[nodiscard]] const std::string& reason() const noexcept { return reason_; }

 private:
  Kind kind_;
  std::string reason_;
};

// Used by one thread at a time, and gone, or stopped, before the library stops.
class LoadedModule {
 public:
  // Loads the file and starts the module with the look-up function of a running library. Throws
  // ModuleFailure; nothing of the module is then left but, with Unload::never, its code. Why a
  // module refused is known when the library was started through Library (library.hpp): it is what
  // the module reported meanwhile. In any case the host's error-report procedure was told.
  LoadedModule(const std::string& path, ZEBGetProcAddress find, const ModuleOptions& options = {})
      : file_(load(path, options.unload)) {
    const auto start = file_.find<ZEBModuleStartFunction>(options.startName);
    const auto stop = file_.find<ZEBModuleStopFunction>(options.stopName);
    if (start == nullptr || stop == nullptr) {
      throw ModuleFailure(
          path, ModuleFailure::Kind::noModule,
          std::string("does not export ") + options.startName + " and " + options.stopName);
    }
    if (find == nullptr) refuse(path, "the library does not run");
    run(path, start, find);
    stop_ = stop;
  }
  // The other one has no module afterwards.
  LoadedModule(LoadedModule&& other) noexcept
      : file_(std::move(other.file_)), stop_(std::exchange(other.stop_, nullptr)) {}
  // The module that was here is stopped first.
  LoadedModule& operator=(LoadedModule&& other) noexcept {
    if (this == &other) return *this;
    stop();
    file_ = std::move(other.file_);
    stop_ = std::exchange(other.stop_, nullptr);
    return *this;
  }
  ~LoadedModule() { stop(); }

  // Stops the module before the end of the scope, and unloads it if that was chosen. Does nothing
  // the second time.
  void stop() noexcept {
    if (const auto stop = std::exchange(stop_, nullptr)) {
      try {
        stop();
      } catch (...) {  // a module must not throw, and a host cannot mend it
      }
    }
    file_.close();
  }

  // A function that the file exports besides the two; null when there is none, or the module was
  // stopped. The type is not checked.
  template <class Function>
  [[nodiscard]] Function exported(const char* name) const noexcept {
    return file_.find<Function>(name);
  }

 private:
  static SharedObject load(const std::string& path, Unload unload) {
    try {
      return SharedObject(path, unload);
    } catch (const LoadFailure& failure) {
      throw ModuleFailure(path, ModuleFailure::Kind::notLoaded,
                          "cannot be loaded: " + failure.reason());
    }
  }

  [[noreturn]] static void refuse(const std::string& path, const std::string& reason) {
    throw ModuleFailure(path, ModuleFailure::Kind::refused,
                        "refused to start" + (reason.empty() ? reason : ": " + reason));
  }

  static void run(const std::string& path, ZEBModuleStartFunction start, ZEBGetProcAddress find) {
    const detail::ReportListener listener;
    std::string thrown;
    try {
      if (start(find) != 0) return;
    } catch (const std::exception& failure) {  // a module must not throw, but foreign ones do
      thrown = failure.what();
    } catch (...) {
      thrown = "an unknown exception was thrown";
    }
    refuse(path, thrown.empty() ? listener.text() : thrown);
  }

  SharedObject file_;
  ZEBModuleStopFunction stop_ = nullptr;
};

}  // namespace zeb::sdk

#endif
