// A listener to the progress of a long operation, as an object of the library.
#ifndef EXAMPLES_COMMON_SUPPORT_PROGRESS_H
#define EXAMPLES_COMMON_SUPPORT_PROGRESS_H

#include <cstdint>
#include <memory>
#include <new>

#include "common/support/handle.h"
#include "zeb/progress.h"

namespace examples {

class ProgressListener {
 public:
  ProgressListener() = default;
  ProgressListener(const ProgressListener&) = delete;
  ProgressListener& operator=(const ProgressListener&) = delete;
  virtual ~ProgressListener() = default;

  // Told the work done and the whole work, a total of 0 when that is unknown. True is a yes, whose
  // meaning is the operation's. What this throws ends in the library and counts as a no.
  virtual bool report(uint64_t done, uint64_t total) = 0;
};

class Progress : public Handle<ZEBProgress, ZEBProgressProcs, &ZEBProgressProcs::Release> {
 public:
  using Handle::Handle;

  // A progress that reports to the listener and deletes it when its last reference goes. Throws
  // std::bad_alloc.
  static Progress to(const ZEBProgressProcs& procs, std::unique_ptr<ProgressListener> listener) {
    // The listener is the library's from here on, also when this fails.
    ZEBProgress* const progress = procs.NewClientProgress(listener.release(), update, end);
    if (progress == nullptr) throw std::bad_alloc();
    return {procs, progress};
  }

 private:
  static int32_t update(void* listener, uint64_t done, uint64_t total) {
    return static_cast<ProgressListener*>(listener)->report(done, total) ? 1 : 0;
  }
  static void end(void* listener) { delete static_cast<ProgressListener*>(listener); }
};

}  // namespace examples

#endif
