// Streams in C++ clothes.
#include "zeb/sdk/stream.hpp"

#include <gtest/gtest.h>

#include <string>

#include "sdk/started.h"

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

}  // namespace
