// Streams as handles: the container that carries a stream, and the way back.
#ifndef ZEB_STREAMS_STREAM_CONTAINER_H
#define ZEB_STREAMS_STREAM_CONTAINER_H

#include "base/failure.h"
#include "base/host_state.h"
#include "container/container.h"
#include "streams/stream_impl.h"

namespace zeb::streams {

// A container that lists the interfaces of the stream's tier and owns the stream; one reference for
// the caller. The stream is consumed in every case.
[[nodiscard]] ZEBContainer* wrap(SimpleStreamImpl* stream);

// The same for containers whose first instance is not the stream; null when there is no stream.
[[nodiscard]] SimpleStreamImpl* findAmongInstances(const ZEBContainer& container) noexcept;

// The stream behind a handle. Raises "Missing ZEB Method" for null and for what is no stream.
[[nodiscard]] inline SimpleStreamImpl& streamOf(const ZEBContainer* container) {
  if (container == nullptr) [[unlikely]]
    raiseStandardZeb(zebid::kMissingMethod);
  const StreamInterfaceNames* names = hostState.streamInterfaceNames;
  if (names != nullptr &&
      container->cache.instanceName == names->simpleStreamImplementation->text()) [[likely]] {
    return *static_cast<SimpleStreamImpl*>(container->cache.instanceData);
  }
  SimpleStreamImpl* stream = findAmongInstances(*container);
  if (stream == nullptr) raiseStandardZeb(zebid::kMissingMethod);
  return *stream;
}

// The same, of at least a tier; a stream below it does not have the method.
[[nodiscard]] inline RewindableStreamImpl& rewindableStreamOf(const ZEBContainer* container) {
  SimpleStreamImpl& stream = streamOf(container);
  if (stream.tier() < Tier::rewindable) raiseStandardZeb(zebid::kMissingMethod);
  return static_cast<RewindableStreamImpl&>(stream);
}
[[nodiscard]] inline PositionableStreamImpl& positionableStreamOf(const ZEBContainer* container) {
  SimpleStreamImpl& stream = streamOf(container);
  if (stream.tier() < Tier::positionable) raiseStandardZeb(zebid::kMissingMethod);
  return static_cast<PositionableStreamImpl&>(stream);
}

}  // namespace zeb::streams

#endif
