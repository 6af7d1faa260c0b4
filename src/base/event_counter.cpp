#include "base/event_counter.h"

namespace zeb {

constinit EventSlots eventSlots{
    [](const char*, int32_t) -> ZEBEventCounter* { return nullptr; },
    [](ZEBEventCounter*) {},
    [](ZEBEventCounter*, uint64_t) {},
    [](ZEBEventCounter*) -> Tally* { return nullptr; },
};

}  // namespace zeb

namespace ZEB_T_MT {

bool CZEBEventCounter::initialise() {
  handle_ = zeb::eventSlots.create(name_, criticality_);
  tally_ = handle_ != nullptr ? zeb::eventSlots.tallyOf(handle_) : nullptr;
  return true;
}

void CZEBEventCounter::terminate() {
  if (handle_ == nullptr) return;
  ZEBEventCounter* handle = handle_;
  handle_ = nullptr;
  tally_ = nullptr;
  zeb::eventSlots.destroy(handle);
}

void CZEBEventCounter::signalHandle(uint64_t times) const noexcept {
  try {
    for (; times > 0; --times) zeb::eventSlots.signal(handle_, 1);
  } catch (...) {  // a count that is lost harms nobody
  }
}

}  // namespace ZEB_T_MT
