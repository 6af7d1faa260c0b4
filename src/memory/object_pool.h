// A pool of equal slots for one kind of small object.
//
// Slots come from pages of a fixed number of slots. A slot is an 8-byte link and the object behind
// it: while the slot is free the link leads to the page's next free slot, while it is in use to the
// page, so that giving back needs no search. Pages with a free slot and full pages stand on two
// lists. A page goes back to the library's memory with its last object; the pool keeps no spare.
// Objects may outlive a stop of the library: a page remembers which host it came from.
//
// Thread safety: any thread may take and give back. Page memory is taken and freed outside the
// lock.
#ifndef ZEB_MEMORY_OBJECT_POOL_H
#define ZEB_MEMORY_OBJECT_POOL_H

#include <cstdint>

#include "base/event_counter.h"
#include "platform/biased_lock.h"
#include "zeb/exports.h"

namespace zeb {

class ObjectPool {
 public:
  static constexpr uint64_t kPageHeaderBytes = 48;
  static constexpr uint64_t kLinkBytes = 8;

  // slotBytes counts the link. `pageMiss` is signalled whenever a page must be opened.
  constexpr ObjectPool(uint32_t slotsPerPage, uint64_t slotBytes,
                       const ZEB_T_MT::CZEBEventCounter& pageMiss) noexcept
      : slotsPerPage_(slotsPerPage), slotBytes_(slotBytes), pageMiss_(pageMiss) {}
  ObjectPool(const ObjectPool&) = delete;
  ObjectPool& operator=(const ObjectPool&) = delete;

  // slotBytes - 8 bytes with undefined contents, 8-byte aligned. Raises "Out of Memory".
  [[nodiscard]] void* take();
  // An object of take(), which nobody uses any more.
  void giveBack(void* object) noexcept;

  // How many slots are taken. Walks the pages under the lock, so that nobody else pays for it.
  [[nodiscard]] uint64_t taken() noexcept ZEB_EXCLUDES(lock_);

  [[nodiscard]] uint64_t pageBytes() const noexcept {
    return kPageHeaderBytes + slotsPerPage_ * slotBytes_;
  }

 private:
  struct Page;
  struct Slot;

  struct PageList {
    Page* head = nullptr;
    void pushHead(Page* page) noexcept;
    void remove(Page* page) noexcept;
    [[nodiscard]] uint64_t taken() const noexcept;
  };
  struct Slot {
    union {
      Slot* nextFree;
      Page* page;
    };
  };
  struct Page {
    Slot* freeSlots;
    uint64_t used;
    Page* next;
    Page* previous;
    PageList* list;
    ZEBObjFree freeThrough;  // of the host that the page came from; null: the library's own
  };
  static_assert(sizeof(Page) == kPageHeaderBytes && sizeof(Slot) == kLinkBytes);

  void* takeFrom(Page* page) noexcept ZEB_REQUIRES(lock_);
  void openPage(void* memory) noexcept ZEB_REQUIRES(lock_);
  [[nodiscard]] Slot* slotAt(Page* page, uint32_t index) const noexcept;

  const uint32_t slotsPerPage_;
  const uint64_t slotBytes_;
  const ZEB_T_MT::CZEBEventCounter& pageMiss_;
  BiasedLock lock_{500};
  PageList withFreeSlots_ ZEB_GUARDED_BY(lock_);
  PageList full_ ZEB_GUARDED_BY(lock_);
};

}  // namespace zeb

#endif
