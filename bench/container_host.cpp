#include "container_host.h"

#include "harness.h"

namespace zeb::bench {

ContainerHost::ContainerHost() {
  const ZEBGetProcAddress getProcAddress = session_.getProcAddress();
  check(ZEBFetchContainerProcs(getProcAddress, &containers_), "container procs are missing");
  check(ZEBFetchStringProcs(getProcAddress, &strings_), "string procs are missing");
  registerProcAddress_ = reinterpret_cast<ZEBRegisterProcAddress>(
      getProcAddress("ZEB", "ZEBRegisterProcAddress", "ZEBRegisterProcAddress"));
  check(registerProcAddress_, "ZEBRegisterProcAddress is not found");
}

ContainerHost::~ContainerHost() {
  for (ZEBString* atom : atoms_) strings_.DeleteStringAtom(atom);
}

ZEBString* ContainerHost::atom(const std::string& text) {
  ZEBString* atom = strings_.NewStringAtom(text.c_str());
  check(atom, "an atom cannot be made");
  atoms_.push_back(atom);
  return atom;
}

void ContainerHost::registerProc(const std::string& interfaceName, const std::string& method,
                                 const std::string& proc, ZEBProc function) {
  check(registerProcAddress_(interfaceName.c_str(), method.c_str(), proc.c_str(), function) == 1,
        "a proc cannot be registered");
}

ZEBContainer* ContainerHost::newContainer() const {
  ZEBContainer* container = nullptr;
  check(!containers_.NewContainer(&container) && container, "a container cannot be made");
  return container;
}

void ContainerHost::addInterface(ZEBContainer* container, ZEBString* name) const {
  check(!containers_.RegisterInterface(container, name), "an interface cannot be added");
}

void ContainerHost::addInstance(ZEBContainer* container, void* data, ZEBString* name,
                                ZEBContainerDestroy destroy) const {
  check(!containers_.RegisterInstance(container, data, name, destroy),
        "an instance cannot be added");
}

}  // namespace zeb::bench
