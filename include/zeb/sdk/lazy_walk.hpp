// The walks over a list of objects that work between a start and a stop only.
//
// `Object` is an element with initialise(), terminate(), level() and older(), the next element of
// its list. Both the library's own list and that of a client module are walked by these.
#ifndef ZEB_SDK_LAZY_WALK_HPP
#define ZEB_SDK_LAZY_WALK_HPP

#include <cstdint>

namespace zeb::sdk {

// Levels outside these bounds are not initialised by an ordinary start.
inline constexpr int32_t kLowestLazyLevel = 0;
// The upper bound.
inline constexpr int32_t kHighestLazyLevel = 65000;

// Terminates every object before `end`, whatever its level, in list order.
template <class Object>
void terminateLazyObjects(Object* head, const Object* end = nullptr) {
  for (Object* object = head; object != end; object = object->older()) object->terminate();
}

// Initialises the objects whose level lies within the bounds, in list order. When one fails, the
// objects before it are terminated, and the result is false.
template <class Object>
bool initialiseLazyObjects(Object* head, int32_t lowest, int32_t highest) {
  for (Object* object = head; object != nullptr; object = object->older()) {
    if (object->level() < lowest || object->level() > highest) continue;
    if (object->initialise()) continue;
    terminateLazyObjects(head, object);
    return false;
  }
  return true;
}

}  // namespace zeb::sdk

#endif
