// Starting and stopping the library, after a first time.
//
// There is no peer: the limit is a time. A start registers every service, a stop takes all of it
// back.
#include "library.h"
#include "rows.h"

namespace zeb::bench {

namespace {

constexpr double mostMicroseconds = 100;

void CheckStartAndStop() {
  const Library& library = TheLibrary();
  Check(!library.getGetProcAddress(), "another row left the library running");
  const ZEBGetProcAddress getProcAddress = library.initialize(nullptr, nullptr, nullptr);
  Check(getProcAddress, "the library does not start");
  Check(getProcAddress("ZEBStringInterface", "NewStringAtom", "ZEBNewStringAtomProc"),
        "a started library lacks a proc");
  library.terminate();
  Check(!library.getGetProcAddress(), "the library does not stop");
}

Row StartAndStopRow() {
  Row row{.area = "life cycle",
          .name = "start + stop, warm",
          .unit = "us",
          .goal = Goal{.limit = mostMicroseconds, .isTime = true}};
  row.prepare = CheckStartAndStop;
  row.ours = Measure("ours", [](size_t) {
    return [library = TheLibrary()] {
      benchmark::DoNotOptimize(library.initialize(nullptr, nullptr, nullptr));
      library.terminate();
    };
  });
  return row;
}

}  // namespace

void AddLifecycleRows(Rows& rows) { rows.push_back(StartAndStopRow()); }

}  // namespace zeb::bench
