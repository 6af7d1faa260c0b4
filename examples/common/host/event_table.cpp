#include "common/host/event_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <vector>

#include "common/host/output.h"

namespace examples {
namespace {

bool comesFirst(const ZEBEventRecord& a, const ZEBEventRecord& b) {
  if (a.criticality != b.criticality) return a.criticality > b.criticality;
  return std::strcmp(a.name, b.name) < 0;
}

}  // namespace

void printEventTable(const ZEBEventProcs& events) {
  uint32_t count = 0;
  const std::unique_ptr<ZEBEventRecord, ZEBDeleteEventSnapshotProc> snapshot(
      events.NewEventSnapshot(&count), events.DeleteEventSnapshot);
  if (snapshot == nullptr) throw std::bad_alloc();

  const std::span<ZEBEventRecord> records(snapshot.get(), count);
  std::sort(records.begin(), records.end(), comesFirst);
  std::vector<std::vector<std::string>> rows;
  for (const ZEBEventRecord& record : records) {
    if (record.total == 0) continue;
    rows.push_back({fmt::to_string(record.total), fmt::to_string(record.criticality), record.name});
  }
  printTable({{"total", Align::right}, {"criticality", Align::right}, {"name"}}, rows);
  printBlankLine();
  printRow("others", fmt::format("{} counters stand at 0", count - rows.size()));
}

}  // namespace examples
