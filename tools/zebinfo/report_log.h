// What the library and its modules tell the host's error-report procedure.
#ifndef ZEBINFO_REPORT_LOG_H
#define ZEBINFO_REPORT_LOG_H

#include <string>
#include <vector>

namespace zebinfo {

// Keeps the message. Any thread may call it.
void keepReport(const char* message);

// The messages kept since the last call.
std::vector<std::string> takeReports();

}  // namespace zebinfo

#endif
