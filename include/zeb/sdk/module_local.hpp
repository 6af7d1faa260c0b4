// Variables of which every module, each shared object and the executable, has one of its own.
//
// An inline variable of ordinary visibility would be one for the whole process: modules would share
// their bindings, and none could be unloaded.
#ifndef ZEB_SDK_MODULE_LOCAL_HPP
#define ZEB_SDK_MODULE_LOCAL_HPP

#if defined(__GNUC__)
#define ZEB_SDK_MODULE_LOCAL [[gnu::visibility("hidden")]]
#else
#define ZEB_SDK_MODULE_LOCAL
#endif

#endif
