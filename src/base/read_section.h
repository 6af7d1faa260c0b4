// Searching shared structures without a lock, and freeing what such searches may still see.
//
// A reader announces itself in a cell of its own thread (ReadSection), searches, and leaves. A
// writer, under the lock of its structure, first unlinks an object and then gives it to a
// RetireList, which hands it back for freeing as soon as every section that could have reached it
// has ended. Nobody waits for anybody: what is still in sight is handed back by a later call.
//
// Why that is safe: entering stores to the cell and passes a light fence before it searches; a
// writer unlinks and passes the heavy fence before it looks at the cells
// (platform/asymmetric_fence.h). So either the writer sees the section under way, and frees nothing
// until that cell has moved on; or the section sees the object unlinked, and cannot find it.
// Leaving is a release store that the writer's look acquires, so the reader's last access happens
// before the object is freed.
//
// The heavy fence is dear, so objects are collected and looked after by the batch. It is not needed
// at all while the writer's is the only thread that has ever had a cell.
//
// Sections do not nest, and nothing is called out of a section.
#ifndef ZEB_BASE_READ_SECTION_H
#define ZEB_BASE_READ_SECTION_H

#include <array>
#include <atomic>
#include <cstdint>

#include "platform/asymmetric_fence.h"
#include "platform/thread_slot.h"

namespace zeb {

namespace read_section {
// Odd while the thread that owns the slot is in a section.
struct alignas(64) Cell {
  std::atomic<uint64_t> sequence{0};
};
extern constinit std::array<Cell, kExclusiveThreadSlots> cells;

// Where every cell stood at one moment.
struct Moment {
  std::array<uint64_t, kExclusiveThreadSlots> sequences{};
  bool anybodyReading = false;
  bool proven = true;  // false: the fence was refused, and nothing is known

  // With the heavy fence before it.
  static Moment now() noexcept;
  // True when every section that was under way at that moment has ended.
  [[nodiscard]] bool passed() const noexcept;
};

// True when the calling thread is the only one that has ever had a cell, and is in no section.
[[nodiscard]] bool nobodyCanBeReading() noexcept;
}  // namespace read_section

class ReadSection {
 public:
  ReadSection() noexcept {
    const unsigned slot = threadSlot();
    if (slot == kSharedThreadSlot) return;
    cell_ = &read_section::cells[slot].sequence;
    storeThenLightFence(*cell_, cell_->load(std::memory_order_relaxed) + 1);
  }
  ~ReadSection() {
    if (cell_ == nullptr) return;
    cell_->store(cell_->load(std::memory_order_relaxed) + 1, std::memory_order_release);
  }
  ReadSection(const ReadSection&) = delete;
  ReadSection& operator=(const ReadSection&) = delete;

  // False for a thread that has no cell of its own: it must search under the lock instead.
  [[nodiscard]] bool entered() const noexcept { return cell_ != nullptr; }

 private:
  std::atomic<uint64_t>* cell_ = nullptr;
};

// Objects that are unlinked but may still be in somebody's sight. `T` offers `T* nextRetired`. The
// owner's lock guards the list. Up to `kBatch` - 1 objects may wait for company before anybody
// looks whether they are still seen.
template <class T, unsigned kBatch = 1>
class RetireList {
 public:
  constexpr RetireList() noexcept = default;

  // The object is unlinked already.
  void add(T* object) noexcept {
    object->nextRetired = fresh_;
    fresh_ = object;
    ++freshCount_;
  }

  // A chain of objects that nobody can see any more, not necessarily of all of them. Free them
  // after leaving the lock.
  [[nodiscard]] T* takeUnseen() noexcept {
    if (waiting_ != nullptr && since_.passed()) moveAll(waiting_, unseen_);
    if (fresh_ != nullptr && read_section::nobodyCanBeReading()) {
      moveAll(waiting_, unseen_);
      moveFresh(unseen_);
      return takeSome(~0u);
    }
    if (freshCount_ >= kBatch && waiting_ == nullptr) {
      since_ = read_section::Moment::now();
      moveFresh(since_.anybodyReading ? waiting_ : unseen_);
    }
    return takeSome(kAtOnce);
  }

  // The same at the price of a heavy fence: all that nobody can see now, however few they are.
  [[nodiscard]] T* takeAllUnseen() noexcept {
    const auto moment = read_section::Moment::now();
    if (!moment.anybodyReading) {
      moveAll(waiting_, unseen_);
      moveFresh(unseen_);
    } else if (waiting_ == nullptr) {
      since_ = moment;
      moveFresh(waiting_);
    }
    return takeSome(~0u);
  }

  // All of them. Only while no other thread uses the library.
  [[nodiscard]] T* takeAll() noexcept {
    T* all = nullptr;
    moveAll(unseen_, all);
    moveAll(waiting_, all);
    moveFresh(all);
    return all;
  }

 private:
  // A batch is handed out little by little: an allocator that gets many blocks at once leaves its
  // fast path.
  static constexpr unsigned kAtOnce = kBatch > 1 ? 2 : ~0u;

  T* takeSome(unsigned most) noexcept {
    T* some = nullptr;
    for (; unseen_ != nullptr && most > 0; --most) moveOne(unseen_, some);
    return some;
  }

  static void moveOne(T*& from, T*& to) noexcept {
    T* object = from;
    from = object->nextRetired;
    object->nextRetired = to;
    to = object;
  }

  static void moveAll(T*& from, T*& to) noexcept {
    while (from != nullptr) moveOne(from, to);
  }

  void moveFresh(T*& to) noexcept {
    moveAll(fresh_, to);
    freshCount_ = 0;
  }

  T* fresh_ = nullptr;  // retired after `since_`
  unsigned freshCount_ = 0;
  T* waiting_ = nullptr;  // retired before `since_`
  T* unseen_ = nullptr;   // nobody can see them
  read_section::Moment since_;
};

// Calls `dispose` with every object of a chain that a RetireList handed out.
template <class T, class Dispose>
void disposeRetired(T* chain, Dispose dispose) {
  while (chain != nullptr) {
    T* next = chain->nextRetired;
    dispose(chain);
    chain = next;
  }
}

}  // namespace zeb

#endif
