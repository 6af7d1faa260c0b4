// A digest of the bytes that have passed by, and their number.
#ifndef COPY_HOST_DIGEST_H
#define COPY_HOST_DIGEST_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace examples {

struct DigestedBytes {
  uint64_t size = 0;
  std::string digest;  // xxh3 of 128 bits, in hexadecimal digits

  friend bool operator==(const DigestedBytes&, const DigestedBytes&) = default;
};

class Digest {
 public:
  // Throws std::bad_alloc.
  Digest();
  ~Digest();

  Digest(const Digest&) = delete;
  Digest& operator=(const Digest&) = delete;

  void add(std::span<const std::byte> bytes);

  // Of all bytes so far.
  [[nodiscard]] DigestedBytes result() const;

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace examples

#endif
