// What a digest module has to bring: its two algorithms. Everything else the digest modules share.
#ifndef HOSTING_DIGEST_ALGORITHMS_H
#define HOSTING_DIGEST_ALGORITHMS_H

#include <cstdint>
#include <memory>

namespace examples {

// A digest of bytes that come in pieces.
class RunningDigest {
 public:
  RunningDigest() = default;
  RunningDigest(const RunningDigest&) = delete;
  RunningDigest& operator=(const RunningDigest&) = delete;
  virtual ~RunningDigest() = default;

  virtual void add(const void* bytes, uint64_t size) = 0;

  // Of all bytes so far; more may be added afterwards.
  [[nodiscard]] virtual uint64_t result() const = 0;
};

struct DigestAlgorithms {
  const char* publisher;  // what the module calls itself

  // Behind the first version of the interface, and by name behind the second.
  const char* narrowName;
  uint32_t (*narrow)(const void* bytes, uint64_t size);

  // Behind the second version, by name or when the caller names none.
  const char* wideName;
  uint64_t (*wide)(const void* bytes, uint64_t size);

  // The same piece by piece, behind the component. Throws std::bad_alloc.
  std::unique_ptr<RunningDigest> (*startWide)();
};

// Each digest module defines its own.
extern const DigestAlgorithms kAlgorithms;

}  // namespace examples

#endif
