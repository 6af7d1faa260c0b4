// Gives a global variable its old value back when the test is over.
#ifndef ZEB_TESTS_SUPPORT_RESTORED_H
#define ZEB_TESTS_SUPPORT_RESTORED_H

namespace zeb_test {

template <class T>
class Restored {
 public:
  explicit Restored(T& variable) : variable_(variable), old_(variable) {}
  Restored(T& variable, const T& meanwhile) : Restored(variable) { variable = meanwhile; }
  ~Restored() { variable_ = old_; }
  Restored(const Restored&) = delete;
  Restored& operator=(const Restored&) = delete;

 private:
  T& variable_;
  const T old_;
};

}  // namespace zeb_test

#endif
