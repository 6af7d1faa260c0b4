// Interning a text and giving it back, with 500 to 1,000,000 texts alive.
//
// found  the text is alive: make gives the atom that is there, release leaves it there
// new    the text is not there: make puts it in, and one text leaves
//
// The library keeps the 64 most recently made atoms alive, so the release that frees an atom comes
// 64 makes after its own; the peers free theirs at once. New texts are taken in turn from a stock
// of 8192 per thread, so each has left long before it comes again: a turn adds one text and removes
// one on every side.
#include <fmt/format.h>

#include <array>
#include <mutex>
#include <string>
#include <string_view>

#include "library.h"
#include "rows.h"
#include "sequences.h"

#ifdef BENCH_HAS_ABSL
#include <absl/container/node_hash_map.h>
#endif
#ifdef BENCH_HAS_GLIB
#include <glib.h>
#endif

namespace zeb::bench {

namespace {

constexpr size_t maximumThreads = 2;
constexpr size_t newTextsPerThread = 8192;

// Each side's table: make a text's entry or count it up, read it, give it back.

class OurTable {
 public:
  using Handle = ZEBString*;

  OurTable() {
    Check(ZEBFetchStringProcs(session_.GetProcAddress(), &procs_), "string procs are missing");
    make_ = Opaque(procs_.NewStringAtom);
    release_ = Opaque(procs_.DeleteStringAtom);
  }

  Handle Make(const char* text) { return make_(text); }
  void Release(Handle handle) { release_(handle); }
  const char* Text(Handle handle) { return procs_.GetCString(handle); }

 private:
  Session session_;
  ZEBStringProcs procs_;
  ZEBNewStringAtomProc make_;
  ZEBDeleteStringAtomProc release_;
};

#ifdef BENCH_HAS_GLIB
class RefStringTable {
 public:
  using Handle = char*;

  Handle Make(const char* text) { return g_ref_string_new_intern(text); }
  void Release(Handle handle) { g_ref_string_release(handle); }
  const char* Text(Handle handle) { return handle; }
};
#endif

#ifdef BENCH_HAS_ABSL
class CountedMap {
 public:
  using Handle = std::pair<const std::string, size_t>*;

  Handle Make(const char* text) {
    const absl::string_view key(text);
    const std::lock_guard lock(mutex_);
    const auto [entry, isNew] = map_.try_emplace(key, 0);
    ++entry->second;
    return &*entry;
  }

  void Release(Handle handle) {
    const std::lock_guard lock(mutex_);
    if (--handle->second) return;
    map_.erase(map_.find(handle->first));
  }

  const char* Text(Handle handle) { return handle->first.c_str(); }

 private:
  std::mutex mutex_;
  absl::node_hash_map<std::string, size_t> map_;
};
#endif

// A caller's texts: those that stay alive, those that come and go, and the order of asking.
class Stock {
 public:
  Stock(size_t live, size_t length)
      : texts_(live + maximumThreads * newTextsPerThread, length, 5), live_(live) {
    const size_t asked = std::max<size_t>(live, 1 << 16);
    for (size_t thread = 0; thread < maximumThreads; ++thread) {
      for (const uint32_t index : RandomNumbers(asked, static_cast<uint32_t>(live), 21 + thread))
        found_[thread].push_back(texts_[index]);
      for (const uint32_t index : RandomOrder(21 + thread))
        new_[thread].push_back(texts_[live + thread * newTextsPerThread + index]);
    }
  }

  size_t Live() const { return live_; }
  const char* LiveText(size_t index) const { return texts_[index]; }
  const std::vector<const char*>& Found(size_t thread) const { return found_[thread]; }
  const std::vector<const char*>& New(size_t thread) const { return new_[thread]; }

 private:
  static std::vector<uint32_t> RandomOrder(uint64_t seed) {
    std::vector<uint32_t> order(newTextsPerThread);
    for (uint32_t i = 0; i < order.size(); ++i) order[i] = i;
    Random random(seed);
    std::shuffle(order.begin(), order.end(), random);
    return order;
  }

  Texts texts_;
  size_t live_;
  std::array<std::vector<const char*>, maximumThreads> found_;
  std::array<std::vector<const char*>, maximumThreads> new_;
};

// A table with the stock's live texts in it.
template <class Table>
class Filled {
 public:
  explicit Filled(const Stock& stock) {
    handles_.reserve(stock.Live());
    for (size_t i = 0; i < stock.Live(); ++i) handles_.push_back(table_.Make(stock.LiveText(i)));
    CheckAnswers(stock);
  }

  ~Filled() {
    for (const auto handle : handles_) table_.Release(handle);
  }

  Table& Get() { return table_; }

 private:
  void CheckAnswers(const Stock& stock) {
    for (size_t i = 0; i < stock.Live(); ++i) {
      const auto again = table_.Make(stock.LiveText(i));
      Check(again == handles_[i], "an equal text got another entry");
      Check(table_.Text(again) == std::string_view(stock.LiveText(i)), "an entry has another text");
      table_.Release(again);
    }
    for (const char* text : stock.New(0)) {
      const auto entry = table_.Make(text);
      Check(table_.Text(entry) == std::string_view(text), "a new entry has another text");
      table_.Release(entry);
    }
  }

  Table table_;
  std::vector<typename Table::Handle> handles_;
};

enum class Kind { found, fresh };

struct Setting {
  Shared<Stock> stock;
  Shared<Filled<OurTable>> ours;
#ifdef BENCH_HAS_GLIB
  Shared<Filled<RefStringTable>> refStrings;
#endif
#ifdef BENCH_HAS_ABSL
  Shared<Filled<CountedMap>> countedMap;
#endif
};

template <class Table>
Shared<Filled<Table>> FilledFrom(const Shared<Stock>& stock) {
  return Shared<Filled<Table>>([stock] { return std::make_unique<Filled<Table>>(stock.Get()); });
}

Setting MakeSetting(size_t live, size_t length) {
  const Shared<Stock> stock([=] { return std::make_unique<Stock>(live, length); });
  return {
      stock,
      FilledFrom<OurTable>(stock),
#ifdef BENCH_HAS_GLIB
      FilledFrom<RefStringTable>(stock),
#endif
#ifdef BENCH_HAS_ABSL
      FilledFrom<CountedMap>(stock),
#endif
  };
}

template <class Table>
Side MakeAndRelease(std::string name, const Shared<Stock>& stock,
                    const Shared<Filled<Table>>& filled, Kind kind) {
  return Measure(std::move(name), [=](size_t thread) {
    const auto& texts = kind == Kind::found ? stock.Get().Found(thread) : stock.Get().New(thread);
    return [table = &filled.Get().Get(), texts = Cycle(texts)]() mutable {
      const auto handle = table->Make(texts.Next());
      benchmark::DoNotOptimize(handle);
      table->Release(handle);
    };
  });
}

Row AtomRow(const Setting& setting, std::string name, Kind kind, int threads) {
  Row row{.area = "atoms", .name = std::move(name), .threads = threads, .goal = Goal{1.0}};
  row.ours = MakeAndRelease("ours", setting.stock, setting.ours, kind);
#ifdef BENCH_HAS_GLIB
  row.peers.push_back(
      MakeAndRelease("g_ref_string_new_intern", setting.stock, setting.refStrings, kind));
#endif
#ifdef BENCH_HAS_ABSL
  row.peers.push_back(
      MakeAndRelease("absl::node_hash_map + std::mutex", setting.stock, setting.countedMap, kind));
#endif
  // Filled before the threads start; filling checks the answers.
  row.prepare = [setting] {
    setting.ours.Get();
#ifdef BENCH_HAS_GLIB
    setting.refStrings.Get();
#endif
#ifdef BENCH_HAS_ABSL
    setting.countedMap.Get();
#endif
  };
  return row;
}

}  // namespace

void AddAtomRows(Rows& rows) {
  for (const size_t live : {500u, 10'000u, 1'000'000u})
    for (const size_t length : {12u, 60u}) {
      const Setting setting = MakeSetting(live, length);
      for (const int threads : {1, 2}) {
        rows.push_back(AtomRow(
            setting, fmt::format("make (found) + release: {} characters, {} live", length, live),
            Kind::found, threads));
        rows.push_back(AtomRow(
            setting, fmt::format("make (new) + last release: {} characters, {} live", length, live),
            Kind::fresh, threads));
      }
    }
}

}  // namespace zeb::bench
