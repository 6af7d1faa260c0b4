#include "base/host_state.h"

namespace zeb {

constinit HostState hostState;

void reportToHost(const char* message) noexcept {
  if (hostState.errorReport == nullptr) return;
  try {
    hostState.errorReport(message);
  } catch (...) {  // a report that fails has nobody left to be reported to
  }
}

}  // namespace zeb
