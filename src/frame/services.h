// The services in the order in which starting the library registers them.
#ifndef ZEB_FRAME_SERVICES_H
#define ZEB_FRAME_SERVICES_H

namespace zeb::frame {

// Registers every service and binds the library's own client of the memory interface. Stops at the
// first that fails and returns false; what is registered stays.
bool registerServices();

// Registers the seven procs of interface "ZEB".
bool registerFrameProcs();

}  // namespace zeb::frame

#endif
