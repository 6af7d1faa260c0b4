// Publishes the decoder of JPEG files.
#include "common/module.h"
#include "modules/jpeg_decoder/jpeg_file.h"
#include "support/decoder_module.h"

namespace examples {
namespace {

ModuleInstance<NoState> instance;

ZEBErrorObject* Decode(ThumbnailsPicture* picture, ZEBContainer* stream) noexcept {
  return decodeGuarded(instance.services(), picture, stream, readJpeg);
}

constexpr ThumbnailsDecoderProcs procs{Decode};
const ZEBProcTableEntry entries[] = {THUMBNAILS_DECODER_PROCS(EXAMPLES_PUBLISH_ROW)};
const Publication publications[] = {{THUMBNAILS_DECODER_INTERFACE_PREFIX "jpg", entries},
                                    {THUMBNAILS_DECODER_INTERFACE_PREFIX "jpeg", entries}};

}  // namespace
}  // namespace examples

int32_t ExampleModuleStart(ZEBGetProcAddress getProcAddress) {
  return examples::instance.start(getProcAddress, examples::publications);
}

void ExampleModuleStop() { examples::instance.stop(); }
