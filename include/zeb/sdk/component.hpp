// Components: containers that bind interfaces and named instances at run time.
#ifndef ZEB_SDK_COMPONENT_HPP
#define ZEB_SDK_COMPONENT_HPP

#include <memory>
#include <string_view>

#include "zeb/sdk/atom.hpp"

namespace zeb::sdk {

// A container and one reference to it. Operations throw Failure.
class Component : public Owner<detail::Counted<ZEBContainer, Containers>> {
 public:
  using Base = Owner<detail::Counted<ZEBContainer, Containers>>;

  Component() noexcept = default;
  // Takes a reference over.
  explicit Component(ZEBContainer* owned) noexcept : Base(adopt(owned)) {}

  // An empty component. Throws Failure, as everything here does.
  [[nodiscard]] static Component make() {
    ZEBContainer* container = nullptr;
    check(procs<Containers>().NewContainer(&container));
    return Component(container);
  }

  // A component with one interface and one instance, the cheapest to make. It owns the instance.
  template <class T>
  [[nodiscard]] static Component make(std::unique_ptr<T> instance, const Atom& instanceName,
                                      const Atom& interfaceName) {
    ZEBContainer* container = nullptr;
    // The data is the component's in every case, a failure included.
    check(procs<Containers>().NewFullContainer(&container, instance.release(), instanceName.get(),
                                               &end<T>, interfaceName.get(), nullptr, nullptr, 0));
    return Component(container);
  }

  [[nodiscard]] Component share() const { return Component(Base::share().handOver()); }

  // Adds an interface before the others; one that is there already stays where it is.
  void addInterface(const Atom& name) const {
    check(procs<Containers>().RegisterInterface(get(), name.get()));
  }

  // The component owns the instance.
  template <class T>
  void addInstance(std::unique_ptr<T> instance, const Atom& name) const {
    if (get() == nullptr) return;
    check(procs<Containers>().RegisterInstance(get(), instance.release(), name.get(), &end<T>));
  }

  // The instance of that name, still the component's; null when there is none.
  template <class T>
  [[nodiscard]] T* instance(const Atom& name) const {
    return static_cast<T*>(procs<Containers>().GetInstance(get(), name.get()));
  }

  // The proc that the component's latest interface with that method has; null when none has it.
  template <class Proc>
  [[nodiscard]] Proc method(const Atom& method, const Atom& proc) const {
    ZEBProc found = nullptr;
    check(procs<Containers>().GetMethod(&found, get(), method.get(), proc.get(), 0));
    return reinterpret_cast<Proc>(found);
  }

  // The interfaces' names joined by ".", the earlier ones first.
  [[nodiscard]] std::string_view signature() const {
    const char* text = procs<Containers>().GetSignature(get());
    return text != nullptr ? text : "";
  }

 private:
  template <class T>
  static void end(void* instance) {
    delete static_cast<T*>(instance);
  }
};

}  // namespace zeb::sdk

#endif
