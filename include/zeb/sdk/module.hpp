// What a module has of its own as a client of the library: its list of lazy objects and its binding
// of the event interface. Every shared object and the executable have one each.
#ifndef ZEB_SDK_MODULE_HPP
#define ZEB_SDK_MODULE_HPP

#include "zeb/sdk/event_binding.hpp"
#include "zeb/sdk/lazy_list.hpp"

// An inline variable of ordinary visibility would be one for the whole process.
#if defined(__GNUC__)
#define ZEB_SDK_MODULE_LOCAL [[gnu::visibility("hidden")]]
#else
#define ZEB_SDK_MODULE_LOCAL
#endif

namespace zeb::sdk {

struct Module {
  LazyList lazyList;
  EventBinding events;
  bool started = false;
};

// The module that this is compiled into. Objects take it as a default argument, which their
// definition evaluates, and keep the reference: no function that modules might share reads it.
ZEB_SDK_MODULE_LOCAL inline constinit Module thisModule;

}  // namespace zeb::sdk

#endif
