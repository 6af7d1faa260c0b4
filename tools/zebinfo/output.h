// The two forms in which a report is shown. JSON lacks nothing that the table shows.
#ifndef ZEBINFO_OUTPUT_H
#define ZEBINFO_OUTPUT_H

#include <string>

#include "report.h"

namespace zebinfo {

// Raised when a member changes its meaning or goes; new members may come without.
inline constexpr int kJsonSchema = 1;

std::string asTable(const Report& report);
std::string asJson(const Report& report);

}  // namespace zebinfo

#endif
