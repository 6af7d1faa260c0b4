// Copying between a stream and its caller.
#ifndef ZEB_STREAMS_STREAM_COPY_H
#define ZEB_STREAMS_STREAM_COPY_H

#include <cstdint>
#include <cstring>

#include "base/failure.h"

namespace zeb::streams {

// Raises "Memory Copy Error" for a null buffer that bytes are to be copied to or from. Asked before
// a stream changes: a refused transfer leaves the position and the bytes as they were.
inline void requireBuffer(const void* buffer, uint64_t count) {
  if (buffer == nullptr && count != 0) [[unlikely]]
    raiseNewKst(kst::kUnknown, kMemoryCopyMessage);
}

}  // namespace zeb::streams

#endif
