// Variables of which every module, each shared object and the executable, has one of its own, and
// the functions that read them.
//
// An inline variable of ordinary visibility would be one for the whole process: modules would share
// their bindings, and none could be unloaded. An inline function of ordinary visibility may be the
// copy of a host that exports its symbols, and would read the host's variables.
#ifndef ZEB_SDK_MODULE_LOCAL_HPP
#define ZEB_SDK_MODULE_LOCAL_HPP

#if defined(__GNUC__)
#define ZEB_SDK_MODULE_LOCAL [[gnu::visibility("hidden")]]
#else
#define ZEB_SDK_MODULE_LOCAL
#endif

#endif
