// Of many names, the few that are nearest to one that is not among them.
#ifndef ZEB_INSPECT_NEAREST_NAMES_H
#define ZEB_INSPECT_NEAREST_NAMES_H

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

#include "util/edit_distance.h"
#include "zeb/inspect.h"

namespace zeb::inspect {

class NearestNames {
 public:
  // `wanted` outlives this object and may be null: nothing is near to a null name, and a null name
  // is near to nothing.
  explicit NearestNames(const char* wanted) noexcept : wanted_(wanted) {}

  // Offer the names in sorted order: of names that are equally near the earlier one comes first.
  void offer(const char* name) noexcept {
    if (wanted_ == nullptr || name == nullptr) return;
    const uint64_t wantedLength = std::strlen(wanted_);
    const uint64_t length = std::strlen(name);
    const auto distance = editDistance(wanted_, wantedLength, name, length);
    if (!distance || *distance * 3 > std::max(wantedLength, length)) return;
    insert(name, *distance);
  }

  // The nearest first.
  [[nodiscard]] std::span<const char* const> names() const noexcept {
    return {names_.data(), count_};
  }

 private:
  void insert(const char* name, uint64_t distance) noexcept {
    size_t at = count_;
    while (at > 0 && distances_[at - 1] > distance) --at;
    if (at == names_.size()) return;
    count_ = std::min(count_ + 1, names_.size());
    std::copy_backward(names_.begin() + at, names_.begin() + (count_ - 1), names_.begin() + count_);
    std::copy_backward(distances_.begin() + at, distances_.begin() + (count_ - 1),
                       distances_.begin() + count_);
    names_[at] = name;
    distances_[at] = distance;
  }

  const char* const wanted_;
  size_t count_ = 0;
  std::array<const char*, ZEB_LOOKUP_MOST_NEAREST> names_{};
  std::array<uint64_t, ZEB_LOOKUP_MOST_NEAREST> distances_{};
};

}  // namespace zeb::inspect

#endif
