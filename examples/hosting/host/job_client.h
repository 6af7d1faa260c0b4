// The jobs as the host sees them: an interface found by name.
#ifndef HOSTING_HOST_JOB_CLIENT_H
#define HOSTING_HOST_JOB_CLIENT_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "common/support/atom.h"
#include "common/support/error.h"
#include "common/support/progress.h"
#include "common/support/services.h"
#include "common/support/shared_buffer.h"
#include "interfaces/job.h"

namespace examples {

struct WordCount {
  Atom word;
  uint64_t count = 0;
};

// HostingJobResult with its atoms held.
struct JobResult {
  uint64_t wordCount = 0;
  uint64_t distinctWordCount = 0;
  std::array<WordCount, HOSTING_JOB_TOP_WORDS> topWords;
  size_t topWordCount = 0;
  Atom digestName;
  uint64_t digest = 0;
  uint32_t digestV1 = 0;
  uint32_t boundAt = 0;
  uint32_t timesBound = 0;
};

// HostingPieceDigest with its atom held.
struct PieceDigest {
  uint64_t digest = 0;
  uint64_t byteCount = 0;
  uint64_t pieceCount = 0;
  Atom signature;
  const void* textAt = nullptr;
  uint32_t timesAsked = 0;
};

// Looks the jobs up for each run. That is slow and never out of date, which suits a caller that
// runs them a few times; words/digest_binding.h shows how to keep procs.
class JobClient {
 public:
  // The services must outlive this object.
  explicit JobClient(const Services& services) : services_(services) {}

  // Whether a module publishes the job now.
  [[nodiscard]] bool isPublished() const;

  // Runs the job; *result changes only on success.
  Error run(JobResult* result, const char* algorithm, std::string_view text) const;

  // Has the text digested in pieces; *result changes only on success. An empty progress is told
  // nothing.
  Error digestInPieces(PieceDigest* result, const SharedBuffer& text,
                       const Progress& progress) const;

  // Whether an error of digestInPieces says that a report was answered with yes.
  static bool isCancellation(const Error& error);

 private:
  [[nodiscard]] Error notPublished() const;

  const Services& services_;
};

}  // namespace examples

#endif
