// Streams against models: thousands of random operations on several streams over the same bytes,
// and after each one the library must say what the model says. The bytes of memory and of buffers
// are modelled by a string, a file by another file that is used through stdio step by step as
// described.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "contract/sanitizers.h"
#include "contract/stream_library.h"
#include "contract/temporary_folder.h"
#include "support/random.h"

namespace contract {
namespace {

using zeb_test::Random;

constexpr int kOperations = kSanitized ? 1000 : 4000;
constexpr std::size_t kMostStreams = 5;

// What a model expects of one operation: the outcome, or what was read.
class StreamModel {
 public:
  virtual ~StreamModel() = default;
  virtual std::string Read(std::uint64_t count) = 0;
  virtual std::string Write(const std::string& text) = 0;
  virtual std::string Seek(std::int64_t offset, std::uint32_t origin) = 0;
  virtual void Rewind() = 0;
  virtual std::uint64_t Mark() = 0;
  virtual void Flush() {}
  virtual std::unique_ptr<StreamModel> Independent() = 0;
};

// ---- Memory and buffers

struct Bytes {
  std::string content;
  bool fixed = false;     // a buffer's
  bool readOnly = false;  // never a buffer's
  bool hasBlocks = false;
};

class BytesModel : public StreamModel {
 public:
  explicit BytesModel(std::shared_ptr<Bytes> bytes) : bytes_(std::move(bytes)) {}

  std::string Read(std::uint64_t count) override {
    if (position_ >= Size()) return "";
    const std::string text = bytes_->content.substr(position_, count);
    position_ += text.size();
    return text;
  }

  std::string Write(const std::string& text) override {
    if (bytes_->fixed && text.size() > Size() - position_) return kPastBuffer;
    if (bytes_->readOnly) return kReadOnly;
    if (text.empty()) return kSuccess;
    GrowTo(position_ + text.size());
    bytes_->content.replace(position_, text.size(), text);
    position_ += text.size();
    bytes_->hasBlocks = true;
    return kSuccess;
  }

  std::string Seek(std::int64_t offset, std::uint32_t origin) override {
    if (origin > 2) return kInvalidOrigin;
    const std::uint64_t base = origin == 0 ? 0 : origin == 1 ? position_ : Size();
    const std::uint64_t position = base + static_cast<std::uint64_t>(offset);
    const bool ends = bytes_->fixed || bytes_->readOnly;
    if (position > (ends ? Size() : std::uint64_t{INT64_MAX})) return kInvalidPosition;
    position_ = position;
    if (bytes_->hasBlocks) GrowTo(position_);
    return kSuccess;
  }

  void Rewind() override { position_ = 0; }
  std::uint64_t Mark() override { return position_; }

  std::unique_ptr<StreamModel> Independent() override {
    bytes_->readOnly = !bytes_->fixed;
    return std::make_unique<BytesModel>(bytes_);
  }

 private:
  std::uint64_t Size() const { return bytes_->content.size(); }
  void GrowTo(std::uint64_t size) {
    if (size > Size()) bytes_->content.resize(size, '\0');
  }

  const std::shared_ptr<Bytes> bytes_;
  std::uint64_t position_ = 0;
};

// ---- Files

struct FileDeleter {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using FileHandle = std::unique_ptr<std::FILE, FileDeleter>;

struct FileBody {
  std::string path;
  FileHandle handle;
  bool readOnly = false;
};

// Asks the handle for its position after each transfer.
class FileModel : public StreamModel {
 public:
  FileModel(std::shared_ptr<FileBody> body, FileHandle own)
      : body_(std::move(body)), own_(std::move(own)) {}

  std::string Read(std::uint64_t count) override {
    if (dirty_) std::fflush(Handle());
    dirty_ = false;
    std::string text(count, '?');
    text.resize(std::fread(text.data(), 1, count, Handle()));
    if (std::ferror(Handle()) != 0 && std::feof(Handle()) == 0) return kReadError;
    position_ = Tell();
    return text;
  }

  std::string Write(const std::string& text) override {
    if (body_->readOnly) return kReadOnly;
    std::fwrite(text.data(), 1, text.size(), Handle());
    dirty_ = true;
    if (std::ferror(Handle()) != 0) return kWriteError;
    position_ = Tell();
    return kSuccess;
  }

  std::string Seek(std::int64_t offset, std::uint32_t origin) override {
    if (origin > 2) return kInvalidOrigin;
    const std::uint64_t base = origin == 0 ? 0 : origin == 1 ? position_ : End();
    const std::uint64_t position = base + static_cast<std::uint64_t>(offset);
    if (position > std::uint64_t{INT64_MAX}) return kInvalidPosition;
    position_ = position;
    std::fseek(Handle(), static_cast<std::int32_t>(position), SEEK_SET);
    return kSuccess;
  }

  void Rewind() override { position_ = 0; }
  std::uint64_t Mark() override { return position_; }
  void Flush() override {
    if (dirty_) std::fflush(Handle());
    dirty_ = false;
  }

  std::unique_ptr<StreamModel> Independent() override {
    body_->readOnly = true;
    Flush();
    return std::make_unique<FileModel>(body_, FileHandle(std::fopen(body_->path.c_str(), "rb")));
  }

 private:
  std::FILE* Handle() const { return own_ ? own_.get() : body_->handle.get(); }
  std::uint64_t Tell() const { return static_cast<std::uint64_t>(std::ftell(Handle())); }
  // Once there may be other streams, asking for the end does not touch the first one's handle: not
  // even its end-of-file indicator, which a seek would clear.
  std::uint64_t End() const {
    if (body_->readOnly) return std::filesystem::file_size(body_->path);
    std::FILE* handle = body_->handle.get();
    const long before = std::ftell(handle);
    std::fseek(handle, 0, SEEK_END);
    const long end = std::ftell(handle);
    std::fseek(handle, before, SEEK_SET);
    return static_cast<std::uint64_t>(end);
  }

  const std::shared_ptr<FileBody> body_;
  const FileHandle own_;
  bool dirty_ = false;
  std::uint64_t position_ = 0;
};

// ---- The game

class StreamModels : public StreamTest {
 protected:
  struct Player {
    ZEBContainer* stream;
    std::unique_ptr<StreamModel> model;
  };

  // Sizes of all magnitudes, few of them large.
  static std::uint64_t AnySize(Random& random) {
    return random.below(std::uint64_t{1} << random.between(0, 16));
  }
  static std::int64_t AnyOffset(Random& random) {
    const auto distance = static_cast<std::int64_t>(AnySize(random));
    return random.oneIn(2) ? distance : -distance;
  }

  void PlayOnce(Random& random, std::vector<Player>& players, bool mayAdd) {
    const std::size_t index = random.below(players.size());
    Player& player = players[index];
    StreamModel& model = *player.model;
    switch (random.below(16)) {
      case 0:
        ASSERT_EQ(Rewind(player.stream), kSuccess);
        model.Rewind();
        break;
      case 1:
        ASSERT_EQ(Flush(player.stream), kSuccess);
        model.Flush();
        break;
      case 2:
        if (!mayAdd || players.size() == kMostStreams || !random.oneIn(8)) break;
        {
          ZEBContainer* made =
              random.oneIn(2) ? Independent(player.stream) : IndependentRewindable(player.stream);
          players.push_back({made, model.Independent()});
        }
        return;
      case 3:
        if (players.size() == 1 || !random.oneIn(4)) break;
        Release(player.stream);
        players.erase(players.begin() + static_cast<std::ptrdiff_t>(index));
        return;
      case 4:
      case 5:
      case 6:
      case 7: {
        const std::int64_t offset = random.oneIn(50) ? INT64_MIN : AnyOffset(random);
        const auto origin = static_cast<std::uint32_t>(random.below(random.oneIn(20) ? 5 : 3));
        ASSERT_EQ(Seek(player.stream, offset, origin), model.Seek(offset, origin))
            << offset << " from " << origin;
        break;
      }
      case 8:
      case 9:
      case 10:
      case 11: {
        std::string text(AnySize(random), '\0');
        for (char& byte : text) byte = static_cast<char>(random.any());
        ASSERT_EQ(Write(player.stream, text), model.Write(text));
        break;
      }
      default: {
        const std::uint64_t count = AnySize(random);
        ASSERT_EQ(Read(player.stream, count), model.Read(count));
      }
    }
    ASSERT_EQ(Mark(player.stream), model.Mark());
  }

  // At first there is but one stream, so that there is something to be shared.
  void Play(Random& random, ZEBContainer* stream, std::unique_ptr<StreamModel> model) {
    std::vector<Player> players;
    players.push_back({stream, std::move(model)});
    for (int i = 0; i < kOperations && !HasFatalFailure(); ++i) {
      PlayOnce(random, players, i > kOperations / 2);
    }
    for (const Player& player : players) Release(player.stream);
  }
};

TEST_F(StreamModels, AgreeWithMemory) {
  zeb_test::forEachSeed([&](Random& random) {
    Play(random, NewMemory(), std::make_unique<BytesModel>(std::make_shared<Bytes>()));
  });
}

TEST_F(StreamModels, AgreeWithBuffers) {
  zeb_test::forEachSeed([&](Random& random) {
    const std::string content = Pattern(AnySize(random));
    auto bytes = std::make_shared<Bytes>(Bytes{.content = content, .fixed = true});
    Play(random, NewBuffer(content), std::make_unique<BytesModel>(bytes));
  });
}

TEST_F(StreamModels, AgreeWithFiles) {
  zeb_test::forEachSeed([&](Random& random) {
    for (const char* mode : {"w+b", "a+b", "rb", "r+b"}) {
      SCOPED_TRACE(mode);
      const TemporaryFolder folder;
      const std::string path = folder / "file";
      const std::string modelPath = folder / "model";
      PutContent(path, Pattern(20'000));
      PutContent(modelPath, Pattern(20'000));
      ZEBContainer* stream = nullptr;
      ASSERT_EQ(zeb_.Outcome(procs_.factory.NewPositionableFileStream(&stream, path.c_str(), mode)),
                kSuccess);
      auto body = std::make_shared<FileBody>();
      body->path = modelPath;
      body->handle.reset(std::fopen(modelPath.c_str(), mode));
      Play(random, Keep(stream), std::make_unique<FileModel>(body, nullptr));
      body.reset();
      EXPECT_EQ(ContentOf(path), ContentOf(modelPath));
    }
  });
}

}  // namespace
}  // namespace contract
