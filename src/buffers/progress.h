// Progress objects: sinks for what long operations report.
#ifndef ZEB_BUFFERS_PROGRESS_H
#define ZEB_BUFFERS_PROGRESS_H

#include <atomic>
#include <cstdint>

#include "base/live_objects.h"
#include "base/object_bases.h"
#include "zeb/progress.h"

struct ZEBProgress : ZEBBase {
  ZEBProgress() noexcept;
  ZEBProgress(const ZEBProgress&) = delete;
  ZEBProgress& operator=(const ZEBProgress&) = delete;

  // The answer to the operation that reports. May throw what a client's procedure throws.
  virtual bool Update(uint64_t done, uint64_t total) = 0;
  virtual ~ZEBProgress();

  std::atomic<uint32_t> references{1};
};

namespace zeb::buffers {

class NullProgress final : public ZEBProgress {
 public:
  bool Update(uint64_t /*done*/, uint64_t /*total*/) override { return false; }
};

class ClientProgress final : public ZEBProgress {
 public:
  // Owns the data from here on.
  ClientProgress(void* data, ZEBProgressUpdate update, ZEBProgressDelete deleteProc) noexcept
      : data_(data), update_(update), deleteProc_(deleteProc) {}
  ~ClientProgress() override;

  bool Update(uint64_t done, uint64_t total) override { return update_(data_, done, total) != 0; }

 private:
  void* const data_;
  const ZEBProgressUpdate update_;
  const ZEBProgressDelete deleteProc_;
};

void release(ZEBProgress& progress) noexcept;

[[nodiscard]] LiveObjects liveProgress() noexcept;

}  // namespace zeb::buffers

#endif
