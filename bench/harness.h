// Rows and how they are timed.
//
// A row is one case measured for us and for its peers in the same process run. Every side of a row
// does the same work on the same prepared keys; a row checks its sides' answers before its first
// timing. The sides of a row are repeated in random order, so that a disturbance of the machine
// hits them alike; rows follow each other in the order in which they were added, and what a row
// holds is freed before the next one begins.
//
// A time is wall time per operation of one thread: two threads that each do a million operations in
// a tenth of a second need 100 ns per operation, whether or not they hinder each other.
#ifndef ZEB_BENCH_HARNESS_H
#define ZEB_BENCH_HARNESS_H

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "check.h"

namespace zeb::bench {

// One contender of a row: a name and the function that Google Benchmark times.
struct Side {
  std::string name;
  std::function<void(benchmark::State&)> body;
};

// What a row has to reach.
struct Goal {
  enum class Kind {
    ratio,       // at most `limit` times the fastest of `against`
    difference,  // at most `limit` more than the fastest of `against`, in the row's unit
    time,        // at most `limit` in the row's unit, whatever the peers need
  };

  double limit;
  std::vector<std::string> against = {};  // names of peers; empty: all of them
  Kind kind = Kind::ratio;
};

struct Row {
  std::string area;
  std::string name;
  int threads = 1;
  std::string unit = "ns";  // "ns" or "us"
  int operations = 1;       // how many operations one turn of a side does
  bool manualTime = false;  // the sides tell each turn's time themselves
  int64_t turns = 0;        // of each repetition; 0: as many as fill the least time
  std::optional<Goal> goal = {};
  std::function<void()> prepare =
      {};                         // untimed: makes what the sides need and checks their answers
  std::optional<Side> ours = {};  // always set
  std::vector<Side> peers = {};
};

using Rows = std::vector<Row>;

// How the rows are run.
struct RunOptions {
  std::string filter;      // regular expression on "area/case"; empty: all
  int repetitions = 7;     // of each side; the median counts
  double minimumTime = 0;  // seconds per repetition
  bool quick = false;      // a smoke run: times are printed, nothing is judged
  bool alone = false;      // without the peers, for a profiler to look at ours
};

// The outcome of one side.
struct Timing {
  std::string name;
  double median;  // in the row's unit
  double lowest;
  double highest;
};

// The outcome of a row.
struct Result {
  std::string area;
  std::string name;
  int threads;
  std::string unit;
  std::optional<Goal> goal;  // none as well when the peers that it needs are not built in
  Timing ours;
  std::vector<Timing> peers;

  // The fastest peer that the goal names, or of all when it names none; null when there is none.
  const Timing* bestPeer() const;
  std::optional<double> ratio() const;
  // Whether the goal is met; empty without a goal.
  std::optional<bool> met() const;
};

// Runs the rows that the filter leaves, in order, and hands each result to `report` as soon as it
// is there. The rows are consumed.
void runRows(Rows rows, const RunOptions& options,
             const std::function<void(const Result&)>& report);

// Ties the calling thread to the CPU that threads of this number share: 0 for the first, and so on.
void pinThread(int threadNumber);

// How many CPUs this process may use.
int usableCpus();

// Made on first use and kept by everyone who holds a reference: the rows of one subject share what
// is dear to set up, and it goes with the last of them.
template <class T>
class Shared {
 public:
  explicit Shared(std::function<std::unique_ptr<T>()> make)
      : state_(std::make_shared<State>(State{std::move(make), nullptr})) {}

  T& get() const {
    if (!state_->value) state_->value = state_->make();
    return *state_->value;
  }

 private:
  struct State {
    std::function<std::unique_ptr<T>()> make;
    std::unique_ptr<T> value;
  };
  std::shared_ptr<State> state_;
};

// A side whose turn is one call of an operation. `make` is called untimed, once per thread and
// repetition, with the thread's number, and returns the operation; what the operation owns is
// destroyed untimed as well.
template <class MakeOperation>
Side measure(std::string name, MakeOperation make) {
  return {std::move(name), [make = std::move(make)](benchmark::State& state) {
            pinThread(state.thread_index());
            auto operation = make(static_cast<size_t>(state.thread_index()));
            for (auto _ : state) operation();
          }};
}

// A side whose operation returns the seconds that each turn counts for; for rows with manualTime.
template <class MakeOperation>
Side measureManually(std::string name, MakeOperation make) {
  return {std::move(name), [make = std::move(make)](benchmark::State& state) {
            pinThread(state.thread_index());
            auto operation = make();
            for (auto _ : state) state.SetIterationTime(operation());
          }};
}

// Hides from the compiler where a function pointer or another value comes from, so that it calls or
// uses it as a client. (DoNotOptimize on something that may change lets g++ choose between a
// register and memory, and it was seen to come back with another value.)
template <class Value>
Value opaque(Value value) {
  if constexpr (std::is_scalar_v<Value>) {
    asm volatile("" : "+r"(value) : : "memory");
  } else {
    asm volatile("" : "+m"(value) : : "memory");
  }
  return value;
}

// A prepared sequence that is walked round and round.
template <class T>
class Cycle {
 public:
  explicit Cycle(const std::vector<T>& items)
      : begin_(items.data()), end_(items.data() + items.size()), next_(begin_) {}

  const T& next() {
    const T& item = *next_;
    if (++next_ == end_) next_ = begin_;
    return item;
  }

 private:
  const T* begin_;
  const T* end_;
  const T* next_;
};

}  // namespace zeb::bench

#endif
