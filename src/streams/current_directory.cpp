#include "streams/current_directory.h"

#include "base/checked_size.h"

namespace zeb::streams {

namespace {
constexpr uint64_t kFirstCapacity = 64;  // characters, enough for most
}

CurrentDirectory::CurrentDirectory() {
  uint64_t needed = kFirstCapacity;
  uint64_t capacity = 0;
  while (needed > capacity) {
    capacity = needed;
    name_ = ObjectMemory(sizeOfMany(capacity, sizeof(PathChar)));
    needed = currentDirectory(static_cast<PathChar*>(name_.get()), capacity);
  }
  if (needed == 0) raiseNewKst(kst::kUnknown, "GetCurrentDirectory failed");
}

}  // namespace zeb::streams
