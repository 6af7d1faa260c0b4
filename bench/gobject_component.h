// Types of GLib's object system that do what containers do: an object has interfaces, holds data
// and ends it.
#ifndef ZEB_BENCH_GOBJECT_COMPONENT_H
#define ZEB_BENCH_GOBJECT_COMPONENT_H

#ifdef BENCH_HAS_GOBJECT

#include <glib-object.h>

#include <array>
#include <string>
#include <vector>

#include "zeb/types.h"

namespace zeb::bench {

constexpr size_t kGMethods = 8;
using GMethods = std::array<ZEBProc, kGMethods>;

// What g_type_interface_peek leads to.
struct GMethodTable {
  GTypeInterface parent;
  GMethods methods;
};

// `end`, when it is set, is called with the data by the last g_object_unref.
struct GComponent {
  GObject parent;
  void* data;
  void (*end)(void* data);
  std::array<uint64_t, 4> state;  // for data that lives in the object
};

struct GInterface {
  std::string name;
  const GMethods* methods = nullptr;  // null: all empty. Outlives the process's use of the type.
};

// The type of this name, registered on the first call. GLib keeps types until the process ends.
GType gComponentType(const std::string& name, const std::vector<GInterface>& interfaces);

GComponent* newGComponent(GType type);

}  // namespace zeb::bench

#endif

#endif
