#include "frame/stream_names.h"

#include "atoms/atom.h"
#include "base/host_state.h"
#include "memory/object_memory.h"

namespace zeb::frame {

static_assert(sizeof(StreamInterfaceNames) == 40);

void makeStreamNames() {
  ObjectMemory memory(sizeof(StreamInterfaceNames));
  atoms::Ref implementation("ZEBSimpleStreamZEBImpl");
  atoms::Ref simple("ZEBSimpleStreamInterface");
  atoms::Ref rewindable("ZEBRewindableStreamInterface");
  atoms::Ref positionable("ZEBPositionableStreamInterface");
  atoms::Ref stream("ZEBStreamInterface");
  hostState.streamInterfaceNames = new (memory.release()) StreamInterfaceNames{
      .simpleStreamImplementation = implementation.handOver(),
      .simpleStream = simple.handOver(),
      .rewindableStream = rewindable.handOver(),
      .positionableStream = positionable.handOver(),
      .stream = stream.handOver(),
  };
}

void releaseStreamNames() noexcept {
  StreamInterfaceNames* names = hostState.streamInterfaceNames;
  if (names == nullptr) return;
  hostState.streamInterfaceNames = nullptr;
  atoms::release(names->stream);
  atoms::release(names->positionableStream);
  atoms::release(names->rewindableStream);
  atoms::release(names->simpleStream);
  atoms::release(names->simpleStreamImplementation);
  freeObject(names);
}

}  // namespace zeb::frame
