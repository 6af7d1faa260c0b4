// Compressed files, over zlib. Failures are thrown as CodedError with an id of interfaces/gzip.h.
// One thread at a time uses an object.
#ifndef COPY_GZIP_GZIP_FILE_H
#define COPY_GZIP_GZIP_FILE_H

#include <zlib.h>

#include <cstdint>
#include <string>

namespace examples {

// Reads what a compressed file holds.
class GzipReader {
 public:
  explicit GzipReader(const std::string& path);
  ~GzipReader();

  GzipReader(const GzipReader&) = delete;
  GzipReader& operator=(const GzipReader&) = delete;

  // Fills the buffer, or less at the end of the file; returns how many bytes that are.
  uint64_t read(void* buffer, uint64_t size);

  // A position past the end is found out only by reading there, which gives nothing.
  void seek(uint64_t position);
  [[nodiscard]] uint64_t position() const;

  [[nodiscard]] const std::string& path() const noexcept { return path_; }

 private:
  unsigned readPiece(void* buffer, unsigned size);

  std::string path_;
  gzFile file_;
};

// Writes a compressed file.
class GzipWriter {
 public:
  explicit GzipWriter(const std::string& path);
  ~GzipWriter();

  GzipWriter(const GzipWriter&) = delete;
  GzipWriter& operator=(const GzipWriter&) = delete;

  void write(const void* bytes, uint64_t size);

  // Completes and closes the file.
  void finish();

 private:
  gzFile file_;  // null once the file is complete
};

}  // namespace examples

#endif
