// Interface "ZEBStreamFactoryInterface".
#include <array>

#include "base/unowned_data.h"
#include "errors/error_boundary.h"
#include "streams/buffer_stream.h"
#include "streams/client_stream.h"
#include "streams/file_stream.h"
#include "streams/memory_stream.h"
#include "streams/stream_services.h"
#include "zeb/stream_factory.h"

namespace zeb {

namespace {

// Even a proc that has nowhere to put the stream consumes the context.
template <class Stream>
void makeClientStream(ZEBContainer** out, void* context,
                      const streams::ClientCallbacks& callbacks) {
  UnownedData data(callbacks.release, context);
  clearOut(out);
  data.handOver();
  *out = streams::makeClientStream<Stream>(context, callbacks);
}

namespace procs {

void NewPositionableMemoryStream(ZEBContainer** out) {
  clearOut(out);
  *out = streams::makeMemoryStream();
}

void NewPositionableBufferStream(ZEBContainer** out, ZEBSharedBuffer* buffer) {
  clearOut(out);
  *out = streams::makeBufferStream(buffer);
}

void NewPositionableFileStream(ZEBContainer** out, const char* path, const char* mode) {
  clearOut(out);
  if (path == nullptr || mode == nullptr) raiseStandardZeb(zebid::kMissingMethod);
  *out = streams::makeFileStream(path, mode);
}

void NewClientSimpleStream(ZEBContainer** out, void* context, ZEBClientStreamRead read,
                           ZEBClientStreamWrite write, ZEBClientStreamRelease release) {
  makeClientStream<streams::ClientSimpleStreamImpl>(
      out, context, {.read = read, .write = write, .release = release});
}

void NewClientRewindableStream(ZEBContainer** out, void* context, ZEBClientStreamRead read,
                               ZEBClientStreamWrite write, ZEBClientStreamNewContext newRewindable,
                               ZEBClientStreamRewind rewind, ZEBClientStreamRelease release) {
  makeClientStream<streams::ClientRewindableStreamImpl>(out, context,
                                                        {.read = read,
                                                         .write = write,
                                                         .newRewindable = newRewindable,
                                                         .rewind = rewind,
                                                         .release = release});
}

void NewClientPositionableStream(ZEBContainer** out, void* context, ZEBClientStreamRead read,
                                 ZEBClientStreamWrite write,
                                 ZEBClientStreamNewContext newRewindable,
                                 ZEBClientStreamRewind rewind,
                                 ZEBClientStreamNewContext newPositionable,
                                 ZEBClientStreamMark mark, ZEBClientStreamSeek seek,
                                 ZEBClientStreamRelease release) {
  makeClientStream<streams::ClientPositionableStreamImpl>(out, context,
                                                          {.read = read,
                                                           .write = write,
                                                           .newRewindable = newRewindable,
                                                           .rewind = rewind,
                                                           .newPositionable = newPositionable,
                                                           .mark = mark,
                                                           .seek = seek,
                                                           .release = release});
}

}  // namespace procs

#define ZEB_ROW(member, method, proc) \
  tableEntry<proc>(#method, #proc, withBoundary<proc, &procs::member>()),
const std::array entries{ZEB_STREAM_FACTORY_PROCS(ZEB_ROW)};
#undef ZEB_ROW

}  // namespace

ServiceTable streamFactoryService() { return {ZEB_STREAM_FACTORY_INTERFACE, entries, {}}; }

}  // namespace zeb
