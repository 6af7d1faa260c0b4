// Publishes the decoder of portable pixel maps.
#include "common/support/stream.h"
#include "modules/ppm/ppm_file.h"
#include "support/decoder_module.h"

namespace examples {
namespace {

class PpmDecoderModule : public ModuleBase<PpmDecoderModule> {
 public:
  PpmDecoderModule();
};

Picture decode(const Services& services, ZEBContainer* container) {
  services.containers.AddRef(container);  // the stream stays the caller's
  return readPpm(services, Stream(services, container));
}

ZEBErrorObject* Decode(ThumbnailsPicture* picture, ZEBContainer* stream) noexcept {
  return decodeGuarded(PpmDecoderModule::services(), picture, stream, decode);
}

constexpr ThumbnailsDecoderProcs procs{Decode};
const ZEBProcTableEntry entries[] = {THUMBNAILS_DECODER_PROCS(EXAMPLES_PUBLISH_ROW)};

PpmDecoderModule::PpmDecoderModule()
    : ModuleBase({{THUMBNAILS_DECODER_INTERFACE_PREFIX "ppm", entries}}) {}

}  // namespace
}  // namespace examples

ZEB_SDK_MODULE(examples::PpmDecoderModule);
