// A compressed file that is read, as the callbacks of a positionable client stream.
#include <memory>

#include "modules/gzip/gzip_file.h"
#include "modules/gzip/gzip_module.h"

namespace examples {
namespace {

GzipReader& readerIn(void* context) { return *static_cast<GzipReader*>(context); }

ZEBErrorObject* Read(void* context, uint64_t* count, void* buffer, uint64_t size) noexcept {
  return guardedGzip([&]() -> ZEBErrorObject* {
    *count = readerIn(context).read(buffer, size);
    return nullptr;
  });
}

ZEBErrorObject* Write(void* /*context*/, const void* /*bytes*/, uint64_t /*size*/) noexcept {
  return guardedGzip([]() -> ZEBErrorObject* {
    throw CodedError(COPY_GZIP_ERROR_DIRECTION, "the compressed file is open for reading only");
  });
}

// An independent stream stands at the beginning, with a cursor and so a file of its own.
ZEBErrorObject* NewContext(void* context, void** newContext) noexcept {
  return guardedGzip([&]() -> ZEBErrorObject* {
    *newContext = std::make_unique<GzipReader>(readerIn(context).path()).release();
    return nullptr;
  });
}

ZEBErrorObject* Rewind(void* context) noexcept {
  return guardedGzip([&]() -> ZEBErrorObject* {
    readerIn(context).seek(0);
    return nullptr;
  });
}

ZEBErrorObject* Mark(void* context, uint64_t* position) noexcept {
  return guardedGzip([&]() -> ZEBErrorObject* {
    *position = readerIn(context).position();
    return nullptr;
  });
}

ZEBErrorObject* Seek(void* context, int64_t offset, uint32_t origin) noexcept {
  return guardedGzip([&]() -> ZEBErrorObject* {
    if (origin == ZEB_SEEK_FROM_END) {
      throw CodedError(COPY_GZIP_ERROR_SEEK, "a compressed file has no known end to seek from");
    }
    if (origin != ZEB_SEEK_FROM_BEGINNING && origin != ZEB_SEEK_FROM_POSITION) {
      throw CodedError(COPY_GZIP_ERROR_SEEK, "unknown origin of a position");
    }
    GzipReader& reader = readerIn(context);
    const uint64_t base = origin == ZEB_SEEK_FROM_POSITION ? reader.position() : 0;
    // What runs below zero wraps round to where no file reaches, and is refused there.
    reader.seek(base + static_cast<uint64_t>(offset));
    return nullptr;
  });
}

void Release(void* context) noexcept { delete static_cast<GzipReader*>(context); }

}  // namespace

ZEBErrorObject* makeReader(ZEBContainer** stream, const char* path) {
  auto reader = std::make_unique<GzipReader>(path);
  // The reader is the library's from here on, also when this fails.
  return GzipModule::services().streamFactory.NewClientPositionableStream(
      stream, reader.release(), Read, Write, NewContext, Rewind, NewContext, Mark, Seek, Release);
}

}  // namespace examples
