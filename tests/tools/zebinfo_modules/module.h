/* The entry points that zebinfo looks for, for the modules of its tests. */
#ifndef ZEBINFO_MODULES_MODULE_H
#define ZEBINFO_MODULES_MODULE_H

#include "zeb/zeb.h"

#define MODULE_EXPORT __attribute__((visibility("default")))

#ifndef MODULE_START
#define MODULE_START ExampleModuleStart
#define MODULE_STOP ExampleModuleStop
#endif

MODULE_EXPORT int32_t MODULE_START(ZEBGetProcAddress getProcAddress);
MODULE_EXPORT void MODULE_STOP(void);

#endif
