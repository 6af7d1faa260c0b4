// The memory procedures of a host that keeps account: what it gave, what came back, when it refuses
// and when it throws.
//
// The procedures are plain functions, so there is one host of each kind at a time. Its own lock
// makes it safe for threads. What is still out when the host goes is freed; a test that means
// "nothing was lost" says so with live().
#ifndef ZEB_TESTS_SUPPORT_COUNTING_MEMORY_H
#define ZEB_TESTS_SUPPORT_COUNTING_MEMORY_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <stdexcept>
#include <vector>

#include "base/host_state.h"
#include "support/restored.h"

namespace zeb_test {

struct HostThrew : std::runtime_error {
  HostThrew() : std::runtime_error("thrown by the host's memory procedure") {}
};

class MemoryAccount {
 public:
  using Blocks = std::map<unsigned char*, uint64_t>;  // address and size

 private:
  template <class Function>
  auto locked(Function function) const {
    const std::lock_guard guard(mutex_);
    return function();
  }

  mutable std::mutex mutex_;
  Blocks out_;
  std::vector<unsigned char*> lost_;
  std::vector<uint64_t> requests_;
  unsigned char* lastGiven_ = nullptr;
  uint64_t asked_ = 0;
  uint64_t takenBack_ = 0;
  uint64_t granted_ = UINT64_MAX;
  bool throwsOnGive_ = false;
  bool throwsOnTakeBack_ = false;

 public:
  MemoryAccount() = default;
  MemoryAccount(const MemoryAccount&) = delete;
  MemoryAccount& operator=(const MemoryAccount&) = delete;
  ~MemoryAccount() {
    for (const auto& block : out_) std::free(block.first);
    for (unsigned char* block : lost_) std::free(block);
  }

  // Lets `requests` more requests succeed; those after them are refused with null.
  void grant(uint64_t requests) {
    locked([&] { granted_ = requests; });
  }
  void grantAll() { grant(UINT64_MAX); }
  void throwOnGive(bool throws) {
    locked([&] { throwsOnGive_ = throws; });
  }
  // The block is then lost: it is neither the heap's nor given back properly.
  void throwOnTakeBack(bool throws) {
    locked([&] { throwsOnTakeBack_ = throws; });
  }

  [[nodiscard]] Blocks blocks() const {
    return locked([&] { return out_; });
  }
  [[nodiscard]] uint64_t live() const {
    return locked([&] { return out_.size(); });
  }
  [[nodiscard]] uint64_t given() const {
    return locked([&] { return requests_.size(); });
  }
  [[nodiscard]] uint64_t takenBack() const {
    return locked([&] { return takenBack_; });
  }
  // Requests of any outcome.
  [[nodiscard]] uint64_t asked() const {
    return locked([&] { return asked_; });
  }
  [[nodiscard]] unsigned char* lastGiven() const {
    return locked([&] { return lastGiven_; });
  }
  // The sizes asked for, refused requests left out.
  [[nodiscard]] std::vector<uint64_t> requests() const {
    return locked([&] { return requests_; });
  }
  [[nodiscard]] uint64_t sizeOf(void* block) const {
    return locked([&] { return out_.at(static_cast<unsigned char*>(block)); });
  }

  // Garbage, not zeros: nothing may rely on fresh memory.
  void* give(uint64_t size) {
    const std::lock_guard guard(mutex_);
    ++asked_;
    if (throwsOnGive_) throw HostThrew();
    if (granted_ == 0) return nullptr;
    if (granted_ != UINT64_MAX) --granted_;
    auto* block = static_cast<unsigned char*>(std::malloc(std::max<uint64_t>(size, 1)));
    if (block == nullptr) return nullptr;
    std::memset(block, 0xA5, size);
    out_[block] = size;
    requests_.push_back(size);
    lastGiven_ = block;
    return block;
  }

  void takeBack(void* memory) {
    const std::lock_guard guard(mutex_);
    auto* block = static_cast<unsigned char*>(memory);
    if (out_.erase(block) == 0) {
      ADD_FAILURE() << "a block came back that is not out: " << memory;
      return;
    }
    ++takenBack_;
    if (throwsOnTakeBack_) {
      lost_.push_back(block);
      throw HostThrew();
    }
    std::free(block);
  }
};

// The host's allocator pair.
class CountingPages : public MemoryAccount {
 public:
  CountingPages() { current_ = this; }
  ~CountingPages() { current_ = nullptr; }
  CountingPages(const CountingPages&) = delete;
  CountingPages& operator=(const CountingPages&) = delete;

 private:
  inline static MemoryAccount* current_ = nullptr;

  static void* alloc(uint64_t size) { return current_->give(size); }
  static void free(void* block) { current_->takeBack(block); }

 public:
  static constexpr zeb::PageSource source{.alloc = alloc, .free = free};
};

// The host's four memory procs, installed as the library's object memory for its lifetime.
class CountingHost : public MemoryAccount {
 public:
  CountingHost() : objects_(zeb::hostState.objects, procs) { current_ = this; }
  ~CountingHost() { current_ = nullptr; }
  CountingHost(const CountingHost&) = delete;
  CountingHost& operator=(const CountingHost&) = delete;

 private:
  inline static MemoryAccount* current_ = nullptr;

  static void* alloc(uint64_t size) { return current_->give(size); }
  static void* realloc(void* block, uint64_t size) {
    void* moved = current_->give(size);
    if (moved == nullptr || block == nullptr) return moved;
    std::memcpy(moved, block, std::min(size, current_->sizeOf(block)));
    current_->takeBack(block);
    return moved;
  }
  static void free(void* block) { current_->takeBack(block); }
  static uint64_t size(void* block) { return current_->sizeOf(block); }

 public:
  static constexpr zeb::ObjectAllocatorSet procs{
      .alloc = alloc, .realloc = realloc, .free = free, .size = size};

 private:
  const Restored<zeb::ObjectAllocatorSet> objects_;
};

}  // namespace zeb_test

#endif
