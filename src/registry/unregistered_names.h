// The names of the interfaces that were unregistered last, for explaining why a look-up fails.
//
// A fixed number of records of fixed size: remembering takes no memory, holds no atom and leaves
// nothing to give back. A name that is unregistered again moves to the front; the one that was
// unregistered longest ago makes room. A name that is longer than its record is told from others by
// its length and hash.
//
// Thread safety: any thread may call anything.
#ifndef ZEB_REGISTRY_UNREGISTERED_NAMES_H
#define ZEB_REGISTRY_UNREGISTERED_NAMES_H

#include <array>
#include <cstdint>
#include <optional>

#include "platform/spin_lock.h"
#include "util/text_key.h"

namespace zeb::registry {

class UnregisteredNames {
 public:
  static constexpr uint64_t kMost = 64;
  static constexpr uint64_t kTextBytes = 96;

  constexpr UnregisteredNames() noexcept = default;
  UnregisteredNames(const UnregisteredNames&) = delete;
  UnregisteredNames& operator=(const UnregisteredNames&) = delete;

  // `count` is the change counter that the unregistration brought about.
  void remember(const TextKey& name, uint32_t count) noexcept ZEB_EXCLUDES(lock_);
  // That counter, if the name is remembered.
  [[nodiscard]] std::optional<uint32_t> find(const TextKey& name) noexcept ZEB_EXCLUDES(lock_);
  void forget() noexcept ZEB_EXCLUDES(lock_);

 private:
  struct Record {
    uint64_t order = 0;  // rises with each unregistration; 0: the record is free
    uint64_t hash = 0;
    uint64_t length = 0;
    uint32_t count = 0;
    bool isNull = false;
    std::array<char, kTextBytes> text{};  // the beginning of the name, without a zero

    [[nodiscard]] bool isFor(const TextKey& name) const noexcept;
  };

  [[nodiscard]] Record* findLocked(const TextKey& name) noexcept ZEB_REQUIRES(lock_);
  [[nodiscard]] Record& oldestLocked() noexcept ZEB_REQUIRES(lock_);

  SpinLock lock_{50};
  uint64_t lastOrder_ ZEB_GUARDED_BY(lock_) = 0;
  std::array<Record, kMost> records_ ZEB_GUARDED_BY(lock_){};
};

}  // namespace zeb::registry

#endif
