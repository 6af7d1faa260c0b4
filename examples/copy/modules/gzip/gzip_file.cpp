#include "modules/gzip/gzip_file.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <new>
#include <system_error>

#include "common/support/guard.h"
#include "interfaces/gzip.h"

namespace examples {
namespace {

constexpr unsigned kBufferSize = 128U << 10U;

// zlib takes the size of a piece as unsigned, and answers with an int.
constexpr uint64_t kLargestPiece = 1U << 30U;

std::string systemReason() {
  return errno != 0 ? std::generic_category().message(errno) : "memory is short";
}

gzFile openFile(const std::string& path, const char* mode) {
  errno = 0;
  const gzFile file = gzopen(path.c_str(), mode);
  if (file == nullptr) throw CodedError(COPY_GZIP_ERROR_OPEN, systemReason());
  gzbuffer(file, kBufferSize);  // fails only after the first access
  return file;
}

// Throws what zlib remembers of the last failure.
[[noreturn]] void raiseFailureOf(gzFile file) {
  const int reason = errno;
  int code = Z_OK;
  const char* const message = gzerror(file, &code);
  errno = reason;
  if (code == Z_ERRNO) throw CodedError(COPY_GZIP_ERROR_SYSTEM, systemReason());
  if (code == Z_MEM_ERROR) throw std::bad_alloc();
  // zlib puts the path in front of its reason; whoever prints it has named the file already.
  std::string text = message;
  const size_t prefix = text.rfind(": ");
  if (prefix != std::string::npos) text.erase(0, prefix + 2);
  throw CodedError(COPY_GZIP_ERROR_DAMAGED, "the compressed file is damaged: " + text);
}

// zlib would hand out the bytes of any other file as they are.
void requireCompressed(gzFile file) {
  errno = 0;
  if (gzdirect(file) == 0) return;
  int code = Z_OK;
  const int reason = errno;
  gzerror(file, &code);
  errno = reason;
  if (code != Z_OK && code != Z_BUF_ERROR) raiseFailureOf(file);
  throw CodedError(COPY_GZIP_ERROR_NOT_COMPRESSED, "this is no gzip file");
}

}  // namespace

GzipReader::GzipReader(const std::string& path) : path_(path), file_(openFile(path, "rb")) {
  try {
    requireCompressed(file_);
  } catch (...) {
    gzclose_r(file_);
    throw;
  }
}

GzipReader::~GzipReader() { gzclose_r(file_); }

uint64_t GzipReader::read(void* buffer, uint64_t size) {
  uint64_t done = 0;
  while (done < size) {
    const auto piece = static_cast<unsigned>(std::min(size - done, kLargestPiece));
    const unsigned count = readPiece(static_cast<char*>(buffer) + done, piece);
    done += count;
    if (count < piece) break;
  }
  return done;
}

unsigned GzipReader::readPiece(void* buffer, unsigned size) {
  errno = 0;
  const int count = gzread(file_, buffer, size);
  if (count < 0) raiseFailureOf(file_);
  if (static_cast<unsigned>(count) == size) return size;
  // A file that ends too early ends like any other; only the code tells.
  int code = Z_OK;
  gzerror(file_, &code);
  if (code != Z_OK && code != Z_STREAM_END) raiseFailureOf(file_);
  return static_cast<unsigned>(count);
}

void GzipReader::seek(uint64_t position) {
  if (position > static_cast<uint64_t>(std::numeric_limits<z_off_t>::max())) {
    throw CodedError(COPY_GZIP_ERROR_SEEK, "invalid position in a compressed file");
  }
  // A failure that was met is forgotten: where it is gone to, the file may be whole.
  gzclearerr(file_);
  errno = 0;
  if (gzseek(file_, static_cast<z_off_t>(position), SEEK_SET) < 0) raiseFailureOf(file_);
}

uint64_t GzipReader::position() const { return static_cast<uint64_t>(gztell(file_)); }

GzipWriter::GzipWriter(const std::string& path) : file_(openFile(path, "wb")) {}

GzipWriter::~GzipWriter() {
  if (file_ != nullptr) gzclose_w(file_);
}

void GzipWriter::write(const void* bytes, uint64_t size) {
  if (file_ == nullptr) {
    throw CodedError(COPY_GZIP_ERROR_FINISHED, "the compressed file is complete already");
  }
  uint64_t done = 0;
  while (done < size) {
    const auto piece = static_cast<unsigned>(std::min(size - done, kLargestPiece));
    errno = 0;
    if (gzwrite(file_, static_cast<const char*>(bytes) + done, piece) <= 0) raiseFailureOf(file_);
    done += piece;
  }
}

void GzipWriter::finish() {
  if (file_ == nullptr) {
    throw CodedError(COPY_GZIP_ERROR_FINISHED, "the compressed file is complete already");
  }
  errno = 0;
  const int code = gzclose_w(file_);
  file_ = nullptr;
  if (code == Z_OK) return;
  throw CodedError(COPY_GZIP_ERROR_SYSTEM, systemReason());
}

}  // namespace examples
