#include "errors/error_object.h"

#include <array>

#include "base/host_state.h"
#include "memory/object_memory.h"

namespace zeb::errors {

namespace {

constinit LiveTally liveErrors;

void destroy(ZEBErrorObject* error) noexcept {
  if (error->infoDelete != nullptr) {
    try {
      error->infoDelete(error->info);
    } catch (...) {  // the data is the client's loss; the error goes all the same
    }
  }
  const ZEBObjFree freeThrough = error->freeThrough;
  error->~ZEBErrorObject();
  freeObjectThrough(freeThrough, error);
  liveErrors.ended();
}

}  // namespace

ZEBErrorObject* make(const char* message, const char* component, int32_t id) {
  const std::array keys{TextKey(component), TextKey(message)};
  std::array<atoms::Ref, keys.size()> names;
  atoms::makeAll(keys, names);
  auto* error = makeObject<ZEBErrorObject>();
  error->id = id;
  error->component = std::move(names[0]);
  error->message = std::move(names[1]);
  error->freeThrough = hostState.objects.free;
  liveErrors.made();
  return error;
}

LiveObjects live() noexcept { return {.live = liveErrors.live()}; }

void addReference(ZEBErrorObject* error) noexcept {
  if (error != nullptr) error->references.fetch_add(1, std::memory_order_relaxed);
}

void release(ZEBErrorObject* error) noexcept {
  if (error == nullptr) return;
  // The only holder needs no atomic subtraction: nobody else can add a reference any more.
  if (error->references.load(std::memory_order_acquire) != 1 &&
      error->references.fetch_sub(1, std::memory_order_acq_rel) != 1) {
    return;
  }
  destroy(error);
}

}  // namespace zeb::errors
