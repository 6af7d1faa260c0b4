// What the streams room publishes.
#ifndef ZEB_STREAMS_STREAM_SERVICES_H
#define ZEB_STREAMS_STREAM_SERVICES_H

#include "base/service_table.h"

namespace zeb {

ServiceTable streamFactoryService();
ServiceTable simpleStreamService();
ServiceTable rewindableStreamService();
ServiceTable positionableStreamService();
// The interfaces of older clients, which have no current procs.
ServiceTable newStreamService();
ServiceTable streamService();

}  // namespace zeb

#endif
