// Publishes the scaler.
#include "common/support/guard.h"
#include "common/support/module_base.h"
#include "interfaces/scaler.h"
#include "modules/scaler/scaling.h"
#include "support/picture.h"

namespace examples {
namespace {

class ScalerModule : public ModuleBase<ScalerModule> {
 public:
  ScalerModule();
};

bool isWhole(const ZEBSharedBufferProcs& buffers, const ThumbnailsPicture& picture) {
  const uint64_t pixels = uint64_t{picture.width} * picture.height;
  return pixels != 0 && pixels <= THUMBNAILS_MOST_PIXELS &&
         buffers.GetSize(picture.pixels) == bytesOfPixels(pixels);
}

void scale(ThumbnailsPicture* scaled, const ThumbnailsPicture* original, uint32_t edge) {
  const ZEBSharedBufferProcs& buffers = ScalerModule::services().buffers;
  if (scaled == nullptr || original == nullptr || edge == 0 || !isWhole(buffers, *original)) {
    throw CodedError(THUMBNAILS_SCALER_ERROR_BAD_ARGUMENT, "nothing to scale or nowhere to");
  }
  const Extent from{original->width, original->height};
  const Extent to = fitInto(from, edge);
  Picture picture(buffers, to.width, to.height);
  const std::span<const uint8_t> pixels(
      static_cast<const uint8_t*>(buffers.GetBuffer(original->pixels)),
      buffers.GetSize(original->pixels));
  scaleDown(pixels, from, picture.pixels(), to);
  *scaled = picture.release();
}

ZEBErrorObject* Scale(ThumbnailsPicture* scaled, const ThumbnailsPicture* original,
                      uint32_t edge) noexcept {
  return guarded(ScalerModule::services().errors, THUMBNAILS_SCALER_COMPONENT,
                 THUMBNAILS_SCALER_ERROR_FAILED, [&]() -> ZEBErrorObject* {
                   scale(scaled, original, edge);
                   return nullptr;
                 });
}

constexpr ThumbnailsScalerProcs procs{Scale};
const ZEBProcTableEntry entries[] = {THUMBNAILS_SCALER_PROCS(EXAMPLES_PUBLISH_ROW)};

ScalerModule::ScalerModule() : ModuleBase({{THUMBNAILS_SCALER_INTERFACE, entries}}) {}

}  // namespace
}  // namespace examples

ZEB_SDK_MODULE(examples::ScalerModule);
