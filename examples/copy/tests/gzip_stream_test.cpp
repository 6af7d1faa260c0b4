// The streams of the gzip module, as whoever holds one sees them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>
#include <zlib.h>

#include <array>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "common/support/container.h"
#include "common/support/error.h"
#include "common/support/stream.h"
#include "common/tests/running_modules.h"
#include "host/gzip_client.h"

namespace examples {
namespace {

using testing::HasSubstr;
using testing::StrEq;

const std::filesystem::path kFiles = COPY_TEST_FILES;

std::string bytesOf(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// What zlib finds in a compressed file, without the module.
std::string unpackedByZlib(const std::filesystem::path& path) {
  std::string bytes;
  const gzFile file = gzopen(path.c_str(), "rb");
  EXPECT_EQ(gzdirect(file), 0);
  std::array<char, 4096> piece{};
  for (int count = 1; count > 0; bytes.append(piece.data(), static_cast<size_t>(count))) {
    count = gzread(file, piece.data(), piece.size());
    if (count < 0) break;
  }
  EXPECT_EQ(gzclose(file), Z_OK);
  return bytes;
}

class GzipStream : public testing::Test {
 protected:
  GzipStream() : running_({COPY_TEST_MODULES}), gzip_(zeb()) {}
  ~GzipStream() override { std::filesystem::remove(target_); }

  const Services& zeb() { return running_.services(); }

  Stream reader() { return gzip_.read(kFiles / "several_mb.gz"); }

  CopyGzipProcs procs() {
    CopyGzipProcs procs{};
    EXPECT_EQ(CopyFetchGzipProcs(zeb().getProcAddress, &procs), 1);
    return procs;
  }

  // A proc's result, kept for questions.
  Error error(ZEBErrorObject* owned) { return {zeb(), owned}; }

  static std::string read(const Stream& stream, size_t size) {
    std::string bytes(size, '\0');
    bytes.resize(stream.read(std::as_writable_bytes(std::span(bytes))));
    return bytes;
  }

  static void write(const Stream& stream, std::string_view bytes) {
    stream.write(std::as_bytes(std::span(bytes)));
  }

  ZEBErrorObject* tryToRead(const Stream& stream) {
    uint64_t count = 0;
    char byte = 0;
    return zeb().simpleStreams.Read(stream.get(), &count, &byte, 1);
  }

  Stream independent(const Stream& stream) {
    ZEBContainer* made = nullptr;
    raiseIfFailed(zeb().errors, zeb().positionableStreams.CreateIndependentlyPositionableStream(
                                    stream.get(), &made));
    return {zeb(), made};
  }

  // A file name of this process alone: tests run side by side.
  const std::filesystem::path target_ =
      std::filesystem::temp_directory_path() / ("gzip_stream_test." + std::to_string(getpid()));
  RunningModules running_;
  GzipClient gzip_;
};

TEST_F(GzipStream, ReadsWhatTheFileHeldBeforeItWasCompressed) {
  const std::string whole = bytesOf(kFiles / "several_mb");
  ASSERT_GT(whole.size(), 4000000U);
  EXPECT_EQ(read(reader(), whole.size() + 1), whole);
}

TEST_F(GzipStream, WritesAFileThatZlibReads) {
  const std::string text(100000, 'z');
  {
    const Stream writer = gzip_.write(target_);
    write(writer, "a and ");
    write(writer, text);
    gzip_.finish(writer);
    EXPECT_EQ(unpackedByZlib(target_), "a and " + text);
  }
  EXPECT_EQ(unpackedByZlib(target_), "a and " + text);
}

TEST_F(GzipStream, CompletesTheFileWhenTheStreamGoes) {
  write(gzip_.write(target_), "not finished");
  EXPECT_EQ(unpackedByZlib(target_), "not finished");
}

TEST_F(GzipStream, TellsItsPosition) {
  const Stream stream = reader();
  EXPECT_EQ(stream.position(), 0U);
  read(stream, 1000);
  EXPECT_EQ(stream.position(), 1000U);
}

TEST_F(GzipStream, GoesForwardAndBack) {
  const std::string whole = bytesOf(kFiles / "several_mb");
  const Stream stream = reader();
  stream.seek(3000000);
  EXPECT_EQ(read(stream, 50), whole.substr(3000000, 50));
  stream.seek(-1000040, ZEB_SEEK_FROM_POSITION);
  EXPECT_EQ(stream.position(), 2000010U);
  EXPECT_EQ(read(stream, 50), whole.substr(2000010, 50));
  stream.seek(10);
  EXPECT_EQ(read(stream, 50), whole.substr(10, 50));
}

TEST_F(GzipStream, RewindsToTheBeginning) {
  const Stream stream = reader();
  const std::string first = read(stream, 100);
  EXPECT_FALSE(error(zeb().rewindableStreams.Rewind(stream.get())));
  EXPECT_EQ(stream.position(), 0U);
  EXPECT_EQ(read(stream, 100), first);
}

TEST_F(GzipStream, GivesNothingPastItsEnd) {
  const Stream stream = reader();
  stream.seek(100000000);
  EXPECT_EQ(read(stream, 10), "");
}

TEST_F(GzipStream, HasNoEndToSeekFrom) {
  const Stream stream = reader();
  const Error refused = error(zeb().positionableStreams.Seek(stream.get(), 0, ZEB_SEEK_FROM_END));
  EXPECT_THAT(refused.component(), StrEq(COPY_GZIP_COMPONENT));
  EXPECT_EQ(refused.id(), COPY_GZIP_ERROR_SEEK);
}

TEST_F(GzipStream, RefusesAPositionBelowZeroAndStays) {
  const Stream stream = reader();
  read(stream, 10);
  EXPECT_EQ(error(zeb().positionableStreams.Seek(stream.get(), -11, ZEB_SEEK_FROM_POSITION)).id(),
            COPY_GZIP_ERROR_SEEK);
  EXPECT_EQ(error(zeb().positionableStreams.Seek(stream.get(), -1, ZEB_SEEK_FROM_BEGINNING)).id(),
            COPY_GZIP_ERROR_SEEK);
  EXPECT_EQ(stream.position(), 10U);
}

TEST_F(GzipStream, RefusesAnUnknownOrigin) {
  EXPECT_EQ(error(zeb().positionableStreams.Seek(reader().get(), 0, 3)).id(), COPY_GZIP_ERROR_SEEK);
}

TEST_F(GzipStream, GivesIndependentStreamsACursorOfTheirOwn) {
  const Stream stream = reader();
  const std::string first = read(stream, 100);
  const Stream other = independent(stream);
  EXPECT_EQ(other.position(), 0U);
  EXPECT_EQ(read(other, 100), first);
  EXPECT_EQ(stream.position(), 100U);
}

TEST_F(GzipStream, KeepsAnIndependentStreamWhenTheFirstGoes) {
  const Stream other = independent(reader());
  EXPECT_EQ(read(other, 6), "line 0");
}

TEST_F(GzipStream, GivesIndependentlyRewindableStreams) {
  const Stream stream = reader();
  read(stream, 100);
  ZEBContainer* made = nullptr;
  ASSERT_FALSE(
      error(zeb().rewindableStreams.CreateIndependentlyRewindableStream(stream.get(), &made)));
  const Stream other(zeb(), made);
  EXPECT_EQ(read(other, 6), "line 0");
}

TEST_F(GzipStream, CannotBeWrittenWhenItIsRead) {
  const Stream stream = reader();
  const Error refused = error(zeb().simpleStreams.Write(stream.get(), "x", 1));
  EXPECT_EQ(refused.id(), COPY_GZIP_ERROR_DIRECTION);
}

TEST_F(GzipStream, CannotBeReadWhenItIsWritten) {
  EXPECT_EQ(error(tryToRead(gzip_.write(target_))).id(), COPY_GZIP_ERROR_DIRECTION);
}

TEST_F(GzipStream, CannotBePositionedWhenItIsWritten) {
  const Stream writer = gzip_.write(target_);
  uint64_t position = 0;
  EXPECT_THAT(error(zeb().positionableStreams.Mark(writer.get(), &position)).message(),
              StrEq("Missing ZEB Method"));
  EXPECT_THAT(error(zeb().rewindableStreams.Rewind(writer.get())).message(),
              StrEq("Missing ZEB Method"));
}

TEST_F(GzipStream, CannotBeWrittenOnceItIsFinished) {
  const Stream writer = gzip_.write(target_);
  gzip_.finish(writer);
  EXPECT_EQ(error(zeb().simpleStreams.Write(writer.get(), "x", 1)).id(), COPY_GZIP_ERROR_FINISHED);
}

TEST_F(GzipStream, CannotBeFinishedTwice) {
  const Stream writer = gzip_.write(target_);
  gzip_.finish(writer);
  EXPECT_THROW(gzip_.finish(writer), RaisedError);
}

TEST_F(GzipStream, CannotBeFinishedWhenItIsRead) {
  EXPECT_THROW(gzip_.finish(reader()), RaisedError);
}

TEST_F(GzipStream, TellsWhenTheFileCannotBeCompleted) {
  const Stream writer = gzip_.write("/dev/full");
  write(writer, "too much");  // is still held back
  try {
    gzip_.finish(writer);
    FAIL() << "there is no room for it";
  } catch (RaisedError& raised) {
    const Error full = error(raised.release());
    EXPECT_EQ(full.id(), COPY_GZIP_ERROR_SYSTEM);
    EXPECT_THAT(full.message(), HasSubstr("No space left"));
  }
}

TEST_F(GzipStream, TellsThatThereIsNoSuchFile) {
  ZEBContainer* stream = nullptr;
  const Error missing = error(procs().NewReader(&stream, "no such file.gz"));
  EXPECT_EQ(missing.id(), COPY_GZIP_ERROR_OPEN);
  EXPECT_THAT(missing.message(), StrEq("No such file or directory"));
  EXPECT_EQ(stream, nullptr);
}

TEST_F(GzipStream, TellsThatAFileIsNotCompressed) {
  ZEBContainer* stream = nullptr;
  EXPECT_EQ(error(procs().NewReader(&stream, (kFiles / "plain.gz").c_str())).id(),
            COPY_GZIP_ERROR_NOT_COMPRESSED);
  EXPECT_EQ(error(procs().NewReader(&stream, (kFiles / "nothing.gz").c_str())).id(),
            COPY_GZIP_ERROR_NOT_COMPRESSED);
  EXPECT_EQ(error(procs().NewReader(&stream, kFiles.c_str())).id(), COPY_GZIP_ERROR_SYSTEM);
}

TEST_F(GzipStream, CanGoBackBeforeTheDamage) {
  const Stream stream = gzip_.read(kFiles / "truncated.gz");
  EXPECT_THROW(read(stream, 10000000), RaisedError);
  stream.seek(0);
  EXPECT_EQ(read(stream, 6), "line 0");
}

TEST_F(GzipStream, RefusesMissingArguments) {
  ZEBContainer* stream = nullptr;
  for (const auto proc : {procs().NewReader, procs().NewWriter}) {
    EXPECT_EQ(error(proc(nullptr, target_.c_str())).id(), COPY_GZIP_ERROR_MISSING_ARGUMENT);
    EXPECT_EQ(error(proc(&stream, nullptr)).id(), COPY_GZIP_ERROR_MISSING_ARGUMENT);
  }
  EXPECT_FALSE(std::filesystem::exists(target_));
}

}  // namespace
}  // namespace examples
