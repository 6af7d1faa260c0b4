// Counts words as atoms, and has the text digested by whatever digest is published.
#ifndef HOSTING_WORDS_WORD_JOB_H
#define HOSTING_WORDS_WORD_JOB_H

#include <string_view>

#include "common/support/event_counter.h"
#include "common/support/services.h"
#include "interfaces/job.h"
#include "modules/words/digest_binding.h"

namespace examples {

class WordJob {
 public:
  // Services and binding must outlive this object. Throws std::bad_alloc.
  WordJob(const Services& services, DigestBinding& digest);

  // Does HostingJobRunProc's work for a checked text and result. Throws std::bad_alloc.
  ZEBErrorObject* run(HostingJobResult* result, const char* algorithm, std::string_view text);

 private:
  ZEBErrorObject* digestInto(HostingJobResult* result, const HostingDigestProcs& digest,
                             const char* algorithm, std::string_view text) const;

  const Services& services_;
  DigestBinding& digest_;
  EventCounter wordsCounted_;
};

}  // namespace examples

#endif
