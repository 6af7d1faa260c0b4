// Progress: where a long operation says how far it has come.
#ifndef ZEB_SDK_PROGRESS_HPP
#define ZEB_SDK_PROGRESS_HPP

#include <concepts>
#include <memory>

#include "zeb/sdk/error.hpp"

namespace zeb::sdk {

// A listener to an operation, and one reference to it.
class Progress : public Owner<detail::Counted<ZEBProgress, Progresses>> {
 public:
  using Base = Owner<detail::Counted<ZEBProgress, Progresses>>;

  Progress() noexcept = default;
  // Takes a reference over.
  explicit Progress(ZEBProgress* owned) noexcept : Base(adopt(owned)) {}

  // Calls `listener(done, total)`, which answers yes or no to the operation, on the operation's
  // thread. A listener that throws answers no. Throws std::bad_alloc.
  template <class Listener>
  requires std::predicate<Listener&, uint64_t, uint64_t>
  [[nodiscard]] static Progress to(Listener listener) {
    auto kept = std::make_unique<Listener>(std::move(listener));
    const auto update = [](void* data, uint64_t done, uint64_t total) -> int32_t {
      try {
        return (*static_cast<Listener*>(data))(done, total) ? 1 : 0;
      } catch (...) {
        return 0;
      }
    };
    const auto end = [](void* data) { delete static_cast<Listener*>(data); };
    // The data is the progress's in every case, a failure included.
    Progress progress(procs<Progresses>().NewClientProgress(kept.release(), update, end));
    if (!progress) throw std::bad_alloc();
    return progress;
  }

  [[nodiscard]] Progress share() const { return Progress(Base::share().handOver()); }

  // The listener's answer; no when there is no progress. The unit is the operation's own, a total
  // of 0 stands for unknown.
  // NOLINTNEXTLINE(modernize-use-nodiscard): many an operation tells and does not ask
  bool update(uint64_t done, uint64_t total) const {
    return get() != nullptr && procs<Progresses>().Update(get(), done, total) != 0;
  }
};

}  // namespace zeb::sdk

#endif
