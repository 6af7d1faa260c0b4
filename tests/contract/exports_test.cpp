#include "zeb/exports.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

TEST(LoadedLibrary, ReportsVersionFourPointZero) {
  void* library = dlopen(ZEB_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  const auto version = reinterpret_cast<ZEBGetVersionFunction>(dlsym(library, "ZEBGetVersion"));
  ASSERT_NE(version, nullptr);
  EXPECT_EQ(version(), 0x40000u);
  EXPECT_EQ(dlclose(library), 0);
}
