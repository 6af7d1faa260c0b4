#include "container/container.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "base/checked_size.h"
#include "base/library_counters.h"
#include "container/recycled_containers.h"
#include "memory/object_memory.h"
#include "memory/typed_pool.h"

namespace zeb::container {

namespace {

constinit TypedPool<ZEBContainer, 96, 16> containerPool{counters::containerPageMiss};
constinit TypedPool<Instance, 56, 16> instancePool{counters::instancePageMiss};
constinit TypedPool<InterfaceMethods, 40, 16> interfacePool{counters::interfaceMethodPageMiss};
constinit RecycledContainers recycled;

void destroyNothing(void* /*data*/) {}

atoms::Ref sharedName(ZEBString* name) noexcept {
  atoms::addReference(name);
  return atoms::Ref(name);
}

// Takes a reference to another name only when it is another one.
void rename(atoms::Ref& held, ZEBString* name) noexcept {
  if (held.get() != name) held = sharedName(name);
}

template <class List, class Pool>
void destroyAll(List& list, Pool& pool) noexcept {
  while (auto* element = list.head()) {
    list.remove(element);
    pool.destroy(element);
  }
}

// Deletes the records and the names, not the instances' data.
void deleteRecords(ZEBContainer* container) noexcept {
  destroyAll(container->instances, instancePool);
  destroyAll(container->interfaces, interfacePool);
  containerPool.destroy(container);
}

struct DeleteRecords {
  void operator()(ZEBContainer* container) const noexcept { deleteRecords(container); }
};
// A container under construction.
using Draft = std::unique_ptr<ZEBContainer, DeleteRecords>;

void deleteContainer(ZEBContainer* container) noexcept {
  for (Instance* instance = container->instances.head(); instance != nullptr;
       instance = instance->older()) {
    instance->end();
  }
  deleteRecords(container);
}

// The first reference is the creator's own, whoever counts.
void addFirstReference(ZEBContainer& container) noexcept {
  counters::containerAddRef.signal();
  container.references.store(1, std::memory_order_relaxed);
}

void linkInterface(ZEBContainer& container, ZEBString* name) {
  InterfaceMethods* entry = interfacePool.make();
  entry->name = sharedName(name);
  container.interfaces.pushHead(entry);
}

Instance& linkInstance(ZEBContainer& container, void* data, ZEBString* name,
                       ZEBContainerDestroy destroy) {
  Instance* instance = instancePool.make();
  instance->name = sharedName(name);
  instance->destroy = destroy != nullptr ? destroy : destroyNothing;
  instance->data = data;
  container.instances.pushHead(instance);
  return *instance;
}

void setSignature(ZEBContainer& container, atoms::Ref signature) noexcept {
  container.signature = std::move(signature);
  container.cache.interfaceName = container.signature.get()->text();
}

atoms::Ref joined(const ZEBString& first, const ZEBString& second) {
  const uint64_t size = sizeOfJoinedTexts(sumOfSizes(first.length, 1), second.length);
  const ObjectMemory memory(size);
  auto* text = static_cast<char*>(memory.get());
  std::memcpy(text, first.text(), first.length);
  text[first.length] = '.';
  std::memcpy(text + first.length + 1, second.text(), second.length + 1);
  return atoms::Ref(text);
}

void cacheFirstInstance(ZEBContainer& container, const Instance& instance) noexcept {
  if (container.cache.instanceData != nullptr) return;
  container.cache.instanceName = instance.name.get()->text();
  container.cache.instanceData = instance.data;
}

// Calls `visit` with each element, the oldest first.
template <class Element, class Visit>
void forEachFromOldest(const double_linked_list<Element>& list, Visit visit) {
  const Element* element = list.head();
  while (element != nullptr && element->older() != nullptr) element = element->older();
  for (; element != nullptr; element = element->newer()) visit(*element);
}

// A clone's hold on its source.
void releaseSource(void* source) { release(*static_cast<ZEBContainer*>(source)); }

void releaseLast(ZEBContainer* container) noexcept {
  if (!container->isFull()) {
    counters::uncachedContainerDelete.signal();
    deleteContainer(container);
    return;
  }
  container->instances.head()->end();
  if (!recycled.push(container)) deleteRecords(container);
}

bool ownerKeeps(ZEBContainer& container) noexcept {
  if (container.ownerHook == nullptr) return false;
  try {
    return container.ownerHook(&container, container.interfaces.count(),
                               container.instances.count()) != 0;
  } catch (...) {  // an owner that fails does not keep it
    return false;
  }
}

bool dropReference(ZEBContainer& container) {
  if (container.refProc != nullptr) return container.refProc(container.refContext, 0) != 0;
  return container.references.fetch_sub(1, std::memory_order_acq_rel) == 1;
}

// The names are replaced first: they are what a stranger's procedure cannot make fail.
void rebind(ZEBContainer& container, const FullContainerParts& parts) noexcept {
  Instance& instance = *container.instances.head();
  rename(instance.name, parts.instanceName);
  rename(container.interfaces.head()->name, parts.interfaceName);
  rename(container.signature, parts.interfaceName);
  instance.destroy = parts.destroy != nullptr ? parts.destroy : destroyNothing;
  instance.data = parts.data;
}

void finishFull(ZEBContainer& container, const FullContainerParts& parts) noexcept {
  container.ownerHook = parts.ownerHook;
  container.refProc = parts.refProc;
  container.refContext = parts.refContext;
  container.cache = {.instanceName = parts.instanceName->text(),
                     .interfaceName = parts.interfaceName->text(),
                     .instanceData = parts.data};
}

template <class Pool>
LiveObjects liveIn(Pool& pool) noexcept {
  // Another thread may recycle or delete between the two numbers.
  const uint64_t kept = recycled.count();
  const uint64_t live = pool.live();
  return {.live = live, .kept = std::min(kept, live)};
}

}  // namespace

void Instance::end() noexcept {
  const ZEBContainerDestroy destroyOnce = destroy;
  destroy = destroyNothing;
  try {
    destroyOnce(data);
  } catch (...) {  // the data is the client's loss
  }
}

ZEBContainer* makeEmpty() {
  counters::emptyContainer.signal();
  ZEBContainer* container = containerPool.make();
  container->cache.interfaceName = "";
  addFirstReference(*container);
  return container;
}

// A recycled container carries one reference, as a new one does: the stack's own hold passes on.
ZEBContainer* makeFull(const FullContainerParts& parts) {
  if (ZEBContainer* container = recycled.pop()) {
    counters::fullContainerCacheHit.signal();
    rebind(*container, parts);
    finishFull(*container, parts);
    container->references.store(1, std::memory_order_relaxed);
    return container;
  }
  counters::fullContainerCacheMiss.signal();
  Draft draft(containerPool.make());
  linkInterface(*draft, parts.interfaceName);
  linkInstance(*draft, parts.data, parts.instanceName, parts.destroy);
  setSignature(*draft, sharedName(parts.interfaceName));
  finishFull(*draft, parts);
  addFirstReference(*draft);
  return draft.release();
}

// Counted as what it does away with: a container that is made empty and then filled.
ZEBContainer* makeComponent(const ComponentParts& parts) {
  counters::emptyContainer.signal();
  Draft draft(containerPool.make());
  for (ZEBString* name : parts.interfaceNames) linkInterface(*draft, name);
  setSignature(*draft, sharedName(parts.signature));
  cacheFirstInstance(*draft, linkInstance(*draft, parts.data, parts.instanceName, parts.destroy));
  addFirstReference(*draft);
  return draft.release();
}

ZEBContainer* makeClone(ZEBContainer& source) {
  Draft draft(containerPool.make());
  draft->cache.interfaceName = "";
  forEachFromOldest(source.interfaces, [&](const InterfaceMethods& entry) {
    linkInterface(*draft, entry.name.get());
  });
  forEachFromOldest(source.instances, [&](const Instance& instance) {
    linkInstance(*draft, instance.data, instance.name.get(), destroyNothing);
  });
  if (source.signature.get() != nullptr) setSignature(*draft, sharedName(source.signature.get()));
  const atoms::Ref holdName(ZEB_CONTAINER_CLONE_INSTANCE);
  const Instance& hold = linkInstance(*draft, &source, holdName.get(), releaseSource);
  cacheFirstInstance(*draft, hold);
  addReference(source);
  addFirstReference(*draft);
  return draft.release();
}

void addReference(ZEBContainer& container) {
  counters::containerAddRef.signal();
  if (container.refProc != nullptr) {
    container.refProc(container.refContext, 1);
  } else {
    container.references.fetch_add(1, std::memory_order_relaxed);
  }
}

void release(ZEBContainer& container) {
  if (!dropReference(container) || ownerKeeps(container)) return;
  releaseLast(&container);
}

void* decrementWithoutDelete(ZEBContainer& container) {
  if (container.refProc != nullptr) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the contract answers with either
    return reinterpret_cast<void*>(container.refProc(container.refContext, 0));
  }
  container.references.fetch_sub(1, std::memory_order_acq_rel);
  return &container;
}

void deleteUnowned(ZEBContainer& container) {
  container.ownerHook = nullptr;
  addReference(container);
  release(container);
}

void addInterface(ZEBContainer& container, ZEBString* name) {
  for (const auto* entry = container.interfaces.head(); entry != nullptr; entry = entry->older()) {
    if (entry->name.get() == name) return;
  }
  const ZEBString* before = container.signature.get();
  atoms::Ref signature = before != nullptr ? joined(*before, *name) : sharedName(name);
  linkInterface(container, name);
  setSignature(container, std::move(signature));
}

void addInstance(ZEBContainer& container, void* data, ZEBString* name,
                 ZEBContainerDestroy destroy) {
  cacheFirstInstance(container, linkInstance(container, data, name, destroy));
}

LiveObjects liveContainers() noexcept { return liveIn(containerPool); }
LiveObjects liveInstances() noexcept { return liveIn(instancePool); }
LiveObjects liveInterfaces() noexcept { return liveIn(interfacePool); }

void emptyRecycled() noexcept {
  while (ZEBContainer* container = recycled.pop()) deleteRecords(container);
}

void excuseRecycledNames() noexcept {
  recycled.forEach([](const ZEBContainer& container) {
    atoms::excuseReference(container.signature.get());
    atoms::excuseReference(container.interfaces.head()->name.get());
    atoms::excuseReference(container.instances.head()->name.get());
  });
}

}  // namespace zeb::container
