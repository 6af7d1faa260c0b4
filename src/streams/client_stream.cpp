#include "streams/client_stream.h"

#include "base/failure.h"
#include "base/unowned_data.h"
#include "errors/internal_error.h"
#include "memory/object_memory.h"
#include "streams/stream_container.h"

namespace zeb::streams {

namespace {

// The callback, which must be there.
template <class Callback>
Callback required(Callback callback) {
  if (callback == nullptr) raiseStandardZeb(zebid::kMissingMethod);
  return callback;
}

// Raises what a callback has answered, with the reference that came with it.
void raiseIfError(ZEBErrorObject* answer) {
  if (answer != nullptr) [[unlikely]]
    throw InternalError(errors::Ref(answer));
}

}  // namespace

ClientGeneralStreamImpl::~ClientGeneralStreamImpl() {
  const UnownedData ended(callbacks_.release, context_);
}

uint64_t ClientGeneralStreamImpl::read(void* destination, uint64_t count) const {
  uint64_t bytesRead = 0;
  raiseIfError(required(callbacks_.read)(context_, &bytesRead, destination, count));
  return bytesRead;
}

void ClientGeneralStreamImpl::write(const void* source, uint64_t count) const {
  raiseIfError(required(callbacks_.write)(context_, source, count));
}

ZEBContainer* ClientGeneralStreamImpl::newRewindable() const {
  void* context = nullptr;
  raiseIfError(required(callbacks_.newRewindable)(context_, &context));
  return makeClientStream<ClientRewindableStreamImpl>(context, callbacks_);
}

void ClientGeneralStreamImpl::rewind() const {
  raiseIfError(required(callbacks_.rewind)(context_));
}

ZEBContainer* ClientGeneralStreamImpl::newPositionable() const {
  void* context = nullptr;
  raiseIfError(required(callbacks_.newPositionable)(context_, &context));
  return makeClientStream<ClientPositionableStreamImpl>(context, callbacks_);
}

uint64_t ClientGeneralStreamImpl::mark() const {
  uint64_t position = 0;
  raiseIfError(required(callbacks_.mark)(context_, &position));
  return position;
}

void ClientGeneralStreamImpl::seek(int64_t offset, uint32_t origin) const {
  raiseIfError(required(callbacks_.seek)(context_, offset, origin));
}

template <class Stream>
ZEBContainer* makeClientStream(void* context, const ClientCallbacks& callbacks) {
  UnownedData data(callbacks.release, context);
  auto* stream = makeObject<Stream>(context, callbacks);
  data.handOver();
  return wrap(stream);
}

template ZEBContainer* makeClientStream<ClientSimpleStreamImpl>(void*, const ClientCallbacks&);
template ZEBContainer* makeClientStream<ClientRewindableStreamImpl>(void*, const ClientCallbacks&);
template ZEBContainer* makeClientStream<ClientPositionableStreamImpl>(void*,
                                                                      const ClientCallbacks&);

}  // namespace zeb::streams
