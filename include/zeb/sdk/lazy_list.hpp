// Objects that exist from the load of a module to its unload but work only while the module is
// started as a client of the library.
//
// Such an object is static, derives from LazyTerminate and links itself at the head of its module's
// list when it is constructed. Starting the module (client_start.hpp) initialises the listed
// objects in list order, stopping it terminates them.
//
// Thread safety: none. The list changes at load and unload and is walked at start and stop.
#ifndef ZEB_SDK_LAZY_LIST_HPP
#define ZEB_SDK_LAZY_LIST_HPP

#include <cstdint>

namespace zeb::sdk {

class LazyTerminate;

// The lazy objects of one module, the latest constructed first.
class LazyList {
 public:
  constexpr LazyList() noexcept = default;
  LazyList(const LazyList&) = delete;
  LazyList& operator=(const LazyList&) = delete;

  // The object that was constructed last; null when there is none.
  [[nodiscard]] LazyTerminate* head() const noexcept { return head_; }

 private:
  friend class LazyTerminate;
  LazyTerminate* head_ = nullptr;
};

// A lazy object: the base of those that are listed.
class LazyTerminate {
 public:
  // The list outlives the object.
  LazyTerminate(int32_t level, LazyList& list) noexcept
      : level_(level), list_(list), older_(list.head_) {
    if (older_ != nullptr) older_->newer_ = this;
    list.head_ = this;
  }
  LazyTerminate(const LazyTerminate&) = delete;
  LazyTerminate& operator=(const LazyTerminate&) = delete;
  virtual ~LazyTerminate() {
    (newer_ != nullptr ? newer_->older_ : list_.head_) = older_;
    if (older_ != nullptr) older_->newer_ = newer_;
  }

  // False ends the start: the objects before this one are terminated, this one is not. Throws
  // nothing.
  virtual bool initialise() { return true; }
  // Called for every object of the list, also for one that was never initialised.
  virtual void terminate() {}
  // Drops what the object holds without giving it back.
  virtual void forget() {}

  // A start initialises the levels that it is told (client_start.hpp).
  [[nodiscard]] int32_t level() const noexcept { return level_; }
  // The object constructed before this one.
  [[nodiscard]] LazyTerminate* older() const noexcept { return older_; }

 private:
  const int32_t level_;
  LazyList& list_;
  LazyTerminate* older_;
  LazyTerminate* newer_ = nullptr;
};

}  // namespace zeb::sdk

// Names that older sources know.
namespace ZEB_T_MT {
// The class under the name that older sources know.
using LazyTerminate = zeb::sdk::LazyTerminate;
}  // namespace ZEB_T_MT

#endif
