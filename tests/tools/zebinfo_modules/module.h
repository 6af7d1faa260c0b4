/* The entry points of the modules of zebinfo's tests: the usual ones, unless the build names
 * others. */
#ifndef ZEBINFO_MODULES_MODULE_H
#define ZEBINFO_MODULES_MODULE_H

#include "zeb/sdk/module_entry.h"
#include "zeb/zeb.h"

#ifdef MODULE_START
ZEB_MODULE_EXPORT int32_t MODULE_START(ZEBGetProcAddress find);
ZEB_MODULE_EXPORT void MODULE_STOP(void);
#else
#define MODULE_START ZEBModuleStart
#define MODULE_STOP ZEBModuleStop
#endif

#endif
