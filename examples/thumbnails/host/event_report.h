// The report of what the event counters have counted while the folders were gone through.
#ifndef THUMBNAILS_HOST_EVENT_REPORT_H
#define THUMBNAILS_HOST_EVENT_REPORT_H

#include <filesystem>

#include "common/support/services.h"
#include "zeb/sdk/event_accumulator.hpp"

namespace examples {

// The report is written beside this program when the object goes; the counters that were there when
// the first session began are in it. One at a time.
class EventReport {
 public:
  // One folder, from its first picture to its last.
  class Session {
   public:
    explicit Session(const EventReport& report);

   private:
    zeb::sdk::EventSession session_;
  };

  // Throws std::runtime_error when the report cannot be begun.
  explicit EventReport(const Services& services);
  ~EventReport();

  EventReport(const EventReport&) = delete;
  EventReport& operator=(const EventReport&) = delete;

  [[nodiscard]] static std::filesystem::path path();
};

}  // namespace examples

#endif
