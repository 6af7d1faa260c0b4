// Pictures filed in a cache set of the library, under the state of the file that they come from.
#ifndef THUMBNAILS_HOST_PICTURE_CACHE_H
#define THUMBNAILS_HOST_PICTURE_CACHE_H

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <tuple>

#include "support/picture.h"
#include "zeb/cache.h"

namespace examples {

// A file as it was when it was looked at: one that is changed is another one.
struct FileState {
  std::string path;
  uint64_t size = 0;
  int64_t changedAt = 0;  // in the file system's unit

  // Throws std::filesystem::filesystem_error.
  static FileState of(const std::filesystem::path& path);

  // The order in which the set keeps them; any would do.
  friend bool operator<(const FileState& a, const FileState& b) {
    return std::tie(a.path, a.size, a.changedAt) < std::tie(b.path, b.size, b.changedAt);
  }
};

// What is kept. The key comes first: it is what the library's cache knows of.
struct KeptPicture : FileState {
  Picture picture;
  std::chrono::nanoseconds made{};  // how long it takes to make it from the file
};

// How often something was looked for.
struct Lookups {
  uint64_t hits = 0;
  uint64_t misses = 0;
};

class PictureCache {
 public:
  class Place;

  // The procs must outlive this object and every place. Throws std::bad_alloc.
  explicit PictureCache(const ZEBCacheProcs& cache);
  ~PictureCache();

  PictureCache(const PictureCache&) = delete;
  PictureCache& operator=(const PictureCache&) = delete;

  // The place of a file's picture, filled or not. Throws std::bad_alloc.
  [[nodiscard]] Place find(const FileState& file);

  [[nodiscard]] const Lookups& lookups() const noexcept { return lookups_; }

  // How many pictures the cache has thrown away so far.
  [[nodiscard]] uint64_t evictions() const noexcept { return evictions_; }

 private:
  struct Filed;

  static int32_t comesFirst(void* a, void* b);
  static void end(void* key, int32_t survives);

  const ZEBCacheProcs& cache_;
  ZEBCacheSet* set_;
  Lookups lookups_;
  uint64_t evictions_ = 0;
};

// A place is pinned: as long as it lives, its picture is not thrown away.
class PictureCache::Place {
 public:
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;
  ~Place();

  // What is kept here, or null.
  [[nodiscard]] const KeptPicture* picture() const noexcept { return picture_; }

  // Fills an empty place. What it takes to make the picture counts from find(). Throws
  // std::bad_alloc.
  void fill(KeptPicture picture);

 private:
  friend class PictureCache;
  Place(PictureCache& cache, const FileState& file);

  PictureCache& owner_;
  ZEBCacheID* id_;
  uint64_t startedAt_ = 0;
  const KeptPicture* picture_;
};

}  // namespace examples

#endif
