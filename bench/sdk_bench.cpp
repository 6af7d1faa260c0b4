// What the C++ headers cost: each operation beside the same one as a careful C client writes it by
// hand, who compares the change counter before each use and fetches again when it has moved.
#include <atomic>
#include <string>

#include "library.h"
#include "rows.h"
#include "zeb/sdk/atom.hpp"
#include "zeb/sdk/cache.hpp"
#include "zeb/sdk/stream.hpp"

namespace zeb::bench {

namespace {

constexpr double kMostRatio = 1.05;
constexpr const char* kText = "a text that somebody holds";

// The C client's side of one interface.
template <class Procs, int32_t (*Fetch)(ZEBGetProcAddress, Procs*)>
class ByHand {
 public:
  explicit ByHand(ZEBGetProcAddress find) : find_(find) {
    const auto address = reinterpret_cast<ZEBGetUnregisterCountAddr>(
        find("ZEB", "ZEBGetUnregisterCountAddr", "ZEBGetUnregisterCountAddr"));
    counter_ = address();
    fetch();
  }

  const Procs& procs() {
    if (__atomic_load_n(counter_, __ATOMIC_ACQUIRE) != count_) [[unlikely]]
      fetch();
    return procs_;
  }

 private:
  void fetch() {
    count_ = *counter_;
    check(Fetch(find_, &procs_), "procs are missing");
  }

  ZEBGetProcAddress find_;
  uint32_t* counter_ = nullptr;
  uint32_t count_ = 0;
  Procs procs_{};
};

// One start of the library, with the module attached, and what the operations work on.
class SdkHost {
 public:
  SdkHost() {
    check(sdk::attach(session_.getProcAddress()), "the module cannot be attached");
    atom_ = sdk::Atom(kText);
    stream_ = sdk::Stream::memory();
    const std::string bytes(1U << 20U, 'x');
    stream_.write(std::as_bytes(std::span(bytes)));
    results_ = std::make_unique<Results>();
    (void)results_->get(1, [] { return sdk::CachedResult{7, uint64_t{1}}; });
    check(atom_.text() == kText, "an atom has another text");
  }
  ~SdkHost() {
    results_.reset();
    stream_.reset();
    atom_.reset();
    sdk::detach();
  }
  SdkHost(const SdkHost&) = delete;
  SdkHost& operator=(const SdkHost&) = delete;

  using Results = sdk::CacheSet<int, int>;

  ZEBGetProcAddress find() const { return session_.getProcAddress(); }
  const sdk::Atom& atom() const { return atom_; }
  const sdk::Stream& stream() const { return stream_; }
  Results& results() { return *results_; }

 private:
  Session session_;
  sdk::Atom atom_;
  sdk::Stream stream_;
  std::unique_ptr<Results> results_;
};

using Host = Shared<SdkHost>;
using StringsByHand = ByHand<ZEBStringProcs, &ZEBFetchStringProcs>;
using ReadsByHand = ByHand<ZEBSimpleStreamProcs, &ZEBFetchSimpleStreamProcs>;
using RewindsByHand = ByHand<ZEBRewindableStreamProcs, &ZEBFetchRewindableStreamProcs>;
using CacheByHand = ByHand<ZEBCacheProcs, &ZEBFetchCacheProcs>;

Row rowOf(const char* name, const Host& host) {
  Row row{.area = "c++", .name = name, .goal = Goal{.limit = kMostRatio}};
  row.prepare = [host] { host.get(); };
  return row;
}

void addCallRow(Rows& rows, const Host& host) {
  Row row = rowOf("call a proc of a bound interface", host);
  row.ours = measure("ours", [host](size_t) {
    return [atom = host.get().atom().get()] {
      benchmark::DoNotOptimize(sdk::procs<sdk::Strings>().GetCString(atom));
    };
  });
  row.peers.push_back(measure("C by hand", [host](size_t) {
    return [atom = host.get().atom().get(), strings = StringsByHand(host.get().find())]() mutable {
      benchmark::DoNotOptimize(strings.procs().GetCString(atom));
    };
  }));
  rows.push_back(std::move(row));
}

void addOwnerRow(Rows& rows, const Host& host) {
  Row row = rowOf("atom that exists: find, own, give back", host);
  row.ours = measure("ours", [](size_t) {
    return [] {
      const sdk::Atom atom(opaque(kText));
      benchmark::DoNotOptimize(atom.get());
    };
  });
  row.peers.push_back(measure("C by hand", [host](size_t) {
    return [strings = StringsByHand(host.get().find())]() mutable {
      ZEBString* atom = strings.procs().NewStringAtom(opaque(kText));
      benchmark::DoNotOptimize(atom);
      strings.procs().DeleteStringAtom(atom);
    };
  }));
  rows.push_back(std::move(row));
}

void addReadRow(Rows& rows, const Host& host) {
  constexpr size_t kStep = 256;
  Row row = rowOf("memory stream: rewind, read 256 B", host);
  row.ours = measure("ours", [host](size_t) {
    return [&stream = host.get().stream(), room = std::array<std::byte, kStep>{}]() mutable {
      stream.rewind();
      benchmark::DoNotOptimize(stream.read(room));
    };
  });
  row.peers.push_back(measure("C by hand", [host](size_t) {
    return [stream = host.get().stream().get(), reads = ReadsByHand(host.get().find()),
            rewinds = RewindsByHand(host.get().find()),
            room = std::array<std::byte, kStep>{}]() mutable {
      uint64_t count = 0;
      check(rewinds.procs().Rewind(stream) == nullptr, "a stream cannot be rewound");
      check(reads.procs().Read(stream, &count, room.data(), room.size()) == nullptr,
            "a stream cannot be read");
      benchmark::DoNotOptimize(count);
    };
  }));
  rows.push_back(std::move(row));
}

int32_t isBefore(void* a, void* b) { return *static_cast<int*>(a) < *static_cast<int*>(b) ? 1 : 0; }

// The set of the C side with one result in it.
class CSet {
 public:
  explicit CSet(ZEBGetProcAddress find) : cache_(find), set_(cache_.procs().NewCacheSet(isBefore)) {
    cache_.procs().AddRefCacheSet(set_);
    ZEBCacheID* id = cache_.procs().NewCacheID();
    check(cache_.procs().Attach(&id, &key_, set_, 1, deleteNothing, nullptr) == &key_,
          "a result cannot be attached");
    cache_.procs().Release(id);
  }
  ~CSet() { cache_.procs().DeleteCacheSet(set_); }
  CSet(const CSet&) = delete;
  CSet& operator=(const CSet&) = delete;

  void findAndPin() {
    uint64_t stamp = 0;
    int wanted = key_;
    ZEBCacheID* id = cache_.procs().SearchForID(set_, &wanted, ZEB_CACHE_FIND_EQUAL);
    void* data = cache_.procs().MarkNoPurge(id, &stamp, 1);
    cache_.procs().Release(id);
    check(data != nullptr, "a result is missing");
    cache_.procs().MarkPurge(id);
  }

 private:
  static void deleteNothing(void* /*data*/, int32_t /*survives*/) {}

  CacheByHand cache_;
  ZEBCacheSet* set_;
  int key_ = 1;
};

void addCacheRow(Rows& rows, const Host& host) {
  Row row = rowOf("cached result that is there: get, pin, unpin", host);
  row.ours = measure("ours", [host](size_t) {
    return [&results = host.get().results()] {
      const auto pinned = results.get(1, [] { return sdk::CachedResult{7, uint64_t{1}}; });
      benchmark::DoNotOptimize(*pinned);
    };
  });
  row.peers.push_back(measure("C by hand", [host](size_t) {
    return [set = std::make_unique<CSet>(host.get().find())] { set->findAndPin(); };
  }));
  rows.push_back(std::move(row));
}

}  // namespace

void addSdkRows(Rows& rows) {
  const Host host([] { return std::make_unique<SdkHost>(); });
  addCallRow(rows, host);
  addOwnerRow(rows, host);
  addReadRow(rows, host);
  addCacheRow(rows, host);
}

}  // namespace zeb::bench
