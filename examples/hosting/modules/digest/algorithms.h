// What a digest module has to bring: its two algorithms. Everything else is digest_module.cpp.
#ifndef HOSTING_DIGEST_ALGORITHMS_H
#define HOSTING_DIGEST_ALGORITHMS_H

#include <cstdint>

namespace hosting {

struct DigestAlgorithms {
  const char* publisher;  // what the module calls itself

  // Behind the first version of the interface, and by name behind the second.
  const char* narrowName;
  uint32_t (*narrow)(const void* bytes, uint64_t size);

  // Behind the second version, by name or when the caller names none.
  const char* wideName;
  uint64_t (*wide)(const void* bytes, uint64_t size);
};

// Each digest module defines its own.
extern const DigestAlgorithms kAlgorithms;

}  // namespace hosting

#endif
