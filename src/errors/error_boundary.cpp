#include "errors/error_boundary.h"

#include "errors/client_error.h"
#include "errors/internal_error.h"
#include "errors/standard_errors.h"

namespace zeb {

ZEBErrorObject* translateCurrentException() noexcept {
  try {
    throw;
  } catch (const InternalError& failure) {
    return errors::shared(failure.error());
  } catch (const ZEB_T_MT::CZEBError& failure) {
    if (ZEBErrorObject* error = failure.sharedError()) return error;
  } catch (...) {  // anything else says nothing that could be handed on
  }
  return errors::shared(errors::raisableKst(kst::kUnknown));
}

}  // namespace zeb
