// The library and modules, running for as long as a C++ object lives. When it goes, everything must
// have been given back.
#ifndef EXAMPLES_COMMON_TESTS_RUNNING_MODULES_H
#define EXAMPLES_COMMON_TESTS_RUNNING_MODULES_H

#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <string>

#include "common/host/counting_allocator.h"
#include "common/host/error_log.h"
#include "common/host/library.h"
#include "common/host/module_loader.h"
#include "common/support/services.h"

namespace examples {

class RunningModules {
 public:
  // Loads the folders in their order. Where two files publish the same names, the first wins.
  explicit RunningModules(std::initializer_list<std::filesystem::path> folders,
                          ZEBPurgeRequest purgeRequest = nullptr)
      : library_(EXAMPLE_TEST_LIBRARY, nextChangeCount, kUnload, purgeRequest),
        modules_(library_.services().getProcAddress, kUnload) {
    for (const std::filesystem::path& folder : folders) modules_.loadFolder(folder);
    takeErrorLog();
  }
  ~RunningModules() {
    takeErrorLog();  // what the test itself has provoked
    modules_.unloadAll();
    nextChangeCount = library_.stop();
    for (const std::string& report : takeErrorLog()) ADD_FAILURE() << report;
    EXPECT_EQ(countsOfMemoryProcs().liveBlocks, 0U);
    EXPECT_EQ(countsOfPagePair().liveBlocks, 0U);
  }

  RunningModules(const RunningModules&) = delete;
  RunningModules& operator=(const RunningModules&) = delete;

  [[nodiscard]] const Services& services() const noexcept { return library_.services(); }
  [[nodiscard]] ModuleLoader& modules() noexcept { return modules_; }

 private:
  // Sanitizers lose the names of code that is unloaded.
  static constexpr auto kUnload = zeb::sdk::Unload::never;
  static inline uint32_t nextChangeCount = 1;

  Library library_;
  ModuleLoader modules_;
};

}  // namespace examples

#endif
