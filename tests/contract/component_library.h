// A running library with what the tests of containers, shared buffers and progress objects need:
// the procs of all versions, names as atoms, errors as texts and the counters that these objects
// move.
#ifndef ZEB_TESTS_CONTRACT_COMPONENT_LIBRARY_H
#define ZEB_TESTS_CONTRACT_COMPONENT_LIBRARY_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

#include "contract/error_reports.h"
#include "contract/event_totals.h"
#include "contract/host_memory.h"
#include "contract/library.h"

namespace contract {

struct OlderContainerProcs {
  ZEB_CONTAINER_OLDER_PROCS(ZEB_PROC_MEMBER)
};
struct OlderSharedBufferProcs {
  ZEB_SHARED_BUFFER_OLDER_PROCS(ZEB_PROC_MEMBER)
};
ZEB_DEFINE_FETCH(FetchOlderContainerProcs, OlderContainerProcs, ZEB_CONTAINER_INTERFACE,
                 ZEB_CONTAINER_OLDER_PROCS)
ZEB_DEFINE_FETCH(FetchOlderSharedBufferProcs, OlderSharedBufferProcs, ZEB_SHARED_BUFFER_INTERFACE,
                 ZEB_SHARED_BUFFER_OLDER_PROCS)

inline constexpr const char* kContainerAddRef = "ZEB calls to Container::AddRef";
inline constexpr const char* kContainerPage = "ZEB container allocation page miss";
inline constexpr const char* kInstancePage = "ZEB instance allocation page miss";
inline constexpr const char* kInterfacePage = "ZEB interface method allocation page miss";
inline constexpr const char* kGetInstance =
    "ZEB calls to Container::GetInstance that missed the client-side cache";
inline constexpr const char* kNotRecycled =
    "ZEB calls to DeleteContainer that won't be cached because they have multiple instances or "
    "interfaces";
inline constexpr const char* kRecycledHit = "ZEB calls to NewFullContainer that hit the cache";
inline constexpr const char* kRecycledMiss = "ZEB calls to NewFullContainer that missed the cache";
inline constexpr const char* kNewContainer =
    "ZEB calls to NewContainer instead of NewFullContainer";
inline constexpr const char* kNewBuffer = "ZEB calls to new ZEBSharedBuffer";
inline constexpr const char* kBufferPage = "ZEB ZEBSharedBuffer allocation page miss";

inline constexpr std::array kComponentEvents = {
    kContainerAddRef, kContainerPage, kInstancePage, kInterfacePage, kGetInstance, kNotRecycled,
    kRecycledHit,     kRecycledMiss,  kNewContainer, kNewBuffer,     kBufferPage};

// At most this many full containers wait to be made anew.
inline constexpr int kMaxRecycled = 32;

// What stands before the first object of a page.
inline constexpr int kPageHeaderAndLink = 48 + 8;

// What an error says, as "component id: message".
inline constexpr const char* kSuccess = "success";
inline constexpr const char* kMissingMethod = "ZEB 0: Missing ZEB Method";
inline constexpr const char* kOutOfMemory = "KST 1: Out of Memory";
inline constexpr const char* kUnknownError = "KST 0: Unknown Kesto Error";

// The data of an instance or of a buffer, which counts how often it was destroyed.
struct Data {
  std::atomic<int> destroyed{0};

  static void Destroy(void* data) { ++static_cast<Data*>(data)->destroyed; }
};

// What a full container is made of, but for the data.
struct FullParts {
  const char* instanceName = "instance";
  const char* interfaceName = "interface";
  ZEBContainerDestroy destroy = &Data::Destroy;
  ZEBContainerOwnerHook ownerHook = nullptr;
  ZEBContainerRefProc refProc = nullptr;
  std::uint64_t refContext = 0;
};

// The totals of the events that moved, by name.
using Events = std::map<std::string, std::int64_t>;

class ComponentLibrary : public RunningLibrary {
 public:
  explicit ComponentLibrary(const StartOptions& options = {}) : RunningLibrary(options) {
    if (ZEBFetchContainerProcs(getProcAddress, &container) == 0 ||
        FetchOlderContainerProcs(getProcAddress, &olderContainer) == 0 ||
        ZEBFetchSharedBufferProcs(getProcAddress, &buffer) == 0 ||
        FetchOlderSharedBufferProcs(getProcAddress, &olderBuffer) == 0 ||
        ZEBFetchProgressProcs(getProcAddress, &progress) == 0) {
      throw std::runtime_error("a started library lacks a proc of its components");
    }
  }
  ~ComponentLibrary() { ReleaseNames(); }

  std::uint32_t Stop() {
    ReleaseNames();
    return RunningLibrary::Stop();
  }

  // The atom of a text, held until the stop.
  ZEBString* Name(const std::string& text) {
    ZEBString*& name = names_[text];
    if (name == nullptr) name = string.NewStringAtom(text.c_str());
    return name;
  }
  const char* TextOf(const std::string& text) { return string.GetCString(Name(text)); }

  void ReleaseNames() {
    for (const auto& [text, name] : names_) string.DeleteStringAtom(name);
    names_.clear();
  }

  // Takes the caller's reference to the error.
  std::string Outcome(ZEBErrorObject* taken) const {
    if (taken == nullptr) return kSuccess;
    const std::string text = std::string(string.GetCString(error.GetComponent(taken))) + " " +
                             std::to_string(error.GetID(taken)) + ": " +
                             string.GetCString(error.GetErrorMessage(taken));
    error.Release(taken);
    return text;
  }

  ZEBContainer* NewEmpty() {
    ZEBContainer* made = nullptr;
    EXPECT_EQ(Outcome(container.NewContainer(&made)), kSuccess);
    return made;
  }

  ZEBContainer* NewFull(void* data, const FullParts& parts = {}) {
    ZEBContainer* made = nullptr;
    EXPECT_EQ(Outcome(container.NewFullContainer(&made, data, Name(parts.instanceName),
                                                 parts.destroy, Name(parts.interfaceName),
                                                 parts.ownerHook, parts.refProc, parts.refContext)),
              kSuccess);
    return made;
  }

  ZEBContainer* Clone(ZEBContainer* source) {
    ZEBContainer* made = nullptr;
    EXPECT_EQ(Outcome(container.CloneContainer(&made, source)), kSuccess);
    return made;
  }

  void AddInterface(ZEBContainer* to, const char* name) {
    EXPECT_EQ(Outcome(container.RegisterInterface(to, Name(name))), kSuccess);
  }

  void AddInstance(ZEBContainer* to, const char* name, void* data,
                   ZEBContainerDestroy destroy = &Data::Destroy) {
    EXPECT_EQ(Outcome(container.RegisterInstance(to, data, Name(name), destroy)), kSuccess);
  }

  void* InstanceOf(ZEBContainer* asked, const char* name) {
    return container.GetInstance(asked, Name(name));
  }

  // A method that may be missing.
  ZEBProc MethodOf(ZEBContainer* asked, const char* method, const char* proc) {
    ZEBProc found = FakeProc(0xBAD);
    EXPECT_EQ(Outcome(container.GetMethod(&found, asked, Name(method), Name(proc), 0)), kSuccess);
    return found;
  }

  ZEBProc ParentMethodOf(ZEBContainer* asked, const char* current, const char* method,
                         const char* proc) {
    ZEBProc found = FakeProc(0xBAD);
    EXPECT_EQ(Outcome(container.GetParentMethod(&found, asked, Name(current), Name(method),
                                                Name(proc), 0)),
              kSuccess);
    return found;
  }

  // The fields that a client may compare instead of asking for an instance.
  ZEBContainerCache CacheOf(ZEBContainer* made) const {
    ZEBContainerCache cache;
    std::memcpy(&cache,
                reinterpret_cast<const char*>(made) + container.GetOffsetToPrimaryInstance(),
                sizeof(cache));
    return cache;
  }

  Events TotalsOfEvents() const {
    Events totals;
    for (const ZEBEventRecord& record : Snapshot(*this)) totals[record.name] = record.total;
    return totals;
  }

  // The events of containers and buffers that one operation counts.
  template <class Operation>
  Events EventsOf(Operation operation) const {
    Events before = TotalsOfEvents();
    operation();
    Events after = TotalsOfEvents();
    Events moved;
    for (const char* name : kComponentEvents) {
      if (after.at(name) != before.at(name)) moved[name] = after[name] - before[name];
    }
    return moved;
  }

  // Afterwards no full container waits to be made anew.
  void DrainRecycled() {
    std::vector<ZEBContainer*> taken;
    for (int i = 0; i <= kMaxRecycled; ++i) taken.push_back(NewFull(nullptr, kUndestroyed));
    for (ZEBContainer* full : taken) AddInstance(full, kUndestroyed.instanceName, nullptr, nullptr);
    for (ZEBContainer* full : taken) container.Release(full);
  }

  ZEBContainerProcs container;
  OlderContainerProcs olderContainer;
  ZEBSharedBufferProcs buffer;
  OlderSharedBufferProcs olderBuffer;
  ZEBProgressProcs progress;

 private:
  static constexpr FullParts kUndestroyed = {.destroy = nullptr};

  std::map<std::string, ZEBString*> names_;
};

// A test over a host that keeps books. It begins without recycled containers and ends without any:
// every block that the test took must have come back by then, and nothing may have been reported.
class ComponentTest : public ::testing::Test {
 protected:
  using Host = HostMemory<0>;
  using Reports = ErrorReports<0>;

  ComponentTest() {
    Reports::Take();
    zeb_.DrainRecycled();
  }

  void TearDown() override {
    zeb_.DrainRecycled();
    zeb_.Stop();
    EXPECT_THAT(Reports::Take(), ::testing::IsEmpty());
    EXPECT_EQ(Host::LiveBlocks(), 0u);
    EXPECT_EQ(Host::ForeignFrees(), 0u);
  }

  ComponentLibrary zeb_{Host::WithObjectProcs(Reports::Told())};
};

}  // namespace contract

#endif
