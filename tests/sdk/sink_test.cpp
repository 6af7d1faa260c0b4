// Chains of filters whose work is done by C++ objects.
#include "zeb/sdk/sink.hpp"

#include <gtest/gtest.h>

#include <string>

#include "sdk/started.h"

namespace {

namespace sdk = zeb::sdk;

std::span<const std::byte> bytesOf(std::string_view text) {
  return std::as_bytes(std::span(text.data(), text.size()));
}

struct Upper {
  static void write(std::span<const std::byte> bytes, const sdk::Next& next) {
    std::string text;
    for (std::byte b : bytes) text += static_cast<char>(std::toupper(static_cast<int>(b)));
    next.write(bytesOf(text));
  }
};

// Holds everything back until it is closed.
struct Holding {
  void write(std::span<const std::byte> bytes, const sdk::Next& /*next*/) {
    for (std::byte b : bytes) held += static_cast<char>(b);
  }
  void close(const sdk::Next& next) {
    next.write(bytesOf(held));
    held.clear();
  }
  std::string held;
};

class Sinks : public Started {
 protected:
  std::string arrived;
  sdk::Sink end = sdk::Sink::to([this](std::span<const std::byte> bytes) {
    if (bytes.empty()) throw std::runtime_error("nothing was written");
    for (std::byte b : bytes) arrived += static_cast<char>(b);
  });
};

TEST_F(Sinks, FilterWorksBeforeItsTarget) {
  const sdk::Sink chain = sdk::Sink::identity(sdk::Sink::filter(end, Upper{}));
  chain.write(bytesOf("hello"));
  EXPECT_EQ(arrived, "HELLO");
  EXPECT_TRUE(chain.isFilter());
  EXPECT_FALSE(end.isFilter());
}

TEST_F(Sinks, ClosingWritesOutWhatAFilterHolds) {
  const sdk::Sink chain = sdk::Sink::filter(sdk::Sink::filter(end, Upper{}), Holding{});
  chain.write(bytesOf("hel"));
  chain.write(bytesOf("lo"));
  EXPECT_EQ(arrived, "");
  chain.close();
  EXPECT_EQ(arrived, "HELLO");
}

TEST_F(Sinks, WhatAConsumerThrowsIsTheWritersFailure) {
  const sdk::Sink chain = sdk::Sink::identity(end);
  try {
    chain.write({});
    FAIL() << "nothing was thrown";
  } catch (const sdk::Failure& failure) {
    EXPECT_STREQ(failure.what(), "nothing was written");
  }
}

TEST_F(Sinks, AppendingReplacesTheEnd) {
  const sdk::Sink chain = sdk::Sink::identity(sdk::Sink::null());
  chain.write(bytesOf("lost"));
  chain.append(end);
  chain.write(bytesOf("found"));
  EXPECT_EQ(arrived, "found");
  EXPECT_THROW(chain.append(chain), sdk::Failure);
}

TEST_F(Sinks, SharedSinkLivesAsLongAsItsOwners) {
  sdk::Sink first = sdk::Sink::identity(end);
  const sdk::Sink second = first.share();
  first.reset();
  second.write(bytesOf("still here"));
  EXPECT_EQ(arrived, "still here");
}

}  // namespace
