#include "gobject_component.h"

#ifdef BENCH_HAS_GOBJECT

#include "harness.h"

namespace zeb::bench {

namespace {

// Of GObject, from which every type here is derived.
const GObjectClass* parentClass;

void finalize(GObject* object) {
  auto* component = reinterpret_cast<GComponent*>(object);
  if (component->end) component->end(component->data);
  parentClass->finalize(object);
}

void initialiseClass(gpointer classData, gpointer /*data*/) {
  parentClass = static_cast<GObjectClass*>(g_type_class_peek_parent(classData));
  static_cast<GObjectClass*>(classData)->finalize = finalize;
}

void initialiseInterface(gpointer table, gpointer methods) {
  if (methods) static_cast<GMethodTable*>(table)->methods = *static_cast<const GMethods*>(methods);
}

GType interfaceType(const std::string& name) {
  const GType known = g_type_from_name(name.c_str());
  if (known) return known;
  GTypeInfo info{};
  info.class_size = sizeof(GMethodTable);
  return g_type_register_static(G_TYPE_INTERFACE, name.c_str(), &info, GTypeFlags{});
}

}  // namespace

GType gComponentType(const std::string& name, const std::vector<GInterface>& interfaces) {
  const GType known = g_type_from_name(name.c_str());
  if (known) return known;
  GTypeInfo info{};
  info.class_size = sizeof(GObjectClass);
  info.class_init = initialiseClass;
  info.instance_size = sizeof(GComponent);
  const GType type = g_type_register_static(G_TYPE_OBJECT, name.c_str(), &info, GTypeFlags{});
  check(type, "a type cannot be registered with GLib");
  for (const GInterface& each : interfaces) {
    GInterfaceInfo filling{};
    filling.interface_init = initialiseInterface;
    filling.interface_data = const_cast<GMethods*>(each.methods);
    g_type_add_interface_static(type, interfaceType(each.name), &filling);
  }
  return type;
}

GComponent* newGComponent(GType type) {
  return static_cast<GComponent*>(g_object_new(type, nullptr));
}

}  // namespace zeb::bench

#endif
