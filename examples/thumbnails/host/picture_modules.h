// The modules that the host works with, each an interface found by name.
#ifndef THUMBNAILS_HOST_PICTURE_MODULES_H
#define THUMBNAILS_HOST_PICTURE_MODULES_H

#include <filesystem>

#include "common/support/services.h"
#include "host/data_sink.h"
#include "interfaces/decoder.h"
#include "interfaces/encoder.h"
#include "interfaces/scaler.h"
#include "support/picture.h"

namespace examples {

class PictureModules {
 public:
  // Throws Failure when no module scales or none encodes. The services must outlive this object.
  explicit PictureModules(const Services& services);

  // Whether a module decodes files of such a name.
  [[nodiscard]] bool canDecode(const std::filesystem::path& path) const;

  // The following throw RaisedError.

  // The picture of a file that can be decoded.
  [[nodiscard]] Picture decode(const std::filesystem::path& path) const;

  [[nodiscard]] Picture scale(const Picture& original, uint32_t edge) const;

  // A filter that writes a JPEG file of the pixels into the target.
  [[nodiscard]] DataSink encoder(ZEBDataSink* target) const;

 private:
  const Services& services_;
  ThumbnailsScalerProcs scaler_{};
  ThumbnailsEncoderProcs encoder_{};
};

}  // namespace examples

#endif
