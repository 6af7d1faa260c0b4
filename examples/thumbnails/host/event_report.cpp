#include "host/event_report.h"

#include <stdexcept>

#include "zeb/sdk/client_start.hpp"
#include "zeb/sdk/executable_directory.hpp"

namespace examples {
namespace {

constexpr const char* kName = "thumbnails-events.txt";

// Counters that are only of interest when asked for would fill the report.
constexpr int32_t kThreshold = 10;
constexpr bool kOnlySignalled = true;

zeb::sdk::EventAccumulator accumulator(kName, kThreshold, kOnlySignalled);

}  // namespace

EventReport::Session::Session(const EventReport& /*report*/) : session_(accumulator) {}

EventReport::EventReport(const Services& services) {
  if (zeb::sdk::startClient(services.getProcAddress)) return;
  throw std::runtime_error("the event report cannot be begun");
}

EventReport::~EventReport() { zeb::sdk::stopClient(); }

std::filesystem::path EventReport::path() { return zeb::sdk::besideExecutable(kName); }

}  // namespace examples
