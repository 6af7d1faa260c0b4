#include "streams/memory_stream.h"

#include <algorithm>
#include <cstring>

#include "base/failure.h"
#include "streams/stream_container.h"
#include "streams/stream_copy.h"

namespace zeb::streams {

MemorySharedStream::MemorySharedStream(SharedBody body)
    : SharedStreamDataStream(std::move(body)),
      data_(static_cast<MemorySharedStreamData&>(*this->body().get())) {
  standAt(0, data_.placeOf(0));
}

void MemorySharedStream::SyncPosition() { standAt(cursor(), data_.placeOf(cursor())); }

void MemorySharedStream::standAt(uint64_t position,
                                 const MemorySharedStreamData::Place& place) noexcept {
  synced_ = position;
  block_ = place.block;
  offset_ = place.offset;
}

uint64_t MemorySharedStream::Read(void* destination, uint64_t count) {
  catchUp();
  const uint64_t length = data_.End();
  if (synced_ >= length) return 0;  // also past the end, where an empty chain lets a cursor stand
  const uint64_t n = std::min(length - synced_, count);
  requireBuffer(destination, n);
  if (n <= block_->size - offset_) [[likely]] {
    std::memcpy(destination, block_->data() + offset_, n);
    offset_ += n;
  } else {
    readAcrossBlocks(static_cast<unsigned char*>(destination), n);
  }
  synced_ += n;
  setCursor(synced_);
  return n;
}

void MemorySharedStream::readAcrossBlocks(unsigned char* destination, uint64_t count) noexcept {
  while (true) {
    const uint64_t part = std::min(count, block_->size - offset_);
    std::memcpy(destination, block_->data() + offset_, part);
    offset_ += part;
    destination += part;
    count -= part;
    if (count == 0) return;
    block_ = block_->next;
    offset_ = 0;
  }
}

void MemorySharedStream::Write(const void* source, uint64_t count) {
  if (data_.isReadOnly()) raiseNewKst(kst::kUnknown, kReadOnlyMessage);
  if (count == 0) return;
  requireBuffer(source, count);
  catchUp();
  if (block_ != nullptr && count < block_->size - offset_) [[likely]] {
    std::memcpy(block_->data() + offset_, source, count);
    offset_ += count;
    synced_ += count;
    data_.coverTo(synced_);
  } else {
    writeAcrossBlocks(static_cast<const unsigned char*>(source), count);
  }
  setCursor(synced_);
}

// When memory is short, the bytes that found room stay, and the cursor stays before them.
void MemorySharedStream::writeAcrossBlocks(const unsigned char* source, uint64_t count) {
  if (block_ == nullptr && cursor() != 0) standAt(cursor(), data_.placeToWriteAt(cursor()));
  while (count > 0) {
    const uint64_t room = block_ != nullptr ? block_->size - offset_ : 0;
    const uint64_t part = std::min(count, room);
    if (part > 0) {
      std::memcpy(block_->data() + offset_, source, part);
      offset_ += part;
      synced_ += part;
      source += part;
      count -= part;
      data_.coverTo(synced_);
    }
    if (part == room) {
      block_ = data_.blockAfter(block_, count);
      offset_ = 0;
    }
  }
}

ZEBContainer* MemorySharedStream::CreateIndependentlyPositionableStream() {
  ZEBContainer* independent = wrap(makeObject<MemorySharedStream>(body()));
  data_.makeReadOnly();
  return independent;
}

ZEBContainer* makeMemoryStream() {
  SharedBody body(makeObject<MemorySharedStreamData>());
  return wrap(makeObject<MemorySharedStream>(std::move(body)));
}

}  // namespace zeb::streams
