// The current directory of one moment, remembered by name.
#ifndef ZEB_STREAMS_CURRENT_DIRECTORY_H
#define ZEB_STREAMS_CURRENT_DIRECTORY_H

#include "memory/object_memory.h"
#include "platform/file.h"

namespace zeb::streams {

class CurrentDirectory {
 public:
  // Captures it. Raises "GetCurrentDirectory failed" when it has no name, and what allocation
  // raises.
  CurrentDirectory();

  [[nodiscard]] const PathChar* name() const noexcept {
    return static_cast<const PathChar*>(name_.get());
  }

 private:
  ObjectMemory name_;
};

}  // namespace zeb::streams

#endif
