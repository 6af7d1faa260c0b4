// Publishes the encoder: the client's side of a JPEG filter of the library.
#include <memory>

#include "common/support/guard.h"
#include "common/support/module_base.h"
#include "interfaces/encoder.h"
#include "modules/jpeg_encoder/jpeg_encoder.h"

namespace examples {
namespace {

class JpegEncoderModule : public ModuleBase<JpegEncoderModule> {
 public:
  JpegEncoderModule();
};

ZEBErrorObject* writeOn(void* filter, const void* bytes, size_t size);

// The client data of a filter.
struct EncodingFilter {
  EncodingFilter() : encoder(JpegEncoderModule::services(), writeOn, this) {}

  JpegEncoder encoder;
  ZEBDataSink* self = nullptr;  // the filter, which owns this object
};

EncodingFilter& filterIn(void* data) { return *static_cast<EncodingFilter*>(data); }

// Asked for anew each time: the chain behind the filter may be changed at any time.
ZEBErrorObject* writeOn(void* filter, const void* bytes, size_t size) {
  const ZEBFilterProcs& filters = JpegEncoderModule::services().filters;
  return filters.Write(filters.PeekTarget(filterIn(filter).self), bytes, size);
}

template <class Body>
ZEBErrorObject* guardedEncoder(const Body& body) noexcept {
  return guarded(JpegEncoderModule::services().errors, THUMBNAILS_ENCODER_COMPONENT,
                 THUMBNAILS_ENCODER_ERROR_FAILED, [&]() -> ZEBErrorObject* {
                   body();
                   return nullptr;
                 });
}

ZEBErrorObject* Write(void* filter, const void* bytes, uint64_t size) noexcept {
  return guardedEncoder([&] {
    filterIn(filter).encoder.write({static_cast<const uint8_t*>(bytes), size});
  });
}

// Closing has no result, so what is wrong can only be reported.
void Close(void* filter) noexcept {
  if (!filterIn(filter).encoder.giveUp()) return;
  JpegEncoderModule::services().frame.ReportError(
      "a JPEG filter was closed before the picture was complete");
}

const char* PostScript(void* /*filter*/) noexcept { return "DCTEncode"; }

void Destroy(void* filter) noexcept { delete static_cast<EncodingFilter*>(filter); }

void SetGeometry(void* filter, uint32_t width, uint32_t height, uint32_t bytesPerPixel) noexcept {
  filterIn(filter).encoder.setGeometry(width, height, bytesPerPixel);
}

void SetQuality(void* filter, float quality) noexcept {
  filterIn(filter).encoder.setQuality(quality);
}

ZEBErrorObject* NewEncoder(ZEBDataSink** filter, ZEBDataSink* target) noexcept {
  return guardedEncoder([&] {
    if (filter == nullptr || target == nullptr) {
      throw CodedError(THUMBNAILS_ENCODER_ERROR_MISSING_ARGUMENT,
                       "no target or no place for the filter");
    }
    auto owned = std::make_unique<EncodingFilter>();
    EncodingFilter* const data = owned.get();
    ZEBDataSink* made = nullptr;
    // The data is the filter's from here on, also when this fails.
    raiseIfFailed(JpegEncoderModule::services().errors,
                  JpegEncoderModule::services().filters.NewFilterJPEG(
                      &made, target, owned.release(), Write, Close, PostScript, Destroy,
                      SetGeometry, SetQuality));
    data->self = made;
    *filter = made;
  });
}

constexpr ThumbnailsEncoderProcs procs{NewEncoder};
const ZEBProcTableEntry entries[] = {THUMBNAILS_ENCODER_PROCS(EXAMPLES_PUBLISH_ROW)};

JpegEncoderModule::JpegEncoderModule() : ModuleBase({{THUMBNAILS_ENCODER_INTERFACE, entries}}) {}

}  // namespace
}  // namespace examples

ZEB_SDK_MODULE(examples::JpegEncoderModule);
