// A compressed file that is written, as the callbacks of a simple client stream, and the interface
// by which it is finished.
#include <memory>

#include "common/support/container.h"
#include "modules/gzip/gzip_file.h"
#include "modules/gzip/gzip_module.h"

namespace examples {
namespace {

ZEBErrorObject* Read(void* /*context*/, uint64_t* /*count*/, void* /*buffer*/,
                     uint64_t /*size*/) noexcept {
  return guardedGzip([]() -> ZEBErrorObject* {
    throw CodedError(COPY_GZIP_ERROR_DIRECTION, "the compressed file is open for writing only");
  });
}

ZEBErrorObject* Write(void* context, const void* bytes, uint64_t size) noexcept {
  return guardedGzip([&]() -> ZEBErrorObject* {
    static_cast<GzipWriter*>(context)->write(bytes, size);
    return nullptr;
  });
}

void Release(void* context) noexcept { delete static_cast<GzipWriter*>(context); }

ZEBErrorObject* Finish(ZEBContainer* stream) noexcept {
  return guardedGzip([&] {
    void* writer = nullptr;
    ZEBErrorObject* const error = GzipModule::services().containers.NGetInstance(
        &writer, stream, GzipModule::state().instance.get());
    if (error == nullptr) static_cast<GzipWriter*>(writer)->finish();
    return error;
  });
}

constexpr CopyGzipWriterProcs procs{Finish};
const ZEBProcTableEntry entries[] = {COPY_GZIP_WRITER_PROCS(EXAMPLES_PUBLISH_ROW)};

}  // namespace

// A stream is a container like any other: an interface of our own is added to those of the library.
ZEBErrorObject* makeWriter(ZEBContainer** stream, const char* path) {
  const Services& services = GzipModule::services();
  const WriterNames& names = GzipModule::state();
  auto owned = std::make_unique<GzipWriter>(path);
  GzipWriter* const writer = owned.get();

  ZEBContainer* made = nullptr;
  // The writer is the library's from here on, also when this fails.
  if (ZEBErrorObject* const error = services.streamFactory.NewClientSimpleStream(
          &made, owned.release(), Read, Write, Release)) {
    return error;
  }
  Container container(services.containers, made);
  if (ZEBErrorObject* const error =
          services.containers.RegisterInterface(made, names.interfaceName.get())) {
    return error;
  }
  // Without a destroy procedure: the stream itself ends the writer.
  if (ZEBErrorObject* const error =
          services.containers.RegisterInstance(made, writer, names.instance.get(), nullptr)) {
    return error;
  }
  *stream = container.release();
  return nullptr;
}

Publication writerPublication() { return {COPY_GZIP_WRITER_INTERFACE, entries}; }

}  // namespace examples
