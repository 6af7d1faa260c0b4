// The two files of a copy, before there is a stream over them.
#ifndef COPY_HOST_FILES_H
#define COPY_HOST_FILES_H

#include <filesystem>

namespace examples {

// Whether the name says that the file is compressed.
bool isCompressedName(const std::filesystem::path& path);

// Throws Failure unless there is such a file and it can be copied to the end: a pipe or a device
// might have none, and the library's file streams go no further than 2 GiB.
void requireSource(const std::filesystem::path& source);

// Throws Failure when writing the target would destroy the source, or something is there that
// cannot be read back, as a folder or a device.
void requireTarget(const std::filesystem::path& source, const std::filesystem::path& target);

// A target that is not yet what it is to be: removed again unless it is kept.
class UnfinishedTarget {
 public:
  explicit UnfinishedTarget(const std::filesystem::path& path) : path_(path) {}
  ~UnfinishedTarget();

  UnfinishedTarget(const UnfinishedTarget&) = delete;
  UnfinishedTarget& operator=(const UnfinishedTarget&) = delete;

  // Called once it was opened for writing: from here on what stands there is ours.
  void begin() noexcept { begun_ = true; }
  void keep() noexcept { begun_ = false; }

 private:
  const std::filesystem::path& path_;
  bool begun_ = false;
};

}  // namespace examples

#endif
