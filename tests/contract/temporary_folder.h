// A folder for a test's files, below the folder that the test runs in; it goes with the object.
#ifndef ZEB_TESTS_CONTRACT_TEMPORARY_FOLDER_H
#define ZEB_TESTS_CONTRACT_TEMPORARY_FOLDER_H

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>

namespace contract {

class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string name = "zeb_test_files.XXXXXX";
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = std::filesystem::absolute(name);
  }
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::string operator/(std::string_view name) const { return (path_ / name).string(); }

 private:
  std::filesystem::path path_;
};

// Another current directory, until the end of the scope.
class ChangedDirectory {
 public:
  explicit ChangedDirectory(const std::filesystem::path& path) {
    std::filesystem::current_path(path);
  }
  ~ChangedDirectory() { std::filesystem::current_path(before_); }
  ChangedDirectory(const ChangedDirectory&) = delete;
  ChangedDirectory& operator=(const ChangedDirectory&) = delete;

 private:
  const std::filesystem::path before_ = std::filesystem::current_path();
};

inline std::string ContentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline void PutContent(const std::string& path, std::string_view content) {
  std::ofstream(path, std::ios::binary)
      .write(content.data(), static_cast<std::streamsize>(content.size()));
}

}  // namespace contract

#endif
