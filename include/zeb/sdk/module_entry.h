/*
 * How a host starts and stops a module: the two C functions that the module's file exports.
 *
 * This is a convention between hosts and modules, so that each can be written without knowing the
 * other. The library neither asks for it nor sees it, and a host may start its modules in any other
 * way. C and C++ modules and hosts follow it alike; C++ modules get both functions from one line
 * (module_entry.hpp), and C++ hosts load such a file with LoadedModule (loaded_module.hpp).
 *
 * A module is linked with neither the host, the library nor another module. All it is given is the
 * look-up function, and all it offers is what it registers there under names.
 */
#ifndef ZEB_SDK_MODULE_ENTRY_H
#define ZEB_SDK_MODULE_ENTRY_H

#include "zeb/types.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Makes a function visible outside a file that is compiled with hidden visibility. */
#if defined(_WIN32)
#define ZEB_MODULE_EXPORT __declspec(dllexport)
#else
#define ZEB_MODULE_EXPORT __attribute__((visibility("default")))
#endif

/* The names under which a host looks for the two functions in a loaded file. */
#define ZEB_MODULE_START "ZEBModuleStart"
#define ZEB_MODULE_STOP "ZEBModuleStop"

/*
 * Starts the module: it fetches what it needs of the library and registers its interfaces.
 *
 * find  the look-up function of a running library; the module may keep it until it is stopped.
 *
 * Returns 1, or 0 when the module does not want to start. It is then as if it had never been
 * started: it holds nothing and has nothing registered, and is not stopped. Why it refuses it tells
 * the host's error-report procedure (ReportError of frame.h) before it returns. A module that runs
 * already refuses as well, and goes on.
 *
 * No exception leaves it. Called by one thread, while no other thread uses the module.
 */
ZEB_MODULE_EXPORT int32_t ZEBModuleStart(ZEBGetProcAddress find);

/*
 * Stops the module: it unregisters its interfaces, ends its threads and gives back everything that
 * it holds of the library. Afterwards it may be started again, or its file unloaded once nothing
 * can call into it any more.
 *
 * No exception leaves it. Called once after each start that returned 1, by one thread, while no
 * other thread uses the module and while the library still runs.
 */
ZEB_MODULE_EXPORT void ZEBModuleStop(void);

/* Their types, for the host, which looks the functions up in the loaded file. */
typedef int32_t (*ZEBModuleStartFunction)(ZEBGetProcAddress find);
typedef void (*ZEBModuleStopFunction)(void);

#ifdef __cplusplus
}
#endif

#endif
