// Client streams of the first generation, adapted onto those of today.
#ifndef ZEB_STREAMS_OLD_CLIENT_STREAM_H
#define ZEB_STREAMS_OLD_CLIENT_STREAM_H

#include "zeb/older_stream.h"

namespace zeb::streams {

// What an old client gives: of write and seek one form each.
struct OldClientRecord {
  void* context = nullptr;
  ZEBOldStreamRead read = nullptr;
  ZEBOldStreamWrite write = nullptr;
  ZEBOldStreamWriteWithError writeWithError = nullptr;
  ZEBOldStreamSeek seek = nullptr;
  ZEBOldStreamSeekWithError seekWithError = nullptr;
  ZEBOldStreamTell tell = nullptr;
  ZEBOldStreamRelease release = nullptr;
};

// A new positionable stream's container with one reference for the caller. The context is consumed
// in every case.
[[nodiscard]] ZEBContainer* makeOldClientStream(const OldClientRecord& record);

}  // namespace zeb::streams

#endif
