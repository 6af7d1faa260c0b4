// What the modules of these tests publish, and what they ask their test.
#ifndef ZEB_TESTS_SDK_MODULES_GREETING_HPP
#define ZEB_TESTS_SDK_MODULES_GREETING_HPP

#include "zeb/sdk/interface.hpp"

namespace sdk_test {

// How many greetings this module has given, this one included.
using GreetProc = uint64_t (*)();
#define GREETING_PROCS(X) X(Greet, Greet, GreetProc)
ZEB_SDK_INTERFACE(Greeting, "GreetingInterface", GREETING_PROCS);
ZEB_SDK_INTERFACE(OtherGreeting, "OtherGreetingInterface", GREETING_PROCS);

// How the construction of a module ends.
enum class Mood : int32_t { good, exception, number, error, noMemory };
using MoodProc = int32_t (*)();
#define MOODS_PROCS(X) X(Mood, Mood, MoodProc)
ZEB_SDK_INTERFACE(Moods, "MoodInterface", MOODS_PROCS);

// A counter that is a static object of the greeting module.
inline constexpr const char* kGreetingEvent = "a module of the tests greeted";

}  // namespace sdk_test

#endif
