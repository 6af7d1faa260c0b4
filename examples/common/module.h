/*
 * What a file must export so that the host takes it as a module: the two functions below, nothing
 * else. A module is linked with neither the host, the library nor another module. All it is given
 * is the look-up function, and all it offers is what it registers there under names.
 */
#ifndef EXAMPLES_COMMON_MODULE_H
#define EXAMPLES_COMMON_MODULE_H

#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

#if defined(_WIN32)
#define EXAMPLE_MODULE_EXPORT __declspec(dllexport)
#else
#define EXAMPLE_MODULE_EXPORT __attribute__((visibility("default")))
#endif

#define EXAMPLE_MODULE_START "ExampleModuleStart"
#define EXAMPLE_MODULE_STOP "ExampleModuleStop"

/*
 * Starts the module: it fetches what it needs of the library and registers its interfaces. Modules
 * start in no promised order, so a module looks another one's interface up when it first needs it,
 * never here.
 *
 * getProcAddress  valid until the library stops; the module may keep it.
 *
 * Returns 1, or 0 when the module cannot work. It has then registered nothing, has told the
 * library's error report why as far as it could, and ExampleModuleStop is not called.
 * Called by one thread.
 */
EXAMPLE_MODULE_EXPORT int32_t ExampleModuleStart(ZEBGetProcAddress getProcAddress);

/*
 * Stops the module: it unregisters its interfaces and gives back every atom, error, counter and
 * block that it holds. After that the host unloads the file, so no function of the module may be
 * reachable any more. Called once after a start that returned 1, by one thread, while the library
 * is still running.
 */
EXAMPLE_MODULE_EXPORT void ExampleModuleStop(void);

/* Their types, for the host, which looks them up in the loaded file. */
typedef int32_t (*ExampleModuleStartFunction)(ZEBGetProcAddress getProcAddress);
typedef void (*ExampleModuleStopFunction)(void);

#ifdef __cplusplus
}
#endif

#endif
