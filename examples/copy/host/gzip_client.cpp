#include "host/gzip_client.h"

#include "common/host/failure.h"

namespace examples {

GzipClient::GzipClient(const Services& services) : services_(services), procs_{} {
  if (CopyFetchGzipProcs(services.getProcAddress, &procs_) == 1) return;
  throw Failure(ExitStatus::failed, "no module publishes " COPY_GZIP_INTERFACE);
}

Stream GzipClient::read(const std::filesystem::path& path) const {
  ZEBContainer* stream = nullptr;
  raiseIfFailed(services_.errors, procs_.NewReader(&stream, path.c_str()));
  return {services_, stream};
}

Stream GzipClient::write(const std::filesystem::path& path) const {
  ZEBContainer* stream = nullptr;
  raiseIfFailed(services_.errors, procs_.NewWriter(&stream, path.c_str()));
  return {services_, stream};
}

void GzipClient::finish(const Stream& written) const {
  constexpr ZEBProcRequest kRequests[] = {COPY_GZIP_WRITER_PROCS(ZEB_PROC_REQUEST)};
  CopyGzipWriterProcs methods{};
  raiseIfFailed(services_.errors, askForMethods(services_, written.get(), kRequests, &methods));
  raiseIfFailed(services_.errors, methods.Finish(written.get()));
}

}  // namespace examples
