// Copying records and their texts out of a structure that is walked under its lock.
//
// Memory cannot be taken under the lock, so the first walk only measures and the next one copies; a
// structure that has grown in between is measured again by the same walk.
#ifndef ZEB_INSPECT_RECORD_COPIER_H
#define ZEB_INSPECT_RECORD_COPIER_H

#include <cstdint>
#include <cstring>
#include <span>

#include "base/checked_size.h"
#include "inspect/snapshot_memory.h"

namespace zeb::inspect {

// How much a snapshot holds.
struct Extent {
  uint64_t records = 0;
  uint64_t textBytes = 0;
};

template <class Record>
class RecordCopier {
 public:
  // Only measures.
  RecordCopier() noexcept = default;
  // Copies as much as the memory was made for.
  RecordCopier(void* memory, const Extent& room) noexcept
      : records_(static_cast<Record*>(memory)),
        text_(reinterpret_cast<char*>(records_ + room.records)),
        room_(room) {}

  // The place of the next record, whose texts take so many bytes, or null if it does not fit.
  [[nodiscard]] Record* add(uint64_t textBytes) noexcept {
    const uint64_t index = needed_.records++;
    needed_.textBytes += textBytes;
    return complete() ? records_ + index : nullptr;
  }

  // For the record that add gave a place to. Copies the zero as well; null stays null.
  [[nodiscard]] const char* copy(const char* text, uint64_t length) noexcept {
    if (text == nullptr) return nullptr;
    char* copied = text_;
    std::memcpy(copied, text, length + 1);
    text_ += length + 1;
    return copied;
  }

  [[nodiscard]] const Extent& needed() const noexcept { return needed_; }
  [[nodiscard]] bool complete() const noexcept {
    return needed_.records <= room_.records && needed_.textBytes <= room_.textBytes;
  }

 private:
  Record* records_ = nullptr;
  char* text_ = nullptr;
  Extent room_;
  Extent needed_;
};

template <class Record>
struct Records {
  SnapshotMemory memory;
  uint64_t count;

  [[nodiscard]] std::span<Record> all() const noexcept {
    return {static_cast<Record*>(memory.data()), count};
  }
};

// `walk(copier)` adds every record to the copier, under the lock of what it walks. Raises what
// allocation raises.
template <class Record, class Walk>
[[nodiscard]] Records<Record> copyRecords(Walk walk) {
  RecordCopier<Record> measuring;
  walk(measuring);
  for (Extent room = measuring.needed();;) {
    SnapshotMemory memory(sumOfSizes(sizeOfMany(room.records, sizeof(Record)), room.textBytes));
    RecordCopier<Record> copier(memory.data(), room);
    walk(copier);
    if (copier.complete()) return {std::move(memory), copier.needed().records};
    room = copier.needed();
  }
}

}  // namespace zeb::inspect

#endif
