// Whole runs, judged by the files that they leave.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

#include "host/picture_modules.h"
#include "host/run.h"
#include "tests/direct_jpeg.h"
#include "tests/module_fixture.h"

namespace examples {
namespace {

namespace fs = std::filesystem;

using Files = std::map<std::string, std::string>;  // name and bytes

std::string bytesOf(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

Files filesOf(const fs::path& folder) {
  Files files;
  for (const auto& entry : fs::directory_iterator(folder)) {
    files[entry.path().filename().string()] = bytesOf(entry.path());
  }
  return files;
}

class WholeRun : public testing::Test {
 protected:
  WholeRun() {
    options_.folders = {THUMBNAILS_TEST_SAMPLES};
    options_.output = folder_;
    options_.library = EXAMPLE_TEST_LIBRARY;
    options_.modules = THUMBNAILS_TEST_MODULES;
    options_.unload = zeb::sdk::Unload::never;
  }
  ~WholeRun() override { fs::remove_all(folder_); }

  // The files that a run leaves.
  Files run() {
    fs::remove_all(folder_);
    EXPECT_EQ(makeThumbnails(options_), ExitStatus::success);
    return filesOf(folder_);
  }

  // A folder of this process alone: tests run side by side.
  const fs::path folder_ =
      fs::temp_directory_path() / ("thumbnails_test." + std::to_string(getpid()));
  Options options_;
};

// Decoded and scaled by the modules, encoded by the JPEG library without anything in between.
Files encodedDirectly(const Options& options) {
  Files files;
  RunningModules running({options.modules});
  const PictureModules modules(running.services());
  for (const auto& entry : fs::directory_iterator(options.folders.front())) {
    const Picture original = modules.decode(entry.path());
    for (const uint32_t edge : options.edges) {
      const Picture scaled = modules.scale(original, edge);
      const auto pixels = scaled.pixels();
      const std::string name =
          entry.path().filename().string() + "-" + std::to_string(edge) + ".jpg";
      files[name] = jpegOf({scaled.width(), scaled.height(), 3, {pixels.begin(), pixels.end()}},
                           static_cast<int>(options.quality));
    }
  }
  return files;
}

TEST_F(WholeRun, WritesWhatTheJpegLibraryWritesByteForByte) {
  const Files files = run();
  EXPECT_EQ(files.size(), 18U);
  EXPECT_TRUE(files == encodedDirectly(options_));
}

TEST_F(WholeRun, WritesFilesThatTheJpegLibraryReads) {
  for (const auto& [name, bytes] : run()) {
    const Pixels pixels = pixelsOf(bytes);
    EXPECT_LE(std::max(pixels.width, pixels.height), 128U) << name;
  }
}

TEST_F(WholeRun, WritesTheSameFilesFromTheCache) {
  const Files once = run();
  options_.passes = 3;
  EXPECT_TRUE(run() == once);
}

TEST_F(WholeRun, WritesTheSameFilesOnATinyBudget) {
  const Files once = run();
  options_.passes = 2;
  for (const uint64_t budget : {uint64_t{0}, uint64_t{1}, uint64_t{50000}, uint64_t{3000000}}) {
    options_.budget = budget;
    EXPECT_TRUE(run() == once) << budget;
  }
}

TEST_F(WholeRun, HeedsTheQuality) {
  const Files fine = run();
  options_.quality = 5;
  const Files coarse = run();
  EXPECT_LT(coarse.at("hills.jpg-128.jpg").size(), fine.at("hills.jpg-128.jpg").size() / 2);
  EXPECT_TRUE(coarse == encodedDirectly(options_));
}

}  // namespace
}  // namespace examples
