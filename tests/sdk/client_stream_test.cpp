// Streams over C++ objects.
#include "zeb/sdk/client_stream.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>

#include "sdk/started.h"

namespace {

namespace sdk = zeb::sdk;

int alive = 0;

// Reads its text; writing is not for it.
struct Source {
  explicit Source(std::string content) : text(std::move(content)) { ++alive; }
  Source(const Source&) = delete;
  Source& operator=(const Source&) = delete;
  ~Source() { --alive; }

  uint64_t read(std::span<std::byte> bytes) {
    const size_t count = std::min(bytes.size(), text.size() - at);
    std::transform(text.begin() + static_cast<std::ptrdiff_t>(at),
                   text.begin() + static_cast<std::ptrdiff_t>(at + count), bytes.begin(),
                   [](char c) { return static_cast<std::byte>(c); });
    at += count;
    return count;
  }
  static void write(std::span<const std::byte> /*bytes*/) {
    throw std::runtime_error("this text cannot be written");
  }

  std::string text;
  size_t at = 0;
};

struct RewindableSource : Source {
  using Source::Source;
  void rewind() { at = 0; }
  [[nodiscard]] std::unique_ptr<RewindableSource> independent() const {
    return std::make_unique<RewindableSource>(text);
  }
};

struct PositionableSource : Source {
  using Source::Source;
  void rewind() { at = 0; }
  [[nodiscard]] std::unique_ptr<PositionableSource> independent() const {
    return std::make_unique<PositionableSource>(text);
  }
  [[nodiscard]] uint64_t position() const { return at; }
  void seek(int64_t offset, sdk::Origin origin) {
    if (origin != sdk::Origin::beginning) throw std::invalid_argument("only from the beginning");
    at = static_cast<size_t>(offset);
  }
};

std::string readAll(const sdk::Stream& stream) {
  std::string text(100, '.');
  text.resize(stream.read(std::as_writable_bytes(std::span(text))));
  return text;
}

class ClientStreams : public Started {
 protected:
  ClientStreams() { alive = 0; }
  ~ClientStreams() override { EXPECT_EQ(alive, 0); }
};

TEST_F(ClientStreams, SimpleMediumIsReadAndCannotRewind) {
  const sdk::Stream stream = sdk::streamOver(std::make_unique<Source>("hello"));
  EXPECT_EQ(readAll(stream), "hello");
  EXPECT_FALSE(stream.tryRewind());
}

TEST_F(ClientStreams, WhatTheMediumThrowsIsTheError) {
  const sdk::Stream stream = sdk::streamOver(std::make_unique<Source>("hello"));
  const std::byte byte{};
  const sdk::Result<void> written = stream.tryWrite(std::span(&byte, 1));
  ASSERT_FALSE(written);
  EXPECT_EQ(written.error().message(), "this text cannot be written");
}

TEST_F(ClientStreams, RewindableMediumRewinds) {
  const sdk::Stream stream = sdk::streamOver(std::make_unique<RewindableSource>("hello"));
  EXPECT_EQ(readAll(stream), "hello");
  stream.rewind();
  EXPECT_EQ(readAll(stream), "hello");
  EXPECT_FALSE(stream.trySeek(0));
}

TEST_F(ClientStreams, PositionableMediumSeeksAndHasIndependentStreams) {
  const sdk::Stream stream = sdk::streamOver(std::make_unique<PositionableSource>("hello"));
  stream.seek(3);
  EXPECT_EQ(stream.position(), 3U);
  const sdk::Stream other = stream.independent();
  EXPECT_EQ(readAll(other), "hello");
  EXPECT_EQ(readAll(stream), "lo");
  EXPECT_THROW(stream.seek(0, sdk::Origin::end), sdk::Failure);
}

}  // namespace
