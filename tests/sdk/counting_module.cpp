// A module with a counter of its own.
#include "sdk/counting_module.h"

#include "zeb/sdk/client_start.hpp"
#include "zeb/sdk/event_counter.hpp"
#include "zeb/sdk/module_entry.h"

namespace {

zeb::sdk::EventCounter counter(COUNTING_MODULE_EVENT, 30);

}  // namespace

extern "C" {
ZEB_MODULE_EXPORT void signalModule(uint64_t amount);
ZEB_MODULE_EXPORT uint32_t countModuleObjects();
}

int32_t ZEBModuleStart(ZEBGetProcAddress find) { return zeb::sdk::startClient(find) ? 1 : 0; }
void ZEBModuleStop() { zeb::sdk::stopClient(); }
void signalModule(uint64_t amount) { counter.signal(amount); }

uint32_t countModuleObjects() {
  uint32_t count = 0;
  for (auto* object = zeb::sdk::thisModule.lazyList.head(); object != nullptr;
       object = object->older()) {
    ++count;
  }
  return count;
}
