// The job itself: what the host asks for, done with atoms and with whatever digest is published.
#ifndef HOSTING_WORDS_WORD_JOB_H
#define HOSTING_WORDS_WORD_JOB_H

#include <string_view>

#include "interfaces/job.h"
#include "modules/words/digest_binding.h"
#include "support/event_counter.h"
#include "support/services.h"

namespace hosting {

class WordJob {
 public:
  // The services must outlive this object. Throws std::bad_alloc.
  explicit WordJob(const Services& services);

  // Does HostingJobRunProc's work for a checked text and result. Throws std::bad_alloc.
  ZEBErrorObject* run(HostingJobResult* result, const char* algorithm, std::string_view text);

 private:
  ZEBErrorObject* digestInto(HostingJobResult* result, const HostingDigestProcs& digest,
                             const char* algorithm, std::string_view text) const;

  const Services& services_;
  DigestBinding digest_;
  EventCounter wordsCounted_;
};

}  // namespace hosting

#endif
