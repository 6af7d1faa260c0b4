// Files and the current directory as this system has them.
#include "platform/file.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <string>
#include <vector>

namespace zeb {
namespace {

class FileTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(mkdtemp(folder_.data()), nullptr); }
  void TearDown() override {
    (void)std::remove((folder_ + "/file").c_str());
    EXPECT_EQ(rmdir(folder_.c_str()), 0);
  }

  std::string folder_ = "zeb_test_files.XXXXXX";
};

std::string currentName() {
  std::array<char, 4096> name{};
  EXPECT_NE(getcwd(name.data(), name.size()), nullptr);
  return name.data();
}

TEST(CurrentDirectoryTest, IsNamedWhenItFits) {
  const std::string expected = currentName();
  std::vector<PathChar> name(expected.size() + 1);
  EXPECT_EQ(currentDirectory(name.data(), name.size()), name.size());
  EXPECT_EQ(std::string(name.data()), expected);
}

TEST(CurrentDirectoryTest, AsksForMoreRoomWhenItDoesNotFit) {
  std::vector<PathChar> name(currentName().size());
  EXPECT_GT(currentDirectory(name.data(), name.size()), name.size());
}

TEST_F(FileTest, IsOpenedFromADirectory) {
  std::FILE* written = openFile((folder_ + "/file").c_str(), "wb");
  ASSERT_NE(written, nullptr);
  EXPECT_EQ(std::fputs("content", written), 1);
  EXPECT_EQ(std::fclose(written), 0);

  std::FILE* read = openFileFrom(folder_.c_str(), "file");
  ASSERT_NE(read, nullptr);
  EXPECT_EQ(sizeOfFile(read), 7);
  EXPECT_EQ(std::ftell(read), 0);
  EXPECT_EQ(std::fgetc(read), 'c');
  EXPECT_EQ(std::fputc('x', read), EOF);
  std::fclose(read);

  const std::string absolute = currentName() + "/" + folder_ + "/file";
  std::FILE* again = openFileFrom("no such directory", absolute.c_str());
  ASSERT_NE(again, nullptr);
  std::fclose(again);
}

TEST_F(FileTest, IsNotOpenedWhereThereIsNone) {
  EXPECT_EQ(openFileFrom(folder_.c_str(), "file"), nullptr);
  EXPECT_EQ(openFileFrom((folder_ + "/file").c_str(), "file"), nullptr);
  EXPECT_EQ(openFile((folder_ + "/file").c_str(), "rb"), nullptr);
}

TEST_F(FileTest, HasASizeOnlyWhenItIsRegular) {
  std::FILE* directory = openFile(folder_.c_str(), "rb");
  ASSERT_NE(directory, nullptr);
  EXPECT_EQ(sizeOfFile(directory), -1);
  std::fclose(directory);
}

}  // namespace
}  // namespace zeb
