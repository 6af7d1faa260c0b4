// Shows what the job found.
#ifndef HOSTING_HOST_JOB_REPORT_H
#define HOSTING_HOST_JOB_REPORT_H

#include <cstdint>
#include <optional>
#include <string>

#include "host/job_client.h"

namespace examples {

// What one run of both jobs found.
struct Findings {
  JobResult words;
  std::optional<PieceDigest> pieces;  // nothing if that was cancelled
};

// A digest as all rows show it.
std::string digestText(uint64_t digest);

// The counts and the most frequent words of one run.
void printWords(const JobResult& result);

// The component that digested in pieces, and how.
void printComponent(const PieceDigest& result);

// Two runs side by side, with who digested and when the job fetched the digest's procs.
void printComparison(const Findings& before, const Findings& after);

}  // namespace examples

#endif
