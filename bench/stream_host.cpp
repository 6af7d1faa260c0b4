#include "stream_host.h"

#include <fmt/format.h>

#include "sequences.h"

namespace zeb::bench {

const std::array<char, kLargestStep>& streamSource() {
  static const auto bytes = [] {
    std::array<char, kLargestStep> made{};
    for (size_t i = 0; i < made.size(); ++i) made[i] = static_cast<char>(i * 7 + i / 256);
    return made;
  }();
  return bytes;
}

std::string stepName(size_t step) {
  return step < 1024 ? fmt::format("{} B", step) : fmt::format("{} KiB", step / 1024);
}

std::vector<uint64_t> randomPositions(size_t size, size_t length) {
  constexpr size_t count = 1 << 14;
  std::vector<uint64_t> positions;
  for (const uint32_t position :
       randomNumbers(count, static_cast<uint32_t>(size - length + 1), 4711))
    positions.push_back(position);
  return positions;
}

StreamHost::StreamHost() {
  const ZEBGetProcAddress getProcAddress = session_.getProcAddress();
  check(ZEBFetchStreamFactoryProcs(getProcAddress, &procs_.factory) &&
            ZEBFetchSimpleStreamProcs(getProcAddress, &procs_.simple) &&
            ZEBFetchPositionableStreamProcs(getProcAddress, &procs_.positionable),
        "stream procs are missing");
  check(ZEBFetchContainerProcs(getProcAddress, &procs_.containers), "container procs are missing");
  check(ZEBFetchSharedBufferProcs(getProcAddress, &procs_.buffers),
        "shared-buffer procs are missing");
  live_ = newMemoryStream();
}

ZEBContainer* StreamHost::newMemoryStream() const {
  ZEBContainer* stream = nullptr;
  check(!procs_.factory.NewPositionableMemoryStream(&stream) && stream,
        "a memory stream cannot be made");
  return stream;
}

ZEBContainer* StreamHost::newBufferStream(size_t size) const {
  ZEBSharedBuffer* buffer = procs_.buffers.NewBuffer(size, nullptr, nullptr, nullptr, nullptr);
  ZEBContainer* stream = nullptr;
  check(!procs_.factory.NewPositionableBufferStream(&stream, buffer) && stream,
        "a buffer stream cannot be made");
  procs_.buffers.Release(buffer);
  return stream;
}

ZEBContainer* StreamHost::newFileStream(const std::string& path, const char* mode) const {
  ZEBContainer* stream = nullptr;
  check(!procs_.factory.NewPositionableFileStream(&stream, path.c_str(), mode) && stream,
        "a file stream cannot be made");
  return stream;
}

}  // namespace zeb::bench
