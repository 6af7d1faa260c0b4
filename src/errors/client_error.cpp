#include "errors/client_error.h"

#include <array>
#include <cstdlib>

#include "base/failure.h"
#include "platform/spin_lock.h"
#include "registry/client_binding.h"

namespace zeb {

namespace {

using ErrorBinding = registry::ClientBinding<ZEBErrorProcs>;
constexpr ErrorBinding::Requests kRequests{{ZEB_ERROR_PROCS(ZEB_PROC_REQUEST)}};

// Ids 0 and 1, the errors that must be there when nothing can be made any more.
constexpr int32_t kKept = 2;
using KeptErrors = std::array<ZEBErrorObject*, kKept>;

class ClientErrors {
 public:
  constexpr ClientErrors() noexcept = default;

  ZEBErrorProcs procs() ZEB_EXCLUDES(lock_) {
    {
      const SpinGuard guard(lock_);
      if (binding_.current()) return binding_.procs();
    }
    return fetch();
  }

  // The kept error, which stays this object's; null when there is none.
  ZEBErrorObject* kept(int32_t id) ZEB_EXCLUDES(lock_) {
    (void)procs();
    const bool isKept = id >= 0 && id < kKept;
    const SpinGuard guard(lock_);
    return isKept ? kept_[static_cast<size_t>(id)] : nullptr;
  }

  void release() noexcept ZEB_EXCLUDES(lock_) {
    KeptErrors old{};
    ZEBErrorProcs procs{};
    {
      const SpinGuard guard(lock_);
      procs = binding_.procs();
      std::swap(old, kept_);
      binding_.invalidate();
    }
    releaseAll(procs, old);
  }

 private:
  // Fetches without the lock, since fetching may call the host's allocator, and then installs. Two
  // threads that fetch at once install the same procs.
  ZEBErrorProcs fetch() ZEB_EXCLUDES(lock_) {
    ErrorBinding fresh(ZEB_ERROR_INTERFACE, kRequests);
    if (!fresh.refresh()) throw ZEB_T_MT::missingErrorInterface();
    const ZEBErrorProcs procs = fresh.procs();
    KeptErrors errors{procs.GetCoreError(kst::kUnknown), procs.GetCoreError(kst::kOutOfMemory)};
    ZEBErrorProcs oldProcs{};
    {
      const SpinGuard guard(lock_);
      oldProcs = binding_.procs();
      binding_.adopt(fresh);
      std::swap(errors, kept_);
    }
    releaseAll(oldProcs, errors);
    return procs;
  }

  static void releaseAll(const ZEBErrorProcs& procs, const KeptErrors& errors) noexcept {
    for (ZEBErrorObject* error : errors) {
      if (error != nullptr) procs.Release(error);
    }
  }

  SpinLock lock_{50};
  ErrorBinding binding_ ZEB_GUARDED_BY(lock_){ZEB_ERROR_INTERFACE, kRequests};
  KeptErrors kept_ ZEB_GUARDED_BY(lock_){};
};

constinit ClientErrors clientErrors;

}  // namespace

ZEBErrorProcs clientErrorProcs() { return clientErrors.procs(); }

void raiseClientError(const char* message, const char* component, int32_t id, void* info,
                      InfoDelete infoDelete) {
  throw ZEB_T_MT::CZEBError(message, component, id, info, infoDelete);
}

void raiseClientStandard(int32_t id) {
  if (ZEBErrorObject* kept = clientErrors.kept(id)) throw ZEB_T_MT::CZEBError(kept);
  throw ZEB_T_MT::CZEBError(id);
}

void raiseClientError(ZEBErrorObject* error) { throw ZEB_T_MT::CZEBError(error); }

void releaseClientErrors() noexcept { clientErrors.release(); }

}  // namespace zeb

namespace ZEB_T_MT {

CZEBError::CZEBError(const char* message, const char* component, int32_t id, void* info,
                     zeb::InfoDelete infoDelete)
    : error_(nullptr), counting_{} {
  try {
    const ZEBErrorProcs procs = zeb::clientErrorProcs();
    counting_ = {procs.AddRef, procs.Release};
    error_ = procs.NewError(message, component, id, info, infoDelete);
  } catch (...) {
    // NewError throws nothing, so no error owns the data yet.
    if (infoDelete != nullptr) infoDelete(info);
    throw;
  }
}

CZEBError::CZEBError(int32_t id) : error_(nullptr), counting_{} {
  const ZEBErrorProcs procs = zeb::clientErrorProcs();
  counting_ = {procs.AddRef, procs.Release};
  error_ = procs.GetCoreError(id);
}

CZEBError::CZEBError(ZEBErrorObject* error) : error_(error), counting_{} {
  const ZEBErrorProcs procs = zeb::clientErrorProcs();
  counting_ = {procs.AddRef, procs.Release};
  counting_.addRef(error_);
}

CZEBError::CZEBError(const CZEBError& other) noexcept
    : CZEBErrorParent(other), error_(other.sharedError()), counting_(other.counting_) {}

CZEBError::~CZEBError() {
  if (error_ != nullptr) counting_.release(error_);
}

ZEBErrorObject* CZEBError::sharedError() const noexcept {
  if (error_ != nullptr) counting_.addRef(error_);
  return error_;
}

CZEBError missingErrorInterface() {
  try {
    return {zeb::errors::make("Missing Interface", "ZEB", 0),
            {&zeb::errors::addReference, &zeb::errors::release}};
  } catch (...) {
    zeb::registry::endWithoutInterface(ZEB_ERROR_INTERFACE);
  }
}

}  // namespace ZEB_T_MT
