#include "filters/data_sink.h"

#include <utility>

#include "base/failure.h"
#include "base/unowned_data.h"
#include "filters/filter.h"
#include "memory/object_memory.h"

namespace zeb::filters {

constinit LiveTally liveSinkTally;

namespace {

// True when the reference was the last and nothing pins the member.
bool dropsLast(ZEBDataSink& sink) noexcept {
  if (--sink.references != 0) return false;
  if (sink.pins == 0) return true;
  sink.condemned = true;
  return false;
}

// Destroys the member and answers with its reference to its target. A client that takes a reference
// to the member from its own destroy procedure gets a member without a client, which ends when that
// reference is given back.
ZEBDataSink* destroyMember(ZEBDataSink* member) noexcept {
  ++member->pins;
  member->endClient();
  --member->pins;
  if (member->references != 0) return nullptr;
  ZEBDataSink* target = member->isFilter() ? asFilter(member)->takeTarget() : nullptr;
  destroyObject(member);
  return target;
}

}  // namespace

ZEBErrorObject* ClientPart::missingWrite(void* /*clientData*/, const void* /*data*/,
                                         uint64_t /*size*/) {
  raiseStandardZeb(zebid::kMissingMethod);
}

void ClientPart::end() noexcept {
  write_ = missingWrite;
  const UnownedData ended(std::exchange(destroy_, nullptr), std::exchange(data_, nullptr));
}

// Member by member in a loop: a chain may be longer than the stack is deep.
void destroyChain(ZEBDataSink* member) noexcept {
  do {
    member = destroyMember(member);
  } while (member != nullptr && dropsLast(*member));
}

void release(ZEBDataSink* sink) noexcept {
  if (sink != nullptr && dropsLast(*sink)) destroyChain(sink);
}

}  // namespace zeb::filters
