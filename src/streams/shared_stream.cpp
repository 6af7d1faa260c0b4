#include "streams/shared_stream.h"

#include "base/failure.h"
#include "zeb/positionable_stream.h"

namespace zeb::streams {

uint64_t SharedStreamDataStream::baseOf(uint32_t origin) {
  switch (origin) {
    case ZEB_SEEK_FROM_BEGINNING:
      return body_->Begin();
    case ZEB_SEEK_FROM_POSITION:
      return Mark();
    case ZEB_SEEK_FROM_END:
      return body_->End();
    default:
      raiseNewKst(kst::kUnknown, "Invalid seek origin");
  }
}

void SharedStreamDataStream::Seek(int64_t offset, uint32_t origin) {
  const uint64_t before = cursor_;
  const uint64_t position = baseOf(origin) + static_cast<uint64_t>(offset);
  if (!body_->IsValidPosition(position)) raiseNewKst(kst::kUnknown, "invalid stream position");
  cursor_ = position;
  try {
    SyncPosition();
  } catch (...) {
    cursor_ = before;
    throw;
  }
}

}  // namespace zeb::streams
