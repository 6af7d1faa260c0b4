// The library, started by the SDK for each test; what it reports is kept, and a test that leaves
// something behind fails.
#ifndef ZEB_TESTS_SDK_STARTED_H
#define ZEB_TESTS_SDK_STARTED_H

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "contract/sanitizers.h"
#include "zeb/sdk/library.hpp"

// The library stays loaded after each test, as it does in a host. At the very end it is unloaded,
// so that what the loader keeps for it is no leak; but not under a sanitizer, which names its
// functions.
class Unloading : public testing::Environment {
 public:
  void TearDown() override {
    if (contract::kSanitized) return;
    while (void* library = dlopen(ZEB_LIBRARY_PATH, RTLD_NOW | RTLD_NOLOAD)) {
      dlclose(library);
      dlclose(library);
    }
  }
};
inline testing::Environment* const unloading = testing::AddGlobalTestEnvironment(new Unloading);

class Started : public testing::Test {
 protected:
  static void report(const char* message) { reports.emplace_back(message); }

  Started() { reports.clear(); }
  ~Started() override {
    if (const uint32_t stopped = library.stop(); stopped != 0) count = stopped;
    for (const std::string& message : reports) {
      EXPECT_NE(message, "string memory leak");
    }
  }

  // Where the change counter stood at the last stop.
  static inline uint32_t count = 1;
  static inline std::vector<std::string> reports;

  zeb::sdk::Library library = zeb::sdk::Library::load(
      ZEB_LIBRARY_PATH, {.errorReport = &report, .unregisterCountStart = count});
};

#endif
