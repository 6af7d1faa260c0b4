#include "host/job_client.h"

#include <algorithm>
#include <string_view>

namespace examples {
namespace {

// Takes over the references that come with a result.
JobResult adopt(const HostingJobResult& raw, const ZEBStringProcs& strings) {
  JobResult result;
  result.wordCount = raw.wordCount;
  result.distinctWordCount = raw.distinctWordCount;
  result.topWordCount = std::min<size_t>(raw.topWordCount, result.topWords.size());
  for (size_t i = 0; i < result.topWordCount; ++i) {
    result.topWords[i] = {Atom(strings, raw.topWords[i].word), raw.topWords[i].count};
  }
  result.digestName = Atom(strings, raw.digestName);
  result.digest = raw.digest;
  result.digestV1 = raw.digestV1;
  result.boundAt = raw.boundAt;
  result.timesBound = raw.timesBound;
  return result;
}

}  // namespace

bool JobClient::isPublished() const {
  HostingJobProcs procs;
  return HostingFetchJobProcs(services_.getProcAddress, &procs) == 1;
}

Error JobClient::run(JobResult* result, const char* algorithm, std::string_view text) const {
  HostingJobProcs procs;
  if (HostingFetchJobProcs(services_.getProcAddress, &procs) == 0) return notPublished();
  HostingJobResult raw{};
  Error error(services_, procs.Run(&raw, algorithm, text.data(), text.size()));
  if (!error) *result = adopt(raw, services_.strings);
  return error;
}

Error JobClient::digestInPieces(PieceDigest* result, const SharedBuffer& text,
                                const Progress& progress) const {
  HostingJobProcs procs;
  if (HostingFetchJobProcs(services_.getProcAddress, &procs) == 0) return notPublished();
  HostingPieceDigest raw{};
  Error error(services_, procs.DigestInPieces(&raw, text.get(), progress.get()));
  if (!error) {
    *result = {raw.digest, raw.byteCount, raw.pieceCount, Atom(services_.strings, raw.signature),
               raw.textAt, raw.timesAsked};
  }
  return error;
}

bool JobClient::isCancellation(const Error& error) {
  return error && error.component() == std::string_view(HOSTING_JOB_COMPONENT) &&
         error.id() == HOSTING_JOB_ERROR_CANCELLED;
}

Error JobClient::notPublished() const {
  return {services_, services_.errors.NewError("no module publishes " HOSTING_JOB_INTERFACE,
                                               "HostingHost", 1, nullptr, nullptr)};
}

}  // namespace examples
