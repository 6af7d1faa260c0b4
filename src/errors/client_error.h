// Errors as the library's client-side code meets them: only through "ZEBErrorInterface".
//
// Parts of the library that stand on the client's side of the interfaces use whatever error service
// the registry holds, the library's own or a host's replacement. Their failures travel as
// CZEBError, which owns one handle and gives it back through the procs that it came from.
//
// Thread safety: any thread may call anything but releaseClientErrors.
#ifndef ZEB_ERRORS_CLIENT_ERROR_H
#define ZEB_ERRORS_CLIENT_ERROR_H

#include <cstdint>
#include <utility>

#include "errors/error_object.h"
#include "zeb/error.h"

namespace ZEB_T_MT {

class CZEBErrorParent {};

class CZEBError : public CZEBErrorParent {
 public:
  // A new error made through the interface; it owns `info` in every case.
  CZEBError(const char* message, const char* component, int32_t id, void* info,
            zeb::InfoDelete infoDelete);
  // The standard error of an id, with a reference of its own.
  explicit CZEBError(int32_t id);
  // An existing error, with a reference of its own.
  explicit CZEBError(ZEBErrorObject* error);

  CZEBError(const CZEBError& other) noexcept;
  CZEBError& operator=(const CZEBError&) = delete;
  ~CZEBError();

  // The handle, still this object's; null when the error service had none to give.
  [[nodiscard]] ZEBErrorObject* error() const noexcept { return error_; }
  // The same with one more reference.
  [[nodiscard]] ZEBErrorObject* sharedError() const noexcept;

 private:
  friend CZEBError missingErrorInterface();
  struct Counting {
    ZEBErrorAddRefProcV2 addRef;
    ZEBErrorReleaseProc release;
  };
  CZEBError(ZEBErrorObject* owned, Counting counting) noexcept
      : error_(owned), counting_(counting) {}

  ZEBErrorObject* error_;
  Counting counting_;
};

// "Missing Interface", component "ZEB", id 0: made by the library itself, because the interface
// that would make it is what is missing.
CZEBError missingErrorInterface();

}  // namespace ZEB_T_MT

namespace zeb {

// The eight procs, fetched again when the change counter has moved. Throws CZEBError when they
// cannot be fetched.
ZEBErrorProcs clientErrorProcs();

[[noreturn]] void raiseClientError(const char* message, const char* component, int32_t id,
                                   void* info, InfoDelete infoDelete);
// Ids 0 and 1 are kept since the last fetch: raising them allocates nothing.
[[noreturn]] void raiseClientStandard(int32_t id);
[[noreturn]] void raiseClientError(ZEBErrorObject* error);

// Gives the kept standard errors back and forgets the procs. Only while one thread uses the
// library.
void releaseClientErrors() noexcept;

}  // namespace zeb

#endif
