// Publishes the decoder of portable pixel maps.
#include "common/module.h"
#include "common/support/stream.h"
#include "modules/ppm/ppm_file.h"
#include "support/decoder_module.h"

namespace examples {
namespace {

ModuleInstance<NoState> instance;

Picture decode(const Services& services, ZEBContainer* container) {
  services.containers.AddRef(container);  // the stream stays the caller's
  return readPpm(services, Stream(services, container));
}

ZEBErrorObject* Decode(ThumbnailsPicture* picture, ZEBContainer* stream) noexcept {
  return decodeGuarded(instance.services(), picture, stream, decode);
}

constexpr ThumbnailsDecoderProcs procs{Decode};
const ZEBProcTableEntry entries[] = {THUMBNAILS_DECODER_PROCS(EXAMPLES_PUBLISH_ROW)};
const Publication publications[] = {{THUMBNAILS_DECODER_INTERFACE_PREFIX "ppm", entries}};

}  // namespace
}  // namespace examples

int32_t ExampleModuleStart(ZEBGetProcAddress getProcAddress) {
  return examples::instance.start(getProcAddress, examples::publications);
}

void ExampleModuleStop() { examples::instance.stop(); }
