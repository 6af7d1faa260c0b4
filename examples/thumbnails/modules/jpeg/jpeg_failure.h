// The JPEG library's failures, brought to a stop where C++ can take them over.
//
// The JPEG library has no way to go on after an error: its error procedure must not return. It
// jumps back to attempt(), over the frames of the JPEG library, which have nothing to destroy. An
// exception must not take that way, as those frames are C.
#ifndef THUMBNAILS_JPEG_JPEG_FAILURE_H
#define THUMBNAILS_JPEG_JPEG_FAILURE_H

#include <csetjmp>

#include "support/jpeg_library.h"
#include "zeb/types.h"

namespace examples {

struct JpegFailure {
  jpeg_error_mgr manager;  // what the JPEG library is given
  std::jmp_buf back;
  ZEBErrorObject* passedOn;           // the error of a proc that was called meanwhile, owned
  char message[JMSG_LENGTH_MAX + 1];  // else why the JPEG library has stopped
};

// Prepares the failure and returns what the JPEG library is to be given. Warnings stop it as well:
// they tell of bytes that had to be guessed.
jpeg_error_mgr* prepare(JpegFailure* failure);

// Stops the JPEG library with an error that the caller got, which is the failure's from here on, or
// with a text. To be called in procedures that it calls.
[[noreturn]] void stopWith(j_common_ptr jpeg, ZEBErrorObject* error);
[[noreturn]] void stopWith(j_common_ptr jpeg, const char* message);

// Runs `step` and tells whether it came to its end. It must have nothing to destroy: no object of
// it may need more than to be forgotten.
template <class Step>
bool attempt(JpegFailure* failure, const Step& step) {
  if (setjmp(failure->back) != 0) return false;
  step();
  return true;
}

}  // namespace examples

#endif
