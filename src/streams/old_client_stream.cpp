#include "streams/old_client_stream.h"

#include "base/failure.h"
#include "base/unowned_data.h"
#include "errors/error_object.h"
#include "errors/standard_errors.h"
#include "memory/object_memory.h"
#include "streams/client_stream.h"
#include "zeb/positionable_stream.h"

namespace zeb::streams {

namespace {

OldClientRecord& recordOf(void* context) noexcept {
  return *static_cast<OldClientRecord*>(context);
}

template <class Callback>
Callback required(Callback callback) {
  if (callback == nullptr) raiseStandardZeb(zebid::kMissingMethod);
  return callback;
}

ZEBErrorObject* newError(const char* message) {
  return errors::make(message, errors::kKstComponent, kst::kUnknown);
}

ZEBErrorObject* errorUnless(int32_t succeeded) noexcept {
  return succeeded != 0 ? nullptr : errors::shared(errors::raisableKst(kst::kUnknown));
}

// ---- The callbacks of today, each over an old record as its context.

ZEBErrorObject* read(void* context, uint64_t* bytesRead, void* buffer, uint64_t count) {
  const OldClientRecord& old = recordOf(context);
  *bytesRead = required(old.read)(old.context, buffer, count);
  return nullptr;
}

ZEBErrorObject* write(void* context, const void* buffer, uint64_t count) {
  const OldClientRecord& old = recordOf(context);
  if (old.write != nullptr) return errorUnless(old.write(old.context, buffer, count));
  return required(old.writeWithError)(old.context, buffer, count);
}

ZEBErrorObject* moveTo(const OldClientRecord& old, uint64_t position) {
  if (old.seek != nullptr) return errorUnless(old.seek(old.context, position));
  return required(old.seekWithError)(old.context, position);
}

ZEBErrorObject* newRewindable(void* /*context*/, void** /*newContext*/) {
  return newError("Cannot create independently rewindable stream from old client stream");
}

ZEBErrorObject* rewind(void* context) { return moveTo(recordOf(context), 0); }

// The text speaks of rewindable streams on purpose: clients know it so.
ZEBErrorObject* newPositionable(void* /*context*/, void** /*newContext*/) {
  return newError("Cannot create independently rewindable stream from old client");
}

uint64_t tell(const OldClientRecord& old) { return required(old.tell)(old.context); }

ZEBErrorObject* mark(void* context, uint64_t* position) {
  *position = tell(recordOf(context));
  return nullptr;
}

ZEBErrorObject* seek(void* context, int64_t offset, uint32_t origin) {
  const OldClientRecord& old = recordOf(context);
  const auto distance = static_cast<uint64_t>(offset);
  switch (origin) {
    case ZEB_SEEK_FROM_BEGINNING:
      return moveTo(old, distance);
    case ZEB_SEEK_FROM_POSITION:
      return moveTo(old, tell(old) + distance);
    default:
      return newError("Cannot seek from end on old client stream");
  }
}

void release(void* context) {
  const ObjectHolder<OldClientRecord> old(&recordOf(context));
  const UnownedData ended(old.get()->release, old.get()->context);
}

constexpr ClientCallbacks kAdapters{.read = read,
                                    .write = write,
                                    .newRewindable = newRewindable,
                                    .rewind = rewind,
                                    .newPositionable = newPositionable,
                                    .mark = mark,
                                    .seek = seek,
                                    .release = release};

}  // namespace

ZEBContainer* makeOldClientStream(const OldClientRecord& record) {
  UnownedData data(record.release, record.context);
  auto* copy = makeObject<OldClientRecord>(record);
  data.handOver();
  return makeClientStream<ClientPositionableStreamImpl>(copy, kAdapters);
}

}  // namespace zeb::streams
