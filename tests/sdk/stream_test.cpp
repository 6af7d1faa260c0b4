// Streams in C++ clothes.
#include "zeb/sdk/stream.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <string>

#include "sdk/started.h"
#include "zeb/sdk/client_stream.hpp"

namespace {

namespace sdk = zeb::sdk;

std::span<const std::byte> bytesOf(std::string_view text) {
  return std::as_bytes(std::span(text.data(), text.size()));
}

std::string readAll(const sdk::Stream& stream) {
  std::string text(100, '\0');
  text.resize(stream.read(std::as_writable_bytes(std::span(text))));
  return text;
}

class Streams : public Started {};

TEST_F(Streams, ReadsWhatWasWritten) {
  const sdk::Stream stream = sdk::Stream::memory();
  stream.write(bytesOf("hello world"));
  EXPECT_EQ(stream.position(), 11U);
  stream.seek(-5, sdk::Origin::end);
  EXPECT_EQ(readAll(stream), "world");
  EXPECT_EQ(readAll(stream), "");
  stream.rewind();
  EXPECT_EQ(readAll(stream), "hello world");
}

TEST_F(Streams, FailuresComeInTheFormThatIsAskedFor) {
  const sdk::Stream stream = sdk::Stream::memory();
  sdk::Result<void> moved = stream.trySeek(-1);
  ASSERT_FALSE(moved);
  EXPECT_EQ(moved.error().message(), "invalid stream position");
  EXPECT_THROW(stream.seek(-1), sdk::Failure);
  sdk::Result<sdk::Stream> missing = sdk::Stream::tryFile("there is no such file", "rb");
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.error().message(), "file does not exist");
}

TEST_F(Streams, IndependentStreamHasACursorOfItsOwn) {
  const sdk::Stream stream = sdk::Stream::memory();
  stream.write(bytesOf("hello"));
  const sdk::Stream other = stream.independent();
  EXPECT_EQ(other.position(), 0U);
  EXPECT_EQ(readAll(other), "hello");
  EXPECT_THROW(stream.write(bytesOf("x")), sdk::Failure);
}

TEST_F(Streams, BufferStreamLiesOverTheBuffersBytes) {
  const sdk::SharedBuffer buffer = sdk::SharedBuffer::make(4);
  const sdk::Stream stream = sdk::Stream::buffer(buffer);
  stream.write(bytesOf("abcd"));
  EXPECT_EQ(buffer.bytes()[2], std::byte{'c'});
  EXPECT_FALSE(stream.tryWrite(bytesOf("e")));
}

TEST_F(Streams, IostreamFormatsAndParses) {
  sdk::IOStream stream(sdk::Stream::memory());
  stream << "answer " << 42 << '\n' << std::string(10000, 'x') << '\n';
  stream.seekg(0);
  std::string word;
  int number = 0;
  std::string filler;
  stream >> word >> number >> filler;
  EXPECT_TRUE(stream.good());
  EXPECT_EQ(word, "answer");
  EXPECT_EQ(number, 42);
  EXPECT_EQ(filler, std::string(10000, 'x'));
}

TEST_F(Streams, IostreamWritesWhereItHasReadTo) {
  sdk::IOStream stream(sdk::Stream::memory());
  stream << "0123456789";
  stream.seekg(0);
  char digit = 0;
  stream >> digit >> digit;
  EXPECT_EQ(stream.tellg(), 2);
  stream << "xx" << std::flush;
  stream.seekg(0);
  std::string all;
  stream >> all;
  EXPECT_EQ(all, "01xx456789");
}

TEST_F(Streams, IostreamTellsWhatFailed) {
  sdk::Stream memory = sdk::Stream::memory();
  memory.write(bytesOf("hello"));
  const sdk::Stream other = memory.independent();
  sdk::IOStream stream(std::move(memory));
  stream << "more" << std::flush;
  EXPECT_FALSE(stream.good());
  EXPECT_EQ(stream.lastError().message(), "Attempt to write read-only stream");
}

// A medium without a position: what is read has nothing to do with what is written.
struct Line {
  uint64_t read(std::span<std::byte> room) {
    if (broken) throw std::runtime_error("the line is dead");
    const uint64_t count = std::min<uint64_t>(room.size(), incoming.size());
    std::memcpy(room.data(), incoming.data(), count);
    incoming.erase(0, count);
    return count + surplus;
  }
  void write(std::span<const std::byte> bytes) {
    outgoing->append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  }
  std::string incoming = {};
  std::string* outgoing;
  bool broken = false;
  uint64_t surplus = 0;
};

TEST_F(Streams, IostreamAnswersOnALineWithoutLosingWhatCameIn) {
  std::string sent;
  sdk::IOStream stream(
      sdk::streamOver(std::make_unique<Line>(Line{.incoming = "one\ntwo\n", .outgoing = &sent})));
  std::string line;
  std::getline(stream, line);
  EXPECT_EQ(line, "one");
  EXPECT_EQ(stream.tellg(), std::streampos(-1));
  stream << "answer" << std::flush;
  EXPECT_EQ(sent, "answer");
  std::getline(stream, line);
  EXPECT_EQ(line, "two");
}

TEST_F(Streams, AskingForThePositionKeepsWhatWasReadAhead) {
  sdk::IOStream stream(sdk::Stream::memory());
  stream << "one\ntwo\n";
  EXPECT_EQ(stream.tellp(), std::streampos(8));
  stream.seekg(0);
  std::string line;
  std::getline(stream, line);
  EXPECT_EQ(stream.tellg(), std::streampos(4));
  EXPECT_EQ(stream.stream().position(), 8U) << "nothing was given back";
  std::getline(stream, line);
  EXPECT_EQ(line, "two");
}

TEST_F(Streams, FailedReadIsNotTheEnd) {
  std::string sent;
  sdk::IOStream stream(
      sdk::streamOver(std::make_unique<Line>(Line{.outgoing = &sent, .broken = true})));
  EXPECT_EQ(stream.get(), std::char_traits<char>::eof());
  EXPECT_TRUE(stream.bad());
  EXPECT_EQ(stream.lastError().message(), "the line is dead");
  stream.clear();
  stream.exceptions(std::ios::badbit);
  EXPECT_THROW((void)stream.get(), sdk::Failure);
}

TEST_F(Streams, MediumThatReadsTooMuchIsRefused) {
  std::string sent;
  const sdk::Stream stream =
      sdk::streamOver(std::make_unique<Line>(Line{.outgoing = &sent, .surplus = 5}));
  std::array<std::byte, 4> room{};
  EXPECT_THROW((void)stream.read(room), sdk::Failure);
}

TEST_F(Streams, WhatIsLeftWhenTheLibraryStopsIsLostQuietly) {
  std::string sent;
  std::optional<sdk::IOStream> stream(
      sdk::streamOver(std::make_unique<Line>(Line{.outgoing = &sent})));
  *stream << "pending";
  ZEBContainer* const left = stream->stream().get();
  count = library.stop();
  stream.reset();
  EXPECT_EQ(sent, "");
  reports.clear();
  // Any later start can give the stream back.
  sdk::Library again = sdk::Library::load(ZEB_LIBRARY_PATH, {.unregisterCountStart = count});
  sdk::procs<sdk::Containers>().Release(left);
  count = again.stop();
}

}  // namespace
