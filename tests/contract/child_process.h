// Runs part of a test in a child process, for what must not touch the process of the other tests:
// failed starts, counts below zero, teardowns cut short.
//
// The body uses googletest's assertions, whose messages appear in the test's output. It answers the
// parent through a pipe, because an exit code may be that of a tool which watches the child. A body
// may answer a number of its own; a child that crashes, or that hangs for a minute, answers
// nothing.
#ifndef ZEB_TESTS_CONTRACT_CHILD_PROCESS_H
#define ZEB_TESTS_CONTRACT_CHILD_PROCESS_H

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <type_traits>

#include "contract/library.h"

namespace contract {

// What a child came to.
struct ChildEnd {
  static constexpr int kPassed = 0;
  static constexpr int kFailed = 1;
  static constexpr int kNoAnswer = -1;

  int answer = kNoAnswer;
  int status = 0;  // as waitpid tells it

  ::testing::AssertionResult passed() const {
    if (answer == kPassed) return ::testing::AssertionSuccess();
    if (answer != kNoAnswer)
      return ::testing::AssertionFailure() << "the child answered " << answer;
    return ::testing::AssertionFailure()
           << "the child did not come to its end: "
           << (WIFSIGNALED(status) ? "signal " : "exit code ")
           << (WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status));
  }
};

namespace child {

constexpr unsigned kHangSeconds = 60;

template <class Body>
int AnswerOf(Body& body) {
  if constexpr (std::is_void_v<std::invoke_result_t<Body&>>) {
    body();
    return ChildEnd::kPassed;
  } else {
    return body();
  }
}

template <class Body>
[[noreturn]] void RunAndExit(Body& body, int answers) {
  alarm(kHangSeconds);
  int answer = ChildEnd::kFailed;
  try {
    answer = AnswerOf(body);
  } catch (const std::exception& exception) {
    ADD_FAILURE() << "the child threw: " << exception.what();
  }
  if (::testing::Test::HasFailure()) answer = ChildEnd::kFailed;
  std::fflush(nullptr);
  const bool told = write(answers, &answer, sizeof(answer)) == sizeof(answer);
  _exit(told ? 0 : 1);
}

}  // namespace child

template <class Body>
ChildEnd RunInChild(Body body) {
  int ends[2];
  if (pipe(ends) != 0) throw std::runtime_error("no pipe");
  std::fflush(nullptr);
  const pid_t pid = fork();
  if (pid == 0) child::RunAndExit(body, ends[1]);
  close(ends[1]);
  ChildEnd end;
  int answer = 0;
  if (read(ends[0], &answer, sizeof(answer)) == sizeof(answer)) end.answer = answer;
  close(ends[0]);
  if (pid < 0 || waitpid(pid, &end.status, 0) != pid) throw std::runtime_error("no child process");
  return end;
}

template <class Body>
void ExpectPassesInChild(Body body) {
  EXPECT_TRUE(RunInChild(body).passed());
}

// The same in processes that have never loaded the library before.
template <class Body>
ChildEnd RunInFreshChild(Body body) {
  EXPECT_FALSE(IsLoaded()) << "the test's own process has the library";
  return RunInChild(body);
}

template <class Body>
void ExpectPassesInFreshChild(Body body) {
  EXPECT_TRUE(RunInFreshChild(body).passed());
}

}  // namespace contract

#endif
