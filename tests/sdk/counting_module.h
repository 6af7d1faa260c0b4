// What the counting module exports.
#ifndef ZEB_TESTS_SDK_COUNTING_MODULE_H
#define ZEB_TESTS_SDK_COUNTING_MODULE_H

#include <stdint.h>

#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#define COUNTING_MODULE_EVENT "the module's event"

typedef int32_t (*CountingModuleStart)(ZEBGetProcAddress getProcAddress);
typedef void (*CountingModuleStop)(void);
typedef void (*CountingModuleSignal)(uint64_t amount);
/* The objects on the module's lazy list. */
typedef uint32_t (*CountingModuleObjects)(void);

#ifdef __cplusplus
}
#endif

#endif
