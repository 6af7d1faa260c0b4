// The host's error-report procedure and what it was told.
//
// The library reports every error that is made through its error interface, wherever it is made,
// and at stop whether atoms leaked.
#ifndef HOSTING_HOST_ERROR_LOG_H
#define HOSTING_HOST_ERROR_LOG_H

#include <string>
#include <vector>

namespace hosting {

// To be handed to the library. Any thread.
void reportToErrorLog(const char* message);

// What was reported since the last call, oldest first. Any thread.
std::vector<std::string> takeErrorLog();

}  // namespace hosting

#endif
