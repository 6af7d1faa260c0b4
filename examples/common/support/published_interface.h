// An interface that stays registered for as long as a C++ object lives.
#ifndef EXAMPLES_COMMON_SUPPORT_PUBLISHED_INTERFACE_H
#define EXAMPLES_COMMON_SUPPORT_PUBLISHED_INTERFACE_H

#include <new>
#include <span>
#include <stdexcept>
#include <string>

#include "common/support/services.h"

// Turns one row of an interface's list into an entry for PublishedInterface. It reads the function
// from the typed struct `procs`, so that a function of the wrong signature does not compile.
#define EXAMPLES_PUBLISH_ROW(member, method, proc) \
  ZEBProcTableEntry{#method, #proc, reinterpret_cast<ZEBProc>(procs.member)},

namespace examples {

// What is to be published: an interface's name and its procs. Both outlive the publication.
struct Publication {
  const char* interfaceName;
  std::span<const ZEBProcTableEntry> entries;
};

class PublishedInterface {
 public:
  // Registers every entry or none. Throws std::runtime_error if one of the names is taken,
  // std::bad_alloc if memory is short. The services must outlive this object.
  PublishedInterface(const Services& services, const Publication& publication)
      : services_(services), name_(publication.interfaceName) {
    // Unregistering removes the whole interface, whoever registered it. Looking before the first
    // registration keeps a failure here from taking another module's procs away.
    for (const ZEBProcTableEntry& entry : publication.entries) {
      if (isTaken(entry)) throw std::runtime_error(std::string(name_) + " is published already");
    }
    for (const ZEBProcTableEntry& entry : publication.entries) {
      if (add(entry)) continue;
      services_.frame.UnregisterInterface(name_);
      throw std::bad_alloc();
    }
  }
  ~PublishedInterface() { services_.frame.UnregisterInterface(name_); }

  PublishedInterface(const PublishedInterface&) = delete;
  PublishedInterface& operator=(const PublishedInterface&) = delete;

 private:
  [[nodiscard]] bool isTaken(const ZEBProcTableEntry& entry) const {
    return services_.getProcAddress(name_, entry.methodName, entry.procName) != nullptr;
  }
  [[nodiscard]] bool add(const ZEBProcTableEntry& entry) const {
    return services_.frame.RegisterProcAddress(name_, entry.methodName, entry.procName,
                                               entry.proc) == 1;
  }

  const Services& services_;
  const char* name_;
};

}  // namespace examples

#endif
