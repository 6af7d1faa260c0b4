// The host's error-report procedure and what it was told.
//
// The library reports every error that is made through its error interface, wherever it is made,
// and at stop whether atoms leaked.
#ifndef EXAMPLES_COMMON_HOST_ERROR_LOG_H
#define EXAMPLES_COMMON_HOST_ERROR_LOG_H

#include <string>
#include <vector>

namespace examples {

// To be handed to the library. Any thread.
void reportToErrorLog(const char* message);

// What was reported since the last call, oldest first. Any thread.
std::vector<std::string> takeErrorLog();

}  // namespace examples

#endif
