// Shows on the output how far a job has come, and may ask for its end.
#ifndef EXAMPLES_COMMON_HOST_PROGRESS_VIEW_H
#define EXAMPLES_COMMON_HOST_PROGRESS_VIEW_H

#include <memory>
#include <optional>

#include "common/support/progress.h"

namespace examples {

// On a terminal a bar that is redrawn in place and gone when the view goes; elsewhere a row for
// each quarter of the work, which counts in `unit`, as "bytes". It answers a report with yes from
// cancelAt percent on, if that is given.
std::unique_ptr<ProgressListener> newProgressView(const char* unit,
                                                  std::optional<unsigned> cancelAt = {});

}  // namespace examples

#endif
