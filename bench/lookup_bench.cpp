// Finding a function by its three names among 250.
//
// hit                  one of the 250, in random order
// miss, other names    three names that are all registered, but not together
// miss, unknown name   interface and method are registered, the proc name was never seen before
// bulk fetch           28 procs of one interface in one call, against 28 single look-ups of ours
//
// Callers hold C strings: each side measures its texts itself. dlsym is told the proc name alone,
// one text instead of three.
#include <dlfcn.h>

#include <array>
#include <cstring>
#include <mutex>
#include <string>
#include <string_view>

#include "library.h"
#include "registry/proc_registry.h"
#include "rows.h"
#include "sequences.h"

#ifdef BENCH_HAS_ABSL
#include <absl/container/flat_hash_map.h>
#include <absl/hash/hash.h>
#endif
#ifdef BENCH_HAS_TBB
#include <tbb/concurrent_unordered_map.h>
#endif

namespace zeb::bench {

namespace {

struct NameRow {
  const char* interfaceName;
  const char* method;
  const char* proc;
};

constexpr NameRow nameRows[] = {
#define BENCH_NAMES(interfaceName, method, proc) {#interfaceName, #method, #proc},
#include "bench_names.inc"
#undef BENCH_NAMES
};
constexpr size_t procCount = std::size(nameRows);

constexpr size_t sequenceLength = 4096;
constexpr size_t maximumThreads = 2;

// Three names as a key; the texts are owned elsewhere.
struct Key {
  std::string_view interfaceName;
  std::string_view method;
  std::string_view proc;

  bool operator==(const Key&) const = default;

#ifdef BENCH_HAS_ABSL
  template <class State>
  friend State AbslHashValue(State state, const Key& key) {
    return State::combine(std::move(state), key.interfaceName, key.method, key.proc);
  }
#endif
};

struct Query {
  const char* interfaceName;
  const char* method;
  const char* proc;

  Key AsKey() const { return {interfaceName, method, proc}; }
};

#ifdef BENCH_HAS_ABSL
class LockedMap {
 public:
  void Add(const Key& key, ZEBProc proc) { map_.emplace(key, proc); }

  ZEBProc Find(const Query& query) {
    const Key key = query.AsKey();
    const std::lock_guard lock(mutex_);
    const auto found = map_.find(key);
    return found == map_.end() ? nullptr : found->second;
  }

 private:
  std::mutex mutex_;
  absl::flat_hash_map<Key, ZEBProc> map_;
};
#endif

#if defined(BENCH_HAS_TBB) && defined(BENCH_HAS_ABSL)
class ConcurrentMap {
 public:
  void Add(const Key& key, ZEBProc proc) { map_.emplace(key, proc); }

  ZEBProc Find(const Query& query) {
    const auto found = map_.find(query.AsKey());
    return found == map_.end() ? nullptr : found->second;
  }

 private:
  tbb::concurrent_unordered_map<Key, ZEBProc, absl::Hash<Key>> map_;
};
#endif

enum class Kind { hit, missOtherNames, missUnknownName };

// The texts of a caller, apart from those of the registering side, and the order of asking.
class Queries {
 public:
  explicit Queries(Kind kind) {
    if (kind == Kind::missUnknownName) {
      MakeUnknownNames();
    } else {
      MakeKnownNames(kind);
    }
  }

  const std::vector<Query>& OfThread(size_t thread) const { return sequences_[thread]; }

 private:
  void MakeKnownNames(Kind kind) {
    for (const NameRow& row : nameRows) {
      interfaces_.emplace_back(row.interfaceName);
      methods_.emplace_back(row.method);
      procs_.emplace_back(row.proc);
    }
    // The proc name of another interface: rows of one interface stand together.
    const size_t shift = kind == Kind::hit ? 0 : procCount / 2;
    for (size_t thread = 0; thread < maximumThreads; ++thread)
      for (const uint32_t index : RandomNumbers(sequenceLength, procCount, 11 + thread))
        sequences_[thread].push_back({interfaces_[index].c_str(), methods_[index].c_str(),
                                      procs_[(index + shift) % procCount].c_str()});
  }

  void MakeUnknownNames() {
    for (size_t i = 0; i < maximumThreads * sequenceLength; ++i) {
      const NameRow& row = nameRows[i % procCount];
      interfaces_.emplace_back(row.interfaceName);
      methods_.emplace_back(row.method);
      procs_.emplace_back(row.proc + std::string("V") + std::to_string(i));
    }
    for (size_t thread = 0; thread < maximumThreads; ++thread)
      for (const uint32_t index : RandomNumbers(sequenceLength, sequenceLength, 11 + thread)) {
        const size_t own = thread * sequenceLength + index;
        sequences_[thread].push_back(
            {interfaces_[own].c_str(), methods_[own].c_str(), procs_[own].c_str()});
      }
  }

  // Filled before the first pointer into them is taken.
  std::vector<std::string> interfaces_;
  std::vector<std::string> methods_;
  std::vector<std::string> procs_;
  std::array<std::vector<Query>, maximumThreads> sequences_;
};

// The 250 functions, and everyone who can find them.
class Directory {
 public:
  Directory() : functions_(dlopen(BENCH_FUNCTIONS, RTLD_NOW | RTLD_LOCAL)) {
    Check(functions_, functions_ ? "" : dlerror());
    const ZEBProc registerProc =
        GetProcAddress()("ZEB", "ZEBRegisterProcAddress", "ZEBRegisterProcAddress");
    Check(registerProc, "ZEBRegisterProcAddress is not found");
    const auto registerProcAddress = reinterpret_cast<ZEBRegisterProcAddress>(registerProc);
    for (const NameRow& row : nameRows) Add(row, registerProcAddress);
  }

  ~Directory() { dlclose(functions_); }

  ZEBGetProcAddress GetProcAddress() const { return session_.GetProcAddress(); }
  void* Functions() const { return functions_; }
  ZEBProc Function(const char* name) const {
    return reinterpret_cast<ZEBProc>(dlsym(functions_, name));
  }

#ifdef BENCH_HAS_ABSL
  LockedMap lockedMap;
#endif
#if defined(BENCH_HAS_TBB) && defined(BENCH_HAS_ABSL)
  ConcurrentMap concurrentMap;
#endif

 private:
  void Add(const NameRow& row, ZEBRegisterProcAddress registerProcAddress) {
    const ZEBProc proc = Function(row.proc);
    Check(proc, "a generated function is not exported");
    Check(registerProcAddress(row.interfaceName, row.method, row.proc, proc) == 1,
          "a proc cannot be registered");
#ifdef BENCH_HAS_ABSL
    lockedMap.Add({row.interfaceName, row.method, row.proc}, proc);
#endif
#if defined(BENCH_HAS_TBB) && defined(BENCH_HAS_ABSL)
    concurrentMap.Add({row.interfaceName, row.method, row.proc}, proc);
#endif
  }

  Session session_;
  void* functions_;
};

// A finder of one side: made from the directory, asked with a query.
auto OursFinder(Directory& directory) {
  return [find = Opaque(directory.GetProcAddress())](const Query& query) {
    return find(query.interfaceName, query.method, query.proc);
  };
}

auto DlsymFinder(Directory& directory) {
  return [functions = directory.Functions()](const Query& query) {
    return reinterpret_cast<ZEBProc>(dlsym(functions, query.proc));
  };
}

#ifdef BENCH_HAS_ABSL
auto LockedMapFinder(Directory& directory) {
  return [map = &directory.lockedMap](const Query& query) { return map->Find(query); };
}
#endif

#if defined(BENCH_HAS_TBB) && defined(BENCH_HAS_ABSL)
auto ConcurrentMapFinder(Directory& directory) {
  return [map = &directory.concurrentMap](const Query& query) { return map->Find(query); };
}
#endif

// What one row looks up in.
struct Setting {
  Shared<Directory> directory;
  Shared<Queries> queries;
  Kind kind;
};

template <class MakeFinder>
void CheckFinder(const Setting& setting, MakeFinder makeFinder, const char* name) {
  Directory& directory = setting.directory.Get();
  auto find = makeFinder(directory);
  for (const Query& query : setting.queries.Get().OfThread(0)) {
    const ZEBProc expected = setting.kind == Kind::hit ? directory.Function(query.proc) : nullptr;
    Check(find(query) == expected, std::string("wrong answer of ") + name);
  }
}

template <class MakeFinder>
Side FinderSide(const Setting& setting, std::string name, MakeFinder makeFinder) {
  return Measure(std::move(name), [setting, makeFinder](size_t thread) {
    return [find = makeFinder(setting.directory.Get()),
            queries = Cycle(setting.queries.Get().OfThread(thread))]() mutable {
      benchmark::DoNotOptimize(find(queries.Next()));
    };
  });
}

Row LookupRow(const Setting& setting, std::string name, int threads) {
  Row row{.area = "look-up", .name = std::move(name), .threads = threads, .goal = Goal{1.0}};
  std::vector<std::function<void()>> checks;
  const auto add = [&](const char* sideName, auto makeFinder) {
    checks.push_back([=] { CheckFinder(setting, makeFinder, sideName); });
    return FinderSide(setting, sideName, makeFinder);
  };

  row.ours = add("ours", OursFinder);
#ifdef BENCH_HAS_ABSL
  row.peers.push_back(add("absl::flat_hash_map + std::mutex", LockedMapFinder));
#endif
#if defined(BENCH_HAS_TBB) && defined(BENCH_HAS_ABSL)
  if (threads > 1) row.peers.push_back(add("tbb::concurrent_unordered_map", ConcurrentMapFinder));
#endif
  // dlsym can say neither "known, but elsewhere" nor one interface from another: for it that miss
  // would be a hit.
  if (threads == 1 && setting.kind != Kind::missOtherNames)
    row.peers.push_back(add("dlsym", DlsymFinder));

  row.prepare = [checks = std::move(checks)] {
    for (const auto& check : checks) check();
  };
  return row;
}

void AddSingleRows(Rows& rows) {
  const Shared<Directory> directory([] { return std::make_unique<Directory>(); });
  const struct {
    Kind kind;
    const char* name;
  } kinds[] = {
      {Kind::hit, "1 of 250: hit"},
      {Kind::missOtherNames, "1 of 250: miss, known names in another combination"},
      {Kind::missUnknownName, "1 of 250: miss, proc name never seen before"},
  };
  for (const int threads : {1, 2})
    for (const auto& [kind, name] : kinds) {
      const Shared<Queries> queries([kind = kind] { return std::make_unique<Queries>(kind); });
      rows.push_back(LookupRow({directory, queries, kind}, name, threads));
    }
}

constexpr size_t bulkCount = 28;
constexpr const char* bulkInterface = "BenchBulkInterface";

// The library's objects linked into this program: a second library beside the loaded one, for the
// bulk fetch is not among the procs. It holds the 250 procs and an interface of 28 more.
class LinkedRegistry {
 public:
  LinkedRegistry() : getProcAddress_(ZEBInitialize(nullptr, nullptr, nullptr)) {
    Check(getProcAddress_, "the linked library does not start");
    for (const NameRow& row : nameRows)
      Check(registry::add(row.interfaceName, row.method, row.proc, SomeFunction),
            "a proc cannot be registered");
    for (size_t i = 0; i < bulkCount; ++i) {
      methods_[i] = nameRows[i].method;
      procs_[i] = std::string("Bulk") + nameRows[i].proc;
      requests_[i] = {methods_[i].c_str(), procs_[i].c_str()};
      const ZEBProcTableEntry entry{nameRows[i].method, procs_[i].c_str(), SomeFunction};
      Check(registry::addAll({&entry, 1}, bulkInterface), "a proc cannot be registered");
    }
  }

  ~LinkedRegistry() { ZEBTerminate(); }

  using Procs = std::array<ZEBProc, bulkCount>;

  auto Bulk() {
    return [this, findAll = Opaque(registry::findAll), procs = Procs{}]() mutable {
      benchmark::DoNotOptimize(findAll(requests_, bulkInterface, procs.data()));
      benchmark::DoNotOptimize(procs);
    };
  }

  auto OneByOne() {
    return [this, find = Opaque(getProcAddress_), procs = Procs{}]() mutable {
      for (size_t i = 0; i < bulkCount; ++i)
        procs[i] = find(bulkInterface, requests_[i].methodName, requests_[i].procName);
      benchmark::DoNotOptimize(procs);
    };
  }

  void CheckAnswers() {
    Procs procs{};
    Check(registry::findAll(requests_, bulkInterface, procs.data()), "the bulk fetch fails");
    for (const ZEBProc proc : procs) Check(proc == SomeFunction, "the bulk fetch errs");
    for (const ZEBProcRequest& request : requests_)
      Check(getProcAddress_(bulkInterface, request.methodName, request.procName) == SomeFunction,
            "a single look-up errs");
  }

 private:
  static void SomeFunction() {}

  ZEBGetProcAddress getProcAddress_;
  std::array<std::string, bulkCount> methods_;
  std::array<std::string, bulkCount> procs_;
  std::array<ZEBProcRequest, bulkCount> requests_;
};

Row BulkRow() {
  const Shared<LinkedRegistry> linked([] { return std::make_unique<LinkedRegistry>(); });
  Row row{.area = "look-up", .name = "bulk fetch of an interface of 28", .goal = Goal{0.7}};
  row.prepare = [linked] { linked.Get().CheckAnswers(); };
  row.ours = Measure("ours", [linked](size_t) { return linked.Get().Bulk(); });
  row.peers.push_back(
      Measure("28 single look-ups of ours", [linked](size_t) { return linked.Get().OneByOne(); }));
  return row;
}

}  // namespace

void AddLookupRows(Rows& rows) {
  AddSingleRows(rows);
  rows.push_back(BulkRow());
}

}  // namespace zeb::bench
