#include "streams/stream_container.h"

#include <array>
#include <span>
#include <utility>

#include "atoms/atom.h"
#include "memory/object_memory.h"
#include "zeb/positionable_stream.h"
#include "zeb/rewindable_stream.h"
#include "zeb/simple_stream.h"

namespace zeb::streams {

constinit LiveTally liveStreamTally;

namespace {

void destroyStream(void* stream) { destroyObject(static_cast<SimpleStreamImpl*>(stream)); }

// The names of a tier's interfaces, joined as its containers list them.
constinit ZEBString* rewindableSignature = nullptr;
constinit ZEBString* positionableSignature = nullptr;

void replace(ZEBString*& held, ZEBString* taken) noexcept {
  atoms::release(std::exchange(held, taken));
}

ZEBContainer* wrapSimple(SimpleStreamImpl* stream, const StreamInterfaceNames& names) {
  return container::makeFull({.data = stream,
                              .instanceName = names.simpleStreamImplementation,
                              .destroy = destroyStream,
                              .interfaceName = names.simpleStream});
}

ZEBContainer* wrapHigherTier(SimpleStreamImpl* stream, const StreamInterfaceNames& names) {
  const std::array interfaces{names.simpleStream, names.rewindableStream, names.positionableStream};
  const bool positionable = stream->tier() == Tier::positionable;
  return container::makeComponent(
      {.data = stream,
       .instanceName = names.simpleStreamImplementation,
       .destroy = destroyStream,
       .interfaceNames = std::span(interfaces).first(positionable ? 3 : 2),
       .signature = positionable ? positionableSignature : rewindableSignature});
}

}  // namespace

void makeTierSignatures() {
  atoms::Ref rewindable(ZEB_SIMPLE_STREAM_INTERFACE "." ZEB_REWINDABLE_STREAM_INTERFACE);
  atoms::Ref positionable(ZEB_SIMPLE_STREAM_INTERFACE "." ZEB_REWINDABLE_STREAM_INTERFACE
                                                      "." ZEB_POSITIONABLE_STREAM_INTERFACE);
  replace(rewindableSignature, rewindable.handOver());
  replace(positionableSignature, positionable.handOver());
}

void releaseTierSignatures() noexcept {
  replace(rewindableSignature, nullptr);
  replace(positionableSignature, nullptr);
}

ZEBContainer* wrap(SimpleStreamImpl* stream) {
  ObjectHolder<SimpleStreamImpl> owned(stream);
  const StreamInterfaceNames& names = *hostState.streamInterfaceNames;
  ZEBContainer* container =
      stream->tier() == Tier::simple ? wrapSimple(stream, names) : wrapHigherTier(stream, names);
  (void)owned.release();
  return container;
}

SimpleStreamImpl* findAmongInstances(const ZEBContainer& container) noexcept {
  const StreamInterfaceNames* names = hostState.streamInterfaceNames;
  if (names == nullptr) return nullptr;
  const container::Instance* instance =
      container::findInstance(container, names->simpleStreamImplementation);
  return instance != nullptr ? static_cast<SimpleStreamImpl*>(instance->data) : nullptr;
}

}  // namespace zeb::streams
