/* Everything a C client of libzeb includes. */
#ifndef ZEB_ZEB_H
#define ZEB_ZEB_H

#include "zeb/atom.h"
#include "zeb/cache.h"
#include "zeb/client.h"
#include "zeb/container.h"
#include "zeb/error.h"
#include "zeb/event.h"
#include "zeb/exports.h"
#include "zeb/filter.h"
#include "zeb/frame.h"
#include "zeb/memory.h"
#include "zeb/memory_debug.h"
#include "zeb/older_stream.h"
#include "zeb/positionable_stream.h"
#include "zeb/progress.h"
#include "zeb/rewindable_stream.h"
#include "zeb/shared_buffer.h"
#include "zeb/simple_stream.h"
#include "zeb/stream_factory.h"
#include "zeb/types.h"

#endif
