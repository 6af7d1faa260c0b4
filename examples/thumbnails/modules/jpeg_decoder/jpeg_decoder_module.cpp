// Publishes the decoder of JPEG files.
#include "modules/jpeg_decoder/jpeg_file.h"
#include "support/decoder_module.h"

namespace examples {
namespace {

class JpegDecoderModule : public ModuleBase<JpegDecoderModule> {
 public:
  JpegDecoderModule();
};

ZEBErrorObject* Decode(ThumbnailsPicture* picture, ZEBContainer* stream) noexcept {
  return decodeGuarded(JpegDecoderModule::services(), picture, stream, readJpeg);
}

constexpr ThumbnailsDecoderProcs procs{Decode};
const ZEBProcTableEntry entries[] = {THUMBNAILS_DECODER_PROCS(EXAMPLES_PUBLISH_ROW)};

JpegDecoderModule::JpegDecoderModule()
    : ModuleBase({{THUMBNAILS_DECODER_INTERFACE_PREFIX "jpg", entries},
                  {THUMBNAILS_DECODER_INTERFACE_PREFIX "jpeg", entries}}) {}

}  // namespace
}  // namespace examples

ZEB_SDK_MODULE(examples::JpegDecoderModule);
