/*
 * A host as a stranger would write it: starts the library, loads a module that it was never linked
 * with, and calls what the module published. usage: host MODULE [LIBRARY], the library being
 * loaded by path when the host is not linked with it.
 */
#include <dlfcn.h>
#include <stdio.h>
#include <zeb/sdk/module_entry.h>

#include "greeting.h"

static void* load(const char* path) {
  void* object = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (!object) fprintf(stderr, "%s\n", dlerror());
  return object;
}

static int greet(ZEBGetProcAddress find) {
  ZEBStringProcs strings;
  if (!ZEBFetchStringProcs(find, &strings)) return 1;
  GreetingProc greeting = (GreetingProc)find(GREETING_INTERFACE, "Greeting", "GreetingProc");
  if (!greeting) return 1;
  ZEBString* text = greeting();
  puts(strings.GetCString(text));
  strings.DeleteStringAtom(text);
  return 0;
}

static int greetWith(ZEBGetProcAddress find, const char* modulePath) {
  void* module = load(modulePath);
  if (!module) return 1;
  ZEBModuleStartFunction start;
  ZEBModuleStopFunction stop;
  *(void**)&start = dlsym(module, ZEB_MODULE_START);
  *(void**)&stop = dlsym(module, ZEB_MODULE_STOP);
  if (!start || !stop || !start(find)) return 1;
  const int failed = greet(find);
  stop();
  return failed || find(GREETING_INTERFACE, "Greeting", "GreetingProc");
}

int main(int argc, char** argv) {
  ZEBInitializeFunction start = NULL;
  ZEBTerminateFunction stop = NULL;
#ifdef HOST_IS_LINKED
  if (argc != 2) return 2;
  start = ZEBInitialize;
  stop = ZEBTerminate;
#else
  if (argc != 3) return 2;
  void* library = load(argv[2]);
  if (!library) return 1;
  *(void**)&start = dlsym(library, "ZEBInitialize");
  *(void**)&stop = dlsym(library, "ZEBTerminate");
  if (!start || !stop) return 1;
#endif
  ZEBGetProcAddress find = start(NULL, NULL, NULL);
  if (!find) return 1;
  const int failed = greetWith(find, argv[1]);
  stop();
  return failed;
}
