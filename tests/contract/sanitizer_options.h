// The sanitizers end a process that asks for more memory than there can be; the library's answer to
// such a request is what is tested here, so they are told to answer null as the system does.
// Included by one file of an executable that asks for such sizes.
#ifndef ZEB_TESTS_CONTRACT_SANITIZER_OPTIONS_H
#define ZEB_TESTS_CONTRACT_SANITIZER_OPTIONS_H

extern "C" const char* __asan_default_options();
extern "C" const char* __tsan_default_options();

extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
extern "C" const char* __tsan_default_options() { return "allocator_may_return_null=1"; }

#endif
