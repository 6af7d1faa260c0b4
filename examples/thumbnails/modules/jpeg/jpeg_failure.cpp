#include "modules/jpeg/jpeg_failure.h"

#include <cstring>

namespace examples {
namespace {

// The manager is the failure's first member, and both are plain structs.
JpegFailure* failureOf(j_common_ptr jpeg) { return reinterpret_cast<JpegFailure*>(jpeg->err); }

[[noreturn]] void stopWithItsMessage(j_common_ptr jpeg) {
  char message[JMSG_LENGTH_MAX];
  jpeg->err->format_message(jpeg, message);
  stopWith(jpeg, message);
}

// Levels below 0 are warnings, the others traces of what goes on.
void stopAtWarnings(j_common_ptr jpeg, int level) {
  if (level < 0) stopWithItsMessage(jpeg);
}

void printNothing(j_common_ptr /*jpeg*/) {}

}  // namespace

jpeg_error_mgr* prepare(JpegFailure* failure) {
  failure->passedOn = nullptr;
  failure->message[0] = '\0';
  jpeg_error_mgr* const manager = jpeg_std_error(&failure->manager);
  manager->error_exit = stopWithItsMessage;
  manager->emit_message = stopAtWarnings;
  manager->output_message = printNothing;
  return manager;
}

void stopWith(j_common_ptr jpeg, ZEBErrorObject* error) {
  JpegFailure* const failure = failureOf(jpeg);
  failure->passedOn = error;
  std::longjmp(failure->back, 1);
}

void stopWith(j_common_ptr jpeg, const char* message) {
  JpegFailure* const failure = failureOf(jpeg);
  std::strncpy(failure->message, message, sizeof(failure->message) - 1);
  failure->message[sizeof(failure->message) - 1] = '\0';
  std::longjmp(failure->back, 1);
}

}  // namespace examples
