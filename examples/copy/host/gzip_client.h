// The gzip module as the host sees it: an interface found by name.
#ifndef COPY_HOST_GZIP_CLIENT_H
#define COPY_HOST_GZIP_CLIENT_H

#include <filesystem>

#include "common/support/services.h"
#include "common/support/stream.h"
#include "interfaces/gzip.h"

namespace examples {

class GzipClient {
 public:
  // The services must outlive this object. Throws Failure when no module publishes the interface.
  explicit GzipClient(const Services& services);

  // The streams of interfaces/gzip.h. They throw RaisedError.
  [[nodiscard]] Stream read(const std::filesystem::path& path) const;
  [[nodiscard]] Stream write(const std::filesystem::path& path) const;
  void finish(const Stream& written) const;

 private:
  const Services& services_;
  CopyGzipProcs procs_;
};

}  // namespace examples

#endif
