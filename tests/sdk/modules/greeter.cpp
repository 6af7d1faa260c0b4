// A module of one class. It is built several times: GREETER_PUBLISHES names the interface, and with
// GREETER_NEEDS_MOODS it does not start without the test's own interface.
#include <stdexcept>

#include "sdk/modules/greeting.hpp"
#include "zeb/sdk/atom.hpp"
#include "zeb/sdk/event_counter.hpp"
#include "zeb/sdk/module_entry.hpp"
#include "zeb/sdk/publication.hpp"

namespace sdk = zeb::sdk;
using sdk_test::Mood;
using sdk_test::Moods;

// The module's static counter works between start and stop.
static zeb::sdk::EventCounter greetings(sdk_test::kGreetingEvent, 30);

static Mood mood() {
#ifdef GREETER_NEEDS_MOODS
  return static_cast<Mood>(sdk::procs<Moods>().Mood());
#else
  const auto* moods = sdk::tryProcs<Moods>();
  return moods != nullptr ? static_cast<Mood>(moods->Mood()) : Mood::good;
#endif
}

// Of ordinary visibility and of the same name in all of these modules.
class Greeter {
 public:
  Greeter() {
    switch (mood()) {
      case Mood::exception:
        throw std::runtime_error("in no mood");
      case Mood::number:
        throw 1;
      case Mood::error:
        throw sdk::Failure(sdk::Error::make("no greetings left", "greeter", 1));
      case Mood::noMemory:
        throw std::bad_alloc();
      case Mood::good:
        break;
    }
  }
  // The library can still be reached.
  ~Greeter() { sdk::procs<sdk::Frame>().ReportError("the greeter goes"); }
  Greeter(const Greeter&) = delete;
  Greeter& operator=(const Greeter&) = delete;

 private:
  static uint64_t greet() {
    greetings.signal();
    return ++sdk::moduleObject<Greeter>().count_;
  }

  uint64_t count_ = 0;
  sdk::Atom name_{"a name that the greeter holds"};
  sdk::Publication<sdk_test::GREETER_PUBLISHES> published_{{.Greet = sdk::guarded<&greet>()}};
};
ZEB_SDK_MODULE(Greeter);

extern "C" ZEB_MODULE_EXPORT void setModuleLog(sdk::Log log);
void setModuleLog(sdk::Log log) { sdk::setLog(log); }
