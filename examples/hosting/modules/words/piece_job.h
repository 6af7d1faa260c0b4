// Has a text digested piece by piece, and tells how far it has come.
#ifndef HOSTING_WORDS_PIECE_JOB_H
#define HOSTING_WORDS_PIECE_JOB_H

#include <string_view>

#include "common/support/services.h"
#include "interfaces/job.h"
#include "modules/words/digest_binding.h"
#include "modules/words/digester_client.h"

namespace examples {

class PieceJob {
 public:
  // Services and binding must outlive this object.
  PieceJob(const Services& services, DigestBinding& digest)
      : services_(services), digest_(digest) {}

  // Does HostingJobDigestInPiecesProc's work for a checked text and result. Throws std::bad_alloc.
  ZEBErrorObject* run(HostingPieceDigest* result, std::string_view text, ZEBProgress* progress);

 private:
  ZEBErrorObject* feed(DigesterClient& digester, const HostingDigestState& state,
                       std::string_view text, ZEBProgress* progress) const;
  [[nodiscard]] ZEBErrorObject* cancelled(uint64_t done, uint64_t total) const;

  const Services& services_;
  DigestBinding& digest_;
};

}  // namespace examples

#endif
