// A reference to something that can be called, for handing a lambda to a function that is no
// template. It owns nothing: the lambda outlives the call that it is handed to.
#ifndef ZEB_UTIL_VISITOR_H
#define ZEB_UTIL_VISITOR_H

#include <type_traits>

namespace zeb {

template <class... Arguments>
class Visitor {
 public:
  template <class Callable>
  requires(!std::is_same_v<std::remove_cvref_t<Callable>, Visitor>)
      // NOLINTNEXTLINE(google-explicit-constructor): a lambda is handed over as it stands
      Visitor(Callable&& callable)
  noexcept
      : callable_(&callable), call_([](void* target, Arguments... arguments) {
          (*static_cast<std::remove_reference_t<Callable>*>(target))(arguments...);
        }) {}

  void operator()(Arguments... arguments) const { call_(callable_, arguments...); }

 private:
  void* callable_;
  void (*call_)(void* target, Arguments... arguments);
};

}  // namespace zeb

#endif
