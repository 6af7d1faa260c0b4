// How a failure travels inside the library: an exception that carries one reference to an error.
#ifndef ZEB_ERRORS_INTERNAL_ERROR_H
#define ZEB_ERRORS_INTERNAL_ERROR_H

#include "base/object_bases.h"
#include "errors/error_object.h"

class InternalError : public ZEBBaseNoNew {
 public:
  // Takes the reference over.
  explicit InternalError(zeb::errors::Ref error) noexcept : error_(std::move(error)) {}

  [[nodiscard]] ZEBErrorObject* error() const noexcept { return error_.get(); }

 private:
  zeb::errors::Ref error_;
};

namespace zeb {

// Raises an existing error; the caller keeps its own reference. Further ways to raise stand in
// base/failure.h.
[[noreturn]] void raiseError(ZEBErrorObject* error);

}  // namespace zeb

#endif
