#include "filters/chain.h"

#include "base/failure.h"
#include "memory/object_memory.h"

namespace zeb::filters {

namespace {

ZEBFilterImpl* nextFilter(const ZEBFilterImpl& filter) noexcept {
  return asFilter(filter.target());
}

bool leadsTo(ZEBDataSink& sink, const ZEBFilterImpl& filter) noexcept {
  for (const auto* member = asFilter(&sink); member != nullptr; member = nextFilter(*member)) {
    if (member == &filter) return true;
  }
  return false;
}

[[noreturn]] void raiseLoop() {
  raiseNewKst(kst::kUnknown, "illegal call to SetDataSink (would create loop)");
}

void closeQuietly(ZEBFilterImpl& filter) noexcept {
  try {
    filter.Close();
  } catch (...) {  // nobody could be told
  }
}

}  // namespace

// The next filter is read after each close: the client may have changed the chain.
void closeChain(ZEBFilterImpl& first) noexcept {
  Pin filter(first);
  for (;;) {
    closeQuietly(*filter);
    ZEBFilterImpl* next = nextFilter(*filter);
    if (next == nullptr) return;
    filter.moveTo(*next);
  }
}

// A sink that stands on the chain is met on the way, one whose chain leads back is found at the
// end: two chains that share a member share the last filter. Nothing of a client runs between that
// test and the change.
void append(ZEBFilterImpl& first, ZEBDataSink& sink) {
  const Pin keepSink(sink);
  Pin last(first);
  for (;;) {
    if (&*last == &sink) raiseLoop();
    last->Close();
    ZEBFilterImpl* next = nextFilter(*last);
    if (next == nullptr) break;
    last.moveTo(*next);
  }
  if (leadsTo(sink, *last)) raiseLoop();
  addReference(&sink);
  last->replaceTarget(&sink);
}

ZEBChainState* stateOf(ZEBFilterImpl& first) {
  ZEBFilterImpl* last = &first;
  while (ZEBFilterImpl* next = nextFilter(*last)) last = next;
  auto* state = makeObject<ZEBChainState>(ZEBChainState{last, last->target()});
  addReference(state->filter);
  addReference(state->target);
  return state;
}

// The state's reference to the target becomes the filter's.
void reset(ZEBChainState* state) noexcept {
  const ZEBChainState saved = *state;
  destroyObject(state);
  saved.filter->replaceTarget(saved.target);
  release(saved.filter);
}

}  // namespace zeb::filters
