// Streams over the bytes of a shared buffer, in place.
//
// The buffer stays writable through every stream, also when there are several: its holders agree on
// who writes the bytes when, as they do without streams.
#ifndef ZEB_STREAMS_BUFFER_STREAM_H
#define ZEB_STREAMS_BUFFER_STREAM_H

#include "streams/shared_stream.h"
#include "zeb/shared_buffer.h"

namespace zeb::streams {

// The address and the size are asked for once.
class BufferSharedStreamData final : public SharedStreamData {
 public:
  // Takes a reference to the buffer; null: there are no bytes.
  explicit BufferSharedStreamData(ZEBSharedBuffer* buffer);
  ~BufferSharedStreamData() override;

  [[nodiscard]] uint64_t End() const noexcept override { return size_; }
  [[nodiscard]] bool IsValidPosition(uint64_t position) const noexcept override {
    return position <= size_ && isBelowWrapping(position);
  }

  [[nodiscard]] unsigned char* data() const noexcept { return data_; }

 private:
  unsigned char* data_ = nullptr;
  uint64_t size_ = 0;
  ZEBSharedBuffer* buffer_ = nullptr;
  ZEBSharedBuffReleaseProc release_ = nullptr;  // of the service that the reference came from
};

class BufferSharedStream final : public SharedStreamDataStream {
 public:
  explicit BufferSharedStream(SharedBody body) noexcept : SharedStreamDataStream(std::move(body)) {}

  uint64_t Read(void* destination, uint64_t count) override;
  void Write(const void* source, uint64_t count) override;
  ZEBContainer* CreateIndependentlyPositionableStream() override;

 private:
  [[nodiscard]] const BufferSharedStreamData& data() const noexcept {
    return static_cast<const BufferSharedStreamData&>(*body().get());
  }
};

// A new stream's container with one reference for the caller.
[[nodiscard]] ZEBContainer* makeBufferStream(ZEBSharedBuffer* buffer);

}  // namespace zeb::streams

#endif
