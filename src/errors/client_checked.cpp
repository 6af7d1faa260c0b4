#include "errors/client_checked.h"

#include "base/failure.h"
#include "errors/client_error.h"
#include "util/checked_copy.h"
#include "util/checked_math.h"

namespace zeb {

uint64_t clientSizeOfJoinedTexts(uint64_t a, uint64_t b) {
  const auto size = checkedJoinedSize(a, b);
  if (!size) throw KSTException(kMathOverflowMessage);
  return *size;
}

void clientCheckedCopy(void* destination, uint64_t capacity, const void* source, uint64_t count) {
  if (checkedCopy(destination, capacity, source, count)) return;
  raiseClientError(kMemoryCopyMessage, "", 0, nullptr, nullptr);
}

}  // namespace zeb
