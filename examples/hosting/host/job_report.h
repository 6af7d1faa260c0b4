// Shows what the job found.
#ifndef HOSTING_HOST_JOB_REPORT_H
#define HOSTING_HOST_JOB_REPORT_H

#include "host/job_client.h"

namespace hosting {

// The counts and the most frequent words of one run.
void printWords(const JobResult& result);

// Two runs side by side, with who digested and when the job fetched the digest's procs.
void printComparison(const JobResult& before, const JobResult& after);

}  // namespace hosting

#endif
