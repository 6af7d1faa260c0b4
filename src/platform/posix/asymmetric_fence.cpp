#include "platform/asymmetric_fence.h"

#if defined(__linux__)
#include <linux/membarrier.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

#if defined(__SANITIZE_THREAD__)
#define ZEB_FENCES_ARE_WATCHED 1
#elif defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define ZEB_FENCES_ARE_WATCHED 1
#endif
#endif

namespace zeb {

namespace {

#if defined(__linux__) && !defined(ZEB_FENCES_ARE_WATCHED)

bool membarrier(int command) noexcept { return syscall(SYS_membarrier, command, 0, 0) == 0; }

bool prepare() noexcept { return membarrier(MEMBARRIER_CMD_REGISTER_PRIVATE_EXPEDITED); }
bool fenceEveryThread() noexcept { return membarrier(MEMBARRIER_CMD_PRIVATE_EXPEDITED); }

#else

// No such call here, or a checker watches that does not know what it does.
bool prepare() noexcept { return false; }
bool fenceEveryThread() noexcept { return false; }

#endif

}  // namespace

namespace asymmetric_fence {

constinit bool available = false;

namespace {
// Before any thread can be in a section: the library is being loaded.
[[maybe_unused]] const bool prepared = available = prepare();
}  // namespace

}  // namespace asymmetric_fence

bool heavyFence() noexcept {
  if (asymmetric_fence::available) return fenceEveryThread();
  // A read-modify-write rather than a fence, which the thread checker does not know.
  static constinit std::atomic<int> meetingPoint{0};
  meetingPoint.fetch_add(1, std::memory_order_seq_cst);
  return true;
}

}  // namespace zeb
