// What a registry holds, compared with what the library is described to publish.
#ifndef ZEBINFO_STANDING_H
#define ZEBINFO_STANDING_H

#include <vector>

#include "report.h"

namespace zebinfo {

// Tells the library's procs from what others have put into its interfaces, and finds what is
// missing.
void compareWithDescription(Report& report, const Library& library);

// Asks for the texts that stand beside procs, and ties the two together.
void findPublishedSignatures(std::vector<ProcRow>& procs);

}  // namespace zebinfo

#endif
