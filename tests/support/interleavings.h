// Runs a small model of a protocol in every possible order of its threads' steps.
//
// A model is a plain state and, for each thread, a function that makes the thread's next step.
// Steps are atomic, and every order is tried; what must never happen is a predicate over the state.
// Models are small on purpose: the protocol's shared words and nothing else.
#ifndef ZEB_TESTS_SUPPORT_INTERLEAVINGS_H
#define ZEB_TESTS_SUPPORT_INTERLEAVINGS_H

#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace zeb::test {

enum class Step { done, blocked, finished };

// `State` is trivially copyable and has no padding that differs between equal states: use ints.
template <class State>
class Interleavings {
 public:
  // Makes a step of the thread, or says that it cannot now, or never again.
  using Thread = std::function<Step(State&)>;

  Interleavings(State initial, std::vector<Thread> threads, std::function<bool(const State&)> wrong)
      : threads_(std::move(threads)), wrong_(std::move(wrong)) {
    explore(initial);
  }

  [[nodiscard]] bool wentWrong() const { return wentWrong_; }
  [[nodiscard]] bool deadlocked() const { return deadlocked_; }
  [[nodiscard]] size_t states() const { return seen_.size(); }

 private:
  void explore(const State& initial) {
    std::vector<State> open{initial};
    while (!open.empty()) {
      const State state = open.back();
      open.pop_back();
      if (!seen_.insert(std::string(reinterpret_cast<const char*>(&state), sizeof state)).second) {
        continue;
      }
      wentWrong_ |= wrong_(state);
      expand(state, open);
    }
  }

  void expand(const State& state, std::vector<State>& open) {
    bool anyStep = false;
    bool anyBlocked = false;
    for (const Thread& thread : threads_) {
      State next = state;
      const Step step = thread(next);
      anyStep |= step == Step::done;
      anyBlocked |= step == Step::blocked;
      if (step == Step::done) open.push_back(next);
    }
    deadlocked_ |= !anyStep && anyBlocked;
  }

  std::vector<Thread> threads_;
  std::function<bool(const State&)> wrong_;
  std::set<std::string> seen_;
  bool wentWrong_ = false;
  bool deadlocked_ = false;
};

}  // namespace zeb::test

#endif
