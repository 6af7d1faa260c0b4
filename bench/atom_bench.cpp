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

constexpr size_t kMaximumThreads = 2;
constexpr size_t kNewTextsPerThread = 8192;

// Each side's table: make a text's entry or count it up, read it, give it back.

class OurTable {
 public:
  using Handle = ZEBString*;

  OurTable() {
    check(ZEBFetchStringProcs(session_.getProcAddress(), &procs_), "string procs are missing");
    make_ = opaque(procs_.NewStringAtom);
    release_ = opaque(procs_.DeleteStringAtom);
  }

  Handle make(const char* text) { return make_(text); }
  void release(Handle handle) { release_(handle); }
  const char* text(Handle handle) { return procs_.GetCString(handle); }

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

  Handle make(const char* text) { return g_ref_string_new_intern(text); }
  void release(Handle handle) { g_ref_string_release(handle); }
  const char* text(Handle handle) { return handle; }
};
#endif

#ifdef BENCH_HAS_ABSL
class CountedMap {
 public:
  using Handle = std::pair<const std::string, size_t>*;

  Handle make(const char* text) {
    const absl::string_view key(text);
    const std::lock_guard lock(mutex_);
    const auto [entry, isNew] = map_.try_emplace(key, 0);
    ++entry->second;
    return &*entry;
  }

  void release(Handle handle) {
    const std::lock_guard lock(mutex_);
    if (--handle->second) return;
    map_.erase(map_.find(handle->first));
  }

  const char* text(Handle handle) { return handle->first.c_str(); }

 private:
  std::mutex mutex_;
  absl::node_hash_map<std::string, size_t> map_;
};
#endif

// A caller's texts: those that stay alive, those that come and go, and the order of asking.
class Stock {
 public:
  Stock(size_t live, size_t length)
      : texts_(live + kMaximumThreads * kNewTextsPerThread, length, 5), live_(live) {
    const size_t asked = std::max<size_t>(live, 1 << 16);
    for (size_t thread = 0; thread < kMaximumThreads; ++thread) {
      for (const uint32_t index : randomNumbers(asked, static_cast<uint32_t>(live), 21 + thread))
        found_[thread].push_back(texts_[index]);
      for (const uint32_t index : randomOrder(21 + thread))
        new_[thread].push_back(texts_[live + thread * kNewTextsPerThread + index]);
    }
  }

  size_t live() const { return live_; }
  const char* liveText(size_t index) const { return texts_[index]; }
  const std::vector<const char*>& found(size_t thread) const { return found_[thread]; }
  const std::vector<const char*>& fresh(size_t thread) const { return new_[thread]; }

 private:
  static std::vector<uint32_t> randomOrder(uint64_t seed) {
    std::vector<uint32_t> order(kNewTextsPerThread);
    for (uint32_t i = 0; i < order.size(); ++i) order[i] = i;
    Random random(seed);
    std::shuffle(order.begin(), order.end(), random);
    return order;
  }

  Texts texts_;
  size_t live_;
  std::array<std::vector<const char*>, kMaximumThreads> found_;
  std::array<std::vector<const char*>, kMaximumThreads> new_;
};

// A table with the stock's live texts in it.
template <class Table>
class Filled {
 public:
  explicit Filled(const Stock& stock) {
    handles_.reserve(stock.live());
    for (size_t i = 0; i < stock.live(); ++i) handles_.push_back(table_.make(stock.liveText(i)));
    checkAnswers(stock);
  }

  ~Filled() {
    for (const auto handle : handles_) table_.release(handle);
  }

  Table& get() { return table_; }

 private:
  void checkAnswers(const Stock& stock) {
    for (size_t i = 0; i < stock.live(); ++i) {
      const auto again = table_.make(stock.liveText(i));
      check(again == handles_[i], "an equal text got another entry");
      check(table_.text(again) == std::string_view(stock.liveText(i)), "an entry has another text");
      table_.release(again);
    }
    for (const char* text : stock.fresh(0)) {
      const auto entry = table_.make(text);
      check(table_.text(entry) == std::string_view(text), "a new entry has another text");
      table_.release(entry);
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
Shared<Filled<Table>> filledFrom(const Shared<Stock>& stock) {
  return Shared<Filled<Table>>([stock] { return std::make_unique<Filled<Table>>(stock.get()); });
}

Setting makeSetting(size_t live, size_t length) {
  const Shared<Stock> stock([=] { return std::make_unique<Stock>(live, length); });
  return {
      stock,
      filledFrom<OurTable>(stock),
#ifdef BENCH_HAS_GLIB
      filledFrom<RefStringTable>(stock),
#endif
#ifdef BENCH_HAS_ABSL
      filledFrom<CountedMap>(stock),
#endif
  };
}

template <class Table>
Side makeAndRelease(std::string name, const Shared<Stock>& stock,
                    const Shared<Filled<Table>>& filled, Kind kind) {
  return measure(std::move(name), [=](size_t thread) {
    const auto& texts = kind == Kind::found ? stock.get().found(thread) : stock.get().fresh(thread);
    return [table = &filled.get().get(), texts = Cycle(texts)]() mutable {
      const auto handle = table->make(texts.next());
      benchmark::DoNotOptimize(handle);
      table->release(handle);
    };
  });
}

Row atomRow(const Setting& setting, std::string name, Kind kind, int threads) {
  Row row{.area = "atoms", .name = std::move(name), .threads = threads, .goal = Goal{1.0}};
  row.ours = makeAndRelease("ours", setting.stock, setting.ours, kind);
#ifdef BENCH_HAS_GLIB
  row.peers.push_back(
      makeAndRelease("g_ref_string_new_intern", setting.stock, setting.refStrings, kind));
#endif
#ifdef BENCH_HAS_ABSL
  row.peers.push_back(
      makeAndRelease("absl::node_hash_map + std::mutex", setting.stock, setting.countedMap, kind));
#endif
  // Filled before the threads start; filling checks the answers.
  row.prepare = [setting] {
    setting.ours.get();
#ifdef BENCH_HAS_GLIB
    setting.refStrings.get();
#endif
#ifdef BENCH_HAS_ABSL
    setting.countedMap.get();
#endif
  };
  return row;
}

}  // namespace

void addAtomRows(Rows& rows) {
  for (const size_t live : {500u, 10'000u, 1'000'000u})
    for (const size_t length : {12u, 60u}) {
      const Setting setting = makeSetting(live, length);
      for (const int threads : {1, 2}) {
        rows.push_back(atomRow(
            setting, fmt::format("make (found) + release: {} characters, {} live", length, live),
            Kind::found, threads));
        rows.push_back(atomRow(
            setting, fmt::format("make (new) + last release: {} characters, {} live", length, live),
            Kind::fresh, threads));
      }
    }
}

}  // namespace zeb::bench
