// What the counting module exports besides its start and stop.
#ifndef ZEB_TESTS_SDK_COUNTING_MODULE_H
#define ZEB_TESTS_SDK_COUNTING_MODULE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define COUNTING_MODULE_EVENT "the module's event"

typedef void (*CountingModuleSignal)(uint64_t amount);
/* The objects on the module's lazy list. */
typedef uint32_t (*CountingModuleObjects)(void);

#ifdef __cplusplus
}
#endif

#endif
