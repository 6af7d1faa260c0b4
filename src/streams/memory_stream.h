// Streams over memory that the library owns.
#ifndef ZEB_STREAMS_MEMORY_STREAM_H
#define ZEB_STREAMS_MEMORY_STREAM_H

#include "streams/memory_chain.h"
#include "streams/shared_stream.h"

namespace zeb::streams {

// A cursor over a chain of blocks. It remembers where in the chain it stands, which is true for the
// position `synced_`; a cursor that was moved without the chain catches up with the next transfer.
class MemorySharedStream final : public SharedStreamDataStream {
 public:
  explicit MemorySharedStream(SharedBody body);

  uint64_t Read(void* destination, uint64_t count) override;
  void Write(const void* source, uint64_t count) override;
  ZEBContainer* CreateIndependentlyPositionableStream() override;
  void SyncPosition() override;

 private:
  void catchUp() {
    if (synced_ != cursor()) [[unlikely]]
      SyncPosition();
  }
  void standAt(uint64_t position, const MemorySharedStreamData::Place& place) noexcept;
  void readAcrossBlocks(unsigned char* destination, uint64_t count) noexcept;
  void writeAcrossBlocks(const unsigned char* source, uint64_t count);

  uint64_t synced_ = 0;
  uint64_t offset_ = 0;           // in the block
  MemoryBlock* block_ = nullptr;  // null while the chain is empty
  MemorySharedStreamData& data_;
};

// A new stream without bytes; its container with one reference for the caller.
[[nodiscard]] ZEBContainer* makeMemoryStream();

}  // namespace zeb::streams

#endif
