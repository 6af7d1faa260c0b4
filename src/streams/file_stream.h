// Streams over files.
//
// A transfer uses the position of the stream's own handle, and the cursor follows it. Only Seek
// moves the handle: after Rewind the next transfer goes on where the last one ended. Positions are
// 32 bits wide; what does not fit is truncated, which the system then refuses or not.
#ifndef ZEB_STREAMS_FILE_STREAM_H
#define ZEB_STREAMS_FILE_STREAM_H

#include <cstdio>

#include "atoms/atom.h"
#include "platform/spin_lock.h"
#include "streams/current_directory.h"
#include "streams/shared_stream.h"

namespace zeb::streams {

class FileSharedStreamData final : public SharedStreamData {
 public:
  // Raises "file does not exist" when the file cannot be opened.
  FileSharedStreamData(const char* path, const char* mode);
  ~FileSharedStreamData() override;

  [[nodiscard]] uint64_t End() const noexcept override;
  [[nodiscard]] bool IsValidPosition(uint64_t position) const noexcept override {
    return isBelowWrapping(position);
  }

  // The first stream's handle.
  [[nodiscard]] std::FILE* file() const noexcept { return file_; }
  // A handle of the caller's for reading the file that the path meant at the beginning. Raises
  // "file does not exist".
  [[nodiscard]] std::FILE* openAgain() const;

 private:
  const atoms::Ref path_;
  const CurrentDirectory directory_;
  std::FILE* const file_;
};

class FileSharedStream final : public SharedStreamDataStream {
 public:
  // Null: the stream gets a handle of its own before anybody uses it.
  FileSharedStream(SharedBody body, std::FILE* file) noexcept
      : SharedStreamDataStream(std::move(body)), file_(file) {}
  ~FileSharedStream() override;

  uint64_t Read(void* destination, uint64_t count) override;
  void Write(const void* source, uint64_t count) override;
  ZEBContainer* CreateIndependentlyPositionableStream() override;
  void Rewind() override;
  uint64_t Mark() override;
  void Flush() override ZEB_EXCLUDES(flushLock_);
  void SyncPosition() override;

 private:
  [[nodiscard]] FileSharedStreamData& data() const noexcept {
    return static_cast<FileSharedStreamData&>(*body().get());
  }
  void flushWritten() noexcept;
  [[noreturn]] void fail(const char* message, uint64_t transferred);

  std::FILE* file_;
  bool dirty_ = false;          // something was written since the last flush
  bool cursorFollows_ = false;  // the handle has moved; the cursor is where it stands now
  SpinLock flushLock_{500};     // of two threads that flush, one does; it guards no more than that
};

// A new stream's container with one reference for the caller. Raises "file does not exist".
[[nodiscard]] ZEBContainer* makeFileStream(const char* path, const char* mode);

}  // namespace zeb::streams

#endif
