// Containers: reference-counted objects that bind interface names and named instances.
//
//   made ──> shared ──last reference──> kept by its owner (ownerHook says so)
//                         │                  │ deleteUnowned
//                         ▼                  ▼
//                 full: recycled      else: deleted
//
// A full container has exactly one interface and one instance. Its instance is destroyed when it is
// recycled; its names stay until it is made anew.
//
// The lists of interfaces and instances are not locked: one thread builds a container before it is
// shared. References are atomic. No lock is held while a client's procedure runs.
#ifndef ZEB_CONTAINER_CONTAINER_H
#define ZEB_CONTAINER_CONTAINER_H

#include <atomic>
#include <cstdint>
#include <span>

#include "atoms/atom.h"
#include "base/live_objects.h"
#include "base/object_bases.h"
#include "util/intrusive_list.h"
#include "zeb/container.h"

namespace zeb::container {

struct InterfaceMethods : double_linked_list_element<InterfaceMethods, ZEBDLLEParent> {
  atoms::Ref name;
};

struct Instance : double_linked_list_element<Instance, ZEBDLLEParent> {
  atoms::Ref name;
  ZEBContainerDestroy destroy = nullptr;  // set before anybody sees it, never null then
  void* data = nullptr;

  // Destroys the data, once.
  void end() noexcept;
};

}  // namespace zeb::container

struct ZEBContainer {
  zeb::double_linked_list<zeb::container::InterfaceMethods> interfaces;  // the latest first
  zeb::double_linked_list<zeb::container::Instance> instances;           // the latest first
  zeb::atoms::Ref signature;  // the interfaces' names joined by "."; null while there are none
  std::atomic<uint32_t> references{0};  // unused while refProc counts
  ZEBContainerOwnerHook ownerHook = nullptr;
  ZEBContainerRefProc refProc = nullptr;
  uint64_t refContext = 0;
  ZEBContainerCache cache{};  // of the first instance and the signature, for clients to compare

  [[nodiscard]] bool isFull() const noexcept {
    return interfaces.count() == 1 && instances.count() == 1;
  }
};

namespace zeb::container {

// What a full container is made of.
struct FullContainerParts {
  void* data = nullptr;
  ZEBString* instanceName = nullptr;
  ZEBContainerDestroy destroy = nullptr;
  ZEBString* interfaceName = nullptr;
  ZEBContainerOwnerHook ownerHook = nullptr;
  ZEBContainerRefProc refProc = nullptr;
  uint64_t refContext = 0;
};

// What a component of several interfaces and one instance is made of in one step.
struct ComponentParts {
  void* data = nullptr;
  ZEBString* instanceName = nullptr;
  ZEBContainerDestroy destroy = nullptr;
  std::span<ZEBString* const> interfaceNames;  // all different, in the order of registration
  ZEBString* signature = nullptr;              // their names joined, which the caller keeps at hand
};

// Each gives one reference to the caller and raises what allocation raises; the data then stays the
// caller's.
[[nodiscard]] ZEBContainer* makeEmpty();
[[nodiscard]] ZEBContainer* makeFull(const FullContainerParts& parts);
[[nodiscard]] ZEBContainer* makeComponent(const ComponentParts& parts);
[[nodiscard]] ZEBContainer* makeClone(ZEBContainer& source);

void addReference(ZEBContainer& container);
void release(ZEBContainer& container);
void* decrementWithoutDelete(ZEBContainer& container);
void deleteUnowned(ZEBContainer& container);

// An interface that is there already is left where it is.
void addInterface(ZEBContainer& container, ZEBString* name);
// Raises what allocation raises; the data then stays the caller's.
void addInstance(ZEBContainer& container, void* data, ZEBString* name, ZEBContainerDestroy destroy);

// Null when no interface has the method.
[[nodiscard]] ZEBProc findMethod(const ZEBContainer& container, const ZEBString* method,
                                 const ZEBString* proc) noexcept;
[[nodiscard]] ZEBProc findParentMethod(const ZEBContainer& container, const ZEBString* current,
                                       const ZEBString* method, const ZEBString* proc) noexcept;
// Counts itself. Null when no instance has the name.
[[nodiscard]] const Instance* findInstance(const ZEBContainer& container,
                                           const ZEBString* name) noexcept;

// Kept are those of recycled containers, each of which has one instance and one interface.
[[nodiscard]] LiveObjects liveContainers() noexcept;
[[nodiscard]] LiveObjects liveInstances() noexcept;
[[nodiscard]] LiveObjects liveInterfaces() noexcept;

// Deletes the recycled containers.
void emptyRecycled() noexcept;

// The names that recycled containers hold are no leak when the library stops.
void excuseRecycledNames() noexcept;

}  // namespace zeb::container

#endif
