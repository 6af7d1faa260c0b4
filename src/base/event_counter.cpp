#include "base/event_counter.h"

namespace zeb {

constinit RegisterCounter registerCounter = [](const char*, int32_t) {
  return EventRegistration{};
};

}  // namespace zeb

namespace ZEB_T_MT {

bool CZEBEventCounter::initialise() {
  registration_ = zeb::registerCounter(name_, criticality_);
  return true;
}

void CZEBEventCounter::terminate() {
  const zeb::EventRegistration registration = registration_;
  registration_ = {};
  if (registration.handle != nullptr) registration.remove(registration.handle);
}

void CZEBEventCounter::signalForeign(uint64_t times) const noexcept {
  try {
    for (; times > 0; --times) registration_.signal(registration_.handle, 1);
  } catch (...) {  // a count that is lost harms nobody
  }
}

}  // namespace ZEB_T_MT
