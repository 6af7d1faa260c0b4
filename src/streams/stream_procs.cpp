// Interfaces "ZEBSimpleStreamInterface", "ZEBRewindableStreamInterface" and
// "ZEBPositionableStreamInterface".
#include <array>

#include "errors/error_boundary.h"
#include "streams/stream_container.h"
#include "streams/stream_services.h"
#include "zeb/positionable_stream.h"
#include "zeb/rewindable_stream.h"
#include "zeb/simple_stream.h"

namespace zeb {

namespace {

namespace procs {

void Read(ZEBContainer* stream, uint64_t* bytesRead, void* buffer, uint64_t count) {
  clearOut(bytesRead);
  *bytesRead = streams::streamOf(stream).Read(buffer, count);
}
void Write(ZEBContainer* stream, const void* buffer, uint64_t count) {
  streams::streamOf(stream).Write(buffer, count);
}

void CreateIndependentlyRewindableStream(ZEBContainer* stream, ZEBContainer** out) {
  clearOut(out);
  *out = streams::rewindableStreamOf(stream).CreateIndependentlyRewindableStream();
}
void Rewind(ZEBContainer* stream) { streams::rewindableStreamOf(stream).Rewind(); }

void CreateIndependentlyPositionableStream(ZEBContainer* stream, ZEBContainer** out) {
  clearOut(out);
  *out = streams::positionableStreamOf(stream).CreateIndependentlyPositionableStream();
}
void Mark(ZEBContainer* stream, uint64_t* position) {
  clearOut(position);
  *position = streams::positionableStreamOf(stream).Mark();
}
void Seek(ZEBContainer* stream, int64_t offset, uint32_t origin) {
  streams::positionableStreamOf(stream).Seek(offset, origin);
}
void Flush(ZEBContainer* stream) { streams::positionableStreamOf(stream).Flush(); }

}  // namespace procs

#define ZEB_ROW(member, method, proc) \
  tableEntry<proc>(#method, #proc, withBoundary<proc, &procs::member>()),
const std::array simpleEntries{ZEB_SIMPLE_STREAM_PROCS(ZEB_ROW)};
const std::array rewindableEntries{ZEB_REWINDABLE_STREAM_PROCS(ZEB_ROW)};
const std::array positionableEntries{ZEB_POSITIONABLE_STREAM_PROCS(ZEB_ROW)};
#undef ZEB_ROW

}  // namespace

ServiceTable simpleStreamService() { return {ZEB_SIMPLE_STREAM_INTERFACE, simpleEntries, {}}; }
ServiceTable rewindableStreamService() {
  return {ZEB_REWINDABLE_STREAM_INTERFACE, rewindableEntries, {}};
}
ServiceTable positionableStreamService() {
  return {ZEB_POSITIONABLE_STREAM_INTERFACE, positionableEntries, {}};
}

}  // namespace zeb
