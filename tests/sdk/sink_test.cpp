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

struct Encoder {
  static void write(std::span<const std::byte> bytes, const sdk::Next& next) { next.write(bytes); }
  static const char* postScriptFilter() noexcept { return "DCTDecode"; }
  void imageParameters(uint32_t first, uint32_t second, uint32_t third) noexcept {
    *told = std::to_string(first) + " " + std::to_string(second) + " " + std::to_string(third);
  }
  void compressionParameters(float value) noexcept { *told = std::to_string(value); }
  std::string* told;
};

TEST_F(Sinks, JpegFilterIsToldItsParameters) {
  std::string told;
  const sdk::Sink encoder = sdk::Sink::jpegFilter(end, Encoder{&told});
  encoder.setImageParameters(3, 2, 1);
  EXPECT_EQ(told, "3 2 1");
  encoder.setCompressionParameters(0.5F);
  EXPECT_EQ(told, std::to_string(0.5F));
  encoder.write(bytesOf("hello"));
  EXPECT_EQ(arrived, "hello");
}

TEST_F(Sinks, FilterWithACounterpartNamesIt) {
  std::string told;
  EXPECT_STREQ(sdk::Sink::filter(end, Encoder{&told}).postScriptFilter(), "DCTDecode");
  EXPECT_EQ(sdk::Sink::filter(end, Upper{}).postScriptFilter(), nullptr);
}

TEST_F(Sinks, OtherFiltersIgnoreParameters) {
  const sdk::Sink upper = sdk::Sink::filter(end, Upper{});
  upper.setImageParameters(3, 2, 1);
  upper.setCompressionParameters(0.5F);
  upper.write(bytesOf("hello"));
  EXPECT_EQ(arrived, "HELLO");
}

TEST_F(Sinks, TargetIsOwnedOnItsOwn) {
  sdk::Sink chain = sdk::Sink::filter(end, Upper{});
  const sdk::Sink target = chain.target();
  EXPECT_EQ(target.get(), end.get());
  chain.reset();
  end.reset();
  target.write(bytesOf("hello"));
  EXPECT_EQ(arrived, "hello");
  EXPECT_FALSE(target.target());
}

TEST_F(Sinks, ChainEndsWhereItDidWhenItsEndGoes) {
  std::string elsewhere;
  const sdk::Sink chain = sdk::Sink::filter(end, Upper{});
  {
    const sdk::ChainEnd before(chain);
    chain.append(sdk::Sink::to([&](std::span<const std::byte> bytes) {
      for (std::byte b : bytes) elsewhere += static_cast<char>(b);
    }));
    chain.write(bytesOf("there"));
  }
  chain.write(bytesOf("here"));
  EXPECT_EQ(elsewhere, "THERE");
  EXPECT_EQ(arrived, "HERE");
}

TEST_F(Sinks, MovedChainEndRestoresOnce) {
  const sdk::Sink chain = sdk::Sink::filter(end, Upper{});
  sdk::ChainEnd before(chain);
  sdk::ChainEnd moved = std::move(before);
  chain.append(sdk::Sink::null());
  before.reset();  // NOLINT(bugprone-use-after-move): that is the point
  chain.write(bytesOf("nowhere"));
  moved.reset();
  moved.reset();
  chain.write(bytesOf("here"));
  EXPECT_EQ(arrived, "HERE");
}

TEST_F(Sinks, PlainSinkHasNoChainEnd) { EXPECT_THROW(sdk::ChainEnd{end}, sdk::Failure); }

}  // namespace
