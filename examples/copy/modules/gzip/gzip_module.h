// What the files of the gzip module share.
#ifndef COPY_GZIP_GZIP_MODULE_H
#define COPY_GZIP_GZIP_MODULE_H

#include "common/support/atom.h"
#include "common/support/guard.h"
#include "common/support/module_base.h"
#include "interfaces/gzip.h"

namespace examples {

// The names under which a writing stream is found by the module's own procs.
struct WriterNames {
  // Throws std::bad_alloc.
  explicit WriterNames(const Services& services)
      : interfaceName(Atom::intern(services.strings, COPY_GZIP_WRITER_INTERFACE)),
        instance(Atom::intern(services.strings, COPY_GZIP_WRITER_INSTANCE)) {}

  Atom interfaceName;
  Atom instance;
};

class GzipModule : public ModuleBase<GzipModule, WriterNames> {
 public:
  GzipModule();
};

// The barrier of all procs of the module.
template <class Body>
ZEBErrorObject* guardedGzip(const Body& body) noexcept {
  return guarded(GzipModule::services().errors, COPY_GZIP_COMPONENT, COPY_GZIP_ERROR_FAILED, body);
}

ZEBErrorObject* makeReader(ZEBContainer** stream, const char* path);
ZEBErrorObject* makeWriter(ZEBContainer** stream, const char* path);

// What the module publishes.
Publication gzipPublication();
Publication writerPublication();

}  // namespace examples

#endif
