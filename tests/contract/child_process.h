// Runs part of a test in a child process, for what must not touch the process of the other tests:
// failed starts, counts below zero, teardowns cut short.
//
// The body uses googletest's assertions; their messages appear in the test's output, and the parent
// sees whether one failed. A child that crashes, or that hangs for a minute, fails as well. A body
// may also answer an exit code, which the child ends with unless an assertion failed.
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

namespace child {

constexpr unsigned kHangSeconds = 60;
constexpr int kFailed = 1;

// The exit code of a body that answers one of its own; 0 otherwise.
template <class Body>
int ExitCodeOf(Body& body) {
  if constexpr (std::is_void_v<std::invoke_result_t<Body&>>) {
    body();
    return 0;
  } else {
    return body();
  }
}

template <class Body>
[[noreturn]] void RunAndExit(Body& body) {
  alarm(kHangSeconds);
  int exitCode = kFailed;
  try {
    exitCode = ExitCodeOf(body);
  } catch (const std::exception& exception) {
    ADD_FAILURE() << "the child threw: " << exception.what();
  }
  std::fflush(nullptr);
  _exit(::testing::Test::HasFailure() ? kFailed : exitCode);
}

inline ::testing::AssertionResult Judge(int status) {
  if (WIFSIGNALED(status)) {
    return ::testing::AssertionFailure() << "the child was ended by signal " << WTERMSIG(status);
  }
  if (WEXITSTATUS(status) == 0) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "the child failed, exit code " << WEXITSTATUS(status);
}

}  // namespace child

template <class Body>
int StatusOfChild(Body body) {
  std::fflush(nullptr);
  const pid_t pid = fork();
  if (pid == 0) child::RunAndExit(body);
  int status = 0;
  if (pid < 0 || waitpid(pid, &status, 0) != pid) throw std::runtime_error("no child process");
  return status;
}

template <class Body>
void ExpectPassesInChild(Body body) {
  EXPECT_TRUE(child::Judge(StatusOfChild(body)));
}

// The same in processes that have never loaded the library before.
template <class Body>
int StatusOfFreshChild(Body body) {
  EXPECT_FALSE(IsLoaded()) << "the test's own process has the library";
  return StatusOfChild(body);
}

template <class Body>
void ExpectPassesInFreshChild(Body body) {
  EXPECT_TRUE(child::Judge(StatusOfFreshChild(body)));
}

}  // namespace contract

#endif
