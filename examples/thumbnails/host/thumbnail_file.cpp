#include "host/thumbnail_file.h"

#include <fmt/format.h>

#include <stdexcept>
#include <system_error>

#include "common/support/stream.h"
#include "host/counting_filter.h"
#include "host/stream_sink.h"

namespace examples {
namespace {

// Returns what went through the chain. When it returns, chain and stream are gone and the file is
// closed.
uint64_t writeThroughChain(const Services& services, const PictureModules& modules,
                           const std::filesystem::path& path, const Picture& picture,
                           unsigned quality) {
  const ZEBFilterProcs& filters = services.filters;
  const Stream stream = Stream::overFile(services, path.c_str(), "wb");
  const StreamSink file(services, stream);
  const CountingFilter counter(services, file.get());
  const DataSink encoder = modules.encoder(counter.get());

  filters.SetImageParameters(encoder.get(), picture.width(), picture.height(),
                             THUMBNAILS_BYTES_PER_PIXEL);
  filters.SetCompressionParameters(encoder.get(), static_cast<float>(quality));
  const std::span<const uint8_t> pixels = picture.pixels();
  raiseIfFailed(services.errors, filters.Write(encoder.get(), pixels.data(), pixels.size()));
  filters.Close(encoder.get());
  stream.flush();
  return counter.bytes();
}

void removeRegularFile(const std::filesystem::path& path) {
  std::error_code error;  // why it has failed is told already
  if (std::filesystem::is_regular_file(path, error)) std::filesystem::remove(path, error);
}

}  // namespace

uint64_t writeThumbnail(const Services& services, const PictureModules& modules,
                        const std::filesystem::path& path, const Picture& picture,
                        unsigned quality) {
  try {
    const uint64_t counted = writeThroughChain(services, modules, path, picture, quality);
    const uint64_t there = std::filesystem::file_size(path);
    if (there == counted) return counted;
    throw std::runtime_error(fmt::format("only {} of {} bytes are in the file", there, counted));
  } catch (...) {
    removeRegularFile(path);
    throw;
  }
}

}  // namespace examples
