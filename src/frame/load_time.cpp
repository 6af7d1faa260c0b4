// The load-time object that is linked last: this file stands last in the library's source lists,
// and nothing else is linked behind it.
#include "registry/interface_terminate.h"

namespace zeb::frame {

namespace {
registry::InterfaceTerminate interfaceTerminate;
}

}  // namespace zeb::frame
