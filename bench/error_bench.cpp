// Error objects.
//
// make, read, release  an error with a 40-character message is made, its message is read, the error
//                      is dropped. "message seen before" takes one of 16 messages in turn, as code
//                      that reports fixed texts does; "new message" one that was not there for 8192
//                      errors, as code that formats its messages does. The peers copy the text
//                      either way.
// share and drop       one more reference to a live error, and away with it. GError has no
//                      references; its copy is another error.
#include <cstring>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "library.h"
#include "rows.h"
#include "sequences.h"

#ifdef BENCH_HAS_ABSL
#include <absl/status/status.h>
#endif
#ifdef BENCH_HAS_GLIB
#include <glib.h>
#endif

namespace zeb::bench {

namespace {

constexpr size_t kMessageLength = 40;
constexpr int32_t kErrorId = 7;

// What a reader of the error takes from it: every byte of the text up to its end.
size_t read(const char* message) { return std::strlen(message); }

class OurErrors {
 public:
  OurErrors() {
    check(ZEBFetchErrorProcs(session_.getProcAddress(), &errors_), "error procs are missing");
    check(ZEBFetchStringProcs(session_.getProcAddress(), &strings_), "string procs are missing");
    live_ = errors_.NewError("the error that is shared", "BENCH", kErrorId, nullptr, nullptr);
    check(live_ && message(live_) == std::string_view("the error that is shared"),
          "an error does not tell its message");
    check(errors_.GetID(live_) == kErrorId, "an error does not tell its id");
  }

  ~OurErrors() { errors_.Release(live_); }

  auto makeReadRelease(const std::vector<const char*>& messages) {
    return [messages = Cycle(messages), errors = errors_, strings = strings_]() mutable {
      ZEBErrorObject* error = errors.NewError(messages.next(), "BENCH", kErrorId, nullptr, nullptr);
      benchmark::DoNotOptimize(read(strings.GetCString(errors.GetErrorMessage(error))));
      errors.Release(error);
    };
  }

  auto shareAndDrop() {
    return [error = live_, addRef = opaque(errors_.AddRef), release = opaque(errors_.Release)] {
      addRef(error);
      benchmark::ClobberMemory();
      release(error);
    };
  }

 private:
  const char* message(ZEBErrorObject* error) {
    return strings_.GetCString(errors_.GetErrorMessage(error));
  }

  Session session_;
  ZEBErrorProcs errors_;
  ZEBStringProcs strings_;
  ZEBErrorObject* live_;
};

#ifdef BENCH_HAS_GLIB
Side gErrorMake(const Shared<std::vector<const char*>>& messages) {
  return measure("g_error_new_literal", [messages](size_t) {
    return
        [messages = Cycle(messages.get()), domain = g_quark_from_static_string("BENCH")]() mutable {
          GError* error = g_error_new_literal(domain, kErrorId, messages.next());
          benchmark::DoNotOptimize(error);
          benchmark::DoNotOptimize(read(error->message));
          g_error_free(error);
        };
  });
}
#endif

#ifdef BENCH_HAS_ABSL
Side statusMake(const Shared<std::vector<const char*>>& messages) {
  return measure("absl::Status", [messages](size_t) {
    return [messages = Cycle(messages.get())]() mutable {
      const absl::Status status(absl::StatusCode::kInternal, messages.next());
      benchmark::DoNotOptimize(&status);
      // A string_view: the reader still goes over the text, as with the others.
      benchmark::DoNotOptimize(std::memchr(status.message().data(), 0, status.message().size()));
    };
  });
}

Side statusShare() {
  return measure("absl::Status copy", [](size_t) {
    return [live = absl::InternalError("the error that is shared, not inlined")] {
      const absl::Status copy = live;
      benchmark::DoNotOptimize(&copy);
    };
  });
}
#endif

Side exceptionPointerShare() {
  return measure("std::exception_ptr copy", [](size_t) {
    return [live = std::make_exception_ptr(std::runtime_error("the error that is shared"))] {
      const std::exception_ptr copy = live;
      benchmark::DoNotOptimize(&copy);
    };
  });
}

Row makeRow(std::string name, size_t messageCount, std::optional<Goal> goal) {
  const Shared<OurErrors> errors([] { return std::make_unique<OurErrors>(); });
  const auto texts = std::make_shared<Texts>(messageCount, kMessageLength, 31);
  const Shared<std::vector<const char*>> messages([texts] {
    auto pointers = std::make_unique<std::vector<const char*>>();
    for (size_t i = 0; i < texts->count(); ++i) pointers->push_back((*texts)[i]);
    return pointers;
  });

  Row row{.area = "errors", .name = std::move(name), .goal = std::move(goal)};
  row.prepare = [errors] { errors.get(); };
  row.ours = measure("ours", [=](size_t) { return errors.get().makeReadRelease(messages.get()); });
#ifdef BENCH_HAS_GLIB
  row.peers.push_back(gErrorMake(messages));
#endif
#ifdef BENCH_HAS_ABSL
  row.peers.push_back(statusMake(messages));
#endif
  return row;
}

Row shareRow() {
  const Shared<OurErrors> errors([] { return std::make_unique<OurErrors>(); });
  Row row{.area = "errors", .name = "share and drop a live error", .goal = Goal{1.0}};
  row.prepare = [errors] { errors.get(); };
  row.ours = measure("ours", [errors](size_t) { return errors.get().shareAndDrop(); });
#ifdef BENCH_HAS_ABSL
  row.peers.push_back(statusShare());
#endif
  row.peers.push_back(exceptionPointerShare());
  return row;
}

}  // namespace

void addErrorRows(Rows& rows) {
  rows.push_back(makeRow("make, read, release: message seen before", 16, Goal{1.5}));
  rows.push_back(makeRow("make, read, release: new message", 8192, std::nullopt));
  rows.push_back(shareRow());
}

}  // namespace zeb::bench
