// The library started, with the procs that rows about containers call and the atoms that they name
// things by.
#ifndef ZEB_BENCH_CONTAINER_HOST_H
#define ZEB_BENCH_CONTAINER_HOST_H

#include <string>
#include <vector>

#include "library.h"
#include "zeb/zeb.h"

namespace zeb::bench {

class ContainerHost {
 public:
  ContainerHost();
  ~ContainerHost();
  ContainerHost(const ContainerHost&) = delete;
  ContainerHost& operator=(const ContainerHost&) = delete;

  const ZEBContainerProcs& containers() const { return containers_; }
  const ZEBStringProcs& strings() const { return strings_; }

  // The atom of a text, held until the host goes.
  ZEBString* atom(const std::string& text);

  void registerProc(const std::string& interfaceName, const std::string& method,
                    const std::string& proc, ZEBProc function);

  // The rest ends the process when the library refuses.
  ZEBContainer* newContainer() const;
  void addInterface(ZEBContainer* container, ZEBString* name) const;
  void addInstance(ZEBContainer* container, void* data, ZEBString* name,
                   ZEBContainerDestroy destroy) const;

 private:
  Session session_;
  ZEBContainerProcs containers_;
  ZEBStringProcs strings_;
  ZEBRegisterProcAddress registerProcAddress_;
  std::vector<ZEBString*> atoms_;
};

}  // namespace zeb::bench

#endif
