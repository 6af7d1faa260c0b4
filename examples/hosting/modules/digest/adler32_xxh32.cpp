// The digest module that takes over while the demo runs.
#include <xxhash.h>
#include <zlib.h>

#include <memory>
#include <new>

#include "modules/digest/algorithms.h"

namespace examples {
namespace {

uint32_t adler32(const void* bytes, uint64_t size) {
  // zlib answers a null pointer with its start value, whatever value it is given.
  return static_cast<uint32_t>(adler32_z(1, static_cast<const Bytef*>(bytes), size));
}

uint64_t xxh32(const void* bytes, uint64_t size) { return XXH32(bytes, size, 0); }

class RunningXxh32 : public RunningDigest {
 public:
  RunningXxh32() : state_(XXH32_createState()) {
    if (state_ == nullptr) throw std::bad_alloc();
    XXH32_reset(state_, 0);
  }
  ~RunningXxh32() override { XXH32_freeState(state_); }

  void add(const void* bytes, uint64_t size) override { XXH32_update(state_, bytes, size); }
  [[nodiscard]] uint64_t result() const override { return XXH32_digest(state_); }

 private:
  XXH32_state_t* state_;
};

std::unique_ptr<RunningDigest> startXxh32() { return std::make_unique<RunningXxh32>(); }

}  // namespace

const DigestAlgorithms kAlgorithms{"adler32 and xxh32", "adler32", adler32, "xxh32", xxh32,
                                   startXxh32};

}  // namespace examples
