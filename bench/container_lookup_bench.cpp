// Finding instances and methods of a live container.
//
// GetInstance            one of four instances by name, in random order
// cached fields          what a client does instead: it compares the names in the container's
// cached
//                        fields with those that it expects and takes the data from there
// GetMethod              the container has three interfaces of eight procs each; the one asked for
//                        is in the first or only in the third, so that one or three are asked
// GetParentMethod        from the first interface; the answer is in the second, the only one asked
//
// The peer of the methods is asked for one interface by name and gives one of eight functions of
// it; the goal is per interface that we ask.
#include <array>

#include "container_host.h"
#include "gobject_component.h"
#include "rows.h"
#include "sequences.h"

namespace zeb::bench {

namespace {

constexpr size_t kSequenceLength = 4096;

// --- instances --------------------------------------------------------------------------------

constexpr uint32_t kInstances = 4;

const std::vector<uint32_t>& instanceOrder() {
  static const std::vector<uint32_t> order = randomNumbers(kSequenceLength, kInstances, 51);
  return order;
}

class OurInstances {
 public:
  OurInstances() : container_(host_.newContainer()) {
    for (size_t i = 0; i < kInstances; ++i) {
      names_[i] = host_.atom("BenchInstance" + std::to_string(i));
      host_.addInstance(container_, &data_[i], names_[i], nullptr);
    }
    for (size_t i = 0; i < kInstances; ++i)
      check(host_.containers().GetInstance(container_, names_[i]) == &data_[i],
            "a container finds another instance");
  }

  ~OurInstances() { host_.containers().Release(container_); }

  auto get() {
    return [getInstance = host_.containers().GetInstance, container = container_, names = names_,
            order = Cycle(instanceOrder())]() mutable {
      void* data = getInstance(container, names[order.next()]);
      benchmark::DoNotOptimize(data);
    };
  }

 private:
  ContainerHost host_;
  ZEBContainer* container_;
  std::array<ZEBString*, kInstances> names_;
  std::array<char, kInstances> data_{};
};

#ifdef BENCH_HAS_GOBJECT
class GInstances {
 public:
  GInstances() : object_(&newGComponent(gComponentType("BenchGWithInstances", {}))->parent) {
    for (size_t i = 0; i < kInstances; ++i) {
      names_[i] = g_quark_from_string(("BenchGInstance" + std::to_string(i)).c_str());
      g_object_set_qdata(object_, names_[i], &data_[i]);
    }
    for (size_t i = 0; i < kInstances; ++i)
      check(g_object_get_qdata(object_, names_[i]) == &data_[i], "a GObject finds other data");
  }

  ~GInstances() { g_object_unref(object_); }

  auto get() {
    return [object = object_, names = names_, order = Cycle(instanceOrder())]() mutable {
      void* data = g_object_get_qdata(object, names[order.next()]);
      benchmark::DoNotOptimize(data);
    };
  }

 private:
  GObject* object_;
  std::array<GQuark, kInstances> names_;
  std::array<char, kInstances> data_{};
};
#endif

Row instanceRow(int threads) {
  const Shared<OurInstances> ours([] { return std::make_unique<OurInstances>(); });
  Row row{.area = "containers",
          .name = "GetInstance, 1 of 4",
          .threads = threads,
          .goal = Goal{1.0, {"g_object_get_qdata"}}};
  row.ours = measure("ours", [ours](size_t) { return ours.get().get(); });
#ifdef BENCH_HAS_GOBJECT
  const Shared<GInstances> peer([] { return std::make_unique<GInstances>(); });
  row.prepare = [ours, peer] {
    ours.get();
    peer.get();
  };
  row.peers.push_back(measure("g_object_get_qdata", [peer](size_t) { return peer.get().get(); }));
#else
  row.prepare = [ours] { ours.get(); };
#endif
  return row;
}

// --- cached fields ----------------------------------------------------------------------------

constexpr uint32_t kContainers = 16;

const std::vector<uint32_t>& containerOrder() {
  static const std::vector<uint32_t> order = randomNumbers(kSequenceLength, kContainers, 52);
  return order;
}

// A client's knowledge of one kind of container, got once.
struct Binding {
  int64_t offset;
  const char* instanceName;
  const char* interfaceName;
  ZEBString* instanceAtom;
  ZEBGetInstanceProc getInstance;

  void* dataOf(ZEBContainer* container) const {
    const auto* fields = reinterpret_cast<const ZEBContainerCache*>(
        reinterpret_cast<const char*>(container) + offset);
    if (fields->instanceName == instanceName && fields->interfaceName == interfaceName)
      return fields->instanceData;
    return getInstance(container, instanceAtom);
  }
};

class BoundContainers {
 public:
  BoundContainers() {
    const ZEBContainerProcs& procs = host_.containers();
    ZEBString* instanceName = host_.atom("BenchBoundInstance");
    ZEBString* interfaceName = host_.atom("BenchBoundInterface");
    binding_ = {procs.GetOffsetToPrimaryInstance(), host_.strings().GetCString(instanceName),
                host_.strings().GetCString(interfaceName), instanceName, procs.GetInstance};
    for (size_t i = 0; i < kContainers; ++i)
      check(!procs.NewFullContainer(&containers_[i], &data_[i], instanceName, nullptr,
                                    interfaceName, nullptr, nullptr, 0),
            "a full container cannot be made");
    for (const uint32_t index : containerOrder()) sequence_.push_back(containers_[index]);
    checkBinding();
  }

  ~BoundContainers() {
    for (ZEBContainer* container : containers_) host_.containers().Release(container);
  }

  auto get() {
    return [binding = opaque(binding_), sequence = Cycle(sequence_)]() mutable {
      void* data = binding.dataOf(sequence.next());
      benchmark::DoNotOptimize(data);
    };
  }

 private:
  static void* notAsked(ZEBContainer*, ZEBString*) { return nullptr; }

  void checkBinding() {
    Binding withoutHelp = binding_;
    withoutHelp.getInstance = notAsked;
    for (size_t i = 0; i < kContainers; ++i)
      check(withoutHelp.dataOf(containers_[i]) == &data_[i], "the cached fields hold other data");

    ZEBContainer* other = host_.newContainer();
    host_.addInterface(other, host_.atom("BenchUnboundInterface"));
    host_.addInstance(other, data_.data(), binding_.instanceAtom, nullptr);
    check(!withoutHelp.dataOf(other), "the cached fields of another kind are taken for ours");
    check(binding_.dataOf(other) == data_.data(), "GetInstance does not help out");
    host_.containers().Release(other);
  }

  ContainerHost host_;
  Binding binding_;
  std::array<ZEBContainer*, kContainers> containers_;
  std::array<char, kContainers> data_{};
  std::vector<ZEBContainer*> sequence_;
};

// The least that such a check can be.
class TwoPointers {
 public:
  TwoPointers() {
    for (Tagged& each : tagged_) each = {&tag_, &each};
    for (const uint32_t index : containerOrder()) sequence_.push_back(&tagged_[index]);
  }

  auto get() {
    return [tag = opaque(&tag_), sequence = Cycle(sequence_)]() mutable {
      const Tagged* tagged = sequence.next();
      const void* data = tagged->tag == tag ? tagged->data : nullptr;
      benchmark::DoNotOptimize(data);
    };
  }

 private:
  struct Tagged {
    const void* tag;
    const void* data;
  };

  char tag_ = 0;
  std::array<Tagged, kContainers> tagged_;
  std::vector<const Tagged*> sequence_;
};

Row cachedFieldsRow() {
  const Shared<BoundContainers> ours([] { return std::make_unique<BoundContainers>(); });
  const Shared<TwoPointers> peer([] { return std::make_unique<TwoPointers>(); });
  Row row{.area = "containers",
          .name = "the instance by the cached fields",
          .goal = Goal{.limit = 2, .kind = Goal::Kind::time}};
  row.prepare = [ours] { ours.get(); };
  row.ours = measure("ours", [ours](size_t) { return ours.get().get(); });
  row.peers.push_back(
      measure("compare of two pointers", [peer](size_t) { return peer.get().get(); }));
  return row;
}

// --- methods ----------------------------------------------------------------------------------

constexpr size_t kInterfaces = 3;
constexpr uint32_t kMethods = 8;

// Addresses that stand for functions; nobody calls them.
ZEBProc functionOf(size_t interfaceNumber, size_t method) {
  static std::array<char, kInterfaces * kMethods> places;
  return reinterpret_cast<ZEBProc>(&places[interfaceNumber * kMethods + method]);
}

std::string interfaceNameOf(size_t number) {
  return "BenchMethods" + std::to_string(number) + "Interface";
}

const std::vector<uint32_t>& methodOrder() {
  static const std::vector<uint32_t> order = randomNumbers(kSequenceLength, kMethods, 53);
  return order;
}

// The first interface overrides the procs of the second; those of the third are its own.
class OurMethods {
 public:
  OurMethods() : container_(host_.newContainer()) {
    for (size_t number = kInterfaces; number-- > 0;) {
      interfaces_[number] = host_.atom(interfaceNameOf(number));
      host_.addInterface(container_, interfaces_[number]);
      registerMethods(number);
    }
    checkAnswers();
  }

  ~OurMethods() { host_.containers().Release(container_); }

  auto method(size_t interfaceNumber) {
    return [getMethod = host_.containers().GetMethod, container = container_,
            order = Cycle(methodOrder()), names = namesOf(interfaceNumber)]() mutable {
      const Names& name = names[order.next()];
      ZEBProc function;
      benchmark::DoNotOptimize(getMethod(&function, container, name.method, name.proc, 1));
      benchmark::DoNotOptimize(function);
    };
  }

  auto parentMethod() {
    return [getParentMethod = host_.containers().GetParentMethod, container = container_,
            current = interfaces_[0], order = Cycle(methodOrder()), names = namesOf(0)]() mutable {
      const Names& name = names[order.next()];
      ZEBProc function;
      benchmark::DoNotOptimize(
          getParentMethod(&function, container, current, name.method, name.proc, 1));
      benchmark::DoNotOptimize(function);
    };
  }

 private:
  struct Names {
    ZEBString* method;
    ZEBString* proc;
  };
  using MethodNames = std::array<Names, kMethods>;

  const MethodNames& namesOf(size_t interfaceNumber) const {
    return interfaceNumber < 2 ? overridden_ : own_;
  }

  void registerMethods(size_t number) {
    const bool own = number == 2;
    for (size_t i = 0; i < kMethods; ++i) {
      const std::string method = (own ? "Own" : "Overridden") + std::to_string(i);
      const std::string proc = "Bench" + method + "Proc";
      (own ? own_ : overridden_)[i] = {host_.atom(method), host_.atom(proc)};
      host_.registerProc(interfaceNameOf(number), method, proc, functionOf(number, i));
    }
  }

  void checkAnswers() {
    const ZEBContainerProcs& procs = host_.containers();
    for (size_t i = 0; i < kMethods; ++i) {
      ZEBProc first = nullptr;
      ZEBProc second = nullptr;
      ZEBProc third = nullptr;
      procs.GetMethod(&first, container_, overridden_[i].method, overridden_[i].proc, 1);
      procs.GetParentMethod(&second, container_, interfaces_[0], overridden_[i].method,
                            overridden_[i].proc, 1);
      procs.GetMethod(&third, container_, own_[i].method, own_[i].proc, 1);
      check(first == functionOf(0, i) && second == functionOf(1, i) && third == functionOf(2, i),
            "a container finds another method");
    }
  }

  ContainerHost host_;
  ZEBContainer* container_;
  std::array<ZEBString*, kInterfaces> interfaces_;
  MethodNames overridden_;
  MethodNames own_;
};

#ifdef BENCH_HAS_GOBJECT
static_assert(kMethods == kGMethods);

// An object with the same three interfaces, each a table of functions.
class GMethodTables {
 public:
  GMethodTables() : object_(newGComponent(gComponentType("BenchGWithMethods", interfaces()))) {
    for (size_t number = 0; number < kInterfaces; ++number)
      for (size_t i = 0; i < kMethods; ++i)
        check(find(classOf(), interfaceNameOf(number).c_str(), i) == functionOf(number, i),
              "a GObject finds another method");
  }

  ~GMethodTables() { g_object_unref(object_); }

  auto methodByName(size_t interfaceNumber) {
    return [itsClass = classOf(), name = interfaceNameOf(interfaceNumber),
            order = Cycle(methodOrder())]() mutable {
      ZEBProc function = find(itsClass, name.c_str(), order.next());
      benchmark::DoNotOptimize(function);
    };
  }

  // For callers who know the interface when they are compiled.
  auto methodByType(size_t interfaceNumber) {
    return [itsClass = classOf(), type = g_type_from_name(interfaceNameOf(interfaceNumber).c_str()),
            order = Cycle(methodOrder())]() mutable {
      ZEBProc function = methodOf(itsClass, type, order.next());
      benchmark::DoNotOptimize(function);
    };
  }

 private:
  static std::vector<GInterface> interfaces() {
    static std::array<GMethods, kInterfaces> methods;
    std::vector<GInterface> interfaces;
    for (size_t number = 0; number < kInterfaces; ++number) {
      for (size_t i = 0; i < kMethods; ++i) methods[number][i] = functionOf(number, i);
      interfaces.push_back({interfaceNameOf(number), &methods[number]});
    }
    return interfaces;
  }

  static ZEBProc methodOf(void* itsClass, GType type, size_t method) {
    return static_cast<GMethodTable*>(g_type_interface_peek(itsClass, type))->methods[method];
  }

  static ZEBProc find(void* itsClass, const char* interfaceName, size_t method) {
    return methodOf(itsClass, g_type_from_name(interfaceName), method);
  }

  void* classOf() const { return object_->parent.g_type_instance.g_class; }

  GComponent* object_;
};
#endif

constexpr const char* kPeek = "g_type_from_name + g_type_interface_peek";
constexpr double kMostPerInterface = 2.0;

template <class MakeOurs>
Row methodRow(std::string name, size_t interfaceNumber, size_t asked, MakeOurs makeOurs) {
  const Shared<OurMethods> ours([] { return std::make_unique<OurMethods>(); });
  Row row{.area = "containers",
          .name = std::move(name),
          .goal = Goal{kMostPerInterface * static_cast<double>(asked), {kPeek}}};
  row.prepare = [ours] { ours.get(); };
  row.ours = measure("ours", [=](size_t) { return makeOurs(ours.get()); });
#ifdef BENCH_HAS_GOBJECT
  const Shared<GMethodTables> peer([] { return std::make_unique<GMethodTables>(); });
  row.peers.push_back(
      measure(kPeek, [=](size_t) { return peer.get().methodByName(interfaceNumber); }));
  row.peers.push_back(measure("g_type_interface_peek alone",
                              [=](size_t) { return peer.get().methodByType(interfaceNumber); }));
#else
  (void)interfaceNumber;
#endif
  return row;
}

}  // namespace

void addContainerLookupRows(Rows& rows) {
  rows.push_back(instanceRow(1));
  rows.push_back(instanceRow(2));
  rows.push_back(cachedFieldsRow());
  rows.push_back(methodRow("GetMethod, answer in the 1st interface", 0, 1,
                           [](OurMethods& ours) { return ours.method(0); }));
  rows.push_back(methodRow("GetMethod, answer in the 3rd interface", 2, 3,
                           [](OurMethods& ours) { return ours.method(2); }));
  rows.push_back(methodRow("GetParentMethod, answer in the 2nd interface", 1, 1,
                           [](OurMethods& ours) { return ours.parentMethod(); }));
}

}  // namespace zeb::bench
