// Making containers, sharing them and letting them go.
//
// full container  one interface and one instance; made and released, and so recycled each time.
//                 "of four kinds" goes round four pairs of names: what is recycled always carries
//                 the names of another kind. "with 32 bytes of data" allocates the data for each
//                 container; the peers' objects have it inside.
// component       an empty container gets three interfaces and three instances, is asked for each
//                 instance and goes. A table that holds the same names and pointers is asked alike.
// add + drop      one more reference to a live container, and away with it. Two threads share one.
//
// Whoever ends data calls the same procedure, which counts; what was counted is checked.
#include <array>
#include <memory>

#include "container_host.h"
#include "gobject_component.h"
#include "rows.h"

#ifdef BENCH_HAS_BOOST
#include <boost/smart_ptr/intrusive_ptr.hpp>
#include <boost/smart_ptr/intrusive_ref_counter.hpp>
#endif

namespace zeb::bench {

namespace {

constexpr size_t kMaximumThreads = 2;
constexpr size_t kParts = 3;  // interfaces and instances of a component

// How often data was ended. Alone in its cache line.
struct alignas(64) Ended {
  uint64_t times = 0;
};

void endData(void* data) { ++static_cast<Ended*>(data)->times; }

struct State {
  std::array<uint64_t, 4> words{};
};

// --- ours -------------------------------------------------------------------------------------

struct Kind {
  ZEBString* instanceName;
  ZEBString* interfaceName;
};

class OurContainers {
 public:
  explicit OurContainers(size_t kindCount) : live_(host_.newContainer()) {
    for (size_t i = 0; i < kindCount; ++i)
      kinds_.push_back({host_.atom("BenchInstance" + std::to_string(i)),
                        host_.atom("BenchInterface" + std::to_string(i))});
    for (size_t i = 0; i < kParts; ++i)
      parts_[i] = {host_.atom("BenchPartInstance" + std::to_string(i)),
                   host_.atom("BenchPartInterface" + std::to_string(i))};
    checkFullContainers();
    checkStates();
    checkComponents();
  }

  ~OurContainers() { procs().Release(live_); }

  auto makeRelease(size_t thread) {
    return [procs = procs(), kinds = Cycle(kinds_), ended = &ended_[thread]]() mutable {
      const Kind& kind = kinds.next();
      ZEBContainer* container = nullptr;
      benchmark::DoNotOptimize(procs.NewFullContainer(&container, ended, kind.instanceName, endData,
                                                      kind.interfaceName, nullptr, nullptr, 0));
      procs.Release(container);
    };
  }

  auto makeReleaseWithState() {
    return [procs = procs(), kind = kinds_.front()] {
      auto* state = new State;
      ZEBContainer* container = nullptr;
      benchmark::DoNotOptimize(procs.NewFullContainer(&container, state, kind.instanceName,
                                                      deleteState, kind.interfaceName, nullptr,
                                                      nullptr, 0));
      procs.Release(container);
    };
  }

  auto makeComponent() {
    return [procs = procs(), parts = parts_, ended = ended_.data()] {
      ZEBContainer* component = nullptr;
      benchmark::DoNotOptimize(procs.NewContainer(&component));
      for (const Kind& part : parts) {
        benchmark::DoNotOptimize(procs.RegisterInterface(component, part.interfaceName));
        benchmark::DoNotOptimize(
            procs.RegisterInstance(component, ended, part.instanceName, endData));
      }
      for (const Kind& part : parts)
        benchmark::DoNotOptimize(procs.GetInstance(component, part.instanceName));
      procs.Release(component);
    };
  }

  auto addAndDrop() {
    return [procs = procs(), container = live_] {
      benchmark::DoNotOptimize(procs.AddRef(container));
      procs.Release(container);
    };
  }

 private:
  const ZEBContainerProcs& procs() const { return host_.containers(); }

  static void deleteState(void* state) { delete static_cast<State*>(state); }

  void checkFullContainers() {
    auto operation = makeRelease(0);
    for (size_t i = 0; i < kinds_.size(); ++i) operation();
    check(ended_[0].times == kinds_.size(), "a container does not end its instance once");

    // What waited as the last kind comes back as the first.
    const Kind& kind = kinds_.front();
    ZEBContainer* container = nullptr;
    procs().NewFullContainer(&container, ended_.data(), kind.instanceName, endData,
                             kind.interfaceName, nullptr, nullptr, 0);
    check(container && procs().GetInstance(container, kind.instanceName) == ended_.data(),
          "a full container does not hold its instance");
    check(procs().GetSignature(container) == host_.strings().GetCString(kind.interfaceName),
          "a full container does not have its interface");
    check(procs().AddRef(container) == 1, "a reference is refused");
    procs().Release(container);
    check(ended_[0].times == kinds_.size(), "a container goes with a reference still there");
    procs().Release(container);
    check(ended_[0].times == kinds_.size() + 1, "a container stays without a reference");
  }

  void checkStates() {
    State* const state = new State;
    ZEBContainer* container = nullptr;
    procs().NewFullContainer(&container, state, kinds_[0].instanceName, deleteState,
                             kinds_[0].interfaceName, nullptr, nullptr, 0);
    check(procs().GetInstance(container, kinds_[0].instanceName) == state,
          "a full container does not hold its state");
    procs().Release(container);
  }

  void checkComponents() {
    ended_[0].times = 0;
    makeComponent()();
    check(ended_[0].times == kParts, "a component does not end its instances");

    ZEBContainer* component = host_.newContainer();
    std::array<Ended, kParts> ended;
    for (size_t i = 0; i < kParts; ++i)
      host_.addInstance(component, &ended[i], parts_[i].instanceName, endData);
    for (size_t i = 0; i < kParts; ++i)
      check(procs().GetInstance(component, parts_[i].instanceName) == &ended[i],
            "a component does not find its instances");
    procs().Release(component);
    for (const Ended& each : ended) check(each.times == 1, "an instance is not ended once");
  }

  ContainerHost host_;
  ZEBContainer* live_;
  std::vector<Kind> kinds_;
  std::array<Kind, kParts> parts_;
  std::array<Ended, kMaximumThreads> ended_;
};

// --- GObject ----------------------------------------------------------------------------------

#ifdef BENCH_HAS_GOBJECT
class GObjects {
 public:
  explicit GObjects(size_t kindCount) {
    for (size_t i = 0; i < kindCount; ++i) {
      const std::string number = std::to_string(i);
      types_.push_back(gComponentType("BenchGObject" + number, {{"BenchGInterface" + number}}));
    }
    checkEnds();
  }

  auto makeRelease(size_t thread) {
    return [types = Cycle(types_), ended = &ended_[thread]]() mutable {
      GComponent* component = newGComponent(types.next());
      component->data = ended;
      component->end = endData;
      benchmark::DoNotOptimize(component);
      g_object_unref(component);
    };
  }

  // The data is a part of the object, which GObject clears.
  auto makeReleaseWithState() {
    return [type = types_.front()] {
      GComponent* component = newGComponent(type);
      benchmark::DoNotOptimize(component->state.data());
      g_object_unref(component);
    };
  }

 private:
  void checkEnds() {
    auto operation = makeRelease(0);
    for (size_t i = 0; i < types_.size(); ++i) operation();
    check(ended_[0].times == types_.size(), "a GObject does not end its data once");
  }

  std::vector<GType> types_;
  std::array<Ended, kMaximumThreads> ended_;
};
#endif

// --- std::make_shared -------------------------------------------------------------------------

// Of the size of a container, with what a full one is told.
struct PlainObject {
  PlainObject(void* itsData, const Kind& itsKind, ZEBContainerDestroy itsDestroy)
      : kind(itsKind), data(itsData), destroy(itsDestroy) {}
  PlainObject(const PlainObject&) = delete;
  PlainObject& operator=(const PlainObject&) = delete;
  ~PlainObject() { destroy(data); }

  Kind kind;
  void* data;
  ZEBContainerDestroy destroy;
  ZEBContainerOwnerHook ownerHook = nullptr;
  ZEBContainerRefProc refProc = nullptr;
  uint64_t refContext = 0;
  std::array<uint64_t, 5> rest{};
};
static_assert(sizeof(PlainObject) == 96);

class PlainObjects {
 public:
  explicit PlainObjects(size_t kindCount) : kinds_(kindCount) { checkEnds(); }

  auto makeRelease(size_t thread) {
    return [kinds = Cycle(kinds_), ended = &ended_[thread], destroy = opaque(endData)]() mutable {
      const auto object = std::make_shared<PlainObject>(ended, kinds.next(), destroy);
      benchmark::DoNotOptimize(object.get());
    };
  }

  static auto makeReleaseWithState() {
    return [] {
      const auto state = std::make_shared<State>();
      benchmark::DoNotOptimize(state.get());
    };
  }

 private:
  void checkEnds() {
    makeRelease(0)();
    check(ended_[0].times == 1, "a shared object does not end its data once");
  }

  std::vector<Kind> kinds_;
  std::array<Ended, kMaximumThreads> ended_;
};

// --- rows of full containers ------------------------------------------------------------------

constexpr const char* kGObject = "GObject";
constexpr const char* kMakeShared = "std::make_shared";

// Each contender with as many kinds, made when its row begins.
struct Contenders {
  explicit Contenders(size_t kindCount)
      : ours([=] { return std::make_unique<OurContainers>(kindCount); }),
#ifdef BENCH_HAS_GOBJECT
        gObjects([=] { return std::make_unique<GObjects>(kindCount); }),
#endif
        plain([=] { return std::make_unique<PlainObjects>(kindCount); }) {
  }

  void prepare() const {
    ours.get();
#ifdef BENCH_HAS_GOBJECT
    gObjects.get();
#endif
    plain.get();
  }

  Shared<OurContainers> ours;
#ifdef BENCH_HAS_GOBJECT
  Shared<GObjects> gObjects;
#endif
  Shared<PlainObjects> plain;
};

Row fullRow(std::string name, size_t kindCount, int threads, std::optional<Goal> goal) {
  const Contenders all(kindCount);
  Row row{
      .area = "containers", .name = std::move(name), .threads = threads, .goal = std::move(goal)};
  row.prepare = [all] { all.prepare(); };
  row.ours = measure("ours", [all](size_t thread) { return all.ours.get().makeRelease(thread); });
#ifdef BENCH_HAS_GOBJECT
  row.peers.push_back(
      measure(kGObject, [all](size_t thread) { return all.gObjects.get().makeRelease(thread); }));
#endif
  row.peers.push_back(
      measure(kMakeShared, [all](size_t thread) { return all.plain.get().makeRelease(thread); }));
  return row;
}

Row stateRow(const Goal& goal) {
  const Contenders all(1);
  Row row{.area = "containers",
          .name = "full container with 32 bytes of data: make, release",
          .goal = goal};
  row.prepare = [all] { all.prepare(); };
  row.ours = measure("ours", [all](size_t) { return all.ours.get().makeReleaseWithState(); });
#ifdef BENCH_HAS_GOBJECT
  row.peers.push_back(
      measure(kGObject, [all](size_t) { return all.gObjects.get().makeReleaseWithState(); }));
#endif
  row.peers.push_back(
      measure(kMakeShared, [](size_t) { return PlainObjects::makeReleaseWithState(); }));
  return row;
}

// --- components -------------------------------------------------------------------------------

#ifdef BENCH_HAS_GLIB
constexpr const char* kHashTable = "GHashTable";

void endDataUnlessNull(gpointer data) {
  if (data) endData(data);
}

// A table from interned names to pointers: null under an interface's name.
class GTables {
 public:
  GTables() {
    for (size_t i = 0; i < kParts; ++i) {
      interfaces_[i] = g_ref_string_new_intern(("BenchGPartInterface" + std::to_string(i)).c_str());
      instances_[i] = g_ref_string_new_intern(("BenchGPartInstance" + std::to_string(i)).c_str());
    }
    checkEnds();
  }

  ~GTables() {
    for (char* name : interfaces_) g_ref_string_release(name);
    for (char* name : instances_) g_ref_string_release(name);
  }

  // A counted name has a reference in each table, as in our containers; one that is not stays for
  // ever, as GLib's other interned texts do.
  template <bool counted>
  auto make() {
    return [interfaces = interfaces_, instances = instances_, ended = &ended_] {
      GHashTable* table = g_hash_table_new_full(g_direct_hash, g_direct_equal,
                                                counted ? releaseName : nullptr, endDataUnlessNull);
      for (size_t i = 0; i < kParts; ++i) {
        g_hash_table_insert(table, hold<counted>(interfaces[i]), nullptr);
        g_hash_table_insert(table, hold<counted>(instances[i]), ended);
      }
      for (char* name : instances) {
        void* data = g_hash_table_lookup(table, name);
        benchmark::DoNotOptimize(data);
      }
      g_hash_table_unref(table);
    };
  }

 private:
  void checkEnds() {
    make<false>()();
    make<true>()();
    check(ended_.times == 2 * kParts, "a GHashTable does not end its values");
  }

  static void releaseName(gpointer name) { g_ref_string_release(static_cast<char*>(name)); }

  template <bool counted>
  static char* hold(char* name) {
    return counted ? g_ref_string_acquire(name) : name;
  }

  std::array<char*, kParts> interfaces_;
  std::array<char*, kParts> instances_;
  Ended ended_;
};
#endif

#ifdef BENCH_HAS_GOBJECT
// The interfaces are the type's and cost an object nothing.
class GObjectsWithNamedData {
 public:
  GObjectsWithNamedData()
      : type_(
            gComponentType("BenchGWithData", {{"BenchGPart0"}, {"BenchGPart1"}, {"BenchGPart2"}})) {
    for (size_t i = 0; i < kParts; ++i)
      names_[i] = g_quark_from_string(("BenchGData" + std::to_string(i)).c_str());
    checkEnds();
  }

  auto make() {
    return [type = type_, names = names_, ended = &ended_] {
      GComponent* component = newGComponent(type);
      GObject* object = &component->parent;
      for (const GQuark name : names) g_object_set_qdata_full(object, name, ended, endData);
      for (const GQuark name : names) {
        void* data = g_object_get_qdata(object, name);
        benchmark::DoNotOptimize(data);
      }
      g_object_unref(object);
    };
  }

 private:
  void checkEnds() {
    make()();
    check(ended_.times == kParts, "a GObject does not end its named data");
  }

  GType type_;
  std::array<GQuark, kParts> names_;
  Ended ended_;
};
#endif

Row componentRow() {
  const Shared<OurContainers> ours([] { return std::make_unique<OurContainers>(1); });
  Row row{.area = "containers",
          .name = "component: make, 3 interfaces, 3 instances, 3 look-ups, release"};
  row.prepare = [ours] { ours.get(); };
  row.ours = measure("ours", [ours](size_t) { return ours.get().makeComponent(); });
#ifdef BENCH_HAS_GLIB
  const Shared<GTables> tables([] { return std::make_unique<GTables>(); });
  row.goal = Goal{0.7, {kHashTable}};
  row.peers.push_back(measure(kHashTable, [tables](size_t) { return tables.get().make<false>(); }));
  row.peers.push_back(
      measure("GHashTable, counted names", [tables](size_t) { return tables.get().make<true>(); }));
#endif
#ifdef BENCH_HAS_GOBJECT
  const Shared<GObjectsWithNamedData> objects(
      [] { return std::make_unique<GObjectsWithNamedData>(); });
  row.peers.push_back(
      measure("GObject, 3 qdata", [objects](size_t) { return objects.get().make(); }));
#endif
  return row;
}

// --- references -------------------------------------------------------------------------------

#ifdef BENCH_HAS_BOOST
struct CountedState : boost::intrusive_ref_counter<CountedState, boost::thread_safe_counter> {
  State state;
};
#endif

// One live object of each peer.
struct LivePeers {
  std::shared_ptr<State> shared = std::make_shared<State>();
#ifdef BENCH_HAS_BOOST
  boost::intrusive_ptr<CountedState> intrusive{new CountedState};
#endif
};

template <class Pointer>
auto copyAndDrop(const Pointer* live) {
  return [live = opaque(live)] {
    const Pointer copy = *live;
    benchmark::DoNotOptimize(&copy);
  };
}

Row shareRow(int threads) {
  const Shared<OurContainers> ours([] { return std::make_unique<OurContainers>(1); });
  const Shared<LivePeers> live([] { return std::make_unique<LivePeers>(); });
  Row row{.area = "containers",
          .name = "add + drop a reference",
          .threads = threads,
          .goal = Goal{1.3}};
  row.prepare = [ours, live] {
    ours.get();
    live.get();
  };
  row.ours = measure("ours", [ours](size_t) { return ours.get().addAndDrop(); });
#ifdef BENCH_HAS_BOOST
  row.peers.push_back(measure("boost::intrusive_ptr",
                              [live](size_t) { return copyAndDrop(&live.get().intrusive); }));
#endif
  row.peers.push_back(
      measure("std::shared_ptr", [live](size_t) { return copyAndDrop(&live.get().shared); }));
  return row;
}

}  // namespace

void addContainerRows(Rows& rows) {
  const Goal goal{0.5, {kGObject}};
  rows.push_back(fullRow("full container: make, release", 1, 1, goal));
  rows.push_back(fullRow("full container: make, release", 1, 2, std::nullopt));
  rows.push_back(fullRow("full container of four kinds: make, release", 4, 1, goal));
  rows.push_back(stateRow(goal));
  rows.push_back(componentRow());
  rows.push_back(shareRow(1));
  rows.push_back(shareRow(2));
}

}  // namespace zeb::bench
