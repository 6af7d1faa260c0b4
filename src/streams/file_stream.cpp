#include "streams/file_stream.h"

#include "base/failure.h"
#include "container/container.h"
#include "streams/stream_container.h"
#include "streams/stream_copy.h"

namespace zeb::streams {

namespace {

std::FILE* existing(std::FILE* file) {
  if (file == nullptr) raiseNewKst(kst::kUnknown, "file does not exist");
  return file;
}

// Positions as a handle with 32-bit offsets tells and takes them.
uint64_t position32(int64_t position) noexcept {
  return static_cast<uint64_t>(static_cast<int64_t>(static_cast<int32_t>(position)));
}
uint64_t tell(std::FILE* file) noexcept { return position32(std::ftell(file)); }
void moveTo(std::FILE* file, uint64_t position) noexcept {
  // Where it cannot move, the handle stays.
  (void)std::fseek(file, static_cast<int32_t>(position), SEEK_SET);
}

}  // namespace

FileSharedStreamData::FileSharedStreamData(const char* path, const char* mode)
    : path_(path), file_(existing(openFile(path, mode))) {}

FileSharedStreamData::~FileSharedStreamData() { (void)std::fclose(file_); }

// While the body can be written, its only stream asks, and bytes may be waiting in the handle.
// Later several threads may ask, and the handle must stay where its own stream has it.
uint64_t FileSharedStreamData::End() const noexcept {
  if (isReadOnly()) {
    const int64_t size = sizeOfFile(file_);
    if (size >= 0) return position32(size);
  }
  const long before = std::ftell(file_);
  (void)std::fseek(file_, 0, SEEK_END);
  const uint64_t end = tell(file_);
  (void)std::fseek(file_, before, SEEK_SET);
  return end;
}

std::FILE* FileSharedStreamData::openAgain() const {
  return existing(openFileFrom(directory_.name(), path_.get()->text()));
}

FileSharedStream::~FileSharedStream() {
  if (file_ != nullptr && file_ != data().file()) (void)std::fclose(file_);
}

uint64_t FileSharedStream::Read(void* destination, uint64_t count) {
  requireBuffer(destination, count);
  if (dirty_) flushWritten();
  const uint64_t n = std::fread(destination, 1, count, file_);
  if (std::ferror(file_) != 0 && std::feof(file_) == 0) fail("stream read error", n);
  cursorFollows_ = true;
  return n;
}

void FileSharedStream::Write(const void* source, uint64_t count) {
  if (data().isReadOnly()) raiseNewKst(kst::kUnknown, kReadOnlyMessage);
  requireBuffer(source, count);
  const uint64_t n = std::fwrite(source, 1, count, file_);
  dirty_ = true;
  if (std::ferror(file_) != 0) fail("stream write error", n);
  cursorFollows_ = true;
}

// The cursor does not follow a transfer that failed: it stays where the handle stood before.
void FileSharedStream::fail(const char* message, uint64_t transferred) {
  if (cursorFollows_) setCursor(tell(file_) - transferred);
  cursorFollows_ = false;
  raiseNewKst(kst::kUnknown, message);
}

// Asking the handle is left until somebody wants to know, because it costs as much as a short
// transfer. Nothing but this stream moves the handle, so the answer is the same.
uint64_t FileSharedStream::Mark() {
  if (cursorFollows_) setCursor(tell(file_));
  cursorFollows_ = false;
  return cursor();
}

void FileSharedStream::Rewind() {
  cursorFollows_ = false;
  SharedStreamDataStream::Rewind();
}

void FileSharedStream::SyncPosition() {
  cursorFollows_ = false;
  moveTo(file_, cursor());
}

void FileSharedStream::Flush() {
  const SpinGuard guard(flushLock_);
  if (dirty_) flushWritten();
}

void FileSharedStream::flushWritten() noexcept {
  (void)std::fflush(file_);
  dirty_ = false;
}

ZEBContainer* FileSharedStream::CreateIndependentlyPositionableStream() {
  auto* independent = makeObject<FileSharedStream>(body(), nullptr);
  ZEBContainer* container = wrap(independent);
  body()->makeReadOnly();
  Flush();
  try {
    independent->file_ = data().openAgain();
  } catch (...) {
    container::release(*container);
    throw;
  }
  return container;
}

ZEBContainer* makeFileStream(const char* path, const char* mode) {
  auto* data = makeObject<FileSharedStreamData>(path, mode);
  SharedBody body(data);
  return wrap(makeObject<FileSharedStream>(std::move(body), data->file()));
}

}  // namespace zeb::streams
