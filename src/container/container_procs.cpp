// Interface "ZEBContainerInterface".
#include <array>

#include "base/host_state.h"
#include "base/unowned_data.h"
#include "container/container.h"
#include "container/container_service.h"
#include "container/primary_instance.h"
#include "errors/error_boundary.h"
#include "registry/proc_registry.h"

namespace zeb {

namespace {

// Raises "Missing ZEB Method" unless all of them are there.
template <class... Pointers>
void require(const Pointers*... pointers) {
  const bool allThere = (... && (pointers != nullptr));
  if (!allThere) raiseStandardZeb(zebid::kMissingMethod);
}

void makeFullContainer(ZEBContainer** out, const container::FullContainerParts& parts) {
  UnownedData data(parts.destroy, parts.data);
  clearOut(out);
  require(parts.instanceName, parts.interfaceName);
  *out = container::makeFull(parts);
  data.handOver();
}

// The first versions answer with the result itself.
template <class Make>
ZEBContainer* madeBy(Make make) {
  ZEBContainer* container = nullptr;
  make(&container);
  return container;
}

namespace procs {

void NewFullContainer(ZEBContainer** out, void* data, ZEBString* instanceName,
                      ZEBContainerDestroy destroy, ZEBString* interfaceName,
                      ZEBContainerOwnerHook ownerHook, ZEBContainerRefProc refProc,
                      uint64_t refContext) {
  makeFullContainer(out, {.data = data,
                          .instanceName = instanceName,
                          .destroy = destroy,
                          .interfaceName = interfaceName,
                          .ownerHook = ownerHook,
                          .refProc = refProc,
                          .refContext = refContext});
}

void NewFullContainerV3(ZEBContainer** out, void* data, ZEBString* instanceName,
                        ZEBContainerDestroy destroy, ZEBString* interfaceName,
                        ZEBContainerOwnerHook ownerHook) {
  NewFullContainer(out, data, instanceName, destroy, interfaceName, ownerHook, nullptr, 0);
}

// The fourth version was given the third's signature and behaviour; clients of either find theirs.
void NewFullContainerV4(ZEBContainer** out, void* data, ZEBString* instanceName,
                        ZEBContainerDestroy destroy, ZEBString* interfaceName,
                        ZEBContainerOwnerHook ownerHook) {
  NewFullContainerV3(out, data, instanceName, destroy, interfaceName, ownerHook);
}

void NewFullContainerV2(ZEBContainer** out, void* data, ZEBString* instanceName,
                        ZEBContainerDestroy destroy, ZEBString* interfaceName) {
  NewFullContainerV3(out, data, instanceName, destroy, interfaceName, nullptr);
}

ZEBContainer* NewFullContainerV1(void* data, ZEBString* instanceName, ZEBContainerDestroy destroy,
                                 ZEBString* interfaceName) {
  return madeBy([&](ZEBContainer** out) {
    NewFullContainerV2(out, data, instanceName, destroy, interfaceName);
  });
}

void NewContainer(ZEBContainer** out) {
  clearOut(out);
  *out = container::makeEmpty();
}

ZEBContainer* NewContainerV1() { return container::makeEmpty(); }

void CloneContainer(ZEBContainer** out, ZEBContainer* source) {
  clearOut(out);
  require(source);
  *out = container::makeClone(*source);
}

int32_t AddRef(ZEBContainer* container) {
  if (container == nullptr) return 0;
  container::addReference(*container);
  return 1;
}

void Release(ZEBContainer* container) {
  if (container == nullptr || hostState.initCount <= 0) return;
  container::release(*container);
}

void* DecrementWithoutDelete(ZEBContainer* container) {
  return container != nullptr ? container::decrementWithoutDelete(*container) : nullptr;
}

void DeleteUnownedContainer(ZEBContainer* container) {
  if (container != nullptr) container::deleteUnowned(*container);
}

void RegisterInterface(ZEBContainer* container, ZEBString* interfaceName) {
  require(container, interfaceName);
  container::addInterface(*container, interfaceName);
}
void RegisterInterfaceV1(ZEBContainer* container, ZEBString* interfaceName) {
  RegisterInterface(container, interfaceName);
}

// A null container is harmless here: nothing happens, and the data stays the caller's.
void RegisterInstance(ZEBContainer* container, void* data, ZEBString* instanceName,
                      ZEBContainerDestroy destroy) {
  if (container == nullptr) return;
  UnownedData unowned(destroy, data);
  require(instanceName);
  container::addInstance(*container, data, instanceName, destroy);
  unowned.handOver();
}
void RegisterInstanceV1(ZEBContainer* container, void* data, ZEBString* instanceName,
                        ZEBContainerDestroy destroy) {
  RegisterInstance(container, data, instanceName, destroy);
}

void GetMethod(ZEBProc* out, ZEBContainer* container, ZEBString* method, ZEBString* proc,
               int32_t raiseIfMissing) {
  clearOut(out);
  require(container, method, proc);
  *out = container::findMethod(*container, method, proc);
  if (*out == nullptr && raiseIfMissing != 0) raiseStandardZeb(zebid::kMissingMethod);
}

void GetMethodV2(ZEBProc* out, ZEBContainer* container, ZEBString* method, ZEBString* proc) {
  GetMethod(out, container, method, proc, 1);
}

ZEBProc GetMethodV1(ZEBContainer* container, ZEBString* method, ZEBString* proc) {
  require(container, method, proc);
  return container::findMethod(*container, method, proc);
}

void GetParentMethod(ZEBProc* out, ZEBContainer* container, ZEBString* currentInterface,
                     ZEBString* method, ZEBString* proc, int32_t raiseIfMissing) {
  clearOut(out);
  require(container, currentInterface, method, proc);
  *out = container::findParentMethod(*container, currentInterface, method, proc);
  if (*out == nullptr && raiseIfMissing != 0) raiseStandardZeb(zebid::kMissingMethod);
}

ZEBProc GetParentMethodV1(ZEBContainer* container, ZEBString* currentInterface, ZEBString* method,
                          ZEBString* proc) {
  require(container, currentInterface, method, proc);
  return container::findParentMethod(*container, currentInterface, method, proc);
}

void* GetInstance(ZEBContainer* container, ZEBString* instanceName) noexcept {
  if (container == nullptr || instanceName == nullptr) return nullptr;
  const container::Instance* instance = container::findInstance(*container, instanceName);
  return instance != nullptr ? instance->data : nullptr;
}

void NGetInstance(void** out, ZEBContainer* container, ZEBString* instanceName) {
  clearOut(out);
  require(container, instanceName);
  const container::Instance* instance = container::findInstance(*container, instanceName);
  require(instance);
  *out = instance->data;
}

const char* GetSignature(ZEBContainer* container) noexcept {
  return container != nullptr ? container->cache.interfaceName : nullptr;
}

void* DebugGetRefCountAddr(ZEBContainer* /*container*/) noexcept { return nullptr; }
int64_t GetOffsetToPrimaryInstance() noexcept { return container::offsetToPrimaryInstance(); }

}  // namespace procs

#define ZEB_ROW(member, method, proc) \
  tableEntry<proc>(#method, #proc, withBoundary<proc, &procs::member>()),
const std::array entries{ZEB_CONTAINER_PROCS(ZEB_ROW)};
const std::array olderEntries{ZEB_CONTAINER_OLDER_PROCS(ZEB_ROW)};
#undef ZEB_ROW

}  // namespace

ServiceTable containerService() { return {ZEB_CONTAINER_INTERFACE, entries, olderEntries}; }

bool container::registerContainersAs(const char* interfaceName) noexcept {
  return registry::addAll(entries, interfaceName);
}

}  // namespace zeb
