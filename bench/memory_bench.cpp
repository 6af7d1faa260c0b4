// Blocks of memory.
//
// direct mode  the memory interface's Alloc and Free as clients reach them, against malloc and free
//              of the size that direct mode asks malloc for: 16 bytes of header and 5 % slack, at
//              least 16 and at most 200 bytes.
// pooled mode  an allocator object of our own in pooled mode, against whole allocators. They keep
//              per-thread caches; ours takes one lock and searches one tree of free blocks for the
//              best fit, so a multiple of glibc's time is what is asked of it.
//
// "random" frees a random block of 10,000 and allocates one in its place; "LIFO" allocates 64
// blocks and frees them, the last first. A time is that of one allocation and one free. Each
// block's first word is written, as its user would.
#include <dlfcn.h>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <mutex>
#include <optional>

#include "library.h"
#include "memory/allocator.h"
#include "rows.h"
#include "sequences.h"

#ifdef BENCH_HAS_BOOST
#include <boost/pool/pool.hpp>
#endif
#ifdef BENCH_HAS_JEMALLOC
#include <jemalloc/jemalloc.h>
#endif

namespace zeb::bench {

namespace {

constexpr size_t kLiveBlocks = 10'000;
constexpr size_t kLifoDepth = 64;
constexpr size_t kSequenceLength = 1 << 16;

// An allocator is anything with `void *Allocate(size_t)` and `void free(void *, size_t)`.

struct Glibc {
  void* allocate(size_t size) { return std::malloc(size); }
  void free(void* block, size_t) { std::free(block); }
};

// Which block is replaced by one of which size.
struct Step {
  uint32_t index;
  uint32_t size;
};

// A workload: the sizes of the first blocks, then one step after the other.
struct Workload {
  std::vector<uint32_t> first;
  std::vector<Step> steps;
};

template <class NextSize>
Workload makeWorkload(size_t blocks, uint64_t seed, NextSize nextSize) {
  Random random(seed);
  Workload workload;
  for (size_t i = 0; i < blocks; ++i) workload.first.push_back(nextSize(random));
  const std::vector<uint32_t> indexes =
      randomNumbers(kSequenceLength, static_cast<uint32_t>(blocks), seed + 1);
  for (const uint32_t index : indexes) workload.steps.push_back({index, nextSize(random)});
  return workload;
}

template <class Make>
Shared<Workload> sharedWorkload(Make make) {
  return Shared<Workload>([=] { return std::make_unique<Workload>(make()); });
}

void use(void* block) {
  *static_cast<uint64_t*>(block) = 1;
  benchmark::DoNotOptimize(block);
}

// The live blocks of one repetition of one side.
template <class Allocator>
class Population {
 public:
  Population(Allocator* allocator, const Workload& workload)
      : allocator_(allocator), steps_(workload.steps) {
    for (const uint32_t size : workload.first)
      blocks_.push_back({allocator_->allocate(size), size});
  }

  Population(Population&&) = default;

  ~Population() {
    for (const Block& block : blocks_) allocator_->free(block.data, block.size);
  }

  void operator()() {
    const Step& step = steps_.next();
    Block& block = blocks_[step.index];
    allocator_->free(block.data, block.size);
    block = {allocator_->allocate(step.size), step.size};
    use(block.data);
  }

 private:
  struct Block {
    void* data;
    uint32_t size;
  };

  Allocator* allocator_;
  Cycle<Step> steps_;
  std::vector<Block> blocks_;
};

// 64 blocks, and back the other way round. One turn does 64 operations.
template <class Allocator>
class Stack {
 public:
  Stack(Allocator* allocator, const Workload& workload)
      : allocator_(allocator), steps_(workload.steps) {}

  void operator()() {
    for (size_t i = 0; i < kLifoDepth; ++i) {
      sizes_[i] = steps_.next().size;
      blocks_[i] = allocator_->allocate(sizes_[i]);
      use(blocks_[i]);
    }
    for (size_t i = kLifoDepth; i-- > 0;) allocator_->free(blocks_[i], sizes_[i]);
  }

 private:
  Allocator* allocator_;
  Cycle<Step> steps_;
  std::array<void*, kLifoDepth> blocks_{};
  std::array<uint32_t, kLifoDepth> sizes_{};
};

template <template <class> class Pattern, class Allocator>
Side patternSide(std::string name, const Shared<Allocator>& allocator,
                 const Shared<Workload>& workload) {
  return measure(std::move(name),
                 [=](size_t) { return Pattern<Allocator>(&allocator.get(), workload.get()); });
}

// --- direct mode ------------------------------------------------------------------------------

class OurDirect {
 public:
  OurDirect() {
    check(ZEBFetchMemoryProcs(session_.getProcAddress(), &procs_), "memory procs are missing");
    void* block = procs_.Alloc(1000);
    check(block && procs_.GetBlockSize(block) == 1000, "a block does not know its size");
    procs_.Free(block);
    allocate_ = opaque(procs_.Alloc);
    free_ = opaque(procs_.Free);
  }

  void* allocate(size_t size) { return allocate_(size); }
  void free(void* block, size_t) { free_(block); }

 private:
  Session session_;
  ZEBMemoryProcs procs_;
  ZEBMemAllocProc allocate_;
  ZEBMemFreeProc free_;
};

uint32_t directModeSize(uint32_t size) {
  const float slack = std::trunc(0.05f * static_cast<float>(size));
  return size + 16 + static_cast<uint32_t>(std::clamp(slack, 16.0f, 200.0f));
}

// The same steps with the sizes that malloc sees in direct mode.
Workload asMallocSeesIt(Workload workload) {
  for (uint32_t& size : workload.first) size = directModeSize(size);
  for (Step& step : workload.steps) step.size = directModeSize(step.size);
  return workload;
}

// Sizes from 16 bytes to 100 kB, as many between 16 and 32 as between 32 and 64, and so on.
uint32_t spreadSize(Random& random) {
  std::uniform_real_distribution<double> exponent(std::log(16.0), std::log(100'000.0));
  return static_cast<uint32_t>(std::exp(exponent(random)));
}

template <class NextSize>
Row directRow(const Shared<OurDirect>& ours, std::string name, NextSize nextSize) {
  const Shared<Workload> workload =
      sharedWorkload([=] { return makeWorkload(kLiveBlocks, 41, nextSize); });
  const Shared<Workload> padded = sharedWorkload([=] { return asMallocSeesIt(workload.get()); });
  Row row{.area = "memory", .name = std::move(name), .goal = Goal{1.15}};
  row.prepare = [ours] { ours.get(); };
  row.ours = patternSide<Population>("ours", ours, workload);
  const Shared<Glibc> glibc([] { return std::make_unique<Glibc>(); });
  row.peers.push_back(patternSide<Population>("glibc malloc", glibc, padded));
  return row;
}

void addDirectRows(Rows& rows) {
  const Shared<OurDirect> ours([] { return std::make_unique<OurDirect>(); });
  for (const uint32_t size : {16u, 256u, 4096u, 100'000u})
    rows.push_back(directRow(ours, fmt::format("direct mode, random: {} B", size),
                             [size](Random&) { return size; }));
  rows.push_back(directRow(ours, "direct mode, random: 16 B to 100 kB mixed", spreadSize));
}

// --- pooled mode ------------------------------------------------------------------------------

#ifdef BENCH_HAS_JEMALLOC
struct Jemalloc {
  void* allocate(size_t size) { return mallocx(size, 0); }
  void free(void* block, size_t) { dallocx(block, 0); }
};
#endif

#ifdef BENCH_HAS_MIMALLOC
// Loaded for itself: linked, it would take malloc's place for everybody.
class Mimalloc {
 public:
  Mimalloc() : handle_(dlopen("libmimalloc.so.2", RTLD_NOW | RTLD_LOCAL)) {
    check(handle_, handle_ ? "" : dlerror());
    allocate_ = reinterpret_cast<void* (*)(size_t)>(dlsym(handle_, "mi_malloc"));
    free_ = reinterpret_cast<void (*)(void*)>(dlsym(handle_, "mi_free"));
    check(allocate_ && free_, "mimalloc lacks a function");
  }

  void* allocate(size_t size) { return allocate_(size); }
  void free(void* block, size_t) { free_(block); }

 private:
  // Never closed: its thread data outlive every user.
  void* handle_;
  void* (*allocate_)(size_t);
  void (*free_)(void*);
};
#endif

#ifdef BENCH_HAS_BOOST
// One pool for every 16 bytes of size, as a pool holds one size only.
class BoostPools {
 public:
  BoostPools() {
    for (size_t i = 0; i < pools_.size(); ++i) pools_[i].emplace((i + 1) * step);
  }

  void* allocate(size_t size) {
    const std::lock_guard lock(mutex_);
    return poolOf(size).malloc();
  }

  void free(void* block, size_t size) {
    const std::lock_guard lock(mutex_);
    poolOf(size).free(block);
  }

 private:
  static constexpr size_t step = 16;

  boost::pool<>& poolOf(size_t size) { return *pools_[(size - 1) / step]; }

  std::mutex mutex_;
  std::array<std::optional<boost::pool<>>, 1024 / step> pools_;
};
#endif

void* takePage(uint64_t size) { return std::malloc(size); }
void freePage(void* page) { std::free(page); }

class OurPooled {
 public:
  OurPooled() {
    // An exact multiple of 16 from a fresh page: a block that knows exactly this size.
    void* block = allocator_.alloc(160);
    check(allocator_.blockSize(block) == 160, "a pooled block does not know its size");
    allocator_.free(block);
  }
  ~OurPooled() { allocator_.releasePages(); }

  void* allocate(size_t size) { return allocator_.alloc(size); }
  void free(void* block, size_t) { allocator_.free(block); }

 private:
  PageSource pages_{takePage, freePage};
  ZEBAllocator allocator_{ZEBAllocator::Mode::pooled, pages_};
};

uint32_t smallSize(Random& random) {
  return std::uniform_int_distribution<uint32_t>(16, 1024)(random);
}

template <template <class> class Pattern, class Allocator>
Side peerSide(std::string name, const Shared<Workload>& workload) {
  const Shared<Allocator> allocator([] { return std::make_unique<Allocator>(); });
  return patternSide<Pattern>(std::move(name), allocator, workload);
}

template <template <class> class Pattern>
Row pooledRow(std::string name, int operations) {
  const Shared<Workload> workload =
      sharedWorkload([] { return makeWorkload(kLiveBlocks, 43, smallSize); });
  const Shared<OurPooled> ours([] { return std::make_unique<OurPooled>(); });
  Row row{.area = "memory",
          .name = std::move(name),
          .operations = operations,
          .goal = Goal{3.0, {"glibc malloc"}}};
  row.prepare = [ours] { ours.get(); };
  row.ours = patternSide<Pattern>("ours", ours, workload);
  row.peers.push_back(peerSide<Pattern, Glibc>("glibc malloc", workload));
#ifdef BENCH_HAS_JEMALLOC
  row.peers.push_back(peerSide<Pattern, Jemalloc>("jemalloc", workload));
#endif
#ifdef BENCH_HAS_MIMALLOC
  row.peers.push_back(peerSide<Pattern, Mimalloc>("mimalloc", workload));
#endif
#ifdef BENCH_HAS_BOOST
  row.peers.push_back(peerSide<Pattern, BoostPools>("boost::pool + std::mutex", workload));
#endif
  return row;
}

void addPooledRows(Rows& rows) {
  rows.push_back(pooledRow<Stack>("pooled mode, LIFO: 16 to 1024 B mixed", kLifoDepth));
  rows.push_back(pooledRow<Population>("pooled mode, random: 16 to 1024 B mixed", 1));
}

}  // namespace

void addMemoryRows(Rows& rows) {
  addDirectRows(rows);
  addPooledRows(rows);
}

}  // namespace zeb::bench
