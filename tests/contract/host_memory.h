// A host's allocators that keep books: every block given out is known until it comes back, a block
// that comes back twice or was never given out is counted as foreign, and allocations can be made
// to fail or to throw.
//
// The procs of the library's host have no context argument, so the books are global, one set for
// each `Tag`: two tags are two hosts. Blocks are filled on their way out and on their way back, so
// that nothing can rely on what it did not write.
#ifndef ZEB_TESTS_CONTRACT_HOST_MEMORY_H
#define ZEB_TESTS_CONTRACT_HOST_MEMORY_H

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "contract/library.h"

namespace contract {

struct HostBooks {
  std::mutex mutex;
  std::unordered_map<void*, std::uint64_t> live;
  std::uint64_t allocations = 0;   // asked for, failed ones included
  std::uint64_t frees = 0;         // blocks that came back
  std::uint64_t foreignFrees = 0;  // blocks that came back twice or from elsewhere
  std::uint64_t calls = 0;         // of any of the procs
  std::uint64_t failAt = 0;        // this allocation, counted from now on, fails; 0: none
  bool failAllAfter = false;       // and so does every later one
  bool throwOnFailure = false;     // failing is throwing instead of answering null
  std::uint64_t sinceArmed = 0;
  std::vector<std::uint64_t>* sizes = nullptr;  // of the blocks given out meanwhile; null: not kept
};

struct HostException {};

template <int Tag = 0>
class HostMemory {
 public:
  static void* Alloc(std::uint64_t size) {
    HostBooks& books = Books();
    const std::lock_guard guard(books.mutex);
    ++books.calls;
    return AllocLocked(books, size);
  }

  static void* Realloc(void* block, std::uint64_t size) {
    HostBooks& books = Books();
    const std::lock_guard guard(books.mutex);
    ++books.calls;
    void* moved = AllocLocked(books, size);
    if (moved == nullptr || block == nullptr) return moved;
    const auto old = books.live.find(block);
    if (old != books.live.end()) std::memcpy(moved, block, std::min(old->second, size));
    FreeLocked(books, block);
    return moved;
  }

  static void Free(void* block) {
    HostBooks& books = Books();
    const std::lock_guard guard(books.mutex);
    ++books.calls;
    FreeLocked(books, block);
  }

  static std::uint64_t Size(void* block) {
    HostBooks& books = Books();
    const std::lock_guard guard(books.mutex);
    ++books.calls;
    const auto entry = books.live.find(block);
    return entry == books.live.end() ? 0 : entry->second;
  }

  // The page pair has books of its own in the tests that watch it: use another tag.
  static StartOptions WithObjectProcs(StartOptions options = {}) {
    options.objAlloc = &Alloc;
    options.objRealloc = &Realloc;
    options.objFree = &Free;
    options.objSize = &Size;
    return options;
  }

  static StartOptions WithPagePair(StartOptions options = {}) {
    options.pageAlloc = &Alloc;
    options.pageFree = &Free;
    return options;
  }

  static std::uint64_t LiveBlocks() {
    HostBooks& books = Books();
    const std::lock_guard guard(books.mutex);
    return books.live.size();
  }
  static std::uint64_t Allocations() { return Read(&HostBooks::allocations); }
  static std::uint64_t Frees() { return Read(&HostBooks::frees); }
  static std::uint64_t ForeignFrees() { return Read(&HostBooks::foreignFrees); }
  static std::uint64_t Calls() { return Read(&HostBooks::calls); }

  // The sizes of the blocks that were given out during an operation, in order.
  template <class Operation>
  static std::vector<std::uint64_t> SizesOf(Operation operation) {
    std::vector<std::uint64_t> sizes;
    KeepSizesIn(&sizes);
    operation();
    KeepSizesIn(nullptr);
    return sizes;
  }

  // Lets the `nth` allocation from now fail, once or together with all later ones.
  static void FailAt(std::uint64_t nth, bool andAllAfter = false, bool byThrowing = false) {
    HostBooks& books = Books();
    const std::lock_guard guard(books.mutex);
    books.failAt = nth;
    books.failAllAfter = andAllAfter;
    books.throwOnFailure = byThrowing;
    books.sinceArmed = 0;
  }

  // Ends the failing; true when an allocation has failed since FailAt.
  static bool StopFailing() {
    HostBooks& books = Books();
    const std::lock_guard guard(books.mutex);
    const bool failed = books.failAt != 0 && books.sinceArmed >= books.failAt;
    books.failAt = 0;
    return failed;
  }

 private:
  static HostBooks& Books() {
    static HostBooks books;
    return books;
  }

  static void KeepSizesIn(std::vector<std::uint64_t>* sizes) {
    HostBooks& books = Books();
    const std::lock_guard guard(books.mutex);
    books.sizes = sizes;
  }

  template <class Member>
  static Member Read(Member HostBooks::*member) {
    HostBooks& books = Books();
    const std::lock_guard guard(books.mutex);
    return books.*member;
  }

  static bool FailsNow(HostBooks& books) {
    if (books.failAt == 0) return false;
    ++books.sinceArmed;
    return books.sinceArmed == books.failAt ||
           (books.failAllAfter && books.sinceArmed > books.failAt);
  }

  static void* AllocLocked(HostBooks& books, std::uint64_t size) {
    ++books.allocations;
    if (FailsNow(books)) {
      if (books.throwOnFailure) throw HostException();
      return nullptr;
    }
    if (size > ~std::uint64_t{0} / 2) return nullptr;  // malloc need not be asked
    void* block = std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) return nullptr;
    std::memset(block, 0xA5, size);
    books.live.emplace(block, size);
    if (books.sizes != nullptr) books.sizes->push_back(size);
    return block;
  }

  static void FreeLocked(HostBooks& books, void* block) {
    const auto entry = books.live.find(block);
    if (entry == books.live.end()) {
      ++books.foreignFrees;
      return;
    }
    std::memset(block, 0x5A, entry->second);
    books.live.erase(entry);
    ++books.frees;
    std::free(block);
  }
};

}  // namespace contract

#endif
