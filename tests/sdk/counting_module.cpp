// A module with a counter of its own.
#include "sdk/counting_module.h"

#include "zeb/sdk/client_start.hpp"
#include "zeb/sdk/event_counter.hpp"

namespace {

zeb::sdk::EventCounter counter(COUNTING_MODULE_EVENT, 30);

}  // namespace

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED int32_t startModule(ZEBGetProcAddress getProcAddress);
EXPORTED void stopModule();
EXPORTED void signalModule(uint64_t amount);
EXPORTED uint32_t countModuleObjects();

int32_t startModule(ZEBGetProcAddress getProcAddress) {
  return zeb::sdk::startClient(getProcAddress) ? 1 : 0;
}
void stopModule() { zeb::sdk::stopClient(); }
void signalModule(uint64_t amount) { counter.signal(amount); }

uint32_t countModuleObjects() {
  uint32_t count = 0;
  for (auto* object = zeb::sdk::thisModule.lazyList.head(); object != nullptr;
       object = object->older()) {
    ++count;
  }
  return count;
}
