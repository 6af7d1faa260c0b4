#include "host/job_client.h"

#include <algorithm>

namespace hosting {
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
  if (HostingFetchJobProcs(services_.getProcAddress, &procs) == 0) {
    return {services_, services_.errors.NewError("no module publishes " HOSTING_JOB_INTERFACE,
                                                 "HostingHost", 1, nullptr, nullptr)};
  }
  HostingJobResult raw{};
  Error error(services_, procs.Run(&raw, algorithm, text.data(), text.size()));
  if (!error) *result = adopt(raw, services_.strings);
  return error;
}

}  // namespace hosting
