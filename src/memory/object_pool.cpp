#include "memory/object_pool.h"

#include "memory/object_memory.h"

namespace zeb {

void ObjectPool::PageList::pushHead(Page* page) noexcept {
  page->list = this;
  page->previous = nullptr;
  page->next = head;
  if (head != nullptr) head->previous = page;
  head = page;
}

void ObjectPool::PageList::remove(Page* page) noexcept {
  (page->previous != nullptr ? page->previous->next : head) = page->next;
  if (page->next != nullptr) page->next->previous = page->previous;
}

uint64_t ObjectPool::PageList::taken() const noexcept {
  uint64_t slots = 0;
  for (const Page* page = head; page != nullptr; page = page->next) slots += page->used;
  return slots;
}

uint64_t ObjectPool::taken() noexcept {
  const BiasedGuard guard(lock_);
  return withFreeSlots_.taken() + full_.taken();
}

ObjectPool::Slot* ObjectPool::slotAt(Page* page, uint32_t index) const noexcept {
  auto* slots = reinterpret_cast<unsigned char*>(page + 1);
  return reinterpret_cast<Slot*>(slots + index * slotBytes_);
}

void* ObjectPool::take() {
  {
    BiasedGuard guard(lock_);
    if (withFreeSlots_.head != nullptr) return takeFrom(withFreeSlots_.head);
  }
  pageMiss_.signal();
  void* memory = allocObject(pageBytes());
  BiasedGuard guard(lock_);
  openPage(memory);
  return takeFrom(withFreeSlots_.head);
}

void* ObjectPool::takeFrom(Page* page) noexcept {
  Slot* slot = page->freeSlots;
  // NOLINTNEXTLINE(clang-analyzer-core.NullDereference): pages on this list have a free slot
  page->freeSlots = slot->nextFree;
  ++page->used;
  slot->page = page;
  if (page->freeSlots == nullptr) {
    withFreeSlots_.remove(page);
    full_.pushHead(page);
  }
  return slot + 1;
}

void ObjectPool::openPage(void* memory) noexcept {
  Page* page = new (memory) Page{};
  page->freeThrough = hostState.objects.free;
  withFreeSlots_.pushHead(page);
  for (uint32_t index = slotsPerPage_; index-- > 0;) {
    Slot* slot = slotAt(page, index);
    slot->nextFree = page->freeSlots;
    page->freeSlots = slot;
  }
}

void ObjectPool::giveBack(void* object) noexcept {
  Slot* slot = static_cast<Slot*>(object) - 1;
  Page* emptied = nullptr;
  {
    BiasedGuard guard(lock_);
    Page* page = slot->page;
    slot->nextFree = page->freeSlots;
    page->freeSlots = slot;
    --page->used;
    if (page->used == 0) {
      page->list->remove(page);
      emptied = page;
    } else if (page->used == slotsPerPage_ - 1) {
      full_.remove(page);
      withFreeSlots_.pushHead(page);
    }
  }
  if (emptied != nullptr) freeObjectThrough(emptied->freeThrough, emptied);
}

}  // namespace zeb
