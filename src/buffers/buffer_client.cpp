#include "buffers/buffer_client.h"

#include "base/failure.h"
#include "base/unowned_data.h"
#include "errors/client_error.h"
#include "platform/spin_lock.h"
#include "registry/client_binding.h"

namespace zeb::buffers {

namespace {

using BufferBinding = registry::ClientBinding<ZEBSharedBufferProcs>;
constexpr BufferBinding::Requests kRequests{{ZEB_SHARED_BUFFER_PROCS(ZEB_PROC_REQUEST)}};

class ClientProcs {
 public:
  constexpr ClientProcs() noexcept = default;

  ZEBSharedBufferProcs get() ZEB_EXCLUDES(lock_) {
    {
      const SpinGuard guard(lock_);
      if (binding_.current()) return binding_.procs();
    }
    // Without the lock: fetching may call the host's allocator.
    BufferBinding fresh(ZEB_SHARED_BUFFER_INTERFACE, kRequests);
    if (!fresh.refresh()) {
      raiseClientError("Missing Interface", "ZEB", zebid::kMissingMethod, nullptr, nullptr);
    }
    const SpinGuard guard(lock_);
    binding_.adopt(fresh);
    return fresh.procs();
  }

  void forget() noexcept ZEB_EXCLUDES(lock_) {
    const SpinGuard guard(lock_);
    binding_.invalidate();
  }

 private:
  SpinLock lock_{50};
  BufferBinding binding_ ZEB_GUARDED_BY(lock_){ZEB_SHARED_BUFFER_INTERFACE, kRequests};
};

constinit ClientProcs procs;

}  // namespace

ZEBSharedBufferProcs clientProcs() { return procs.get(); }

ZEBSharedBuffer* newClientBuffer(uint64_t size, void* data, ZEBSharedBuffDelete deleteProc,
                                 ZEBSharedBuffReleaseHook hook, void* deleteContext) {
  // The proc leaves the data with its caller when it fails; this wrapper does not.
  UnownedData unowned(data != nullptr ? deleteProc : nullptr,
                      deleteContext != nullptr ? deleteContext : data);
  ZEBSharedBuffer* buffer = clientProcs().NewBuffer(size, data, deleteProc, hook, deleteContext);
  if (buffer == nullptr) raiseClientStandard(kst::kOutOfMemory);
  unowned.handOver();
  return buffer;
}

void forgetClientProcs() noexcept { procs.forget(); }

}  // namespace zeb::buffers
