// A doubly linked list whose links live in its elements.
//
// An element knows the list that it is on and leaves it when it is destroyed. New elements go to
// the head. The list counts its elements and owns none of them. Nothing here locks.
#ifndef ZEB_UTIL_INTRUSIVE_LIST_H
#define ZEB_UTIL_INTRUSIVE_LIST_H

#include <cstdint>

namespace zeb {

template <class T>
class double_linked_list;

template <class T, class Parent>
class double_linked_list_element : public Parent {
 public:
  double_linked_list_element() = default;
  double_linked_list_element(const double_linked_list_element&) = delete;
  double_linked_list_element& operator=(const double_linked_list_element&) = delete;

  // The neighbour linked before (older) and after (newer) this element, null at the ends.
  [[nodiscard]] T* older() const noexcept { return older_; }
  [[nodiscard]] T* newer() const noexcept { return newer_; }

 protected:
  ~double_linked_list_element() {
    if (list_ != nullptr) list_->remove(static_cast<T*>(this));
  }

 private:
  friend class double_linked_list<T>;
  T* older_ = nullptr;
  T* newer_ = nullptr;
  double_linked_list<T>* list_ = nullptr;
};

template <class T>
class double_linked_list {
 public:
  constexpr double_linked_list() noexcept = default;
  double_linked_list(const double_linked_list&) = delete;
  double_linked_list& operator=(const double_linked_list&) = delete;

  [[nodiscard]] T* head() const noexcept { return head_; }
  [[nodiscard]] uint64_t count() const noexcept { return count_; }

  void pushHead(T* element) noexcept {
    element->list_ = this;
    element->older_ = head_;
    element->newer_ = nullptr;
    if (head_ != nullptr) head_->newer_ = element;
    head_ = element;
    ++count_;
  }

  void remove(T* element) noexcept {
    (element->newer_ != nullptr ? element->newer_->older_ : head_) = element->older_;
    if (element->older_ != nullptr) element->older_->newer_ = element->newer_;
    element->older_ = element->newer_ = nullptr;
    element->list_ = nullptr;
    --count_;
  }

 private:
  T* head_ = nullptr;
  uint64_t count_ = 0;
};

}  // namespace zeb

#endif
