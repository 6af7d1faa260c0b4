// Checked arithmetic and copying for the library's client-side code.
#ifndef ZEB_ERRORS_CLIENT_CHECKED_H
#define ZEB_ERRORS_CLIENT_CHECKED_H

#include <cstdint>

// A failure that carries nothing but a constant text. No boundary knows it by type: it leaves the
// library as "Unknown Kesto Error".
class KSTExceptionNoOpParent {};

class KSTException : public KSTExceptionNoOpParent {
 public:
  explicit KSTException(const char* message) noexcept : message_(message) {}
  [[nodiscard]] const char* message() const noexcept { return message_; }

 private:
  const char* message_;
};

namespace zeb {

// a + b + 1: two atoms' texts joined and their zero. Throws KSTException on overflow.
[[nodiscard]] uint64_t clientSizeOfJoinedTexts(uint64_t a, uint64_t b);

// checkedCopy (util/checked_copy.h); throws CZEBError "Memory Copy Error" when it refuses.
void clientCheckedCopy(void* destination, uint64_t capacity, const void* source, uint64_t count);

}  // namespace zeb

#endif
