// The gzip module's class and the interface that makes its streams.
#include "modules/gzip/gzip_module.h"

namespace examples {

namespace {

using Maker = ZEBErrorObject* (*)(ZEBContainer**, const char*);

ZEBErrorObject* make(Maker maker, ZEBContainer** stream, const char* path) noexcept {
  return guardedGzip([&]() -> ZEBErrorObject* {
    if (stream == nullptr || path == nullptr) {
      throw CodedError(COPY_GZIP_ERROR_MISSING_ARGUMENT, "no path or no place for the stream");
    }
    return maker(stream, path);
  });
}

ZEBErrorObject* NewReader(ZEBContainer** stream, const char* path) noexcept {
  return make(makeReader, stream, path);
}

ZEBErrorObject* NewWriter(ZEBContainer** stream, const char* path) noexcept {
  return make(makeWriter, stream, path);
}

constexpr CopyGzipProcs procs{NewReader, NewWriter};
const ZEBProcTableEntry entries[] = {COPY_GZIP_PROCS(EXAMPLES_PUBLISH_ROW)};

}  // namespace

Publication gzipPublication() { return {COPY_GZIP_INTERFACE, entries}; }

// The makers come last, as the streams that they make answer to the other interface.
GzipModule::GzipModule() : ModuleBase({writerPublication(), gzipPublication()}) {}

}  // namespace examples

ZEB_SDK_MODULE(examples::GzipModule);
