#include "host/digest.h"

#include <fmt/format.h>
#include <xxhash.h>

#include <new>

namespace examples {

struct Digest::State {
  struct Free {
    void operator()(XXH3_state_t* state) const { XXH3_freeState(state); }
  };

  std::unique_ptr<XXH3_state_t, Free> running{XXH3_createState()};
  uint64_t size = 0;
};

Digest::Digest() : state_(std::make_unique<State>()) {
  if (state_->running == nullptr) throw std::bad_alloc();
  XXH3_128bits_reset(state_->running.get());
}

Digest::~Digest() = default;

void Digest::add(std::span<const std::byte> bytes) {
  XXH3_128bits_update(state_->running.get(), bytes.data(), bytes.size());
  state_->size += bytes.size();
}

DigestedBytes Digest::result() const {
  const XXH128_hash_t hash = XXH3_128bits_digest(state_->running.get());
  return {state_->size, fmt::format("{:016x}{:016x}", hash.high64, hash.low64)};
}

}  // namespace examples
