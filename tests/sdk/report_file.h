// A report beside the test executable.
#ifndef ZEB_TESTS_SDK_REPORT_FILE_H
#define ZEB_TESTS_SDK_REPORT_FILE_H

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace sdk_test {

class ReportFile {
 public:
  // Test processes may run side by side.
  explicit ReportFile(const std::string& subject)
      : name_(subject + "." + std::to_string(getpid()) + ".report.txt"),
        path_(std::filesystem::read_symlink("/proc/self/exe").parent_path() / name_) {}
  ReportFile(const ReportFile&) = delete;
  ReportFile& operator=(const ReportFile&) = delete;
  ~ReportFile() { std::filesystem::remove(path_); }

  const char* Name() const { return name_.c_str(); }
  const std::filesystem::path& Path() const { return path_; }
  bool Exists() const { return std::filesystem::exists(path_); }
  std::string Text() const {
    std::ostringstream text;
    text << std::ifstream(path_, std::ios::binary).rdbuf();
    return text.str();
  }

 private:
  const std::string name_;
  const std::filesystem::path path_;
};

}  // namespace sdk_test

#endif
