#include "streams/buffer_stream.h"

#include <algorithm>
#include <cstring>

#include "base/failure.h"
#include "buffers/buffer_client.h"
#include "streams/stream_container.h"
#include "streams/stream_copy.h"

namespace zeb::streams {

BufferSharedStreamData::BufferSharedStreamData(ZEBSharedBuffer* buffer) {
  if (buffer == nullptr) return;
  const ZEBSharedBufferProcs procs = buffers::clientProcs();
  procs.AddRef(buffer);
  buffer_ = buffer;
  release_ = procs.Release;
  data_ = static_cast<unsigned char*>(procs.GetBuffer(buffer));
  size_ = procs.GetSize(buffer);
}

BufferSharedStreamData::~BufferSharedStreamData() {
  if (buffer_ != nullptr) release_(buffer_);
}

uint64_t BufferSharedStream::Read(void* destination, uint64_t count) {
  const uint64_t n = std::min(data_.End() - cursor(), count);
  if (n == 0) return 0;
  requireBuffer(destination, n);
  const uint64_t from = cursor();
  setCursor(from + n);
  std::memcpy(destination, data_.data() + from, n);
  return n;
}

void BufferSharedStream::Write(const void* source, uint64_t count) {
  if (count > data_.End() - cursor()) {
    raiseNewKst(kst::kUnknown, "writing past end of fixed size buffer");
  }
  if (count == 0) return;
  requireBuffer(source, count);
  const uint64_t to = cursor();
  setCursor(to + count);
  std::memcpy(data_.data() + to, source, count);
}

ZEBContainer* BufferSharedStream::CreateIndependentlyPositionableStream() {
  ZEBContainer* independent = wrap(makeObject<BufferSharedStream>(body(), data_));
  body()->makeReadOnly();
  return independent;
}

ZEBContainer* makeBufferStream(ZEBSharedBuffer* buffer) {
  auto* data = makeObject<BufferSharedStreamData>(buffer);
  SharedBody body(data);
  return wrap(makeObject<BufferSharedStream>(std::move(body), *data));
}

}  // namespace zeb::streams
