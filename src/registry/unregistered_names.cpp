#include "registry/unregistered_names.h"

#include <algorithm>
#include <cstring>

namespace zeb::registry {

bool UnregisteredNames::Record::isFor(const TextKey& name) const noexcept {
  if (order == 0 || isNull != (name.text == nullptr)) return false;
  if (hash != name.hash || length != name.length) return false;
  return isNull || std::memcmp(text.data(), name.text, std::min(length, kTextBytes)) == 0;
}

void UnregisteredNames::remember(const TextKey& name, uint32_t count) noexcept {
  const SpinGuard guard(lock_);
  Record* known = findLocked(name);
  Record& record = known != nullptr ? *known : oldestLocked();
  record.order = ++lastOrder_;
  record.hash = name.hash;
  record.length = name.length;
  record.count = count;
  record.isNull = name.text == nullptr;
  if (name.text != nullptr) {
    std::memcpy(record.text.data(), name.text, std::min(name.length, kTextBytes));
  }
}

std::optional<uint32_t> UnregisteredNames::find(const TextKey& name) noexcept {
  const SpinGuard guard(lock_);
  const Record* record = findLocked(name);
  return record != nullptr ? std::optional(record->count) : std::nullopt;
}

void UnregisteredNames::forget() noexcept {
  const SpinGuard guard(lock_);
  for (Record& record : records_) record.order = 0;
}

UnregisteredNames::Record* UnregisteredNames::findLocked(const TextKey& name) noexcept {
  auto* const found = std::find_if(records_.begin(), records_.end(),
                                   [&](const Record& record) { return record.isFor(name); });
  return found != records_.end() ? found : nullptr;
}

UnregisteredNames::Record& UnregisteredNames::oldestLocked() noexcept {
  return *std::min_element(records_.begin(), records_.end(),
                           [](const Record& a, const Record& b) { return a.order < b.order; });
}

}  // namespace zeb::registry
