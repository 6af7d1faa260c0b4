// The digest module that the demo starts with.
#include <xxhash.h>
#include <zlib.h>

#include <memory>
#include <new>

#include "modules/digest/algorithms.h"

namespace examples {
namespace {

uint32_t crc32(const void* bytes, uint64_t size) {
  return static_cast<uint32_t>(crc32_z(0, static_cast<const Bytef*>(bytes), size));
}

uint64_t xxh3(const void* bytes, uint64_t size) { return XXH3_64bits(bytes, size); }

class RunningXxh3 : public RunningDigest {
 public:
  RunningXxh3() : state_(XXH3_createState()) {
    if (state_ == nullptr) throw std::bad_alloc();
    XXH3_64bits_reset(state_);
  }
  ~RunningXxh3() override { XXH3_freeState(state_); }

  void add(const void* bytes, uint64_t size) override { XXH3_64bits_update(state_, bytes, size); }
  [[nodiscard]] uint64_t result() const override { return XXH3_64bits_digest(state_); }

 private:
  XXH3_state_t* state_;
};

std::unique_ptr<RunningDigest> startXxh3() { return std::make_unique<RunningXxh3>(); }

}  // namespace

const DigestAlgorithms kAlgorithms{"crc32 and xxh3", "crc32", crc32, "xxh3", xxh3, startXxh3};

}  // namespace examples
