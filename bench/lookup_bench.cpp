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

constexpr NameRow kNameRows[] = {
#define BENCH_NAMES(interfaceName, method, proc) {#interfaceName, #method, #proc},
#include "bench_names.inc"
#undef BENCH_NAMES
};
constexpr size_t kProcCount = std::size(kNameRows);

constexpr size_t kSequenceLength = 4096;
constexpr size_t kMaximumThreads = 2;

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

  Key asKey() const { return {interfaceName, method, proc}; }
};

#ifdef BENCH_HAS_ABSL
class LockedMap {
 public:
  void add(const Key& key, ZEBProc proc) { map_.emplace(key, proc); }

  ZEBProc find(const Query& query) {
    const Key key = query.asKey();
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
  void add(const Key& key, ZEBProc proc) { map_.emplace(key, proc); }

  ZEBProc find(const Query& query) {
    const auto found = map_.find(query.asKey());
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
      makeUnknownNames();
    } else {
      makeKnownNames(kind);
    }
  }

  const std::vector<Query>& ofThread(size_t thread) const { return sequences_[thread]; }

 private:
  void makeKnownNames(Kind kind) {
    for (const NameRow& row : kNameRows) {
      interfaces_.emplace_back(row.interfaceName);
      methods_.emplace_back(row.method);
      procs_.emplace_back(row.proc);
    }
    // The proc name of another interface: rows of one interface stand together.
    const size_t shift = kind == Kind::hit ? 0 : kProcCount / 2;
    for (size_t thread = 0; thread < kMaximumThreads; ++thread)
      for (const uint32_t index : randomNumbers(kSequenceLength, kProcCount, 11 + thread))
        sequences_[thread].push_back({interfaces_[index].c_str(), methods_[index].c_str(),
                                      procs_[(index + shift) % kProcCount].c_str()});
  }

  void makeUnknownNames() {
    for (size_t i = 0; i < kMaximumThreads * kSequenceLength; ++i) {
      const NameRow& row = kNameRows[i % kProcCount];
      interfaces_.emplace_back(row.interfaceName);
      methods_.emplace_back(row.method);
      procs_.emplace_back(row.proc + std::string("V") + std::to_string(i));
    }
    for (size_t thread = 0; thread < kMaximumThreads; ++thread)
      for (const uint32_t index : randomNumbers(kSequenceLength, kSequenceLength, 11 + thread)) {
        const size_t own = thread * kSequenceLength + index;
        sequences_[thread].push_back(
            {interfaces_[own].c_str(), methods_[own].c_str(), procs_[own].c_str()});
      }
  }

  // Filled before the first pointer into them is taken.
  std::vector<std::string> interfaces_;
  std::vector<std::string> methods_;
  std::vector<std::string> procs_;
  std::array<std::vector<Query>, kMaximumThreads> sequences_;
};

// The 250 functions, and everyone who can find them.
class Directory {
 public:
  Directory() : functions_(dlopen(BENCH_FUNCTIONS, RTLD_NOW | RTLD_LOCAL)) {
    check(functions_, functions_ ? "" : dlerror());
    const ZEBProc registerProc =
        getProcAddress()("ZEB", "ZEBRegisterProcAddress", "ZEBRegisterProcAddress");
    check(registerProc, "ZEBRegisterProcAddress is not found");
    const auto registerProcAddress = reinterpret_cast<ZEBRegisterProcAddress>(registerProc);
    for (const NameRow& row : kNameRows) add(row, registerProcAddress);
  }

  ~Directory() { dlclose(functions_); }

  ZEBGetProcAddress getProcAddress() const { return session_.getProcAddress(); }
  void* functions() const { return functions_; }
  ZEBProc function(const char* name) const {
    return reinterpret_cast<ZEBProc>(dlsym(functions_, name));
  }

#ifdef BENCH_HAS_ABSL
  LockedMap lockedMap;
#endif
#if defined(BENCH_HAS_TBB) && defined(BENCH_HAS_ABSL)
  ConcurrentMap concurrentMap;
#endif

 private:
  void add(const NameRow& row, ZEBRegisterProcAddress registerProcAddress) {
    const ZEBProc proc = function(row.proc);
    check(proc, "a generated function is not exported");
    check(registerProcAddress(row.interfaceName, row.method, row.proc, proc) == 1,
          "a proc cannot be registered");
#ifdef BENCH_HAS_ABSL
    lockedMap.add({row.interfaceName, row.method, row.proc}, proc);
#endif
#if defined(BENCH_HAS_TBB) && defined(BENCH_HAS_ABSL)
    concurrentMap.add({row.interfaceName, row.method, row.proc}, proc);
#endif
  }

  Session session_;
  void* functions_;
};

// A finder of one side: made from the directory, asked with a query.
auto oursFinder(Directory& directory) {
  return [find = opaque(directory.getProcAddress())](const Query& query) {
    return find(query.interfaceName, query.method, query.proc);
  };
}

auto dlsymFinder(Directory& directory) {
  return [functions = directory.functions()](const Query& query) {
    return reinterpret_cast<ZEBProc>(dlsym(functions, query.proc));
  };
}

#ifdef BENCH_HAS_ABSL
auto lockedMapFinder(Directory& directory) {
  return [map = &directory.lockedMap](const Query& query) { return map->find(query); };
}
#endif

#if defined(BENCH_HAS_TBB) && defined(BENCH_HAS_ABSL)
auto concurrentMapFinder(Directory& directory) {
  return [map = &directory.concurrentMap](const Query& query) { return map->find(query); };
}
#endif

// What one row looks up in.
struct Setting {
  Shared<Directory> directory;
  Shared<Queries> queries;
  Kind kind;
};

template <class MakeFinder>
void checkFinder(const Setting& setting, MakeFinder makeFinder, const char* name) {
  Directory& directory = setting.directory.get();
  auto find = makeFinder(directory);
  for (const Query& query : setting.queries.get().ofThread(0)) {
    const ZEBProc expected = setting.kind == Kind::hit ? directory.function(query.proc) : nullptr;
    check(find(query) == expected, std::string("wrong answer of ") + name);
  }
}

template <class MakeFinder>
Side finderSide(const Setting& setting, std::string name, MakeFinder makeFinder) {
  return measure(std::move(name), [setting, makeFinder](size_t thread) {
    return [find = makeFinder(setting.directory.get()),
            queries = Cycle(setting.queries.get().ofThread(thread))]() mutable {
      benchmark::DoNotOptimize(find(queries.next()));
    };
  });
}

Row lookupRow(const Setting& setting, std::string name, int threads) {
  Row row{.area = "look-up", .name = std::move(name), .threads = threads, .goal = Goal{1.0}};
  std::vector<std::function<void()>> checks;
  const auto add = [&](const char* sideName, auto makeFinder) {
    checks.push_back([=] { checkFinder(setting, makeFinder, sideName); });
    return finderSide(setting, sideName, makeFinder);
  };

  row.ours = add("ours", oursFinder);
#ifdef BENCH_HAS_ABSL
  row.peers.push_back(add("absl::flat_hash_map + std::mutex", lockedMapFinder));
#endif
#if defined(BENCH_HAS_TBB) && defined(BENCH_HAS_ABSL)
  if (threads > 1) row.peers.push_back(add("tbb::concurrent_unordered_map", concurrentMapFinder));
#endif
  // dlsym can say neither "known, but elsewhere" nor one interface from another: for it that miss
  // would be a hit.
  if (threads == 1 && setting.kind != Kind::missOtherNames)
    row.peers.push_back(add("dlsym", dlsymFinder));

  row.prepare = [checks = std::move(checks)] {
    for (const auto& check : checks) check();
  };
  return row;
}

void addSingleRows(Rows& rows) {
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
      rows.push_back(lookupRow({directory, queries, kind}, name, threads));
    }
}

constexpr size_t kBulkCount = 28;
constexpr const char* kBulkInterface = "BenchBulkInterface";

// The library's objects linked into this program: a second library beside the loaded one, for the
// bulk fetch is not among the procs. It holds the 250 procs and an interface of 28 more.
class LinkedRegistry {
 public:
  LinkedRegistry() : getProcAddress_(ZEBInitialize(nullptr, nullptr, nullptr)) {
    check(getProcAddress_, "the linked library does not start");
    for (const NameRow& row : kNameRows)
      check(registry::add(row.interfaceName, row.method, row.proc, someFunction),
            "a proc cannot be registered");
    for (size_t i = 0; i < kBulkCount; ++i) {
      methods_[i] = kNameRows[i].method;
      procs_[i] = std::string("Bulk") + kNameRows[i].proc;
      requests_[i] = {methods_[i].c_str(), procs_[i].c_str()};
      const ZEBProcTableEntry entry{kNameRows[i].method, procs_[i].c_str(), someFunction};
      check(registry::addAll({&entry, 1}, kBulkInterface), "a proc cannot be registered");
    }
  }

  ~LinkedRegistry() { ZEBTerminate(); }

  using Procs = std::array<ZEBProc, kBulkCount>;

  auto bulk() {
    return [this, findAll = opaque(registry::findAll), procs = Procs{}]() mutable {
      benchmark::DoNotOptimize(findAll(requests_, kBulkInterface, procs.data()));
      benchmark::DoNotOptimize(procs);
    };
  }

  auto oneByOne() {
    return [this, find = opaque(getProcAddress_), procs = Procs{}]() mutable {
      for (size_t i = 0; i < kBulkCount; ++i)
        procs[i] = find(kBulkInterface, requests_[i].methodName, requests_[i].procName);
      benchmark::DoNotOptimize(procs);
    };
  }

  void checkAnswers() {
    Procs procs{};
    check(registry::findAll(requests_, kBulkInterface, procs.data()), "the bulk fetch fails");
    for (const ZEBProc proc : procs) check(proc == someFunction, "the bulk fetch errs");
    for (const ZEBProcRequest& request : requests_)
      check(getProcAddress_(kBulkInterface, request.methodName, request.procName) == someFunction,
            "a single look-up errs");
  }

 private:
  static void someFunction() {}

  ZEBGetProcAddress getProcAddress_;
  std::array<std::string, kBulkCount> methods_;
  std::array<std::string, kBulkCount> procs_;
  std::array<ZEBProcRequest, kBulkCount> requests_;
};

Row bulkRow() {
  const Shared<LinkedRegistry> linked([] { return std::make_unique<LinkedRegistry>(); });
  Row row{.area = "look-up", .name = "bulk fetch of an interface of 28", .goal = Goal{0.7}};
  row.prepare = [linked] { linked.get().checkAnswers(); };
  row.ours = measure("ours", [linked](size_t) { return linked.get().bulk(); });
  row.peers.push_back(
      measure("28 single look-ups of ours", [linked](size_t) { return linked.get().oneByOne(); }));
  return row;
}

}  // namespace

void addLookupRows(Rows& rows) {
  addSingleRows(rows);
  rows.push_back(bulkRow());
}

}  // namespace zeb::bench
