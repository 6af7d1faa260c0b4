// Interfaces "ZEBNewStreamInterface" and "ZEBStreamInterface".
#include <array>

#include "base/unowned_data.h"
#include "errors/error_boundary.h"
#include "streams/buffer_stream.h"
#include "streams/file_stream.h"
#include "streams/memory_stream.h"
#include "streams/old_client_stream.h"
#include "streams/stream_container.h"
#include "streams/stream_services.h"
#include "zeb/older_stream.h"
#include "zeb/positionable_stream.h"

namespace zeb {

namespace {

namespace procs {

ZEBContainer* NewMemoryStreamV2() { return streams::makeMemoryStream(); }
void NewMemoryStreamV3(ZEBContainer** out) {
  clearOut(out);
  *out = NewMemoryStreamV2();
}

ZEBContainer* NewBufferStreamV3(ZEBSharedBuffer* buffer) {
  return streams::makeBufferStream(buffer);
}
void NewBufferStreamV4(ZEBContainer** out, ZEBSharedBuffer* buffer) {
  clearOut(out);
  *out = NewBufferStreamV3(buffer);
}

ZEBContainer* NewFileStreamV2(const char* path, const char* mode) {
  if (path == nullptr || mode == nullptr) raiseStandardZeb(zebid::kMissingMethod);
  return streams::makeFileStream(path, mode);
}
void NewFileStreamV3(ZEBContainer** out, const char* path, const char* mode) {
  clearOut(out);
  *out = NewFileStreamV2(path, mode);
}

ZEBContainer* NewExternalStreamV3(void* context, ZEBOldStreamRead read, ZEBOldStreamWrite write,
                                  ZEBOldStreamSeek seek, ZEBOldStreamTell tell,
                                  ZEBOldStreamRelease release) {
  return streams::makeOldClientStream({.context = context,
                                       .read = read,
                                       .write = write,
                                       .seek = seek,
                                       .tell = tell,
                                       .release = release});
}
void NewExternalStreamV4(ZEBContainer** out, void* context, ZEBOldStreamRead read,
                         ZEBOldStreamWriteWithError write, ZEBOldStreamSeekWithError seek,
                         ZEBOldStreamTell tell, ZEBOldStreamRelease release) {
  UnownedData data(release, context);
  clearOut(out);
  data.handOver();
  *out = streams::makeOldClientStream({.context = context,
                                       .read = read,
                                       .writeWithError = write,
                                       .seekWithError = seek,
                                       .tell = tell,
                                       .release = release});
}

uint64_t ReadV2(ZEBContainer* stream, void* buffer, uint64_t count) {
  return streams::streamOf(stream).Read(buffer, count);
}

void WriteV3(ZEBContainer* stream, const void* buffer, uint64_t count) {
  streams::streamOf(stream).Write(buffer, count);
}
int32_t WriteV2(ZEBContainer* stream, const void* buffer, uint64_t count) {
  WriteV3(stream, buffer, count);
  return 1;
}

void SeekV3(ZEBContainer* stream, uint64_t position) {
  streams::positionableStreamOf(stream).Seek(static_cast<int64_t>(position),
                                             ZEB_SEEK_FROM_BEGINNING);
}
int32_t SeekV2(ZEBContainer* stream, uint64_t position) {
  SeekV3(stream, position);
  return 1;
}

uint64_t MarkV1(ZEBContainer* stream) { return streams::positionableStreamOf(stream).Mark(); }

}  // namespace procs

#define ZEB_ROW(member, method, proc) \
  tableEntry<proc>(#method, #proc, withBoundary<proc, &procs::member>()),
const std::array makerEntries{ZEB_NEW_STREAM_OLDER_PROCS(ZEB_ROW)};
const std::array operationEntries{ZEB_STREAM_OLDER_PROCS(ZEB_ROW)};
#undef ZEB_ROW

}  // namespace

ServiceTable newStreamService() { return {ZEB_NEW_STREAM_INTERFACE, {}, makerEntries}; }
ServiceTable streamService() { return {ZEB_STREAM_INTERFACE, {}, operationEntries}; }

}  // namespace zeb
