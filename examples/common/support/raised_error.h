// An error handle on its way through C++ code: thrown where a proc returned it, and handed on or
// read where it is caught.
#ifndef EXAMPLES_COMMON_SUPPORT_RAISED_ERROR_H
#define EXAMPLES_COMMON_SUPPORT_RAISED_ERROR_H

#include <utility>

#include "zeb/error.h"

namespace examples {

class RaisedError {
 public:
  // Takes over a reference. The procs must outlive the object.
  RaisedError(const ZEBErrorProcs& procs, ZEBErrorObject* owned) noexcept
      : procs_(&procs), error_(owned) {}

  // What is thrown must be copyable; a copy holds a reference of its own.
  RaisedError(const RaisedError& other) noexcept : procs_(other.procs_), error_(other.error_) {
    procs_->AddRef(error_);
  }
  RaisedError& operator=(const RaisedError&) = delete;
  ~RaisedError() { procs_->Release(error_); }

  // Hands a reference to the caller.
  [[nodiscard]] ZEBErrorObject* release() noexcept { return std::exchange(error_, nullptr); }

 private:
  const ZEBErrorProcs* procs_;
  ZEBErrorObject* error_;
};

// Throws what a proc returned unless it is success.
inline void raiseIfFailed(const ZEBErrorProcs& procs, ZEBErrorObject* owned) {
  if (owned != nullptr) throw RaisedError(procs, owned);
}

}  // namespace examples

#endif
