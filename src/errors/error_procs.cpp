// Interface "ZEBErrorInterface".
#include <array>

#include "base/host_state.h"
#include "base/unowned_data.h"
#include "base/value_boundary.h"
#include "errors/error_boundary.h"
#include "errors/error_object.h"
#include "errors/error_service.h"
#include "errors/standard_errors.h"
#include "zeb/error.h"

namespace zeb {

namespace {

const char* orEmpty(const char* text) noexcept { return text != nullptr ? text : ""; }

namespace procs {

// Has a boundary of its own because its failure answers with an error too, and never with null.
ZEBErrorObject* NewError(const char* message, const char* component, int32_t id, void* info,
                         InfoDelete infoDelete) noexcept {
  try {
    UnownedData unowned(infoDelete, info);
    errors::Ref error(errors::make(orEmpty(message), orEmpty(component), id));
    error.get()->info = info;
    error.get()->infoDelete = infoDelete;
    unowned.handOver();
    if (hostState.errorReport != nullptr) hostState.errorReport(orEmpty(message));
    return error.handOver();
  } catch (...) {
    return translateCurrentException();
  }
}

ZEBErrorObject* GetCoreError(int32_t id) noexcept {
  return errors::shared(errors::standardKst(id));
}

void AddRef(ZEBErrorObject* error) noexcept { errors::addReference(error); }
void AddRefV1(ZEBErrorObject* error) noexcept { errors::addReference(error); }
void Release(ZEBErrorObject* error) noexcept { errors::release(error); }

ZEBString* GetErrorMessage(ZEBErrorObject* error) noexcept {
  return error != nullptr ? error->message.get() : nullptr;
}

ZEBString* GetComponent(ZEBErrorObject* error) noexcept {
  return error != nullptr ? error->component.get() : nullptr;
}

int32_t GetID(ZEBErrorObject* error) noexcept { return error != nullptr ? error->id : 0; }

void* GetErrorInfo(ZEBErrorObject* error) noexcept {
  return error != nullptr ? error->info : nullptr;
}

}  // namespace procs

#define ZEB_ROW(member, method, proc) \
  tableEntry<proc>(#method, #proc, &ValueProc<&procs::member>::call),
const std::array entries{ZEB_ERROR_PROCS(ZEB_ROW)};
const std::array olderEntries{ZEB_ERROR_OLDER_PROCS(ZEB_ROW)};
#undef ZEB_ROW

}  // namespace

ServiceTable errorService() { return {ZEB_ERROR_INTERFACE, entries, olderEntries}; }

}  // namespace zeb
