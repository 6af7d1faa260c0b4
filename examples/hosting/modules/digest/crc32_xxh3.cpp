// The digest module that the demo starts with.
#include <xxhash.h>
#include <zlib.h>

#include "modules/digest/algorithms.h"

namespace hosting {
namespace {

uint32_t crc32(const void* bytes, uint64_t size) {
  return static_cast<uint32_t>(crc32_z(0, static_cast<const Bytef*>(bytes), size));
}

uint64_t xxh3(const void* bytes, uint64_t size) { return XXH3_64bits(bytes, size); }

}  // namespace

const DigestAlgorithms kAlgorithms{"crc32 and xxh3", "crc32", crc32, "xxh3", xxh3};

}  // namespace hosting
