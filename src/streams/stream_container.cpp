#include "streams/stream_container.h"

#include <memory>

#include "memory/object_memory.h"

namespace zeb::streams {

namespace {

void destroyStream(void* stream) { destroyObject(static_cast<SimpleStreamImpl*>(stream)); }

struct Release {
  void operator()(ZEBContainer* container) const { container::release(*container); }
};

ZEBContainer* wrapSimple(SimpleStreamImpl* stream, const StreamInterfaceNames& names) {
  return container::makeFull({.data = stream,
                              .instanceName = names.simpleStreamImplementation,
                              .destroy = destroyStream,
                              .interfaceName = names.simpleStream});
}

ZEBContainer* wrapHigherTier(SimpleStreamImpl* stream, const StreamInterfaceNames& names) {
  std::unique_ptr<ZEBContainer, Release> draft(container::makeEmpty());
  container::addInterface(*draft, names.simpleStream);
  container::addInterface(*draft, names.rewindableStream);
  if (stream->tier() == Tier::positionable) {
    container::addInterface(*draft, names.positionableStream);
  }
  container::addInstance(*draft, stream, names.simpleStreamImplementation, destroyStream);
  return draft.release();
}

}  // namespace

ZEBContainer* wrap(SimpleStreamImpl* made) {
  ObjectHolder<SimpleStreamImpl> stream(made);
  const StreamInterfaceNames& names = *hostState.streamInterfaceNames;
  ZEBContainer* container = stream.get()->tier() == Tier::simple
                                ? wrapSimple(stream.get(), names)
                                : wrapHigherTier(stream.get(), names);
  (void)stream.release();
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
