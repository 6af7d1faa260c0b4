#include "platform/loaded_file.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>

namespace zeb {
namespace {

void inThisProgram() {}
int alsoInThisProgram = 1;

TEST(LoadedFileTest, FindsTheProgramByItsFunctionsAndData) {
  LoadedFile file;
  ASSERT_TRUE(findLoadedFile(reinterpret_cast<const void*>(&inThisProgram), file));
  const auto program = std::filesystem::read_symlink("/proc/self/exe");
  EXPECT_TRUE(std::filesystem::equivalent(file.path.data(), program)) << file.path.data();
  EXPECT_LT(file.base, reinterpret_cast<uint64_t>(&inThisProgram));
  LoadedFile again;
  ASSERT_TRUE(findLoadedFile(&alsoInThisProgram, again));
  EXPECT_STREQ(again.path.data(), file.path.data());
  EXPECT_EQ(again.base, file.base);
}

TEST(LoadedFileTest, AgreesWithTheLoaderAboutALibrary) {
  const void* address = dlsym(RTLD_DEFAULT, "getenv");
  ASSERT_NE(address, nullptr);
  Dl_info info{};
  ASSERT_NE(dladdr(address, &info), 0);
  LoadedFile file;
  ASSERT_TRUE(findLoadedFile(address, file));
  EXPECT_TRUE(std::filesystem::equivalent(file.path.data(), info.dli_fname)) << file.path.data();
  EXPECT_EQ(file.base, reinterpret_cast<uint64_t>(info.dli_fbase));
}

TEST(LoadedFileTest, FindsNoneElsewhere) {
  LoadedFile file;
  EXPECT_FALSE(findLoadedFile(nullptr, file));
  EXPECT_FALSE(findLoadedFile(reinterpret_cast<const void*>(uint64_t{16}), file));
  EXPECT_FALSE(findLoadedFile(reinterpret_cast<const void*>(~uint64_t{0}), file));
  const auto block = std::make_unique<int>(1);
  EXPECT_FALSE(findLoadedFile(block.get(), file));
}

}  // namespace
}  // namespace zeb
