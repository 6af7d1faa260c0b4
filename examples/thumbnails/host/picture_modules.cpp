#include "host/picture_modules.h"

#include <algorithm>
#include <string>

#include "common/host/failure.h"
#include "common/support/stream.h"

namespace examples {
namespace {

// The decoder of a file is published under the ending of its name, in small letters.
ThumbnailsDecodeProc decoderOf(const Services& services, const std::filesystem::path& path) {
  std::string ending = path.extension().string();
  if (ending.empty()) return nullptr;
  std::transform(ending.begin(), ending.end(), ending.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  const std::string name = THUMBNAILS_DECODER_INTERFACE_PREFIX + ending.substr(1);
  return reinterpret_cast<ThumbnailsDecodeProc>(
      services.getProcAddress(name.c_str(), "Decode", "ThumbnailsDecodeProc"));
}

void require(int32_t found, const char* interfaceName) {
  if (found == 1) return;
  throw Failure(ExitStatus::badModules, std::string("no module publishes ") + interfaceName);
}

}  // namespace

PictureModules::PictureModules(const Services& services) : services_(services) {
  require(ThumbnailsFetchScalerProcs(services.getProcAddress, &scaler_),
          THUMBNAILS_SCALER_INTERFACE);
  require(ThumbnailsFetchEncoderProcs(services.getProcAddress, &encoder_),
          THUMBNAILS_ENCODER_INTERFACE);
}

bool PictureModules::canDecode(const std::filesystem::path& path) const {
  return decoderOf(services_, path) != nullptr;
}

Picture PictureModules::decode(const std::filesystem::path& path) const {
  const Stream stream = Stream::overFile(services_, path.c_str(), "rb");
  ThumbnailsPicture picture{};
  raiseIfFailed(services_.errors, decoderOf(services_, path)(&picture, stream.get()));
  return {services_.buffers, picture};
}

Picture PictureModules::scale(const Picture& original, uint32_t edge) const {
  const ThumbnailsPicture lent = original.lent();
  ThumbnailsPicture scaled{};
  raiseIfFailed(services_.errors, scaler_.Scale(&scaled, &lent, edge));
  return {services_.buffers, scaled};
}

DataSink PictureModules::encoder(ZEBDataSink* target) const {
  return makeDataSink(services_,
                      [&](ZEBDataSink** out) { return encoder_.NewEncoder(out, target); });
}

}  // namespace examples
