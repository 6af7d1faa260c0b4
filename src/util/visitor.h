// A reference to something that can be called, for handing a lambda to a function that is no
// template. It owns nothing: the lambda outlives the call that it is handed to.
#ifndef ZEB_UTIL_VISITOR_H
#define ZEB_UTIL_VISITOR_H

namespace zeb {

template <class... Arguments>
class Visitor {
 public:
  // Not explicit: a lambda is handed over as it stands.
  template <class Callable>
  Visitor(const Callable& callable) noexcept
      : callable_(&callable), call_([](const void* target, Arguments... arguments) {
          (*static_cast<const Callable*>(target))(arguments...);
        }) {}

  void operator()(Arguments... arguments) const { call_(callable_, arguments...); }

 private:
  const void* callable_;
  void (*call_)(const void* target, Arguments... arguments);
};

}  // namespace zeb

#endif
