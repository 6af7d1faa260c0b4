// The raise operations that base/failure.h and errors/internal_error.h declare.
#include "base/failure.h"
#include "errors/error_object.h"
#include "errors/internal_error.h"
#include "errors/standard_errors.h"

namespace zeb {

void raiseError(ZEBErrorObject* error) { throw InternalError(errors::Ref(errors::shared(error))); }

void raiseStandardKst(int32_t id) { raiseError(errors::raisableKst(id)); }
void raiseStandardZeb(int32_t id) { raiseError(errors::raisableZeb(id)); }

void raiseNewKst(int32_t id, const char* message) {
  if (message == nullptr) message = errors::standardKstMessage(id);
  throw InternalError(errors::Ref(errors::make(message, errors::kKstComponent, id)));
}

void raiseNewZeb(int32_t id, const char* message) {
  if (message == nullptr) message = errors::standardZebMessage(id);
  throw InternalError(errors::Ref(errors::make(message, errors::kZebComponent, id)));
}

}  // namespace zeb
