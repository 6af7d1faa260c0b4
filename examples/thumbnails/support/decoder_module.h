// What every decoder module has around its decoder.
#ifndef THUMBNAILS_SUPPORT_DECODER_MODULE_H
#define THUMBNAILS_SUPPORT_DECODER_MODULE_H

#include <string>

#include "common/support/guard.h"
#include "common/support/module_base.h"
#include "interfaces/decoder.h"
#include "support/picture.h"

namespace examples {

[[noreturn]] inline void refuseAsDamaged(const std::string& reason) {
  throw CodedError(THUMBNAILS_DECODER_ERROR_DAMAGED, "damaged: " + reason);
}

// Before a byte is allocated for it: a header may claim anything.
inline void requirePossibleSize(uint64_t width, uint64_t height) {
  // A side alone may be too large already, and the product of two such sides be small again.
  const bool tooLarge = width > THUMBNAILS_MOST_PIXELS || height > THUMBNAILS_MOST_PIXELS ||
                        width * height > THUMBNAILS_MOST_PIXELS;
  if (width != 0 && height != 0 && !tooLarge) return;
  throw CodedError(THUMBNAILS_DECODER_ERROR_TOO_LARGE,
                   "no picture can be " + std::to_string(width) + " by " + std::to_string(height) +
                       " pixels large");
}

// Decode's work around `decode`, which takes a stream and returns a Picture.
template <class Decoder>
ZEBErrorObject* decodeGuarded(const Services& services, ThumbnailsPicture* picture,
                              ZEBContainer* stream, const Decoder& decode) noexcept {
  return guarded(services.errors, THUMBNAILS_DECODER_COMPONENT, THUMBNAILS_DECODER_ERROR_FAILED,
                 [&]() -> ZEBErrorObject* {
                   if (picture == nullptr || stream == nullptr) {
                     throw CodedError(THUMBNAILS_DECODER_ERROR_MISSING_ARGUMENT,
                                      "no stream or no place for the picture");
                   }
                   Picture decoded = decode(services, stream);
                   *picture = decoded.release();
                   return nullptr;
                 });
}

}  // namespace examples

#endif
