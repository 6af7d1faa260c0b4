// File streams: stdio's positions behind a cursor that follows them, and files that are opened once
// more.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "contract/stream_library.h"
#include "contract/temporary_folder.h"

namespace contract {
namespace {

class FileStream : public StreamTest {
 protected:
  ZEBContainer* Open(const std::string& path, const char* mode) {
    ZEBContainer* made = nullptr;
    EXPECT_EQ(zeb_.Outcome(procs_.factory.NewPositionableFileStream(&made, path.c_str(), mode)),
              kSuccess);
    return Keep(made);
  }
  // A file with ten bytes, open for reading and writing.
  ZEBContainer* OpenTen(const char* mode = "r+b") {
    PutContent(path_, "0123456789");
    return Open(path_, mode);
  }
  std::string OutcomeOfOpening(const std::string& path, const char* mode) {
    ZEBContainer* made = nullptr;
    const std::string outcome =
        zeb_.Outcome(procs_.factory.NewPositionableFileStream(&made, path.c_str(), mode));
    EXPECT_EQ(made == nullptr, outcome != kSuccess);
    if (made != nullptr) Keep(made);
    return outcome;
  }
  std::string OutcomeOfIndependent(ZEBContainer* stream) {
    ZEBContainer* made = nullptr;
    const std::string outcome =
        zeb_.Outcome(procs_.positionable.CreateIndependentlyPositionableStream(stream, &made));
    EXPECT_EQ(made == nullptr, outcome != kSuccess);
    if (made != nullptr) Keep(made);
    return outcome;
  }

  TemporaryFolder folder_;
  const std::string path_ = folder_ / "file";
};

// ---- Making

TEST_F(FileStream, NeedsAFileToRead) {
  EXPECT_EQ(OutcomeOfOpening(folder_ / "nothing", "rb"), kNoFile);
  EXPECT_EQ(OutcomeOfOpening("", "rb"), kNoFile);
  EXPECT_EQ(OutcomeOfOpening(folder_ / "no/such/folder", "wb"), kNoFile);
  EXPECT_EQ(procs_.olderMakers.NewFileStreamV2((folder_ / "nothing").c_str(), "rb"), nullptr);
}

TEST_F(FileStream, NeedsAModeThatTheSystemKnows) {
  PutContent(path_, "content");
  EXPECT_EQ(OutcomeOfOpening(path_, "nonsense"), kNoFile);
  EXPECT_EQ(OutcomeOfOpening(path_, ""), kNoFile);
  EXPECT_EQ(ContentOf(path_), "content");
}

TEST_F(FileStream, MakesTheFileThatItWrites) {
  ZEBContainer* stream = Open(path_, "wb");
  EXPECT_EQ(Write(stream, "written"), kSuccess);
  Release(stream);
  EXPECT_EQ(ContentOf(path_), "written");
}

TEST_F(FileStream, IsMadeByTheOlderMakersAsWell) {
  PutContent(path_, "0123456789");
  ZEBContainer* third = nullptr;
  EXPECT_EQ(zeb_.Outcome(procs_.olderMakers.NewFileStreamV3(&third, path_.c_str(), "rb")),
            kSuccess);
  for (ZEBContainer* stream :
       {Keep(third), Keep(procs_.olderMakers.NewFileStreamV2(path_.c_str(), "rb"))}) {
    EXPECT_EQ(procs_.older.SeekV2(stream, 8), 1);
    EXPECT_EQ(Read(stream, 99), "89");
    EXPECT_EQ(procs_.older.MarkV1(stream), 10u);
    EXPECT_EQ(procs_.older.WriteV2(stream, "x", 1), 0);
  }
}

TEST_F(FileStream, OpensNamesOfAnyBytes) {
  const std::string path = folder_ / "gr\xC3\xBC\xC3\x9F \xE6\x96\x87 \xFF\xFE";
  ZEBContainer* stream = Open(path, "w+b");
  EXPECT_EQ(Write(stream, "content"), kSuccess);
  EXPECT_EQ(Read(Independent(stream), 99), "content");
  EXPECT_EQ(ContentOf(path), "content");
}

// ---- Reading and writing

TEST_F(FileStream, ReadsUpToTheEnd) {
  ZEBContainer* stream = OpenTen();
  EXPECT_EQ(Mark(stream), 0u);
  EXPECT_EQ(Read(stream, 4), "0123");
  EXPECT_EQ(Mark(stream), 4u);
  EXPECT_EQ(Read(stream, 99), "456789");
  EXPECT_EQ(Read(stream, 99), "");
  EXPECT_EQ(Mark(stream), 10u);
}

TEST_F(FileStream, SeesItsOwnWritesWithTheNextRead) {
  ZEBContainer* stream = Open(path_, "w+b");
  EXPECT_EQ(Write(stream, "ten bytes."), kSuccess);
  EXPECT_EQ(Mark(stream), 10u);
  EXPECT_EQ(Read(stream, 99), "");
  EXPECT_EQ(ContentOf(path_), "ten bytes.") << "the read has flushed";
  EXPECT_EQ(Seek(stream, 4), kSuccess);
  EXPECT_EQ(Read(stream, 5), "bytes");
}

TEST_F(FileStream, FlushesWhenItIsAsked) {
  ZEBContainer* stream = Open(path_, "wb");
  EXPECT_EQ(Write(stream, "ten bytes."), kSuccess);
  EXPECT_EQ(ContentOf(path_), "");
  EXPECT_EQ(Flush(stream), kSuccess);
  EXPECT_EQ(ContentOf(path_), "ten bytes.");
  EXPECT_EQ(Flush(stream), kSuccess);
  EXPECT_EQ(Mark(stream), 10u);
}

TEST_F(FileStream, ReportsAHandleThatCannotRead) {
  ZEBContainer* stream = Open(path_, "wb");
  EXPECT_EQ(Write(stream, "abc"), kSuccess);
  EXPECT_EQ(Read(stream, 3), kReadError);
  EXPECT_EQ(Mark(stream), 3u);
  EXPECT_EQ(Read(Open(folder_.path().string(), "rb"), 3), kReadError) << "a folder";
}

TEST_F(FileStream, ReportsAHandleThatCannotWrite) {
  ZEBContainer* stream = OpenTen("rb");
  EXPECT_EQ(Read(stream, 3), "012");
  EXPECT_EQ(Write(stream, "abc"), kWriteError);
  EXPECT_EQ(Mark(stream), 3u);
  EXPECT_EQ(ContentOf(path_), "0123456789");
}

TEST_F(FileStream, ReportsADeviceThatIsFull) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "the system has no full device";
  ZEBContainer* stream = Open("/dev/full", "wb");
  EXPECT_EQ(Write(stream, std::string(100'000, 'x')), kWriteError);
}

TEST_F(FileStream, RefusesANullBuffer) {
  ZEBContainer* stream = OpenTen();
  std::uint64_t bytesRead = kUntouched;
  EXPECT_EQ(zeb_.Outcome(procs_.simple.Read(stream, &bytesRead, nullptr, 3)), kCopyError);
  EXPECT_EQ(zeb_.Outcome(procs_.simple.Write(stream, nullptr, 3)), kCopyError);
  EXPECT_EQ(zeb_.Outcome(procs_.simple.Read(stream, &bytesRead, nullptr, 0)), kSuccess);
  EXPECT_EQ(Read(stream, 99), "0123456789");
}

TEST_F(FileStream, AppendsWhereverItStands) {
  ZEBContainer* stream = OpenTen("ab");
  EXPECT_EQ(Seek(stream, 3), kSuccess);
  EXPECT_EQ(Write(stream, "abc"), kSuccess);
  EXPECT_EQ(Mark(stream), 13u) << "the cursor follows the handle";
  EXPECT_EQ(Flush(stream), kSuccess);
  EXPECT_EQ(ContentOf(path_), "0123456789abc");
}

// ---- Positions

TEST_F(FileStream, SeeksFromEveryOrigin) {
  ZEBContainer* stream = OpenTen();
  EXPECT_EQ(Seek(stream, 3, ZEB_SEEK_FROM_BEGINNING), kSuccess);
  EXPECT_EQ(Read(stream, 1), "3");
  EXPECT_EQ(Seek(stream, 2, ZEB_SEEK_FROM_POSITION), kSuccess);
  EXPECT_EQ(Read(stream, 1), "6");
  EXPECT_EQ(Seek(stream, -1, ZEB_SEEK_FROM_END), kSuccess);
  EXPECT_EQ(Read(stream, 9), "9");
  EXPECT_EQ(Seek(stream, 0, 3), kInvalidOrigin);
  EXPECT_EQ(Seek(stream, -1), kInvalidPosition);
  EXPECT_EQ(Seek(stream, INT64_MIN), kInvalidPosition);
  EXPECT_EQ(Mark(stream), 10u);
}

TEST_F(FileStream, SeeksPastTheEnd) {
  ZEBContainer* stream = OpenTen();
  EXPECT_EQ(Seek(stream, 1000), kSuccess);
  EXPECT_EQ(Mark(stream), 1000u);
  EXPECT_EQ(Read(stream, 10), "");
  EXPECT_EQ(ContentOf(path_).size(), 10u);
  EXPECT_EQ(Seek(stream, 12), kSuccess);
  EXPECT_EQ(Write(stream, "x"), kSuccess);
  EXPECT_EQ(Flush(stream), kSuccess);
  EXPECT_EQ(ContentOf(path_), std::string("0123456789\0\0x", 13));
}

TEST_F(FileStream, KnowsTheEndOfWhatIsStillToBeWritten) {
  ZEBContainer* stream = Open(path_, "w+b");
  EXPECT_EQ(Write(stream, "0123456789"), kSuccess);
  EXPECT_EQ(Seek(stream, -4, ZEB_SEEK_FROM_END), kSuccess);
  EXPECT_EQ(Mark(stream), 6u);
  EXPECT_EQ(Read(stream, 9), "6789");
}

// Rewinding moves the cursor alone; the handle goes on where it stood.
TEST_F(FileStream, ReadsOnAfterARewind) {
  ZEBContainer* stream = OpenTen();
  EXPECT_EQ(Read(stream, 4), "0123");
  EXPECT_EQ(Rewind(stream), kSuccess);
  EXPECT_EQ(Mark(stream), 0u);
  EXPECT_EQ(Read(stream, 2), "45");
  EXPECT_EQ(Mark(stream), 6u);
  EXPECT_EQ(Rewind(stream), kSuccess);
  EXPECT_EQ(Seek(stream, 1, ZEB_SEEK_FROM_POSITION), kSuccess);
  EXPECT_EQ(Read(stream, 2), "12") << "a seek counts from the cursor and moves the handle";
}

TEST_F(FileStream, HandsPositionsOnIn32Bits) {
  ZEBContainer* stream = OpenTen();
  // What is left of it is 3.
  EXPECT_EQ(Seek(stream, (std::int64_t{1} << 32) + 3), kSuccess);
  EXPECT_EQ(Mark(stream), (std::uint64_t{1} << 32) + 3);
  EXPECT_EQ(Read(stream, 2), "34");
  EXPECT_EQ(Mark(stream), 5u);
  // What is left of it is below zero, where no handle goes.
  EXPECT_EQ(Seek(stream, 0x80000000), kSuccess);
  EXPECT_EQ(Mark(stream), 0x80000000u);
  EXPECT_EQ(Read(stream, 2), "56");
  EXPECT_EQ(Seek(stream, INT64_MAX), kSuccess);
  EXPECT_EQ(Mark(stream), static_cast<std::uint64_t>(INT64_MAX));
  EXPECT_EQ(Seek(stream, 1, ZEB_SEEK_FROM_POSITION), kInvalidPosition);
}

// The file is a hole: it takes no room.
TEST_F(FileStream, HasNoEndBeyond32Bits) {
  PutContent(path_, "");
  std::filesystem::resize_file(path_, std::uintmax_t{3} << 30);
  ZEBContainer* stream = Open(path_, "rb");
  EXPECT_EQ(Seek(stream, 0, ZEB_SEEK_FROM_END), kInvalidPosition);
  EXPECT_EQ(Mark(stream), 0u);
  ZEBContainer* other = Independent(stream);
  EXPECT_EQ(Seek(other, 0, ZEB_SEEK_FROM_END), kInvalidPosition);
}

// ---- Independent streams

TEST_F(FileStream, IsOpenedOnceMoreForIndependentStreams) {
  ZEBContainer* source = Open(path_, "w+b");
  EXPECT_EQ(Write(source, "0123456789"), kSuccess);
  ZEBContainer* other = Independent(source);
  EXPECT_EQ(Mark(other), 0u);
  EXPECT_EQ(Mark(source), 10u);
  EXPECT_EQ(Read(other, 4), "0123") << "the source was flushed";
  EXPECT_EQ(Seek(source, 8), kSuccess);
  EXPECT_EQ(Read(source, 9), "89");
  EXPECT_EQ(Read(other, 9), "456789");
  EXPECT_EQ(Seek(other, -1, ZEB_SEEK_FROM_END), kSuccess);
  EXPECT_EQ(Read(other, 9), "9");
  ZEBContainer* third = IndependentRewindable(other);
  Release(source);
  Release(other);
  EXPECT_EQ(Read(third, 99), "0123456789");
}

TEST_F(FileStream, CannotBeWrittenOnceItIsNotAlone) {
  ZEBContainer* source = OpenTen();
  ZEBContainer* other = Independent(source);
  EXPECT_EQ(Write(source, "x"), kReadOnly);
  EXPECT_EQ(Write(other, "x"), kReadOnly);
  Release(other);
  EXPECT_EQ(Write(source, "x"), kReadOnly);
  EXPECT_EQ(ContentOf(path_), "0123456789");
}

TEST_F(FileStream, MayStillSeekPastTheEndWhenItIsNotAlone) {
  ZEBContainer* source = OpenTen();
  ZEBContainer* other = Independent(source);
  EXPECT_EQ(Seek(other, 1000), kSuccess);
  EXPECT_EQ(Read(other, 1), "");
}

TEST_F(FileStream, LosesItsFileWhenItIsRemoved) {
  ZEBContainer* source = OpenTen();
  std::filesystem::remove(path_);
  EXPECT_EQ(OutcomeOfIndependent(source), kNoFile);
  EXPECT_EQ(Write(source, "x"), kReadOnly) << "the flag was set before the file was looked for";
  EXPECT_EQ(Read(source, 3), "012") << "the source goes on";
}

TEST_F(FileStream, MeansTheSameFileWhenTheCurrentDirectoryChanges) {
  std::filesystem::create_directory(folder_ / "elsewhere");
  PutContent(folder_ / "elsewhere/file", "the other");
  PutContent(path_, "the first");
  ZEBContainer* stream = nullptr;
  {
    const ChangedDirectory here(folder_.path());
    stream = Open("file", "rb");
    EXPECT_EQ(std::filesystem::current_path(), folder_.path());
  }
  const ChangedDirectory there(folder_ / "elsewhere");
  ZEBContainer* other = Independent(stream);
  EXPECT_EQ(std::filesystem::current_path(), std::filesystem::path(folder_ / "elsewhere"));
  EXPECT_EQ(Read(other, 99), "the first");
  ZEBContainer* third = Independent(other);
  EXPECT_EQ(Read(third, 99), "the first");
  EXPECT_EQ(std::filesystem::current_path(), std::filesystem::path(folder_ / "elsewhere"));
}

// Another thread would see the directory change; a watcher of names that only the library's work
// could change proves that it does not, at any moment: the directory is gone and cannot be returned
// to, so that whoever left it could not come back.
TEST_F(FileStream, NeverLeavesTheCurrentDirectory) {
  ZEBContainer* stream = nullptr;
  {
    const ChangedDirectory here(folder_.path());
    PutContent("file", "the first");
    stream = Open("file", "rb");
  }
  std::filesystem::create_directory(folder_ / "doomed");
  const ChangedDirectory there(folder_ / "doomed");
  struct stat before {};
  ASSERT_EQ(stat(".", &before), 0);
  std::filesystem::remove(folder_ / "doomed");
  EXPECT_EQ(Read(Independent(stream), 99), "the first");
  struct stat after {};
  ASSERT_EQ(stat(".", &after), 0);
  EXPECT_EQ(after.st_ino, before.st_ino);
  EXPECT_EQ(after.st_dev, before.st_dev);
}

TEST_F(FileStream, LosesItsFileWithTheDirectory) {
  std::filesystem::create_directory(folder_ / "doomed");
  ZEBContainer* stream = nullptr;
  {
    const ChangedDirectory there(folder_ / "doomed");
    PutContent("file", "0123456789");
    stream = Open("file", "rb");
  }
  std::filesystem::remove_all(folder_ / "doomed");
  EXPECT_EQ(OutcomeOfIndependent(stream), kNoFile);
  EXPECT_EQ(Read(stream, 3), "012");
}

TEST_F(FileStream, NeedsACurrentDirectoryToBeMade) {
  PutContent(path_, "0123456789");
  std::filesystem::create_directory(folder_ / "doomed");
  const ChangedDirectory there(folder_ / "doomed");
  std::filesystem::remove(folder_ / "doomed");
  EXPECT_EQ(OutcomeOfOpening(path_, "rb"), "KST 0: GetCurrentDirectory failed");
}

TEST_F(FileStream, RemembersDirectoriesWithLongNames) {
  std::filesystem::path deep = folder_.path();
  for (int i = 0; i < 12; ++i) deep /= std::string(100, static_cast<char>('a' + i));
  std::filesystem::create_directories(deep);
  ZEBContainer* stream = nullptr;
  {
    const ChangedDirectory there(deep);
    PutContent("file", "deep down");
    stream = Open("file", "rb");
  }
  EXPECT_EQ(Read(Independent(stream), 99), "deep down");
}

TEST_F(FileStream, ClosesEveryHandle) {
  const auto handles = [] {
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return std::distance(begin(open), end(open));
  };
  if (!std::filesystem::exists("/proc/self/fd")) GTEST_SKIP() << "handles cannot be counted here";
  const auto before = handles();
  ZEBContainer* stream = OpenTen();
  ZEBContainer* other = Independent(stream);
  EXPECT_EQ(handles(), before + 2);
  std::filesystem::remove(path_);
  EXPECT_EQ(OutcomeOfIndependent(other), kNoFile);
  EXPECT_EQ(handles(), before + 2);
  Release(other);
  EXPECT_EQ(handles(), before + 1);
  Release(stream);
  EXPECT_EQ(handles(), before);
}

}  // namespace
}  // namespace contract
