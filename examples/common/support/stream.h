// A stream held for as long as a C++ object lives. What its procs return as errors, it throws as
// RaisedError.
#ifndef EXAMPLES_COMMON_SUPPORT_STREAM_H
#define EXAMPLES_COMMON_SUPPORT_STREAM_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>

#include "common/support/container.h"
#include "common/support/raised_error.h"
#include "common/support/services.h"

namespace examples {

class Stream {
 public:
  // Takes over a reference to a stream. The services must outlive this object.
  Stream(const Services& services, ZEBContainer* owned)
      : services_(&services), container_(services.containers, owned) {}

  // A file, opened with a mode of fopen.
  static Stream overFile(const Services& services, const char* path, const char* mode) {
    return made(services, [&](ZEBContainer** out) {
      return services.streamFactory.NewPositionableFileStream(out, path, mode);
    });
  }

  // Memory that grows as it is written; empty at first.
  static Stream overMemory(const Services& services) {
    return made(services, [&](ZEBContainer** out) {
      return services.streamFactory.NewPositionableMemoryStream(out);
    });
  }

  // Fills the whole span unless the stream ends before; returns the number of bytes read. A stream
  // may give less than it is asked for before its end, so this asks until it gives nothing.
  size_t read(std::span<std::byte> bytes) const {
    size_t filled = 0;
    while (filled < bytes.size()) {
      uint64_t count = 0;
      raise(services_->simpleStreams.Read(get(), &count, bytes.data() + filled,
                                          bytes.size() - filled));
      if (count == 0) break;
      filled += count;
    }
    return filled;
  }

  void write(std::span<const std::byte> bytes) const {
    raise(services_->simpleStreams.Write(get(), bytes.data(), bytes.size()));
  }

  // The following are for streams that can be positioned.

  void seek(int64_t offset, uint32_t origin = ZEB_SEEK_FROM_BEGINNING) const {
    raise(services_->positionableStreams.Seek(get(), offset, origin));
  }

  [[nodiscard]] uint64_t position() const {
    uint64_t position = 0;
    raise(services_->positionableStreams.Mark(get(), &position));
    return position;
  }

  void flush() const { raise(services_->positionableStreams.Flush(get())); }

  // The bytes from the cursor to the end; the cursor stays.
  [[nodiscard]] uint64_t remaining() const {
    const uint64_t here = position();
    seek(0, ZEB_SEEK_FROM_END);
    const uint64_t end = position();
    seek(static_cast<int64_t>(here));
    return end > here ? end - here : 0;
  }

  [[nodiscard]] ZEBContainer* get() const noexcept { return container_.get(); }

 private:
  template <class Maker>
  static Stream made(const Services& services, const Maker& maker) {
    ZEBContainer* stream = nullptr;
    raiseIfFailed(services.errors, maker(&stream));
    return {services, stream};
  }

  void raise(ZEBErrorObject* owned) const { raiseIfFailed(services_->errors, owned); }

  const Services* services_;
  Container container_;
};

}  // namespace examples

#endif
